#pragma once
/// What the program says on standard error.
#include <string>

namespace aveffect {

/// The text with control characters (line breaks in file names, say) as escapes, so that it stays on one
/// line.
std::string OneLine(const std::string& text);

/// Writes "aveffect: TEXT" and a line break to standard error.
void PrintMessage(const std::string& text);

/// The same for each of the text's lines.
void PrintLines(const std::string& text);

/// Writes that memory ran out, for which it needs none.
void PrintNoMemory() noexcept;

} // namespace aveffect
