#pragma once
/// Transitions between two streams of pictures.
#include <gst/gst.h>

#include "aveffect/effect_info.h"

namespace aveffect::gst {

/// A video aggregator with the pads sink_0, which goes, and sink_1, which comes. Where there is but one
/// picture, or something is wrong, one is passed on.
void RegisterTransition(GstPlugin* plugin, const AVBased::EffectInfo& effect);

} // namespace aveffect::gst
