// Parts that are made of others.
#include <algorithm>
#include <climits>
#include <map>
#include <utility>

#include "host/picture/canvas_fitting.h"
#include "timeline/playout/clip_part.h"
#include "timeline/playout/effect_line.h"
#include "timeline/playout/layers.h"

namespace aveffect {

using mediabridge::AVFramePtr;

namespace {

/// Children one after the other. No others are open than those that are seen.
class TrackPart : public PicturePart {
public:
    TrackPart(const FilmItem& item, const PlayoutSetup& setup)
        : m_item(item)
        , m_setup(setup)
        , m_layering(setup) {
        FilmTime begin;
        for (const FilmItem& child : item.children) {
            m_begins.push_back(begin);
            begin = begin + child.duration;
        }
        m_begins.push_back(begin);
        m_across.resize(m_begins.size());
        for (const FilmItem::Transition& transition : item.transitions)
            m_across[transition.cut] = &transition;
    }

    Sketch Begin(const FilmTime& moment) override {
        const FilmTime own = m_item.OwnTime(moment);
        const auto behind = std::upper_bound(m_begins.begin(), m_begins.end(), own);
        const auto place = static_cast<size_t>(behind - m_begins.begin());
        for (const size_t cut : {place - 1, place})
            if (cut < m_across.size() && m_across[cut] && IsAcross(*m_across[cut], own))
                return Cross(*m_across[cut], own);
        Close(place, place);
        return Show(place, own);
    }

    DamageReport Damage() const override {
        DamageReport all = m_damage;
        for (const auto& [place, part] : m_open) all.Add(part->Damage());
        return all;
    }

private:
    bool IsAcross(const FilmItem::Transition& transition, const FilmTime& own) const {
        const FilmTime cut = m_begins[transition.cut];
        return own >= cut - transition.before && own < cut + transition.after;
    }

    Sketch Cross(const FilmItem::Transition& transition, const FilmTime& own) {
        Close(transition.cut, transition.cut + 1);
        const FilmTime across = own - (m_begins[transition.cut] - transition.before);
        const FilmTime length = transition.before + transition.after;
        Sketch from = Show(transition.cut, own);
        return m_layering.Cross(transition.effect, std::move(from), Show(transition.cut + 1, own),
                                across.Milliseconds(), std::max<int64_t>(1, length.Milliseconds()));
    }

    // Places count from 1; nothing is at 0, before the track, and behind its last child.
    Sketch Show(size_t place, const FilmTime& own) {
        if (place == 0 || place > m_item.children.size()) return {};
        const FilmItem& child = m_item.children[place - 1];
        if (!child.enabled || child.kind == FilmItem::Kind::Gap) return {};
        std::unique_ptr<PicturePart>& part = m_open[place];
        if (!part) part = MakePart(child, m_setup);
        return part->Begin(own - m_begins[place - 1]);
    }

    // All but what lies between two places.
    void Close(size_t first, size_t last) {
        std::erase_if(m_open, [&](const auto& open) {
            if (open.first >= first && open.first <= last) return false;
            m_damage.Add(open.second->Damage());
            return true;
        });
    }

    const FilmItem& m_item;
    const PlayoutSetup& m_setup;
    Layering m_layering;
    std::vector<FilmTime> m_begins;                        ///< of the children, and the end of the last one
    std::vector<const FilmItem::Transition*> m_across;     ///< by the same, null where there is a plain cut
    std::map<size_t, std::unique_ptr<PicturePart>> m_open; ///< by places
    DamageReport m_damage;                                 ///< of those that were closed
};

/// Children above each other.
class StackPart : public PicturePart {
public:
    StackPart(const FilmItem& item, const PlayoutSetup& setup)
        : m_item(item)
        , m_layering(setup) {
        for (const FilmItem& child : item.children) {
            const bool sound =
                child.kind == FilmItem::Kind::Track && child.carries == FilmItem::Carries::Sound;
            if (!child.enabled || sound) continue;
            std::unique_ptr<PicturePart> part = MakePart(child, setup);
            m_layers.push_back({&child, std::move(part)});
        }
    }

    // From the top downwards: what is covered need not be begun.
    Sketch Begin(const FilmTime& moment) override {
        const FilmTime own = m_item.OwnTime(moment);
        std::vector<Sketch> seen;
        for (auto layer = m_layers.rbegin(); layer != m_layers.rend(); ++layer) {
            if (own >= layer->item->duration) continue;
            if (Sketch sketch = layer->part->Begin(own)) seen.push_back(std::move(sketch));
            if (!seen.empty() && seen.back().opaque) break;
        }
        std::ranges::reverse(seen);
        return m_layering.Stack(std::move(seen), false);
    }

    DamageReport Damage() const override {
        DamageReport all;
        for (const Layer& layer : m_layers) all.Add(layer.part->Damage());
        return all;
    }

private:
    struct Layer {
        const FilmItem* item;
        std::unique_ptr<PicturePart> part;
    };

    const FilmItem& m_item;
    Layering m_layering;
    std::vector<Layer> m_layers; ///< from below upwards
};

/// What is put together, with effects on it.
class EffectPart : public PicturePart {
public:
    EffectPart(const FilmItem& item, const PlayoutSetup& setup, std::unique_ptr<PicturePart> inner)
        : m_setup(setup)
        , m_inner(std::move(inner))
        , m_ways(std::make_shared<Ways>(item, setup)) {}

    Sketch Begin(const FilmTime& moment) override {
        Sketch inner = m_inner->Begin(moment);
        if (!inner) return {};
        const int timeMs = static_cast<int>(std::clamp<int64_t>(moment.Milliseconds(), 0, INT_MAX));
        const int64_t number = m_begun++;
        const bool opaque = inner.opaque && !m_ways->line->ChangesAlpha();
        const auto finish = [ways = m_ways, inner = std::move(inner), timeMs, number,
                             opaque](unsigned worker) {
            return ways->Make(worker, inner, timeMs, number, opaque);
        };
        if (number > 0) return {finish, opaque};
        const auto held = std::make_shared<AVFramePtr>(finish(m_setup.workers));
        return {[held](unsigned) { return std::move(*held); }, opaque};
    }

    DamageReport Damage() const override {
        DamageReport all = m_inner->Damage();
        all.Add(m_ways->line->Damage());
        return all;
    }

private:
    struct Ways {
        Ways(const FilmItem& item, const PlayoutSetup& setup)
            : line(EffectLine::Make(item, setup)) {
            for (unsigned worker = 0; worker <= setup.workers; ++worker)
                fittings.emplace_back(Fitter(setup.canvas, &setup.terms));
        }

        AVFramePtr Make(unsigned worker, const Sketch& inner, int timeMs, int64_t number, bool opaque) {
            AVFramePtr picture = line->Make(worker, inner.finish(worker), timeMs, number);
            if (!opaque) return fittings[worker].Fit(std::move(picture));
            if (picture->format == AV_PIX_FMT_BGRA) picture->format = AV_PIX_FMT_BGR0;
            return fittings[worker].Show(std::move(picture));
        }

        std::shared_ptr<EffectLine> line;
        std::vector<CanvasFitting> fittings; ///< by workers
    };

    const PlayoutSetup& m_setup;
    std::unique_ptr<PicturePart> m_inner;
    std::shared_ptr<Ways> m_ways;
    int64_t m_begun = 0;
};

/// A part on black.
class BlackPart : public PicturePart {
public:
    BlackPart(const PlayoutSetup& setup, std::unique_ptr<PicturePart> inner)
        : m_layering(setup)
        , m_inner(std::move(inner)) {}

    Sketch Begin(const FilmTime& moment) override {
        std::vector<Sketch> layers;
        layers.push_back(m_inner->Begin(moment));
        return m_layering.Stack(std::move(layers), true);
    }
    DamageReport Damage() const override { return m_inner->Damage(); }

private:
    Layering m_layering;
    std::unique_ptr<PicturePart> m_inner;
};

/// Nothing.
class GapPart : public PicturePart {
public:
    Sketch Begin(const FilmTime&) override { return {}; }
    DamageReport Damage() const override { return {}; }
};

std::unique_ptr<PicturePart> MakePlain(const FilmItem& item, const PlayoutSetup& setup) {
    switch (item.kind) {
    case FilmItem::Kind::Track:
        return std::make_unique<TrackPart>(item, setup);
    case FilmItem::Kind::Stack:
        return std::make_unique<StackPart>(item, setup);
    default:
        return std::make_unique<GapPart>();
    }
}

std::unique_ptr<PicturePart> WithEffects(const FilmItem& item, const PlayoutSetup& setup,
                                         std::unique_ptr<PicturePart> part) {
    const bool effects = std::ranges::any_of(
        item.effects, [](const FilmEffect& effect) { return effect.medium == Medium::Video; });
    if (!effects) return part;
    return std::make_unique<EffectPart>(item, setup, std::move(part));
}

} // namespace

std::unique_ptr<PicturePart> MakePart(const FilmItem& item, const PlayoutSetup& setup) {
    if (item.kind == FilmItem::Kind::Clip) return std::make_unique<ClipPart>(item, setup);
    return WithEffects(item, setup, MakePlain(item, setup));
}

std::unique_ptr<PicturePart> MakeWhole(const Film& film, const PlayoutSetup& setup) {
    return WithEffects(film.stack, setup, std::make_unique<BlackPart>(setup, MakePlain(film.stack, setup)));
}

} // namespace aveffect
