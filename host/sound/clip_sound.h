#pragma once
/// The sound of one clip, changed by effects.
#include <memory>
#include <optional>
#include <vector>

#include "host/effects/effect_times.h"
#include "host/sound/decoded_sound.h"
#include "host/sound/sound_supply.h"
#include "host/sound/staged_sound.h"

namespace aveffect {

/// Sound is made in pieces that are this part of a second, counted from the clip's begin.
inline constexpr int kPiecesASecond = 50;

/// How a clip's sound is read, and what happens to it.
struct ClipSoundSetup {
    const Plugin& plugin;
    AVBased::IAVManager* manager; ///< opens what effects read; outlives the sound
    const std::vector<EffectSpec>& effects;
    EffectTimes times; ///< start: of the sound that is made
    bool endless; ///< the effects bring sound (BringsSound), which goes on until it is ended, as the clip's
                  ///< own does then, in silence
    std::optional<Moment> start; ///< in the file's times; absent: the first sample
    const std::atomic<bool>& cancel;
};

/// Sound as decoders and effects give it.
struct ClipSoundShape {
    SoundShape shape;
    AVSampleFormat format;
};

/// What the effects work in for that stream; without a stream, that of the sound that they bring. Throws
/// Error (Input).
ClipSoundShape ShapeFor(const ClipSoundSetup& setup, const AVStream* stream);

/// Used by one thread at a time.
class ClipSound : public SoundSupply {
public:
    /// Opens decoder and effects. Sound is read from the source, apart from its pictures, as the shape says;
    /// without a stream the effects bring it. Throws Error.
    ClipSound(const ClipSoundSetup& setup, const SourceRequest& source, const AVStream* stream,
              const ClipSoundShape& shape, SoundForm form);

    mediabridge::AVFramePtr Next(const Moment& until) override;
    void EndAt(const std::optional<Moment>& end) override;
    Moment Reached() const override { return {m_done, {1, m_shape.rate}}; }
    DamageReport Damage() const override { return m_decoded->Damage(); }

private:
    void Decode(const ClipSoundSetup& setup, const SourceRequest& source, const AVStream* stream,
                const ClipSoundShape& shape);
    SampleSource& Last();
    bool Advance(int64_t limit);
    void Convert(const AVFrame* sound);
    void Flush();
    int64_t Ready() const;

    SoundShape m_shape;  ///< that the effects work in
    int64_t m_clipStart; ///< of the sound in the clip, in samples
    std::unique_ptr<DecodedSound> m_decoded;
    std::vector<std::unique_ptr<StagedSound>> m_stages; ///< the first one takes what was decoded
    int64_t m_done = 0;                                 ///< samples that went through the effects
    std::optional<int64_t> m_end;                       ///< of those, once it is set

    SoundForm m_form;
    mediabridge::SwrContextPtr m_resampler;
    SampleQueue m_converted;
    int64_t m_given = 0;            ///< samples of the form
    std::optional<int64_t> m_total; ///< of those, once all have been made
};

} // namespace aveffect
