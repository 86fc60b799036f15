#pragma once
/// Counts what this process takes from and gives back to the C library's heap.
#include <cstddef>

namespace test {

/// Blocks allocated, reallocated ones included, since the process began.
size_t Allocations();

/// Blocks that are allocated now.
size_t LiveBlocks();

/// From now on the calling thread gets that many blocks more, then null once. No limit is without an end.
void FailAllocationAfter(size_t blocks);
constexpr size_t kNoLimit = ~size_t{0};

/// Whether the limit was met.
bool AllocationFailed();

/// The calling thread's limit does not count while this lives.
class WithoutLimit {
public:
    WithoutLimit();
    ~WithoutLimit();
    WithoutLimit(const WithoutLimit&) = delete;
    WithoutLimit& operator=(const WithoutLimit&) = delete;

private:
    size_t m_Limit;
};

} // namespace test
