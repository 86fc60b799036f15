#pragma once
/// Where samples come from.
#include <cstdint>

#include "mediabridge/av_ptr.h"

namespace aveffect {

/// Gives out samples in a row, of one format, rate and layout. Used by one thread at a time.
class SampleSource {
public:
    SampleSource() = default;
    virtual ~SampleSource() = default;
    SampleSource(const SampleSource&) = delete;
    SampleSource& operator=(const SampleSource&) = delete;

    /// Makes so many ready, and says how many are; fewer at the end. Throws Error.
    virtual int64_t Available(int64_t wanted) = 0;
    /// The next samples, which are ready. Throws Error (Effect) when memory is short.
    virtual mediabridge::AVFramePtr Pop(int64_t samples) = 0;
};

/// Neighbouring boundaries, in samples.
struct PieceOfSound {
    int64_t begin, end;
};

/// The piece with that sample, where so many a second begin with sample 0: they end at whole multiples of
/// their length, so that their times are exact at any rate.
inline PieceOfSound PieceAt(int64_t sample, int rate, int aSecond) {
    const auto boundary = [=](int64_t piece) { return piece * rate / aSecond; };
    int64_t piece = sample * aSecond / rate;
    while (boundary(piece) > sample) --piece;
    while (boundary(piece + 1) <= sample) ++piece;
    return {boundary(piece), boundary(piece + 1)};
}

} // namespace aveffect
