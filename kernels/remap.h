#pragma once
/// Samples from stored places.
#include "kernels/planes.h"
#include "kernels/select.h"

namespace AVBased::kernels {

/// One level's kernels. Sample or pixel i of to becomes the one at byte offsets[i] of from. Both may be of
/// one plane as long as no sample comes from one before it.
struct RemapKernels {
    void (*remapRgba32)(uint8_t* to, const uint8_t* from, const uint32_t* offsets, size_t pixels) noexcept;
    void (*remapComponent)(uint8_t* to, const uint8_t* from, const uint32_t* offsets,
                           size_t samples) noexcept;
};

template <>
const RemapKernels& SelectKernels<RemapKernels>(unsigned features) noexcept;

} // namespace AVBased::kernels
