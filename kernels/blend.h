#pragma once
/// Two pictures of one size blended, by one weight or by a mask. Everything is rounded to the nearest, halves
/// up.
#include "kernels/planes.h"
#include "kernels/select.h"

namespace AVBased::kernels {

/// The weight of 1.
constexpr unsigned kWholeWeight = 32768;

/// One level's kernels. The planes of a call have one size, and pixels a mask byte each; larger ones count as
/// far as the first goes. Weights are 0 to kWholeWeight.
struct BlendKernels {
    /// Samples become before + (to - before) * weight / 32768.
    void (*mixBytes)(Plane8 to, Plane8 before, unsigned weight) noexcept;
    /// Samples become (before * (255 - m) + to * m) / 255.
    void (*maskBytes)(Plane8 to, Plane8 before, Plane8 mask) noexcept;
    /// The same for all four bytes of a pixel.
    void (*maskRgba32)(Plane32 to, Plane32 before, Plane8 mask) noexcept;
    /// Samples become from * weight / 32768.
    void (*scaleBytes)(Plane8 to, Plane8 from, unsigned weight) noexcept;
    /// Samples become the mean of the 1 << horizontalShift columns and 1 << verticalShift rows of a mask that
    /// belong to each; shifts are 0 to 2. Beyond the mask's edges its last samples repeat, for less than a
    /// block.
    void (*shrinkMask)(Plane8 to, Plane8 mask, unsigned horizontalShift, unsigned verticalShift) noexcept;
};

template <>
const BlendKernels& SelectKernels<BlendKernels>(unsigned features) noexcept;

} // namespace AVBased::kernels
