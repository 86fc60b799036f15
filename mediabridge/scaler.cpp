#include "mediabridge/scaler.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <new>
#include <utility>

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
}

#include "mediabridge/picture_pool.h"
#include "mediabridge/pixel_formats.h"

namespace mediabridge {
namespace {

constexpr int kUnity = 1 << 16; ///< libswscale's contrast and saturation of 1

/// libswscale takes chroma at every pixel for these alone, and complains about the others.
bool TakesChromaAtEveryPixel(AVPixelFormat target) {
    const AVPixFmtDescriptor* descriptor = av_pix_fmt_desc_get(target);
    return (descriptor->flags & AV_PIX_FMT_FLAG_RGB) && descriptor->comp[0].depth >= 8;
}

/// Whether libswscale takes a format for RGB, as it does bitmaps and XYZ.
bool CountsAsRgb(AVPixelFormat format) {
    return (av_pix_fmt_desc_get(format)->flags & AV_PIX_FMT_FLAG_RGB) || format == AV_PIX_FMT_MONOBLACK ||
           format == AV_PIX_FMT_MONOWHITE || format == AV_PIX_FMT_XYZ12LE;
}

/// Bicubic needs four rows and columns of every plane around a sample; on planes with less than six,
/// libswscale drops some of its taps.
bool IsTooSmallForBicubic(AVPixelFormat format, int width, int height) {
    constexpr int kLeast = 6;
    const AVPixFmtDescriptor* descriptor = av_pix_fmt_desc_get(format);
    return AV_CEIL_RSHIFT(width, descriptor->log2_chroma_w) < kLeast ||
           AV_CEIL_RSHIFT(height, descriptor->log2_chroma_h) < kLeast;
}

/// From pairs of pixels, libswscale would take the chroma of an odd row's last pixel together with whatever
/// lies behind it.
bool NeedsChromaOfEveryPixel(AVPixelFormat source, int width) {
    return width % 2 != 0 && CountsAsRgb(source);
}

/// The fastest way divides by the target's columns less two. Where these are those of the picture, libswscale
/// knows; it does not for chroma.
bool IsTooSmallForFastest(AVPixelFormat target, int width) {
    return AV_CEIL_RSHIFT(width, av_pix_fmt_desc_get(target)->log2_chroma_w) <= 2;
}

/// Between pictures of one size, the fastest way from these to RGB complains where it has no instructions of
/// the processor's for the target, and leaves out the last columns of a row of bytes in threes that has no
/// room for eight pixels more. Which targets other processors have instructions for was not looked into.
bool FailsOnFastestWay(AVPixelFormat source, AVPixelFormat target, [[maybe_unused]] int width) {
    const bool has =
        source == AV_PIX_FMT_YUV420P || source == AV_PIX_FMT_YUV422P || source == AV_PIX_FMT_YUVA420P;
    if (!has || !CountsAsRgb(target)) return false;
#ifdef __x86_64__
    constexpr AVPixelFormat kThere[] = {AV_PIX_FMT_BGRA, AV_PIX_FMT_RGBA,     AV_PIX_FMT_BGR0,
                                        AV_PIX_FMT_RGB0, AV_PIX_FMT_RGB565LE, AV_PIX_FMT_RGB555LE};
    constexpr int kColumns = 8;
    if (target == AV_PIX_FMT_BGR24 || target == AV_PIX_FMT_RGB24) return width % kColumns != 0;
    return std::ranges::find(kThere, target) == std::end(kThere);
#else
    return true;
#endif
}

/// libswscale complains of rows with an odd number of these pixels.
bool WantsEvenRows(AVPixelFormat target) {
    return CountsAsRgb(target) && av_pix_fmt_desc_get(target)->comp[0].depth < 8;
}

std::string Describe(AVPixelFormat format, int width, int height) {
    const char* name = av_get_pix_fmt_name(format);
    return std::string(name ? name : "unknown format") + " " + std::to_string(width) + "x" +
           std::to_string(height);
}

/// Whether a picture is copied: however its rows are stored, in order.
bool SamePicture(PictureSide source, const PictureSide& target) {
    source.bottomUp = target.bottomUp;
    return source == target;
}

AVColorSpace OneName(AVColorSpace matrix) {
    return Is601(matrix) || matrix == AVCOL_SPC_RGB ? AVCOL_SPC_SMPTE170M : matrix;
}

/// Of YUV with fewer chroma samples than luma's, at whose corners or middle it lies.
AVChromaLocation ChromaLocation(AVPixelFormat format, AVChromaLocation said) {
    const AVPixFmtDescriptor* descriptor = av_pix_fmt_desc_get(format);
    if (CountsAsRgb(format) || descriptor->log2_chroma_w + descriptor->log2_chroma_h == 0)
        return AVCHROMA_LOC_UNSPECIFIED;
    return said == AVCHROMA_LOC_UNSPECIFIED ? AVCHROMA_LOC_LEFT : said;
}

/// libswscale's chroma positions, in 256ths of a luma sample. Its own choice is the middle.
struct ChromaPosition {
    int across = kMiddle, down = kMiddle;
    static constexpr int kMiddle = -513;
};
ChromaPosition PositionOf(const PictureSide& side) {
    ChromaPosition position;
    const AVPixFmtDescriptor* descriptor = av_pix_fmt_desc_get(side.format);
    const AVChromaLocation at = side.chroma;
    const bool left = at == AVCHROMA_LOC_LEFT || at == AVCHROMA_LOC_TOPLEFT || at == AVCHROMA_LOC_BOTTOMLEFT;
    if (left && descriptor->log2_chroma_w > 0) position.across = 0;
    if (descriptor->log2_chroma_h != 1) return position;
    if (at == AVCHROMA_LOC_TOPLEFT || at == AVCHROMA_LOC_TOP) position.down = 0;
    if (at == AVCHROMA_LOC_BOTTOMLEFT || at == AVCHROMA_LOC_BOTTOM) position.down = 256;
    return position;
}

/// Whether a function did what it was asked. Throws std::bad_alloc where memory was short.
bool Took(int code) {
    if (code == AVERROR(ENOMEM)) throw std::bad_alloc();
    return code >= 0;
}

/// The display aspect ratio stays, so the pixels' changes with the size.
AVRational ScaledPixelAspect(const AVFrame* source, int width, int height) {
    const AVRational pixel = source->sample_aspect_ratio;
    if (pixel.num <= 0 || pixel.den <= 0 || (width == source->width && height == source->height))
        return pixel;
    const AVRational horizontal = av_make_q(source->width, width);
    const AVRational vertical = av_make_q(height, source->height);
    return av_mul_q(pixel, av_mul_q(horizontal, vertical));
}

} // namespace

Scaler::Scaler(AVPixelFormat format, int width, int height, ScaleQuality quality, AVColorRange range,
               AVColorSpace matrix)
    : m_format(format)
    , m_width(width)
    , m_height(height)
    , m_quality(quality)
    , m_range(range)
    , m_matrix(matrix) {}

AVColorRange Scaler::TargetRange(const PictureSide& source) const {
    if (!HasColourRange(m_format) || WithoutRange(m_format) != m_format) return AVCOL_RANGE_JPEG;
    if (m_range != AVCOL_RANGE_UNSPECIFIED) return m_range;
    return HasColourRange(source.format) ? source.range : UsualRange(m_format);
}

Scaler::Shape Scaler::ShapeFor(const AVFrame* source) const {
    Shape shape;
    const auto format = static_cast<AVPixelFormat>(source->format);
    const bool saysRange = HasColourRange(format) && WithoutRange(format) == format &&
                           source->color_range != AVCOL_RANGE_UNSPECIFIED;
    shape.source = {WithoutRange(format),
                    source->width,
                    source->height,
                    saysRange ? source->color_range : UsualRange(format),
                    OneName(source->colorspace),
                    ChromaLocation(format, source->chroma_location),
                    source->linesize[0] < 0};
    const bool keeps = m_matrix == AVCOL_SPC_UNSPECIFIED || !HasColourRange(m_format);
    shape.target = {WithoutRange(m_format),
                    m_width ? m_width : source->width,
                    m_height ? m_height : source->height,
                    TargetRange(shape.source),
                    keeps ? shape.source.matrix : OneName(m_matrix),
                    ChromaLocation(m_format, source->chroma_location)};
    return shape;
}

bool Is601(AVColorSpace matrix) {
    return matrix == AVCOL_SPC_UNSPECIFIED || matrix == AVCOL_SPC_BT470BG || matrix == AVCOL_SPC_SMPTE170M;
}

// The fastest way may be off by two; the others round as they should.
int Scaler::FlagsFor(const Shape& shape) const {
    const auto& [source, target] = shape;
    const int chroma = NeedsChromaOfEveryPixel(source.format, source.width) ? SWS_FULL_CHR_H_INP : 0;
    if (m_quality == ScaleQuality::Fastest && !FailsOnFastestWay(source.format, target.format, target.width))
        return (IsTooSmallForFastest(target.format, target.width) ? SWS_BILINEAR : SWS_FAST_BILINEAR) |
               chroma;
    const bool large = !IsTooSmallForBicubic(source.format, source.width, source.height);
    const int smooth = m_quality == ScaleQuality::Lanczos && large   ? SWS_LANCZOS
                       : m_quality == ScaleQuality::Bicubic && large ? SWS_BICUBIC
                                                                     : SWS_BILINEAR;
    return smooth | SWS_ACCURATE_RND | chroma |
           (TakesChromaAtEveryPixel(target.format) ? SWS_FULL_CHR_H_INT : 0);
}

AVFramePtr Scaler::Fail(const std::string& reason) {
    m_error = reason;
    return nullptr;
}

bool Scaler::Prepare(const Shape& shape) {
    if ((m_context || m_conversion) && shape == m_shape) return true;
    m_context.reset();
    m_conversion = PixelConversion::Between(shape.source, shape.target, m_quality);
    if (!m_conversion && !PrepareContext(shape)) return false;
    m_shape = shape;
    return true;
}

bool Scaler::ReadsPixelsAlone(const AVFrame* source) const {
    const Shape shape = ShapeFor(source);
    if (m_conversion && shape == m_shape) return true;
    return SamePicture(shape.source, shape.target) ||
           PixelConversion::Between(shape.source, shape.target, m_quality).has_value();
}

bool Scaler::PrepareContext(const Shape& shape) {
    if (shape.source.format == AV_PIX_FMT_NONE || !sws_isSupportedInput(shape.source.format) ||
        !sws_isSupportedOutput(shape.target.format))
        return false;
    SwsContextPtr context(sws_alloc_context());
    if (!context) throw std::bad_alloc();
    const ChromaPosition from = PositionOf(shape.source), to = PositionOf(shape.target);
    const std::pair<const char*, int> options[] = {
        {"srcw", shape.source.width},        {"srch", shape.source.height},
        {"src_format", shape.source.format}, {"src_range", shape.source.range == AVCOL_RANGE_JPEG},
        {"dstw", shape.target.width},        {"dsth", shape.target.height},
        {"dst_format", shape.target.format}, {"dst_range", shape.target.range == AVCOL_RANGE_JPEG},
        {"src_h_chr_pos", from.across},      {"src_v_chr_pos", from.down},
        {"dst_h_chr_pos", to.across},        {"dst_v_chr_pos", to.down},
        {"sws_flags", FlagsFor(shape)},
    };
    for (const auto& [name, value] : options)
        if (!Took(av_opt_set_int(context.get(), name, value, 0))) return false;
    if (!Took(av_opt_set(context.get(), "sws_dither", "bayer", 0))) return false;
    if (!Took(sws_init_context(context.get(), nullptr, nullptr))) return false;
    // After the start, which takes grey for full range whatever was asked.
    if (!Took(sws_setColorspaceDetails(context.get(), sws_getCoefficients(shape.source.matrix),
                                       shape.source.range == AVCOL_RANGE_JPEG,
                                       sws_getCoefficients(shape.target.matrix),
                                       shape.target.range == AVCOL_RANGE_JPEG, 0, kUnity, kUnity)))
        return false;
    m_context = std::move(context);
    return true;
}

// By way of pixels that are whole, the last of each row once more.
AVFramePtr Scaler::ConvertToEvenRows(const AVFrame* source) {
    constexpr int kPixel = 4;
    if (!m_toPixels) {
        m_toPixels =
            std::make_unique<Scaler>(AV_PIX_FMT_BGRA, m_width, m_height, m_quality, m_range, m_matrix);
        m_toRows = std::make_unique<Scaler>(m_format, 0, 0, m_quality, m_range, m_matrix);
    }
    const AVFramePtr pixels = m_toPixels->Convert(source);
    if (!pixels) return Fail(m_toPixels->Error());
    const int width = pixels->width;
    const AVFramePtr wider = AllocatePicture(AV_PIX_FMT_BGRA, width + 1, pixels->height);
    if (!wider || av_frame_copy_props(wider.get(), pixels.get()) < 0) throw std::bad_alloc();
    for (int y = 0; y < pixels->height; ++y) {
        const std::uint8_t* const from = pixels->data[0] + std::ptrdiff_t{y} * pixels->linesize[0];
        std::uint8_t* const to = wider->data[0] + std::ptrdiff_t{y} * wider->linesize[0];
        std::copy_n(from, width * kPixel, to);
        std::copy_n(from + (width - 1) * kPixel, kPixel, to + width * kPixel);
    }
    AVFramePtr result = m_toRows->Convert(wider.get());
    if (!result) return Fail(m_toRows->Error());
    result->width = width;
    ClearBehindRows(result.get());
    return result;
}

AVFramePtr Scaler::Convert(const AVFrame* source) {
    m_error.clear();
    const Shape shape = ShapeFor(source);
    const int width = shape.target.width;
    const int height = shape.target.height;
    if (width % 2 != 0 && WantsEvenRows(m_format) && !SamePicture(shape.source, shape.target))
        return ConvertToEvenRows(source);
    AVFramePtr result = AllocatePicture(m_format, width, height);
    if (!result) throw std::bad_alloc();
    if (av_frame_copy_props(result.get(), source) < 0) throw std::bad_alloc();
    result->sample_aspect_ratio = ScaledPixelAspect(source, width, height);
    result->color_range = shape.target.range;
    // "RGB" as a matrix would make encoders write the planes as G, B and R.
    if (HasColourRange(m_format) && source->colorspace == AVCOL_SPC_RGB)
        result->colorspace = AVCOL_SPC_SMPTE170M;
    if (m_matrix != AVCOL_SPC_UNSPECIFIED) result->colorspace = m_matrix;

    if (SamePicture(shape.source, shape.target)) {
        av_image_copy(result->data, result->linesize, const_cast<const std::uint8_t**>(source->data),
                      source->linesize, shape.source.format, width, height);
        return result;
    }
    if (!Prepare(shape))
        return Fail("can't convert " +
                    Describe(static_cast<AVPixelFormat>(source->format), source->width, source->height) +
                    " to " + Describe(m_format, width, height));
    if (m_conversion) {
        m_conversion->Run(*source, *result);
        return result;
    }
    if (!Took(sws_scale(m_context.get(), source->data, source->linesize, 0, source->height, result->data,
                        result->linesize)))
        return Fail("conversion to " + Describe(m_format, width, height) + " failed");
    ClearBehindRows(result.get());
    return result;
}

} // namespace mediabridge
