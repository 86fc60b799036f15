#pragma once
/// Where the pixels of a picture come from when it is seen through lenses. A row of places is computed at a
/// time, columns and rows apart, all of them inside the picture: the first count pixels of a row of it.
#include <cstddef>
#include <cstdint>

#include "kernels/select.h"

namespace AVBased::kernels {

/// A picture's size. Places beyond it wrap: as 32-bit numbers without sign, then modulo the size.
struct LensSize {
    uint32_t width, height;
};

/// A grid of lenses about the picture's middle.
struct TileLens {
    static constexpr int32_t kQuarterTurn = 90;
    static constexpr size_t kBends = 192; ///< the last ones are never read

    LensSize size;
    int32_t sine, cosine; ///< of the grid's direction, 32768ths
    int32_t zoom;         ///< from there, shifted right by 23, to degrees
    const int32_t* bends; ///< how far a lens shifts, from -90 degrees on, 32768ths; the same 180 further on
};

/// Pixels of a row, from a distance of dx columns on and at one of dy rows from the middle of a circle.
struct RowAround {
    int32_t x, y; ///< the middle; it and its sums with the distances fit into 31 bits
    int32_t dx, dy;
    size_t count;
};
/// Entries that a row's tables by distance have to hold behind those of its pixels.
constexpr size_t kTablePadding = 16;

/// One level's kernels. With (dx, dy) a pixel's place from the middle:
struct LensKernels {
    /// u = sine * dy + cosine * dx and v = cosine * dy - sine * dx are bent each by its entry of the table,
    /// then turned back.
    void (*tileRow)(const TileLens& lens, uint32_t y, size_t count, uint32_t* columns,
                    uint32_t* rows) noexcept;
    /// The pixels come from dx and dy times power / (dx * dx + dy * dy), in 256ths. No such sum may be 0 in
    /// 32 bits but that of the middle, which comes from itself.
    void (*inversionRow)(LensSize size, int32_t power, uint32_t y, size_t count, uint32_t* columns,
                         uint32_t* rows) noexcept;
    /// The pixels come from dx and dy times a factor from 0 to 256, in 256ths, which the table has by dx
    /// without its sign. Distances are below 32768.
    void (*scaledRow)(const RowAround& row, const int32_t* factors, uint32_t* columns,
                      uint32_t* rows) noexcept;
    /// They come from (dx, dy) / radius, turned by an angle whose sine and cosine the tables have by dx
    /// without its sign, times radius. With a sine of 0 they come from themselves. In single precision, cut.
    void (*turnedRow)(const RowAround& row, float radius, const float* sines, const float* cosines,
                      uint32_t* columns, uint32_t* rows) noexcept;
};

template <>
const LensKernels& SelectKernels<LensKernels>(unsigned features) noexcept;

} // namespace AVBased::kernels
