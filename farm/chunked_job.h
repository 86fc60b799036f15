#pragma once
/// Renders that can be shared out.
#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include "farm/farm_plan.h"
#include "host/jobs/transition.h"
#include "host/output/output_plan.h"
#include "timeline/jobs/film_render.h"

namespace aveffect {

/// A render, as the command line says it. What is made of it in parts is what it makes as a whole. Used by
/// one thread at a time. Everything throws Error.
class ChunkedJob {
public:
    ChunkedJob() = default;
    virtual ~ChunkedJob() = default;
    ChunkedJob(const ChunkedJob&) = delete;
    ChunkedJob& operator=(const ChunkedJob&) = delete;

    /// What is to be written, and how.
    virtual OutputOptions& Output() = 0;
    /// Files that are read.
    virtual std::vector<std::string> Media() const = 0;

    /// Fills in of a plan what the pictures are: rate, times, and chunks of so many pictures as the function
    /// says for all of them. Throws Error (Usage) where the render can't be shared out, and says why.
    virtual void Cut(FarmPlan& plan, const std::function<int64_t(int64_t, AVRational)>& picturesAChunk) = 0;

    /// Renders a chunk into the output.
    virtual RenderResult Draw(const FarmPlan& plan, const PlannedChunk& chunk) = 0;
    /// Renders what lies beside the pictures into the output, which does not come into being where that is
    /// nothing.
    virtual RenderResult DrawBeside() = 0;
};

/// What the jobs work with; outlives them.
struct JobTools {
    const Plugin& plugin;
    const RenderObserver& observer;
    const std::atomic<bool>& cancel;
};

std::unique_ptr<ChunkedJob> MakeChunkedRender(RenderOptions options, const JobTools& tools);
std::unique_ptr<ChunkedJob> MakeChunkedJoin(JoinOptions options, const JobTools& tools);
/// File: that the film was read from.
std::unique_ptr<ChunkedJob> MakeChunkedFilm(std::string file, Film film, FilmRenderOptions options,
                                            const JobTools& tools);

} // namespace aveffect
