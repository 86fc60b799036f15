#include "cli/batch_report.h"

#include <nlohmann/json.hpp>

#include "cli/exit_code.h"
#include "cli/messages.h"

namespace aveffect {

namespace {

constexpr const char* kWords[] = {"done", "damaged", "skipped", "failed"}; // by status

int ExitCodeOf(const BatchOutcome& outcome) {
    switch (outcome.status) {
    case BatchStatus::Failed:
        return outcome.kind ? ExitCodeFor(*outcome.kind, 0) : kUnexpected;
    case BatchStatus::Damaged:
        return kDamagedInput;
    default:
        return kDone;
    }
}

/// Damage is the least: there is an output. What should not happen is the worst, whatever its number.
int Badness(int exitCode) {
    constexpr int kWorst = 1000;
    return exitCode == kDamagedInput ? 1 : exitCode == kUnexpected ? kWorst : exitCode;
}

} // namespace

std::string BatchReport::Line(const BatchOutcome& outcome) {
    const auto status = static_cast<size_t>(outcome.status);
    ++m_counts[status];
    const int code = ExitCodeOf(outcome);
    if (Badness(code) > Badness(m_exitCode)) m_exitCode = code;
    if (m_json)
        return nlohmann::json{{"input", outcome.input},     {"output", outcome.output},
                              {"status", kWords[status]},   {"frames", outcome.frames},
                              {"message", outcome.message}, {"exit_code", code}}
                   .dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) +
               "\n";
    if (outcome.status == BatchStatus::Failed) return {};
    return std::string(kWords[status]) + " " + OneLine(outcome.input) + " -> " + OneLine(outcome.output) +
           "\n";
}

std::string BatchReport::Message(const BatchOutcome& outcome) {
    const bool named = outcome.message.empty() || outcome.message.find(outcome.input) != std::string::npos;
    return named ? outcome.message : outcome.input + ": " + outcome.message;
}

std::string BatchReport::Summary() const {
    if (m_json) {
        nlohmann::json counts = {{"exit_code", m_exitCode}};
        for (size_t status = 0; status < m_counts.size(); ++status) counts[kWords[status]] = m_counts[status];
        return nlohmann::json{{"summary", counts}}.dump() + "\n";
    }
    std::string text;
    for (size_t status = 0; status < m_counts.size(); ++status)
        if (status == 0 || m_counts[status] > 0)
            text += (text.empty() ? "" : ", ") + std::to_string(m_counts[status]) + " " + kWords[status];
    return text + "\n";
}

} // namespace aveffect
