#pragma once
/// A disc in which a picture is mixed with a colour and brightened: fully in its core, less and less towards
/// its rim.
#include "kernels/planes.h"
#include "kernels/select.h"

namespace AVBased::kernels {

/// Where the disc lies, and what happens to a sample q of it that is mixed with k: it becomes
/// ((q * (65536 - a) + k * a) >> 16) + b, limited to 0..255; shifts round down. With the rim 3 * radius / 4
/// wide, rounded down, a is the density and b the brightness within radius - rim of the centre. Farther out a
/// is t * (density / rim) and b is (t * (brightness * 256 / rim)) >> 8, where t is the radius less the
/// distance rounded down, and divisions round towards 0. It ends before column x + radius and row y + radius.
struct Spot {
    size_t x, y;                 ///< the centre, in the picture or right behind its end
    size_t radius;               ///< from 2 to 2^31 - 1
    int64_t density, brightness; ///< at most 2^42 or so either way
};

/// What the samples of planar pictures are mixed with, and the shifts from luma to chroma positions.
struct SpotPlanes {
    Plane8 y, u, v;
    uint8_t colourY, colourU, colourV;
    unsigned horizontalShift, verticalShift; ///< at most 2
};

/// Bytes of scratch for a picture of that many pixels a row, aligned to 64 bytes.
constexpr size_t SpotScratchBytes(size_t width) noexcept { return 10 * ((width + 256) / 32 * 32); }

/// One level's kernels.
struct SpotlightKernels {
    /// B, G and R; A stays. The colour is 0xRRGGBB.
    void (*spotlightRgba32)(Plane32 plane, const Spot& spot, uint32_t colour, uint8_t* scratch) noexcept;
    /// Luma so, and chroma without b. A chroma sample is mixed again with each luma sample that belongs to
    /// it, from the left to the right and from the top downwards.
    void (*spotlightComponent)(const SpotPlanes& planes, const Spot& spot, uint8_t* scratch) noexcept;
};

template <>
const SpotlightKernels& SelectKernels<SpotlightKernels>(unsigned features) noexcept;

} // namespace AVBased::kernels
