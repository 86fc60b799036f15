#pragma once
/// Which media a film may open, from its text alone.
#include <string>
#include <vector>

#include "timeline/otio/media_places.h"

namespace aveffect {

struct NamedMedia {
    std::vector<std::string> urls;    ///< source URLs
    std::vector<std::string> folders; ///< of numbered pictures
};

/// Whatever a film's file names in the members that name files, whether it is shown or not. What may not be
/// opened or isn't what a film is made of is left to those who read the film. Throws Error (Input) when the
/// file can't be read.
NamedMedia MediaNamedIn(const std::string& film, MediaTerms terms);

} // namespace aveffect
