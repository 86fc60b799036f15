#pragma once
/// Oil paint: every sample becomes the mean of those around it that have the most frequent brightness there.
#include "kernels/planes.h"
#include "kernels/select.h"

namespace AVBased::kernels {

struct OilBrush {
    size_t radius;   ///< of the square neighbourhood, cut at the picture's edges, up to kLargestRadius
    uint32_t levels; ///< 0 to 256; brightness b is in bin (b * levels) >> 8
};

/// Where the kernels keep what in their scratch, which is aligned to 64 bytes.
///
/// A ring holds the rows of the neighbourhood and the one above it, each as a row of bins and three of
/// samples. Small neighbourhoods are counted for all columns of a bin at once: how often the bin occurs in
/// each column of the neighbourhood's height, and which bins occur in a block of 64 columns of a row at all.
/// Large ones slide from pixel to pixel over the histograms of whole columns.
struct OilMemory {
    /// Of small neighbourhoods 15x15 is the largest: counts fit in bytes, sums in 16 bits.
    static constexpr size_t kLargestSmallRadius = 7;
    /// The counts of columns, times 256, fit in 32 bits.
    static constexpr size_t kLargestRadius = (size_t{1} << 23) - 1;
    static constexpr size_t kBlock = 64;
    /// Marks columns outside the picture in rows of bins; the bins of small neighbourhoods lie below.
    static constexpr uint8_t kNoBin = 255;
    /// Bytes of one bin of a column's histogram: a count and three sums, of 32 bits.
    static constexpr size_t kColumnBinBytes = 16;
    /// Bytes of one bin of the sliding histogram: a count and three sums, of 64 bits.
    static constexpr size_t kWindowBinBytes = 32;
    /// Bytes that tell which of 256 bins a column has.
    static constexpr size_t kUsedBytes = 32;

    bool small;
    size_t bins;
    size_t pitch;    ///< bytes of a row of bins or samples, with a block before and behind it
    size_t slots;    ///< rows of the ring
    size_t blocks;   ///< of a row, with the ones before and behind
    size_t words;    ///< of 64 bits that tell which bins a block has
    size_t rowBytes; ///< of all rows of the ring
    size_t used;     ///< where the flags of blocks or columns begin
    size_t counts;   ///< where counts or histograms of columns begin
    size_t window;   ///< where the sliding histogram begins
    size_t blank;    ///< where a row without bins begins
    size_t found;    ///< where two rows of chroma begin
    size_t total;

    constexpr OilMemory(size_t width, size_t rows, OilBrush brush) noexcept
        : small(brush.radius <= kLargestSmallRadius && brush.levels < 256)
        , bins(((255 * brush.levels) >> 8) + 1)
        // An odd number of cache lines: rows a power of two apart would fall on the same few sets.
        , pitch((((width + 3 * kBlock - 1) / kBlock) | 1) * kBlock)
        , slots(brush.radius < rows / 2 ? 2 * brush.radius + 2 : rows)
        , blocks(pitch / kBlock)
        , words((bins + 63) / 64)
        , rowBytes(slots * 4 * pitch)
        , used(rowBytes)
        , counts(used + (small ? ((slots + 1) * blocks * words * 8 + 63) / 64 * 64 : width * kUsedBytes))
        , window((counts + (small ? bins * pitch : width * bins * kColumnBinBytes) + 63) / 64 * 64)
        , blank((window + (small ? 0 : bins * kWindowBinBytes) + 63) / 64 * 64)
        , found(blank + pitch)
        , total(found + 2 * pitch) {}
};

/// One level's kernels. They want OilMemory(width, rows, brush).total bytes of scratch for the size in pixels
/// or luma samples.
struct OilKernels {
    /// Brightness is green; alpha becomes 0. On equal frequencies the darkest bin wins.
    void (*oilRgba32)(Plane32 plane, OilBrush brush, uint8_t* scratch) noexcept;
    /// Brightness is luma. A chroma sample becomes what the last luma sample that it belongs to has found.
    /// Chroma planes that lack samples for the last luma samples are read as if their last ones went on.
    void (*oilComponent)(Plane8 y, Plane8 u, Plane8 v, unsigned horizontalShift, unsigned verticalShift,
                         OilBrush brush, uint8_t* scratch) noexcept;
};

template <>
const OilKernels& SelectKernels<OilKernels>(unsigned features) noexcept;

} // namespace AVBased::kernels
