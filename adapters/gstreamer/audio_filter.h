#pragma once
/// Effects on sound as elements.
#include <gst/gst.h>

#include "aveffect/effect_info.h"

namespace aveffect::gst {

/// A filter of interleaved sound, which works in place. Settings that are controlled move evenly from
/// one buffer to the next. Where something is wrong sound is passed on.
void RegisterAudioFilter(GstPlugin* plugin, const AVBased::EffectInfo& effect);

} // namespace aveffect::gst
