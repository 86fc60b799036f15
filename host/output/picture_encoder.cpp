#include "host/output/picture_encoder.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <tuple>

extern "C" {
#include <libavutil/opt.h>
}

#include "host/picture/light_metadata.h"
#include "host/support/error.h"
#include "host/support/log_capture.h"

namespace aveffect {
namespace {

constexpr std::string_view kX26Presets[] = {"ultrafast", "superfast", "veryfast", "faster",   "fast",
                                            "medium",    "slow",      "slower",   "veryslow", "placebo"};

bool IsInterlaced(AVFieldOrder order) { return order != AV_FIELD_UNKNOWN && order != AV_FIELD_PROGRESSIVE; }

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

} // namespace

PictureEncoder::PictureEncoder(const OutputPlan& plan, const AVFrame& sample, const Timing& timing)
    : Encoder(*plan.encoder.codec) {
    AVCodecContext& settings = Settings();
    settings.width = sample.width;
    settings.height = sample.height;
    settings.pix_fmt = static_cast<AVPixelFormat>(sample.format);
    settings.sample_aspect_ratio = sample.sample_aspect_ratio;
    settings.color_range = sample.color_range;
    settings.colorspace = sample.colorspace;
    settings.color_primaries = sample.color_primaries;
    settings.color_trc = sample.color_trc;
    settings.chroma_sample_location = sample.chroma_location;
    settings.time_base = timing.base;
    settings.framerate = timing.rate;
    settings.thread_count = static_cast<int>(std::min(plan.encoder.threads, 64u));
    SetInterlacing(sample, plan.encoder.fieldOrder);
    SetPrivate(sample);
    SetPreset(plan.encoder);
    SetQuality(plan.encoder);
    TakeLibraryError();
    RequireSize();
    const int code = Open(plan.muxer);
    if (code < 0) Fail("can't start", code);
    TellProfile();
}

// Of other sizes these are coded all the same, and can't be read.
void PictureEncoder::RequireSize() const {
    const auto isPower = [](int side) { return (side & (side - 1)) == 0; };
    if (Codec().id == AV_CODEC_ID_ROQ && !(isPower(Context().width) && isPower(Context().height)))
        Fail("can't start", AVERROR(EINVAL), "both sides must be powers of two, such as --size 256x128");
    if (Codec().id == AV_CODEC_ID_SPEEDHQ && Context().width % 16 != 0)
        Fail("can't start", AVERROR(EINVAL), "the width must be a multiple of 16, such as --size 640x360");
}

// prores_ks tells its profile by the tag alone; MXF wants the number.
void PictureEncoder::TellProfile() {
    constexpr std::string_view kTags[] = {"apco", "apcs", "apcn", "apch", "ap4h", "ap4x"}; // by profile
    if (Codec().id != AV_CODEC_ID_PRORES || Context().profile != FF_PROFILE_UNKNOWN) return;
    char tag[AV_FOURCC_MAX_STRING_SIZE];
    const auto* found =
        std::ranges::find(kTags, std::string_view(av_fourcc_make_string(tag, Context().codec_tag)));
    if (found != std::end(kTags)) Settings().profile = static_cast<int>(found - std::begin(kTags));
}

// libsvtav1's threads wait for a first picture: freed without one, it would wait for them for ever. Where no
// memory is left for that picture the encoder stays, for what remains of the process.
PictureEncoder::~PictureEncoder() {
    if (m_sent == 0 && std::string_view(Codec().name) == "libsvtav1" && !TakesBlank()) Abandon();
}

bool PictureEncoder::TakesBlank() {
    const mediabridge::AVFramePtr blank(av_frame_alloc());
    if (!blank) return false;
    blank->width = Context().width;
    blank->height = Context().height;
    blank->format = Context().pix_fmt;
    blank->pts = 0;
    return av_frame_get_buffer(blank.get(), 0) >= 0 && avcodec_send_frame(&Settings(), blank.get()) >= 0;
}

// Most codecs that know fields code all pictures of a stream with them or none. FFV1 tells it of each
// picture, from its third version on, whose slices do not suit the smallest pictures.
void PictureEncoder::SetInterlacing(const AVFrame& sample, AVFieldOrder order) {
    const AVCodecID id = Codec().id;
    constexpr int kSliced = 64; ///< columns and rows
    if (id == AV_CODEC_ID_FFV1 && sample.width >= kSliced && sample.height >= kSliced) Settings().level = 3;
    if (!IsInterlaced(order) && !sample.interlaced_frame) {
        Settings().field_order = AV_FIELD_PROGRESSIVE;
        return;
    }
    const AVFieldOrder fromFrame = sample.top_field_first ? AV_FIELD_TT : AV_FIELD_BB;
    Settings().field_order = IsInterlaced(order) ? order : fromFrame;
    if (id == AV_CODEC_ID_H264 || id == AV_CODEC_ID_MPEG2VIDEO || id == AV_CODEC_ID_MPEG4 ||
        id == AV_CODEC_ID_PRORES)
        Settings().flags |= AV_CODEC_FLAG_INTERLACED_DCT;
}

void PictureEncoder::SetPrivate(const AVFrame& sample) {
    const std::string light = LightSettings(Codec().name, sample);
    const auto set = [this](const char* name, const std::string& value) {
        RequireMemory(av_opt_set(Settings().priv_data, name, value.c_str(), 0), "out of memory");
    };
    set("x264-params", light);
    // x265 prints on its own unless told not to.
    const std::string quiet = "log-level=none" + (light.empty() ? "" : ":" + light);
    set("x265-params", quiet);
}

void PictureEncoder::SetPreset(const EncoderChoice& choice) {
    if (choice.preset.empty()) return;
    // x264 prints a complaint of its own about a preset that it does not know.
    const bool x26 = std::string_view(Codec().name).starts_with("libx26");
    const bool known = !x26 || std::ranges::find(kX26Presets, choice.preset) != std::end(kX26Presets);
    const int code = known ? av_opt_set(Settings().priv_data, "preset", choice.preset.c_str(), 0) : -1;
    RequireMemory(code, "out of memory");
    if (code < 0)
        throw Error(ErrorKind::Usage, std::string("the encoder ") + choice.codec->name + " has no preset \"" +
                                          choice.preset + "\"");
}

void PictureEncoder::SetQuality(const EncoderChoice& choice) {
    if (choice.crf) {
        Settings().bit_rate = 0; // libvpx keeps to a bit rate otherwise
        const int code = av_opt_set_double(Settings().priv_data, "crf", *choice.crf, 0);
        if (code < 0) Fail("does not take this crf", code);
    } else if (choice.quality) {
        ApplyQuality(Settings(), *choice.quality);
    } else if (choice.bitRate) {
        Settings().bit_rate = *choice.bitRate;
    } else if (const int quantizer = UsualQuantizer(choice.codec->id)) {
        Settings().flags |= AV_CODEC_FLAG_QSCALE;
        Settings().global_quality = FF_QP2LAMBDA * quantizer;
    }
    ApplySettings(Settings(), choice.settings);
}

AVFrame* PictureEncoder::Prepare(AVFrame* picture) {
    // What the decoder said about its own coding would force the encoder's hand.
    picture->pict_type = AV_PICTURE_TYPE_NONE;
    picture->key_frame = 0;
    picture->quality = Context().global_quality;
    // Among fields, a picture without them is shown in their order.
    const AVFieldOrder order = Context().field_order;
    if (!picture->interlaced_frame && IsInterlaced(order))
        picture->top_field_first = order == AV_FIELD_TT || order == AV_FIELD_BT;
    ++m_sent;
    return picture;
}

// libx265 learns its delay from pictures beyond it. Without any, its times of decoding are whatever memory
// held; so few pictures come in their order.
void PictureEncoder::Mend(AVPacket& packet) {
    constexpr int64_t kLongestDelay = 2;
    if (Codec().id == AV_CODEC_ID_HEVC && m_sent <= kLongestDelay) packet.dts = packet.pts;
}

std::pair<int, int> EncodableSize(const OutputPlan& plan, const AVFrame& sample) {
    const auto own = std::pair(sample.width, sample.height);
    const auto even = std::pair(sample.width + sample.width % 2, sample.height + sample.height % 2);
    // The fields of 4:2:0 pictures are even for themselves.
    const auto evenFields = std::pair(even.first, (sample.height + 3) / 4 * 4);
    const bool fields = sample.interlaced_frame || IsInterlaced(plan.encoder.fieldOrder);
    if (plan.IsStill() || own == (fields ? evenFields : even)) return own;
    const mediabridge::AVFramePtr trial(av_frame_clone(&sample));
    if (!trial) throw NoMemory("no memory for a picture");
    for (const auto& size : {own, even, evenFields}) {
        std::tie(trial->width, trial->height) = size;
        try {
            const PictureEncoder opens(plan, *trial, {{1, 25}, {25, 1}});
            return size;
        } catch (const Error&) {
            continue; // the next size; the last failure comes again, in the open that counts
        }
    }
    return own;
}

} // namespace aveffect
