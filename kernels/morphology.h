#pragma once
/// Extremes of 3x3 blocks, in place. Blocks lie wholly in the plane; what has none stays as it is.
#include "kernels/planes.h"
#include "kernels/select.h"

namespace AVBased::kernels {

/// Bytes of scratch that these kernels need for rows of that many bytes: two rows of extremes, each up to a
/// register longer than the plane's. The scratch is aligned to 64 bytes.
constexpr size_t MorphologyScratchBytes(size_t widthBytes) noexcept {
    constexpr size_t kWidestRegister = 64;
    return 2 * (widthBytes + kWidestRegister);
}

/// One level's kernels. A of pixels stays. Planes smaller than 3x3 stay as they are.
struct MorphologyKernels {
    /// The largest of the block whose last row and column are the sample's.
    void (*dilateComponent)(Plane8 plane, uint8_t* scratch) noexcept;
    void (*dilateRgba32)(Plane32 plane, uint8_t* scratch) noexcept;
    /// The smallest of the block whose first row and column are the sample's.
    void (*erodeComponent)(Plane8 plane, uint8_t* scratch) noexcept;
    void (*erodeRgba32)(Plane32 plane, uint8_t* scratch) noexcept;
};

template <>
const MorphologyKernels& SelectKernels<MorphologyKernels>(unsigned features) noexcept;

} // namespace AVBased::kernels
