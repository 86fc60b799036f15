#include "host/encoder.h"

#include <algorithm>
#include <iterator>
#include <string_view>

extern "C" {
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}

#include "host/error.h"
#include "host/log_capture.h"
#include "host/working_format.h"
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

constexpr std::string_view kX26Presets[] = {"ultrafast", "superfast", "veryfast", "faster",   "fast",
                                            "medium",    "slow",      "slower",   "veryslow", "placebo"};

bool IsJpeg(AVCodecID id) {
    return id == AV_CODEC_ID_MJPEG || id == AV_CODEC_ID_LJPEG || id == AV_CODEC_ID_AMV;
}

bool CodecSaysRange(AVCodecID id) {
    return IsJpeg(id) || id == AV_CODEC_ID_H264 || id == AV_CODEC_ID_HEVC || id == AV_CODEC_ID_AV1 ||
           id == AV_CODEC_ID_VP9;
}

AVColorRange TargetRange(const OutputPlan& plan, AVPixelFormat target, const ClipKind& clip,
                         const AVFrame& picture) {
    if (!HasColourRange(target)) return AVCOL_RANGE_UNSPECIFIED;
    const AVCodecID codec = plan.encoder.codec->id;
    if (IsJpeg(codec)) return AVCOL_RANGE_JPEG;
    if (plan.IsStill()) return UsualRange(WithoutRange(target));
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

// Between a J format and its plain twin, takes the one that says the range, if the encoder knows both.
AVPixelFormat TwinForRange(const AVPixelFormat* list, AVPixelFormat format, AVColorRange range) {
    const bool wantsJ = range == AVCOL_RANGE_JPEG;
    for (const AVPixelFormat* candidate = list; *candidate != AV_PIX_FMT_NONE; ++candidate)
        if (SameLayout(*candidate, format) && (WithoutRange(*candidate) != *candidate) == wantsJ)
            return *candidate;
    return format;
}

// Encoders whose default is a bit rate of the 1990s get a constant, good quality instead.
int UsualQuantizer(AVCodecID id) {
    switch (id) {
    case AV_CODEC_ID_MPEG1VIDEO:
    case AV_CODEC_ID_MPEG2VIDEO:
    case AV_CODEC_ID_MPEG4:
    case AV_CODEC_ID_MSMPEG4V2:
    case AV_CODEC_ID_MSMPEG4V3:
    case AV_CODEC_ID_H263:
    case AV_CODEC_ID_H263P:
    case AV_CODEC_ID_FLV1:
    case AV_CODEC_ID_WMV1:
    case AV_CODEC_ID_WMV2:
        return 3;
    case AV_CODEC_ID_MJPEG:
        return 2;
    case AV_CODEC_ID_THEORA:
        return 8;
    default:
        return 0;
    }
}

void CheckSize(const AVCodec& codec, const AVFrame& sample) {
    if (codec.id != AV_CODEC_ID_H264 && codec.id != AV_CODEC_ID_HEVC) return;
    const AVPixFmtDescriptor* format = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(sample.format));
    const int columns = 1 << format->log2_chroma_w;
    const int rows = 1 << format->log2_chroma_h;
    if (sample.width % columns == 0 && sample.height % rows == 0) return;
    throw Error(ErrorKind::Usage,
                std::string(codec.name) + " can't hold pictures of " + std::to_string(sample.width) + "x" +
                    std::to_string(sample.height) + " in " + format->name +
                    ": an odd width or height does not fit its colour samples; the codec ffv1 (in "
                    ".mkv) takes any size, as do 4:4:4 clips");
}

} // namespace

bool EncoderFormat::Converts(const AVFrame& picture) const {
    const auto own = static_cast<AVPixelFormat>(picture.format);
    if (!SameLayout(own, format)) return true;
    return range != AVCOL_RANGE_UNSPECIFIED && HasColourRange(own) &&
           range != RangeOf(own, picture.color_range);
}

EncoderFormat ChooseEncoderFormat(const OutputPlan& plan, AVPixelFormat wanted, const ClipKind& clip,
                                  const AVFrame& picture) {
    const AVCodec& codec = *plan.encoder.codec;
    if (HasColourRange(wanted) && av_pix_fmt_desc_get(wanted)->nb_components > 2 && PrefersRgb(plan, picture))
        wanted = HasAlpha(wanted) ? AV_PIX_FMT_RGBA : AV_PIX_FMT_RGB24;
    EncoderFormat chosen;
    chosen.format = codec.pix_fmts ? NearestOf(codec.pix_fmts, wanted) : wanted;
    if (chosen.format == AV_PIX_FMT_NONE)
        throw Error(ErrorKind::Usage,
                    std::string("the encoder ") + codec.name + " takes no pictures in memory");
    chosen.range = TargetRange(plan, chosen.format, clip, picture);
    if (codec.pix_fmts) chosen.format = TwinForRange(codec.pix_fmts, chosen.format, chosen.range);
    chosen.losesAlpha = HasAlpha(clip.format) && clip.format != AV_PIX_FMT_PAL8 && !HasAlpha(chosen.format);
    return chosen;
}

Encoder::Encoder(const OutputPlan& plan, const AVFrame& sample, const Timing& timing)
    : m_codec(plan.encoder.codec)
    , m_context(avcodec_alloc_context3(plan.encoder.codec)) {
    CheckSize(*plan.encoder.codec, sample);
    if (!m_context) throw Error(ErrorKind::Output, "out of memory");
    m_context->width = sample.width;
    m_context->height = sample.height;
    m_context->pix_fmt = static_cast<AVPixelFormat>(sample.format);
    m_context->sample_aspect_ratio = sample.sample_aspect_ratio;
    m_context->color_range = sample.color_range;
    m_context->colorspace = sample.colorspace;
    m_context->color_primaries = sample.color_primaries;
    m_context->color_trc = sample.color_trc;
    m_context->chroma_sample_location = sample.chroma_location;
    m_context->time_base = timing.base;
    m_context->framerate = timing.rate;
    m_context->thread_count = static_cast<int>(std::min(plan.encoder.threads, 64u));
    if (plan.muxer && (plan.muxer->flags & AVFMT_GLOBALHEADER))
        m_context->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    SetInterlacing(sample, timing.fieldOrder);
    SetQuality(plan.encoder);
    TakeLibraryError();
    const int code = avcodec_open2(m_context.get(), plan.encoder.codec, nullptr);
    if (code < 0) Fail("can't start", code);
}

void Encoder::SetInterlacing(const AVFrame& sample, AVFieldOrder order) {
    if (!sample.interlaced_frame) {
        m_context->field_order = AV_FIELD_PROGRESSIVE;
        return;
    }
    const AVFieldOrder fromFrame = sample.top_field_first ? AV_FIELD_TT : AV_FIELD_BB;
    const bool said = order != AV_FIELD_UNKNOWN && order != AV_FIELD_PROGRESSIVE;
    m_context->field_order = said ? order : fromFrame;
    const AVCodecID id = m_codec->id;
    if (id == AV_CODEC_ID_H264 || id == AV_CODEC_ID_MPEG2VIDEO || id == AV_CODEC_ID_MPEG4)
        m_context->flags |= AV_CODEC_FLAG_INTERLACED_DCT;
}

void Encoder::SetQuality(const EncoderChoice& choice) {
    // x264 prints a complaint of its own about a preset that it does not know.
    const bool x26 = std::string_view(m_codec->name).starts_with("libx26");
    const bool known = !x26 || std::ranges::find(kX26Presets, choice.preset) != std::end(kX26Presets);
    if (!choice.preset.empty() &&
        (!known || av_opt_set(m_context->priv_data, "preset", choice.preset.c_str(), 0) < 0))
        throw Error(ErrorKind::Usage, std::string("the encoder ") + choice.codec->name + " has no preset \"" +
                                          choice.preset + "\"");
    // x265 prints on its own unless told not to.
    av_opt_set(m_context->priv_data, "x265-params", "log-level=none", 0);
    if (choice.crf) {
        m_context->bit_rate = 0; // libvpx keeps to a bit rate otherwise
        const int code = av_opt_set_double(m_context->priv_data, "crf", *choice.crf, 0);
        if (code < 0) Fail("does not take this crf", code);
    } else if (const int quantizer = UsualQuantizer(choice.codec->id)) {
        m_context->flags |= AV_CODEC_FLAG_QSCALE;
        m_context->global_quality = FF_QP2LAMBDA * quantizer;
    }
}

void Encoder::Fail(const std::string& doing, int code) const {
    const std::string detail = TakeLibraryError();
    throw Error(code == AVERROR(ENOMEM) ? ErrorKind::Output : ErrorKind::Usage,
                std::string("the encoder ") + m_codec->name + " " + doing + ": " +
                    (detail.empty() ? AvText(code) : detail));
}

void Encoder::Send(AVFrame* picture) {
    if (picture) {
        // What the decoder said about its own coding would force the encoder's hand.
        picture->pict_type = AV_PICTURE_TYPE_NONE;
        picture->key_frame = 0;
        picture->quality = m_context->global_quality;
    }
    const int code = avcodec_send_frame(m_context.get(), picture);
    if (code < 0 && code != AVERROR_EOF) Fail("failed", code);
}

bool Encoder::Receive(AVPacket* packet) {
    const int code = avcodec_receive_packet(m_context.get(), packet);
    if (code == AVERROR(EAGAIN) || code == AVERROR_EOF) return false;
    if (code < 0) Fail("failed", code);
    return true;
}

} // namespace aveffect
