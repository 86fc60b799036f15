#pragma once
/// 3x3 filters in place. The outermost rows and columns of a plane stay as they are.
#include "kernels/planes.h"
#include "kernels/select.h"

namespace AVBased::kernels {

/// Bytes of scratch that a filter needs for rows of that many bytes: two 16-bit sums a byte and a register
/// more, or two 32-bit sums a byte of rows shorter than that. The scratch is aligned to 64 bytes.
constexpr size_t FilterScratchBytes(size_t widthBytes) noexcept {
    constexpr size_t kWidestRegister = 64;
    return 4 * (widthBytes + kWidestRegister) + 4 * kWidestRegister;
}

/// One level's kernels. Planes smaller than 3x3 stay as they are. With track, which costs a little, false
/// comes back when no byte changed; without it, true may come back then too.
struct Filter3x3Kernels {
    /// 1-2-1 by 1-2-1, divided by 16, rounded down.
    bool (*blurComponent)(Plane8 plane, uint8_t* scratch, bool track) noexcept;
    /// The same for each byte of the pixels, alpha included.
    bool (*blurRgba32)(Plane32 plane, uint8_t* scratch, bool track) noexcept;
    /// Nine times the sample less its eight neighbours, limited to 0..255.
    bool (*sharpenComponent)(Plane8 plane, uint8_t* scratch, bool track) noexcept;
    bool (*sharpenRgba32)(Plane32 plane, uint8_t* scratch, bool track) noexcept;
};

template <>
const Filter3x3Kernels& SelectKernels<Filter3x3Kernels>(unsigned features) noexcept;

} // namespace AVBased::kernels
