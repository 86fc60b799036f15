#pragma once
/// Words of command lines that people copy.
#include <string>

namespace aveffect {

/// A text as a POSIX shell takes it for one word: quoted where it is more than a plain one.
inline std::string ShellWord(const std::string& text) {
    constexpr char kPlain[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_./:=@%+-,";
    if (!text.empty() && text.find_first_not_of(kPlain) == std::string::npos) return text;
    std::string quoted = "'";
    for (const char letter : text) quoted += letter == '\'' ? std::string("'\\''") : std::string(1, letter);
    return quoted + "'";
}

} // namespace aveffect
