#pragma once
/// What `batch` says of its files.
#include <array>
#include <string>

#include "host/jobs/batch.h"

namespace aveffect {

/// Counts outcomes and puts them into words. Used by one thread at a time.
class BatchReport {
public:
    explicit BatchReport(bool json)
        : m_json(json) {}

    /// The file's line for standard output; failures have one in JSON alone, their messages go to standard
    /// error.
    std::string Line(const BatchOutcome& outcome);
    /// For standard error: the reason of a failure or what was damaged, with the input's name; may be empty.
    static std::string Message(const BatchOutcome& outcome);
    /// The last line.
    std::string Summary() const;
    /// Of the worst outcome: damage counts less than any failure, among failures the larger code counts.
    int ExitCode() const noexcept { return m_exitCode; }

private:
    bool m_json;
    int m_exitCode = 0;
    std::array<int64_t, 4> m_counts{}; ///< by status
};

} // namespace aveffect
