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

/// So many bytes hold so many pixels of a row; rows are halved rowShift times.
struct PlaneLayout {
    unsigned pixels;
    unsigned bytes;
    unsigned rowShift;
    unsigned cropPixels; ///< pixels for the same bytes when columns are cropped
};

constexpr PlaneLayout Unit(unsigned pixels, unsigned bytes, unsigned rowShift = 0) {
    return {pixels, bytes, rowShift, pixels};
}

struct FormatLayout {
    unsigned id;
    const char* name;
    bool packed;
    unsigned planeCount;
    std::array<PlaneLayout, 4> planes;
};

constexpr FormatLayout Packed(unsigned id, const char* name, unsigned pixels, unsigned bytes) {
    return {id, name, true, 1, {Unit(pixels, bytes)}};
}

constexpr FormatLayout Planar(unsigned id, const char* name, unsigned chromaPixels, unsigned chromaRowShift,
                              bool alpha = false) {
    const PlaneLayout full = Unit(1, 1);
    const PlaneLayout chroma = Unit(chromaPixels, 1, chromaRowShift);
    return {id, name, false, alpha ? 4u : 3u, {full, chroma, chroma, full}};
}

using namespace AVBased;

constexpr FormatLayout kFormats[] = {
    Planar(YUV420P, "yuv420p", 2, 1),
    Packed(YUYV422, "yuyv422", 2, 4),
    Packed(RGB24, "rgb24", 1, 3),
    Packed(BGR24, "bgr24", 1, 3),
    Planar(YUV422P, "yuv422p", 2, 0),
    Planar(YUV444P, "yuv444p", 1, 0),
    Planar(YUV410P, "yuv410p", 4, 2),
    Planar(YUV411P, "yuv411p", 4, 0),
    Packed(GRAY8, "gray", 1, 1),
    Packed(MONOWHITE, "monow", 8, 1),
    Packed(MONOBLACK, "monob", 8, 1),
    {PAL8, "pal8", false, 1, {Unit(1, 1)}},
    Planar(YUVJ420P, "yuvj420p", 2, 1),
    Planar(YUVJ422P, "yuvj422p", 2, 0),
    Planar(YUVJ444P, "yuvj444p", 1, 0),
    Packed(UYVY422, "uyvy422", 2, 4),
    Packed(UYYVYY411, "uyyvyy411", 4, 6),
    // The chroma plane is as wide as the luma, yet its crop counts two columns a byte.
    {NV12, "nv12", false, 2, {Unit(1, 1), PlaneLayout{1, 1, 1, 2}}},
    Packed(ARGB, "argb", 1, 4),
    Packed(RGBA, "rgba", 1, 4),
    Packed(ABGR, "abgr", 1, 4),
    Packed(BGRA, "bgra", 1, 4),
    Planar(YUV440P, "yuv440p", 1, 1),
    Planar(YUVA420P, "yuva420p", 2, 1, true),
    Packed(RGB48BE, "rgb48be", 1, 6),
    Packed(RGB48LE, "rgb48le", 1, 6),
    Packed(RGB565BE, "rgb565be", 1, 2),
    Packed(RGB565LE, "rgb565le", 1, 2),
    Packed(RGB555BE, "rgb555be", 1, 2),
    Packed(RGB555LE, "rgb555le", 1, 2),
    Packed(BGR565BE, "bgr565be", 1, 2),
    Packed(BGR565LE, "bgr565le", 1, 2),
    Packed(BGR555BE, "bgr555be", 1, 2),
    Packed(BGR555LE, "bgr555le", 1, 2),
    // One byte a sample, although a sample takes two: hosts and plug-in agree on these figures.
    Planar(YUV420P10LE, "yuv420p10le", 2, 1),
    Planar(YUV422P10LE, "yuv422p10le", 2, 0),
    Planar(YUVA444P, "yuva444p", 1, 0, true),
    Packed(XYZ12LE, "xyz12le", 1, 6),
};

struct FullRangePair {
    AVPixelFormat plain;
    AVPixelFormat fullRange;
};
constexpr FullRangePair kFullRangePairs[] = {
    {AV_PIX_FMT_YUV420P, AV_PIX_FMT_YUVJ420P}, {AV_PIX_FMT_YUV422P, AV_PIX_FMT_YUVJ422P},
    {AV_PIX_FMT_YUV444P, AV_PIX_FMT_YUVJ444P}, {AV_PIX_FMT_YUV440P, AV_PIX_FMT_YUVJ440P},
    {AV_PIX_FMT_YUV411P, AV_PIX_FMT_YUVJ411P},
};

const FormatLayout* FindLayout(unsigned frameFormat) {
    const auto found = std::ranges::find(kFormats, frameFormat, &FormatLayout::id);
    return found == std::end(kFormats) ? nullptr : found;
}

const PlaneLayout* FindPlane(unsigned frameFormat, unsigned plane) {
    const FormatLayout* layout = FindLayout(frameFormat);
    return layout && plane < layout->planeCount ? &layout->planes[plane] : nullptr;
}

/// The library's format of each table row; looked up once, since every wrapped frame asks.
const auto& LibraryFormats() {
    static const auto formats = [] {
        std::array<AVPixelFormat, std::size(kFormats)> found;
        std::ranges::transform(kFormats, found.begin(),
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
    const FormatLayout* layout = FindLayout(frameFormat);
    return layout ? LibraryFormats()[static_cast<std::size_t>(layout - kFormats)] : AV_PIX_FMT_NONE;
}

std::optional<unsigned> FrameFormat(AVPixelFormat format, AVColorRange range) {
    if (format == AV_PIX_FMT_NONE) return std::nullopt;
    const auto idOf = [](AVPixelFormat wanted) -> std::optional<unsigned> {
        const auto found = std::ranges::find(LibraryFormats(), wanted);
        if (found == LibraryFormats().end()) return std::nullopt;
        return kFormats[found - LibraryFormats().begin()].id;
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
    const FormatLayout* layout = FindLayout(frameFormat);
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
    const FormatLayout* layout = FindLayout(frameFormat);
    return layout ? layout->planeCount : 0;
}

bool TableIsPacked(unsigned frameFormat) {
    const FormatLayout* layout = FindLayout(frameFormat);
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
