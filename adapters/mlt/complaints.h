#pragma once
/// What goes wrong while a service works.
#include <exception>
#include <mutex>
#include <string>

#include <framework/mlt.h>

namespace aveffect::mlt {

/// Writes to the host's log, no failure twice in a row. Safe from any thread.
class Complaints {
public:
    explicit Complaints(mlt_service service)
        : m_service(service) {}

    void Say(const std::exception& failure) noexcept {
        const std::scoped_lock lock(m_mutex);
        try {
            if (m_said == failure.what()) return;
            m_said = failure.what();
        } catch (const std::exception&) {
            return; // there is no memory to remember it
        }
        mlt_log_error(m_service, "aveffect: %s; pictures and sound are passed on\n", m_said.c_str());
    }

private:
    mlt_service m_service;
    std::mutex m_mutex;
    std::string m_said;
};

} // namespace aveffect::mlt
