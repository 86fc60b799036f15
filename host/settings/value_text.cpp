#include "host/settings/value_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <vector>

#include "host/support/error.h"

namespace aveffect {

using AVBased::EffectInfo;
using AVBased::PixelAxis;
using AVBased::PropertyInfo;
using AVBased::PropertyType;
using AVBased::ValueKind;

namespace {

constexpr int64_t kLongestTimeMs = 2147483647;

/// The whole text as a number, in the form that from_chars reads.
template <typename Number, typename... Form>
std::optional<Number> ParseAll(std::string_view text, Form... form) {
    Number number{};
    const char* const end = text.data() + text.size();
    const auto [stop, failure] = std::from_chars(text.data(), end, number, form...);
    if (failure != std::errc() || stop != end) return std::nullopt;
    return number;
}

bool InRange(const PropertyInfo& property, double number) {
    return number >= property.minimum && number <= property.maximum;
}

bool IsWhole(const PropertyInfo& property) {
    return property.type == PropertyType::kInt16 || property.type == PropertyType::kInt32 ||
           property.type == PropertyType::kInt64;
}

/// How numbers are spoken: "+50" is 50, and so is "50%" where percents are counted.
std::string_view Unspoken(const PropertyInfo& property, std::string_view value) {
    if (value.size() > 1 && value.starts_with('+') && value[1] != '-') value.remove_prefix(1);
    if (property.unit == "%" && value.ends_with('%')) value.remove_suffix(1);
    return value;
}

/// Whole numbers lose signs and zeros in front that could be read in another base; others stay as they were
/// written.
std::optional<std::string> TranslateNumber(const PropertyInfo& property, std::string_view value) {
    value = Unspoken(property, value);
    if (IsWhole(property)) {
        const auto number = ParseWhole(value);
        if (!number || !InRange(property, static_cast<double>(*number))) return std::nullopt;
        return std::to_string(*number);
    }
    const auto number = ParseReal(value);
    if (!number || !InRange(property, *number)) return std::nullopt;
    return std::string(value);
}

std::optional<std::string> TranslateSwitch(const std::string& value) {
    for (const char* on : {"on", "true", "yes", "1"})
        if (value == on) return "1";
    for (const char* off : {"off", "false", "no", "0"})
        if (value == off) return "0";
    return std::nullopt;
}

std::optional<std::string> TranslateColour(const PropertyInfo& property, const std::string& value) {
    constexpr size_t kDigits = 6; // RRGGBB
    for (const std::string_view prefix : {"#", "0x", "0X"}) {
        if (!value.starts_with(prefix)) continue;
        const std::string_view digits = std::string_view(value).substr(prefix.size());
        const auto colour = ParseAll<uint32_t>(digits, 16);
        if (!colour || digits.size() != kDigits) return std::nullopt;
        return std::to_string(*colour);
    }
    const auto colour = ParseWhole(value);
    if (!colour || !InRange(property, static_cast<double>(*colour))) return std::nullopt;
    return std::to_string(*colour);
}

std::optional<std::string> TranslateChoice(const PropertyInfo& property, const std::string& value) {
    const auto number = ParseWhole(value);
    for (const auto& choice : property.choices)
        if (choice.name == value || (number && *number == choice.value)) return std::to_string(choice.value);
    return std::nullopt;
}

std::optional<std::string> Translate(const PropertyInfo& property, const std::string& value) {
    switch (property.kind) {
    case ValueKind::Number:
        return TranslateNumber(property, value);
    case ValueKind::Switch:
        return TranslateSwitch(value);
    case ValueKind::Choice:
        return TranslateChoice(property, value);
    case ValueKind::Colour:
        return TranslateColour(property, value);
    case ValueKind::Path:
        return value.empty() ? std::nullopt : std::optional(value);
    case ValueKind::Text:
        break;
    }
    return value;
}

std::string RangeText(const PropertyInfo& property) {
    std::string text;
    if (std::isfinite(property.minimum)) text += " from " + NumberText(property.minimum);
    if (std::isfinite(property.maximum))
        text += (text.empty() ? " up to " : " to ") + NumberText(property.maximum);
    if (property.unit.empty()) return text;
    return text + (text.empty() ? " in " : " ") + std::string(property.unit);
}

std::string PercentageText(const PropertyInfo& property) {
    const std::string_view base = PercentageBase(property);
    return base.empty() ? "" : " or a percentage of the picture's " + std::string(base);
}

std::string ChoiceText(const PropertyInfo& property) {
    std::string text = "one of ";
    for (const auto& choice : property.choices) {
        if (&choice != &property.choices.front()) text += ", ";
        text += std::string(choice.name) + " (" + std::to_string(choice.value) + ")";
    }
    return text;
}

} // namespace

std::optional<int64_t> ParseWhole(std::string_view text) { return ParseAll<int64_t>(text); }

std::optional<double> ParseReal(std::string_view text) {
    const auto number = ParseAll<double>(text);
    return number && std::isfinite(*number) ? number : std::nullopt;
}

std::optional<int64_t> ParseTime(std::string_view text) {
    constexpr size_t kMostFields = 3; // hours, minutes, seconds
    constexpr int64_t kSixty = 60;
    std::vector<std::string_view> fields;
    for (size_t start = 0; start != std::string_view::npos;) {
        const size_t colon = text.find(':', start);
        fields.push_back(text.substr(start, colon == std::string_view::npos ? colon : colon - start));
        start = colon == std::string_view::npos ? colon : colon + 1;
    }
    if (fields.size() > kMostFields || text.find_first_not_of("0123456789:.") != std::string_view::npos)
        return std::nullopt;

    int64_t minutes = 0;
    for (size_t field = 0; field + 1 < fields.size(); ++field) {
        const auto number = ParseWhole(fields[field]);
        if (!number || *number > kLongestTimeMs || (field > 0 && *number >= kSixty)) return std::nullopt;
        minutes = minutes * kSixty + *number;
    }
    const auto seconds = ParseAll<double>(fields.back(), std::chars_format::fixed);
    if (!seconds || (fields.size() > 1 && *seconds >= static_cast<double>(kSixty))) return std::nullopt;
    const double milliseconds = (static_cast<double>(minutes * kSixty) + *seconds) * 1000;
    if (milliseconds > static_cast<double>(kLongestTimeMs)) return std::nullopt;
    return std::llround(milliseconds);
}

std::string NumberText(double number) {
    std::array<char, 400> text{}; // the largest double has 309 digits
    const auto [end, failure] =
        std::to_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed);
    return failure == std::errc() ? std::string(text.data(), end) : std::string("?");
}

std::string_view SideName(PixelAxis axis) {
    switch (axis) {
    case PixelAxis::Width:
        return "width";
    case PixelAxis::Height:
        return "height";
    case PixelAxis::Smaller:
        return "smaller side";
    case PixelAxis::None:
        break;
    }
    return {};
}

std::string_view PercentageBase(const PropertyInfo& property) { return SideName(property.pixels); }

std::optional<double> ParsePercentage(const PropertyInfo& property, std::string_view value) {
    if (property.pixels == PixelAxis::None || !value.ends_with('%')) return std::nullopt;
    value.remove_suffix(1);
    const auto percentage = ParseReal(Unspoken(property, value));
    if (percentage && *percentage < 0 && property.minimum >= 0) return std::nullopt;
    return percentage;
}

double PixelsIn(const PropertyInfo& property, double percentage, unsigned width, unsigned height) {
    // 32.3 % of 500 is a hair below 161.5 in binary.
    constexpr double kSlack = 1e-9;
    return std::floor(percentage * AVBased::SideLength(property.pixels, width, height) / 100 + 0.5 + kSlack);
}

std::string PixelsOfPercentage(const EffectInfo& effect, const PropertyInfo& property, double percentage,
                               unsigned width, unsigned height) {
    const double pixels = PixelsIn(property, percentage, width, height);
    if (InRange(property, pixels)) return NumberText(pixels);
    throw Error(ErrorKind::Usage, std::string(property.name) + " of " + std::string(effect.shortName) +
                                      " is " + ValueRule(property) + ", but " + NumberText(percentage) +
                                      "% is " + NumberText(pixels) + " px in a picture of " +
                                      std::to_string(width) + "x" + std::to_string(height));
}

std::string SpokenValue(const PropertyInfo& property, const std::string& stored) {
    if (property.kind == ValueKind::Switch) return stored == "1" ? "on" : "off";
    for (const auto& choice : property.choices)
        if (std::to_string(choice.value) == stored) return std::string(choice.name);
    const auto colour = property.kind == ValueKind::Colour ? ParseWhole(stored) : std::nullopt;
    if (!colour) return stored;
    std::array<char, sizeof "#RRGGBB"> text{};
    std::snprintf(text.data(), text.size(), "#%06X", static_cast<unsigned>(*colour) & 0xFFFFFF);
    return text.data();
}

std::string DefaultText(const PropertyInfo& property) {
    const char* const start = property.InForceAtFirst();
    if (start == property.defaultText && *start) return SpokenValue(property, start);
    if (property.type == PropertyType::kText) return "none";
    std::string text = start && *start ? SpokenValue(property, start) : "none of its values";
    if (!*property.defaultText) return text;
    return text + " (reported as '" + property.defaultText + "' until it is set)";
}

std::string PresetName(const EffectInfo& effect, const AVBased::EffectPreset& preset) {
    return std::string(effect.shortName) + "/" + std::string(preset.name);
}

std::string SettingsText(const EffectInfo& effect, const AVBased::EffectPreset& preset) {
    std::string text;
    for (const AVBased::PresetSetting& setting : preset.Settings()) {
        const std::string number = NumberText(setting.value);
        text += (text.empty() ? "" : ":") + std::string(setting.property) + "=" +
                (setting.percentage ? number + "%"
                                    : SpokenValue(*AVBased::FindProperty(effect, setting.property), number));
    }
    return text;
}

std::string EscapedValue(std::string_view value) {
    std::string escaped;
    for (const char letter : value) {
        if (letter == ':' || letter == '\\') escaped += '\\';
        escaped += letter;
    }
    return escaped;
}

std::string ValueRule(const PropertyInfo& property) {
    switch (property.kind) {
    case ValueKind::Number:
        return (IsWhole(property) ? "a whole number" : "a number") + RangeText(property) +
               PercentageText(property);
    case ValueKind::Switch:
        return "on or off";
    case ValueKind::Choice:
        return ChoiceText(property);
    case ValueKind::Colour:
        return "a colour: #RRGGBB, 0xRRGGBB or a number" + RangeText(property);
    case ValueKind::Path:
        return "the path of a media file";
    case ValueKind::Text:
        break;
    }
    return "a text";
}

std::string TranslateValue(const EffectInfo& effect, const PropertyInfo& property, const std::string& value) {
    if (auto translated = Translate(property, value)) return *std::move(translated);
    throw Error(ErrorKind::Usage, std::string(property.name) + " of " + std::string(effect.shortName) +
                                      " is " + ValueRule(property) + ", not '" + value + "'");
}

} // namespace aveffect
