#pragma once
/// Which level's kernels a processor gets.
#include "aveffect/base_media.h"

namespace AVBased {

namespace kernels {

/// The fastest of a family's kernels that a feature word (see AVBased::CPUFeature) allows; those of the
/// baseline for 0. A family's header says that there is one for its table; the build makes it.
template <class Table>
const Table& SelectKernels(unsigned features) noexcept;

} // namespace kernels

/// The fastest of a family's kernels on this processor, as the host lets it be seen at that time.
template <class Table>
const Table& Kernels() noexcept {
    return kernels::SelectKernels<Table>(AVBasedGetCPUFeatures());
}

} // namespace AVBased
