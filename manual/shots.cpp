#include "manual/shots.h"

#include <algorithm>
#include <cmath>

#include "cli/catalogue_text.h"
#include "host/settings/catalogue_lookup.h"
#include "host/settings/value_text.h"

namespace aveffect::manual {

using AVBased::EffectInfo;
using AVBased::EffectKind;
using AVBased::EffectPreset;
using AVBased::PixelAxis;
using AVBased::PresetSetting;
using AVBased::PropertyInfo;
using AVBased::ValueKind;

namespace {

const PresetSetting* FindSetting(const EffectPreset& preset, std::string_view property) {
    for (const PresetSetting& setting : preset.Settings())
        if (property == setting.property) return &setting;
    return nullptr;
}

/// The effect with the first preset in which the property does something, else the first one of all.
std::string BaseFor(const EffectInfo& effect, const PropertyInfo& property) {
    for (const EffectPreset& preset : effect.presets)
        if (FindSetting(preset, property.name)) return PresetName(effect, preset);
    return ExampleSetting(effect);
}

/// The largest size of the property's number in the presets; 1 where none sets it.
double LargestInPresets(const EffectInfo& effect, const PropertyInfo& property) {
    double largest = 1;
    for (const EffectPreset& preset : effect.presets)
        if (const auto* setting = FindSetting(preset, property.name))
            largest = std::max(largest, std::abs(setting->value));
    return largest;
}

// Places on the picture's very border, and radii that leave the picture, change nothing in most effects. Of
// ranges that are there for computers rather than for eyes, four times what presets use is shown.
std::vector<std::string> NumberEnds(const EffectInfo& effect, const PropertyInfo& property) {
    constexpr double kWide = 1000, kBeyondPresets = 4;
    if (property.pixels == PixelAxis::Smaller) return {NumberText(property.minimum), "48%"};
    if (property.pixels != PixelAxis::None) return {"5%", "95%"};
    double low = property.minimum, high = property.maximum;
    if (high - low >= kWide) {
        const double shown = kBeyondPresets * LargestInPresets(effect, property);
        high = std::min(high, shown);
        low = std::max(low, -shown);
    }
    return {NumberText(low), NumberText(high)};
}

std::vector<std::string> ValuesToShow(const EffectInfo& effect, const PropertyInfo& property) {
    switch (property.kind) {
    case ValueKind::Number:
        return NumberEnds(effect, property);
    case ValueKind::Switch:
        return {"off", "on"};
    case ValueKind::Choice: {
        std::vector<std::string> names;
        for (const auto& choice : property.choices) names.emplace_back(choice.name);
        return names;
    }
    case ValueKind::Colour:
        return {"#000000", "#ffffff"};
    case ValueKind::Path:
    case ValueKind::Text:
        break;
    }
    return {};
}

PropertyShots PlanProperty(const EffectInfo& effect, const PropertyInfo& property) {
    PropertyShots planned{&property};
    const bool pictures = effect.kind != EffectKind::Transition && effect.kind != EffectKind::Audio;
    if (!pictures) return planned;
    for (const std::string& value : ValuesToShow(effect, property)) {
        const std::string number = std::to_string(planned.shots.size() + 1);
        planned.shots.push_back({std::string(effect.shortName) + "-" + property.name + "-" + number,
                                 BaseFor(effect, property) + ":" + property.name + "=" + value, value});
    }
    return planned;
}

/// A setting that swings from where it changes nothing to the first preset's value and back; empty when the
/// preset has no such number.
std::string MovingSetting(const EffectInfo& effect) {
    if (effect.presets.empty()) return {};
    const EffectPreset& preset = effect.presets.front();
    for (const PresetSetting& setting : preset.Settings()) {
        const PropertyInfo& property = *AVBased::FindProperty(effect, setting.property);
        const bool swings = property.kind == ValueKind::Number && property.neutral != setting.value;
        if (!swings || std::isnan(property.neutral)) continue;
        const std::string unit = setting.percentage ? "%" : "";
        const std::string still = NumberText(property.neutral) + unit;
        std::string text = PresetName(effect, preset) + ":" + property.name;
        text.append("=0%~=").append(still).append(";50%~=").append(NumberText(setting.value)).append(unit);
        return text.append(";100%~=").append(still);
    }
    return {};
}

std::optional<Shot> PlanMoving(const EffectInfo& effect) {
    const std::string file = std::string(effect.shortName) + "-moving";
    const bool transition = effect.kind == EffectKind::Transition;
    if (transition || effect.traits & AVBased::kFollowsTime)
        return Shot{file, ExampleSetting(effect), "The effect over its span.", true};
    const std::string setting = MovingSetting(effect);
    if (setting.empty()) return {};
    return Shot{file, setting, "A setting that moves: " + setting, true};
}

EffectShots PlanEffect(const EffectInfo& effect) {
    EffectShots shots{&effect, {}};
    for (const PropertyInfo& property : effect.properties)
        shots.properties.push_back(PlanProperty(effect, property));
    if (effect.kind == EffectKind::Audio) return shots;
    const std::string name(effect.shortName);
    const bool twoViews = effect.kind == EffectKind::Stereo;
    for (const EffectPreset& preset : effect.presets)
        shots.presets.push_back({name + "-preset-" + std::string(preset.name), PresetName(effect, preset),
                                 std::string(preset.help), false, twoViews});
    shots.moving = PlanMoving(effect);
    if (effect.kind == EffectKind::Transition) return shots; // its middle is the animation's still picture
    shots.main = Shot{name, ExampleSetting(effect), ExampleSetting(effect), false, twoViews};
    return shots;
}

} // namespace

std::vector<EffectShots> PlanShots() {
    std::vector<EffectShots> all;
    for (const EffectInfo* effect : AllEffects()) all.push_back(PlanEffect(*effect));
    return all;
}

} // namespace aveffect::manual
