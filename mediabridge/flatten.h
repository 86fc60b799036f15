#pragma once
/// Transparent pictures made opaque.
#include "mediabridge/av_ptr.h"

namespace mediabridge {

/// Blends a picture over black as its alpha says, in its own memory where nobody else has it. BGRA comes back
/// with alpha 255, YUVA 4:2:0 and 4:4:4 as YUV without. Chroma goes by the mean alpha of the luma samples
/// that share it, wherever it is said to lie. Null for other formats and when memory is short.
AVFramePtr FlattenOverBlack(AVFramePtr picture);

} // namespace mediabridge
