#pragma once
/// Values as people write them: checked, and translated to the plug-in's form by the catalogue.
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "aveffect/catalogue.h"

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

/// The side of the picture that the property's percentages refer to: "width", "height" or "smaller side".
/// Empty when it takes none.
std::string_view PercentageBase(const AVBased::PropertyInfo& property);

/// What values the property takes, as part of a sentence: "a whole number from 0 to 65535", "on or off".
std::string ValueRule(const AVBased::PropertyInfo& property);

/// The plug-in's text for a value of the property. Throws Error (Usage) that names effect, property and value
/// and says what would be right.
std::string TranslateValue(const AVBased::EffectInfo& effect, const AVBased::PropertyInfo& property,
                           const std::string& value);

} // namespace aveffect
