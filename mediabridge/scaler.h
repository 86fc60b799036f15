#pragma once
/// Pixel format and size conversion on libswscale.
#include <string>

#include "mediabridge/av_ptr.h"

namespace mediabridge {

enum class ScaleQuality { Fastest, Bilinear, Bicubic };

/// Converts pictures to one format and size, honouring each picture's colour range and matrix, dithering when depth is
/// lost. Keeps its context between pictures of the same shape. Used by one thread at a time.
class Scaler {
public:
    /// Width or height 0 keep each source's own. A range of AVCOL_RANGE_UNSPECIFIED keeps the source's where both
    /// formats are YUV, else takes the usual range of the target format.
    Scaler(AVPixelFormat format, int width, int height, ScaleQuality quality,
           AVColorRange range = AVCOL_RANGE_UNSPECIFIED);

    /// Converts into a new picture from this scaler's pool of blocks, with the source's properties (time, aspect ratio,
    /// field flags, colour description). Null when libswscale can't; Error() then says why.
    AVFramePtr Convert(const AVFrame* source);

    const std::string& Error() const noexcept { return m_error; }

private:
    bool Prepare(const AVFrame* source, int width, int height);

    AVPixelFormat m_format;
    int m_width;
    int m_height;
    ScaleQuality m_quality;
    AVColorRange m_range;
    SwsContextPtr m_context;
    std::string m_error;
};

} // namespace mediabridge
