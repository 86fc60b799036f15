#include "host/jobs/composition.h"

#include <algorithm>
#include <utility>

#include "host/jobs/film_framing.h"
#include "host/media/source_request.h"
#include "host/output/media_writer.h"
#include "host/output/numbered_output.h"
#include "host/output/output_file.h"
#include "host/output/picture_output.h"
#include "host/picture/framer.h"
#include "host/picture/light_metadata.h"
#include "host/support/ordered_workers.h"
#include "host/support/progress_meter.h"
#include "host/support/work_limit.h"

namespace aveffect {

using mediabridge::AVFramePtr;

int64_t PicturesIn(int64_t milliseconds, AVRational rate) {
    return av_rescale_q(milliseconds, kMilliseconds, av_inv_q(rate));
}

AVRational RequireFilmRate(AVRational rate) {
    constexpr AVRational kFastest = {1000, 1};
    if (av_cmp_q(rate, kFastest) <= 0) return rate;
    throw Error(ErrorKind::Usage, "the clip claims " + std::to_string(static_cast<int64_t>(av_q2d(rate))) +
                                      " pictures a second, more than 1000; --fps says how many are wanted");
}

void RequireSeen(int64_t pictures, int64_t milliseconds, AVRational rate) {
    if (pictures > 0) return;
    const int64_t picture = av_rescale_q_rnd(1, av_inv_q(rate), kMilliseconds, AV_ROUND_UP);
    throw Error(ErrorKind::Usage, "a transition of " + SecondsText(milliseconds) +
                                      " is too short to be seen: a picture lasts " + SecondsText(picture));
}

OutputPlan PlanComposition(const FilmOptions& options, const std::vector<std::string>& inputs) {
    OutputPlan plan = PlanOutput(options);
    CheckFilmFraming(options.framing);
    if (plan.IsStill() && !plan.IsNumbered())
        throw Error(ErrorKind::Usage, options.output + " holds one picture, but the result is a clip");
    if (plan.IsSound())
        throw Error(ErrorKind::Usage,
                    options.output + " would hold sound alone, but the result has pictures");
    for (const std::string& input : inputs) {
        const std::string path = ParseSourceUrl(input).path;
        RequireOtherFiles(plan, path);
        OutputFile::Check(plan.FirstFile(), path, options.overwrite);
    }
    return plan;
}

std::unique_ptr<SoundEncoder> EncoderBeside(const FilmOptions& options, const OutputPlan& plan,
                                            const SoundShape& shape, Reporter& reporter) {
    if (options.silent) return nullptr;
    if (plan.IsNumbered()) {
        reporter.Warn(kNoSoundBeside);
        return nullptr;
    }
    if (plan.muxer->audio_codec == AV_CODEC_ID_NONE) {
        reporter.Warn("." + plan.Kind() + " files can't hold sound; it is left out");
        return nullptr;
    }
    auto encoder = std::make_unique<SoundEncoder>(plan, options.audioCodec, shape);
    reporter.Note(encoder->Summary());
    return encoder;
}

namespace {

/// A picture on its way from its beginning to the encoder.
struct Sketch {
    Drawing drawing;
    AVFramePtr picture = {};
};

/// What pictures have behind them that are on their way: two in BGRA, and what they become.
size_t BytesOf(const AVFrame& look) {
    constexpr size_t kPictures = 3, kPixel = 4;
    return kPictures * kPixel * static_cast<size_t>(look.width) * static_cast<size_t>(look.height);
}

/// A film on its way from what is drawn to its files.
class CompositionRender {
public:
    CompositionRender(Composition composition, const OutputPlan& plan, const FilmOptions& options,
                      AVFramePtr look, IntakeTerms& terms, Reporter& reporter,
                      const std::atomic<bool>& cancel)
        : m_composition(std::move(composition))
        , m_plan(plan)
        , m_overwrite(options.overwrite)
        , m_besidePictures(options.besidePictures)
        , m_memory(options.memory)
        , m_cancel(cancel)
        , m_terms(terms)
        , m_reporter(reporter)
        , m_behind(FramingBehind(options.framing))
        , m_look(Framer(m_behind).Apply(std::move(look)))
        , m_finishes(m_composition.workers)
        , m_limit(options.threads)
        , m_progress(reporter, std::max(m_composition.pictures, m_composition.all)) {}

    /// Gives the files their names when the terms are concluded.
    RenderResult Run() {
        std::unique_ptr<MediaWriter> file;
        if (m_plan.IsNumbered()) {
            NumberedOutput files(m_plan, m_overwrite, m_cancel);
            files.Run([&] {
                DrawAll(Finished(m_composition.draw(0), 0),
                        [&](AVFramePtr picture) { files.Write(std::move(picture)); });
            });
        } else {
            file = m_besidePictures ? WriteBeside() : WriteClip();
        }
        if (file || m_plan.IsNumbered()) m_terms.Conclude();
        DamageReport damage = m_composition.damage();
        if (file) damage.Add(file->Damage());
        RenderResult result{m_composition.pictures, damage.Text()};
        if (file && m_besidePictures) result.besideStartUs = file->File().FirstUs();
        m_progress.Report(m_composition.before + m_composition.pictures, true);
        if (file) file->Publish(); // last, for nothing may fail once the file has its name
        return result;
    }

private:
    /// A worker's own way into the encoder's form.
    struct Finish {
        Framer behind; ///< the transitions
        PictureOutput output;
    };

    Finish& FinishOf(unsigned worker) {
        std::unique_ptr<Finish>& finish = m_finishes[worker];
        if (!finish)
            finish.reset(new Finish{Framer(m_behind),
                                    PictureOutput(m_plan, OriginOf(*m_look), *m_look, m_terms, m_reporter)});
        return *finish;
    }

    AVFramePtr Finished(const Drawing& drawing, unsigned worker) {
        Finish& finish = FinishOf(worker);
        return finish.output.Convert(finish.behind.Apply(drawing(worker)));
    }

    // What the encoder learns, it learns from the look: parts of a whole are encoded alike.
    AVFramePtr Sample() {
        AVFramePtr look(av_frame_clone(m_look.get()));
        if (!look) throw NoMemory("no memory for a picture");
        look = FinishOf(0).output.Convert(std::move(look));
        if (IsHighDynamicRange(*look)) KeepLight(*m_look, *look);
        return look;
    }

    // All but its name.
    std::unique_ptr<MediaWriter> WriteClip() {
        const AVFramePtr sample = Sample();
        auto file = std::make_unique<MediaWriter>(m_plan);
        const AVRational rate = m_composition.rate;
        MarkLight(file->AddPictures(*sample, {av_inv_q(rate), {rate, true}}), *sample);
        if (m_composition.sound) file->AddSound(std::move(*m_composition.sound));
        file->Start(m_overwrite, m_cancel);
        DrawAll(Finished(m_composition.draw(0), 0), [&](AVFramePtr picture) {
            picture->pts = file->Pictures();
            picture->pkt_duration = 1;
            file->WritePicture(std::move(picture));
        });
        file->EndStreams(file->PicturesEnd());
        file->Finish();
        return file;
    }

    // The sound alone; null where there is none.
    std::unique_ptr<MediaWriter> WriteBeside() {
        if (!m_composition.sound) return nullptr;
        auto file = std::make_unique<MediaWriter>(m_plan);
        file->AddSound(std::move(*m_composition.sound));
        file->Start(m_overwrite, m_cancel);
        const AVRational interval = av_inv_q(m_composition.rate);
        for (int64_t picture = 1; picture <= m_composition.pictures; ++picture) {
            CheckCancel(m_cancel);
            file->WriteSound({picture, interval});
        }
        file->EndStreams(Moment{m_composition.pictures, interval});
        file->Finish();
        return file;
    }

    /// Begins what follows the first picture on one thread, and hands all over on another, as the encoder
    /// takes them.
    void DrawAll(AVFramePtr first, const std::function<void(AVFramePtr)>& take) {
        OrderedWorkers<Sketch> workers(
            m_composition.workers, m_memory, [&](unsigned worker, int64_t, Sketch& sketch) {
                CheckCancel(m_cancel);
                sketch.picture = m_limit.Do([&] { return Finished(sketch.drawing, worker); });
                sketch.drawing = nullptr;
            });
        StageGroup stages([&] {
            if (m_composition.stop) m_composition.stop();
            workers.Stop();
        });
        stages.Start([&] {
            for (int64_t index = 1; index < m_composition.pictures; ++index) {
                CheckCancel(m_cancel);
                Drawing drawing = m_limit.Do([&] { return m_composition.draw(index); });
                if (!workers.Push({std::move(drawing)}, {kPictureWeight, BytesOf(*m_look)})) return;
            }
            workers.Finish();
        });
        stages.Start([&] {
            take(std::move(first));
            for (int64_t done = 1; std::optional<Sketch> sketch = workers.Pop();
                 m_progress.Report(m_composition.before + ++done, false)) {
                CheckCancel(m_cancel);
                m_limit.Do([&] { take(std::move(sketch->picture)); });
            }
        });
        stages.Join();
        CheckCancel(m_cancel);
    }

    Composition m_composition;
    const OutputPlan& m_plan;
    const bool m_overwrite, m_besidePictures;
    const size_t m_memory;
    const std::atomic<bool>& m_cancel;
    IntakeTerms& m_terms;
    Reporter& m_reporter;
    const Framing m_behind; ///< the transitions
    const AVFramePtr m_look;
    std::vector<std::unique_ptr<Finish>> m_finishes; ///< by workers
    WorkLimit m_limit;
    ProgressMeter m_progress;
};

} // namespace

RenderResult RenderComposition(Composition composition, const OutputPlan& plan, const FilmOptions& options,
                               AVFramePtr look, IntakeTerms& terms, Reporter& reporter,
                               const std::atomic<bool>& cancel) {
    return CompositionRender(std::move(composition), plan, options, std::move(look), terms, reporter, cancel)
        .Run();
}

} // namespace aveffect
