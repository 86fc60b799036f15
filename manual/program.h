#pragma once
/// Other programs.
#include <filesystem>
#include <string>
#include <vector>

namespace aveffect::manual {

/// Runs a program from the path and waits for it; what it prints goes to that file where one is named. Throws
/// std::runtime_error when it can't be run or fails.
void RunProgram(std::vector<std::string> words, const std::filesystem::path& output = {});

} // namespace aveffect::manual
