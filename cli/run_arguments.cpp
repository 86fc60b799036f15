#include "cli/run_arguments.h"

#include <limits>

#include <CLI/CLI.hpp>

#include "aveffect/base_media.h"
#include "cli/option_values.h"
#include "host/effects/random_seed.h"

namespace aveffect {

void AddRunOptions(CLI::App& app, RunArguments& run) {
    app.add_option("--cpu-level", run.cpuLevel,
                   "Instructions that effects may use: auto, sse2, avx2 or avx512")
        ->type_name("LEVEL");
    app.add_flag("--overwrite", run.overwrite, "Replace the output if it exists");
    app.add_flag("--sync", run.sync,
                 "Have the output on its disk, safe from a power cut, before the program is done");
    app.add_flag("-v,--verbose", run.verbosity,
                 "Say what is done in detail; -vv also shows the effects' log");
    AddLimitOptions(app, run.limits);
}

void AddSeedOption(CLI::App& app, RunArguments& run) {
    app.add_option("--seed", run.seed,
                   "Where the numbers of effects that draw at random begin, 1 if not given")
        ->type_name("N");
}

void ApplySeed(const RunArguments& run) {
    constexpr int64_t kMost = std::numeric_limits<unsigned>::max();
    if (run.seed) g_randomSeed = static_cast<unsigned>(WholeOption("--seed", *run.seed, 0, kMost));
}

void AddFormatOption(CLI::App& app, std::string& format) {
    app.add_option("--format", format,
                   "Format of the output: mp4, matroska, wav, png, ...; its extension tells if not given, "
                   "standard output (-) needs it")
        ->type_name("NAME");
}

std::string InputName(const std::string& name) { return name == "-" ? "/dev/stdin" : name; }

void AddSdrOption(CLI::App& app, bool& sdr) {
    app.add_flag("--sdr", sdr, "Bring PQ and HLG pictures to BT.709 and standard dynamic range");
}

void AddProgressOption(CLI::App& app, ProgressStyle& style) {
    app.add_option_function<std::string>(
           "--progress", [&style](const std::string& name) { style = ProgressOption(name); },
           "Progress: auto (a bar on a terminal), bar, json (one object a second on standard output), none")
        ->type_name("STYLE");
}

std::string ApplyCpuLevel(const std::string& level) {
    constexpr unsigned kUpToSSE2 = AVBased::kCpuMMX | AVBased::kCpuSSE | AVBased::kCpuSSE2;
    constexpr unsigned kUpToAVX2 = (AVBased::kCpuAVX2 << 1) - 1;
    constexpr unsigned kEverything = ~0u;
    struct Level {
        const char* name;
        unsigned mask;
        unsigned needed;
    };
    constexpr Level kLevels[] = {{"auto", kEverything, 0},
                                 {"sse2", kUpToSSE2, AVBased::kCpuSSE2},
                                 {"avx2", kUpToAVX2, AVBased::kCpuAVX2},
                                 {"avx512", kEverything, AVBased::kCpuAVX512}};
    for (const Level& known : kLevels) {
        if (level != known.name) continue;
        AVBasedSetCPUFeatureMask(known.mask);
        if ((AVBasedGetCPUFeatures() & known.needed) == known.needed) return {};
        return "this processor has no " + level + "; effects use what it has";
    }
    Refuse("--cpu-level", "auto, sse2, avx2 or avx512", level);
}

} // namespace aveffect
