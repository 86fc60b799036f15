#pragma once
/// A queue between two threads that makes the faster one wait.
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>
#include <utility>

namespace aveffect {

/// Holds items up to a total weight; an item heavier than that passes alone. One thread pushes, one pops; any
/// may stop it.
template <typename T>
class BoundedQueue {
public:
    explicit BoundedQueue(unsigned capacity)
        : m_capacity(capacity) {}

    /// Waits for room. False when the queue was stopped: the item is dropped and the producer should end.
    bool Push(T item, unsigned weight) {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [&] { return m_stopped || m_items.empty() || m_weight + weight <= m_capacity; });
        if (m_stopped) return false;
        m_items.emplace_back(std::move(item), weight);
        m_weight += weight;
        m_changed.notify_all();
        return true;
    }

    /// No more items will come.
    void Finish() {
        const std::scoped_lock lock(m_mutex);
        m_finished = true;
        m_changed.notify_all();
    }

    /// Waits for an item. Absent when all are taken and no more come, or when the queue was stopped;
    /// Stopped() tells.
    std::optional<T> Pop() {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [&] { return m_stopped || m_finished || !m_items.empty(); });
        return Take();
    }

    /// The same, waiting at most that long.
    std::optional<T> PopWithin(std::chrono::milliseconds time) {
        std::unique_lock lock(m_mutex);
        m_changed.wait_for(lock, time, [&] { return m_stopped || m_finished || !m_items.empty(); });
        return Take();
    }

    /// All items are taken and no more come.
    bool Drained() const {
        const std::scoped_lock lock(m_mutex);
        return m_finished && m_items.empty();
    }

    /// Wakes both sides and drops what is queued.
    void Stop() {
        const std::scoped_lock lock(m_mutex);
        m_stopped = true;
        m_items.clear();
        m_weight = 0;
        m_changed.notify_all();
    }

    bool Stopped() const {
        const std::scoped_lock lock(m_mutex);
        return m_stopped;
    }

private:
    std::optional<T> Take() {
        if (m_stopped || m_items.empty()) return std::nullopt;
        T item = std::move(m_items.front().first);
        m_weight -= m_items.front().second;
        m_items.pop_front();
        m_changed.notify_all();
        return item;
    }

    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<std::pair<T, unsigned>> m_items;
    const unsigned m_capacity;
    unsigned m_weight = 0;
    bool m_finished = false;
    bool m_stopped = false;
};

} // namespace aveffect
