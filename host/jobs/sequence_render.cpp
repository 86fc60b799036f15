#include "host/jobs/sequence_render.h"

#include <algorithm>
#include <utility>

#include "host/jobs/composition.h"
#include "host/output/numbered_output.h"
#include "host/support/ordered_workers.h"

namespace aveffect {
namespace {

int Channels(const SoundShape& shape) {
    AVChannelLayout layout = {};
    RequireMemory(av_channel_layout_from_string(&layout, shape.layout.c_str()), shape.layout);
    const int channels = layout.nb_channels;
    av_channel_layout_uninit(&layout);
    return channels;
}

/// That of the first part that has any, of the music when none has; absent without either. Music of more
/// channels brings them.
std::optional<SoundShape> ShapeOf(const SequenceSetup& setup) {
    const auto heard = std::ranges::find_if(
        setup.parts, [](const SequencePart& part) { return part.clip->sound.has_value(); });
    if (heard == setup.parts.end())
        return setup.music ? std::optional(setup.music->file.shape) : std::nullopt;
    SoundShape shape = *heard->clip->sound;
    if (setup.music && Channels(setup.music->file.shape) > Channels(shape))
        shape.layout = setup.music->file.shape.layout;
    return shape;
}

void RequireFades(const Music& music, int64_t lengthMs) {
    for (const int64_t fade : {music.fadeInMs, music.fadeOutMs})
        if (fade > lengthMs)
            throw Error(ErrorKind::Usage, "the music can't fade for " + SecondsText(fade) +
                                              ": the film lasts " + SecondsText(lengthMs));
}

/// Nothing when there is no sound, or the container holds none.
std::optional<SoundFeed> MakeSound(const FilmOptions& options, const OutputPlan& plan,
                                   const SequenceSetup& setup, const ClipSequence& sequence,
                                   Reporter& reporter, const std::atomic<bool>& cancel) {
    const std::optional<SoundShape> shape = ShapeOf(setup);
    if (!shape) return std::nullopt;
    SoundFeed sound{EncoderBeside(options, plan, *shape, reporter), nullptr};
    if (!sound.encoder) return std::nullopt;
    const SoundForm form = sound.encoder->Form();
    sound.supply = std::make_unique<JoinedSound>(sequence.Sound(form.shape.rate), setup.music, form, cancel);
    return sound;
}

} // namespace

void RequireLong(const SequencePart& part, AVRational rate) {
    const ClipScan& clip = *part.clip;
    if (clip.still || clip.PicturesAt(rate) >= part.pictures) return;
    throw Error(ErrorKind::Usage,
                clip.request.path + " lasts " + SecondsText(clip.LengthMs()) + ", but " +
                    SecondsText(av_rescale_q(part.pictures, av_inv_q(rate), kMilliseconds)) +
                    " of it are asked for");
}

RenderResult RenderSequence(const Plugin& plugin, const FilmOptions& options, const OutputPlan& plan,
                            SequenceSetup setup, IntakeTerms& terms, Reporter& reporter,
                            const std::atomic<bool>& cancel) {
    setup.terms = &terms;
    setup.framing = options.framing;
    setup.workers = WorkerCount(setup.threads);
    ClipSequence sequence(plugin, setup, reporter, cancel);
    if (setup.music)
        RequireFades(*setup.music, av_rescale_q(sequence.Pictures(), av_inv_q(setup.rate), kMilliseconds));
    const FilmShare share = options.share.value_or(FilmShare{0, sequence.Pictures()});
    Composition composition{setup.rate, share.end - share.begin,
                            [&](int64_t index) { return sequence.Draw(share.begin + index); },
                            [&] { return sequence.Damage(); }, setup.workers};
    composition.before = share.begin;
    composition.all = sequence.Pictures();
    if (!options.share) composition.sound = MakeSound(options, plan, setup, sequence, reporter, cancel);
    mediabridge::AVFramePtr look = sequence.Look();
    if (share.begin > 0) sequence.GoTo(share.begin);
    return RenderComposition(std::move(composition), plan, options, std::move(look), terms, reporter, cancel);
}

} // namespace aveffect
