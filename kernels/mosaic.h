#pragma once
/// Mosaic in place: blocks of a rectangle take the value of their first sample.
#include "kernels/planes.h"
#include "kernels/select.h"

namespace AVBased::kernels {

/// Blocks of 2^step by 2^step, from left and top on, as far as they begin before right and bottom. The last
/// block of a row is whole unless the row ends; the last band of blocks ends at bottom. All in pixels.
struct MosaicArea {
    size_t left, top, right, bottom;
    unsigned step;
};

/// One level's kernels. The area begins and ends inside the picture.
struct MosaicKernels {
    /// Whole pixels, alpha included.
    void (*mosaicRgba32)(Plane32 plane, const MosaicArea& area) noexcept;
    /// Luma, blocks of 4 or more.
    void (*mosaicLuma)(Plane8 plane, const MosaicArea& area) noexcept;
    /// A chroma plane, of which one column in every four of luma is written (those between keep their
    /// values): from the block's first column and the row of its first. The shifts are 0 to 2. What would
    /// lie outside the plane is left out. The scratch has as many bytes as a row of the plane.
    void (*mosaicChroma)(Plane8 plane, const MosaicArea& area, size_t lumaWidth, unsigned horizontalShift,
                         unsigned verticalShift, uint8_t* scratch) noexcept;
};

template <>
const MosaicKernels& SelectKernels<MosaicKernels>(unsigned features) noexcept;

} // namespace AVBased::kernels
