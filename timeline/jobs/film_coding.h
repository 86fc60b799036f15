#pragma once
/// What the encoded pictures of a film depend on besides what they show.
#include <string>

#include "host/output/output_plan.h"
#include "timeline/jobs/film_render.h"
#include "timeline/playout/playout_setup.h"

namespace aveffect {

/// As a text that is another one wherever pictures may be encoded otherwise: this version, the encoder and
/// its settings, the film's rate, size and colours. The look is a picture like those of the film.
std::string CodingText(const FilmRenderOptions& options, const OutputPlan& plan, const PlayoutSetup& setup,
                       const AVFrame& look);

} // namespace aveffect
