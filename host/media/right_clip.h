#pragma once
/// The clip that holds a pair's right view.
#include <optional>
#include <string>

#include "host/media/upright_clip.h"
#include "host/support/reporter.h"

namespace aveffect {

/// Its pictures by time. Used by one thread at a time.
class RightClip {
public:
    /// Times before fromMs are not asked for. Throws Error (Input, Interrupted).
    /// Flag and reporter outlive it.
    RightClip(const SourceRequest& request, std::optional<int64_t> fromMs, unsigned threads,
              Reporter& reporter, const std::atomic<bool>& cancel);

    /// The picture, upright, that begins nearest to a time from the clip's start, the earlier one of two; the
    /// last one for as long as it takes, with a warning. Times do not fall from call to call. Throws Error
    /// (Input) when there is none at all.
    mediabridge::AVFramePtr At(const Moment& time);

    /// What was found to be wrong with what was read.
    DamageReport Damage() const { return m_clip.Damage(false); }

private:
    int64_t DistanceOf(const AVFrame& picture, const Moment& time) const;
    void WarnOfEnd(const Moment& time);

    UprightClip m_clip;
    Reporter& m_reporter;
    mediabridge::AVFramePtr m_current, m_next;
    bool m_warned = false;
};

} // namespace aveffect
