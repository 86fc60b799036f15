#pragma once
/// Effects on sound as filters.
#include <framework/mlt.h>

#include "aveffect/effect_info.h"

namespace aveffect::mlt {

/// A filter of that effect; null without memory. Settings that move go evenly from one picture to the next.
/// Where something is wrong sound is passed on.
mlt_filter MakeAudioFilter(const AVBased::EffectInfo& effect);

} // namespace aveffect::mlt
