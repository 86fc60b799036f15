#pragma once
/// Pictures put together from the rows and columns of others.
#include "kernels/columns.h"
#include "kernels/planes.h"
#include "kernels/select.h"

namespace AVBased::kernels {

/// A table of columns or rows.
struct Places {
    const uint32_t* of;
    size_t count;
};

/// One row of a circle: the columns begin to end, counted from the circle's left.
struct CircleRow {
    uint32_t row;             ///< of the plane
    uint32_t from, below;     ///< row that its samples come from, and the one that they are blended with
    uint32_t begin, end;      ///< begin lies below end
    uint32_t last, lastRight; ///< column that the last sample comes from, and the one it is blended with
    uint8_t fraction;         ///< of the way from one row to the other, 256ths
    uint8_t lastFraction;     ///< of the last sample's way from column to column
};

/// A circle that is put together from another part of the picture. Columns count from its left, rows follow
/// each other in the order in which they are written; all places lie inside the planes.
struct Circle {
    size_t left;             ///< column of the plane where it begins
    Places columns;          ///< that the samples come from, but a row's last one
    const uint32_t* right;   ///< columns that they are blended with
    const uint8_t* fraction; ///< of the way from one to the other, 256ths
    const CircleRow* rows;
    size_t rowCount;
};

/// Bytes of scratch for a circle of that many columns: samples, or pixels.
constexpr size_t CircleScratchBytes(size_t columns, size_t bytes) noexcept {
    return 2 * ColumnScratchBytes(columns) + 5 * (columns * bytes + 64);
}

/// One level's kernels.
struct PickKernels {
    /// Row i of the plane becomes the samples of row rows.of[i] of the copy, those of the given columns.
    void (*pickRgba32)(Plane32 plane, Plane32 copy, Places columns, Places rows, uint8_t* scratch) noexcept;
    void (*pickComponent)(Plane8 plane, Plane8 copy, Places columns, Places rows, uint8_t* scratch) noexcept;
    /// The circle's samples come from their columns and rows.
    void (*circleRgba32)(Plane32 plane, Plane32 copy, const Circle& circle, uint8_t* scratch) noexcept;
    void (*circleComponent)(Plane8 plane, Plane8 copy, const Circle& circle, uint8_t* scratch) noexcept;
    /// The circle's samples are blended from four: with fractions fx and fy and w = fx * fy >> 8, the weights
    /// are 256 - (fx + fy - w) for the sample itself, fx - w for the one to the right, fy - w for the one
    /// below and w for the fourth; the sum is shifted right by 8. In planes of bytes the one to the right and
    /// the one below have each other's weight.
    void (*blendCircleRgba32)(Plane32 plane, Plane32 copy, const Circle& circle, uint8_t* scratch) noexcept;
    void (*blendCircleComponent)(Plane8 plane, Plane8 copy, const Circle& circle, uint8_t* scratch) noexcept;
};

template <>
const PickKernels& SelectKernels<PickKernels>(unsigned features) noexcept;

} // namespace AVBased::kernels
