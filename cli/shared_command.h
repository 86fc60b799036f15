#pragma once
/// Commands whose render is shared out among machines.
#include <string>
#include <variant>
#include <vector>

#include "cli/confinement/reach.h"
#include "cli/timeline_arguments.h"
#include "farm/chunked_job.h"

namespace aveffect {

/// Which it is; of none while there are no words.
using SharedCommand = std::variant<std::monostate, RenderOptions, JoinOptions, FilmRenderCommand>;

/// Throws Error (Usage), also for a command that can't be shared out.
SharedCommand ParseShared(const std::vector<std::string>& words);

/// What a machine reaches that renders parts into a plan's folder, and one that joins them.
Reach ReachOfPart(const SharedCommand& command, const std::string& folder);
Reach ReachOfJoin(const SharedCommand& command, const std::string& folder);

/// The tools outlive the job. Throws Error.
std::unique_ptr<ChunkedJob> MakeJob(const SharedCommand& command, const JobTools& tools);

/// Throws Error (Usage) for media that lie outside of the root.
void RequireRelative(const ChunkedJob& job);

/// From here on names count from that root, if it is not empty. Throws Error (Usage).
void EnterRoot(const std::string& root);

/// What is written with the root in front is written without it, as all machines have it.
std::vector<std::string> WithoutRoot(std::vector<std::string> words);

/// The directory's full name. It is made where there is none. Throws Error (Output).
std::string MakeFolder(const std::string& name);

} // namespace aveffect
