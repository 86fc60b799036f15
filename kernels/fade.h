#pragma once
/// Kernels that weigh samples by a level of 256ths: against nothing, or against a colour.
#include "kernels/planes.h"
#include "kernels/select.h"

namespace AVBased::kernels {

/// One level's kernels. Levels may have any value; results are limited to 0..255.
struct FadeKernels {
    /// A becomes A * level >> 8; B, G and R stay.
    void (*scaleAlphaRgba32)(Plane32 plane, uint32_t level) noexcept;
    /// Every sample becomes sample * level >> 8.
    void (*scaleComponent)(Plane8 plane, uint32_t level) noexcept;
    /// B, G and R become (c * level + k * (256 - level)) >> 8, the shift rounding down, with k the colour's
    /// byte (0xRRGGBB); A stays.
    void (*mixRgba32)(Plane32 plane, uint32_t level, uint32_t colour) noexcept;
    /// The same for every sample, with one value.
    void (*mixComponent)(Plane8 plane, uint32_t level, uint8_t value) noexcept;
};

template <>
const FadeKernels& SelectKernels<FadeKernels>(unsigned features) noexcept;

} // namespace AVBased::kernels
