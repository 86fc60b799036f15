#pragma once
/// Moments in a file, and where a clip ends.
#include <cstdint>

extern "C" {
#include <libavutil/mathematics.h>
}

namespace aveffect {

/// A moment in some time base.
struct Moment {
    int64_t ticks = 0;
    AVRational base{1, 1000};

    friend bool operator<(const Moment& a, const Moment& b) {
        return av_compare_ts(a.ticks, a.base, b.ticks, b.base) < 0;
    }
    friend bool operator>=(const Moment& a, const Moment& b) { return !(a < b); }
};

/// What takes reading a clip to its end.
struct ClipEnd {
    Moment end;         ///< of the pictures, from the clip's start
    bool still = false; ///< one picture alone
};

} // namespace aveffect
