#pragma once
/// Objects of a document by their places, as faults name them.
#include <string>

#include "timeline/otio/document.h"

namespace aveffect {

/// The path in a place: tracks[1].children[3] of tracks[1].children[3] "sunset".
std::string PathIn(const std::string& place);

/// The object there. Throws Error (Usage) that tells where the path leaves the film.
OtioJson& ObjectAt(OtioJson& document, const std::string& place);

} // namespace aveffect
