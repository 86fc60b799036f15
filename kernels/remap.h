#pragma once
/// Samples from stored places.
#include "kernels/planes.h"
#include "kernels/select.h"

namespace AVBased::kernels {

/// What the places of a row are held against.
struct PlaceLimits {
    uint32_t width, height; ///< of the plane that the samples come from; from here on places lie outside
    uint32_t x, y;          ///< of the row's first sample
    uint32_t pitch, bytes;  ///< from one row, and from one sample, to the next
};

/// How places of luma become places of chroma that has half the columns.
struct ChromaLimits {
    uint32_t width, height;       ///< of luma; from here on places lie outside
    uint32_t lastColumn, lastRow; ///< of chroma
    unsigned rowShift;
};

/// One level's kernels. Sample or pixel i of to becomes the one at byte offsets[i] of from. Both may be of
/// one plane as long as no sample comes from one before it.
struct RemapKernels {
    /// How many samples, from the first on, come from inside the plane and not from themselves; their offsets
    /// are written.
    size_t (*findOffsets)(const uint32_t* columns, const uint32_t* rows, size_t count,
                          const PlaceLimits& limits, uint32_t* offsets) noexcept;
    /// How many of the places 1, 3, 5, ..., from the first on, are known to lie inside; they are written as
    /// chroma's. More of them may.
    size_t (*findChroma)(const uint32_t* columns, const uint32_t* rows, size_t count,
                         const ChromaLimits& limits, uint32_t* chromaColumns, uint32_t* chromaRows) noexcept;
    void (*remapRgba32)(uint8_t* to, const uint8_t* from, const uint32_t* offsets, size_t pixels) noexcept;
    void (*remapComponent)(uint8_t* to, const uint8_t* from, const uint32_t* offsets,
                           size_t samples) noexcept;
};

template <>
const RemapKernels& SelectKernels<RemapKernels>(unsigned features) noexcept;

} // namespace AVBased::kernels
