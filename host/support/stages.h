#pragma once
/// Threads that work on one thing together and end together.
#include <atomic>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "host/support/error.h"

namespace aveffect {

/// Of what lies between stages; packets of sound weigh next to nothing.
inline constexpr unsigned kPictureWeight = 64;
inline constexpr unsigned kPacketWeight = 1;

/// Throws Error (Interrupted) once the flag is set.
inline void CheckCancel(const std::atomic<bool>& cancel) {
    if (cancel.load(std::memory_order_relaxed))
        throw Error(ErrorKind::Interrupted, "interrupted; nothing was written");
}

/// Runs each stage on its own thread. The first stage that throws makes stopAll run, which must wake the
/// others wherever they wait; Join() then throws what it threw. Used from one thread.
class StageGroup {
public:
    explicit StageGroup(std::function<void()> stopAll)
        : m_stopAll(std::move(stopAll)) {}
    /// Stops the stages that still run and waits for them.
    ~StageGroup() {
        if (!m_threads.empty()) m_stopAll();
    }
    StageGroup(const StageGroup&) = delete;
    StageGroup& operator=(const StageGroup&) = delete;

    void Start(std::function<void()> body) {
        m_threads.emplace_back([this, run = std::move(body)] {
            try {
                run();
            } catch (...) {
                {
                    const std::scoped_lock lock(m_mutex);
                    if (!m_first) m_first = std::current_exception();
                }
                m_stopAll();
            }
        });
    }

    /// Waits for all stages; throws the first failure.
    void Join() {
        m_threads.clear();
        if (m_first) std::rethrow_exception(std::exchange(m_first, nullptr));
    }

private:
    std::function<void()> m_stopAll;
    std::mutex m_mutex;
    std::exception_ptr m_first;
    std::vector<std::jthread> m_threads; ///< last member: joined before the others go
};

} // namespace aveffect
