#pragma once
/// Options that every command takes that writes a file.
#include <optional>
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
    std::optional<std::string> seed; ///< as it was written
    int verbosity = 0;               ///< how often -v was given
    LimitArguments limits;
};

void AddRunOptions(CLI::App& app, RunArguments& run);

/// Of commands whose effects may draw random numbers.
void AddSeedOption(CLI::App& app, RunArguments& run);
/// For effects that are made from then on. Throws Error (Usage).
void ApplySeed(const RunArguments& run);

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
