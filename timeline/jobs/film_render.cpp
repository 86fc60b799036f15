#include "timeline/jobs/film_render.h"

#include <algorithm>
#include <set>
#include <utility>

#include "host/jobs/composition.h"
#include "host/jobs/film_framing.h"
#include "host/media/media_manager.h"
#include "host/output/sound_formats.h"
#include "host/picture/canvas_fitting.h"
#include "host/picture/orientation.h"
#include "host/picture/working_format.h"
#include "host/support/ordered_workers.h"
#include "timeline/film/film_print.h"
#include "timeline/jobs/film_coding.h"
#include "timeline/jobs/segment_join.h"
#include "timeline/jobs/segment_store.h"
#include "timeline/playout/film_pictures.h"
#include "timeline/playout/film_sound.h"

namespace aveffect {

using mediabridge::AVFramePtr;

namespace {

/// What was asked for, and what the film wishes where nothing was.
FilmRenderOptions WithWishes(FilmRenderOptions options, const FilmWishes& wishes) {
    if (wishes.width && wishes.height && !options.framing.Resizes()) {
        options.framing.width = Extent{static_cast<double>(*wishes.width)};
        options.framing.height = Extent{static_cast<double>(*wishes.height)};
    }
    if (!options.rate) options.rate = wishes.rate;
    if (options.videoCodec.empty()) options.videoCodec = wishes.videoCodec;
    if (options.audioCodec.empty()) options.audioCodec = wishes.audioCodec;
    if (options.outputFormat.empty()) options.outputFormat = wishes.outputFormat;
    if (!options.limiter) options.limiter = wishes.limiter;
    return options;
}

/// An encoder for what the first clip was encoded by, where the container takes it and nothing else is asked
/// for.
FilmRenderOptions WithCodec(FilmRenderOptions options, const FilmLook& look) {
    if (!options.videoCodec.empty() || look.codec == AV_CODEC_ID_NONE) return options;
    const OutputPlan plan = PlanOutput(options);
    const bool clip = plan.muxer && plan.muxer->video_codec != AV_CODEC_ID_NONE && !plan.IsNumbered();
    if (clip && avformat_query_codec(plan.muxer, look.codec, FF_COMPLIANCE_NORMAL) == 1 &&
        avcodec_find_encoder(look.codec))
        options.videoCodec = avcodec_get_name(look.codec);
    return options;
}

std::vector<std::string> FilesOf(const Film& film) {
    std::set<std::string> files;
    for (const FilmItem* clip : ClipsOf(film.stack))
        if (clip->media.kind == FilmMedia::Kind::File) files.insert(clip->media.url);
    return {files.begin(), files.end()};
}

/// What is done to each clip's pictures. To fit them as they are is left to the canvas, around which what
/// lies below is seen.
Framing EachFraming(Framing each) {
    const bool contained =
        !each.background && each.fit.value_or(Framing::Fit::Contain) == Framing::Fit::Contain;
    if (contained) each.width = each.height = std::nullopt;
    if (contained) each.fit.reset();
    return each;
}

/// Pictures of a film without any, black: of the size that was asked for.
AVFramePtr BlackLook(const Framing& framing) {
    constexpr int kWidth = 1920, kHeight = 1080;
    const PictureSize size = Framer(framing).SizeFor({kWidth, kHeight}, 1);
    AVFramePtr picture(av_frame_alloc());
    if (!picture) throw NoMemory("no memory for a picture");
    picture->format = AV_PIX_FMT_BGR0;
    picture->width = size.width;
    picture->height = size.height;
    if (av_frame_get_buffer(picture.get(), 0) < 0) throw NoMemory("no memory for a picture");
    std::fill_n(picture->data[0],
                static_cast<size_t>(picture->linesize[0]) * static_cast<size_t>(size.height), uint8_t{0});
    return picture;
}

/// One render of a film, from its options to its result.
class FilmRender {
public:
    FilmRender(const Plugin& plugin, const Film& film, const FilmRenderOptions& options,
               const RenderObserver& observer, const std::atomic<bool>& cancel)
        : m_film(film)
        , m_reporter(observer)
        , m_terms(options.sdr, m_reporter)
        , m_look(LookAt(film, m_terms, cancel))
        , m_options(WithCodec(WithWishes(options, film.wishes), m_look))
        , m_plan(PlanComposition(m_options, FilesOf(film)))
        , m_setup{plugin,
                  NearestRate(m_plan, m_options.rate.value_or(m_look.rate)),
                  {},
                  {},
                  m_terms,
                  m_reporter,
                  m_options.threads,
                  WorkerCount(m_options.threads),
                  m_lines,
                  cancel} {
        RequireFilmRate(m_options.rate.value_or(m_look.rate));
        SayRate(m_plan, m_options.rate.value_or(m_look.rate), m_setup.rate, m_reporter);
        FindCanvas();
    }

    RenderResult Run() {
        const PictureSpan all{0, PicturesOf(m_film, m_setup.rate)};
        if (const auto& share = m_options.share) {
            FilmOptions options = m_options;
            options.silent = true;
            return Draw({share->begin, share->end}, m_plan, options, std::nullopt);
        }
        if (!m_options.work.empty()) return RunInPieces(all);
        return Draw(all, m_plan, m_options, MakeSound());
    }

    FilmShape Shape() const { return {m_setup.rate, PicturesOf(m_film, m_setup.rate)}; }

private:
    // The canvas, and a look that is like all of the film: opaque and of its size.
    void FindCanvas() {
        if (!m_look.picture) m_look.picture = BlackLook(m_options.framing);
        const Framing each = FilmFraming(
            m_options.framing, {m_look.source, CanvasOf(*m_look.picture), m_look.still}, m_reporter);
        AVFramePtr picture = Framer(each).Apply(std::move(m_look.picture));
        m_setup.canvas = CanvasOf(*picture);
        m_setup.framing = EachFraming(each);
        const auto format = static_cast<AVPixelFormat>(picture->format);
        if (IsGrey(format) || HasAlpha(format)) {
            picture = Fitter(m_setup.canvas, &m_terms).Fit(*picture);
            picture->format = AV_PIX_FMT_BGR0;
        }
        m_look.picture = std::move(picture);
    }

    // Begins anew, so that a piece is the same whatever was rendered before it.
    RenderResult Draw(const PictureSpan& span, const OutputPlan& plan, const FilmOptions& options,
                      std::optional<SoundFeed> sound) {
        FilmPictures pictures(m_film, m_setup);
        Composition composition{m_setup.rate, span.Pictures(),
                                [&](int64_t index) { return pictures.Draw(span.begin + index); },
                                [&] { return pictures.Damage(); }, m_setup.workers};
        composition.sound = std::move(sound);
        composition.before = span.begin;
        composition.all = PicturesOf(m_film, m_setup.rate);
        composition.stop = [this] { m_lines.Stop(); };
        AVFramePtr look(av_frame_clone(m_look.picture.get()));
        if (!look) throw NoMemory("no memory for a picture");
        return RenderComposition(std::move(composition), plan, options, std::move(look), m_terms, m_reporter,
                                 m_setup.cancel);
    }

    std::optional<SoundFeed> MakeSound() {
        const std::optional<FilmSoundLook> look = LookAtSound(m_film, m_setup.cancel);
        if (!look) return std::nullopt;
        FilmOptions options = m_options;
        if (options.audioCodec.empty() && !m_plan.IsNumbered())
            options.audioCodec = UsualSoundCodec(m_plan, look->codec, look->bits);
        SoundFeed sound{EncoderBeside(options, m_plan, look->shape, m_reporter), nullptr};
        if (!sound.encoder) return std::nullopt;
        sound.supply = std::make_unique<FilmSound>(FilmSoundSetup{m_setup.plugin,
                                                                  &m_soundMedia,
                                                                  m_film,
                                                                  sound.encoder->Form(),
                                                                  {},
                                                                  m_options.limiter.value_or(true),
                                                                  m_setup.rate,
                                                                  m_reporter,
                                                                  m_setup.cancel});
        return sound;
    }

    RenderResult RunInPieces(const PictureSpan& all) {
        if (m_plan.IsNumbered() || m_options.output == "-" || m_plan.muxer->video_codec == AV_CODEC_ID_GIF ||
            m_plan.muxer->video_codec == AV_CODEC_ID_APNG)
            throw Error(ErrorKind::Usage,
                        "--work keeps pieces of clips in files; " + m_options.output + " is no such clip");
        constexpr int64_t kSeconds = 5;
        const int64_t most = std::max<int64_t>(1, av_rescale(kSeconds, m_setup.rate.num, m_setup.rate.den));
        const std::vector<PictureSpan> spans = CutFilm(m_film, m_setup.rate, most);
        const std::string coding = CodingText(m_options, m_plan, m_setup, *m_look.picture);
        SegmentStore store(m_options.work, m_plan.Kind(), m_options.workLimit);
        std::vector<Segment> segments;
        std::vector<std::string> keys;
        for (const PictureSpan& span : spans) {
            const FilmTime begin(span.begin, m_setup.rate);
            const FilmRange part{begin, FilmTime(span.end, m_setup.rate) - begin};
            keys.push_back(SegmentStore::KeyOf(coding + "\n" + std::to_string(span.Pictures()) + "\n" +
                                               PrintPictures(m_film, part)));
            segments.push_back({store.PathOf(keys.back()), span.Pictures()});
        }
        const std::set<std::string> needed(keys.begin(), keys.end());
        std::optional<std::string> damage;
        std::vector<std::string>
            damaged; // pieces, which are not kept: who renders again is to hear of it again
        size_t kept = 0;
        for (size_t index = 0; index < spans.size(); ++index) {
            if (store.Holds(keys[index], spans[index].Pictures(), m_setup.cancel)) {
                ++kept;
                continue;
            }
            store.MakeRoom(needed);
            const std::optional<std::string> found = DrawPiece(spans[index], segments[index].path);
            if (found) damaged.push_back(keys[index]);
            Add(damage, found);
        }
        store.MakeRoom(needed);
        m_reporter.Note(std::to_string(kept) + " of " + std::to_string(spans.size()) +
                        " pieces of the film were there already");
        Add(damage, JoinSegments({std::move(segments), m_setup.rate}, m_plan, m_options.overwrite,
                                 MakeSound(), m_setup.cancel)
                        .Text());
        for (const std::string& key : damaged) store.Remove(key);
        return {all.Pictures(), damage};
    }

    std::optional<std::string> DrawPiece(const PictureSpan& span, const std::string& path) {
        FilmRenderOptions options = m_options;
        options.output = path;
        options.overwrite = true; // another program may have made the same one meanwhile
        options.silent = true;
        options.videoCodec = m_plan.encoder.codec->name;
        return Draw(span, PlanOutput(options), options, std::nullopt).inputDamage;
    }

    static void Add(std::optional<std::string>& all, const std::optional<std::string>& more) {
        if (more) all = all ? *all + "\n" + *more : *more;
    }

    const Film& m_film;
    Reporter m_reporter;
    IntakeTerms m_terms;
    FilmLook m_look;
    const FilmRenderOptions m_options;
    const OutputPlan m_plan;
    EffectLines m_lines;
    PlayoutSetup m_setup;
    MediaManager m_soundMedia{&m_setup.cancel}; ///< what effects on sound read
};

} // namespace

RenderResult RenderFilm(const Plugin& plugin, const Film& film, const FilmRenderOptions& options,
                        const RenderObserver& observer, const std::atomic<bool>& cancel) {
    return FilmRender(plugin, film, options, observer, cancel).Run();
}

FilmShape ShapeOfFilm(const Plugin& plugin, const Film& film, const FilmRenderOptions& options,
                      const RenderObserver& observer, const std::atomic<bool>& cancel) {
    return FilmRender(plugin, film, options, observer, cancel).Shape();
}

} // namespace aveffect
