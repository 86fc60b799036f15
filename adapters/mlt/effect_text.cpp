#include "adapters/mlt/effect_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <string_view>

#include "host/settings/value_text.h"

namespace aveffect::mlt {

namespace {

/// A moment of a setting.
struct Place {
    mlt_properties properties;
    const char* name;
    int position, length;
    Scale scale = {};
    int64_t beginMs = 0, endMs = 0; ///< of its sound; the same for a picture
};

double ScaleOf(AVBased::PixelAxis axis, const Scale& scale) {
    using enum AVBased::PixelAxis;
    if (axis == None) return 1;
    return axis == Width ? scale.across : axis == Height ? scale.down : std::min(scale.across, scale.down);
}

std::string ColourText(const Place& place) {
    const mlt_color colour =
        mlt_properties_anim_get_color(place.properties, place.name, place.position, place.length);
    std::array<char, sizeof "#rrggbb"> text{};
    std::snprintf(text.data(), text.size(), "#%02x%02x%02x", colour.r, colour.g, colour.b);
    return text.data();
}

// The host takes "30%" for 0.3.
std::string NumberAt(const Place& place, const AVBased::PropertyInfo& property, bool percentage) {
    constexpr double kWhole = 100;
    const double number =
        mlt_properties_anim_get_double(place.properties, place.name, place.position, place.length);
    if (percentage) return NumberText(number * kWhole) + "%";
    const double factor = ScaleOf(property.pixels, place.scale);
    const double drawn = factor == 1 ? number : std::max(property.minimum, number * factor);
    return NumberText(property.type == AVBased::kDouble ? drawn : std::round(drawn));
}

std::string MovingText(const Place& place, const AVBased::PropertyInfo& property, bool percentage) {
    std::string now = NumberAt(place, property, percentage);
    if (place.beginMs >= place.endMs) return now;
    Place next = place;
    ++next.position;
    const std::string then = NumberAt(next, property, percentage);
    if (then == now) return now;
    const auto at = [](int64_t ms) { return NumberText(static_cast<double>(ms) / 1000) + "="; };
    return at(place.beginMs) + now + ";" + at(place.endMs) + then;
}

bool IsNumber(std::string_view text) {
    double number = 0;
    return std::from_chars(text.data(), text.data() + text.size(), number).ptr == text.data() + text.size();
}

std::string ValueText(const Place& place, const AVBased::PropertyInfo& property, std::string_view text) {
    using enum AVBased::ValueKind;
    if (property.kind == Colour) return ColourText(place);
    if (property.kind == Path || property.kind == Text) return EscapedValue(text);
    const auto has = [&](char letter) { return text.find(letter) != std::string_view::npos; };
    // What editors have computed may be written as 2.1e+06.
    const bool computed =
        property.kind == Number && IsNumber(text) && (ScaleOf(property.pixels, place.scale) != 1 || has('e'));
    return has('=') || computed ? MovingText(place, property, has('%')) : EscapedValue(text);
}

/// The place has no name yet.
std::string TextAt(const AVBased::EffectInfo& effect, Place place) {
    std::string text(effect.shortName);
    const char* const preset = mlt_properties_get(place.properties, kPreset);
    if (preset && *preset) text.append("/").append(preset);
    for (const AVBased::PropertyInfo& property : effect.properties) {
        const char* const value = mlt_properties_get(place.properties, property.name);
        // A key without a value is an editor's way of leaving it open.
        if (!value || !*value || std::string_view(value).ends_with('=')) continue;
        place.name = property.name;
        text.append(":").append(property.name).append("=").append(ValueText(place, property, value));
    }
    return text;
}

} // namespace

std::string EffectText(const AVBased::EffectInfo& effect, mlt_properties properties, int position, int length,
                       const Scale& scale) {
    return TextAt(effect, {properties, nullptr, position, length, scale});
}

std::string SoundText(const AVBased::EffectInfo& effect, mlt_properties properties, int position, int length,
                      int64_t beginMs, int64_t endMs) {
    return TextAt(effect, {properties, nullptr, position, length, {}, beginMs, endMs});
}

} // namespace aveffect::mlt
