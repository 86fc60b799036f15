#include "host/jobs/picture_copy.h"

#include <algorithm>
#include <climits>
#include <initializer_list>
#include <string_view>

extern "C" {
#include <libavutil/avstring.h>
}

#include "host/effects/media_check.h"
#include "host/jobs/sound_render.h"
#include "host/media/media_manager.h"
#include "host/media/span.h"
#include "host/output/picture_formats.h"
#include "host/output/stream_copy.h"
#include "host/output/stream_mapping.h"
#include "host/picture/orientation.h"
#include "host/support/progress_meter.h"
#include "host/support/stages.h"

namespace aveffect {
namespace {

/// What the options want of the pictures that only decoding them gives, in words; empty for nothing.
std::string AskedOfPictures(const RenderOptions& options) {
    if (!options.effects.empty()) return "the effect " + options.effects.front().name;
    if (options.stereo.TwoViews()) return "two views";
    if (options.crf || !options.preset.empty()) return "--crf or --preset";
    if (options.quality || options.bitRate) return "--quality or --bitrate";
    if (!options.encoderSettings.empty()) return "--encoder-option";
    if (!options.outputFormat.empty()) return "--output-format";
    if (!options.framing.Empty()) return "--size or --crop";
    if (options.rate) return "--fps";
    if (options.sdr) return "--sdr";
    if (options.pixelFormat != "auto") return "--pixel-format";
    if (options.frameLimit) return "--frames";
    return {};
}

using Names = std::initializer_list<std::string_view>;

bool IsOneOf(const OutputPlan& plan, Names muxers) {
    return std::ranges::find(muxers, std::string_view(plan.muxer->name)) != muxers.end();
}

/// Whether a file of the input's format has a name that the output has too.
bool IsSameFormat(const Source& source, const OutputPlan& plan) {
    return av_match_name(plan.muxer->name, source.Format().iformat->name) != 0;
}

/// Whether the first packet shows a picture that needs no other one.
bool BeginsWithKey(Source& source) {
    while (const std::optional<SourceItem> item = source.Next()) {
        const AVPacket& packet = *item->packet;
        if (packet.stream_index != source.Pictures().index) continue;
        return (packet.flags & AV_PKT_FLAG_KEY) && !(packet.flags & AV_PKT_FLAG_DISCARD) &&
               packet.pts != AV_NOPTS_VALUE;
    }
    source.RequireRead();
    return false;
}

/// One such render, from its options to its result.
class CopyJob {
public:
    // The analyser does not follow the source's constructor.
    // NOLINTNEXTLINE(clang-analyzer-optin.cplusplus.UninitializedObject)
    CopyJob(const Plugin& plugin, const RenderOptions& options, const OutputPlan& plan,
            const RenderObserver& observer, const std::atomic<bool>& cancel)
        : m_plugin(plugin)
        , m_options(options)
        , m_plan(plan)
        , m_cancel(cancel)
        , m_reporter(observer)
        , m_source(m_request, Source::Others::WithPictures, options.threads, cancel)
        , m_limits{options.fromMs, options.toMs, std::nullopt}
        , m_span(m_source, m_limits) {}

    RenderResult Run() {
        RequireSounds(m_manager, m_options.audioEffects);
        RequireHeld();
        std::optional<SpanItem> item = m_span.Next(); // the span's start is known from here on
        if (!item)
            throw Error(ErrorKind::Input, m_options.input + " holds no picture that can be copied" +
                                              (m_limits.fromMs || m_limits.toMs ? " in that span" : ""));
        Tell();
        EffectTimes times{ClipTimes(m_source, m_limits.toMs, std::nullopt),
                          {m_span.Start(), m_source.Pictures().time_base}};
        if (m_options.restart) times = {{0, m_span.LengthMs()}, {}};
        const SoundPlan sound =
            SoundBeside(m_plugin, &m_manager, m_options, {m_source, m_span.Start(), times}, m_cancel);
        const auto output =
            OpenOutput({m_plan, m_source, m_limits, m_options.overwrite, false, m_request, sound}, nullptr,
                       m_reporter, m_cancel);
        ProgressMeter progress(m_reporter, m_span.ExpectedPictures());
        for (; item; item = m_span.Next()) {
            CheckCancel(m_cancel);
            output->WritePacket(*item->packet);
            progress.Report(output->Pictures(), false);
        }
        output->EndStreams(sound.EndBeside(output->PicturesEnd()));
        output->Finish();
        CheckCancel(m_cancel);
        progress.Report(output->Pictures(), true);
        RenderResult result{output->Pictures(), Damage(*output)};
        output->Publish();
        return result;
    }

private:
    void RequireHeld() {
        const AVCodecID codec = m_source.Pictures().codecpar->codec_id;
        if (!Takes(m_plan, codec))
            throw Error(ErrorKind::Usage, "." + m_plan.Kind() + " files can't hold " +
                                              avcodec_get_name(codec) + " pictures, which are copied; " +
                                              "these can: " + ContainersFor(codec, Takes));
        if (DisplayMatrix(m_source.Pictures()) && !m_plan.CarriesRotation())
            m_reporter.Warn("the clip's pictures lie turned, which ." + m_plan.Kind() +
                            " files can't say; without --codec copy they are turned upright");
    }

    void Tell() {
        const AVRational base = m_source.Pictures().time_base;
        std::string text = std::string("pictures are copied as they are (") +
                           avcodec_get_name(m_source.Pictures().codecpar->codec_id) + ")";
        if (m_limits.fromMs)
            text += ", from the key picture at " +
                    SecondsText(av_rescale_q(m_span.Start(), base, kMilliseconds)) + " on";
        m_reporter.Note(text);
    }

    std::optional<std::string> Damage(const MediaWriter& output) const {
        DamageReport all = m_span.Damage();
        all.Add(output.Damage());
        all.Add(m_manager.Damage());
        return all.Text();
    }

    const Plugin& m_plugin;
    const RenderOptions& m_options;
    const OutputPlan& m_plan;
    const std::atomic<bool>& m_cancel;
    Reporter m_reporter;
    const SourceRequest m_request = RequestOf(m_options);
    Source m_source;
    SpanLimits m_limits;
    SpanReader m_span;
    MediaManager m_manager{&m_cancel};
};

} // namespace

bool AsksForCopy(const RenderOptions& options) {
    if (options.videoCodec != "copy") return false;
    const std::string asked = AskedOfPictures(options);
    if (!asked.empty())
        throw Error(ErrorKind::Usage,
                    "--codec copy leaves the pictures as they are, which does not go with " + asked);
    return true;
}

// A cut to the picture needs them encoded, and so do containers that ask more of them than the file does.
bool LeavesPictures(const RenderOptions& options, const OutputPlan& plan, const std::atomic<bool>& cancel) {
    if (plan.IsStill() || !ChangesSound(options) || !options.videoCodec.empty() || options.fromMs ||
        options.toMs || !AskedOfPictures(options).empty())
        return false;
    Source source(RequestOf(options), Source::Others::WithPictures, 1, cancel);
    const AVStream& pictures = source.Pictures();
    if (DisplayMatrix(pictures) && !plan.CarriesRotation()) return false;
    if (!Takes(plan, pictures.codecpar->codec_id)) return false;
    if (!IsSameFormat(source, plan)) {
        // H.264 in AVI is laid out in another way too.
        const AVCodecID codec = pictures.codecpar->codec_id;
        const bool ordered = source.IsConstantRate() && pictures.codecpar->video_delay == 0 &&
                             codec != AV_CODEC_ID_H264 && codec != AV_CODEC_ID_HEVC;
        const bool needsOrder = (plan.muxer->flags & AVFMT_NOTIMESTAMPS) || IsOneOf(plan, {"avi"});
        if (IsOneOf(plan, {"mxf", "mxf_d10", "gxf", "dv", "swf"}) || (needsOrder && !ordered)) return false;
    }
    return BeginsWithKey(source);
}

RenderResult RenderCopy(const Plugin& plugin, const RenderOptions& options, const OutputPlan& plan,
                        const RenderObserver& observer, const std::atomic<bool>& cancel) {
    return CopyJob(plugin, options, plan, observer, cancel).Run();
}

} // namespace aveffect
