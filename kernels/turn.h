#pragma once
/// Quarter turns in place: the turned picture, reduced by averaging, in a part of the plane, and one colour
/// around it.
///
/// Reducing n rows to m, row j of the result covers the old rows from j * n / m to (j + 1) * n / m. An old
/// row counts by how much of it lies in there, in 256ths of the whole: the part covered up to its end,
/// rounded to the nearest 256th, halves upwards, less that up to its beginning. So the shares make 256. Each
/// sample becomes (sum of share * sample + 128) >> 8.
///
/// The plane's rows are reduced first, to the part's width; then what came out is reduced along the rows, to
/// the part's height, in the same way; then it is turned. Where n is less than m, rows are repeated and mixed
/// by the same rule.
#include "kernels/planes.h"
#include "kernels/select.h"

namespace AVBased::kernels {

/// A part of a plane, in its samples or pixels.
struct PlaneArea {
    size_t left, top, width, height;
};

/// One level's kernels. The area lies inside the plane. The scratch has TurnScratchBytes() bytes and starts
/// at any address.
struct TurnKernels {
    /// Alpha is averaged like the colours. The background's bytes from the lowest: B, G, R, A.
    void (*turnRgba32)(Plane32 plane, const PlaneArea& area, bool clockwise, uint32_t background,
                       uint8_t* scratch) noexcept;
    void (*turnComponent)(Plane8 plane, const PlaneArea& area, bool clockwise, uint8_t background,
                          uint8_t* scratch) noexcept;
};

/// Bytes from row to row of scratch memory for rows of so many bytes: whole lines of the cache, an odd number
/// of them, so that columns spread over the cache.
constexpr size_t TurnPitch(size_t bytes) noexcept { return ((bytes + 63) & ~size_t{63}) | 64; }

/// Bytes of scratch for a plane and an area of so many columns of 1 or 4 bytes.
constexpr size_t TurnScratchBytes(size_t planeWidth, size_t areaWidth, size_t unitBytes) noexcept {
    return 64 / unitBytes * TurnPitch(planeWidth * unitBytes) +
           (planeWidth + 15) * TurnPitch(areaWidth * unitBytes);
}

template <>
const TurnKernels& SelectKernels<TurnKernels>(unsigned features) noexcept;

} // namespace AVBased::kernels
