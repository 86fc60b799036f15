#pragma once
/// Memory of the kernels that pick the samples of a row by a table of columns.
#include <cstddef>

namespace AVBased::kernels {

/// Bytes of scratch for a table of that many columns, whole cache lines.
constexpr size_t ColumnScratchBytes(size_t columns) noexcept { return (6 * columns + 319) / 64 * 64; }

} // namespace AVBased::kernels
