#pragma once
/// Sequences as clips.
#include "host/jobs/clip_sequence.h"
#include "host/output/film.h"

namespace aveffect {

/// Encodes pictures into the film's file and gives it its name. The look is a picture like those that will be
/// drawn, and tells their format. Throws Error.
RenderResult RenderFilm(FilmSetup setup, const FilmPictures& pictures, const AVFrame& look,
                        IntakeTerms& terms, Reporter& reporter, const std::atomic<bool>& cancel);

/// The same for a sequence with its sound.
RenderResult RenderSequence(const Plugin& plugin, const FilmOptions& options, const OutputPlan& plan,
                            SequenceSetup setup, IntakeTerms& terms, Reporter& reporter,
                            const std::atomic<bool>& cancel);

} // namespace aveffect
