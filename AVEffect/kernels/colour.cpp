#include "AVEffect/kernels/colour.h"

#include "AVEffect/kernels/select.h"

#define AVEFFECT_KERNEL_BODY "AVEffect/kernels/colour.inl"
#include "AVEffect/kernels/for_each_level.h"

namespace AVBased::kernels {

const ColourKernels& SelectColourKernels(unsigned features) noexcept {
    return SelectLevel(features, sse2::kKernels, avx2::kKernels, avx512::kKernels, avx512vbmi::kKernels);
}

void FillPitch(Plane8 plane, uint8_t value) noexcept {
    if (plane.data) std::memset(plane.data, value, plane.pitch * plane.rows);
}

} // namespace AVBased::kernels
