#include "adapters/mlt/metadata.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "adapters/mlt/effect_text.h"
#include "adapters/mlt/transition.h"
#include "host/settings/value_text.h"

namespace aveffect::mlt {

using AVBased::EffectInfo;
using AVBased::EffectKind;
using AVBased::PropertyInfo;
using AVBased::ValueKind;

namespace {

void Set(mlt_properties table, const char* name, const std::string& text) {
    mlt_properties_set(table, name, text.c_str());
}

/// A table within another one, or an item of a list, which goes with it.
mlt_properties AddTable(mlt_properties table, const std::string& name) {
    const mlt_properties inner = mlt_properties_new();
    mlt_properties_set_data(table, name.c_str(), inner, 0,
                            reinterpret_cast<mlt_destructor>(mlt_properties_close), nullptr);
    return inner;
}

mlt_properties AddItem(mlt_properties list) {
    return AddTable(list, std::to_string(mlt_properties_count(list)));
}
void AddText(mlt_properties list, const std::string& text) {
    Set(list, std::to_string(mlt_properties_count(list)).c_str(), text);
}

bool IsWhole(const PropertyInfo& property) { return property.type != AVBased::kDouble; }

const char* TypeOf(const PropertyInfo& property) {
    switch (property.kind) {
    case ValueKind::Number:
        // Pixels may be given in percent, which no number's own type takes.
        if (property.pixels != AVBased::PixelAxis::None) return "string";
        return IsWhole(property) ? "integer" : "float";
    case ValueKind::Switch:
        return "boolean";
    case ValueKind::Colour:
        return "color";
    default:
        return "string";
    }
}

std::string DefaultOf(const PropertyInfo& property) {
    const char* const inForce = property.InForceAtFirst();
    if (!inForce || property.kind != ValueKind::Colour) return inForce ? inForce : "";
    std::array<char, sizeof "#rrggbb"> text{};
    std::snprintf(text.data(), text.size(), "#%06lx", std::strtoul(inForce, nullptr, 0) & 0xFFFFFFUL);
    return text.data();
}

std::string HelpOf(const PropertyInfo& property) {
    std::string help(property.help);
    if (property.pixels != AVBased::PixelAxis::None)
        help += " In pixels, or in percent of the picture's " + std::string(SideName(property.pixels)) + ".";
    for (const AVBased::PropertyChoice& choice : property.choices)
        help += " " + std::string(choice.name) + ": " + std::string(choice.help);
    return help;
}

void AddNumber(mlt_properties table, const PropertyInfo& property) {
    Set(table, "minimum", NumberText(property.minimum));
    Set(table, "maximum", NumberText(property.maximum));
    if (!property.unit.empty()) Set(table, "unit", std::string(property.unit));
}

void AddProperty(mlt_properties parameters, const PropertyInfo& property) {
    const mlt_properties table = AddItem(parameters);
    Set(table, "identifier", property.name);
    Set(table, "title", std::string(property.title));
    Set(table, "type", TypeOf(property));
    Set(table, "description", HelpOf(property));
    if (property.kind == ValueKind::Number) AddNumber(table, property);
    if (const std::string value = DefaultOf(property); !value.empty()) Set(table, "default", value);
    if (!property.choices.empty()) {
        const mlt_properties values = AddTable(table, "values");
        for (const AVBased::PropertyChoice& choice : property.choices)
            AddText(values, std::string(choice.name));
    }
    Set(table, "mutable", "yes");
    if (property.kind == ValueKind::Number || property.kind == ValueKind::Colour)
        Set(table, "animation", "yes");
}

void AddPresets(mlt_properties parameters, const EffectInfo& effect) {
    const mlt_properties table = AddItem(parameters);
    Set(table, "identifier", kPreset);
    Set(table, "title", "Preset");
    Set(table, "type", "string");
    std::string help = "Settings for all that is not set.";
    const mlt_properties values = mlt_properties_new();
    for (const AVBased::EffectPreset& preset : effect.presets) {
        help.append(" ").append(preset.name).append(": ").append(preset.help);
        AddText(values, std::string(preset.name));
    }
    Set(table, "description", help);
    mlt_properties_set_data(table, "values", values, 0,
                            reinterpret_cast<mlt_destructor>(mlt_properties_close), nullptr);
    Set(table, "mutable", "yes");
}

void AddProgress(mlt_properties parameters) {
    const mlt_properties table = AddItem(parameters);
    Set(table, "identifier", kProgress);
    Set(table, "title", "Progress");
    Set(table, "type", "float");
    Set(table, "description", "How far the transition has come; if not set, that of its time.");
    Set(table, "minimum", "0");
    Set(table, "maximum", "1");
    Set(table, "mutable", "yes");
    Set(table, "animation", "yes");
}

} // namespace

std::string ServiceName(const EffectInfo& effect) { return "aveffect." + std::string(effect.shortName); }

mlt_service_type ServiceType(const EffectInfo& effect) {
    return effect.kind == EffectKind::Transition ? mlt_service_transition_type : mlt_service_filter_type;
}

mlt_properties MetadataOf(const EffectInfo& effect) {
    const bool transition = effect.kind == EffectKind::Transition;
    const mlt_properties table = mlt_properties_new();
    if (!table) return nullptr;
    Set(table, "schema_version", "7.0");
    Set(table, "type", transition ? "transition" : "filter");
    Set(table, "identifier", ServiceName(effect));
    Set(table, "title", std::string(effect.title));
    Set(table, "version", AVEFFECT_VERSION);
    Set(table, "creator", "AVEffect");
    Set(table, "language", "en");
    AddText(AddTable(table, "tags"), effect.kind == EffectKind::Audio ? "Audio" : "Video");
    Set(table, "description", std::string(effect.help));
    if (!effect.note.empty()) Set(table, "notes", std::string(effect.note));
    const mlt_properties parameters = AddTable(table, "parameters");
    if (transition)
        AddProgress(parameters);
    else
        for (const PropertyInfo& property : effect.properties) AddProperty(parameters, property);
    if (!effect.presets.empty()) AddPresets(parameters, effect);
    if (mlt_properties_count(parameters) == 0) mlt_properties_clear(table, "parameters");
    return table;
}

} // namespace aveffect::mlt
