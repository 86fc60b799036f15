#include "adapters/frei0r/parameters.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <stdexcept>

#include "adapters/frei0r/frei0r_interface.h"
#include "host/settings/value_text.h"

namespace aveffect::frei0r {

using AVBased::EffectInfo;
using AVBased::EffectPreset;
using AVBased::PixelAxis;
using AVBased::PropertyInfo;
using AVBased::ValueKind;

namespace {

constexpr double kColourSteps = 255;
constexpr double kWhole = 100; // percent

bool IsWhole(const PropertyInfo& property) { return property.type != AVBased::kDouble; }

double Span(const PropertyInfo& property) { return property.maximum - property.minimum; }

/// Default values of counts of pixels are shares of this, for they must not depend on a picture's size: hosts
/// ask an instance of any size, and tell them to another one.
double UsualSide(PixelAxis axis) {
    constexpr unsigned kUsualWidth = 1920, kUsualHeight = 1080;
    return AVBased::SideLength(axis, kUsualWidth, kUsualHeight);
}

ParameterValue InitialValue(const PropertyInfo& property) {
    ParameterValue value;
    const char* const inForce = property.InForceAtFirst();
    const double number = std::strtod(inForce ? inForce : property.defaultText, nullptr);
    if (property.kind == ValueKind::Colour) {
        const auto colour = inForce ? static_cast<uint32_t>(std::strtoul(inForce, nullptr, 0)) : 0;
        const auto part = [&](unsigned shift) {
            return static_cast<float>((colour >> shift & 0xFF) / kColourSteps);
        };
        value.red = part(16);
        value.green = part(8);
        value.blue = part(0);
    } else if (property.kind == ValueKind::Switch) {
        value.number = number != 0 ? 1 : 0;
    } else if (property.pixels != PixelAxis::None) {
        value.number = number / UsualSide(property.pixels);
    } else {
        value.number = (number - property.minimum) / Span(property);
    }
    value.number = std::clamp(value.number, 0.0, 1.0);
    return value;
}

std::string ScaleText(const PropertyInfo& property) {
    if (property.kind == ValueKind::Switch || property.kind == ValueKind::Colour) return {};
    if (property.pixels != PixelAxis::None)
        return " Share of the picture's " + std::string(SideName(property.pixels)) + ".";
    std::string text = " 0 to 1 is " + NumberText(property.minimum) + " to " + NumberText(property.maximum);
    if (!property.unit.empty()) text += " " + std::string(property.unit);
    return text + ".";
}

int TypeOf(const PropertyInfo& property) {
    if (property.kind == ValueKind::Switch) return F0R_PARAM_BOOL;
    return property.kind == ValueKind::Colour ? F0R_PARAM_COLOR : F0R_PARAM_DOUBLE;
}

std::string PresetNames(const EffectInfo& effect) {
    std::string names;
    for (const EffectPreset& preset : effect.presets)
        names += (names.empty() ? "" : ", ") + std::string(preset.name);
    return names;
}

/// A number in the property's range as the plug-in reads it.
std::string TextOf(const PropertyInfo& property, double number) {
    constexpr double kDigits = 1e9; // what the way from 0..1 adds to -3 goes
    number = std::clamp(number, property.minimum, property.maximum);
    return NumberText(IsWhole(property) ? std::round(number) : std::round(number * kDigits) / kDigits);
}

std::string PixelText(const PropertyInfo& property, double percentage, unsigned width, unsigned height) {
    return TextOf(property, PixelsIn(property, percentage, width, height));
}

std::string NearestChoice(const PropertyInfo& property, double number) {
    const auto nearest = std::ranges::min_element(
        property.choices, {}, [&](const auto& choice) { return std::fabs(choice.value - number); });
    return std::to_string(nearest->value);
}

std::string TextOf(const Parameter& parameter, const ParameterValue& value, unsigned width, unsigned height) {
    const PropertyInfo& property = *parameter.property;
    if (parameter.type == F0R_PARAM_COLOR) {
        const auto part = [](float share) {
            return static_cast<uint32_t>(std::lround(share * kColourSteps));
        };
        return std::to_string(part(value.red) << 16 | part(value.green) << 8 | part(value.blue));
    }
    if (parameter.type == F0R_PARAM_BOOL) return value.number != 0 ? "1" : "0";
    if (property.pixels != PixelAxis::None) return PixelText(property, value.number * kWhole, width, height);
    const double number = property.minimum + value.number * Span(property);
    return property.choices.empty() ? TextOf(property, number) : NearestChoice(property, number);
}

/// Also for hosts that keep numbers as texts of a few digits.
bool IsInitial(const Parameter& parameter, const ParameterValue& value) {
    constexpr double kRoom = 1e-6;
    const auto near = [](double a, double b) { return std::fabs(a - b) <= kRoom; };
    const ParameterValue& initial = parameter.initial;
    return near(value.number, initial.number) && near(value.red, initial.red) &&
           near(value.green, initial.green) && near(value.blue, initial.blue);
}

const EffectPreset* FindPreset(const EffectInfo& effect, const std::string& name) {
    const auto found = std::ranges::find(effect.presets, name, &EffectPreset::name);
    if (found != effect.presets.end()) return &*found;
    if (name.empty()) return nullptr;
    throw std::runtime_error("preset '" + name + "' is unknown; these are: " + PresetNames(effect));
}

float Share(float number, float otherwise) {
    return std::isfinite(number) ? std::clamp(number, 0.0F, 1.0F) : otherwise;
}

} // namespace

std::vector<Parameter> ParametersOf(const EffectInfo& effect) {
    std::vector<Parameter> parameters;
    if (effect.traits & AVBased::kFollowsTime)
        parameters.push_back({kProgress,
                              "How far the effect has come: 0 is its beginning, 1 its end.",
                              F0R_PARAM_DOUBLE,
                              nullptr,
                              {}});
    // A transition's properties are its times and pictures, which come from the host.
    if (effect.kind != AVBased::EffectKind::Transition)
        for (const PropertyInfo& property : effect.properties)
            parameters.push_back({property.name, std::string(property.help) + ScaleText(property),
                                  TypeOf(property), &property, InitialValue(property)});
    if (!effect.presets.empty())
        parameters.push_back({kPreset,
                              "Settings for all that is at its default: " + PresetNames(effect) + ".",
                              F0R_PARAM_STRING,
                              nullptr,
                              {}});
    return parameters;
}

ParameterValue ReadValue(const Parameter& parameter, const void* value) {
    const ParameterValue& initial = parameter.initial;
    ParameterValue read;
    if (parameter.type == F0R_PARAM_STRING) {
        const char* const text = *static_cast<const char* const*>(value);
        if (text) read.text = text;
    } else if (parameter.type == F0R_PARAM_COLOR) {
        const auto& colour = *static_cast<const f0r_param_color_t*>(value);
        read.red = Share(colour.r, initial.red);
        read.green = Share(colour.g, initial.green);
        read.blue = Share(colour.b, initial.blue);
    } else {
        const double number = *static_cast<const double*>(value);
        read.number = std::isfinite(number) ? std::clamp(number, 0.0, 1.0) : initial.number;
        constexpr double kOn = 0.5;
        if (parameter.type == F0R_PARAM_BOOL) read.number = read.number >= kOn ? 1 : 0;
    }
    return read;
}

void WriteValue(const Parameter& parameter, const ParameterValue& value, void* to) {
    if (parameter.type == F0R_PARAM_STRING)
        *static_cast<const char**>(to) = value.text.c_str();
    else if (parameter.type == F0R_PARAM_COLOR)
        *static_cast<f0r_param_color_t*>(to) = {value.red, value.green, value.blue};
    else
        *static_cast<double*>(to) = value.number;
}

Settings SettingsFor(const EffectInfo& effect, const std::vector<Parameter>& parameters,
                     const std::vector<ParameterValue>& values, unsigned width, unsigned height) {
    Settings settings;
    for (size_t index = 0; index < parameters.size(); ++index)
        if (parameters[index].property && !IsInitial(parameters[index], values[index]))
            settings.emplace_back(parameters[index].property->name,
                                  TextOf(parameters[index], values[index], width, height));
    const EffectPreset* const preset = parameters.empty() || parameters.back().name != kPreset
                                           ? nullptr
                                           : FindPreset(effect, values.back().text);
    if (!preset) return settings;
    Settings all;
    for (const AVBased::PresetSetting& setting : preset->Settings()) {
        const std::string_view name = setting.property;
        if (std::ranges::any_of(settings, [&](const auto& own) { return own.first == name; })) continue;
        const PropertyInfo& property = *AVBased::FindProperty(effect, name);
        all.emplace_back(property.name, setting.percentage ? PixelText(property, setting.value, width, height)
                                                           : NumberText(setting.value));
    }
    all.insert(all.end(), settings.begin(), settings.end());
    return all;
}

} // namespace aveffect::frei0r
