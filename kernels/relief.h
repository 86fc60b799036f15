#pragma once
/// A picture lit from a side: each sample with its neighbours weighed by their direction, in place.
#include "kernels/planes.h"
#include "kernels/select.h"

namespace AVBased::kernels {

/// Weights in 256ths of a sample's 3x3 block, row by row, -256 to 256. The sample's own, in the middle, is
/// 256.
struct ReliefWeights {
    int16_t of[9];
};

/// Bytes of scratch that these kernels need for rows of that many bytes: two 16-bit sums a byte and a
/// register more. The scratch is aligned to 64 bytes.
constexpr size_t ReliefScratchBytes(size_t widthBytes) noexcept {
    constexpr size_t kWidestRegister = 64;
    return 4 * (widthBytes + kWidestRegister);
}

/// One level's kernels: sums of sample * weight >> 8, each rounded down by itself, limited to 0..255.
/// Neighbours outside the plane do not count.
struct ReliefKernels {
    void (*reliefComponent)(Plane8 plane, const ReliefWeights& weights, uint8_t* scratch) noexcept;
    /// The same for B, G and R; A stays.
    void (*reliefRgba32)(Plane32 plane, const ReliefWeights& weights, uint8_t* scratch) noexcept;
};

template <>
const ReliefKernels& SelectKernels<ReliefKernels>(unsigned features) noexcept;

} // namespace AVBased::kernels
