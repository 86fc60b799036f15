#include "cli/catalogue_json.h"

#include <cmath>

#include "cli/catalogue_text.h"
#include "host/settings/catalogue_lookup.h"
#include "host/settings/value_text.h"

namespace aveffect {

using AVBased::EffectInfo;
using AVBased::PropertyInfo;
using nlohmann::ordered_json;

namespace {

ordered_json NumberJson(double number) {
    // Whole numbers without a point, for readers that tell the two apart.
    constexpr double kExactlyWhole = 9007199254740992.0; // 2^53
    if (!std::isfinite(number)) return nullptr;
    if (std::abs(number) <= kExactlyWhole && number == std::floor(number))
        return static_cast<int64_t>(number);
    return number;
}

ordered_json ValueJson(const PropertyInfo& property, const char* text) {
    if (!text) return nullptr;
    if (property.kind == AVBased::ValueKind::Switch) return text == std::string_view("1");
    if (property.type == AVBased::kText) return text;
    if (const auto whole = ParseWhole(text)) return *whole;
    if (const auto real = ParseReal(text)) return NumberJson(*real);
    return text;
}

ordered_json PropertyJson(const PropertyInfo& property) {
    ordered_json choices = ordered_json::array();
    for (const auto& choice : property.choices)
        choices.push_back({{"value", choice.value}, {"name", choice.name}, {"help", choice.help}});
    const std::string_view percentageBase = PercentageBase(property);
    return {
        {"name", property.name},
        {"title", property.title},
        {"help", property.help},
        {"type", TypeName(property.type)},
        {"kind", ValueKindName(property.kind)},
        {"default", ValueJson(property, property.InForceAtFirst())},
        {"defaultText", property.defaultText},
        {"start", ValueJson(property, property.InForceAtFirst())},
        {"unit", property.unit},
        {"minimum", NumberJson(property.minimum)},
        {"maximum", NumberJson(property.maximum)},
        {"neutral", NumberJson(property.neutral)},
        {"countsPixels", !percentageBase.empty()},
        {"percentOf", percentageBase.empty() ? ordered_json() : ordered_json(percentageBase)},
        {"choices", choices},
    };
}

ordered_json PresetJson(const EffectInfo& effect, const AVBased::EffectPreset& preset) {
    ordered_json settings = ordered_json::array();
    for (const AVBased::PresetSetting& setting : preset.Settings())
        settings.push_back({{"property", setting.property},
                            {"value", NumberJson(setting.value)},
                            {"percentage", setting.percentage}});
    return {{"name", preset.name},
            {"help", preset.help},
            {"text", SettingsText(effect, preset)},
            {"settings", settings}};
}

template <typename Values, typename ToJson>
ordered_json ArrayJson(const Values& values, ToJson toJson) {
    ordered_json array = ordered_json::array();
    for (const auto& value : values) array.push_back(toJson(value));
    return array;
}

ordered_json ConditionJson(const AVBased::NeutralCondition& condition) {
    if (condition.beyond == AVBased::PixelAxis::None)
        return {{"property", condition.property}, {"least", condition.least}, {"most", condition.most}};
    return {
        {"property", condition.property}, {"beyond", SideName(condition.beyond)}, {"sides", condition.sides}};
}

/// Sets of conditions: where all of one hold, the effect changes nothing.
ordered_json NeutralJson(const EffectInfo& effect) {
    return ArrayJson(effect.neutral, [](const AVBased::NeutralSettings& settings) {
        ordered_json conditions = ordered_json::array();
        for (const auto& condition : settings.conditions)
            if (condition.property) conditions.push_back(ConditionJson(condition));
        return conditions;
    });
}

} // namespace

ordered_json EffectJson(const EffectInfo& effect) {
    ordered_json properties = ordered_json::array();
    for (const auto& property : effect.properties) properties.push_back(PropertyJson(property));
    properties.push_back(PropertyJson(AVBased::kDurationProperty));
    return {
        {"name", effect.name},
        {"shortName", effect.shortName},
        {"kind", KindName(effect.kind)},
        {"media", IsVideoEffect(effect) ? "video" : "audio"},
        {"title", effect.title},
        {"help", effect.help},
        {"followsTime", (effect.traits & AVBased::kFollowsTime) != 0},
        {"keepsState", (effect.traits & AVBased::kKeepsState) != 0},
        {"preparesOnce", (effect.traits & AVBased::kPreparesOnce) != 0},
        {"drawsRandom", (effect.traits & AVBased::kDrawsRandom) != 0},
        {"fewFormats", (effect.traits & AVBased::kFewFormats) != 0},
        {"changesAlpha", (effect.traits & AVBased::kChangesAlpha) != 0},
        {"needsSettings", (effect.traits & AVBased::kNeedsSettings) != 0},
        {"movesPixels", (effect.traits & AVBased::kMovesPixels) != 0},
        {"note", effect.note},
        {"synonyms", effect.synonyms},
        {"presets",
         ArrayJson(effect.presets, [&](const auto& preset) { return PresetJson(effect, preset); })},
        {"noPresets", effect.noPresets},
        {"changesNothing", NeutralJson(effect)},
        {"properties", properties},
    };
}

ordered_json CatalogueJson() {
    ordered_json effects = ordered_json::array();
    for (const EffectInfo* effect : AllEffects()) effects.push_back(EffectJson(*effect));
    return {{"effects", effects}};
}

} // namespace aveffect
