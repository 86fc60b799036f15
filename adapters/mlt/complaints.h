#pragma once
/// What goes wrong while a service works.
#include <exception>

#include <framework/mlt.h>

#include "adapters/support/last_words.h"

namespace aveffect::mlt {

/// Writes to the host's log, no failure twice in a row. Safe from any thread.
class Complaints {
public:
    explicit Complaints(mlt_service service)
        : m_service(service) {}

    void Say(const std::exception& failure) noexcept {
        if (m_said.AreNew(failure.what()))
            mlt_log_error(m_service, "aveffect: %s; pictures and sound are passed on\n", failure.what());
    }

private:
    mlt_service m_service;
    adapters::LastWords m_said;
};

} // namespace aveffect::mlt
