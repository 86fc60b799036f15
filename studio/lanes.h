#pragma once
/// Requests of which only the newest counts, and how many are worked on at a time.
#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>

namespace aveffect {

/// Safe from any thread.
class Lanes {
public:
    explicit Lanes(unsigned atATime)
        : m_free(atATime) {}

    /// A request's turn to work; it ends with the object.
    class Turn {
    public:
        /// Waits until one is free. Without a name there is no lane.
        Turn(Lanes& lanes, const std::string& lane)
            : m_lanes(lanes) {
            std::unique_lock lock(lanes.m_mutex);
            uint64_t* const newest = lane.empty() ? nullptr : &lanes.NewestOf(lane);
            const uint64_t own = newest ? ++*newest : 0;
            // Those that became stale go at once: nobody waits for them any more.
            lanes.m_changed.notify_all();
            lanes.m_changed.wait(lock, [&] {
                m_stale = newest && lanes.NewestOf(lane) != own;
                return m_stale || lanes.m_free > 0;
            });
            if (!m_stale) --lanes.m_free;
        }
        ~Turn() {
            if (m_stale) return;
            {
                const std::scoped_lock lock(m_lanes.m_mutex);
                ++m_lanes.m_free;
            }
            m_lanes.m_changed.notify_all();
        }
        Turn(const Turn&) = delete;
        Turn& operator=(const Turn&) = delete;

        /// A newer request of the lane has come before this one's turn.
        bool Stale() const noexcept { return m_stale; }

    private:
        Lanes& m_lanes;
        bool m_stale = false;
    };

private:
    /// Names come from the page; beyond so many of them lanes are shared.
    uint64_t& NewestOf(const std::string& lane) {
        constexpr size_t kMostLanes = 64;
        const auto found = m_newest.find(lane);
        if (found != m_newest.end()) return found->second;
        return m_newest[m_newest.size() < kMostLanes ? lane : "others"];
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    unsigned m_free;
    std::map<std::string, uint64_t> m_newest;
};

} // namespace aveffect
