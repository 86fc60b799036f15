#pragma once
/// Which level's kernels a processor gets.
#include "aveffect/base_media.h"

namespace AVBased::kernels {

/// The fastest of the levels' tables that the feature word allows.
template <class Table>
const Table& SelectLevel(unsigned features, const Table& sse2, const Table& avx2, const Table& avx512,
                         const Table& avx512vbmi) noexcept {
    const Table* best = &sse2;
    if (features & kCpuAVX2) best = &avx2;
    if (features & kCpuAVX512) best = (features & kCpuAVX512VBMI) ? &avx512vbmi : &avx512;
    return *best;
}

} // namespace AVBased::kernels
