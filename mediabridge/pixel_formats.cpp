#include "mediabridge/pixel_formats.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>

extern "C" {
#include <libavutil/pixdesc.h>
}

#include "aveffect/pixel_format.h"

namespace mediabridge {
namespace {

using namespace AVBased;

struct FullRangePair {
    AVPixelFormat plain;
    AVPixelFormat fullRange;
};
constexpr FullRangePair kFullRangePairs[] = {
    {AV_PIX_FMT_YUV420P, AV_PIX_FMT_YUVJ420P}, {AV_PIX_FMT_YUV422P, AV_PIX_FMT_YUVJ422P},
    {AV_PIX_FMT_YUV444P, AV_PIX_FMT_YUVJ444P}, {AV_PIX_FMT_YUV440P, AV_PIX_FMT_YUVJ440P},
    {AV_PIX_FMT_YUV411P, AV_PIX_FMT_YUVJ411P},
};

const PlaneLayout* FindPlane(unsigned frameFormat, unsigned plane) {
    const FormatLayout* layout = FindPixelFormat(frameFormat);
    return layout && plane < layout->planeCount ? &layout->planes[plane] : nullptr;
}

/// The library's format of each table row; looked up once, since every wrapped frame asks.
const auto& LibraryFormats() {
    static const auto formats = [] {
        std::array<AVPixelFormat, std::size(kPixelFormats)> found;
        std::ranges::transform(kPixelFormats, found.begin(),
                               [](const FormatLayout& layout) { return av_get_pix_fmt(layout.name); });
        return found;
    }();
    return formats;
}

unsigned UnitBytes(unsigned columns, unsigned bytes, unsigned pixels) {
    return static_cast<unsigned>(std::uint64_t{columns} * bytes / pixels);
}

} // namespace

AVPixelFormat LibraryFormat(unsigned frameFormat) {
    const FormatLayout* layout = FindPixelFormat(frameFormat);
    return layout ? LibraryFormats()[static_cast<std::size_t>(layout - kPixelFormats)] : AV_PIX_FMT_NONE;
}

std::optional<unsigned> FrameFormat(AVPixelFormat format, AVColorRange range) {
    if (format == AV_PIX_FMT_NONE) return std::nullopt;
    const auto idOf = [](AVPixelFormat wanted) -> std::optional<unsigned> {
        const auto found = std::ranges::find(LibraryFormats(), wanted);
        if (found == LibraryFormats().end()) return std::nullopt;
        return kPixelFormats[found - LibraryFormats().begin()].id;
    };
    if (range == AVCOL_RANGE_JPEG) {
        const auto pair = std::ranges::find(kFullRangePairs, format, &FullRangePair::plain);
        if (pair != std::end(kFullRangePairs))
            if (const auto id = idOf(pair->fullRange)) return id;
    }
    return idOf(format);
}

std::optional<unsigned> FrameFormatByName(const std::string& name) {
    return FrameFormat(av_get_pix_fmt(name.c_str()), AVCOL_RANGE_UNSPECIFIED);
}

std::string FrameFormatName(unsigned frameFormat) {
    const FormatLayout* layout = FindPixelFormat(frameFormat);
    return layout ? layout->name : "format " + std::to_string(frameFormat);
}

PlaneSize TablePlaneSize(unsigned frameFormat, unsigned plane, unsigned width, unsigned height) {
    const PlaneLayout* layout = FindPlane(frameFormat, plane);
    if (!layout) return {};
    return {UnitBytes(width, layout->bytes, layout->pixels), height >> layout->rowShift};
}

PlaneSize PicturePlaneSize(unsigned frameFormat, unsigned plane, unsigned width, unsigned height) {
    const PlaneLayout* layout = FindPlane(frameFormat, plane);
    if (!layout || TableIsPacked(frameFormat)) return TablePlaneSize(frameFormat, plane, width, height);
    const auto roundUp = [](unsigned size, unsigned unit) { return (size + unit - 1) / unit * unit; };
    return TablePlaneSize(frameFormat, plane, roundUp(width, layout->cropPixels),
                          roundUp(height, 1u << layout->rowShift));
}

unsigned TableCropBytes(unsigned frameFormat, unsigned plane, unsigned right) {
    const PlaneLayout* layout = FindPlane(frameFormat, plane);
    return layout ? UnitBytes(right, layout->bytes, layout->cropPixels) : 0;
}

unsigned TablePlaneCount(unsigned frameFormat) {
    const FormatLayout* layout = FindPixelFormat(frameFormat);
    return layout ? layout->planeCount : 0;
}

bool TableIsPacked(unsigned frameFormat) {
    const FormatLayout* layout = FindPixelFormat(frameFormat);
    return layout && layout->packed;
}

AVPixelFormat WithoutRange(AVPixelFormat format) {
    const auto pair = std::ranges::find(kFullRangePairs, format, &FullRangePair::fullRange);
    return pair == std::end(kFullRangePairs) ? format : pair->plain;
}

bool HasColourRange(AVPixelFormat format) {
    const AVPixFmtDescriptor* descriptor = av_pix_fmt_desc_get(format);
    constexpr std::uint64_t kWithout = AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_PAL | AV_PIX_FMT_FLAG_BITSTREAM;
    return descriptor && !(descriptor->flags & kWithout) && format != AV_PIX_FMT_XYZ12LE &&
           format != AV_PIX_FMT_XYZ12BE;
}

AVColorRange UsualRange(AVPixelFormat format) {
    const AVPixFmtDescriptor* descriptor = av_pix_fmt_desc_get(format);
    const bool yuv = HasColourRange(format) && descriptor->nb_components > 2;
    return yuv && WithoutRange(format) == format ? AVCOL_RANGE_MPEG : AVCOL_RANGE_JPEG;
}

} // namespace mediabridge
