#include "mediabridge/pixel_conversion.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <span>

#include "mediabridge/frame_planes.h"

namespace mediabridge {
namespace {

using AVBased::kernels::ChromaPairs;
using AVBased::kernels::ChromaPhase;
using AVBased::kernels::PixelRule;
using AVBased::kernels::Plane32;
using AVBased::kernels::Plane8;
using AVBased::kernels::PlaneRule;
using AVBased::kernels::YuvaPlanes;

// What is served, wherever chroma lies, in both ranges, by all qualities but Lanczos:
// - these planes to and from these pixels of the same size, by these matrices;
// - these planes and the pixels of four bytes to wider RGB24 of the same height;
// - pixels of three bytes to opaque ones of four.
// All else is libswscale's.
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
    bool swapped, alpha, isShort;
};
constexpr Packed kPacked[] = {
    {AV_PIX_FMT_BGRA, false, true, false},  {AV_PIX_FMT_BGR0, false, false, false},
    {AV_PIX_FMT_RGBA, true, true, false},   {AV_PIX_FMT_RGB0, true, false, false},
    {AV_PIX_FMT_BGR24, false, false, true}, {AV_PIX_FMT_RGB24, true, false, true},
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
    constexpr double kOne = 32768;
    const auto green =
        static_cast<std::int16_t>(std::lrint(kOne * range.luma) - Rounded(kOne * range.luma * matrix.red) -
                                  Rounded(kOne * range.luma * matrix.blue));
    rule.y = {Rounded(kOne * range.luma * matrix.blue), green, Rounded(kOne * range.luma * matrix.red)};
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

/// Weights that add up to one.
void SetTaps(std::span<std::int16_t> taps, std::span<const double> weights, int one = 16384) {
    double total = 0;
    for (const double weight : weights) total += weight;
    int rest = one;
    for (std::size_t i = 0; i < taps.size(); ++i) {
        taps[i] = Rounded(one * weights[i] / total);
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

/// The same for a filter twice as wide, which is symmetric.
void SetPairs(ChromaPairs& pairs, double place, ScaleQuality quality) {
    constexpr double kBetween[] = {0.5, 1.5, 2.5, 3.5}, kOn[] = {0, 1, 3, 2}; // at 2 the curves are 0
    double weights[ChromaPairs::kPairs];
    for (std::size_t i = 0; i < ChromaPairs::kPairs; ++i) {
        const double distance = place == 0.5 ? kBetween[i] : kOn[i];
        pairs.first[i] = static_cast<int>(place - distance);
        pairs.second[i] = static_cast<int>(place + distance);
        weights[i] = WeightAt(distance / 2, quality) / (distance > 0 ? 1 : 2); // one is its own twin
    }
    SetTaps(pairs.weights, weights, 32768);
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

/// Of pixels of three bytes.
Plane8 BytesOf(const AVFrame& picture) {
    const Plane32 pixels = PixelsOf(picture);
    return {pixels.data, pixels.width * 3, pixels.pitch, pixels.rows};
}

void MakeOpaque(const Plane8& alpha) {
    for (std::size_t y = 0; y < alpha.rows; ++y) std::memset(alpha.Row(y), 255, alpha.width);
}

} // namespace

std::optional<PixelConversion> PixelConversion::Between(const PictureSide& source, const PictureSide& target,
                                                        ScaleQuality quality) {
    PixelConversion conversion;
    if (quality == ScaleQuality::Lanczos || source.bottomUp || source.height != target.height ||
        !conversion.SetUp(source, target, quality))
        return std::nullopt;
    const auto width = static_cast<std::size_t>(source.width), wide = static_cast<std::size_t>(target.width);
    const std::size_t bytes = std::max(AVBased::kernels::ConversionScratchBytes(width),
                                       wide > width ? AVBased::kernels::WidenScratchBytes(width, wide) : 0);
    conversion.m_scratch.resize(bytes / sizeof(Line) + 1);
    return conversion;
}

bool PixelConversion::SetUp(const PictureSide& source, const PictureSide& target, ScaleQuality quality) {
    const std::span<const Planar> planar(kPlanar);
    const std::span<const Packed> packed(kPacked);
    const Packed *from = Find(packed, source.format, &Packed::format),
                 *to = Find(packed, target.format, &Packed::format);
    const Planar* planes = Find(planar, from ? target.format : source.format, &Planar::format);
    const PictureSide& yuv = from ? target : source;
    const Packed* pixels = from ? from : to;
    const bool knowsMatrix = Find(std::span<const Matrix>(kMatrices), yuv.matrix, &Matrix::name) != nullptr;
    if (!pixels || (planes && !knowsMatrix)) return false;
    m_order = {pixels->swapped, pixels->isShort};
    if (target.width != source.width) {
        if (target.width < source.width || target.format != AV_PIX_FMT_RGB24 ||
            (from ? from->isShort : !planes))
            return false;
        m_kind = from ? Kind::WidenPixels : Kind::WidenPlanes;
        SetColumns(source.width, target.width, quality);
        if (!from) SetRules(yuv, quality);
        return true;
    }
    if (from && to) {
        m_kind = Kind::AddAlpha;
        m_exchanged = from->swapped != to->swapped;
        return from->isShort && !to->isShort;
    }
    if (!planes) return false;
    m_kind = from ? Kind::ToPlanes : Kind::ToPixels;
    m_keepsAlpha = planes->alpha && pixels->alpha;
    SetRules(yuv, quality);
    return true;
}

void PixelConversion::SetRules(const PictureSide& yuv, ScaleQuality quality) {
    const Matrix& matrix = *Find(std::span<const Matrix>(kMatrices), yuv.matrix, &Matrix::name);
    const AVPixFmtDescriptor* descriptor = av_pix_fmt_desc_get(yuv.format);
    m_halvedColumns = descriptor->log2_chroma_w == 1;
    m_halvedRows = descriptor->log2_chroma_h == 1;
    const double across = AcrossOf(yuv.chroma), down = DownOf(yuv.chroma);
    SetColours(m_pixelRule, matrix, RangeOf(yuv.range));
    SetPhases(m_pixelRule.columns, across, quality);
    SetPhases(m_pixelRule.rows, down, quality);
    SetColours(m_planeRule, matrix, RangeOf(yuv.range));
    SetPairs(m_planeRule.columns, across, quality);
    SetPairs(m_planeRule.rows, down, quality);
}

// Behind the last column the tables repeat it.
void PixelConversion::SetColumns(int width, int wide, ScaleQuality quality) {
    constexpr int kUnit = 64, kOne = 32768;
    const int padded = (wide + kUnit - 1) / kUnit * kUnit;
    const auto count = static_cast<std::size_t>(padded);
    m_first.resize(count);
    for (auto& taps : m_taps) taps.resize(count);
    for (std::size_t x = 0; x < count; ++x) {
        const double column = std::min(static_cast<int>(x), wide - 1) + 0.5;
        const double at = column * width / wide - 0.5;
        m_first[x] = static_cast<std::int32_t>(std::floor(at)) - 1;
        double weights[4];
        std::int16_t taps[4];
        for (int k = 0; k < 4; ++k) weights[k] = WeightAt(at - (m_first[x] + k), quality);
        SetTaps(taps, weights, kOne - 1); // the most that a tap can be
        for (std::size_t k = 0; k < 4; ++k) m_taps[k][x] = taps[k];
    }
}

void PixelConversion::Run(const AVFrame& source, AVFrame& target) {
    using namespace AVBased;
    const auto& kernels = Kernels<kernels::ConversionKernels>();
    const auto& wideners = Kernels<kernels::WidenKernels>();
    const kernels::Widening widening = {
        static_cast<std::size_t>(target.width),
        m_first.data(),
        {m_taps[0].data(), m_taps[1].data(), m_taps[2].data(), m_taps[3].data()}};
    std::uint8_t* const scratch = m_scratch.front().bytes;
    switch (m_kind) {
    case Kind::ToPixels:
        kernels.toPixels(PixelsOf(target), PlanesOf(source), m_pixelRule, m_order, scratch);
        break;
    case Kind::ToPlanes:
        kernels.toPlanes(PlanesOf(target), PixelsOf(source), m_planeRule, m_order, scratch);
        if (!m_keepsAlpha && target.data[3]) MakeOpaque(PlaneOf(target, 3));
        break;
    case Kind::WidenPixels:
        wideners.widenPixels(BytesOf(target), PixelsOf(source), widening, m_order.swapped, scratch);
        break;
    case Kind::WidenPlanes:
        wideners.widenPlanes(BytesOf(target), PlanesOf(source), m_pixelRule, widening, scratch);
        break;
    case Kind::AddAlpha:
        kernels.addAlpha(PixelsOf(target), PixelsOf(source), m_exchanged);
        break;
    }
}

YuvaPlanes PixelConversion::PlanesOf(const AVFrame& picture) const {
    return {PlaneOf(picture, 0), PlaneOf(picture, 1),
            PlaneOf(picture, 2), m_keepsAlpha ? PlaneOf(picture, 3) : Plane8{},
            m_halvedColumns,     m_halvedRows};
}

} // namespace mediabridge
