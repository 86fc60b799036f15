#include "host/jobs/sequence_render.h"

#include <algorithm>
#include <utility>

#include "host/jobs/composition.h"

namespace aveffect {
namespace {

/// Sound like that of the first part that has any; nothing when none has, or the container holds none.
std::optional<SoundFeed> MakeSound(const FilmOptions& options, const OutputPlan& plan,
                                   const SequenceSetup& setup, const ClipSequence& sequence,
                                   Reporter& reporter, const std::atomic<bool>& cancel) {
    const auto heard = std::ranges::find_if(
        setup.parts, [](const SequencePart& part) { return part.clip->sound.has_value(); });
    if (heard == setup.parts.end() || options.silent) return std::nullopt;
    if (plan.muxer->audio_codec == AV_CODEC_ID_NONE) {
        reporter.Warn("." + plan.Kind() + " files can't hold sound; it is left out");
        return std::nullopt;
    }
    SoundFeed sound;
    sound.encoder = std::make_unique<SoundEncoder>(plan, options.audioCodec, *heard->clip->sound);
    reporter.Note(sound.encoder->Summary());
    const SoundForm form = sound.encoder->Form();
    sound.supply = std::make_unique<JoinedSound>(sequence.Sound(form.shape.rate), form, cancel);
    return sound;
}

} // namespace

RenderResult RenderSequence(const Plugin& plugin, const FilmOptions& options, const OutputPlan& plan,
                            SequenceSetup setup, IntakeTerms& terms, Reporter& reporter,
                            const std::atomic<bool>& cancel) {
    setup.terms = &terms;
    ClipSequence sequence(plugin, setup, cancel);
    Composition composition{
        setup.rate, sequence.Pictures(), [&](int64_t index) { return sequence.Draw(index); },
        [&] { return sequence.Damage(); }, MakeSound(options, plan, setup, sequence, reporter, cancel)};
    return RenderComposition(std::move(composition), plan, options.overwrite, *sequence.FirstPicture(), terms,
                             reporter, cancel);
}

} // namespace aveffect
