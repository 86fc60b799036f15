#include "AVEffect/kernels/morphology.h"

#include "AVEffect/kernels/select.h"

#define AVEFFECT_KERNEL_BODY "AVEffect/kernels/morphology.inl"
#include "AVEffect/kernels/for_each_level.h"

namespace AVBased::kernels {

AVEFFECT_SELECT_BY_LEVEL(MorphologyKernels)

} // namespace AVBased::kernels
