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

/// In the source file of a family, after its levels: defines SelectTable, which its header declares.
#define AVEFFECT_SELECT_BY_LEVEL(Table)                                                                      \
    const Table& Select##Table(unsigned features) noexcept {                                                 \
        return SelectLevel(features, sse2::kKernels, avx2::kKernels, avx512::kKernels,                       \
                           avx512vbmi::kKernels);                                                            \
    }

} // namespace AVBased::kernels
