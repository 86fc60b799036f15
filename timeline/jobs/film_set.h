#pragma once
/// Changing a film's settings in its file.
#include <atomic>
#include <string>
#include <vector>

#include "timeline/otio/film_reader.h"

namespace aveffect {

struct FilmSetOptions {
    std::string film;                  ///< file to read
    std::string place;                 ///< of an effect or a transition, as faults name it
    std::vector<std::string> settings; ///< "degree=40", "mix=0.5", "preset=bulge", "enabled=off"
    std::string output;                ///< file to write; empty: the film's own, which is replaced
    bool overwrite = false;            ///< of an output that exists
    OtioTerms terms;                   ///< without a folder
};

/// Changes settings and keeps everything else of the file. What is set is checked first, as reading a film
/// does; faults elsewhere don't matter. Throws Error (Usage) with all that is wrong, and nothing is written
/// then.
void SetInFilm(const FilmSetOptions& options, const std::atomic<bool>& cancel);

} // namespace aveffect
