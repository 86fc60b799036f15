#pragma once
/// Options that every command takes that writes a file.
#include <string>

#include "cli/limit_arguments.h"
#include "cli/progress.h"

namespace CLI {
class App;
}

namespace aveffect {

struct RunArguments {
    std::string cpuLevel = "auto";
    bool overwrite = false;
    bool sync = false;
    int verbosity = 0; ///< how often -v was given
    LimitArguments limits;
};

void AddRunOptions(CLI::App& app, RunArguments& run);

void AddFormatOption(CLI::App& app, std::string& format);
void AddSdrOption(CLI::App& app, bool& sdr);
void AddProgressOption(CLI::App& app, ProgressStyle& style);

/// A file to read as people name it: "-" is standard input.
std::string InputName(const std::string& name);

/// Limits the instructions that effects use, before they are made: auto, sse2, avx2 or avx512. Returns a
/// warning when the processor lacks the level and a lower one is used, else an empty text. Throws Error
/// (Usage).
std::string ApplyCpuLevel(const std::string& level);

} // namespace aveffect
