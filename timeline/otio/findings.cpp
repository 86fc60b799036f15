#include "timeline/otio/findings.h"

#include <algorithm>

namespace aveffect {

void Findings::Unknown(const std::string& kind, const std::string& place) {
    constexpr size_t kMost = 200; // a file may have any number of kinds
    const auto known = std::ranges::find(m_unknown, kind, &Kind::text);
    if (known != m_unknown.end())
        ++known->count;
    else if (m_unknown.size() < kMost)
        m_unknown.push_back({kind, place, 1});
}

std::vector<std::string> Findings::UnknownTexts() const {
    std::vector<std::string> texts;
    for (const Kind& kind : m_unknown) {
        const std::string more = kind.count > 1 ? " and " + std::to_string(kind.count - 1) + " more" : "";
        texts.push_back(kind.text + " (" + kind.first + more + ")");
    }
    return texts;
}

} // namespace aveffect
