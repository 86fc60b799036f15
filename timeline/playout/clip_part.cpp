#include "timeline/playout/clip_part.h"

#include <algorithm>
#include <climits>
#include <utility>
#include <vector>

#include "host/picture/canvas_fitting.h"
#include "host/picture/working_format.h"
#include "timeline/playout/effect_line.h"

namespace aveffect {

using mediabridge::AVFramePtr;

/// From the media's picture to the canvas, by workers.
struct ClipPart::Ways {
    struct Way {
        Framer framer;
        CanvasFitting fitting;
    };

    Ways(const FilmItem& item, const PlayoutSetup& setup)
        : line(EffectLine::Make(item, setup)) {
        for (unsigned worker = 0; worker <= setup.workers; ++worker)
            ways.push_back({Framer(setup.framing),
                            CanvasFitting(Fitter(setup.canvas, &setup.terms, Fitter::Around::Nothing))});
    }

    /// Alpha: the picture has some that means something.
    AVFramePtr Frame(unsigned worker, AVFramePtr picture, int timeMs, int64_t number, bool alpha) {
        picture = line->Make(worker, std::move(picture), timeMs, number);
        if (!alpha && picture->format == AV_PIX_FMT_BGRA) picture->format = AV_PIX_FMT_BGR0;
        return ways[worker].framer.Apply(std::move(picture));
    }
    AVFramePtr Fit(unsigned worker, AVFramePtr picture, bool opaque) {
        CanvasFitting& fitting = ways[worker].fitting;
        return opaque ? fitting.Show(std::move(picture)) : fitting.Fit(std::move(picture));
    }

    std::shared_ptr<EffectLine> line;
    std::vector<Way> ways;
};

ClipPart::ClipPart(const FilmItem& item, const PlayoutSetup& setup)
    : m_item(item)
    , m_setup(setup) {}

Sketch ClipPart::Begin(const FilmTime& moment) {
    if (!m_ways) {
        m_source =
            OpenPictures(m_item.media, {m_setup.rate, &m_setup.terms, m_setup.threads, m_setup.cancel});
        m_ways = std::make_shared<Ways>(m_item, m_setup);
    }
    AVFramePtr picture = m_source ? m_source->At(m_item.OwnTime(moment)) : nullptr;
    if (!picture) return {};
    const bool alpha = HasAlpha(static_cast<AVPixelFormat>(picture->format)) || m_ways->line->ChangesAlpha();
    const int timeMs = static_cast<int>(std::clamp<int64_t>(moment.Milliseconds(), 0, INT_MAX));
    const int64_t number = m_begun++;
    const unsigned here = m_setup.workers;
    if (number == 0) {
        picture = m_ways->Frame(here, std::move(picture), timeMs, number, alpha);
        m_fills = m_ways->ways[here].fitting.Fills(*picture);
    }
    const bool opaque = m_fills && !alpha;
    const auto held = std::make_shared<AVFramePtr>(std::move(picture));
    if (number == 0)
        return {[ways = m_ways, held, opaque](unsigned worker) {
                    return ways->Fit(worker, std::move(*held), opaque);
                },
                opaque};
    return {[ways = m_ways, held, timeMs, number, alpha, opaque](unsigned worker) {
                AVFramePtr framed = ways->Frame(worker, std::move(*held), timeMs, number, alpha);
                return ways->Fit(worker, std::move(framed), opaque);
            },
            opaque};
}

DamageReport ClipPart::Damage() const {
    DamageReport damage;
    if (m_source) damage = m_source->Damage();
    if (m_ways) damage.Add(m_ways->line->Damage());
    return damage;
}

} // namespace aveffect
