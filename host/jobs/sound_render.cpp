#include "host/jobs/sound_render.h"

#include <algorithm>
#include <climits>
#include <memory>
#include <sys/stat.h>

#include "host/effects/audio_effect_chain.h"
#include "host/effects/media_check.h"
#include "host/media/left_out.h"
#include "host/media/media_manager.h"
#include "host/output/edited_sound.h"
#include "host/output/sound_formats.h"
#include "host/output/stream_copy.h"
#include "host/support/progress_meter.h"
#include "host/support/stages.h"

namespace aveffect {
namespace {

bool HasNoSound(AVFormatContext& input) {
    return std::none_of(input.streams, input.streams + input.nb_streams, [](const AVStream* stream) {
        return stream->codecpar->codec_type == AVMEDIA_TYPE_AUDIO;
    });
}

/// One render of sound alone, from its options to its result.
class SoundRender {
public:
    SoundRender(const RenderOptions& options, const OutputPlan& plan, const RenderObserver& observer,
                const std::atomic<bool>& cancel)
        : m_options(options)
        , m_plan(plan)
        , m_cancel(cancel)
        , m_reporter(observer)
        , m_interrupt{&cancel, std::nullopt}
        , m_request(RequestOf(options))
        , m_input(OpenInput(m_request, m_interrupt))
        , m_output(plan, m_request.path) {
        ChooseStreams();
        FindSpan();
    }

    RenderResult Run(const Plugin& plugin) {
        ProgressMeter progress(m_reporter, m_length ? std::optional(Pieces(*m_length)) : std::nullopt);
        CopyTags(&m_output.File().Format().metadata, m_input->metadata);
        CopyChapters(m_output.File(), *m_input, {m_options.fromMs, m_options.toMs, std::nullopt});
        RenderResult result = ChangesSound(m_options) || !HoldsAll() || CutsSamples()
                                  ? Change(plugin, progress)
                                  : Copy(progress);
        CheckCancel(m_cancel);
        progress.Report(result.frames, true);
        m_output.Publish();
        return result;
    }

private:
    // All of a container for clips, the best one where files hold one piece of music.
    void ChooseStreams() {
        RequireStreams(*m_input, m_request);
        AVStream* const best = FindSound(*m_input, m_request, FindPictures(*m_input, m_request));
        if (!best) throw Error(ErrorKind::Input, m_options.input + " has no sound");
        m_streams = {best};
        for (unsigned index = 0; index < m_input->nb_streams; ++index) {
            AVStream* const stream = m_input->streams[index];
            if (stream == best || stream->codecpar->codec_type != AVMEDIA_TYPE_AUDIO) {
                if (stream != best) stream->discard = AVDISCARD_ALL;
            } else if (!IsWanted(*m_input, m_request, *stream)) {
                stream->discard = AVDISCARD_ALL;
            } else if (m_plan.IsSound()) {
                stream->discard = AVDISCARD_ALL;
                m_reporter.Warn("." + m_plan.Kind() + " files hold one stream of sound; stream " +
                                std::to_string(index) + " is left out");
            } else {
                m_streams.push_back(stream);
            }
        }
        const std::string leftOut = LeftOutText(*m_input, m_request, nullptr);
        if (!leftOut.empty()) m_reporter.Warn(leftOut);
    }

    void FindSpan() {
        const AVStream& first = *m_streams.front();
        if (first.start_time != AV_NOPTS_VALUE)
            m_start = {first.start_time, first.time_base};
        else if (m_input->start_time != AV_NOPTS_VALUE)
            m_start = {m_input->start_time, kMicroseconds};
        const int64_t from = m_options.fromMs.value_or(0);
        std::optional<int64_t> end = SoundTimes(*m_input, first, std::nullopt).endMs;
        if (end && from > 0 && from >= *end)
            throw Error(ErrorKind::Usage, "the span starts at " + SecondsText(from) + ", but " +
                                              m_options.input + " lasts only " + SecondsText(*end));
        if (m_options.toMs) end = end ? std::min(*end, *m_options.toMs) : *m_options.toMs;
        if (end) m_length = *end - from;
        m_start = {av_rescale_q(m_start.ticks, m_start.base, kMicroseconds) +
                       av_rescale_q(from, kMilliseconds, kMicroseconds),
                   kMicroseconds};
        if (m_options.toMs) m_end = Moment{*m_options.toMs - from, kMilliseconds};
    }

    EffectTimes Times() const {
        const Moment from{m_options.fromMs.value_or(0), kMilliseconds};
        if (m_options.restart) return {{0, m_length}, {}};
        return {SoundTimes(*m_input, *m_streams.front(), m_options.toMs), from};
    }

    static int64_t Pieces(int64_t milliseconds) { return milliseconds * kPiecesASecond / 1000; }

    RenderResult Change(const Plugin& plugin, ProgressMeter& progress) {
        MediaManager manager(&m_cancel);
        RequireSounds(manager, m_options.audioEffects);
        const std::optional<Moment> start = m_options.fromMs ? std::optional(m_start) : std::nullopt;
        const SoundPlan sound{{plugin, &manager, m_options.audioEffects, Times(), false, start, m_cancel},
                              m_options.audioCodec,
                              true,
                              false,
                              m_end};
        for (const AVStream* stream : m_streams) AddClipSound(m_output, sound, m_request, stream, m_reporter);
        m_output.Start(m_options.overwrite, m_cancel);
        Moment written{-1};
        for (int64_t seconds = 1;; ++seconds) {
            CheckCancel(m_cancel);
            const Moment until{seconds, {1, 1}};
            if (m_end && until >= *m_end) break;
            m_output.WriteSound(until);
            const Moment reached = m_output.SoundReached();
            if (!(written < reached)) break; // all have come to their ends
            written = reached;
            progress.Report(PiecesOf(reached), false);
        }
        m_output.EndStreams(m_end);
        const Moment end = m_output.SoundReached();
        if (end.ticks == 0)
            throw Error(ErrorKind::Input, m_options.input + " holds no sound that can be decoded" +
                                              (m_options.fromMs || m_options.toMs ? " in that span" : ""));
        m_output.Finish();
        DamageReport found = m_output.Damage();
        found.Add(manager.Damage());
        return {PiecesOf(end), Damage(end, found)};
    }

    static int64_t PiecesOf(const Moment& moment) {
        return av_rescale_q(moment.ticks, moment.base, {1, kPiecesASecond});
    }

    // Sound that the container can't hold is encoded, and then all of it.
    bool HoldsAll() {
        for (const AVStream* stream : m_streams) {
            const AVCodecID codec = stream->codecpar->codec_id;
            const bool held = HoldsAsIs(m_plan, *stream->codecpar);
            if (held && CopyFor(*stream) != EditedCopy::None) continue;
            RequireRereadable(m_request.path);
            m_reporter.Note(held ? EditedNote(*stream)
                                 : "." + m_plan.Kind() + " files can't hold the " + avcodec_get_name(codec) +
                                       " sound as it is");
            return false;
        }
        return true;
    }

    EditedCopy CopyFor(const AVStream& stream) const {
        const std::optional<SoundEdit> edit = EditOf(*m_input, stream);
        if (!edit) return EditedCopy::Heard;
        std::optional<int64_t> start;
        if (m_options.fromMs) start = av_rescale_q(m_start.ticks, m_start.base, stream.time_base);
        return CopyOf(*edit, stream, m_plan, start);
    }

    // Packets can be left out whole only; what loses nothing by being encoded again is cut to the sample.
    bool CutsSamples() const {
        if (!m_options.fromMs && !m_options.toMs) return false;
        return std::ranges::all_of(m_streams, [this](const AVStream* stream) {
            const AVCodecID codec = stream->codecpar->codec_id;
            const AVCodecDescriptor* const about = avcodec_descriptor_get(codec);
            return about && (about->props & AV_CODEC_PROP_LOSSLESS) && HoldsSound(m_plan, codec) &&
                   avcodec_find_encoder(codec);
        });
    }

    RenderResult Copy(ProgressMeter& progress) {
        for (const AVStream* stream : m_streams) {
            RequireCopy(*stream);
            m_output.AddCopy(*stream, CopyFor(*stream) == EditedCopy::WithLead);
        }
        m_output.Start(m_options.overwrite, m_cancel);
        const mediabridge::AVPacketPtr packet(av_packet_alloc());
        if (!packet) throw NoMemory("out of memory");
        Moment end;
        for (; ReadPacket(m_input, *packet) >= 0; av_packet_unref(packet.get())) {
            const std::optional<Moment> itsEnd = MoveToSpan(*packet);
            if (!itsEnd || !m_output.WritePacket(*packet)) continue;
            end = std::max(end, *itsEnd);
            progress.Report(PiecesOf(end), false);
        }
        if (m_interrupt.Due()) throw Error(ErrorKind::Interrupted, "interrupted; nothing was written");
        m_output.Finish();
        return {PiecesOf(end), Damage(end, m_output.Damage())};
    }

    // Gives a packet the span's times, and says when it ends in them; absent when it lies outside.
    std::optional<Moment> MoveToSpan(AVPacket& packet) const {
        const AVRational base = m_input->streams[packet.stream_index]->time_base;
        const int64_t start = av_rescale_q(m_start.ticks, m_start.base, base);
        Moment end;
        if (packet.pts != AV_NOPTS_VALUE) {
            const Moment begin{packet.pts - start, base};
            if (m_options.fromMs && begin.ticks < 0) return std::nullopt;
            if (m_end && begin >= *m_end) return std::nullopt;
            end = {begin.ticks + packet.duration, base};
        }
        if (m_options.fromMs && packet.pts != AV_NOPTS_VALUE) packet.pts -= start;
        if (m_options.fromMs && packet.dts != AV_NOPTS_VALUE) packet.dts -= start;
        return end;
    }

    void RequireCopy(const AVStream& stream) const {
        if (stream.codecpar->sample_rate <= 0)
            throw Error(ErrorKind::Input, m_options.input + " holds no sound that can be decoded");
    }

    // Formats that guess their length can't tell that a part is missing.
    std::optional<std::string> Damage(const Moment& end, const DamageReport& found) const {
        constexpr int64_t kToleranceMs = 100;
        const bool guessed = m_input->duration_estimation_method == AVFMT_DURATION_FROM_BITRATE;
        DamageReport all;
        if (m_length && !guessed && end < Moment{*m_length - kToleranceMs, kMilliseconds})
            all.Add(m_options.input, "the clip ends early: at " +
                                         SecondsText(av_rescale_q(end.ticks, end.base, kMilliseconds)) +
                                         " of " + SecondsText(*m_length));
        all.Add(m_input.get_deleter().damage->Report());
        all.Add(found);
        return all.Text();
    }

    const RenderOptions& m_options;
    const OutputPlan& m_plan;
    const std::atomic<bool>& m_cancel;
    Reporter m_reporter;
    ReadInterrupt m_interrupt;
    const SourceRequest m_request;
    InputContextPtr m_input;
    std::vector<AVStream*> m_streams; ///< of sound, that go into the output
    MediaWriter m_output;
    Moment m_start;                  ///< of the span, in the file's times
    std::optional<Moment> m_end;     ///< of the span from its start, where it is asked for
    std::optional<int64_t> m_length; ///< of the span, in milliseconds
};

} // namespace

bool ChangesSound(const RenderOptions& options) {
    return !options.audioEffects.empty() || !options.audioCodec.empty() || options.audioBitRate ||
           !options.audioEncoderSettings.empty();
}

bool IsSoundRender(const RenderOptions& options, const OutputPlan& plan, const std::atomic<bool>& cancel) {
    if (plan.IsSound()) return true;
    const SourceRequest request = RequestOf(options);
    struct stat info = {};
    if (stat(request.path.c_str(), &info) != 0 || !S_ISREG(info.st_mode)) return false;
    ReadInterrupt interrupt{&cancel, std::nullopt};
    const InputContextPtr input = OpenInput(request, interrupt);
    return !FindPictures(*input, request) && !HasNoSound(*input);
}

void RequireSoundOptions(const RenderOptions& options, const OutputPlan& plan) {
    const auto refuse = [&](const std::string& option) {
        throw plan.IsSound() ? Error(ErrorKind::Usage, options.output + " takes no pictures for " + option)
                             : Error(ErrorKind::Input, options.input + " has no pictures for " + option);
    };
    if (!options.effects.empty()) refuse("the effect " + options.effects.front().name);
    if (options.frameLimit) refuse("--frames");
    if (!options.framing.Empty() || options.rate) refuse("--size, --crop or --fps");
    if (options.stereo.TwoViews()) refuse("two views");
    if (!options.videoCodec.empty() || options.crf || !options.preset.empty())
        refuse("--codec, --crf or --preset");
    if (options.quality || options.bitRate || !options.encoderSettings.empty())
        refuse("--quality, --bitrate or --encoder-option");
    if (plan.IsStill()) refuse(options.output);
    if (plan.muxer->audio_codec == AV_CODEC_ID_NONE)
        throw Error(ErrorKind::Usage, "." + plan.Kind() + " files hold no sound");
}

RenderResult RenderSound(const Plugin& plugin, const RenderOptions& options, const OutputPlan& plan,
                         const RenderObserver& observer, const std::atomic<bool>& cancel) {
    return SoundRender(options, plan, observer, cancel).Run(plugin);
}

SoundPlan SoundBeside(const Plugin& plugin, AVBased::IAVManager* manager, const RenderOptions& options,
                      const SoundSpan& span, const std::atomic<bool>& cancel) {
    constexpr AVRational kNanoseconds{1, 1'000'000'000};
    const Moment clip = span.source.Start();
    const int64_t start = av_rescale_q(span.start, span.source.Pictures().time_base, kNanoseconds);
    std::optional<Moment> end;
    if (options.toMs) end = {av_rescale_q(*options.toMs, kMilliseconds, kNanoseconds) - start, kNanoseconds};
    const Moment from{av_rescale_q(clip.ticks, clip.base, kNanoseconds) + start, kNanoseconds};
    const bool endless = BringsSound(options.audioEffects);
    return {{plugin, manager, options.audioEffects, span.times, endless, from, cancel},
            options.audioCodec,
            ChangesSound(options),
            options.frameLimit || endless,
            end};
}

} // namespace aveffect
