#include "host/output/output_format.h"

#include <algorithm>
#include <string>

extern "C" {
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}

#include "host/picture/bit_depth.h"
#include "host/picture/light_metadata.h"
#include "host/picture/working_format.h"
#include "host/support/error.h"
#include "mediabridge/pixel_formats.h"

namespace aveffect {
namespace {

using mediabridge::HasColourRange;
using mediabridge::UsualRange;
using mediabridge::WithoutRange;

AVColorRange RangeOf(AVPixelFormat format, AVColorRange said) {
    if (WithoutRange(format) != format) return AVCOL_RANGE_JPEG;
    return said == AVCOL_RANGE_UNSPECIFIED ? UsualRange(format) : said;
}

bool IsJpeg(AVCodecID id) {
    return id == AV_CODEC_ID_MJPEG || id == AV_CODEC_ID_LJPEG || id == AV_CODEC_ID_AMV;
}

bool CodecSaysRange(AVCodecID id) {
    return IsJpeg(id) || id == AV_CODEC_ID_H264 || id == AV_CODEC_ID_HEVC || id == AV_CODEC_ID_AV1 ||
           id == AV_CODEC_ID_VP9;
}

// What is made to be watched, mostly by decoders that know one format. libx264rgb, for one, is not meant: it
// does not list that format.
bool IsForPlayers(const AVCodec& codec) {
    switch (codec.id) {
    case AV_CODEC_ID_H264:
    case AV_CODEC_ID_HEVC:
    case AV_CODEC_ID_VP8:
    case AV_CODEC_ID_VP9:
    case AV_CODEC_ID_AV1:
        return TakesFormat(codec, AV_PIX_FMT_YUV420P);
    default:
        return false;
    }
}

AVPixelFormat PlayersFormat(const OutputPlan& plan, AVPixelFormat wanted, const AVFrame& picture) {
    const AVCodec& codec = *plan.encoder.codec;
    if (HasAlpha(wanted) && wanted != AV_PIX_FMT_PAL8 && plan.CarriesAlphaLayer() &&
        TakesFormat(codec, AV_PIX_FMT_YUVA420P))
        return AV_PIX_FMT_YUVA420P;
    if (IsHighDynamicRange(picture) && BitDepth(wanted) > 8 && codec.id != AV_CODEC_ID_H264 &&
        TakesFormat(codec, AV_PIX_FMT_YUV420P10))
        return AV_PIX_FMT_YUV420P10;
    return AV_PIX_FMT_YUV420P;
}

// Codecs that lose something and have no words for RGB are better at the usual format than at the one nearest
// to it; those that code each picture for itself are for further work.
bool WantsUsualYuv(const AVCodec& codec, AVPixelFormat wanted) {
    if (HasColourRange(wanted)) return false;
    const AVCodecDescriptor* descriptor = avcodec_descriptor_get(codec.id);
    constexpr int kKinds = AV_CODEC_PROP_LOSSY | AV_CODEC_PROP_LOSSLESS | AV_CODEC_PROP_INTRA_ONLY;
    return descriptor && (descriptor->props & kKinds) == AV_CODEC_PROP_LOSSY;
}

AVColorRange TargetRange(const OutputPlan& plan, AVPixelFormat target, const ClipKind& clip,
                         const AVFrame& picture) {
    if (!HasColourRange(target)) return AVCOL_RANGE_UNSPECIFIED;
    const AVCodecID codec = plan.encoder.codec->id;
    if (IsJpeg(codec)) return AVCOL_RANGE_JPEG;
    if (plan.IsStill()) return UsualRange(WithoutRange(target));
    if (plan.encoder.format == target && WithoutRange(target) != target) return AVCOL_RANGE_JPEG;
    if (IsForPlayers(*plan.encoder.codec)) return AVCOL_RANGE_MPEG;
    const auto format = static_cast<AVPixelFormat>(picture.format);
    const AVColorRange range = HasColourRange(format)        ? RangeOf(format, picture.color_range)
                               : HasColourRange(clip.format) ? RangeOf(clip.format, clip.range)
                                                             : AVCOL_RANGE_MPEG;
    if (range == AVCOL_RANGE_JPEG && !CodecSaysRange(codec) && !plan.CarriesRange())
        return UsualRange(WithoutRange(target));
    return range;
}

// Viewers of these read YCbCr as they like, but agree on RGB.
bool PrefersRgb(const OutputPlan& plan, const AVFrame& picture) {
    const AVCodecID id = plan.encoder.codec->id;
    if (id == AV_CODEC_ID_TIFF) return true;
    const bool said601 = picture.colorspace == AVCOL_SPC_UNSPECIFIED ||
                         picture.colorspace == AVCOL_SPC_BT470BG || picture.colorspace == AVCOL_SPC_SMPTE170M;
    return id == AV_CODEC_ID_WEBP && plan.IsStill() && !said601;
}

// Formats that an encoder lists; those that need hardware or that libswscale can't make are of no use.
AVPixelFormat NearestOf(const AVPixelFormat* list, AVPixelFormat wanted) {
    AVPixelFormat best = AV_PIX_FMT_NONE;
    for (const AVPixelFormat* candidate = list; *candidate != AV_PIX_FMT_NONE; ++candidate) {
        if (SameLayout(*candidate, wanted)) return *candidate;
        if (!sws_isSupportedOutput(*candidate)) continue;
        best = best == AV_PIX_FMT_NONE
                   ? *candidate
                   : av_find_best_pix_fmt_of_2(best, *candidate, wanted, HasAlpha(wanted) ? 1 : 0, nullptr);
    }
    return best;
}

AVPixelFormat NearestFormat(const OutputPlan& plan, AVPixelFormat wanted, const AVFrame& picture) {
    const AVCodec& codec = *plan.encoder.codec;
    if (HasColourRange(wanted) && av_pix_fmt_desc_get(wanted)->nb_components > 2 && PrefersRgb(plan, picture))
        wanted = HasAlpha(wanted) ? AV_PIX_FMT_RGBA : AV_PIX_FMT_RGB24;
    // Of few colours that are always the same, or of those that each picture needs.
    if (codec.id == AV_CODEC_ID_GIF && !TakesFormat(codec, wanted)) return AV_PIX_FMT_PAL8;
    if (!plan.IsStill() && WantsUsualYuv(codec, wanted)) wanted = AV_PIX_FMT_YUV420P;
    return codec.pix_fmts ? NearestOf(codec.pix_fmts, wanted) : wanted;
}

// Between a J format and its plain twin, takes the one that says the range, if the encoder knows both.
AVPixelFormat TwinForRange(const AVPixelFormat* list, AVPixelFormat format, AVColorRange range) {
    const bool wantsJ = range == AVCOL_RANGE_JPEG;
    for (const AVPixelFormat* candidate = list; *candidate != AV_PIX_FMT_NONE; ++candidate)
        if (SameLayout(*candidate, format) && (WithoutRange(*candidate) != *candidate) == wantsJ)
            return *candidate;
    return format;
}

} // namespace

bool TakesFormat(const AVCodec& codec, AVPixelFormat format) {
    for (const AVPixelFormat* known = codec.pix_fmts; known && *known != AV_PIX_FMT_NONE; ++known)
        if (*known == format) return true;
    return !codec.pix_fmts;
}

std::string FormatsOf(const AVCodec& codec) {
    std::string names;
    for (const AVPixelFormat* known = codec.pix_fmts; known && *known != AV_PIX_FMT_NONE; ++known)
        if (sws_isSupportedOutput(*known)) names += (names.empty() ? "" : ", ") + FormatName(*known);
    return names;
}

bool EncoderFormat::Converts(const AVFrame& picture) const {
    const auto own = static_cast<AVPixelFormat>(picture.format);
    if (!SameLayout(own, format)) return true;
    return range != AVCOL_RANGE_UNSPECIFIED && HasColourRange(own) &&
           range != RangeOf(own, picture.color_range);
}

EncoderFormat ChooseEncoderFormat(const OutputPlan& plan, AVPixelFormat wanted, const ClipKind& clip,
                                  const AVFrame& picture) {
    const AVCodec& codec = *plan.encoder.codec;
    EncoderFormat chosen;
    if (plan.encoder.format != AV_PIX_FMT_NONE)
        chosen.format = plan.encoder.format;
    else if (!plan.IsStill() && IsForPlayers(codec))
        chosen.format = PlayersFormat(plan, wanted, picture);
    else
        chosen.format = NearestFormat(plan, wanted, picture);
    if (chosen.format == AV_PIX_FMT_NONE)
        throw Error(ErrorKind::Usage,
                    std::string("the encoder ") + codec.name + " takes no pictures in memory");
    chosen.range = TargetRange(plan, chosen.format, clip, picture);
    if (codec.pix_fmts && plan.encoder.format == AV_PIX_FMT_NONE)
        chosen.format = TwinForRange(codec.pix_fmts, chosen.format, chosen.range);
    return chosen;
}

} // namespace aveffect
