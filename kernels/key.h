#pragma once
/// Colour keys: what has the colour becomes transparent.
#include "kernels/planes.h"
#include "kernels/select.h"

namespace AVBased::kernels {

/// Lowest and highest value of a sample that counts as the colour.
struct KeyRange {
    uint8_t low, high;
};

/// A planar key: the ranges of Y, U and V. Luma sample (x, y) goes with chroma sample (x >> horizontalShift,
/// y >> verticalShift), or the plane's last one where that lies outside.
struct PlanarKey {
    KeyRange y, u, v;
    unsigned horizontalShift, verticalShift; ///< 0 or 1
};

/// Bytes of scratch for a planar key on rows of that many luma samples.
constexpr size_t KeyScratchBytes(size_t width) noexcept {
    constexpr size_t kWidestRegister = 64;
    return 2 * (width + 2 * kWidestRegister);
}

/// One level's kernels.
struct KeyKernels {
    /// Pixels whose 24 bits 0xRRGGBB, as one number, lie in low to high get alpha 0.
    void (*keyRgba32)(Plane32 plane, uint32_t low, uint32_t high) noexcept;
    /// Alpha becomes 0 where all three samples lie in their ranges. The chroma planes have one size.
    void (*keyComponent)(Plane8 y, Plane8 u, Plane8 v, Plane8 alpha, const PlanarKey& key,
                         uint8_t* scratch) noexcept;
};

template <>
const KeyKernels& SelectKernels<KeyKernels>(unsigned features) noexcept;

} // namespace AVBased::kernels
