#pragma once
/// What the pictures of a part of a film depend on.
#include <string>
#include <vector>

#include "timeline/film/film.h"

namespace aveffect {

/// As a text that no other pictures have: items and transitions that are seen, their effects, and of files
/// that are read their names, sizes and times of change. Times count from the part's beginning, so that it
/// stays the same where the part is moved in the film.
std::string PrintPictures(const Film& film, const FilmRange& part);

/// Pictures from begin on up to the one before end, counted at a rate.
struct PictureSpan {
    int64_t begin, end;

    int64_t Pictures() const { return end - begin; }
    bool operator==(const PictureSpan&) const = default;
};

/// The film's pictures, cut where clips and transitions of its tracks begin and end, into pieces of at most
/// that many pictures.
std::vector<PictureSpan> CutFilm(const Film& film, AVRational rate, int64_t most);

} // namespace aveffect
