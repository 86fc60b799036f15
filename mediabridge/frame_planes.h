#pragma once
/// Pictures as kernels see them: top-down, of 8 bits a sample.
#include <cstddef>

#include "kernels/planes.h"
#include "mediabridge/av_ptr.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace mediabridge {

/// A plane of samples; chroma is rounded up.
inline AVBased::kernels::Plane8 PlaneOf(const AVFrame& picture, int plane) {
    const AVPixFmtDescriptor* descriptor = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(picture.format));
    const bool chroma = plane == 1 || plane == 2;
    return {picture.data[plane],
            static_cast<std::size_t>(AV_CEIL_RSHIFT(picture.width, chroma ? descriptor->log2_chroma_w : 0)),
            static_cast<std::size_t>(picture.linesize[plane]),
            static_cast<std::size_t>(AV_CEIL_RSHIFT(picture.height, chroma ? descriptor->log2_chroma_h : 0))};
}

/// Packed pixels.
inline AVBased::kernels::Plane32 PixelsOf(const AVFrame& picture) {
    return {picture.data[0], static_cast<std::size_t>(picture.width),
            static_cast<std::size_t>(picture.linesize[0]), static_cast<std::size_t>(picture.height)};
}

} // namespace mediabridge
