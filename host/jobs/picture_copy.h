#pragma once
/// Renders that leave the pictures as they are: their packets are copied.
#include "host/jobs/render.h"
#include "host/output/output_plan.h"

namespace aveffect {

/// Whether the options ask for it by the codec's name, "copy". Throws Error (Usage) where something else that
/// they ask for would change the pictures.
bool AsksForCopy(const RenderOptions& options);

/// Whether nothing is asked of the pictures, something of the sound, and the container is one in which the
/// clip's pictures are at home. Throws Error (Input, Interrupted).
bool LeavesPictures(const RenderOptions& options, const OutputPlan& plan, const std::atomic<bool>& cancel);

/// As Render for such options, which have been checked with the plan. Throws Error.
RenderResult RenderCopy(const Plugin& plugin, const RenderOptions& options, const OutputPlan& plan,
                        const RenderObserver& observer, const std::atomic<bool>& cancel);

} // namespace aveffect
