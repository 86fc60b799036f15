#pragma once
/// Counts what this process takes from and gives back to the C library's heap.
#include <cstddef>

namespace test {

/// Blocks allocated, reallocated ones included, since the process began.
size_t Allocations();

/// Blocks that are allocated now.
size_t LiveBlocks();

} // namespace test
