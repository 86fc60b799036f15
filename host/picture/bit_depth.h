#pragma once
/// Pictures of more than 8 bits on their way to 8.
#include <optional>

#include "host/picture/picture_filter.h"
#include "mediabridge/scaler.h"

namespace aveffect {

/// Bits of a format's samples.
int BitDepth(AVPixelFormat format);

/// Brings pictures of more than 8 bits to 8 with dithering and otherwise as they are, so that what comes
/// after has nothing to round. libswscale dithers what it makes of YUV, but not what it makes of RGB;
/// libavfilter's zscale, where there is one, does it there. Used by one thread at a time.
class DepthReducer {
public:
    /// Leaves pictures of 8 bits alone. Throws Error (Output).
    mediabridge::AVFramePtr Apply(mediabridge::AVFramePtr picture);

private:
    std::optional<mediabridge::Scaler> m_scaler;
    std::optional<PictureFilter> m_filter;
};

} // namespace aveffect
