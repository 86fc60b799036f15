#pragma once
/// Renders on many machines that share a folder: one plans, all work, one joins.
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "farm/chunked_job.h"

namespace aveffect {

/// How a render is shared out: into so many chunks, or into chunks of so many seconds. One of the two.
struct ChunkSize {
    std::optional<int64_t> chunks;
    std::optional<double> seconds;
};

/// What the command that is shared out is, and the job that its words make.
struct FarmCommand {
    std::vector<std::string> words;
    std::unique_ptr<ChunkedJob> job;
};

/// Writes the plan into a folder, which is made. Throws Error: Output where the folder holds another plan.
FarmPlan MakePlan(const std::filesystem::path& folder, FarmCommand command, const ChunkSize& size,
                  const std::atomic<bool>& cancel);

/// The plan's file in its folder.
inline std::filesystem::path PlanPath(const std::filesystem::path& folder) { return folder / "plan.json"; }

/// The plan in a folder. Throws Error (Input), also for one that another version made.
FarmPlan ReadPlan(const std::filesystem::path& folder);

/// Renders a part: a chunk by its number, or what lies beside the pictures by the number behind them. Does
/// nothing where it is done. Throws Error: Usage for a number that the plan does not have; Input where media
/// or the probe picture are not as in the plan.
RenderResult WorkOn(const std::filesystem::path& folder, const FarmPlan& plan, ChunkedJob& job, int64_t part,
                    const std::atomic<bool>& cancel);

/// Joins the parts into the output. Throws Error (Input) that names what is missing or is not what was
/// rendered.
RenderResult FinishFilm(const std::filesystem::path& folder, const FarmPlan& plan, ChunkedJob& job,
                        const std::atomic<bool>& cancel);

/// What has become of a plan's parts, by their numbers.
struct FarmStatus {
    int64_t done = 0;
    std::vector<int64_t> missing; ///< without those that failed
    std::vector<std::pair<int64_t, std::string>> failed;
};

FarmStatus StatusOf(const std::filesystem::path& folder, const FarmPlan& plan);

/// "0-3, 7, 12-20".
std::string NumbersText(const std::vector<int64_t>& numbers);

} // namespace aveffect
