#include "host/effects/neutral_settings.h"

#include "host/settings/catalogue_lookup.h"
#include "host/settings/value_text.h"

namespace aveffect {
namespace {

/// Absent for what is no number, and where no value is in force until the property is set.
std::optional<double> StoredValue(const AVBased::PropertyInfo& property, const std::string& text) {
    return property.type == AVBased::kText ? static_cast<double>(text.size()) : ParseReal(text);
}

std::optional<double> ValueOf(const EffectSpec& effect, const AVBased::PropertyInfo& property, unsigned width,
                              unsigned height) {
    for (auto setting = effect.properties.rbegin(); setting != effect.properties.rend(); ++setting) {
        if (setting->name != property.name) continue;
        if (!setting->percentage) return StoredValue(property, setting->value);
        if (*setting->percentage != 0 && width == 0) return std::nullopt;
        return PixelsIn(property, *setting->percentage, width, height);
    }
    const char* const start = property.InForceAtFirst();
    return start ? StoredValue(property, start) : std::nullopt;
}

} // namespace

void WarnOfNeutral(const std::vector<EffectSpec>& effects, unsigned width, unsigned height,
                   Reporter& reporter) {
    for (const EffectSpec& effect : effects) {
        const AVBased::EffectInfo& info = RequireEffect(effect.name);
        const auto valueOf = [&](const AVBased::PropertyInfo& property) {
            return ValueOf(effect, property, width, height);
        };
        if (!AVBased::ChangesNothing(info, valueOf, width, height)) continue;
        const bool sound = info.kind == AVBased::EffectKind::Audio;
        std::string text = std::string(info.shortName) + " with these settings leaves " +
                           (sound ? "sound as it is" : "pictures as they are");
        if (!info.presets.empty()) text += "; try " + PresetName(info, info.presets.front());
        reporter.Warn(text);
    }
}

} // namespace aveffect
