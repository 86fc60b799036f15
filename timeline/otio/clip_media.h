#pragma once
/// What clips show: the format's media references.
#include "timeline/film/film.h"
#include "timeline/otio/document.h"
#include "timeline/otio/findings.h"
#include "timeline/otio/media_places.h"

namespace aveffect {

/// The media reference of a clip that is in use; null when there is none. Throws Error (Usage).
const OtioJson* ActiveReference(const OtioJson& clip);

/// What that reference names; without one, None. Throws Error (Usage).
FilmMedia ReadMedia(const OtioJson* reference, const MediaTerms& terms, const std::string& place,
                    Findings& findings);

} // namespace aveffect
