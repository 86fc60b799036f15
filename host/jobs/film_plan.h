#pragma once
/// What the renders of transitions check and work out before they read anything.
#include <string>
#include <vector>

#include "host/jobs/transition.h"
#include "host/output/output_plan.h"

namespace aveffect {

/// Pictures in a time, rounded to the nearest number.
int64_t PicturesIn(int64_t milliseconds, AVRational rate);

/// Throws Error (Usage) when a transition that lasts so long has no picture at that rate.
void RequirePictures(int64_t pictures, int64_t milliseconds, AVRational rate);

/// Checks everything that needs no input to be read: names, codecs, and that the output is a clip and no
/// input. Throws Error (Usage, Output).
OutputPlan PlanFilm(const FilmOptions& options, const std::vector<std::string>& inputs);

} // namespace aveffect
