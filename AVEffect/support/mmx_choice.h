#pragma once
/// Some effects have two kernels that compute different things: a plain one, and one after what MMX registers
/// once did.
#include "aveffect/base_media.h"

namespace AVBased {

/// Whether the processor, as the host lets it be seen, gets the kernels after MMX.
inline bool ChoosesMmxKernels() { return (AVBasedGetCPUFeatures() & (kCpuMMX | kCpuSSE2)) != 0; }

} // namespace AVBased
