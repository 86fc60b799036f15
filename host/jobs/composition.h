#pragma once
/// Clips that the program draws itself, picture by picture at a constant rate, with sound beside them.
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "host/jobs/transition.h"
#include "host/output/sound_stream.h"
#include "host/picture/picture_intake.h"

namespace aveffect {

/// Pictures in a time, rounded to the nearest number.
int64_t PicturesIn(int64_t milliseconds, AVRational rate);

/// Throws Error (Usage) for rates that no film is drawn at, whatever a clip claims: above 1000 a second.
AVRational RequireFilmRate(AVRational rate);

/// Throws Error (Usage) when a transition that lasts so long has no picture at that rate.
void RequireSeen(int64_t pictures, int64_t milliseconds, AVRational rate);

/// Checks everything that needs no input to be read: names, codecs, and that the output is a clip, or
/// numbered pictures, and no input. Throws Error (Usage, Output).
OutputPlan PlanComposition(const FilmOptions& options, const std::vector<std::string>& inputs);

/// Finishes a picture that is begun, of the canvas's size; called once, on any thread. Workers are numbers
/// below the composition's, each used by one thread at a time.
using Drawing = std::function<mediabridge::AVFramePtr(unsigned worker)>;

/// An encoder for sound of that shape, said under -v; null, and said, where none is wanted or can be held.
/// Throws Error (Usage, Output).
std::unique_ptr<SoundEncoder> EncoderBeside(const FilmOptions& options, const OutputPlan& plan,
                                            const SoundShape& shape, Reporter& reporter);

/// What is shown and heard.
struct Composition {
    AVRational rate{25, 1}; ///< pictures a second
    int64_t pictures = 0;
    /// Begins the picture of an index; called in order, from one thread.
    std::function<Drawing(int64_t)> draw;
    /// What was found to be wrong with the files that are drawn from; called at the end.
    std::function<DamageReport()> damage;
    unsigned workers = 1;                ///< that finish pictures
    std::optional<SoundFeed> sound = {}; ///< absent: no sound stream
    int64_t before = 0, all = 0;     ///< for progress, of parts of a whole: pictures before, and altogether
    std::function<void()> stop = {}; ///< ends the waiting of drawings for each other, if they do that
};

/// Draws on several threads, encodes on one, and gives the file its name. Of the options count what is asked
/// for behind the transitions, what becomes of files that exist, and memory. The look is a picture like those
/// that will be drawn: it tells their format and what they say of the light. Throws Error.
RenderResult RenderComposition(Composition composition, const OutputPlan& plan, const FilmOptions& options,
                               mediabridge::AVFramePtr look, IntakeTerms& terms, Reporter& reporter,
                               const std::atomic<bool>& cancel);

} // namespace aveffect
