#include "cli/messages.h"

#include <array>
#include <cstdio>
#include <sstream>

namespace aveffect {

std::string OneLine(const std::string& text) {
    constexpr unsigned char kFirstPrintable = 0x20;
    constexpr unsigned char kDelete = 0x7f;
    std::string line;
    for (const char letter : text) {
        const auto code = static_cast<unsigned char>(letter);
        if (code >= kFirstPrintable && code != kDelete) {
            line += letter;
        } else if (letter == '\n') {
            line += "\\n";
        } else {
            std::array<char, 8> escape{};
            std::snprintf(escape.data(), escape.size(), "\\x%02x", static_cast<unsigned>(code));
            line += escape.data();
        }
    }
    return line;
}

void PrintMessage(const std::string& text) {
    // One call a line: messages of other writers can't get in between.
    const std::string line = "aveffect: " + OneLine(text) + "\n";
    std::fwrite(line.data(), 1, line.size(), stderr);
}

void PrintNoMemory() noexcept {
    constexpr char kLine[] = "aveffect: out of memory\n";
    std::fwrite(kLine, 1, sizeof kLine - 1, stderr);
}

void PrintLines(const std::string& text) {
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) PrintMessage(line);
}

} // namespace aveffect
