#pragma once
/// Kernels that change every sample on its own.
#include <cstring>

#include "kernels/planes.h"
#include "kernels/select.h"

namespace AVBased::kernels {

/// Gain and offset of samples about the middle: ((x - 127) * gain >> 8) + offset, limited to 0..255. The
/// shift rounds down.
struct MiddleGain {
    int32_t gain;   ///< 0 to 4096; 256 is 1
    int32_t offset; ///< -16384 to 16383; 127 keeps the middle
};

/// One level's kernels. In all of them a plane starts at any address and nothing outside the rows' width is
/// touched.
struct ColourKernels {
    /// B, G and R become their mean, rounded down.
    void (*grayRgba32)(Plane32 plane) noexcept;
    /// B and R change places.
    void (*flipColorRgba32)(Plane32 plane) noexcept;
    /// B, G and R become their complements.
    void (*invertRgba32)(Plane32 plane) noexcept;
    /// The mean, lifted to 35 where it is below 36, becomes R; G is 15 less, B 35 less.
    void (*agedFilmRgba32)(Plane32 plane) noexcept;
    /// B, G and R go through the gain.
    void (*middleGainRgba32)(Plane32 plane, MiddleGain map) noexcept;
    /// B, G and R go through map, then their distance from the mean of the three is multiplied by gain / 256,
    /// gain 0 to 2047; the shift rounds down, the result is limited to 0..255.
    void (*saturateRgba32)(Plane32 plane, MiddleGain map, int32_t gain) noexcept;
    /// Every sample becomes its complement.
    void (*invertComponent)(Plane8 plane) noexcept;
    /// Every sample goes through the gain.
    void (*middleGainComponent)(Plane8 plane, MiddleGain map) noexcept;
    /// Exchanges the rows of two planes, as far as both have them.
    void (*swapPlanes)(Plane8 first, Plane8 second) noexcept;
};

template <>
const ColourKernels& SelectKernels<ColourKernels>(unsigned features) noexcept;

/// Every byte from the plane's first to its last row's end of pitch becomes value, padding included.
inline void FillPitch(Plane8 plane, uint8_t value) noexcept {
    if (plane.data) std::memset(plane.data, value, plane.pitch * plane.rows);
}

} // namespace AVBased::kernels
