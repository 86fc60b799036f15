#pragma once
/// Rays towards a centre: every sample is added to sixteen others on its way there.
#include "kernels/planes.h"
#include "kernels/select.h"

namespace AVBased::kernels {

/// Sixteen times a sample goes on towards the centre, along each axis by itself: its distance s from it, in
/// 256ths of a pixel, becomes s - (((s >> 4) * level) >> 10), and it stands in the column or row
/// (centre + 256 + s) >> 8, limited to the picture. All of it in 32 bits that wrap; shifts round down.
struct Rays {
    uint32_t x, y; ///< the centre in 256ths of a pixel
    int32_t level;
};

/// What chroma needs to know of the luma plane. Shifts are at most 2.
struct LumaShape {
    size_t width, rows;
    unsigned horizontalShift, verticalShift;
};

/// Bytes of scratch that a plane of that many samples or pixels a row needs, aligned to 64 bytes.
constexpr size_t RadiateScratchBytes(size_t width, size_t lumaRows, unsigned horizontalShift) noexcept {
    constexpr size_t kSampleBytes = 128, kMostLanes = 64;
    return 64 * (lumaRows + kMostLanes) + (kSampleBytes * (width + 3 * kMostLanes) << horizontalShift);
}

/// One level's kernels. The copy is as large as the plane and holds its samples. The plain and the Mmx one
/// differ for levels below 0 and from 2048 on; both are wanted.
struct RadiateKernels {
    /// B, G and R become min((sum >> 4) + (level >> 3), 255), of that the low 8 bits; A stays. The sum has
    /// seventeen samples.
    void (*radiateRgba32)(Plane32 plane, Plane32 copy, const Rays& rays, uint8_t* scratch) noexcept;
    /// min(sum >> 4, 255), and the low 8 bits of level >> 3 added to it, limited to 255.
    void (*radiateRgba32Mmx)(Plane32 plane, Plane32 copy, const Rays& rays, uint8_t* scratch) noexcept;
    /// As radiateRgba32.
    void (*radiateLuma)(Plane8 plane, Plane8 copy, const Rays& rays, uint8_t* scratch) noexcept;
    /// For each luma sample that belongs to it, in their order, a chroma sample becomes min(sum >> 4, 255) of
    /// itself, as it is by then, and of the sixteen samples of the copy where that luma sample goes.
    void (*radiateChroma)(Plane8 plane, Plane8 copy, const Rays& rays, const LumaShape& luma,
                          uint8_t* scratch) noexcept;
};

template <>
const RadiateKernels& SelectKernels<RadiateKernels>(unsigned features) noexcept;

} // namespace AVBased::kernels
