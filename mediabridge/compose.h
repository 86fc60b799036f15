#pragma once
/// Pictures above each other. All are BGRA, top-down, of one size, and alpha is straight: colours are what
/// they would be without it.
#include "mediabridge/av_ptr.h"

namespace mediabridge {

/// Lays a picture above an opaque one, in that one's memory, and leaves it opaque.
void CoverOpaque(AVFrame& below, const AVFrame& above);

/// The same where the one below is transparent, too: with the alphas a above and b below, alpha becomes
/// r = a + b * (1 - a) and colours (above * a + below * b * (1 - a)) / r, to the nearest.
void Cover(AVFrame& below, const AVFrame& above);

/// Alpha as an opaque grey picture. Null when memory is short.
AVFramePtr AlphaAsGrey(const AVFrame& picture);

/// The other way: a picture that was blended over black gets its colours back, and the grey one's brightness
/// (its green) as alpha, in its own memory.
void TakeAlpha(AVFrame& overBlack, const AVFrame& grey);

} // namespace mediabridge
