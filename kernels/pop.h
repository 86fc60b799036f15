#pragma once
/// Two-tone posters.
#include "kernels/planes.h"
#include "kernels/select.h"

namespace AVBased::kernels {

/// A planar poster: luma above the threshold, and the chroma that goes with it, becomes the colour, all else
/// black in limited range.
struct PlanarPop {
    uint8_t threshold;
    uint8_t y, u, v;
    unsigned horizontalShift, verticalShift; ///< of chroma
};

/// One level's kernels.
struct PopKernels {
    /// Pixels whose green lies above the threshold become the colour 0xRRGGBB, all others black; they keep
    /// their alpha.
    void (*popRgba32)(Plane32 plane, uint8_t threshold, uint32_t colour) noexcept;
    /// Chroma goes with the last luma sample, in row order, of those it belongs to. The chroma planes may
    /// lack columns or rows.
    void (*popComponent)(Plane8 y, Plane8 u, Plane8 v, const PlanarPop& pop) noexcept;
};

template <>
const PopKernels& SelectKernels<PopKernels>(unsigned features) noexcept;

} // namespace AVBased::kernels
