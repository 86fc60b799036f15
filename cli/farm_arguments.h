#pragma once
/// The commands that share a render out among machines.
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "cli/run_arguments.h"
#include "farm/engine_words.h"
#include "farm/farm.h"

namespace aveffect {

struct PlanCommand {
    std::string folder;
    std::optional<std::string> chunks, chunkSeconds;
    std::string mediaRoot, as;
    RunArguments run;
    std::vector<std::string> words; ///< the command that is shared out; none: the plan is there
};

struct WorkCommand {
    std::string folder, part, mediaRoot;
    ProgressStyle progress = ProgressStyle::Auto;
    RunArguments run;
};

struct FinishCommand {
    std::string folder, mediaRoot;
    RunArguments run;
};

struct StatusCommand {
    std::string folder;
    bool json = false;
};

/// What parsing fills, one for each of the commands.
struct FarmCommands {
    PlanCommand plan;
    WorkCommand work;
    FinishCommand finish;
    StatusCommand status;
};

void AddFarm(CLI::App& app, FarmCommands& commands);

/// Throw Error (Usage).
ChunkSize MakeChunkSize(const PlanCommand& command);
std::optional<Engine> MakeEngine(const PlanCommand& command);

/// For standard output.
std::string StatusText(const FarmStatus& status, const FarmPlan& plan);
std::string StatusJson(const FarmStatus& status, const FarmPlan& plan);

} // namespace aveffect
