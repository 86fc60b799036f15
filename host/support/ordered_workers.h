#pragma once
/// Threads that work on items side by side and hand them on in the order in which they came.
#include <algorithm>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <exception>
#include <functional>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include <unistd.h>

#include "host/support/stages.h"

namespace aveffect {

/// As many as were asked for, or with 0 one for each processor.
inline unsigned WorkerCount(unsigned asked) {
    return asked > 0 ? asked : std::max(1u, std::thread::hardware_concurrency());
}

/// What an item takes between Push() and Pop().
struct ItemSize {
    unsigned weight = kPictureWeight;
    size_t bytes = 0;
};

/// How far workers stand behind where all want a processor, as nice() counts: whoever feeds them and whoever
/// takes from them go first. With equal shares for all, a decoder that needs more than its share falls
/// behind, the workers run out of pictures, and processors wait for it alone.
inline constexpr int kNicenessOfWorkers = 3;

/// One thread pushes, one pops; any may stop it. No more than two pictures for each worker, and no more than
/// a number of bytes, are between the two; an item larger than that passes alone. A worker is made when more
/// than one item waits for those that there are.
template <typename T>
class OrderedWorkers {
public:
    /// Changes an item on a worker's thread; workers and the items that are worked on count from 0.
    using Work = std::function<void(unsigned worker, int64_t number, T& item)>;

    OrderedWorkers(unsigned workers, size_t bytes, Work work)
        : m_mostWorkers(workers)
        , m_mostWeight(2 * workers * kPictureWeight)
        , m_mostBytes(bytes)
        , m_work(std::move(work)) {}
    /// Stops; waits for the items that are being worked on.
    ~OrderedWorkers() { Stop(); }
    OrderedWorkers(const OrderedWorkers&) = delete;
    OrderedWorkers& operator=(const OrderedWorkers&) = delete;

    /// Waits for room. False when the workers were stopped: the item is dropped and the producer should end.
    bool Push(T item, ItemSize size) {
        std::unique_lock lock(m_mutex);
        Slot* const slot = MakeSlot(lock, std::move(item), size);
        if (!slot) return false;
        slot->number = m_pushed++;
        m_waiting.push_back(slot);
        if (m_threads.empty() || (m_waiting.size() > m_idle + 1 && m_threads.size() < m_mostWorkers)) Hire();
        m_forWork.notify_one();
        return true;
    }

    /// The same for an item that nothing is done to.
    bool PushThrough(T item, ItemSize size) {
        std::unique_lock lock(m_mutex);
        Slot* const slot = MakeSlot(lock, std::move(item), size);
        if (!slot) return false;
        slot->done = true;
        m_forResult.notify_one();
        return true;
    }

    /// No more items will come.
    void Finish() {
        const std::scoped_lock lock(m_mutex);
        m_finished = true;
        m_forWork.notify_all();
        m_forResult.notify_all();
    }

    /// Waits for the next item; throws what working on it threw. Absent when all are taken and no more come,
    /// or when the workers were stopped; Stopped() tells.
    std::optional<T> Pop() {
        std::unique_lock lock(m_mutex);
        m_forResult.wait(lock,
                         [&] { return m_stopped || (m_slots.empty() ? m_finished : m_slots.front().done); });
        if (m_stopped || m_slots.empty()) return std::nullopt;
        Slot slot = std::move(m_slots.front());
        m_slots.pop_front();
        m_weight -= slot.size.weight;
        m_bytes -= slot.size.bytes;
        m_forRoom.notify_one();
        lock.unlock();
        if (slot.failure) std::rethrow_exception(slot.failure);
        return std::move(slot.item);
    }

    /// Wakes both sides; workers end with the item that they have.
    void Stop() {
        const std::scoped_lock lock(m_mutex);
        m_stopped = true;
        m_forRoom.notify_all();
        m_forWork.notify_all();
        m_forResult.notify_all();
    }

    bool Stopped() const {
        const std::scoped_lock lock(m_mutex);
        return m_stopped;
    }

private:
    struct Slot {
        T item;
        ItemSize size;
        int64_t number = 0;
        bool done = false;
        std::exception_ptr failure = nullptr;
    };

    // Null when stopped.
    Slot* MakeSlot(std::unique_lock<std::mutex>& lock, T item, ItemSize size) {
        m_forRoom.wait(lock, [&] {
            return m_stopped || m_slots.empty() ||
                   (m_weight + size.weight <= m_mostWeight && m_bytes + size.bytes <= m_mostBytes);
        });
        if (m_stopped) return nullptr;
        m_weight += size.weight;
        m_bytes += size.bytes;
        return &m_slots.emplace_back(Slot{std::move(item), size});
    }

    // Where the system has no more threads, those that there are do.
    void Hire() {
        try {
            m_threads.emplace_back([this, worker = static_cast<unsigned>(m_threads.size())] { Run(worker); });
        } catch (const std::system_error&) {
            if (m_threads.empty()) throw;
            m_mostWorkers = static_cast<unsigned>(m_threads.size());
        }
    }

    void Run(unsigned worker) {
        [[maybe_unused]] const int niceness = nice(kNicenessOfWorkers); // of this thread alone
        std::unique_lock lock(m_mutex);
        for (;;) {
            ++m_idle;
            m_forWork.wait(lock, [&] { return m_stopped || m_finished || !m_waiting.empty(); });
            --m_idle;
            if (m_stopped || m_waiting.empty()) return;
            Slot& slot = *m_waiting.front(); // stays where it is until it is done and popped
            m_waiting.pop_front();
            lock.unlock();
            try {
                m_work(worker, slot.number, slot.item);
            } catch (...) {
                slot.failure = std::current_exception();
            }
            lock.lock();
            slot.done = true;
            m_forResult.notify_one();
        }
    }

    mutable std::mutex m_mutex;
    std::condition_variable m_forRoom, m_forWork, m_forResult;
    std::deque<Slot> m_slots; ///< from the oldest on
    std::deque<Slot*> m_waiting;
    unsigned m_mostWorkers;
    const unsigned m_mostWeight;
    const size_t m_mostBytes;
    unsigned m_weight = 0;
    size_t m_bytes = 0, m_idle = 0;
    int64_t m_pushed = 0;
    bool m_finished = false, m_stopped = false;
    Work m_work;
    std::vector<std::jthread> m_threads; ///< last member: joined before the others go
};

} // namespace aveffect
