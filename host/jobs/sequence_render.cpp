#include "host/jobs/sequence_render.h"

#include <algorithm>
#include <utility>

namespace aveffect {

using mediabridge::AVFramePtr;

namespace {

/// Sound like that of the first part that has any; nothing when none has, or the container holds none.
std::optional<FilmSound> MakeSound(const FilmOptions& options, const OutputPlan& plan,
                                   const SequenceSetup& setup, const ClipSequence& sequence,
                                   Reporter& reporter, const std::atomic<bool>& cancel) {
    const auto heard = std::ranges::find_if(
        setup.parts, [](const SequencePart& part) { return part.clip->sound.has_value(); });
    if (heard == setup.parts.end()) return std::nullopt;
    if (plan.muxer->audio_codec == AV_CODEC_ID_NONE) {
        reporter.Warn("." + plan.Kind() + " files can't hold sound; it is left out");
        return std::nullopt;
    }
    FilmSound sound;
    sound.encoder = std::make_unique<SoundEncoder>(plan, options.soundCodec, *heard->clip->sound);
    reporter.Note(sound.encoder->Summary());
    const SoundForm form = sound.encoder->Form();
    sound.track = std::make_unique<JoinedSound>(sequence.Sound(form.shape.rate), form, cancel);
    return sound;
}

} // namespace

RenderResult RenderFilm(FilmSetup setup, const FilmPictures& pictures, const AVFrame& look,
                        IntakeTerms& terms, Reporter& reporter, const std::atomic<bool>& cancel) {
    PictureOutput output(setup.plan, OriginOf(look), look, terms, reporter);
    const std::unique_ptr<Film> film = MakeFilm(std::move(setup), pictures, look, output, reporter, cancel);
    terms.Conclude();
    film->Publish();
    DamageReport damage = pictures.damage();
    damage.Add(film->Damage());
    return {film->Pictures(), damage.Text()};
}

RenderResult RenderSequence(const Plugin& plugin, const FilmOptions& options, const OutputPlan& plan,
                            SequenceSetup setup, IntakeTerms& terms, Reporter& reporter,
                            const std::atomic<bool>& cancel) {
    setup.terms = &terms;
    ClipSequence sequence(plugin, setup, cancel);
    FilmSetup film{plan, setup.rate, options.overwrite};
    film.sound = MakeSound(options, plan, setup, sequence, reporter, cancel);
    const FilmPictures pictures{sequence.Pictures(), [&](int64_t index) { return sequence.Draw(index); },
                                [&] { return sequence.Damage(); }};
    return RenderFilm(std::move(film), pictures, *sequence.FirstPicture(), terms, reporter, cancel);
}

} // namespace aveffect
