#pragma once
/// Growing pictures to the sizes that encoders take.
#include "host/support/av_owner.h"

namespace aveffect {

/// A picture of that size, no smaller than the given one, which lies at its top left; beyond it, each plane's
/// last column and row go on. For planar formats and packed ones without shared chroma. Throws Error
/// (Output).
mediabridge::AVFramePtr PadByEdge(const AVFrame& picture, int width, int height);

} // namespace aveffect
