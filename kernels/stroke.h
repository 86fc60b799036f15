#pragma once
/// Pencil strokes: black where samples differ much from their neighbours, white elsewhere.
#include "kernels/planes.h"
#include "kernels/select.h"

namespace AVBased::kernels {

/// Bytes of scratch for rows of that many pixels: three rows of grey.
constexpr size_t StrokeScratchBytes(size_t width) noexcept {
    constexpr size_t kWidestRegister = 64;
    return 3 * (width + 2 * kWidestRegister);
}

/// One level's kernels.
struct StrokeKernels {
    /// The grey of a pixel is (R + G + 1) / 3, 0 where all four bytes are 0. Of the greys above, left, below
    /// and right, in ascending order s0 to s3, the contrast is (s2 - s1) + 2 * (s3 - s0). Pixels become
    /// black, those with a contrast up to the threshold white, and alpha 0. The outermost rows and columns
    /// stay as they are.
    void (*strokeRgba32)(Plane32 plane, uint32_t threshold, uint8_t* scratch) noexcept;
    /// Samples become 0 where they differ from the one above, four times over, by more than the threshold,
    /// else 255. The first two rows stay as they are.
    void (*strokeComponent)(Plane8 plane, uint32_t threshold) noexcept;
};

template <>
const StrokeKernels& SelectKernels<StrokeKernels>(unsigned features) noexcept;

} // namespace AVBased::kernels
