#pragma once
/// Memory that is used again: a fresh block of a picture's size costs many times its copy in page faults.
#include <cstddef>
#include <new>

namespace BaseTool {

/// Somebody who takes and returns blocks all the time, such as a processor. While any lives, returned blocks
/// wait for the next one who asks for their size, a few for each keeper; when one goes, so does its share.
/// Without keepers nothing waits.
class BlockKeeper {
public:
    BlockKeeper() noexcept;
    ~BlockKeeper();
    BlockKeeper(const BlockKeeper&) = delete;
    BlockKeeper& operator=(const BlockKeeper&) = delete;
};

/// A block of size bytes, aligned to 64, its bytes undefined; one that waits when there is one of that size.
/// Null when memory is short. Any thread.
void* TakeBlock(size_t size) noexcept;

/// Returns a block of TakeBlock, with the size it was taken with; null is ignored. Any thread.
void ReturnBlock(void* block, size_t size) noexcept;

/// Holds one such block. Not copied.
class RecycledBlock {
public:
    RecycledBlock() = default;
    ~RecycledBlock() { ReturnBlock(m_pData, m_nSize); }
    RecycledBlock(const RecycledBlock&) = delete;
    RecycledBlock& operator=(const RecycledBlock&) = delete;

    /// Returns what it held and takes anew; the bytes are undefined. Throws CBaseException 10021007
    /// "No enough memory"; it holds nothing then.
    void* Malloc(size_t size);

private:
    void* m_pData = nullptr;
    size_t m_nSize = 0;
};

/// For containers that come and go with such blocks.
template <class Value>
struct RecyclingAllocator {
    using value_type = Value;

    RecyclingAllocator() = default;
    template <class Other>
    RecyclingAllocator(const RecyclingAllocator<Other>&) noexcept {}

    Value* allocate(size_t count) {
        void* const block = TakeBlock(count * sizeof(Value));
        if (!block) throw std::bad_alloc();
        return static_cast<Value*>(block);
    }
    void deallocate(Value* values, size_t count) noexcept { ReturnBlock(values, count * sizeof(Value)); }
    bool operator==(const RecyclingAllocator&) const noexcept = default;
};

} // namespace BaseTool
