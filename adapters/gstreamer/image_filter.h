#pragma once
/// Effects on pictures as elements.
#include <gst/gst.h>

#include "aveffect/effect_info.h"

namespace aveffect::gst {

/// A video filter, which works in place. Fades go by stream time. Where something is wrong pictures are
/// passed on.
void RegisterImageFilter(GstPlugin* plugin, const AVBased::EffectInfo& effect);

} // namespace aveffect::gst
