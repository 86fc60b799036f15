#include "AVEffect/kernels/transition.h"

#include "AVEffect/kernels/select.h"

#define AVEFFECT_KERNEL_BODY "AVEffect/kernels/transition.inl"
#include "AVEffect/kernels/for_each_level.h"

namespace AVBased::kernels {

AVEFFECT_SELECT_BY_LEVEL(TransitionKernels)

} // namespace AVBased::kernels
