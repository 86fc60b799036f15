#include "studio/scaled_effects.h"

#include <algorithm>
#include <cmath>

#include "host/settings/catalogue_lookup.h"
#include "host/settings/reach.h"
#include "host/settings/value_text.h"

namespace aveffect {

namespace {

using AVBased::PropertyInfo;

std::string Scaled(const PropertyInfo& property, const std::string& value, double factor) {
    const std::optional<double> number = ParseReal(value);
    if (!number) return value; // a percentage
    double scaled = *number * factor;
    if (property.type != AVBased::kDouble) scaled = std::round(scaled);
    return NumberText(
        std::clamp(scaled, std::min(property.minimum, *number), std::max(property.maximum, *number)));
}

void Scale(const PropertyInfo& property, PropertySetting& setting, double factor) {
    if (setting.percentage) return;
    if (!setting.keyframes) {
        setting.value = Scaled(property, setting.value, factor);
        return;
    }
    for (Keyframe& key : setting.keyframes->keys) key.value = Scaled(property, key.value, factor);
}

bool CountsPixels(const PropertyInfo& property) { return property.pixels != AVBased::PixelAxis::None; }

/// What is not set counts pixels too.
void AddStart(EffectSpec& effect, const PropertyInfo& property) {
    const bool set = std::ranges::find(effect.properties, property.name, &PropertySetting::name) !=
                     effect.properties.end();
    const char* const start = property.InForceAtFirst();
    if (!set && start) effect.properties.push_back({property.name, start});
}

} // namespace

std::vector<EffectSpec> ScaleEffects(std::vector<EffectSpec> effects, double factor) {
    for (EffectSpec& effect : effects) {
        const AVBased::EffectInfo& info = RequireEffect(effect.name);
        for (const PropertyInfo& property : info.properties) {
            if (!CountsPixels(property)) continue;
            AddStart(effect, property);
            for (PropertySetting& setting : effect.properties)
                if (setting.name == property.name) Scale(property, setting, factor);
        }
        for (const PropertyInfo& property : ReachProperties(false))
            for (PropertySetting& setting : effect.reach)
                if (setting.name == property.name && CountsPixels(property)) Scale(property, setting, factor);
    }
    return effects;
}

} // namespace aveffect
