/// Pictures inside black margins.
#include <algorithm>
#include <array>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/pixdesc.h>
}

#include "aveffect/base_media.h"
#include "aveffect/pixel_format.h"
#include "companions/basemedia/failure.h"
#include "companions/basemedia/source_picture.h"
#include "mediabridge/picture_pool.h"
#include "mediabridge/pixel_formats.h"

namespace basemedia {
namespace {

struct Margins {
    unsigned left = 0;
    unsigned top = 0;
    unsigned right = 0;
    unsigned bottom = 0;
};

/// The bytes of black in one plane, over and over.
using Pattern = std::array<std::uint8_t, 4>;

Pattern BlackPacked(unsigned format) {
    switch (format) {
    case AVBased::YUYV422:
        return {16, 128, 16, 128};
    case AVBased::UYVY422:
        return {128, 16, 128, 16};
    case AVBased::ARGB:
    case AVBased::ABGR:
        return {255, 0, 0, 0};
    case AVBased::RGBA:
    case AVBased::BGRA:
        return {0, 0, 0, 255};
    case AVBased::MONOWHITE:
        return {255, 255, 255, 255};
    default:
        return {};
    }
}

Pattern BlackPlane(unsigned format, int plane) {
    if (mediabridge::TableIsPacked(format)) return BlackPacked(format);
    if (format == AVBased::YUV420P10LE || format == AVBased::YUV422P10LE)
        return plane == 0 ? Pattern{64, 0, 64, 0} : Pattern{0, 2, 0, 2};
    const bool fullRange = mediabridge::UsualRange(mediabridge::LibraryFormat(format)) == AVCOL_RANGE_JPEG;
    const std::uint8_t luma = fullRange ? 0 : 16;
    const std::uint8_t values[] = {luma, 128, 128, 255};
    const std::uint8_t value = values[plane];
    return {value, value, value, value};
}

int RowShift(const AVPixFmtDescriptor* descriptor, int plane) {
    return plane == 1 || plane == 2 ? descriptor->log2_chroma_h : 0;
}

int PlaneRows(const AVFrame* picture, int plane) {
    const AVPixFmtDescriptor* descriptor = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(picture->format));
    return AV_CEIL_RSHIFT(picture->height, RowShift(descriptor, plane));
}

void FillBlack(unsigned format, AVFrame* picture, int plane) {
    const Pattern black = BlackPlane(format, plane);
    const int bytes =
        av_image_get_linesize(static_cast<AVPixelFormat>(picture->format), picture->width, plane);
    for (int y = 0; y < PlaneRows(picture, plane); ++y) {
        std::uint8_t* row = picture->data[plane] + std::ptrdiff_t{picture->linesize[plane]} * y;
        for (int x = 0; x < bytes; ++x) row[x] = black[static_cast<std::size_t>(x % 4)];
    }
}

/// Places a row of 1-bit pixels from any column on.
void PlaceBits(std::uint8_t* to, const std::uint8_t* from, unsigned left, int width) {
    for (int x = 0; x < width; ++x) {
        const unsigned at = left + static_cast<unsigned>(x);
        const unsigned mask = 0x80u >> (at % 8);
        const bool set = (from[x / 8] << (x % 8)) & 0x80;
        to[at / 8] = static_cast<std::uint8_t>(set ? to[at / 8] | mask : to[at / 8] & ~mask);
    }
}

/// Places a row of pixel pairs from an odd column on: luma where it belongs, chroma with the pair that holds
/// the column.
void PlacePairs(std::uint8_t* to, const std::uint8_t* from, unsigned left, int width, unsigned lumaOffset) {
    for (int x = 0; x < width; ++x)
        to[2 * (left + static_cast<unsigned>(x)) + lumaOffset] = from[2 * x + static_cast<int>(lumaOffset)];
    const unsigned chromaOffset = 1 - lumaOffset;
    std::uint8_t* chroma = to + 4 * std::size_t{left / 2} + chromaOffset;
    for (int pair = 0; pair < (width + 1) / 2; ++pair)
        for (int component = 0; component < 2; ++component)
            chroma[4 * pair + 2 * component] =
                from[4 * pair + 2 * component + static_cast<int>(chromaOffset)];
}

/// Copies one plane to its place. On subsampled planes that is the margin's, rounded down: with an odd margin
/// the chroma lies off by less than one of its own samples, which are kept as they are.
void PlacePlane(unsigned format, AVFrame* target, const AVFrame* source, int plane, const Margins& margins) {
    const auto libraryFormat = static_cast<AVPixelFormat>(source->format);
    const AVPixFmtDescriptor* descriptor = av_pix_fmt_desc_get(libraryFormat);
    const bool pairs = format == AVBased::YUYV422 || format == AVBased::UYVY422;
    const std::size_t bytes =
        static_cast<std::size_t>(av_image_get_linesize(libraryFormat, source->width, plane));
    const bool chroma = plane == 1 || plane == 2;
    const int column = static_cast<int>(margins.left) & (chroma ? -(1 << descriptor->log2_chroma_w) : -1);
    const auto before = static_cast<std::size_t>(av_image_get_linesize(libraryFormat, column, plane));
    const unsigned top = margins.top >> RowShift(descriptor, plane);
    for (int y = 0; y < PlaneRows(source, plane); ++y) {
        const std::uint8_t* from = source->data[plane] + std::ptrdiff_t{source->linesize[plane]} * y;
        std::uint8_t* to =
            target->data[plane] + std::ptrdiff_t{target->linesize[plane]} * (static_cast<int>(top) + y);
        if (descriptor->flags & AV_PIX_FMT_FLAG_BITSTREAM)
            PlaceBits(to, from, margins.left, source->width);
        else if (pairs)
            PlacePairs(to, from, margins.left, source->width, format == AVBased::YUYV422 ? 0 : 1);
        else
            std::memcpy(to + before, from, bytes);
    }
}

class CropPan final : public AVBased::IRawVideoFrameCropPan {
public:
    void SetLeft(unsigned pixels) override { m_margins.left = pixels; }
    void SetTop(unsigned pixels) override { m_margins.top = pixels; }
    void SetRight(unsigned pixels) override { m_margins.right = pixels; }
    void SetBottom(unsigned pixels) override { m_margins.bottom = pixels; }

    AVBased::IRawVideoFrame* Process(AVBased::IRawVideoFrame* source) override {
        return Guarded([&]() -> AVBased::IRawVideoFrame* {
            RequirePointer(source);
            const unsigned format = source->GetPixelFormat();
            if (format == AVBased::PAL8 || format == AVBased::UYYVYY411)
                throw Failure(AVBased::kUnknownException, "Margins can't be placed on " +
                                                              mediabridge::FrameFormatName(format) +
                                                              " pictures");
            const mediabridge::AVFramePtr picture = ReadPicture(source);
            mediabridge::AVFramePtr result = MakeCanvas(picture.get());
            for (int plane = 0; plane < static_cast<int>(mediabridge::TablePlaneCount(format)); ++plane) {
                FillBlack(format, result.get(), plane);
                PlacePlane(format, result.get(), picture.get(), plane, m_margins);
            }
            return MakeFrame(result.get(), source).release();
        });
    }

    void Release() override { delete this; }

private:
    ~CropPan() = default;

    mediabridge::AVFramePtr MakeCanvas(const AVFrame* picture) const {
        const std::uint64_t width =
            std::uint64_t{m_margins.left} + m_margins.right + static_cast<unsigned>(picture->width);
        const std::uint64_t height =
            std::uint64_t{m_margins.top} + m_margins.bottom + static_cast<unsigned>(picture->height);
        const bool possible = width <= INT_MAX && height <= INT_MAX &&
                              av_image_check_size(static_cast<unsigned>(width), static_cast<unsigned>(height),
                                                  mediabridge::kSilent, nullptr) >= 0;
        if (!possible)
            throw Failure(AVBased::kUnknownException, "Margins make a picture of " + std::to_string(width) +
                                                          "x" + std::to_string(height) +
                                                          " pixels, which is too large");
        mediabridge::AVFramePtr canvas = mediabridge::AllocatePicture(
            static_cast<AVPixelFormat>(picture->format), static_cast<int>(width), static_cast<int>(height));
        if (!canvas || av_frame_copy_props(canvas.get(), picture) < 0) throw std::bad_alloc();
        return canvas;
    }

    Margins m_margins;
};

} // namespace
} // namespace basemedia

AVBased::IRawVideoFrameCropPan* CreateRawVideoFrameCropPan() {
    return basemedia::Guarded([]() -> AVBased::IRawVideoFrameCropPan* { return new basemedia::CropPan; });
}
