#pragma once
/// Whether a film can be rendered, found out without rendering.
#include <string>
#include <vector>

#include "timeline/otio/film_reader.h"

namespace aveffect {

/// What is wrong with a film besides what reading it tells, and what people should know.
struct FilmCheck {
    std::vector<FilmFault> faults;    ///< media that can't be used (Input), times that don't fit (Usage)
    std::vector<std::string> remarks; ///< last pictures that are held, and the like
};

/// Looks at everything that is switched on: whether media are there and have what their tracks need, at
/// ranges in them, handles of transitions, times of effects, and the files that effects read. Each medium is
/// opened once.
FilmCheck CheckFilm(const Film& film, MediaHeaders& headers);

/// All that is wrong with what was read and checked. Strict: what is not used is a fault.
std::vector<FilmFault> AllFaults(const ReadFilm& read, const FilmCheck& check, bool strict);

/// Throws Error with all faults when there are any, the first one as its message and the others below it: of
/// the kind that is worst, the film's own (Usage) before media (Input).
void RequireFaultless(const std::vector<FilmFault>& faults);

} // namespace aveffect
