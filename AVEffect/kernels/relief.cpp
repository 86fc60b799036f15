#include "AVEffect/kernels/relief.h"

#include "AVEffect/kernels/select.h"

#define AVEFFECT_KERNEL_BODY "AVEffect/kernels/relief.inl"
#include "AVEffect/kernels/for_each_level.h"

namespace AVBased::kernels {

AVEFFECT_SELECT_BY_LEVEL(ReliefKernels)

} // namespace AVBased::kernels
