#include "BaseTools/res_keeper.h"

#include <sys/mman.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "BaseTools/CBaseException.h"

namespace BaseTool {

namespace {

// Stands in the 16 bytes before the address that the caller sees.
struct BlockHeader {
    size_t distance; // from the start of the underlying block
    size_t size;     // as asked for
};
static_assert(sizeof(BlockHeader) == 16);

BlockHeader ReadHeader(const void* block) {
    BlockHeader header;
    std::memcpy(&header, static_cast<const unsigned char*>(block) - sizeof header, sizeof header);
    return header;
}

// Blocks as large as pictures are read and written at places far apart: with pages of 2 MiB the processor
// finds these sooner, and fresh memory takes fewer faults. A system that has none keeps its own.
void PreferHugePages([[maybe_unused]] const unsigned char* start, [[maybe_unused]] size_t size) noexcept {
#ifdef MADV_HUGEPAGE
    constexpr uintptr_t kPage = 4096, kHugePage = 2 << 20;
    if (size < kHugePage) return;
    const int error = errno;
    const uintptr_t address = reinterpret_cast<uintptr_t>(start);
    const uintptr_t begin = (address + kPage - 1) / kPage * kPage, end = (address + size) / kPage * kPage;
    madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);
    errno = error;
#endif
}

} // namespace

void* _aligned_malloc(size_t size, size_t alignment) noexcept {
    alignment = std::max<size_t>(alignment, 1);
    size_t total = 0;
    if (__builtin_add_overflow(size, alignment, &total) ||
        __builtin_add_overflow(total, sizeof(BlockHeader), &total))
        return nullptr;
    auto* start = static_cast<unsigned char*>(std::malloc(total));
    if (!start) return nullptr;
    PreferHugePages(start, total);
    const size_t misfit = (reinterpret_cast<uintptr_t>(start) + sizeof(BlockHeader)) % alignment;
    const size_t distance = sizeof(BlockHeader) + (misfit ? alignment - misfit : 0);
    unsigned char* result = start + distance;
    const BlockHeader header{distance, size};
    std::memcpy(result - sizeof header, &header, sizeof header);
    return result;
}

void _aligned_free(void* block) noexcept {
    if (!block) return;
    std::free(static_cast<unsigned char*>(block) - ReadHeader(block).distance);
}

void* _aligned_realloc(void* block, size_t size, size_t alignment) noexcept {
    void* fresh = _aligned_malloc(size, alignment);
    if (!fresh || !block) return fresh;
    std::memcpy(fresh, block, std::min(size, ReadHeader(block).size));
    _aligned_free(block);
    return fresh;
}

void* AlignedMallocAllocator::Malloc(size_t size) {
    _aligned_free(m_pData);
    m_nSize = 0;
    m_pData = _aligned_malloc(size, m_nAlignment);
    if (!m_pData) Raise(AVBased::kNoMemory, "No enough memory");
    m_nSize = size;
    return m_pData;
}

MallocAllocator::~MallocAllocator() { std::free(m_pData); }

void* MallocAllocator::Malloc(uint32_t size) {
    std::free(m_pData);
    m_nSize = 0;
    m_pData = std::malloc(size);
    if (!m_pData) Raise(AVBased::kNoMemory, "No enough memory");
    m_nSize = size;
    return m_pData;
}

} // namespace BaseTool
