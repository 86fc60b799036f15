#pragma once
/// Tells how far a render is, several times a second.
#include <chrono>
#include <optional>

#include "host/support/reporter.h"

namespace aveffect {

/// Starts counting time when it is made. Used by one thread at a time.
class ProgressMeter {
public:
    /// The number of pictures is absent when it is not known. The reporter outlives the meter.
    ProgressMeter(Reporter& reporter, std::optional<int64_t> expected)
        : m_reporter(reporter)
        , m_expected(expected) {}

    /// Pictures done; the last report is always told.
    void Report(int64_t done, bool last);

private:
    using Clock = std::chrono::steady_clock;

    Reporter& m_reporter;
    std::optional<int64_t> m_expected;
    Clock::time_point m_started = Clock::now();
    Clock::time_point m_told = m_started;
};

} // namespace aveffect
