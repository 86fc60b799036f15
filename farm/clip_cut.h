#pragma once
/// Chunks of a clip that is rendered.
#include <functional>

#include "farm/chunked_job.h"

namespace aveffect {

/// As ChunkedJob::Cut. Reads the clip's packets once, and decodes its end where a rate is asked for. Throws
/// Error.
void CutClip(FarmPlan& plan, const RenderOptions& options,
             const std::function<int64_t(int64_t, AVRational)>& picturesAChunk, const JobTools& tools);

} // namespace aveffect
