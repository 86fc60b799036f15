#pragma once
/// 3x3 filters in place. The outermost rows and columns of a plane stay as they are.
#include "AVEffect/kernels/planes.h"

namespace AVBased::kernels {

/// Bytes of scratch that a filter needs for rows of that many bytes: the unchanged row above, and the column
/// sums of the row in work. Any alignment of 2 or more will do.
constexpr size_t FilterScratchBytes(size_t widthBytes) noexcept { return 3 * widthBytes + 1; }

/// 1-2-1 by 1-2-1, divided by 16, rounded down. Planes smaller than 3x3 stay as they are. True when a byte
/// changed.
bool BlurComponent(Plane8 plane, uint8_t* scratch) noexcept;
/// The same for each byte of the pixels, alpha included.
bool BlurRgba32(Plane32 plane, uint8_t* scratch) noexcept;

/// Nine times the sample less its eight neighbours, limited to 0..255.
bool SharpenComponent(Plane8 plane, uint8_t* scratch) noexcept;
bool SharpenRgba32(Plane32 plane, uint8_t* scratch) noexcept;

} // namespace AVBased::kernels
