#pragma once
/// Renders of sound alone.
#include "host/jobs/render.h"
#include "host/output/output_plan.h"
#include "host/output/stream_mapping.h"

namespace aveffect {

/// Whether sound is decoded and encoded again rather than copied.
bool ChangesSound(const RenderOptions& options);

/// Whether there are no pictures to render: the output holds none, or the input, an ordinary file, has none
/// but has sound. Throws Error (Input, Interrupted).
bool IsSoundRender(const RenderOptions& options, const OutputPlan& plan, const std::atomic<bool>& cancel);

/// Refuses what needs pictures. Throws Error.
void RequireSoundOptions(const RenderOptions& options, const OutputPlan& plan);

/// As Render for such options, which have been checked with the plan. Throws Error.
RenderResult RenderSound(const Plugin& plugin, const RenderOptions& options, const OutputPlan& plan,
                         const RenderObserver& observer, const std::atomic<bool>& cancel);

/// What of a clip's pictures is rendered.
struct SoundSpan {
    const Source& source;
    int64_t start; ///< as SpanReader::Start
    EffectTimes times;
};
/// What becomes of the sound that lies beside pictures. The options outlive it.
SoundPlan SoundBeside(const Plugin& plugin, AVBased::IAVManager* manager, const RenderOptions& options,
                      const SoundSpan& span, const std::atomic<bool>& cancel);

} // namespace aveffect
