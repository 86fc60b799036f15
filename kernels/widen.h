#pragma once
/// Pictures made wider, as pixels R, G, B of three bytes. All is in whole numbers: every level gives the same
/// bytes, which are those of exact arithmetic, rounded, but for an 8th at most. Colours
/// of planes beyond -512 to 512 count as those.
#include "kernels/conversion.h"

namespace AVBased::kernels {

/// Four taps for each of the columns that are made: from column first on, -2 to 3 behind the last, in
/// 32768ths. From one to the next, first grows by 1 or not at all. The tables go on to a multiple of 64
/// columns. Columns beyond an edge are those at the edge.
struct Widening {
    size_t width;
    const int32_t* first;
    const int16_t* taps[4];
};

/// Bytes of scratch, aligned to 64.
constexpr size_t WidenScratchBytes(size_t width, size_t wide) noexcept {
    return 16 * (width + 512) + 16 * (wide + 256);
}

/// One level's kernels; as many rows as the output has.
struct WidenKernels {
    /// Of B, G, R, A or, swapped, R, G, B, A.
    void (*widenPixels)(Plane8 rgb24, Plane32 pixels, const Widening& widening, bool swapped,
                        uint8_t* scratch) noexcept;
    void (*widenPlanes)(Plane8 rgb24, const YuvaPlanes& planes, const PixelRule& rule,
                        const Widening& widening, uint8_t* scratch) noexcept;
};

template <>
const WidenKernels& SelectKernels<WidenKernels>(unsigned features) noexcept;

} // namespace AVBased::kernels
