#pragma once
/// Colours of properties: 0xRRGGBB in the low 24 bits.
#include <cstdint>

namespace AVBased {

/// A colour as limited-range YUV bytes (ITU-R BT.601); black at first.
struct YuvColour {
    uint8_t y = 16, u = 128, v = 128;

    /// In double precision, the sums taken from left to right and truncated.
    static constexpr YuvColour FromRgb(uint32_t colour) {
        const double r = (colour >> 16) & 255, g = (colour >> 8) & 255, b = colour & 255;
        return {static_cast<uint8_t>(0.257 * r + 0.504 * g + 0.098 * b + 16),
                static_cast<uint8_t>(-0.148 * r - 0.291 * g + 0.439 * b + 128),
                static_cast<uint8_t>(0.439 * r - 0.368 * g - 0.071 * b + 128)};
    }
};

} // namespace AVBased
