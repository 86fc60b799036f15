#pragma once
/// Keeps away from what is stated to stop the program, and from what works as long as its number is large.
#include <cstdlib>
#include <string>
#include <string_view>

#include "aveffect/effect_info.h"
#include "aveffect/plugin.h"
#include "fuzz/input_bytes.h"

namespace fuzz {

/// The property's text, or a smaller one where it counts passes, or a mode that there is or could be.
inline std::string Tame(std::string_view property, std::string text) {
    const bool countsPasses = property == "blur_count" || property == "sharpen_count";
    if (countsPasses && (std::atoi(text.c_str()) & 0xFFFF) > 50) return "50";
    if (property == "render_3d_mode") return std::to_string(std::atoi(text.c_str()) & 7);
    return text;
}

/// Sets a property of the effect, "duration" included, to any text: "property index, text" of the input.
inline void SetAny(AVBased::IAVProc& proc, const AVBased::EffectInfo& effect, InputBytes& input) {
    const unsigned index = input.Take<uint8_t>();
    const AVBased::PropertyInfo& property =
        index < effect.properties.size() ? effect.properties[index] : AVBased::kDurationProperty;
    proc.SetProperty(property.name, Tame(property.name, input.TakeLine()).c_str());
}

} // namespace fuzz
