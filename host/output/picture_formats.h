#pragma once
/// What files of a kind hold of pictures.
#include "host/output/output_plan.h"

namespace aveffect {

/// Whether the container is known to hold pictures of that codec, so that they can be read from it again.
bool Takes(const OutputPlan& plan, AVCodecID codec);

} // namespace aveffect
