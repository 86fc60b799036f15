#pragma once
/// Which level's kernels a processor gets.
#include "aveffect/base_media.h"

namespace AVBased::kernels {

/// The fastest of three tables that the feature word allows.
template <class Table>
const Table& SelectLevel(unsigned features, const Table& sse2, const Table& avx2,
                         const Table& avx512) noexcept {
    if (features & kCpuAVX512) return avx512;
    if (features & kCpuAVX2) return avx2;
    return sse2;
}

} // namespace AVBased::kernels
