#pragma once
/// Keeps away from what is stated to stop the program, and from what works as long as its number is large.
#include <cstdlib>
#include <string>
#include <string_view>

#include "aveffect/plugin.h"

namespace fuzz {

/// The property's text, or a smaller one where it counts passes.
inline std::string Tame(std::string_view property, std::string text) {
    const bool countsPasses = property == "blur_count" || property == "sharpen_count";
    if (countsPasses && (std::atoi(text.c_str()) & 0xFFFF) > 50) return "50";
    return text;
}

/// Whether the processor, as it is set, ends the program on frames of that format: assertions are part of the
/// contract.
inline bool StopsByContract(AVBased::IVideoProc&, unsigned) { return false; }

} // namespace fuzz
