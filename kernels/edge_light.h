#pragma once
/// How steeply a picture rises, in place: each sample becomes the low 8 bits of sqrt(x * x + y * y) * level,
/// rounded towards 0, where x and y are its differences to the old samples on its right and below. The root
/// and the product are those of double precision. The last row stays as it is.
#include "kernels/planes.h"
#include "kernels/select.h"

namespace AVBased::kernels {

/// One level's kernels. From -11 to 11 levels cost least, from -90 to 90 little more; others take many times
/// as long.
struct EdgeLightKernels {
    /// B, G and R; A and the last pixel of each row stay.
    void (*edgeLightRgba32)(Plane32 plane, int32_t level) noexcept;
    /// All samples of a row. Right of the last one is the byte behind it in memory, be it padding or the next
    /// row's first sample. The results are XORed with flip.
    void (*edgeLightComponent)(Plane8 plane, int32_t level, uint8_t flip) noexcept;
};

template <>
const EdgeLightKernels& SelectKernels<EdgeLightKernels>(unsigned features) noexcept;

} // namespace AVBased::kernels
