#pragma once
/// Shapes drawn as masks.
#include <cstddef>
#include <cstdint>

#include "kernels/select.h"

namespace AVBased::kernels {

/// An ellipse around the origin, in pixels.
struct EllipseRamp {
    float halfWidth, halfHeight; ///< above 0
    float levels;                ///< that the mask rises by a pixel inwards
};

/// One level's kernels.
struct AreaKernels {
    /// Pixels of a row whose first lies at (x, y) become 127.5 + levels * their distance from the ellipse's
    /// border, negative outside, rounded and limited. Distances are right to a hundredth of the width that it
    /// takes to rise from 0 to 255, for ellipses up to five times as long as wide.
    void (*softEllipse)(uint8_t* to, size_t count, float x, float y, const EllipseRamp& ramp) noexcept;
};

template <>
const AreaKernels& SelectKernels<AreaKernels>(unsigned features) noexcept;

} // namespace AVBased::kernels
