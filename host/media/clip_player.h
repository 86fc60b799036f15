#pragma once
/// A clip's pictures at another rate.
#include <optional>

#include "host/media/source.h"
#include "host/picture/framer.h"
#include "host/picture/orientation.h"
#include "host/picture/picture_intake.h"

namespace aveffect {

/// Tells which of a clip's pictures is shown at each tick of a constant rate, upright and in the range that
/// was asked for. Used by one thread at a time.
class ClipPlayer {
public:
    /// Terms as for PictureIntake. Throws Error (Input, Interrupted).
    ClipPlayer(const SourceRequest& request, AVRational rate, IntakeTerms* terms, unsigned threads,
               const std::atomic<bool>& cancel);

    /// Cuts and scales all pictures from the next At() on, as they are seen.
    void Frame(const Framing& framing);

    /// Has ticks of the clip's own rate, if that is the same all along. Before the first At(). The rate of
    /// the ticks.
    AVRational CountAtOwnRate();

    /// Goes to where the picture of a tick can be decoded, forwards or backwards; ticks go up from there.
    void GoTo(int64_t tick);

    /// The picture of a tick, counted from the clip's start; ticks only go up. Pictures count from the tick
    /// nearest to their time; before the first and after the last picture those are shown.
    mediabridge::AVFramePtr At(int64_t tick);

    /// What was found to be wrong with the clip so far.
    DamageReport Damage() const { return m_source.Damage(m_read, m_end, !m_next); }

private:
    void Read();
    mediabridge::AVFramePtr Clone(const AVFrame& picture) const;

    Source m_source;
    AVRational m_interval; ///< seconds a tick
    Upright m_upright;
    PictureIntake m_intake;
    Framer m_framer;
    mediabridge::AVFramePtr m_shown;
    mediabridge::AVFramePtr m_framed; ///< made of m_shown; null until it is asked for
    mediabridge::AVFramePtr m_next;   ///< null at the end
    int64_t m_read = 0;
    Moment m_end; ///< of the last picture read
};

} // namespace aveffect
