#pragma once
/// A frame of one colour that fades into the picture: rows and columns mixed with the colour, one weight
/// after another.
#include "kernels/planes.h"
#include "kernels/select.h"

namespace AVBased::kernels {

/// How often a sample is mixed along one axis: a chroma sample for each of up to four luma samples, from both
/// sides of the picture.
constexpr size_t kMostMixes = 8;

/// What happens to one row or column: mixes with the colour's weight, 0 to 256, one on what the other left.
struct PortraitPlace {
    uint16_t weights[kMostMixes];
    uint8_t mixes;   ///< how many there are
    uint8_t alpha;   ///< of pixels, where there are any
    uint8_t samples; ///< rows or columns of luma that it stands for
};

/// Mixes of a run of columns, in 16 bits: byte * weight + term, shifted right by 8. For each pass four tables
/// of pitch entries, an entry for two bytes of a row: weights and terms of the even bytes, weights and terms
/// of the odd ones. The tables reach a register beyond the run.
struct PortraitColumns {
    size_t begin, end; ///< bytes of the row, begin even
    size_t passes;
    size_t pitch;
    const uint16_t* tables;
};

/// A plane's frame. Mixes of a row happen as often as a sample stands for columns of luma, those of columns
/// as often as the row stands for rows of it.
struct PortraitFrame {
    uint32_t colour;           ///< 0xRRGGBB, or a sample's value
    const PortraitPlace* rows; ///< one for each row
    PortraitColumns runs[2];   ///< may be empty
    unsigned across;           ///< columns that a sample stands for
    unsigned acrossLast;       ///< columns that a row's last sample stands for
};

/// One level's kernels. Samples become (sample * (256 - weight) + colour * weight) >> 8 with each mix, first
/// those of their row, then those of their column. Rows without mixes skip the first.
struct PortraitKernels {
    void (*portraitRgba32)(Plane32 plane, const PortraitFrame& frame) noexcept;
    void (*portraitComponent)(Plane8 plane, const PortraitFrame& frame) noexcept;
};

template <>
const PortraitKernels& SelectKernels<PortraitKernels>(unsigned features) noexcept;

} // namespace AVBased::kernels
