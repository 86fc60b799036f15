#pragma once
/// Effects on pictures as filters.
#include <framework/mlt.h>

#include "aveffect/effect_info.h"

namespace aveffect::mlt {

/// A filter of that effect; null without memory. Frames may come on any threads, in any order: what a picture
/// becomes follows from it, its place and the settings alone. Where something is wrong pictures are passed
/// on.
mlt_filter MakeImageFilter(const AVBased::EffectInfo& effect);

} // namespace aveffect::mlt
