#pragma once
/// A plan's commands in the words of the engines that run them.
#include <cstdint>
#include <string>

namespace aveffect {

enum class Engine { Lines, Make, Slurm, Kubernetes };

/// How the commands are called.
struct EngineWords {
    std::string program = "aveffect"; ///< as the workers find it
    std::string folder;               ///< of the plan, as the workers see it
    std::string mediaRoot;            ///< empty: where they are started
    int64_t parts = 0;
};

/// For GNU parallel and OpenCue: a command a line, the join last. For make: a Makefile. For Slurm: a script
/// that submits an array of jobs and the join behind it. For Kubernetes: two Jobs in YAML, the join
/// suspended.
std::string EngineText(Engine engine, const EngineWords& words);

} // namespace aveffect
