#pragma once
/// A disc in which a picture is mixed with a colour and brightened: fully in its core, less and less towards
/// its rim.
#include "AVEffect/kernels/planes.h"

namespace AVBased::kernels {

/// Where the disc lies, and what happens to a sample q of a picture that is mixed with k: it becomes
/// ((q * (65536 - a) + k * a) >> 16) + b, limited to 0..255; shifts round down.
struct Spot {
    size_t left, right, top, bottom; ///< columns and rows that it is limited to; the picture has them all
    size_t x, y;                     ///< the centre, in the picture or right behind its end
    size_t radius;                   ///< from 2 to 2^31 - 1
    size_t rim;                      ///< from 1 to the radius; the core is what lies within radius - rim
    int64_t density, brightness;     ///< a and b in the core; at most 2^42 or so either way
    /// In the rim a is t * densityStep and b is (t * brightnessStep) >> 8, where t is the radius less the
    /// distance from the centre rounded down. A rim's worth of steps is no more than the core's.
    int64_t densityStep, brightnessStep;
};

/// What the samples of planar pictures are mixed with, and the shifts from luma to chroma positions.
struct SpotPlanes {
    Plane8 y, u, v;
    uint8_t colourY, colourU, colourV;
    unsigned horizontalShift, verticalShift; ///< at most 2
};

/// Bytes of scratch that a disc needs, aligned to 64 bytes.
constexpr size_t SpotScratchBytes(const Spot& spot) noexcept {
    return spot.right > spot.left ? 10 * ((spot.right - spot.left + 256) / 32 * 32) : 0;
}

/// One level's kernels.
struct SpotlightKernels {
    /// B, G and R; A stays. The colour is 0xRRGGBB.
    void (*spotlightRgba32)(Plane32 plane, const Spot& spot, uint32_t colour, uint8_t* scratch) noexcept;
    /// Luma so, and chroma without b. A chroma sample is mixed again with each luma sample that belongs to
    /// it, from the left to the right and from the top downwards.
    void (*spotlightComponent)(const SpotPlanes& planes, const Spot& spot, uint8_t* scratch) noexcept;
};

/// The fastest kernels for a feature word (see AVBased::CPUFeature); those of the baseline for 0.
const SpotlightKernels& SelectSpotlightKernels(unsigned features) noexcept;

} // namespace AVBased::kernels
