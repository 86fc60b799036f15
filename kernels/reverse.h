#pragma once
/// Exchanges of a plane's halves, in place: left with right, top with bottom, each corner with the opposite
/// one. The middle of an odd size lies in neither half.
#include "kernels/planes.h"
#include "kernels/select.h"

namespace AVBased::kernels {

/// One level's kernels. Pixels stay whole.
struct ReverseKernels {
    /// Every row from right to left.
    void (*mirrorRgba32)(Plane32 plane) noexcept;
    void (*mirrorComponent)(Plane8 plane) noexcept;
    /// The rows from bottom to top; pixels are as good as bytes.
    void (*flipComponent)(Plane8 plane) noexcept;
    /// Each quarter with the opposite one, turned half way round. The middle row and column of odd sizes
    /// stay, so this is not quite a half turn.
    void (*oppositeRgba32)(Plane32 plane) noexcept;
    void (*oppositeComponent)(Plane8 plane) noexcept;
    /// A half turn of all samples, those in the middle too.
    void (*halfTurnRgba32)(Plane32 plane) noexcept;
    void (*halfTurnComponent)(Plane8 plane) noexcept;
};

template <>
const ReverseKernels& SelectKernels<ReverseKernels>(unsigned features) noexcept;

} // namespace AVBased::kernels
