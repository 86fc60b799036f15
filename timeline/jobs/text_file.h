#pragma once
/// Files of text that are written whole or not at all.
#include <atomic>
#include <string>

namespace aveffect {

/// As OutputFile: it appears under its name when it is whole, and an existing one is replaced in one step if
/// overwrite is set. Throws Error (Output, Interrupted).
void WriteTextFile(const std::string& path, const std::string& text, bool overwrite,
                   const std::atomic<bool>& cancel);

} // namespace aveffect
