#pragma once
/// Transparent pictures blended over one colour or over another picture: c becomes
/// (c * a + k * (255 - a)) / 255, rounded to the nearest, where a is alpha and k the sample below.
#include "kernels/planes.h"
#include "kernels/select.h"

namespace AVBased::kernels {

/// One level's kernels.
struct FlattenKernels {
    /// B, G and R over 0; A becomes 255.
    void (*flattenRgba32)(Plane32 plane) noexcept;
    /// Opaque pixels become what they show below those of another picture of the size: B, G and R by that
    /// one's A, their own A 255.
    void (*coverRgba32)(Plane32 below, Plane32 above) noexcept;
    /// Samples with an alpha each.
    void (*flattenComponent)(Plane8 plane, Plane8 alpha, uint8_t colour) noexcept;
    /// Samples of half the columns and rows, rounded up, by the mean alpha of the up to four that each
    /// covers, rounded to the nearest; beyond an odd edge the last alpha counts twice.
    void (*flattenQuarter)(Plane8 plane, Plane8 alpha, uint8_t colour) noexcept;
};

template <>
const FlattenKernels& SelectKernels<FlattenKernels>(unsigned features) noexcept;

} // namespace AVBased::kernels
