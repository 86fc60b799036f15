#pragma once
/// Renders of clips that follow one another.
#include "host/jobs/clip_sequence.h"
#include "host/output/output_plan.h"

namespace aveffect {

/// Throws Error (Usage) when a clip is shorter than its part.
void RequireLong(const SequencePart& part, AVRational rate);

/// Encodes a sequence with its sound and gives the file its name. Throws Error.
RenderResult RenderSequence(const Plugin& plugin, const FilmOptions& options, const OutputPlan& plan,
                            SequenceSetup setup, IntakeTerms& terms, Reporter& reporter,
                            const std::atomic<bool>& cancel);

} // namespace aveffect
