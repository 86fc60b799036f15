#include "mediabridge/flatten.h"

#include <cstdint>

#include "kernels/flatten.h"
#include "mediabridge/frame_planes.h"
#include "mediabridge/picture_pool.h"
#include "mediabridge/pixel_formats.h"

namespace mediabridge {
namespace {

using AVBased::kernels::FlattenKernels;
using AVBased::kernels::Plane8;

void FlattenPlanes(AVFrame& picture, const FlattenKernels& kernels) {
    constexpr std::uint8_t kNoChroma = 128;
    const auto format = static_cast<AVPixelFormat>(picture.format);
    const AVColorRange range =
        picture.color_range == AVCOL_RANGE_UNSPECIFIED ? UsualRange(format) : picture.color_range;
    const Plane8 alpha = PlaneOf(picture, 3);
    const auto flattenChroma =
        format == AV_PIX_FMT_YUVA420P ? kernels.flattenQuarter : kernels.flattenComponent;
    kernels.flattenComponent(PlaneOf(picture, 0), alpha, range == AVCOL_RANGE_JPEG ? 0 : 16);
    flattenChroma(PlaneOf(picture, 1), alpha, kNoChroma);
    flattenChroma(PlaneOf(picture, 2), alpha, kNoChroma);
    picture.format = format == AV_PIX_FMT_YUVA420P ? AV_PIX_FMT_YUV420P : AV_PIX_FMT_YUV444P;
    picture.data[3] = nullptr;
    picture.linesize[3] = 0;
}

} // namespace

AVFramePtr FlattenOverBlack(AVFramePtr picture) {
    const bool packed = picture->format == AV_PIX_FMT_BGRA;
    if (!packed && picture->format != AV_PIX_FMT_YUVA420P && picture->format != AV_PIX_FMT_YUVA444P)
        return nullptr;
    // A copy is top-down too.
    if (picture->linesize[0] < 0 || !av_frame_is_writable(picture.get()))
        picture = CopyPicture(picture.get());
    if (!picture) return nullptr;
    const auto& kernels = AVBased::Kernels<FlattenKernels>();
    if (packed)
        kernels.flattenRgba32(PixelsOf(*picture));
    else
        FlattenPlanes(*picture, kernels);
    return picture;
}

} // namespace mediabridge
