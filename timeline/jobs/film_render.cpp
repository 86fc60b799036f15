#include "timeline/jobs/film_render.h"

#include <algorithm>
#include <set>
#include <utility>

#include "host/jobs/composition.h"
#include "host/jobs/film_framing.h"
#include "host/picture/canvas_fitting.h"
#include "host/picture/orientation.h"
#include "host/picture/working_format.h"
#include "host/support/ordered_workers.h"
#include "timeline/playout/film_pictures.h"

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
    if (!picture) throw Error(ErrorKind::Output, "no memory for a picture");
    picture->format = AV_PIX_FMT_BGR0;
    picture->width = size.width;
    picture->height = size.height;
    if (av_frame_get_buffer(picture.get(), 0) < 0) throw Error(ErrorKind::Output, "no memory for a picture");
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
        , m_options(WithWishes(options, film.wishes))
        , m_reporter(observer)
        , m_plan(PlanComposition(m_options, FilesOf(film)))
        , m_terms(m_options.sdr, m_reporter)
        , m_look(LookAt(film, m_terms, cancel))
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
        SayRate(m_plan, m_options.rate.value_or(m_look.rate), m_setup.rate, m_reporter);
        Shape();
    }

    RenderResult Run() {
        FilmPictures pictures(m_film, m_setup);
        Composition composition{m_setup.rate,
                                std::max<int64_t>(1, m_film.stack.duration.Nearest(m_setup.rate)),
                                [&](int64_t index) { return pictures.Draw(index); },
                                [&] { return pictures.Damage(); }, m_setup.workers};
        composition.stop = [this] { m_lines.Stop(); };
        return RenderComposition(std::move(composition), m_plan, m_options, std::move(m_look.picture),
                                 m_terms, m_reporter, m_setup.cancel);
    }

private:
    // The canvas, and a look that is like all of the film: opaque and of its size.
    void Shape() {
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

    const Film& m_film;
    const FilmRenderOptions m_options;
    Reporter m_reporter;
    const OutputPlan m_plan;
    IntakeTerms m_terms;
    FilmLook m_look;
    EffectLines m_lines;
    PlayoutSetup m_setup;
};

} // namespace

RenderResult RenderFilm(const Plugin& plugin, const Film& film, const FilmRenderOptions& options,
                        const RenderObserver& observer, const std::atomic<bool>& cancel) {
    return FilmRender(plugin, film, options, observer, cancel).Run();
}

} // namespace aveffect
