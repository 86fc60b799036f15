#pragma once
/// Bytes whose next neighbour at one end is a protected page, and at the other end watched bytes up to the
/// page's end: who reads or writes beside them ends the test, at once or when they go.
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <mutex>
#include <new>
#include <span>
#include <vector>

namespace test {

/// Which end of the bytes lies at the protected page. Watched bytes and another page follow at the other end.
enum class Flush { Start, End };

template <class T>
class GuardedAllocator {
public:
    using value_type = T;
    using propagate_on_container_move_assignment = std::true_type;

    GuardedAllocator(Flush flush = Flush::End)
        : m_flush(flush) {}

    T* allocate(size_t count) {
        const size_t bytes = count * sizeof(T), inner = Inner(bytes);
        uint8_t* first = TakeSpare(inner);
        if (!first) {
            void* const mapping =
                mmap(nullptr, inner + 2 * Page(), PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
            if (mapping == MAP_FAILED) throw std::bad_alloc();
            first = static_cast<uint8_t*>(mapping) + Page();
            if (mprotect(first, inner, PROT_READ | PROT_WRITE) != 0) throw std::bad_alloc();
        }
        const size_t place = m_flush == Flush::Start ? 0 : inner - bytes;
        for (const auto& watched : Beside(first, place, bytes)) std::ranges::fill(watched, kWatched);
        return reinterpret_cast<T*>(first + place);
    }
    void deallocate(T* data, size_t count) {
        const size_t place = reinterpret_cast<uintptr_t>(data) % Page(), bytes = count * sizeof(T);
        uint8_t* const first = reinterpret_cast<uint8_t*>(data) - place;
        for (const auto& watched : Beside(first, place, bytes)) {
            if (std::ranges::count(watched, kWatched) == std::ssize(watched)) continue;
            std::fputs("bytes beside guarded ones were changed\n", stderr);
            std::abort();
        }
        Spare& spare = TheSpare();
        const std::scoped_lock lock(spare.mutex);
        spare.bySize[Inner(bytes)].push_back(first);
    }
    /// A copy is guarded at its other end, so that what works on clones is tried at both.
    GuardedAllocator select_on_container_copy_construction() const {
        return m_flush == Flush::Start ? Flush::End : Flush::Start;
    }
    bool operator==(const GuardedAllocator&) const { return true; } // either frees what the other made

private:
    static constexpr uint8_t kWatched = 0xA5;

    /// What is watched of the pages that hold bytes at a place: some before them, some behind.
    static std::array<std::span<uint8_t>, 2> Beside(uint8_t* first, size_t place, size_t bytes) {
        constexpr size_t kMost = 256;
        const size_t before = std::min(place, kMost), behind = std::min(Inner(bytes) - place - bytes, kMost);
        return {{{first + place - before, before}, {first + place + bytes, behind}}};
    }
    /// Whole pages for so many bytes.
    static size_t Inner(size_t bytes) { return (bytes + Page() - 1) / Page() * Page(); }
    /// By size, what is ready for use again: asking the system for each takes longer than most effects. Stays
    /// till the program ends.
    struct Spare {
        std::mutex mutex;
        std::map<size_t, std::vector<uint8_t*>> bySize;
    };
    static Spare& TheSpare() {
        static auto* const spare = new Spare;
        return *spare;
    }
    /// Null when there is none of that size.
    static uint8_t* TakeSpare(size_t inner) {
        Spare& spare = TheSpare();
        const std::scoped_lock lock(spare.mutex);
        std::vector<uint8_t*>& blocks = spare.bySize[inner];
        if (blocks.empty()) return nullptr;
        uint8_t* const first = blocks.back();
        blocks.pop_back();
        return first;
    }
    static size_t Page() {
        static const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
        return page;
    }

    Flush m_flush;
};

using GuardedBytes = std::vector<uint8_t, GuardedAllocator<uint8_t>>;

} // namespace test
