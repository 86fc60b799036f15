#include "timeline/playout/effect_line.h"

#include <algorithm>
#include <utility>

#include "host/support/error.h"

namespace aveffect {

using mediabridge::AVFramePtr;

void EffectLines::Add(const std::shared_ptr<EffectLine>& line) {
    const std::scoped_lock lock(m_mutex);
    std::erase_if(m_lines, [](const std::weak_ptr<EffectLine>& other) { return other.expired(); });
    m_lines.push_back(line);
    if (m_stopped) line->Stop();
}

void EffectLines::Stop() {
    const std::scoped_lock lock(m_mutex);
    m_stopped = true;
    for (const std::weak_ptr<EffectLine>& line : m_lines)
        if (const auto held = line.lock()) held->Stop();
}

namespace {

std::vector<EffectSpec> OnPictures(const FilmItem& item) {
    std::vector<EffectSpec> effects;
    for (const FilmEffect& effect : item.effects)
        if (effect.medium == Medium::Video) effects.push_back(effect.spec);
    return effects;
}

AVFramePtr Another(const AVFrame& picture) {
    AVFramePtr other(av_frame_clone(&picture));
    if (!other) throw NoMemory("no memory for a picture");
    return other;
}

} // namespace

EffectLine::Way::Way(EffectLine& line, Way* first)
    : chain(first ? EffectChain(&first->chain)
                  : EffectChain(line.m_setup.plugin, &line.m_media, line.m_effects, line.m_span))
    , stage(chain, line.m_media, "auto", nullptr, line.m_setup.terms, line.m_setup.reporter) {}

std::shared_ptr<EffectLine> EffectLine::Make(const FilmItem& item, const PlayoutSetup& setup) {
    auto line = std::make_shared<EffectLine>(item, setup);
    setup.lines.Add(line);
    return line;
}

EffectLine::EffectLine(const FilmItem& item, const PlayoutSetup& setup)
    : m_setup(setup)
    , m_effects(OnPictures(item))
    , m_span{0, item.duration.Milliseconds(), setup.rate.num, setup.rate.den}
    , m_media(&setup.cancel)
    , m_ways(setup.workers + 1) {
    m_media.TakeOn(setup.terms);
    m_ways.back() = std::make_unique<Way>(*this, nullptr);
    m_changesAlpha = m_ways.back()->chain.ChangesAlpha();
}

AVFramePtr EffectLine::Make(unsigned worker, AVFramePtr picture, int timeMs, int64_t number) {
    if (number == 0) {
        m_sample = Another(*picture);
        m_sampleMs = timeMs;
    }
    std::unique_ptr<Way>& way = m_ways[worker];
    if (!way) {
        auto further = std::make_unique<Way>(*this, m_ways.back().get());
        further->stage.ApplyEffects(Another(*m_sample), m_sampleMs, 0);
        way = std::move(further);
    }
    return way->stage.ApplyEffects(std::move(picture), timeMs, 0, nullptr, number);
}

void EffectLine::Stop() { m_ways.back()->chain.Stop(); }

} // namespace aveffect
