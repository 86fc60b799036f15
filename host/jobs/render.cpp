#include "host/jobs/render.h"

#include <algorithm>
#include <climits>
#include <deque>
#include <memory>
#include <utility>

#include "host/effects/media_check.h"
#include "host/effects/picture_stage.h"
#include "host/effects/view_pairs.h"
#include "host/jobs/picture_copy.h"
#include "host/jobs/sound_render.h"
#include "host/media/media_manager.h"
#include "host/media/right_clip.h"
#include "host/media/span.h"
#include "host/output/output_file.h"
#include "host/output/output_plan.h"
#include "host/output/picture_output.h"
#include "host/output/still_picture.h"
#include "host/output/stream_mapping.h"
#include "host/picture/orientation.h"
#include "host/support/bounded_queue.h"
#include "host/support/progress_meter.h"
#include "host/support/reporter.h"
#include "host/support/stages.h"

namespace aveffect {
namespace {

using mediabridge::AVFramePtr;

int ToMs(int64_t ticks, AVRational base) {
    return static_cast<int>(std::clamp<int64_t>(av_rescale_q(ticks, base, kMilliseconds), 0, INT_MAX));
}

unsigned WeightOf(const SpanItem& item) { return item.picture ? kPictureWeight : kPacketWeight; }

// Whose word pictures are turned upright by. Null: they stay as they are, and the output hands the word on,
// which it does where it can and no effect looks at the pictures.
const AVStream* UprightBy(const Source& source, const OutputPlan& plan, bool effects, Reporter& reporter) {
    const AVStream& stream = source.Pictures();
    const int32_t* matrix = DisplayMatrix(stream);
    if (matrix && !effects && plan.CarriesRotation()) return nullptr;
    if (matrix && !TurnFilter(matrix) && !plan.CarriesRotation())
        reporter.Warn("the clip is shown at an angle, which ." + plan.Kind() +
                      " files can't say; it is lost");
    return &stream;
}

uint32_t EffectLength(std::optional<int64_t> lengthMs, const Source& source, Reporter& reporter) {
    if (!lengthMs) {
        // A picture in a file lasts as long as its one packet says.
        const bool still =
            source.Format().duration == AV_NOPTS_VALUE && source.Pictures().nb_frames <= 1 &&
            (avcodec_descriptor_get(source.Pictures().codecpar->codec_id)->props & AV_CODEC_PROP_INTRA_ONLY);
        const AVRational rate = source.FrameRate();
        lengthMs = still ? av_rescale(1000, rate.den, rate.num) : kUnknownLengthMs;
        if (!still) reporter.Note("the clip does not tell its length; effects take it for one hour");
    }
    return static_cast<uint32_t>(std::clamp<int64_t>(*lengthMs, 0, INT_MAX));
}

std::unique_ptr<ViewPairs> PairsFor(const Plugin& plugin, MediaManager* manager,
                                    const std::vector<EffectSpec>& effects, uint32_t lengthMs,
                                    const StereoOptions& options) {
    if (!options.TwoViews()) return nullptr;
    return std::make_unique<ViewPairs>(plugin, manager, effects, lengthMs, options);
}

/// One render of a clip, from its options to its result.
class RenderJob {
public:
    RenderJob(const Plugin& plugin, const RenderOptions& options, OutputPlan plan,
              const RenderObserver& observer, const std::atomic<bool>& cancel)
        : m_plugin(plugin)
        , m_options(options)
        , m_cancel(cancel)
        , m_reporter(observer)
        , m_terms(options.sdr, m_reporter)
        , m_plan(std::move(plan))
        , m_source(m_request, m_plan.IsStill() ? Source::Others::None : Source::Others::Copied,
                   options.threads, cancel)
        , m_limits{options.fromMs, options.toMs, options.frameLimit}
        , m_span(m_source, m_limits)
        , m_base(m_source.Pictures().time_base)
        , m_progress(m_reporter, m_span.ExpectedPictures())
        , m_length(EffectLength(m_span.LengthMs(), m_source, m_reporter))
        , m_chain(plugin, &m_manager, options.effects, m_length)
        , m_pairs(PairsFor(plugin, &m_manager, options.effects, m_length, options.stereo))
        , m_stage(m_chain, m_manager, options.pixelFormat,
                  UprightBy(m_source, m_plan, !options.effects.empty(), m_reporter), m_terms, m_reporter,
                  m_pairs.get()) {
        m_manager.TakeOn(m_terms);
        m_plan.encoder.fieldOrder = m_source.Pictures().codecpar->field_order;
        if (!options.stereo.right.empty())
            m_right = std::make_unique<RightClip>(options.stereo.right, options.fromMs, options.threads,
                                                  m_reporter, cancel);
    }

    RenderResult Run() {
        RequirePictures(m_manager, m_options.effects);
        RequireSounds(m_manager, m_options.audioEffects);
        SpanItem head = ReadFirst();
        if (m_plan.IsStill()) RequireOnePicture();
        AVFramePtr first = ApplyEffects(std::move(head));
        if (m_plan.IsStill()) {
            WriteStill(m_plan, ForEncoder(std::move(first)), m_options.overwrite, m_cancel);
            m_terms.Conclude();
            m_progress.Report(1, true);
            return {1, Damage()};
        }
        first = ForEncoder(std::move(first));
        if (IsHighDynamicRange(*first)) KeepLight(m_source.Pictures(), *first);
        m_sound.emplace(
            SoundBeside(m_plugin, &m_manager, m_options, {m_source, m_span.Start(), m_length}, m_cancel));
        m_file = OpenOutput({m_plan, m_source, m_limits, m_options.overwrite, m_stage.Turned(), m_request,
                             *m_sound, m_chain.Views()},
                            first.get(), m_reporter, m_cancel);
        m_head.push_back({std::move(first), nullptr});
        RunStages();
        CheckCancel(m_cancel);
        m_terms.Conclude();
        m_file->Publish();
        m_progress.Report(m_file->Pictures(), true);
        return {m_file->Pictures(), Damage()};
    }

private:
    // With the right clip's picture of the same moment.
    std::optional<SpanItem> Next() {
        std::optional<SpanItem> item = m_span.Next();
        if (item && item->picture && m_right)
            item->second = m_right->At({m_span.Start() + item->picture->pts, m_base});
        return item;
    }

    std::optional<std::string> Damage() const {
        DamageReport all = m_span.Damage();
        if (m_right) all.Add(m_right->Damage());
        if (m_file) all.Add(m_file->Damage());
        all.Add(m_manager.Damage());
        return all.Text();
    }

    // The first picture tells what the output looks like; packets before it wait in m_head.
    SpanItem ReadFirst() {
        while (std::optional<SpanItem> item = Next()) {
            CheckCancel(m_cancel);
            if (item->picture) return std::move(*item);
            m_head.push_back(std::move(*item));
        }
        const bool part = m_limits.fromMs || m_limits.toMs;
        if (part && m_span.Damage().Empty())
            throw Error(ErrorKind::Usage, m_options.input + " has no picture between " +
                                              SecondsText(m_limits.fromMs.value_or(0)) + " and " +
                                              (m_limits.toMs ? SecondsText(*m_limits.toMs) : "its end"));
        throw Error(ErrorKind::Input, m_options.input + " holds no picture that can be decoded");
    }

    void RequireOnePicture() {
        if (m_limits.frameLimit == 1) return;
        while (const std::optional<SpanItem> item = m_span.Next())
            if (item->picture)
                throw Error(ErrorKind::Usage,
                            m_options.output + " holds one picture, but " + m_options.input +
                                " has more; choose one with \"aveffect frame\" or --frames 1");
    }

    AVFramePtr ApplyEffects(SpanItem item) {
        const int time = ToMs(item.picture->pts, m_base);
        const int duration = ToMs(item.picture->pkt_duration, m_base);
        return m_stage.ApplyEffects(std::move(item.picture), time, static_cast<unsigned>(duration),
                                    item.second.get());
    }

    // The first picture decides for all.
    AVFramePtr ForEncoder(AVFramePtr picture) {
        if (!m_output) m_output.emplace(m_plan, m_stage.Origin(), *picture, m_terms, m_reporter);
        return m_output->Convert(std::move(picture));
    }

    void RunStages() {
        StageGroup stages([this] {
            m_decoded.Stop();
            m_processed.Stop();
        });
        stages.Start([this] { Decode(); });
        stages.Start([this] { Process(); });
        stages.Start([this] { Encode(); });
        stages.Join();
    }

    void Decode() {
        while (std::optional<SpanItem> item = Next()) {
            CheckCancel(m_cancel);
            const unsigned weight = WeightOf(*item);
            if (!m_decoded.Push(std::move(*item), weight)) return;
        }
        m_decoded.Finish();
    }

    void Process() {
        for (SpanItem& item : m_head) {
            const unsigned weight = WeightOf(item);
            if (!m_processed.Push(std::move(item), weight)) return;
        }
        m_head.clear();
        while (std::optional<SpanItem> item = m_decoded.Pop()) {
            CheckCancel(m_cancel);
            if (item->picture) *item = {ForEncoder(ApplyEffects(std::move(*item))), nullptr};
            const unsigned weight = WeightOf(*item);
            if (!m_processed.Push(std::move(*item), weight)) return;
        }
        if (!m_decoded.Stopped()) m_processed.Finish();
    }

    void Encode() {
        while (std::optional<SpanItem> item = m_processed.Pop()) {
            CheckCancel(m_cancel);
            if (item->packet) {
                m_file->WritePacket(*item->packet);
                continue;
            }
            m_file->WritePicture(std::move(item->picture));
            m_progress.Report(m_file->Pictures(), false);
        }
        if (m_processed.Stopped()) return;
        m_file->EndStreams(m_sound->EndBeside(m_file->PicturesEnd()));
        m_file->Finish();
    }

    const Plugin& m_plugin;
    const RenderOptions& m_options;
    const std::atomic<bool>& m_cancel;
    Reporter m_reporter;
    IntakeTerms m_terms;
    OutputPlan m_plan;
    const SourceRequest m_request{m_options.input};
    Source m_source;
    SpanLimits m_limits;
    SpanReader m_span;
    const AVRational m_base; ///< of the pictures' times
    ProgressMeter m_progress;
    MediaManager m_manager{&m_cancel};
    const uint32_t m_length; ///< that the effects are told of
    EffectChain m_chain;
    std::unique_ptr<ViewPairs> m_pairs;
    std::unique_ptr<RightClip> m_right;
    PictureStage m_stage;
    std::optional<PictureOutput> m_output;
    std::optional<SoundPlan> m_sound; ///< once the span is known
    std::unique_ptr<MediaWriter> m_file;
    std::deque<SpanItem> m_head; ///< packets before the first picture, then that picture
    BoundedQueue<SpanItem> m_decoded{kQueueWeight};
    BoundedQueue<SpanItem> m_processed{kQueueWeight};
};

// The picture shown at a moment: the last one that starts at or before it, or the clip's first.
AVFramePtr FindPicture(Source& source, int64_t atMs, const std::atomic<bool>& cancel) {
    const AVRational base = source.Pictures().time_base;
    source.SeekBefore(atMs);
    AVFramePtr shown;
    while (std::optional<SourceItem> item = source.Next()) {
        CheckCancel(cancel);
        if (!item->picture) continue;
        if (shown && av_compare_ts(item->picture->pts, base, atMs, kMilliseconds) > 0) return shown;
        shown = std::move(item->picture);
    }
    if (!shown) throw Error(ErrorKind::Input, source.Path() + " holds no picture that can be decoded");
    const int64_t end = av_rescale_q(shown->pts + shown->pkt_duration, base, kMilliseconds);
    if (!source.EndMs() && atMs > 0 && atMs >= end)
        throw Error(ErrorKind::Usage, SecondsText(atMs) + " is beyond the end of " + source.Path() +
                                          ", which lasts " + SecondsText(end));
    return shown;
}

} // namespace

RenderResult Render(const Plugin& plugin, const RenderOptions& options, const RenderObserver& observer,
                    const std::atomic<bool>& cancel) {
    CheckPixelFormatName(options.pixelFormat);
    const bool copies = AsksForCopy(options);
    OutputPlan plan = PlanOutput(options.output, copies ? "" : options.videoCodec, options.crf,
                                 options.preset, options.threads, options.outputFormat);
    OutputFile::Check(options.output, options.input, options.overwrite);
    if (!options.stereo.right.empty())
        OutputFile::Check(options.output, options.stereo.right, options.overwrite);
    if (plan.IsStill() && ChangesSound(options))
        throw Error(ErrorKind::Usage, "." + plan.Kind() + " files hold no sound");
    if (ChangesSound(options)) RequireRereadable(options.input); // sound is read apart from the pictures
    if (IsSoundRender(options, plan, cancel)) return RenderSound(plugin, options, plan, observer, cancel);
    if (copies || LeavesPictures(options, plan, cancel))
        return RenderCopy(plugin, options, plan, observer, cancel);
    return RenderJob(plugin, options, std::move(plan), observer, cancel).Run();
}

RenderResult RenderFrame(const Plugin& plugin, const FrameOptions& options, const RenderObserver& observer,
                         const std::atomic<bool>& cancel) {
    Reporter reporter(observer);
    CheckPixelFormatName(options.pixelFormat);
    const OutputPlan plan = PlanStill(options.output);
    OutputFile::Check(options.output, options.input, options.overwrite);
    if (options.atMs < 0) throw Error(ErrorKind::Usage, "the time of the picture is negative");
    Source source({options.input}, Source::Others::None, 0, cancel);
    if (source.EndMs() && options.atMs > 0 && options.atMs >= *source.EndMs())
        throw Error(ErrorKind::Usage, SecondsText(options.atMs) + " is beyond the end of " + options.input +
                                          ", which lasts " + SecondsText(*source.EndMs()));
    IntakeTerms terms(options.sdr, reporter);
    MediaManager manager(&cancel);
    manager.TakeOn(terms);
    const uint32_t length = EffectLength(source.EndMs(), source, reporter);
    EffectChain chain(plugin, &manager, options.effects, length);
    const auto pairs = PairsFor(plugin, &manager, options.effects, length, options.stereo);
    PictureStage stage(chain, manager, options.pixelFormat,
                       UprightBy(source, plan, !options.effects.empty(), reporter), terms, reporter,
                       pairs.get());

    RequirePictures(manager, options.effects);
    AVFramePtr picture = FindPicture(source, options.atMs, cancel), second;
    DamageReport damage = source.Damage(1, {}, false);
    if (!options.stereo.right.empty()) {
        RightClip right(options.stereo.right, options.atMs, 0, reporter, cancel);
        second = right.At({picture->pts, source.Pictures().time_base});
        damage.Add(right.Damage());
    }
    const AVRational base = source.Pictures().time_base;
    const int time = ToMs(picture->pts, base);
    const int duration = ToMs(picture->pkt_duration, base);
    picture = stage.ApplyEffects(std::move(picture), time, static_cast<unsigned>(duration), second.get());
    PictureOutput output(plan, stage.Origin(), *picture, terms, reporter);
    terms.Conclude();
    WriteStill(plan, output.Convert(std::move(picture)), options.overwrite, cancel);
    RenderProgress progress;
    progress.framesDone = 1;
    progress.framesExpected = 1;
    progress.secondsLeft = 0.0;
    reporter.Progress(progress);
    damage.Add(manager.Damage());
    return {1, damage.Text()};
}

} // namespace aveffect
