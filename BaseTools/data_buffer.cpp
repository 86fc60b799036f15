#include "BaseTools/data_buffer.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "BaseTools/CBaseException.h"
#include "BaseTools/synchronisation.h"

namespace BaseTool {

namespace {

/// Enters the critical section, when there is one; whoever holds the result leaves it.
void* Enter(void* critical) {
    if (critical) enter_critical(critical);
    return critical;
}

} // namespace

CDataBuffer2::CDataBuffer2(bool bLock)
    : m_pCritical(bLock ? init_critical() : nullptr) {}

CDataBuffer2::~CDataBuffer2() {
    Clear();
    if (m_pCritical) delete_critical(m_pCritical);
}

void CDataBuffer2::Insert(End end, const void* data, size_t size) {
    if (!data || size == 0) return;
    DataNode node{{}, 0, size};
    node.data.reset(static_cast<unsigned char*>(std::malloc(size)));
    if (!node.data) Raise(AVBased::kNoMemory, "No enough memory");
    std::memcpy(node.data.get(), data, size);

    const CCriticalAutoLock lock(Enter(m_pCritical));
    if (end == End::Back)
        m_Nodes.push_back(std::move(node));
    else
        m_Nodes.push_front(std::move(node));
    m_nTotal += size;
}

void CDataBuffer2::Push(const void* data, size_t size) { Insert(End::Back, data, size); }

void CDataBuffer2::PushFront(const void* data, size_t size) { Insert(End::Front, data, size); }

size_t CDataBuffer2::Pop(void* dst, size_t size) {
    const CCriticalAutoLock lock(Enter(m_pCritical));
    auto* to = static_cast<unsigned char*>(dst);
    size_t copied = 0;
    while (copied < size && !m_Nodes.empty()) {
        DataNode& front = m_Nodes.front();
        const size_t taken = std::min<size_t>(front.size - front.offset, size - copied);
        if (to) std::memcpy(to + copied, front.data.get() + front.offset, taken);
        copied += taken;
        front.offset += taken;
        if (front.offset == front.size) m_Nodes.pop_front();
    }
    m_nTotal -= copied;
    return copied;
}

uint64_t CDataBuffer2::GetDataSize() const {
    const CCriticalAutoLock lock(Enter(m_pCritical));
    return m_nTotal;
}

void CDataBuffer2::Clear() {
    const CCriticalAutoLock lock(Enter(m_pCritical));
    m_Nodes.clear();
    m_nTotal = 0;
}

} // namespace BaseTool
