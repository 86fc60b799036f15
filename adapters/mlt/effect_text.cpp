#include "adapters/mlt/effect_text.h"

#include <array>
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
};

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
    return NumberText(property.type == AVBased::kDouble ? number : std::round(number));
}

/// A colon or backslash is the value's own.
std::string Escaped(std::string_view text) {
    std::string escaped;
    for (const char letter : text) {
        if (letter == ':' || letter == '\\') escaped += '\\';
        escaped += letter;
    }
    return escaped;
}

std::string ValueText(const Place& place, const AVBased::PropertyInfo& property, std::string_view text) {
    using enum AVBased::ValueKind;
    if (property.kind == Colour) return ColourText(place);
    const bool moves =
        property.kind != Path && property.kind != Text && text.find('=') != std::string_view::npos;
    if (!moves) return Escaped(text);
    return NumberAt(place, property, text.find('%') != std::string_view::npos);
}

} // namespace

std::string EffectText(const AVBased::EffectInfo& effect, mlt_properties properties, int position,
                       int length) {
    std::string text(effect.shortName);
    const char* const preset = mlt_properties_get(properties, kPreset);
    if (preset && *preset) text.append("/").append(preset);
    for (const AVBased::PropertyInfo& property : effect.properties) {
        const char* const value = mlt_properties_get(properties, property.name);
        if (!value || !*value) continue;
        text.append(":").append(property.name).append("=");
        text.append(ValueText({properties, property.name, position, length}, property, value));
    }
    return text;
}

} // namespace aveffect::mlt
