#include "timeline/playout/item_sound.h"

#include <algorithm>
#include <utility>

#include "host/effects/audio_effect_chain.h"
#include "host/settings/catalogue_lookup.h"
#include "host/sound/staged_sound.h"
#include "timeline/playout/tempo_sound.h"
#include "timeline/playout/voice_mix.h"

namespace aveffect {

namespace {

using Kind = FilmItem::Kind;

/// What is in a track of sound is heard; stacks and tracks outside of one, for what may be in them.
bool IsHeard(const FilmItem& item, bool inTrack) {
    if (!item.enabled) return false;
    if (item.kind == Kind::Track) return item.carries == FilmItem::Carries::Sound;
    if (item.kind == Kind::Stack) return true;
    return inTrack && (item.kind == Kind::Clip || BringsSound(SoundEffects(item)));
}

void AddHeard(const FilmItem& item, bool inTrack, std::vector<const FilmItem*>& heard) {
    if (!IsHeard(item, inTrack)) return;
    heard.push_back(&item);
    for (const FilmItem& child : item.children) AddHeard(child, inTrack || item.kind == Kind::Track, heard);
}

/// Around a cut; empty without a transition.
struct CutRange {
    FilmTime begin, end;

    CutRange(const FilmTime& cut, const FilmItem::Transition* transition)
        : begin(transition ? cut - transition->before : cut)
        , end(transition ? cut + transition->after : cut) {}
    SampleRange In(AVRational rate) const { return {begin.Nearest(rate), end.Nearest(rate)}; }
};

/// Sounds of which each takes what the one before it gives.
class SoundLine : public SampleSource {
public:
    SampleSource& Last() { return *m_sounds.back(); }
    template <typename Sound, typename... Arguments>
    void Add(Arguments&&... arguments) {
        m_sounds.push_back(std::make_unique<Sound>(std::forward<Arguments>(arguments)...));
    }
    int64_t Available(int64_t wanted) override { return Last().Available(wanted); }
    mediabridge::AVFramePtr Pop(int64_t samples) override { return Last().Pop(samples); }

private:
    std::vector<std::unique_ptr<SampleSource>> m_sounds;
};

/// Louder or softer.
class ScaledSound : public SampleSource {
public:
    /// What comes before outlives it.
    ScaledSound(SampleSource& before, float factor)
        : m_before(before)
        , m_factor(factor) {}

    int64_t Available(int64_t wanted) override { return m_before.Available(wanted); }
    mediabridge::AVFramePtr Pop(int64_t samples) override {
        auto sound = m_before.Pop(samples);
        auto* const first = reinterpret_cast<float*>(sound->data[0]);
        for (int64_t at = 0; at < samples * sound->ch_layout.nb_channels; ++at) first[at] *= m_factor;
        return sound;
    }

private:
    SampleSource& m_before;
    float m_factor;
};

/// Makes one item's sound, on a clock's samples.
class ItemSoundMaker {
public:
    ItemSoundMaker(FilmSoundTerms& terms, const FilmItem& item, const ItemPlace& place)
        : m_terms(terms)
        , m_item(item)
        , m_place(place)
        , m_effects(SoundEffects(item)) {}

    std::unique_ptr<SampleSource> Make(int64_t from);

private:
    int64_t Sample(const FilmTime& time) const { return time.Nearest({m_terms.shape.rate, 1}); }
    bool IsTrack() const { return m_place.inTrack || m_item.kind == Kind::Track; }
    void AddOwn(int64_t from);
    void AddContents(const FilmTime& zero, int64_t from, const MediaSoundPart& part);
    void AddEffect(const EffectSpec& effect, int64_t start);
    std::vector<Voice> Voices(const FilmTime& zero) const;
    Voice VoiceOf(const FilmItem& child, const FilmTime& begin, const CutRange& in,
                  const CutRange& out) const;

    FilmSoundTerms& m_terms;
    const FilmItem& m_item;
    const ItemPlace& m_place;
    const std::vector<EffectSpec> m_effects;
    std::unique_ptr<SoundLine> m_line = std::make_unique<SoundLine>();
};

// An effect that remembers does so from where the item is first heard.
std::unique_ptr<SampleSource> ItemSoundMaker::Make(int64_t from) {
    const int64_t begin = Sample(m_place.begin), first = Sample(m_place.begin - m_place.head);
    const bool remembers = std::ranges::any_of(m_effects, [](const EffectSpec& effect) {
        return (RequireEffect(effect.name).traits & AVBased::kKeepsState) != 0;
    });
    const int64_t at = remembers && first < begin ? std::min(first, from) : from;
    AddOwn(at);
    for (const EffectSpec& effect : m_effects) AddEffect(effect, at - begin);
    Skip(*m_line, from - at);
    return std::move(m_line);
}

// Another speed is that of a clock of its own, which begins where the item is first heard.
void ItemSoundMaker::AddOwn(int64_t from) {
    const SoundShape& shape = m_terms.shape;
    if (m_item.speed.num <= 0)
        m_terms.reporter.Warn(m_item.place +
                              (m_item.speed.num < 0 ? " runs backwards" : " holds one picture") +
                              "; it is silent");
    if (m_item.speed.num <= 0 || !HearsClip(m_effects)) return m_line->Add<DecodedSound>(shape, kFilmSamples);
    if (av_cmp_q(m_item.speed, {1, 1}) == 0) {
        const int64_t start = Sample(m_item.start), begin = Sample(m_place.begin);
        const int64_t first = start + Sample(m_place.begin - m_place.head) - begin;
        return AddContents(m_place.begin - m_item.start, from,
                           {first, start + from - begin, start + Sample(m_item.duration)});
    }
    const FilmTime first = m_item.start - m_place.head * m_item.speed;
    const int64_t own = Sample(first);
    AddContents({}, own, {own, own, Sample(m_item.OwnTime(m_item.duration))});
    m_line->Add<TempoSound>(m_line->Last(), m_item.speed, shape);
    Skip(*m_line, from - Sample(m_place.begin - m_place.head));
}

// Zero: on the clock, where the item's own time is 0.
void ItemSoundMaker::AddContents(const FilmTime& zero, int64_t from, const MediaSoundPart& part) {
    const SoundShape& shape = m_terms.shape;
    if (m_item.kind == Kind::Track || m_item.kind == Kind::Stack)
        return m_line->Add<VoiceMix>(Voices(zero), from, shape);
    if (m_item.kind == Kind::Clip) {
        if (const MediaSoundFile* const file = m_terms.media.Find(m_item.media))
            return m_line->Add<MediaSound>(m_terms.media, *file, part, shape, m_item, m_terms.reporter);
        if (m_item.media.kind == FilmMedia::Kind::File)
            m_terms.reporter.Warn(m_item.place + ": " + m_item.media.url +
                                  " has no sound; the clip is silent");
    }
    m_line->Add<DecodedSound>(shape, kFilmSamples);
}

// Start: of the sound that goes in, in samples from the item's beginning. Whole numbers can't say how loud
// several sounds together may be, which the limiter is for; so they are made softer for an effect that takes
// nothing else. Two bits of sixteen are lost, but nothing is cut off.
void ItemSoundMaker::AddEffect(const EffectSpec& effect, int64_t start) {
    constexpr float kHeadroom = 4;
    const SoundShape& shape = m_terms.shape;
    const AVSampleFormat format = SoundFormatFor({effect}, kFilmSamples);
    const TimeSpan span{0, m_item.duration.Milliseconds(), m_terms.pictureRate.num, m_terms.pictureRate.den};
    const bool other = format != kFilmSamples, sums = other && m_item.kind != Kind::Clip;
    if (sums) m_line->Add<ScaledSound>(m_line->Last(), 1 / kHeadroom);
    if (other) m_line->Add<ConvertedSound>(m_line->Last(), kFilmSamples, shape.rate, format, shape);
    m_line->Add<StagedSound>(m_line->Last(),
                             AudioStage(m_terms.plugin, m_terms.manager, effect, span, shape.rate), start,
                             shape, format);
    if (other) m_line->Add<ConvertedSound>(m_line->Last(), format, shape.rate, kFilmSamples, shape);
    if (sums) m_line->Add<ScaledSound>(m_line->Last(), kHeadroom);
}

std::vector<Voice> ItemSoundMaker::Voices(const FilmTime& zero) const {
    const std::vector<FilmItem>& children = m_item.children;
    std::vector<const FilmItem::Transition*> cuts(children.size() + 1);
    for (const FilmItem::Transition& transition : m_item.transitions)
        if (transition.cut < cuts.size()) cuts[transition.cut] = &transition;
    std::vector<Voice> voices;
    FilmTime begin = zero;
    for (size_t index = 0; index < children.size(); ++index) {
        const FilmItem& child = children[index];
        const FilmTime end = begin + child.duration;
        if (IsHeard(child, IsTrack()))
            voices.push_back(VoiceOf(child, begin, {begin, cuts[index]}, {end, cuts[index + 1]}));
        if (m_item.kind == Kind::Track) begin = end;
    }
    return voices;
}

Voice ItemSoundMaker::VoiceOf(const FilmItem& child, const FilmTime& begin, const CutRange& in,
                              const CutRange& out) const {
    const AVRational rate{m_terms.shape.rate, 1};
    const ItemPlace place{begin, begin - in.begin, IsTrack()};
    Voice voice{{in.begin.Nearest(rate), out.end.Nearest(rate)}, in.In(rate), out.In(rate), {}};
    voice.open = [&terms = m_terms, &child, place](int64_t from) {
        return ItemSound(terms, child, place, from);
    };
    return voice;
}

} // namespace

std::unique_ptr<SampleSource> ItemSound(FilmSoundTerms& terms, const FilmItem& item, const ItemPlace& place,
                                        int64_t from) {
    return ItemSoundMaker(terms, item, place).Make(from);
}

std::vector<const FilmItem*> HeardItems(const FilmItem& stack) {
    std::vector<const FilmItem*> heard;
    AddHeard(stack, false, heard);
    return heard;
}

std::vector<EffectSpec> SoundEffects(const FilmItem& item) {
    std::vector<EffectSpec> effects;
    for (const FilmEffect& effect : item.effects)
        if (effect.medium == Medium::Audio) effects.push_back(effect.spec);
    return effects;
}

} // namespace aveffect
