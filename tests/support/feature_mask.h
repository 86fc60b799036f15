#pragma once
/// Levels of the processor that kernels are written for.
#include "aveffect/base_media.h"

namespace test {

/// Feature masks that leave one level of kernels each: SSE2, AVX2, AVX-512, everything.
inline constexpr unsigned kLevelMasks[] = {0x7, 0x1FF, 0x3FF, ~0u};

/// The processor as processors are made and run under a mask.
class FeatureMask {
public:
    explicit FeatureMask(unsigned mask) { AVBasedSetCPUFeatureMask(mask); }
    ~FeatureMask() { AVBasedSetCPUFeatureMask(~0u); }
    FeatureMask(const FeatureMask&) = delete;
    FeatureMask& operator=(const FeatureMask&) = delete;
};

} // namespace test
