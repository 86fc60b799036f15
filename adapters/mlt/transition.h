#pragma once
/// Transitions between the pictures of two tracks.
#include <framework/mlt.h>

#include "aveffect/effect_info.h"

namespace aveffect::mlt {

inline constexpr char kProgress[] = "progress";

/// A transition of that effect; null without memory. Its way is that of its own length, or what "progress"
/// says, 0 to 1, which may move. Frames may come on any threads. Where something is wrong the first track's
/// pictures are passed on.
mlt_transition MakeTransition(const AVBased::EffectInfo& effect);

} // namespace aveffect::mlt
