#pragma once
/// What a render is going to do.
#include "host/jobs/render.h"
#include "host/output/output_plan.h"

namespace aveffect {

/// A render whose options fit each other, the output and what the input holds.
struct RenderPlan {
    enum class Kind {
        Clip,  ///< pictures are decoded, changed and encoded, the rest lies beside them
        Copy,  ///< pictures are copied as they are
        Sound, ///< there are none
    };
    const RenderOptions& options; ///< outlive the plan
    OutputPlan output;
    Kind kind = Kind::Clip;
};

/// Checks everything that can be told before the effects are made, and writes nothing. Throws Error.
RenderPlan PlanRender(const RenderOptions& options, const std::atomic<bool>& cancel);

/// Renders of the kind Clip. Throws Error, before anything is opened for writing where effects, media or the
/// first picture are to blame.
RenderResult RenderClip(const Plugin& plugin, RenderPlan plan, const RenderObserver& observer,
                        const std::atomic<bool>& cancel);

} // namespace aveffect
