#include "host/media/damage.h"

#include <algorithm>

#include "host/media/file_end.h"
#include "host/support/av_owner.h"

namespace aveffect {

void DamageReport::Add(const std::string& subject, const std::string& clause) {
    auto line = std::ranges::find(m_lines, subject, [](const auto& each) { return each.first; });
    if (line == m_lines.end()) line = m_lines.insert(line, {subject, {}});
    std::vector<std::string>& clauses = line->second;
    if (std::ranges::find(clauses, clause) == clauses.end()) clauses.push_back(clause);
}

void DamageReport::Add(const DamageReport& other) {
    for (const auto& [subject, clauses] : other.m_lines)
        for (const std::string& clause : clauses) Add(subject, clause);
}

std::optional<std::string> DamageReport::Text() const {
    if (Empty()) return std::nullopt;
    std::string text;
    for (const auto& [subject, clauses] : m_lines) {
        if (!text.empty()) text += '\n';
        for (const char letter : subject) text += letter == '\n' ? ' ' : letter; // of a file's name
        for (const std::string& clause : clauses)
            text += (&clause == &clauses.front() ? ": " : "; ") + clause;
    }
    return text;
}

void InputDamage::Note(const AVPacket& packet) noexcept {
    if (packet.flags & AV_PKT_FLAG_CORRUPT) ++m_cutPackets;
}

DamageReport InputDamage::Report() const {
    DamageReport report;
    if (const auto missing = MissingEnd(m_path)) report.Add(m_path, *missing);
    if (m_lines.Count() > 0) report.Add(m_path, "reading it reports \"" + m_lines.First() + "\"");
    if (m_readError) report.Add(m_path, "it can't be read to its end: " + AvText(m_readError));
    if (m_cutPackets > 0)
        report.Add(m_path, std::to_string(m_cutPackets) +
                               (m_cutPackets == 1 ? " part of it is" : " parts of it are") +
                               " damaged or cut off");
    return report;
}

} // namespace aveffect
