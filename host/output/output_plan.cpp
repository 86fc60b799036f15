#include "host/output/output_plan.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <string_view>

extern "C" {
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}

#include "host/media/device.h"
#include "host/media/input.h"
#include "host/output/output_format.h"
#include "host/output/picture_formats.h"
#include "host/settings/value_text.h"
#include "host/support/error.h"
#include "host/support/log_capture.h"

namespace aveffect {
namespace {

bool IsOneOf(const AVOutputFormat* muxer, std::initializer_list<std::string_view> names) {
    return muxer && std::ranges::find(names, std::string_view(muxer->name)) != names.end();
}

struct StillFormat {
    std::string_view extension;
    AVCodecID codec;
    const char* encoder; ///< by name where the codec's first encoder is another one
};
constexpr StillFormat kStills[] = {
    {"png", AV_CODEC_ID_PNG, nullptr},    {"jpg", AV_CODEC_ID_MJPEG, "mjpeg"},
    {"jpeg", AV_CODEC_ID_MJPEG, "mjpeg"}, {"webp", AV_CODEC_ID_WEBP, "libwebp"},
    {"bmp", AV_CODEC_ID_BMP, nullptr},    {"tif", AV_CODEC_ID_TIFF, nullptr},
    {"tiff", AV_CODEC_ID_TIFF, nullptr},  {"ppm", AV_CODEC_ID_PPM, nullptr},
    {"tga", AV_CODEC_ID_TARGA, nullptr},
};
constexpr const char* kStillNames = "png, jpg, webp, bmp, tiff, ppm, tga";
constexpr std::array kContainers = {"mp4", "mov", "mkv", "webm", "avi",  "ts",  "mpg",  "ogv",
                                    "flv", "nut", "gif", "wav",  "flac", "mp3", "opus", "m4a"};

std::string Extension(const std::string& target) {
    std::string extension = std::filesystem::path(target).extension().string();
    if (!extension.empty()) extension.erase(0, 1);
    std::ranges::transform(extension, extension.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension;
}

// A format that is asked for counts as an extension.
std::string Extension(const std::string& target, const std::string& format) {
    return Extension(format.empty() ? target : "x." + format);
}

const StillFormat* FindStill(const std::string& target, const std::string& format) {
    const std::string extension = Extension(target, format);
    const auto* found = std::ranges::find(kStills, extension, &StillFormat::extension);
    return found == std::end(kStills) ? nullptr : found;
}

[[noreturn]] void ThrowUnknownFormat(const std::string& target, const std::string& format, bool stillsOnly) {
    const std::string extension = Extension(target);
    const std::string kind = stillsOnly ? "picture format " : "format ";
    std::string known;
    if (!stillsOnly)
        for (const char* container : kContainers) known.append(container).append(", ");
    known += kStillNames;
    if (!format.empty())
        throw Error(ErrorKind::Usage, "no " + kind + "is called '" + format + "'; known ones are " + known);
    throw Error(ErrorKind::Output,
                target + ": " +
                    (IsStandardOutput(target) ? "standard output needs --format"
                     : extension.empty()      ? "no extension tells the format"
                                              : "no " + kind + "has the extension ." + extension) +
                    "; known ones are " + known);
}

const AVOutputFormat* FindMuxer(const std::string& target, const std::string& format) {
    const std::string name = format.empty() ? target : "x." + format;
    const AVOutputFormat* muxer =
        format.empty() ? nullptr : av_guess_format(format.c_str(), nullptr, nullptr);
    if (!muxer) muxer = av_guess_format(nullptr, name.c_str(), nullptr);
    if (!muxer && format.empty() && IsDevice(target)) muxer = av_guess_format("matroska", nullptr, nullptr);
    if (!muxer) ThrowUnknownFormat(target, format, false);
    const bool holdsSomething =
        muxer->video_codec != AV_CODEC_ID_NONE || muxer->audio_codec != AV_CODEC_ID_NONE;
    const bool protocol = IsOneOf(muxer, {"asf_stream"}); // its other half is the server
    if (!holdsSomething || protocol || (muxer->flags & AVFMT_NOFILE))
        throw Error(ErrorKind::Output, target + ": ." + Extension(target, format) +
                                           " files hold no pictures and no sound that can be written");
    return muxer;
}

// The index is written last, but tells at the file's beginning where it is.
void RequireRoomToSeek(const OutputPlan& plan) {
    if (!(plan.HasIndex() || std::string_view(plan.muxer->name) == "gxf") || !IsStream(plan.target)) return;
    throw Error(ErrorKind::Usage,
                "." + plan.Kind() + " files can't be written to " +
                    (IsStandardOutput(plan.target) ? "standard output" : "the pipe " + plan.target) +
                    ", where nothing can be changed afterwards; --format matroska, mpegts or ismv "
                    "(MP4 in fragments) can");
}

bool HasOption(const AVCodec& codec, const char* name) {
    const AVClass* options = codec.priv_class;
    return options && av_opt_find(&options, name, nullptr, 0, AV_OPT_SEARCH_FAKE_OBJ);
}

const AVCodec* FindEncoder(const std::string& name, AVCodecID usual) {
    if (name.empty()) {
        const AVCodec* codec = avcodec_find_encoder(usual);
        if (!codec)
            throw Error(ErrorKind::Usage, std::string("no encoder for ") + avcodec_get_name(usual) +
                                              " is installed; choose another codec");
        return codec;
    }
    const AVCodec* codec = avcodec_find_encoder_by_name(name.c_str());
    if (!codec)
        if (const AVCodecDescriptor* descriptor = avcodec_descriptor_get_by_name(name.c_str()))
            codec = avcodec_find_encoder(descriptor->id);
    if (!codec || codec->type != AVMEDIA_TYPE_VIDEO)
        throw Error(ErrorKind::Usage, "no video encoder is called \"" + name +
                                          "\"; libx264, libx265, libvpx-vp9, ffv1, prores_ks, mpeg4 "
                                          "and mjpeg are usual ones");
    return codec;
}

void CheckEncoder(const OutputPlan& plan) {
    const AVCodec& codec = *plan.encoder.codec;
    if (!plan.IsStill() && !Takes(plan, codec.id))
        throw Error(ErrorKind::Usage, "." + plan.Kind() + " files can't hold " + avcodec_get_name(codec.id) +
                                          " pictures; these can: " + ContainersFor(codec.id, Takes));
    // That of MJPEG reads lossless JPEG too.
    if (!avcodec_find_decoder(codec.id) && codec.id != AV_CODEC_ID_LJPEG)
        throw Error(ErrorKind::Usage, std::string("pictures of ") + codec.name +
                                          " could not be shown again: no decoder does it");
    if (plan.encoder.crf && !HasOption(codec, "crf"))
        throw Error(ErrorKind::Usage,
                    std::string("the encoder ") + codec.name + " has no constant-quality factor (crf)");
    if (plan.encoder.crf && (*plan.encoder.crf < 0 || *plan.encoder.crf > 63))
        throw Error(ErrorKind::Usage,
                    "crf must lie between 0 and 63, not at " + NumberText(*plan.encoder.crf));
    if (!plan.encoder.preset.empty() && !HasOption(codec, "preset"))
        throw Error(ErrorKind::Usage, std::string("the encoder ") + codec.name + " has no presets");
    if ((plan.encoder.quality && (plan.encoder.crf || plan.encoder.bitRate)) ||
        (plan.encoder.crf && plan.encoder.bitRate))
        throw Error(ErrorKind::Usage, "--crf, --quality and --bitrate exclude each other");
    if (plan.encoder.quality) RequireQuality(codec);
    if (plan.encoder.bitRate) RequireBitRate(codec);
    CheckSettings(codec, plan.encoder.settings);
}

AVPixelFormat FindFormat(const AVCodec& codec, const std::string& name) {
    const AVPixelFormat format = av_get_pix_fmt(name.c_str());
    if (format != AV_PIX_FMT_NONE && sws_isSupportedOutput(format) && TakesFormat(codec, format))
        return format;
    const std::string known = FormatsOf(codec);
    throw Error(ErrorKind::Usage,
                std::string("the encoder ") + codec.name + " takes no pictures in \"" + name + "\"; " +
                    (known.empty() ? "yuv420p and rgb24 are usual ones" : "it takes " + known));
}

} // namespace

std::string OutputPlan::Kind() const {
    const std::string extension = Extension(target, format);
    return extension.empty() && muxer ? muxer->name : extension;
}

bool OutputPlan::IsNumbered() const { return IsStill() && av_filename_number_test(target.c_str()); }

std::string OutputPlan::FirstFile() const { return IsNumbered() ? NumberedName(target, 1) : target; }

// Formats that name PNG for pictures mean the cover of a piece of music.
bool OutputPlan::IsSound() const {
    if (!muxer || muxer->audio_codec == AV_CODEC_ID_NONE) return false;
    return muxer->video_codec == AV_CODEC_ID_NONE || muxer->video_codec == AV_CODEC_ID_PNG ||
           (IsOneOf(muxer, {"ipod"}) && Extension(target) != "m4v");
}

bool OutputPlan::CarriesRotation() const { return HasIndex() || IsOneOf(muxer, {"ismv"}); }

bool OutputPlan::HasIndex() const {
    return IsOneOf(muxer, {"mov", "mp4", "3gp", "3g2", "ipod", "psp", "f4v"});
}

bool OutputPlan::CarriesAlphaLayer() const { return IsOneOf(muxer, {"matroska", "webm"}); }

bool OutputPlan::CarriesRange() const { return IsOneOf(muxer, {"matroska", "webm", "yuv4mpegpipe"}); }

// The library's own flag for variable rates is missing from containers that do hold them (mp4), so these are
// named. Theora's header tells one rate, by which players and the times of Ogg's pages count pictures.
bool OutputPlan::NeedsConstantRate() const {
    return muxer && (encoder.codec->id == AV_CODEC_ID_THEORA ||
                     IsOneOf(muxer, {"avi", "mxf", "mxf_d10", "gxf", "dv", "yuv4mpegpipe", "swf", "avm2",
                                     "rm", "amv"}) ||
                     (muxer->flags & AVFMT_NOTIMESTAMPS) || encoder.codec->supported_framerates);
}

// Streams of codecs with a list of rates go on at their rate whatever the container's times say.
bool OutputPlan::CountsPictures() const {
    return muxer && ((muxer->flags & AVFMT_NOTIMESTAMPS) || encoder.codec->supported_framerates ||
                     IsOneOf(muxer, {"mxf", "mxf_d10", "gxf", "dv", "yuv4mpegpipe", "swf", "avm2", "rm",
                                     "amv", "filmstrip"}));
}

int OutputPlan::LargestDenominator() const {
    const AVCodecID id = encoder.codec->id;
    return id == AV_CODEC_ID_MPEG4 || id == AV_CODEC_ID_H263 || id == AV_CODEC_ID_H263P ||
                   id == AV_CODEC_ID_MSMPEG4V3
               ? 65535
               : 0;
}

OutputPlan PlanStill(const std::string& target, const std::string& format) {
    CaptureLibraryLog();
    const StillFormat* still = FindStill(target, format);
    if (!still) ThrowUnknownFormat(target, format, true);
    OutputPlan plan;
    plan.target = target;
    plan.format = format;
    if (still->encoder) plan.encoder.codec = avcodec_find_encoder_by_name(still->encoder);
    if (!plan.encoder.codec) plan.encoder.codec = FindEncoder("", still->codec);
    return plan;
}

OutputPlan PlanOutput(const OutputOptions& options) {
    CaptureLibraryLog();
    OutputPlan plan;
    if (FindStill(options.output, options.format)) {
        plan = PlanStill(options.output, options.format);
        if (!options.videoCodec.empty() &&
            FindEncoder(options.videoCodec, AV_CODEC_ID_NONE)->id != plan.encoder.codec->id)
            throw Error(ErrorKind::Usage,
                        "." + plan.Kind() + " files can't hold " + options.videoCodec + " pictures");
    } else {
        plan.target = options.output;
        plan.format = options.format;
        plan.muxer = FindMuxer(options.output, options.format);
        RequireRoomToSeek(plan);
        if (plan.IsSound()) {
            if (!options.videoCodec.empty() || options.crf || !options.preset.empty() ||
                !options.outputFormat.empty() || options.quality || options.bitRate ||
                !options.encoderSettings.empty())
                throw Error(ErrorKind::Usage, "." + plan.Kind() +
                                                  " files hold no pictures; their encoder can't "
                                                  "be chosen");
            plan.sound = {options.audioBitRate, options.audioEncoderSettings};
            return plan;
        }
        plan.encoder.codec = FindEncoder(options.videoCodec, plan.muxer->video_codec);
    }
    plan.sound = {options.audioBitRate, options.audioEncoderSettings};
    plan.encoder.crf = options.crf;
    plan.encoder.quality = options.quality;
    plan.encoder.bitRate = options.bitRate;
    plan.encoder.settings = options.encoderSettings;
    plan.encoder.preset = options.preset;
    plan.encoder.threads = options.threads;
    CheckEncoder(plan);
    if (!options.outputFormat.empty())
        plan.encoder.format = FindFormat(*plan.encoder.codec, options.outputFormat);
    return plan;
}

AVRational NearestRate(const OutputPlan& plan, AVRational rate) {
    static constexpr AVRational kBroadcast[] = {{24000, 1001}, {24, 1}, {25, 1},       {30000, 1001}, {30, 1},
                                                {50, 1},       {60, 1}, {60000, 1001}, {0, 0}};
    // The encoder of MPEG-1 lists rates that it then refuses.
    const bool few = IsOneOf(plan.muxer, {"mxf", "gxf"}) || plan.encoder.codec->id == AV_CODEC_ID_MPEG1VIDEO;
    const AVRational* list = few ? kBroadcast : plan.encoder.codec->supported_framerates;
    return list ? list[av_find_nearest_q_idx(rate, list)] : rate;
}

void SayRate(const OutputPlan& plan, AVRational own, AVRational written, Reporter& reporter) {
    constexpr double kSame = 1e-4; // a picture in several minutes
    if (av_cmp_q(own, written) == 0) return;
    const auto rate = [](AVRational value) {
        char text[48];
        std::snprintf(text, sizeof text, "%.8g", av_q2d(value));
        return std::string(text);
    };
    const std::string text = "." + plan.Kind() + " files with " + avcodec_get_name(plan.encoder.codec->id) +
                             " have no " + rate(own) + " pictures a second; the output has " + rate(written);
    const double change = av_q2d(written) / av_q2d(own);
    if (std::abs(change - 1) < kSame)
        reporter.Note(text);
    else
        reporter.Warn(text + (change > 1 ? ", some of them shown again" : ", some of them left out"));
}

std::string ContainersFor(AVCodecID codec, bool (*holds)(const OutputPlan&, AVCodecID)) {
    std::string names;
    for (const char* extension : {"mkv", "mov", "mp4", "webm", "avi", "ts", "nut"}) {
        OutputPlan plan;
        plan.target = std::string("x.") + extension;
        plan.muxer = av_guess_format(nullptr, plan.target.c_str(), nullptr);
        if (plan.muxer && holds(plan, codec)) names += (names.empty() ? "." : ", .") + std::string(extension);
    }
    return names.empty() ? "none of the usual ones" : names;
}

} // namespace aveffect
