#pragma once
/// Values as people write them: checked, and translated to the plug-in's form by the catalogue.
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "aveffect/effect_info.h"

namespace aveffect {

/// A decimal whole number; nothing else may stand in the text.
std::optional<int64_t> ParseWhole(std::string_view text);

/// A finite decimal number with a point, whatever the locale; nothing else may stand in the text.
std::optional<double> ParseReal(std::string_view text);

/// Milliseconds from seconds ("12", "1.5"), mm:ss or hh:mm:ss, each with an optional fraction that is rounded
/// to milliseconds. Minutes and seconds behind a colon lie below 60. Nothing for anything else, negative
/// times, and times beyond the milliseconds that effects can count (about 24 days).
std::optional<int64_t> ParseTime(std::string_view text);

/// The number's shortest decimal form.
std::string NumberText(double number);

/// "width", "height" or "smaller side"; empty for none.
std::string_view SideName(AVBased::PixelAxis axis);

/// The side of the picture that the property's percentages refer to. Empty when it takes none.
std::string_view PercentageBase(const AVBased::PropertyInfo& property);

/// The number before the sign of a value such as "12.5%". Nothing for other values, for properties that don't
/// count pixels, and below 0 where the property's range has no negative numbers.
std::optional<double> ParsePercentage(const AVBased::PropertyInfo& property, std::string_view value);

/// A percentage of the side of the picture that the property counts pixels of: rounded to the nearest whole
/// number, halves up.
double PixelsIn(const AVBased::PropertyInfo& property, double percentage, unsigned width, unsigned height);

/// The plug-in's text for a percentage of a picture's side. Throws Error (Usage) that names effect, property,
/// percentage and size when that is outside the property's range.
std::string PixelsOfPercentage(const AVBased::EffectInfo& effect, const AVBased::PropertyInfo& property,
                               double percentage, unsigned width, unsigned height);

/// The value as people would write it: on and off, a choice's name, #RRGGBB. The plug-in's text where there
/// is no better word. TranslateValue takes it.
std::string SpokenValue(const AVBased::PropertyInfo& property, const std::string& stored);

/// What the effect works with until the property is set, as people would write it; says so where no value
/// does, and when the plug-in reports another one.
std::string DefaultText(const AVBased::PropertyInfo& property);

/// "spherize/bulge".
std::string PresetName(const AVBased::EffectInfo& effect, const AVBased::EffectPreset& preset);

/// What the preset sets, as people would write it: "spherize_r=45%:spherize_scale=1".
std::string SettingsText(const AVBased::EffectInfo& effect, const AVBased::EffectPreset& preset);

/// A value as it stands in an effect's text: a colon or backslash is its own.
std::string EscapedValue(std::string_view value);

/// What values the property takes, as part of a sentence: "a whole number from 0 to 65535", "on or off".
std::string ValueRule(const AVBased::PropertyInfo& property);

/// The plug-in's text for a value of the property that is no percentage. Throws Error (Usage) that names
/// effect, property and value and says what would be right.
std::string TranslateValue(const AVBased::EffectInfo& effect, const AVBased::PropertyInfo& property,
                           const std::string& value);

} // namespace aveffect
