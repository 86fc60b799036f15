#include "AVEffect/kernels/filter3x3.h"

#include "AVEffect/kernels/select.h"

#define AVEFFECT_KERNEL_BODY "AVEffect/kernels/filter3x3.inl"
#include "AVEffect/kernels/for_each_level.h"

namespace AVBased::kernels {

const FilterKernels& SelectFilterKernels(unsigned features) noexcept {
    return SelectLevel(features, sse2::kKernels, avx2::kKernels, avx512::kKernels, avx512vbmi::kKernels);
}

} // namespace AVBased::kernels
