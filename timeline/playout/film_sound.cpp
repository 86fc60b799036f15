#include "timeline/playout/film_sound.h"

#include <algorithm>
#include <utility>

#include "host/effects/audio_effect_chain.h"
#include "host/effects/media_check.h"
#include "host/support/error.h"
#include "timeline/playout/limited_sound.h"

namespace aveffect {

using mediabridge::AVFramePtr;

FilmSound::FilmSound(FilmSoundSetup setup)
    : m_setup(std::move(setup))
    , m_terms{m_setup.plugin,      m_setup.manager,  m_setup.form.shape,
              m_setup.pictureRate, m_setup.reporter, MediaSounds(m_setup.cancel)} {
    const AVRational rate{m_setup.form.shape.rate, 1};
    m_begin = std::max<int64_t>(0, m_setup.from.Nearest(rate));
    m_total = std::max<int64_t>(0, m_setup.film.stack.duration.Nearest(rate) - m_begin);
    for (const FilmItem* item : HeardItems(m_setup.film.stack))
        RequireSounds(*m_setup.manager, SoundEffects(*item));
    Open();
}

void FilmSound::Open() {
    const SoundShape& shape = m_setup.form.shape;
    const int64_t from = m_setup.limiter ? LimitedSound::InputFrom(m_begin, shape.rate) : m_begin;
    m_mix = ItemSound(m_terms, m_setup.film.stack, {}, from);
    m_sound = m_mix.get();
    if (m_setup.limiter) {
        m_limited = std::make_unique<LimitedSound>(*m_sound, m_begin, shape);
        m_sound = m_limited.get();
    }
    if (m_setup.form.format == kFilmSamples) return;
    m_converted =
        std::make_unique<ConvertedSound>(*m_sound, kFilmSamples, shape.rate, m_setup.form.format, shape);
    m_sound = m_converted.get();
}

AVFramePtr FilmSound::Next(const Moment& until) {
    constexpr int kFrame = 1024; // where the form leaves it open
    const int rate = m_setup.form.shape.rate;
    const int64_t end = std::min(m_total, m_end.value_or(m_total));
    if (m_given >= end || (!m_end && m_given >= SamplesBy(until, rate))) return nullptr;
    if (m_setup.cancel) throw Error(ErrorKind::Interrupted, "interrupted; nothing was written");
    const int64_t size = m_setup.form.frameSize > 0 ? m_setup.form.frameSize : kFrame;
    AVFramePtr sound = Take(*m_sound, std::min(size, end - m_given));
    sound->pts = m_given;
    m_given += sound->nb_samples;
    return sound;
}

void FilmSound::EndAt(const std::optional<Moment>& end) {
    m_end = end ? SamplesBy(*end, m_setup.form.shape.rate) : m_total;
}

std::optional<FilmSoundLook> LookAtSound(const Film& film, const std::atomic<bool>& cancel) {
    constexpr int kUsualRate = 48000;
    MediaSounds media(cancel);
    bool brings = false;
    for (const FilmItem* item : HeardItems(film.stack)) {
        if (item->kind == FilmItem::Kind::Clip)
            if (const MediaSoundFile* const file = media.Find(item->media))
                return FilmSoundLook{file->shape, file->codec, file->bits};
        brings = brings || BringsSound(SoundEffects(*item));
    }
    return brings ? std::optional(FilmSoundLook{{kUsualRate, "stereo"}}) : std::nullopt;
}

} // namespace aveffect
