#pragma once
/// A clip and its chain as a film in an interchange file, and back.
#include <atomic>
#include <string>
#include <vector>

#include "studio/requests.h"
#include "studio/roots.h"

namespace aveffect {

struct ChainFilm {
    std::string clip; ///< its place
    StudioChain chain;
    std::vector<std::string> notes; ///< what the film holds besides, which is not shown
};

/// The text of a film of the whole clip with the chain's effects, switched off where they are, that will lie
/// at that place. Throws Error.
std::string ChainFilmText(const ChainFilm& film, const std::string& place, const std::atomic<bool>& cancel);

/// The first clip of a film with the effects on its pictures and on its sound. Throws Error for faults, and
/// for a clip that may not be read.
ChainFilm ReadChainFilm(const std::string& place, const Roots& roots);

} // namespace aveffect
