#pragma once
/// Lets threads through one at a time, by numbers.
#include <condition_variable>
#include <cstdint>
#include <mutex>

#include "host/support/error.h"

namespace aveffect {

/// Numbers count from 0. Those that come after one whose body threw wait until they are stopped.
class Turnstile {
public:
    /// Waits until all smaller numbers have been through, and runs the body. Throws Error (Interrupted) when
    /// it was stopped, and what the body throws.
    template <typename Body>
    void Pass(int64_t number, const Body& body) {
        std::unique_lock lock(m_mutex);
        m_moved.wait(lock, [&] { return m_stopped || m_next == number; });
        if (m_stopped) throw Error(ErrorKind::Interrupted, "interrupted; nothing was written");
        body();
        ++m_next;
        m_moved.notify_all();
    }

    /// Nobody gets through any more. Waits for who is inside.
    void Stop() {
        const std::scoped_lock lock(m_mutex);
        m_stopped = true;
        m_moved.notify_all();
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_moved;
    int64_t m_next = 0;
    bool m_stopped = false;
};

} // namespace aveffect
