#pragma once
/// Kernels that change every sample on its own.
#include "AVEffect/kernels/planes.h"

namespace AVBased::kernels {

/// A 256-entry map of sample values.
using ByteTable = uint8_t[256];

/// Gain and offset of samples about the middle: ((x - 127) * gain >> 8) + offset, limited to 0..255. 32-bit
/// arithmetic wraps, the shift rounds down.
struct MiddleGain {
    int32_t gain;   ///< 256 is 1
    int32_t offset; ///< 127 keeps the middle
};

/// What x becomes.
uint8_t Apply(MiddleGain map, uint8_t x) noexcept;

/// B, G and R become their mean, rounded down.
void GrayRgba32(Plane32 plane) noexcept;
/// B and R change places.
void FlipColorRgba32(Plane32 plane) noexcept;
/// B, G and R become their complements.
void InvertRgba32(Plane32 plane) noexcept;
/// The mean, lifted to 35 where it is below 36, becomes R; G is 20 less, B 35 less.
void AgedFilmRgba32(Plane32 plane) noexcept;
/// B, G and R go through the table.
void TableRgba32(Plane32 plane, const ByteTable& table) noexcept;
/// B, G and R go through the table, then their distance from the mean of the three is multiplied by gain /
/// 256. The product wraps in 32 bits, the shift rounds down, the result is limited to 0..255.
void SaturateRgba32(Plane32 plane, const ByteTable& table, int32_t gain) noexcept;

/// Every sample becomes its complement.
void InvertComponent(Plane8 plane) noexcept;
/// Every sample goes through the gain.
void MiddleGainComponent(Plane8 plane, MiddleGain map) noexcept;
/// Every byte from the plane's first to its last row's end of pitch becomes value, padding included.
void FillPitch(Plane8 plane, uint8_t value) noexcept;
/// Exchanges the rows of two planes, as far as both have them.
void SwapPlanes(Plane8 first, Plane8 second) noexcept;

} // namespace AVBased::kernels
