#pragma once
/// Memory whose next byte at either end is protected.
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <new>

namespace test {

class GuardedMemory {
public:
    enum class Flush { Start, End };

    /// The bytes begin at a page, or end at one's end; a protected page follows on that side, and one on the
    /// other.
    GuardedMemory(size_t bytes, Flush flush) {
        const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
        const size_t inner = (bytes + page - 1) / page * page;
        m_total = inner + 2 * page;
        void* mapping = mmap(nullptr, m_total, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (mapping == MAP_FAILED) throw std::bad_alloc();
        m_mapping = static_cast<uint8_t*>(mapping);
        if (inner && mprotect(m_mapping + page, inner, PROT_READ | PROT_WRITE) != 0) throw std::bad_alloc();
        m_data = flush == Flush::Start ? m_mapping + page : m_mapping + page + inner - bytes;
    }
    ~GuardedMemory() { munmap(m_mapping, m_total); }
    GuardedMemory(const GuardedMemory&) = delete;
    GuardedMemory& operator=(const GuardedMemory&) = delete;

    uint8_t* Data() const { return m_data; }

private:
    uint8_t* m_mapping = nullptr;
    uint8_t* m_data = nullptr;
    size_t m_total = 0;
};

} // namespace test
