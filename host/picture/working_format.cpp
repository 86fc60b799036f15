#include "host/picture/working_format.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include "aveffect/pixel_format.h"
#include "host/support/error.h"
#include "mediabridge/pixel_formats.h"

namespace aveffect {
namespace {

using AVBased::kEffectFormats;

struct Kind {
    bool rgb, alpha, grey;
    int depth, chromaWidth, chromaHeight; ///< bits; chroma shifts
};

Kind KindOf(AVPixelFormat format) {
    const AVPixFmtDescriptor* descriptor = av_pix_fmt_desc_get(format);
    if (!descriptor) return {true, false, false, 8, 0, 0};
    const bool rgb = (descriptor->flags & (AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_PAL)) != 0 ||
                     format == AV_PIX_FMT_XYZ12LE || format == AV_PIX_FMT_XYZ12BE ||
                     (descriptor->flags & AV_PIX_FMT_FLAG_BITSTREAM) != 0;
    const bool alpha = (descriptor->flags & AV_PIX_FMT_FLAG_ALPHA) != 0;
    return {rgb,
            alpha,
            !rgb && descriptor->nb_components - (alpha ? 1 : 0) == 1,
            descriptor->comp[0].depth,
            descriptor->log2_chroma_w,
            descriptor->log2_chroma_h};
}

// The full-range id only where the range is said: pictures that say nothing count as limited.
unsigned ServedYuv(const Kind& kind, bool full) {
    if (kind.grey) return full ? AVBased::YUVJ420P : AVBased::YUV420P;
    if (kind.alpha)
        return kind.chromaWidth == 1 && kind.chromaHeight == 1 ? AVBased::YUVA420P : AVBased::YUVA444P;
    if (kind.chromaWidth == 1 && kind.chromaHeight == 1) return full ? AVBased::YUVJ420P : AVBased::YUV420P;
    if (kind.chromaWidth == 1 && kind.chromaHeight == 0) return full ? AVBased::YUVJ422P : AVBased::YUV422P;
    if (kind.chromaWidth == 2 && kind.chromaHeight == 0) return AVBased::YUV411P;
    if (kind.chromaWidth == 2 && kind.chromaHeight == 2) return AVBased::YUV410P;
    return AVBased::BGRA;
}

WorkingFormat Served(unsigned id, AVColorRange range) { return {id, mediabridge::LibraryFormat(id), range}; }

// Their own when it is served.
WorkingFormat NearestServed(AVPixelFormat format, AVColorRange range) {
    if (const auto own = mediabridge::FrameFormat(format, range); own && AVBased::IsEffectFormat(*own))
        return {*own, format, AVCOL_RANGE_UNSPECIFIED};
    const Kind kind = KindOf(format);
    if (kind.rgb || (kind.grey && kind.alpha)) return Served(AVBased::BGRA, AVCOL_RANGE_UNSPECIFIED);
    // Grey without a word about range uses all of it, as pictures in files do.
    const bool full = kind.grey ? range != AVCOL_RANGE_MPEG
                                : range == AVCOL_RANGE_JPEG || mediabridge::WithoutRange(format) != format;
    const unsigned id = ServedYuv(kind, full);
    if (id == AVBased::BGRA) return Served(id, AVCOL_RANGE_UNSPECIFIED);
    return Served(id, full ? AVCOL_RANGE_JPEG : AVCOL_RANGE_MPEG);
}

// The served format with alpha that keeps every chroma sample.
WorkingFormat WithAlpha(const WorkingFormat& format, AVColorRange pictures) {
    if (HasAlpha(format.format)) return format;
    const bool quarter = format.id == AVBased::YUV420P || format.id == AVBased::YUVJ420P;
    const bool full =
        AVBased::IsFullRange(format.id) || format.range == AVCOL_RANGE_JPEG || pictures == AVCOL_RANGE_JPEG;
    return Served(quarter ? AVBased::YUVA420P : AVBased::YUVA444P,
                  full ? AVCOL_RANGE_JPEG : AVCOL_RANGE_MPEG);
}

WorkingFormat OfFew(const WorkingFormat& format, bool needsAlpha) {
    if (format.id == AVBased::YUV420P && !needsAlpha) return format;
    if (format.id == AVBased::YUVJ420P && !needsAlpha) return Served(AVBased::YUV420P, AVCOL_RANGE_MPEG);
    return Served(AVBased::BGRA, AVCOL_RANGE_UNSPECIFIED);
}

} // namespace

void CheckPixelFormatName(const std::string& wanted) {
    if (wanted == "auto") return;
    if (const auto id = mediabridge::FrameFormatByName(wanted); id && AVBased::IsEffectFormat(*id)) return;
    std::string names = "auto";
    for (const unsigned served : kEffectFormats) names += ", " + mediabridge::FrameFormatName(served);
    throw Error(ErrorKind::Usage,
                "pixel format \"" + wanted + "\" is not one that effects work in: " + names);
}

WorkingFormat ChooseWorkingFormat(const std::string& wanted, const AVFrame& picture, FormatNeeds needs) {
    const auto own = static_cast<AVPixelFormat>(picture.format);
    if (wanted == "auto") {
        if (needs.rgb) return Served(AVBased::BGRA, AVCOL_RANGE_UNSPECIFIED);
        const WorkingFormat nearest = NearestServed(own, picture.color_range);
        if (needs.fewFormats) return OfFew(nearest, needs.alpha);
        return needs.alpha ? WithAlpha(nearest, picture.color_range) : nearest;
    }
    CheckPixelFormatName(wanted);
    const unsigned id = *mediabridge::FrameFormatByName(wanted);
    if (needs.rgb && id != AVBased::BGRA) {
        const AVPixelFormat format = mediabridge::LibraryFormat(id);
        return {id, format, mediabridge::UsualRange(format), AVCOL_SPC_SMPTE170M};
    }
    if (mediabridge::FrameFormat(own, picture.color_range) == id) return {id, own, AVCOL_RANGE_UNSPECIFIED};
    const AVPixelFormat format = mediabridge::LibraryFormat(id);
    // The plain 4:2:0 and 4:2:2 ids mean limited range, since the full one has ids of its own.
    const bool limited = id == AVBased::YUV420P || id == AVBased::YUV422P;
    return {id, format, limited ? AVCOL_RANGE_MPEG : AVCOL_RANGE_UNSPECIFIED};
}

AVPixelFormat EightBitKind(AVPixelFormat format) {
    const Kind kind = KindOf(format);
    const AVPixFmtDescriptor* own = av_pix_fmt_desc_get(format);
    if (!own) return AV_PIX_FMT_BGRA;
    if (own->flags & AV_PIX_FMT_FLAG_PAL) return AV_PIX_FMT_BGRA; // its colours may be transparent
    if (kind.depth <= 8) return format;
    if (kind.rgb) return kind.alpha ? AV_PIX_FMT_RGBA : AV_PIX_FMT_RGB24;
    const AVPixFmtDescriptor* candidate = nullptr;
    while ((candidate = av_pix_fmt_desc_next(candidate))) {
        const AVPixelFormat found = av_pix_fmt_desc_get_id(candidate);
        const Kind other = KindOf(found);
        if (other.depth == 8 && other.rgb == kind.rgb && other.alpha == kind.alpha &&
            other.grey == kind.grey && other.chromaWidth == kind.chromaWidth &&
            other.chromaHeight == kind.chromaHeight && mediabridge::WithoutRange(found) == found &&
            (kind.grey || (candidate->flags & AV_PIX_FMT_FLAG_PLANAR)))
            return found;
    }
    return AV_PIX_FMT_BGRA;
}

bool SameLayout(AVPixelFormat a, AVPixelFormat b) {
    return mediabridge::WithoutRange(a) == mediabridge::WithoutRange(b);
}

mediabridge::AVFramePtr ConvertWith(mediabridge::Scaler& scaler, const AVFrame& picture) {
    mediabridge::AVFramePtr converted = scaler.Convert(&picture);
    if (!converted) throw Error(ErrorKind::Output, "a picture can't be converted: " + scaler.Error());
    return converted;
}

bool HasAlpha(AVPixelFormat format) { return KindOf(format).alpha; }

bool IsGrey(AVPixelFormat format) { return KindOf(format).grey; }

std::string FormatName(AVPixelFormat format) {
    const char* name = av_get_pix_fmt_name(format);
    return name ? name : "an unknown format";
}

} // namespace aveffect
