#pragma once
/// Aligned memory and its holder.
#include <cstddef>
#include <cstdint>
#include <utility>

namespace BaseTool {

/// A block of size bytes whose address is a multiple of the alignment (a power of two or any other number; 0
/// counts as 1). Null when memory is short. Release with _aligned_free.
void* _aligned_malloc(size_t size, size_t alignment) noexcept;

/// Frees a block of _aligned_malloc; null is ignored.
void _aligned_free(void* block) noexcept;

/// A new block that begins with the old one's bytes (as many as both have); the old one is freed. Null keeps
/// the old block and means that memory is short. A null block makes a fresh one.
void* _aligned_realloc(void* block, size_t size, size_t alignment) noexcept;

/// Holds one aligned block and frees it. Not copied.
class AlignedMallocAllocator {
public:
    explicit AlignedMallocAllocator(size_t alignment = 16) noexcept
        : m_nAlignment(alignment) {}
    ~AlignedMallocAllocator() { _aligned_free(m_pData); }
    AlignedMallocAllocator(const AlignedMallocAllocator&) = delete;
    AlignedMallocAllocator& operator=(const AlignedMallocAllocator&) = delete;

    /// Frees what it held and allocates anew; the bytes are undefined. Throws CBaseException 10021007
    /// "No enough memory"; it holds nothing then.
    void* Malloc(size_t size);

    /// Exchanges the blocks, with their alignments.
    void Swap(AlignedMallocAllocator& other) noexcept {
        std::swap(m_nSize, other.m_nSize);
        std::swap(m_pData, other.m_pData);
        std::swap(m_nAlignment, other.m_nAlignment);
    }

    void* Data() const noexcept { return m_pData; }
    size_t Size() const noexcept { return m_nSize; }

private:
    size_t m_nSize = 0;
    void* m_pData = nullptr;
    size_t m_nAlignment;
};

/// Holds one block of malloc and frees it. Not copied.
class MallocAllocator {
public:
    MallocAllocator() = default;
    ~MallocAllocator();
    MallocAllocator(const MallocAllocator&) = delete;
    MallocAllocator& operator=(const MallocAllocator&) = delete;

    /// Frees what it held and allocates anew; the bytes are undefined. Throws CBaseException 10021007
    /// "No enough memory"; it holds nothing then.
    void* Malloc(uint32_t size);

    void* Data() const noexcept { return m_pData; }
    uint32_t Size() const noexcept { return m_nSize; }

private:
    void* m_pData = nullptr;
    uint32_t m_nSize = 0;
};

} // namespace BaseTool
