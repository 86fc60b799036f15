#pragma once
/// The levels of the processor that kernels are written for.
#include <cstddef>
#include <iterator>

#include "aveffect/base_media.h"

namespace fuzz {

/// What is made from now on uses one level of the processor: 0 and every fourth all that it has, others less.
inline void UseLevel(size_t level) {
    constexpr unsigned kMasks[] = {~0u, 0x7, 0x1FF, 0x3FF};
    AVBasedSetCPUFeatureMask(kMasks[level % std::size(kMasks)]);
}

} // namespace fuzz
