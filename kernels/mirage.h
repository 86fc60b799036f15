#pragma once
/// A picture blended with an enlarged copy of itself.
#include "kernels/columns.h"
#include "kernels/planes.h"
#include "kernels/select.h"

namespace AVBased::kernels {

/// Where the enlarged picture comes from, in 16.16 fixed point that wraps: its luma sample (x, y) is the
/// picture's ((offsetX + x * step) >> 16, (offsetY + y * step) >> 16), limited to the picture.
struct Mirage {
    uint32_t offsetX, offsetY, step;
    uint32_t weight;                         ///< of the enlarged picture, 0 to 256
    size_t width, height;                    ///< of the luma plane
    unsigned horizontalShift, verticalShift; ///< of the plane at hand, 0 to 2
};

/// Bytes of scratch for rows of that many samples or pixels.
constexpr size_t MirageScratchBytes(size_t width) noexcept { return ColumnScratchBytes(width) + 4 * width; }

/// One level's kernels. Each takes the picture and a copy of it: the first is changed, the second read.
/// Samples become (sample * (256 - weight) + enlarged * weight) >> 8.
struct MirageKernels {
    /// B, G and R; alpha becomes that of the enlarged picture.
    void (*mirageRgba32)(Plane32 plane, Plane32 copy, const Mirage& mirage, uint8_t* scratch) noexcept;
    /// All four bytes alike.
    void (*mirageRgba32Mmx)(Plane32 plane, Plane32 copy, const Mirage& mirage, uint8_t* scratch) noexcept;
    /// Luma, or chroma with its shifts. A chroma sample is enlarged as the last luma sample that it belongs
    /// to, and blended once for each of them, every time with what the blend before has left.
    void (*mirageComponent)(Plane8 plane, Plane8 copy, const Mirage& mirage, uint8_t* scratch) noexcept;
};

template <>
const MirageKernels& SelectKernels<MirageKernels>(unsigned features) noexcept;

} // namespace AVBased::kernels
