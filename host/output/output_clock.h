#pragma once
/// Times of the output's pictures.
#include <cstdint>

#include "host/support/av_owner.h"

namespace aveffect {

/// Turns the clip's times into the encoder's.
///
/// Usually its time base is one in which both the clip's ticks and its picture rate come out in whole
/// numbers: every picture of a variable-rate clip keeps its time, and the pictures of a constant-rate clip
/// whose container rounded their times (to milliseconds, say) get the exact ones back. Where container or
/// codec need a constant rate, pictures move to the nearest free tick of that rate, in order, none lost;
/// ticks without a picture are gaps.
class OutputClock {
public:
    struct Rate {
        AVRational picturesPerSecond;
        bool constant = false; ///< as far as the clip's container tells
    };
    /// Largest denominator 0: no limit.
    OutputClock(AVRational clipBase, Rate rate, bool needsConstantRate, int largestDenominator);

    AVRational Base() const noexcept { return m_base; }

    /// Time in the encoder's base, always later than the one before.
    int64_t Convert(int64_t clipTime);
    /// Whether a picture of that time would come more than a tick late, because the clip has more pictures
    /// than the output has ticks.
    bool ComesLate(int64_t clipTime) const { return m_last != INT64_MIN && Nearest(clipTime) < m_last; }
    /// A duration that starts at a time in the clip; at least one tick.
    int64_t ConvertDuration(int64_t clipTime, int64_t duration) const;

private:
    int64_t Nearest(int64_t clipTime) const;

    AVRational m_clipBase;
    AVRational m_base;
    AVRational m_interval; ///< seconds a picture; 0 when the rate is not constant
    int64_t m_last = INT64_MIN;
};

} // namespace aveffect
