#pragma once
/// Effects that take pixels in any order of their bytes.
#include <algorithm>
#include <string_view>

namespace aveffect::adapters {

/// Short names of those that do the same to all four bytes of a pixel. The tests work out which these are.
inline constexpr std::string_view kBytesAlike[] = {
    "atomize",       "blur",     "broken-boxes", "close-door",   "magnifier", "mirage",
    "mirror-invert", "mosaic",   "push",         "reverse",      "rotate",    "sharpen",
    "shutter",       "spherize", "tensile",      "tile-reflect", "turn-over", "video-wall"};

inline bool TreatsBytesAlike(std::string_view shortName) {
    return std::ranges::find(kBytesAlike, shortName) != std::end(kBytesAlike);
}

} // namespace aveffect::adapters
