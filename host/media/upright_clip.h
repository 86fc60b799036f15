#pragma once
/// A clip's pictures in turn, as they are meant to be seen.
#include "host/media/source.h"
#include "host/picture/orientation.h"

namespace aveffect {

/// Used by one thread at a time.
class UprightClip {
public:
    /// As for Source, without other streams. Throws Error (Input, Interrupted).
    UprightClip(const SourceRequest& request, unsigned threads, const std::atomic<bool>& cancel)
        : m_source(request, Source::Others::None, threads, cancel) {}

    /// The next picture, upright; null at the end. Throws Error (Input, Output, Interrupted).
    mediabridge::AVFramePtr Next() {
        std::optional<SourceItem> item = m_source.Next();
        if (!item) return nullptr;
        ++m_count;
        m_end = {item->picture->pts + item->picture->pkt_duration, m_source.Pictures().time_base};
        return m_upright.Apply(std::move(item->picture), m_source.Pictures());
    }

    /// The next picture must be the one that is shown at this time, or an earlier one.
    void SeekBefore(int64_t milliseconds) { m_source.SeekBefore(milliseconds); }

    const Source& Clip() const noexcept { return m_source; }
    /// How many pictures were read.
    int64_t Count() const noexcept { return m_count; }
    /// What was found to be wrong with what was read; readToEnd false: only a part was wanted.
    DamageReport Damage(bool readToEnd) const { return m_source.Damage(m_count, m_end, readToEnd); }

private:
    Source m_source;
    Upright m_upright;
    int64_t m_count = 0;
    Moment m_end; ///< of the last picture read
};

} // namespace aveffect
