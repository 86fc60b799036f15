#include "BaseTools/block_pool.h"

#include <algorithm>
#include <mutex>
#include <utility>

#include "BaseTools/CBaseException.h"
#include "BaseTools/res_keeper.h"

namespace BaseTool {

namespace {

constexpr size_t kAlignment = 64;

// Two clones of a frame, each an object, its list of planes and its pixels.
constexpr size_t kBlocksPerKeeper = 6;

// Stands at the start of a block that waits.
struct Waiting {
    Waiting* next;
    size_t size;
};

class Pool {
public:
    void AddKeeper() {
        const std::lock_guard lock(m_Mutex);
        m_nLimit += kBlocksPerKeeper;
    }

    void RemoveKeeper() {
        const std::lock_guard lock(m_Mutex);
        m_nLimit -= kBlocksPerKeeper;
        Trim();
    }

    void* Take(size_t size) {
        const std::lock_guard lock(m_Mutex);
        for (Waiting** link = &m_pNewest; *link; link = &(*link)->next)
            if ((*link)->size == size) return std::exchange(*link, (*link)->next);
        return nullptr;
    }

    void Return(void* block, size_t size) {
        const std::lock_guard lock(m_Mutex);
        m_pNewest = new (block) Waiting{m_pNewest, size};
        Trim();
    }

private:
    // The blocks that have waited longest go.
    void Trim() {
        Waiting** link = &m_pNewest;
        for (size_t i = 0; i < m_nLimit && *link; ++i) link = &(*link)->next;
        Waiting* surplus = std::exchange(*link, nullptr);
        while (surplus) _aligned_free(std::exchange(surplus, surplus->next));
    }

    std::mutex m_Mutex;
    Waiting* m_pNewest = nullptr;
    size_t m_nLimit = 0;
};

constinit Pool g_Pool;

} // namespace

BlockKeeper::BlockKeeper() noexcept { g_Pool.AddKeeper(); }
BlockKeeper::~BlockKeeper() { g_Pool.RemoveKeeper(); }

void* TakeBlock(size_t size) noexcept {
    size = std::max(size, sizeof(Waiting));
    if (void* const block = g_Pool.Take(size)) return block;
    return _aligned_malloc(size, kAlignment);
}

void ReturnBlock(void* block, size_t size) noexcept {
    if (block) g_Pool.Return(block, std::max(size, sizeof(Waiting)));
}

void* RecycledBlock::Malloc(size_t size) {
    ReturnBlock(std::exchange(m_pData, nullptr), m_nSize);
    m_pData = TakeBlock(size);
    if (!m_pData) Raise(AVBased::kNoMemory, "No enough memory");
    m_nSize = size;
    return m_pData;
}

} // namespace BaseTool
