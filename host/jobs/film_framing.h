#pragma once
/// The size of films that are made of several sources.
#include <string>

#include "host/picture/fitting.h"
#include "host/picture/framing.h"
#include "host/support/reporter.h"

namespace aveffect {

/// The source by which a film's size goes.
struct FilmModel {
    std::string name;
    Canvas shape; ///< of its pictures, upright
    bool still;   ///< one picture
};

/// Throws Error (Usage) as CheckFraming().
void CheckFilmFraming(const Framing& framing);

/// What is to be done to every source's pictures: what was asked for before the effects, at one size for all.
/// Photos have many times the pixels that films have: where nothing was said of a size, and the model is a
/// still picture, it is brought down to 1920x1080, or upright as much, and the reporter told. Throws Error
/// (Usage).
Framing FilmFraming(const Framing& asked, const FilmModel& model, Reporter& reporter);

/// What is to be done to the pictures behind the effects.
Framing FramingBehind(const Framing& asked);

} // namespace aveffect
