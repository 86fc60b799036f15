#pragma once
/// Many clips, pictures or files of sound through the same effects.
#include <functional>
#include <string>
#include <vector>

#include "host/jobs/render.h"

namespace aveffect {

struct BatchOptions {
    RenderOptions render;            ///< what all have in common; input and output are not looked at
    std::vector<std::string> inputs; ///< files
    std::string directory;           ///< that the outputs go to, under the inputs' names; made when missing
    std::string extension;           ///< of the outputs, which chooses their format; empty: each input's own
    unsigned workers = 0;            ///< renders at a time; 0: as many as there are processors
    bool skipExisting = false;       ///< inputs whose output exists are left alone
};

enum class BatchStatus { Done, Damaged, Skipped, Failed };

/// How it went with one input.
struct BatchOutcome {
    std::string input, output;
    BatchStatus status = BatchStatus::Failed;
    std::string message;           ///< the reason, or what was found damaged; empty when all is well
    std::optional<ErrorKind> kind; ///< of a failure; absent for what no Error says
    int64_t frames = 0;
};

/// What RenderBatch() begins with, for those who lose the right to make directories before it: refuses what
/// it would, and makes the directory.
void PrepareBatch(const BatchOptions& options);

/// Renders each input as Render() does; a failure ends no other. Every outcome is told as soon as it is
/// known, one at a time, from any thread. Threads and memory that the options ask for are shared among the
/// workers. An
/// input that is interrupted, and all that come after it, have no outcome. Throws Error when nothing can be
/// started: Usage when two outputs have one name or an output is one of the inputs, Output when the directory
/// can't be made; (Interrupted) at the end when cancel was set.
void RenderBatch(const Plugin& plugin, const BatchOptions& options, const RenderObserver& observer,
                 const std::function<void(const BatchOutcome&)>& tell, const std::atomic<bool>& cancel);

} // namespace aveffect
