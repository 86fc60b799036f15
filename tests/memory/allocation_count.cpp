#include "tests/memory/allocation_count.h"

#include <atomic>
#include <cerrno>

// The names under which the C library keeps its own functions when a program brings others.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* block, size_t size);
void* __libc_memalign(size_t alignment, size_t size);
void __libc_free(void* block);
}
// NOLINTEND(bugprone-reserved-identifier)

namespace {

std::atomic<size_t> g_allocations, g_frees;

constexpr size_t kMet = test::kNoLimit - 1;
thread_local size_t t_left = test::kNoLimit;

bool Refused() {
    if (t_left == test::kNoLimit || t_left == kMet) return false;
    if (t_left > 0) {
        --t_left;
        return false;
    }
    t_left = kMet;
    return true;
}

void* Counted(void* block) {
    if (block) ++g_allocations;
    return block;
}

} // namespace

extern "C" {

void* malloc(size_t size) { return Refused() ? nullptr : Counted(__libc_malloc(size)); }
void* calloc(size_t count, size_t size) { return Refused() ? nullptr : Counted(__libc_calloc(count, size)); }
void* memalign(size_t alignment, size_t size) {
    return Refused() ? nullptr : Counted(__libc_memalign(alignment, size));
}
void* aligned_alloc(size_t alignment, size_t size) {
    return Refused() ? nullptr : Counted(__libc_memalign(alignment, size));
}

void* realloc(void* block, size_t size) {
    if (Refused()) return nullptr;
    if (block) ++g_frees;
    return Counted(__libc_realloc(block, size));
}

int posix_memalign(void** block, size_t alignment, size_t size) {
    if (Refused()) return ENOMEM;
    *block = Counted(__libc_memalign(alignment, size));
    return *block ? 0 : ENOMEM;
}

void free(void* block) {
    if (block) ++g_frees;
    __libc_free(block);
}
}

namespace test {

size_t Allocations() { return g_allocations; }
size_t LiveBlocks() { return g_allocations - g_frees; }

void FailAllocationAfter(size_t blocks) { t_left = blocks; }
bool AllocationFailed() { return t_left == kMet; }

WithoutLimit::WithoutLimit()
    : m_Limit(t_left) {
    t_left = kNoLimit;
}
WithoutLimit::~WithoutLimit() { t_left = m_Limit; }

} // namespace test
