#include "mediabridge/pixel_conversion.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <span>

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace mediabridge {
namespace {

using AVBased::kernels::ChromaPhase;
using AVBased::kernels::PixelRule;
using AVBased::kernels::Plane32;
using AVBased::kernels::Plane8;
using AVBased::kernels::PlaneRule;
using AVBased::kernels::YuvaPlanes;

// What is served: these planes to and from these pixels, by these matrices, in both ranges, wherever chroma
// lies, by all qualities but Lanczos. All else is libswscale's.
struct Planar {
    AVPixelFormat format;
    bool alpha;
};
constexpr Planar kPlanar[] = {
    {AV_PIX_FMT_YUV420P, false}, {AV_PIX_FMT_YUV422P, false}, {AV_PIX_FMT_YUV444P, false},
    {AV_PIX_FMT_YUVA420P, true}, {AV_PIX_FMT_YUVA422P, true}, {AV_PIX_FMT_YUVA444P, true},
};
struct Packed {
    AVPixelFormat format;
    bool swapped, alpha;
};
constexpr Packed kPacked[] = {
    {AV_PIX_FMT_BGRA, false, true},
    {AV_PIX_FMT_BGR0, false, false},
    {AV_PIX_FMT_RGBA, true, true},
    {AV_PIX_FMT_RGB0, true, false},
};
struct Matrix {
    AVColorSpace name;
    double red, blue; ///< what they count in luma
};
constexpr Matrix kMatrices[] = {
    {AVCOL_SPC_SMPTE170M, 0.299, 0.114},    {AVCOL_SPC_BT709, 0.2126, 0.0722},
    {AVCOL_SPC_BT2020_NCL, 0.2627, 0.0593}, {AVCOL_SPC_BT2020_CL, 0.2627, 0.0593},
    {AVCOL_SPC_SMPTE240M, 0.212, 0.087},    {AVCOL_SPC_FCC, 0.3, 0.11},
};

template <class Row, class Key, class Member>
const Row* Find(std::span<const Row> rows, Key key, Member member) {
    const auto found = std::ranges::find(rows, key, member);
    return found == rows.end() ? nullptr : &*found;
}

/// How far samples reach: of unit 1 per sample, luma 219 or 255 of them, chroma 224 or 255.
struct Range {
    double luma, chroma, black;
};
Range RangeOf(AVColorRange range) {
    return range == AVCOL_RANGE_JPEG ? Range{1, 1, 0} : Range{219.0 / 255, 224.0 / 255, 16};
}

std::int16_t Rounded(double value) { return static_cast<std::int16_t>(std::lrint(value)); }

void SetColours(PixelRule& rule, const Matrix& matrix, const Range& range) {
    const double green = 1 - matrix.red - matrix.blue;
    const double redFromV = 2 * (1 - matrix.red) / range.chroma,
                 blueFromU = 2 * (1 - matrix.blue) / range.chroma;
    rule.lumaScale = static_cast<std::uint16_t>(std::lrint(16384 / range.luma));
    rule.lumaOffset = Rounded(-64 * range.black / range.luma);
    rule.redWhole = Rounded(redFromV);
    rule.redPart = Rounded(32768 * (redFromV - rule.redWhole));
    rule.blueWhole = Rounded(blueFromU);
    rule.bluePart = Rounded(32768 * (blueFromU - rule.blueWhole));
    rule.greenFromU = Rounded(-32768 * blueFromU * matrix.blue / green);
    rule.greenFromV = Rounded(-32768 * redFromV * matrix.red / green);
}

void SetColours(PlaneRule& rule, const Matrix& matrix, const Range& range) {
    const double green = 1 - matrix.red - matrix.blue;
    constexpr double kOne = 32768;
    const auto whole =
        static_cast<std::int16_t>(std::lrint(kOne * range.luma) - Rounded(kOne * range.luma * matrix.red) -
                                  Rounded(kOne * range.luma * matrix.blue));
    rule.y = {Rounded(kOne * range.luma * matrix.blue), whole, Rounded(kOne * range.luma * matrix.red)};
    static_cast<void>(green);
    // Of greys nothing may remain.
    const double u = kOne * range.chroma / (2 * (1 - matrix.blue)),
                 v = kOne * range.chroma / (2 * (1 - matrix.red));
    rule.u.red = Rounded(-u * matrix.red);
    rule.u.blue = Rounded(u * (1 - matrix.blue));
    rule.u.green = static_cast<std::int16_t>(-rule.u.red - rule.u.blue);
    rule.v.blue = Rounded(-v * matrix.blue);
    rule.v.red = Rounded(v * (1 - matrix.red));
    rule.v.green = static_cast<std::int16_t>(-rule.v.red - rule.v.blue);
    rule.lumaOffset = static_cast<std::int32_t>(kOne * range.black);
}

/// What a sample counts at a distance of so many samples: libswscale's curves.
double WeightAt(double distance, ScaleQuality quality) {
    const double d = std::fabs(distance);
    if (quality != ScaleQuality::Bicubic) return std::max(0.0, 1 - d);
    if (d < 1) return (1.4 * d - 2.4) * d * d + 1;
    return d < 2 ? ((-0.6 * d + 3) * d - 4.8) * d + 2.4 : 0;
}

/// Weights in 16384ths that add up to 1.
void SetTaps(std::span<std::int16_t> taps, std::span<const double> weights) {
    double total = 0;
    for (const double weight : weights) total += weight;
    int rest = 16384;
    for (std::size_t i = 0; i < taps.size(); ++i) {
        taps[i] = Rounded(16384 * weights[i] / total);
        rest -= taps[i];
    }
    auto largest = std::ranges::max_element(taps);
    *largest = static_cast<std::int16_t>(*largest + rest);
}

/// Chroma lies so many luma samples behind the first of its pair.
void SetPhases(ChromaPhase* phases, double place, ScaleQuality quality) {
    for (int i = 0; i < 2; ++i) {
        const double at = (i - place) / 2;
        const int nearest = static_cast<int>(std::floor(at));
        phases[i].first = nearest - 1;
        double weights[4];
        for (int k = 0; k < 4; ++k) weights[k] = WeightAt(at - (nearest - 1 + k), quality);
        SetTaps(phases[i].taps, weights);
    }
}

/// The same for a filter twice as wide, from so many luma samples before the pair on.
template <std::size_t Count>
void SetHalving(std::int16_t (&taps)[Count], int before, double place, ScaleQuality quality) {
    double weights[Count];
    for (std::size_t i = 0; i < Count; ++i)
        weights[i] = WeightAt((static_cast<int>(i) - before - place) / 2, quality);
    SetTaps(taps, weights);
}

double AcrossOf(AVChromaLocation location) {
    return location == AVCHROMA_LOC_CENTER || location == AVCHROMA_LOC_TOP || location == AVCHROMA_LOC_BOTTOM
               ? 0.5
               : 0;
}
double DownOf(AVChromaLocation location) {
    if (location == AVCHROMA_LOC_TOPLEFT || location == AVCHROMA_LOC_TOP) return 0;
    return location == AVCHROMA_LOC_BOTTOMLEFT || location == AVCHROMA_LOC_BOTTOM ? 1 : 0.5;
}

Plane8 PlaneOf(const AVFrame& picture, int plane, bool halvedColumns, bool halvedRows) {
    return {picture.data[plane],
            static_cast<std::size_t>(AV_CEIL_RSHIFT(picture.width, halvedColumns ? 1 : 0)),
            static_cast<std::size_t>(picture.linesize[plane]),
            static_cast<std::size_t>(AV_CEIL_RSHIFT(picture.height, halvedRows ? 1 : 0))};
}

void MakeOpaque(const Plane8& alpha) {
    for (std::size_t y = 0; y < alpha.rows; ++y) std::memset(alpha.Row(y), 255, alpha.width);
}

} // namespace

std::optional<PixelConversion> PixelConversion::Between(const PictureSide& source, const PictureSide& target,
                                                        ScaleQuality quality) {
    const bool toPixels = Find(std::span<const Planar>(kPlanar), source.format, &Planar::format) != nullptr;
    const PictureSide& yuv = toPixels ? source : target;
    const PictureSide& rgb = toPixels ? target : source;
    const Planar* planar = Find(std::span<const Planar>(kPlanar), yuv.format, &Planar::format);
    const Packed* packed = Find(std::span<const Packed>(kPacked), rgb.format, &Packed::format);
    const Matrix* matrix = Find(std::span<const Matrix>(kMatrices), yuv.matrix, &Matrix::name);
    if (!planar || !packed || !matrix || quality == ScaleQuality::Lanczos || source.width != target.width ||
        source.height != target.height || source.bottomUp)
        return std::nullopt;
    PixelConversion conversion;
    const AVPixFmtDescriptor* descriptor = av_pix_fmt_desc_get(yuv.format);
    conversion.m_toPixels = toPixels;
    conversion.m_swapped = packed->swapped;
    conversion.m_keepsAlpha = planar->alpha && packed->alpha;
    conversion.m_halvedColumns = descriptor->log2_chroma_w == 1;
    conversion.m_halvedRows = descriptor->log2_chroma_h == 1;
    const double across = AcrossOf(yuv.chroma), down = DownOf(yuv.chroma);
    SetColours(conversion.m_pixelRule, *matrix, RangeOf(yuv.range));
    SetPhases(conversion.m_pixelRule.columns, across, quality);
    SetPhases(conversion.m_pixelRule.rows, down, quality);
    SetColours(conversion.m_planeRule, *matrix, RangeOf(yuv.range));
    SetHalving(conversion.m_planeRule.columns, 4, across, quality);
    SetHalving(conversion.m_planeRule.rows, 3, down, quality);
    conversion.m_scratch.resize(
        AVBased::kernels::ConversionScratchBytes(static_cast<std::size_t>(source.width)) / sizeof(Line) + 1);
    return conversion;
}

void PixelConversion::Run(const AVFrame& source, AVFrame& target) {
    const AVFrame& yuv = m_toPixels ? source : target;
    const AVFrame& rgb = m_toPixels ? target : source;
    const Plane32 pixels = {rgb.data[0], static_cast<std::size_t>(rgb.width),
                            static_cast<std::size_t>(rgb.linesize[0]), static_cast<std::size_t>(rgb.height)};
    const Plane8 alpha = yuv.data[3] ? PlaneOf(yuv, 3, false, false) : Plane8{};
    const YuvaPlanes planes = {PlaneOf(yuv, 0, false, false),
                               PlaneOf(yuv, 1, m_halvedColumns, m_halvedRows),
                               PlaneOf(yuv, 2, m_halvedColumns, m_halvedRows),
                               m_keepsAlpha ? alpha : Plane8{},
                               m_halvedColumns,
                               m_halvedRows};
    const auto& kernels = AVBased::Kernels<AVBased::kernels::ConversionKernels>();
    if (m_toPixels) {
        kernels.toPixels(pixels, planes, m_pixelRule, m_swapped, m_scratch.front().bytes);
        return;
    }
    kernels.toPlanes(planes, pixels, m_planeRule, m_swapped, m_scratch.front().bytes);
    if (!m_keepsAlpha && !alpha.Empty()) MakeOpaque(alpha);
}

} // namespace mediabridge
