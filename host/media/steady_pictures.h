#pragma once
/// A span's pictures at a rate of one's own.
#include <functional>
#include <optional>

#include "host/media/span.h"

namespace aveffect {

/// Shows at each tick of a rate the picture whose time is nearest to it or before: pictures are shown again
/// or left out, and everything stays where it was in time. Packets pass. Used by one thread at a time.
class SteadyPictures {
public:
    /// The items' pictures come in that base, and the next item from the function. No more pictures than the
    /// limit are given.
    SteadyPictures(std::function<std::optional<SpanItem>()> next, AVRational base, AVRational rate,
                   std::optional<int64_t> limit)
        : m_next(std::move(next))
        , m_base(base)
        , m_interval(av_inv_q(rate))
        , m_limit(limit) {}

    /// The next item; pictures' pts counts ticks, and each lasts one. Absent at the end. Throws Error.
    std::optional<SpanItem> Next();

private:
    int64_t TickOf(int64_t time) const { return av_rescale_q(time, m_base, m_interval); }
    SpanItem Show();

    std::function<std::optional<SpanItem>()> m_next;
    AVRational m_base, m_interval;
    std::optional<int64_t> m_limit;
    std::optional<SpanItem> m_shown, m_following;
    int64_t m_tick = 0;      ///< the next one
    int64_t m_showUntil = 0; ///< the first tick at which m_shown is not shown any more
    int64_t m_given = 0;
    bool m_ended = false;
};

} // namespace aveffect
