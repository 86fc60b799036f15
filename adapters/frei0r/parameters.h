#pragma once
/// An effect's properties as parameters of a module: numbers from 0 to 1 over the property's range, switches,
/// colours; a count of pixels as a share of the picture's side. What the host never says stays as the plug-in
/// has it, and so does what is said to be the default.
#include <string>
#include <utility>
#include <vector>

#include "aveffect/effect_info.h"

namespace aveffect::frei0r {

/// A value in any of the interface's forms.
struct ParameterValue {
    double number = 0; ///< switches too
    float red = 0, green = 0, blue = 0;
    std::string text;

    bool operator==(const ParameterValue&) const = default;
};

/// One parameter. Its place among its module's is what hosts know it by: new ones only go behind all others.
struct Parameter {
    std::string name;
    std::string help;
    int type = 0;                                    ///< F0R_PARAM_...
    const AVBased::PropertyInfo* property = nullptr; ///< null for the two that no property is behind
    ParameterValue initial;
};

inline constexpr char kProgress[] = "progress"; ///< first where the effect follows time
inline constexpr char kPreset[] = "preset";     ///< last where the effect has presets

std::vector<Parameter> ParametersOf(const AVBased::EffectInfo& effect);

/// From the host's memory, in the parameter's form. Numbers outside the range become the nearest one in it,
/// what is no number the default.
ParameterValue ReadValue(const Parameter& parameter, const void* value);
/// The text stays the value's.
void WriteValue(const Parameter& parameter, const ParameterValue& value, void* to);

/// Property names and the plug-in's texts, in the order in which they are set.
using Settings = std::vector<std::pair<const char*, std::string>>;

/// What pictures of that size are rendered with: the preset, where one is named, and over it the parameters
/// that are not at their defaults. Throws std::runtime_error when the effect has no such preset.
Settings SettingsFor(const AVBased::EffectInfo& effect, const std::vector<Parameter>& parameters,
                     const std::vector<ParameterValue>& values, unsigned width, unsigned height);

} // namespace aveffect::frei0r
