#pragma once
/// What the renders of transitions share: their settings, their pictures, the outputs they go to.
#include "host/effects/effect_chain.h"
#include "host/jobs/transition.h"
#include "host/output/output_plan.h"
#include "host/picture/fitting.h"
#include "host/support/reporter.h"

namespace aveffect {

/// The transition between two source URLs with its times in milliseconds.
EffectSpec TransitionSpec(const std::string& transition, const std::string& first, const std::string& second,
                          int64_t startMs, int64_t endMs);

/// What the chain draws at a moment on a canvas, over black, as BGR0: transitions leave nothing of use in
/// alpha. Throws Error.
mediabridge::AVFramePtr DrawTransition(EffectChain& chain, const Canvas& canvas, int64_t timeMs);

/// Pictures in a time, rounded to the nearest number.
int64_t PicturesIn(int64_t milliseconds, AVRational rate);

/// Throws Error (Usage) when a transition that lasts so long has no picture at that rate.
void RequirePictures(int64_t pictures, int64_t milliseconds, AVRational rate);

/// Checks everything that needs no input to be read: names, codecs, and that the output is a clip and no
/// input. Throws Error (Usage, Output).
OutputPlan PlanFilm(const FilmOptions& options, const std::vector<std::string>& inputs);

} // namespace aveffect
