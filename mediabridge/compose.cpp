#include "mediabridge/compose.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "kernels/flatten.h"
#include "mediabridge/frame_planes.h"
#include "mediabridge/picture_pool.h"

namespace mediabridge {
namespace {

constexpr unsigned kOpaque = 255;
constexpr int kBytes = 4, kGreen = 1, kAlpha = 3;

/// Calls with the bytes of each pixel of both pictures.
template <typename Change>
void ForPixels(AVFrame& picture, const AVFrame& other, const Change& change) {
    for (int y = 0; y < picture.height; ++y) {
        std::uint8_t* to = picture.data[0] + std::ptrdiff_t{y} * picture.linesize[0];
        const std::uint8_t* from = other.data[0] + std::ptrdiff_t{y} * other.linesize[0];
        for (int x = 0; x < picture.width; ++x, to += kBytes, from += kBytes) change(to, from);
    }
}

} // namespace

void CoverOpaque(AVFrame& below, const AVFrame& above) {
    AVBased::Kernels<AVBased::kernels::FlattenKernels>().coverRgba32(PixelsOf(below), PixelsOf(above));
}

void Cover(AVFrame& below, const AVFrame& above) {
    ForPixels(below, above, [](std::uint8_t* to, const std::uint8_t* from) {
        const unsigned a = from[kAlpha] * kOpaque, b = to[kAlpha] * (kOpaque - from[kAlpha]), all = a + b;
        for (int i = 0; i < kAlpha && all > 0; ++i)
            to[i] = static_cast<std::uint8_t>((from[i] * a + to[i] * b + all / 2) / all);
        to[kAlpha] = static_cast<std::uint8_t>((all + kOpaque / 2) / kOpaque);
    });
}

AVFramePtr AlphaAsGrey(const AVFrame& picture) {
    AVFramePtr grey = AllocatePicture(AV_PIX_FMT_BGRA, picture.width, picture.height);
    if (!grey) return nullptr;
    ForPixels(*grey, picture, [](std::uint8_t* to, const std::uint8_t* from) {
        to[0] = to[1] = to[2] = from[kAlpha];
        to[kAlpha] = kOpaque;
    });
    return grey;
}

void TakeAlpha(AVFrame& overBlack, const AVFrame& grey) {
    ForPixels(overBlack, grey, [](std::uint8_t* to, const std::uint8_t* from) {
        const unsigned alpha = from[kGreen];
        for (int i = 0; i < kAlpha && alpha > 0; ++i)
            to[i] = static_cast<std::uint8_t>(std::min(kOpaque, (to[i] * kOpaque + alpha / 2) / alpha));
        to[kAlpha] = static_cast<std::uint8_t>(alpha);
    });
}

} // namespace mediabridge
