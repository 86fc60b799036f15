#include "AVEffect/kernels/turn.h"

#include "AVEffect/kernels/select.h"

#define AVEFFECT_KERNEL_BODY "AVEffect/kernels/turn.inl"
#include "AVEffect/kernels/for_each_level.h"

namespace AVBased::kernels {

AVEFFECT_SELECT_BY_LEVEL(TurnKernels)

} // namespace AVBased::kernels
