#include "AVEffect/kernels/stereo.h"

#include "AVEffect/kernels/select.h"

#define AVEFFECT_KERNEL_BODY "AVEffect/kernels/stereo.inl"
#include "AVEffect/kernels/for_each_level.h"

namespace AVBased::kernels {

AVEFFECT_SELECT_BY_LEVEL(StereoKernels)

} // namespace AVBased::kernels
