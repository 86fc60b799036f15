#include "host/jobs/render_plan.h"

#include <algorithm>
#include <deque>
#include <memory>
#include <utility>

#include "host/effects/media_check.h"
#include "host/jobs/clip_input.h"
#include "host/jobs/picture_pipeline.h"
#include "host/jobs/sound_render.h"
#include "host/output/numbered_output.h"
#include "host/output/still_picture.h"
#include "host/output/stream_mapping.h"
#include "host/picture/light_metadata.h"
#include "host/support/ordered_workers.h"
#include "host/support/progress_meter.h"
#include "host/support/work_limit.h"

namespace aveffect {
namespace {

using mediabridge::AVFramePtr;

/// One such render, from its plan to its result.
class ClipRender {
public:
    ClipRender(const Plugin& plugin, RenderPlan plan, const RenderObserver& observer,
               const std::atomic<bool>& cancel)
        : m_plugin(plugin)
        , m_plan(std::move(plan))
        , m_cancel(cancel)
        , m_reporter(observer)
        , m_input(m_plan, m_reporter, cancel)
        , m_pictures(plugin, TaskOf(m_plan.options), m_input.source, m_input.Clip(), m_plan.output,
                     m_reporter, cancel, WorkerCount(m_plan.options.threads))
        , m_progress(m_reporter, m_input.ExpectedPictures())
        , m_numbered(m_plan.output, m_plan.options.overwrite, cancel)
        , m_limit(m_plan.options.threads) {
        const bool keepsFields = m_plan.options.framing.Empty() && !m_plan.options.rate;
        m_plan.output.encoder.fieldOrder =
            keepsFields ? m_input.source.Pictures().codecpar->field_order : AV_FIELD_PROGRESSIVE;
    }

    RenderResult Run() {
        m_pictures.RequireMedia();
        RequireSounds(m_pictures.Media(), m_plan.options.audioEffects);
        SpanItem head = ReadFirst();
        if (m_plan.output.IsNumbered()) return WriteNumbered(std::move(head));
        if (m_plan.output.IsStill()) {
            RequireOnePicture();
            const auto file = WriteStill(m_plan.output, Rendered(std::move(head)),
                                         ReadPhotoMetadata(m_input.request.path, m_plan.options.strip),
                                         m_plan.options.overwrite, m_cancel);
            m_pictures.Conclude();
            RenderResult result = Result(1);
            file->Publish();
            return result;
        }
        if (m_plan.options.besidePictures) {
            WriteBeside(std::move(head));
        } else {
            OpenFile(Rendered(std::move(head)));
            RunStages();
        }
        CheckCancel(m_cancel);
        m_pictures.Conclude();
        RenderResult result = Result(m_file ? m_file->Pictures() : 0);
        if (m_file) m_file->Publish(); // last, for nothing may fail once the file has its name
        return result;
    }

private:
    static PictureTask TaskOf(const RenderOptions& options) {
        return {options.effects, options.pixelFormat, options.sdr,
                options.stereo,  options.framing,     options.rate};
    }

    RenderResult Result(int64_t pictures) {
        m_progress.Report(pictures, true);
        DamageReport damage = m_input.Damage();
        if (m_file) damage.Add(m_file->Damage());
        damage.Add(m_pictures.Media().Damage());
        RenderResult result{pictures, damage.Text()};
        if (m_file && m_plan.options.besidePictures) result.besideStartUs = m_file->File().FirstUs();
        return result;
    }

    AVFramePtr Rendered(SpanItem item, const LinePlace& place = {}) {
        return m_pictures.Make(std::move(item.picture), item.second.get(), place);
    }

    // The first picture tells what the output looks like; packets before it wait in m_head.
    SpanItem ReadFirst() {
        while (std::optional<SpanItem> item = m_input.Next()) {
            CheckCancel(m_cancel);
            if (item->picture) {
                m_pictures.BeginAt(m_input.Start());
                return std::move(*item);
            }
            m_head.push_back(std::move(*item));
        }
        const bool part = m_input.limits.fromMs || m_input.limits.toMs;
        if (part && m_input.span.Damage().Empty())
            throw Error(ErrorKind::Usage,
                        m_plan.options.input + " has no picture between " +
                            SecondsText(m_input.limits.fromMs.value_or(0)) + " and " +
                            (m_input.limits.toMs ? SecondsText(*m_input.limits.toMs) : "its end"));
        throw Error(ErrorKind::Input, m_plan.options.input + " holds no picture that can be decoded");
    }

    void RequireOnePicture() {
        if (m_plan.options.frameLimit == 1) return;
        while (const std::optional<SpanItem> item = m_input.span.Next())
            if (item->picture)
                throw Error(ErrorKind::Usage,
                            m_plan.options.output + " holds one picture, but " + m_plan.options.input +
                                " has more; choose one with \"aveffect frame\" or --frames 1");
    }

    RenderResult WriteNumbered(SpanItem head) {
        const AVFormatContext& input = m_input.source.Format();
        if (m_plan.options.streams.sound && av_find_best_stream(const_cast<AVFormatContext*>(&input),
                                                                AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0) >= 0)
            m_reporter.Warn(kNoSoundBeside);
        m_head.push_back({Rendered(std::move(head)), nullptr});
        m_numbered.Run([this] {
            RunStages();
            CheckCancel(m_cancel);
        });
        m_pictures.Conclude();
        return Result(m_numbered.Pictures());
    }

    void OpenFile(AVFramePtr first) {
        if (IsHighDynamicRange(*first)) KeepLight(m_input.source.Pictures(), *first);
        Open(m_plan.options.share ? ClipMapping::Streams::Pictures : ClipMapping::Streams::All, first.get());
        m_head.push_back({std::move(first), nullptr});
    }

    void Open(ClipMapping::Streams streams, const AVFrame* sample) {
        m_sound.emplace(SoundBeside(m_plugin, &m_pictures.Media(), m_plan.options,
                                    {m_input.source, m_input.span.Start(), m_pictures.Times()}, m_cancel));
        m_file =
            OpenOutput({m_plan.output, m_input.source, Whole(), m_plan.options.overwrite, m_pictures.Turned(),
                        m_input.request, *m_sound, m_pictures.Views(), m_plan.options.rate, streams},
                       sample, m_reporter, m_cancel);
    }

    SpanLimits Whole() const {
        if (!m_plan.options.share) return m_input.limits;
        return {m_plan.options.fromMs, m_plan.options.share->wholeToMs, {}};
    }

    // Where the pictures end, so does what lies beside them.
    void WriteBeside(SpanItem head) {
        Open(ClipMapping::Streams::Beside, nullptr);
        if (!m_file) return;
        m_head.push_back(std::move(head));
        const AVRational base =
            m_plan.options.rate ? av_inv_q(*m_plan.options.rate) : m_input.source.Pictures().time_base;
        Moment end;
        int64_t pictures = 0;
        const auto take = [&](const SpanItem& item) {
            CheckCancel(m_cancel);
            if (item.packet) {
                m_file->WritePacket(*item.packet);
                return;
            }
            end = {item.picture->pts + item.picture->pkt_duration, base};
            m_file->WriteSound(end);
            m_progress.Report(++pictures, false);
        };
        for (const SpanItem& item : m_head) take(item);
        while (const std::optional<SpanItem> item = m_input.Next()) take(*item);
        m_file->EndStreams(m_sound->EndBeside(end));
        m_file->Finish();
    }

    void RunStages() {
        // The first picture, which is made, is no work for these.
        m_workers.emplace(
            WorkerCount(m_plan.options.threads), m_plan.options.memory,
            [this](unsigned worker, int64_t number, SpanItem& item) {
                CheckCancel(m_cancel);
                m_limit.Do([&] { item = {Rendered(std::move(item), {worker, number + 1}), nullptr}; });
            });
        m_pictureBytes = m_pictures.BytesOnTheWay();
        StageGroup stages([this] {
            m_workers->Stop();
            m_pictures.Stop();
        });
        stages.Start([this] { Decode(); });
        stages.Start([this] { Encode(); });
        stages.Join();
    }

    ItemSize SizeOf(const SpanItem& item) const {
        if (item.packet) return {kPacketWeight, static_cast<size_t>(item.packet->size)};
        const size_t second = item.second ? PictureBytes(*item.second) : 0;
        return {kPictureWeight, std::max(m_pictureBytes, PictureBytes(*item.picture)) + second};
    }

    void Decode() {
        for (SpanItem& item : m_head) {
            const ItemSize size = SizeOf(item);
            if (!m_workers->PushThrough(std::move(item), size)) return;
        }
        m_head.clear();
        while (std::optional<SpanItem> item = m_limit.Do([this] { return m_input.Next(); })) {
            CheckCancel(m_cancel);
            const ItemSize size = SizeOf(*item);
            if (!(item->picture ? m_workers->Push(std::move(*item), size)
                                : m_workers->PushThrough(std::move(*item), size)))
                return;
        }
        m_workers->Finish();
    }

    void Encode() {
        while (std::optional<SpanItem> item = m_workers->Pop()) {
            CheckCancel(m_cancel);
            m_limit.Do([&] { Write(std::move(*item)); });
        }
        if (m_workers->Stopped() || !m_file) return;
        m_limit.Do([this] {
            m_file->EndStreams(m_sound->EndBeside(m_file->PicturesEnd()));
            m_file->Finish();
        });
    }

    void Write(SpanItem item) {
        if (item.packet) {
            m_file->WritePacket(*item.packet);
        } else if (m_plan.output.IsNumbered()) {
            m_numbered.Write(std::move(item.picture));
            m_progress.Report(m_numbered.Pictures(), false);
        } else {
            m_file->WritePicture(std::move(item.picture));
            m_progress.Report(m_file->Pictures(), false);
        }
    }

    const Plugin& m_plugin;
    RenderPlan m_plan;
    const std::atomic<bool>& m_cancel;
    Reporter m_reporter;
    ClipInput m_input;
    PicturePipeline m_pictures;
    ProgressMeter m_progress;
    std::optional<SoundPlan> m_sound; ///< once the span is known
    std::unique_ptr<MediaWriter> m_file;
    NumberedOutput m_numbered;   ///< used where the pictures get files of their own
    std::deque<SpanItem> m_head; ///< packets before the first picture, then that picture
    size_t m_pictureBytes = 0;   ///< that one takes on its way
    WorkLimit m_limit;
    std::optional<OrderedWorkers<SpanItem>> m_workers; ///< last member: ends before the others go
};

} // namespace

RenderResult RenderClip(const Plugin& plugin, RenderPlan plan, const RenderObserver& observer,
                        const std::atomic<bool>& cancel) {
    return ClipRender(plugin, std::move(plan), observer, cancel).Run();
}

} // namespace aveffect
