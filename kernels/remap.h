#pragma once
/// Samples from stored places.
#include "kernels/planes.h"
#include "kernels/select.h"

namespace AVBased::kernels {

/// Maps are made and replayed in tiles of so many columns and rows: the sources of neighbours in both
/// directions lie near each other, whichever way the map turns the picture. Where a window holds them all,
/// and the processor can pick from one, a tile is picked at once and each of its samples has a byte of the
/// map.
constexpr size_t kTileSide = 8;
/// The most bytes of places that a tile has: a byte offset for each sample.
constexpr size_t kTilePlaceBytes = kTileSide * kTileSide * 4;

/// Where the samples of a tile come from.
struct MapTile {
    static constexpr uint32_t kStays = 0xFFFFFFFF;     ///< from themselves, all of them
    static constexpr uint32_t kByOffsets = 0xFFFFFFFE; ///< from a byte offset each
    uint32_t window; ///< else a byte each: row * 16 + column of the window that begins at this byte
    /// Where these begin, in 64 bytes. Offsets of tiles that follow each other stand together, line by line.
    uint32_t places;
};

/// What the places of a band of up to kTileSide rows are held against.
struct PlaceLimits {
    uint32_t width, height; ///< of the plane that the samples come from; from here on places lie outside
    uint32_t x, y;          ///< of the band's first sample
    uint32_t pitch, bytes;  ///< from one row, and from one sample, to the next
};

/// The places of a band: rows of them, each stride entries behind the one above.
struct PlaceBand {
    const uint32_t* columns;
    const uint32_t* rows;
    size_t stride, count, lines;
};

/// The tiles of a part of a plane, band by band. Bands begin at rows that are multiples of kTileSide, tiles
/// at xBegin and every kTileSide columns from there.
struct TileGrid {
    size_t xBegin, xEnd, yBegin, yEnd;
    const MapTile* tiles;
    const uint8_t* places;
    size_t pitch; ///< of the plane that the samples come from
};

/// How places of luma become places of chroma that has half the columns.
struct ChromaLimits {
    uint32_t width, height;       ///< of luma; from here on places lie outside
    uint32_t lastColumn, lastRow; ///< of chroma
    unsigned rowShift;
};

/// One level's kernels.
struct RemapKernels {
    /// Makes the tiles of a band, their places from 64 * used bytes of the memory on, which has room for
    /// kTilePlaceBytes each. Samples from outside the plane come from themselves. Returns where the next
    /// places begin. Maps are replayed by the level that made them.
    uint32_t (*findTiles)(const PlaceBand& band, const PlaceLimits& limits, MapTile* tiles, uint8_t* memory,
                          uint32_t used) noexcept;
    /// How many places, from the first on, lie inside a plane of that size.
    size_t (*countInside)(const uint32_t* columns, const uint32_t* rows, size_t count, uint32_t width,
                          uint32_t height) noexcept;
    /// How many of the places 1, 3, 5, ..., from the first on, are known to lie inside; they are written as
    /// chroma's. More of them may.
    size_t (*findChroma)(const uint32_t* columns, const uint32_t* rows, size_t count,
                         const ChromaLimits& limits, uint32_t* chromaColumns, uint32_t* chromaRows) noexcept;
    /// The grid's samples or pixels become those of from.
    void (*remapTilesRgba32)(Plane8 plane, const uint8_t* from, const TileGrid& grid) noexcept;
    void (*remapTilesComponent)(Plane8 plane, const uint8_t* from, const TileGrid& grid) noexcept;
    /// Sample or pixel i of to becomes the one at byte offsets[i] of from. Both may be of one plane as long
    /// as no sample comes from one before it.
    void (*remapRgba32)(uint8_t* to, const uint8_t* from, const uint32_t* offsets, size_t pixels) noexcept;
    void (*remapComponent)(uint8_t* to, const uint8_t* from, const uint32_t* offsets,
                           size_t samples) noexcept;
};

template <>
const RemapKernels& SelectKernels<RemapKernels>(unsigned features) noexcept;

} // namespace AVBased::kernels
