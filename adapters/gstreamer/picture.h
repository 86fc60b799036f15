#pragma once
/// Pictures as GStreamer has them.
#include <gst/video/video.h>

#include "adapters/support/shown_pictures.h"
#include "aveffect/effect_info.h"

namespace aveffect::gst {

/// The formats that an effect serves, as caps. The caller's.
GstCaps* PictureCapsFor(const AVBased::EffectInfo& effect);

/// The planes of a mapped picture in one of them, chroma of odd sizes rounded up. It is lent.
adapters::HostPicture PictureOf(const AVBased::EffectInfo& effect, const GstVideoFrame& frame);

/// Milliseconds of a time, rounded; 0 for none, and at most what effects can count.
int Milliseconds(GstClockTime time);

} // namespace aveffect::gst
