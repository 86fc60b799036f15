#pragma once
/// The pieces in which effects have sound.
#include <cstdint>

namespace aveffect {

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
