#pragma once
/// A film's sound: that of all its tracks together.
#include <atomic>
#include <memory>
#include <optional>

#include "host/sound/sound_supply.h"
#include "timeline/playout/item_sound.h"

namespace aveffect {

/// Whose sound is made, and how.
struct FilmSoundSetup {
    const Plugin& plugin;
    AVBased::IAVManager* manager; ///< opens what effects read; outlives the sound
    const Film& film;             ///< outlives the sound
    SoundForm form;
    FilmTime from = {};           ///< in the film
    bool limiter = true;          ///< turns down for a moment what would be too loud
    AVRational pictureRate{0, 1}; ///< for effects' times that are counted in pictures; 0: it is not known
    Reporter& reporter;
    const std::atomic<bool>& cancel;
};

/// Gives the film's sound from a moment on, up to the film's end: the same samples wherever it begins. Clips
/// are opened when their turn comes. Used by one thread at a time.
class FilmSound : public SoundSupply {
public:
    /// Opens what effects read. Throws Error.
    explicit FilmSound(FilmSoundSetup setup);

    mediabridge::AVFramePtr Next(const Moment& until) override;
    void EndAt(const std::optional<Moment>& end) override;
    Moment Reached() const override { return {m_given, {1, m_setup.form.shape.rate}}; }
    DamageReport Damage() const override { return m_terms.media.Damage(); }

private:
    void Open();

    FilmSoundSetup m_setup;
    FilmSoundTerms m_terms;
    std::unique_ptr<SampleSource> m_mix, m_limited, m_converted; ///< each takes from the one before it
    SampleSource* m_sound = nullptr;                             ///< the last one
    int64_t m_begin, m_total;                                    ///< in the film, and from there on: samples
    std::optional<int64_t> m_end;                                ///< from there on, once it is set
    int64_t m_given = 0;
};

/// What a film's sound is like, as far as options don't say.
struct FilmSoundLook {
    SoundShape shape;
    AVCodecID codec = AV_CODEC_ID_NONE; ///< none: effects alone bring sound
    int bits = 0;                       ///< of the samples; 0: it is not known
};

/// Of the first clip's sound that has any; a usual one where effects alone bring some. Absent when
/// nothing is heard in the film. Throws Error (Input, Interrupted).
std::optional<FilmSoundLook> LookAtSound(const Film& film, const std::atomic<bool>& cancel);

} // namespace aveffect
