#pragma once
/// Films from interchange files.
#include <string>
#include <vector>

#include "host/support/error.h"
#include "timeline/film/film.h"
#include "timeline/otio/media_headers.h"
#include "timeline/otio/media_places.h"

namespace aveffect {

/// What is wrong in a film.
struct FilmFault {
    std::string place; ///< tracks[1].children[3] "sunset"; empty: the file as a whole
    std::string message;
    ErrorKind kind = ErrorKind::Usage; ///< Usage: what is written; Input: a medium

    std::string Text() const { return place.empty() ? message : place + ": " + message; }
};

struct ReadFilm {
    Film film;                        ///< as far as it could be read
    std::vector<FilmFault> faults;    ///< all there are; with any, the film is not to be rendered
    std::vector<std::string> unknown; ///< what is in the file and not used, each kind once
};

/// On which terms films are read.
struct OtioTerms {
    MediaTerms media;
    MediaHeaders* headers = nullptr; ///< for clips that say no length; null: they are faults
};

/// Reads a film from the text of a file. Media are not opened but for a length that is not said. Throws
/// nothing but std::bad_alloc.
ReadFilm ReadOtio(const std::string& bytes, const OtioTerms& terms);

/// The film in a file, and relative names count from its folder. Throws Error (Input) when it can't be read.
ReadFilm ReadOtioFile(const std::string& path, OtioTerms terms);

} // namespace aveffect
