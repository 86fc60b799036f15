#include "host/settings/effect_settings.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "host/settings/catalogue_lookup.h"
#include "host/settings/reach.h"
#include "host/settings/settings_at_time.h"
#include "host/settings/value_text.h"
#include "host/support/error.h"

namespace aveffect {

namespace {

bool IsDigit(char letter) { return letter >= '0' && letter <= '9'; }

/// Cuts at colons that no backslash protects and that no value's time has: no name begins with a digit. The
/// escapes stay in the parts, for names have none.
std::vector<std::string> SplitAtColons(const std::string& text) {
    std::vector<std::string> parts(1);
    for (size_t index = 0; index < text.size(); ++index) {
        const bool inTime = index + 1 < text.size() && IsDigit(text[index + 1]) &&
                            parts.back().find('=') != std::string::npos;
        if (text[index] == ':' && !inTime) {
            parts.emplace_back();
            continue;
        }
        parts.back() += text[index];
        if (text[index] == '\\' && index + 1 < text.size()) parts.back() += text[++index];
    }
    return parts;
}

/// "\:" and "\\" lose their backslash; a backslash before anything else is meant.
std::string Unescape(const std::string& text) {
    std::string result;
    for (size_t index = 0; index < text.size(); ++index) {
        const bool escape = text[index] == '\\' && index + 1 < text.size();
        if (escape && (text[index + 1] == ':' || text[index + 1] == '\\')) ++index;
        result += text[index];
    }
    return result;
}

PropertySetting TranslateOne(const AVBased::EffectInfo& effect, const AVBased::PropertyInfo& property,
                             const std::string& value) {
    if (const auto percentage = ParsePercentage(property, value)) return {property.name, {}, percentage};
    return {property.name, TranslateValue(effect, property, value)};
}

/// What keyframes' values are is found out when they are used; here they are checked.
PropertySetting TranslateAll(const AVBased::EffectInfo& effect, const AVBased::PropertyInfo& property,
                             const std::string& value) {
    Keyframes keyframes = ParseKeyframes(property.name, std::string(effect.shortName), value);
    for (const Keyframe& key : keyframes.keys) {
        try {
            TranslateOne(effect, property, key.value);
        } catch (const Error& wrong) {
            throw Error(wrong.Kind(), wrong.what(), PictureOf(keyframes, key.place, key.length));
        }
    }
    return {property.name, {}, {}, std::move(keyframes)};
}

PropertySetting Translate(const AVBased::EffectInfo& effect, const AVBased::PropertyInfo& property,
                          const std::string& value) {
    const bool text = property.kind == AVBased::ValueKind::Text || property.kind == AVBased::ValueKind::Path;
    return text || !IsAnimated(value) ? TranslateOne(effect, property, value)
                                      : TranslateAll(effect, property, value);
}

PropertySetting TranslateTime(const AVBased::EffectInfo& effect, const AVBased::PropertyInfo& property,
                              const std::string& value, bool isLength) {
    const auto time = ParseSettingTime(value);
    if (!time || (isLength && time->fromEnd))
        throw Error(ErrorKind::Usage, std::string(property.name) + " of " + std::string(effect.shortName) +
                                          " is a time: seconds, mm:ss, hh:mm:ss, 25f (pictures) or 50%" +
                                          (isLength ? "" : ", with - in front from the end") + "; not '" +
                                          value + "'");
    return {property.name, value};
}

PropertySetting TranslateReach(const AVBased::EffectInfo& effect, const AVBased::PropertyInfo& property,
                               const std::string& value) {
    const std::string_view name = property.name;
    if (name == reach::kFrom || name == reach::kTo) return TranslateTime(effect, property, value, false);
    if (name == reach::kFadeIn || name == reach::kFadeOut)
        return TranslateTime(effect, property, value, true);
    if (name != reach::kArea) return Translate(effect, property, value);
    PropertySetting area{property.name, value};
    if (IsAnimated(value))
        area = {property.name, {}, {}, ParseKeyframes(property.name, std::string(effect.shortName), value)};
    CheckArea(effect, area);
    return area;
}

std::vector<PropertySetting> SettingsOf(const AVBased::EffectPreset& preset) {
    std::vector<PropertySetting> settings;
    for (const AVBased::PresetSetting& setting : preset.Settings())
        settings.push_back(setting.percentage ? PropertySetting{setting.property, {}, setting.value}
                                              : PropertySetting{setting.property, NumberText(setting.value)});
    return settings;
}

const AVBased::PropertyInfo& RequireReach(const AVBased::EffectInfo& effect, const std::string& name) {
    std::vector<std::string_view> names;
    for (const AVBased::PropertyInfo& property : ReachProperties(effect.kind == AVBased::EffectKind::Audio)) {
        if (name == property.name) return property;
        names.push_back(property.name);
    }
    std::string known;
    for (const std::string_view one : names) known += (known.empty() ? "" : ", ") + std::string(one);
    throw Error(ErrorKind::Usage, std::string(effect.shortName) + " has no '" + name + "', but " + known);
}

void RequirePlace(const EffectSpec& spec, const AVBased::EffectInfo& effect) {
    const auto has = [&](const char* name) {
        return std::ranges::find(spec.reach, name, &PropertySetting::name) != spec.reach.end();
    };
    const std::string name(effect.shortName);
    if (has(reach::kMask) && has(reach::kArea))
        throw Error(ErrorKind::Usage, name + " takes either @mask or @area");
    for (const char* edge : {reach::kMaskInvert, reach::kMaskFeather})
        if (has(edge) && !has(reach::kMask) && !has(reach::kArea))
            throw Error(ErrorKind::Usage, std::string(edge) + " of " + name + " needs @mask or @area");
}

/// "property=value"; whole is what it is a part of.
PropertySetting ParseSetting(const AVBased::EffectInfo& effect, const std::string& setting,
                             const std::string& whole, bool lenient) {
    const size_t equals = setting.find('=');
    const std::string name = setting.substr(0, equals);
    if (name.empty())
        throw Error(ErrorKind::Usage, "a setting in '" + whole + "' has no name; write property=value");
    const bool isReach = name.starts_with('@');
    const AVBased::PropertyInfo& property =
        isReach ? RequireReach(effect, name) : RequireProperty(effect, name);
    if (equals == std::string::npos)
        throw Error(ErrorKind::Usage,
                    name + " of " + std::string(effect.shortName) + " has no value; write property=value");
    const std::string value = Unescape(setting.substr(equals + 1));
    if (isReach) return TranslateReach(effect, property, value);
    return lenient ? PropertySetting{name, value} : Translate(effect, property, value);
}

/// Settings that are added take the place of those of the same properties.
void Override(std::vector<PropertySetting>& settings, std::vector<PropertySetting> added) {
    std::erase_if(settings, [&](const PropertySetting& setting) {
        return std::ranges::find(added, setting.name, &PropertySetting::name) != added.end();
    });
    std::ranges::move(added, std::back_inserter(settings));
}

} // namespace

EffectSpec ParseEffect(const std::string& text, bool lenient, Medium medium) {
    const auto parts = SplitAtColons(text);
    if (parts.front().empty())
        throw Error(ErrorKind::Usage,
                    "'" + text + "' names no effect; write NAME[/PRESET][:property=value...]");
    const size_t slash = parts.front().find('/');
    const AVBased::EffectInfo& effect = RequireEffect(parts.front().substr(0, slash));
    const bool forSound = effect.kind == AVBased::EffectKind::Audio;
    if (forSound != (medium == Medium::Audio))
        throw Error(ErrorKind::Usage, std::string(effect.shortName) +
                                          (forSound ? " works on sound: name it with -a, not with -e"
                                                    : " works on pictures: name it with -e, not with -a"));

    EffectSpec spec{effect.name, {}, {}};
    if (slash != std::string::npos)
        spec.properties = SettingsOf(RequirePreset(effect, parts.front().substr(slash + 1)));
    std::vector<PropertySetting> written;
    for (size_t index = 1; index < parts.size(); ++index)
        written.push_back(ParseSetting(effect, parts[index], text, lenient));
    const auto isReach = [](const PropertySetting& setting) { return setting.name.starts_with('@'); };
    for (const PropertySetting& setting : written)
        if (isReach(setting)) Override(spec.reach, {setting});
    std::erase_if(written, isReach);
    RequirePlace(spec, effect);
    Override(spec.properties, std::move(written));
    return spec;
}

EffectWording SplitEffect(const std::string& text) {
    const auto parts = SplitAtColons(text);
    const size_t slash = parts.front().find('/');
    EffectWording effect{parts.front().substr(0, slash), {}, {}};
    if (slash != std::string::npos) effect.preset = parts.front().substr(slash + 1);
    for (size_t index = 1; index < parts.size(); ++index) {
        const size_t equals = std::min(parts[index].find('='), parts[index].size());
        effect.settings.emplace_back(
            parts[index].substr(0, equals),
            Unescape(parts[index].substr(std::min(equals + 1, parts[index].size()))));
    }
    return effect;
}

std::string EffectWording::Text() const {
    std::string text = name + (preset.empty() ? "" : "/" + preset);
    for (const auto& [setting, value] : settings) text += ":" + setting + "=" + EscapedValue(value);
    return text;
}

std::vector<std::string> FilesOf(const EffectSpec& effect) {
    std::vector<std::string> names;
    for (const PropertySetting& setting : effect.reach)
        if (setting.name == reach::kMask) names.push_back(setting.value);
    const AVBased::EffectInfo* const known = FindNamed(effect.name);
    if (!known) return names;
    for (const AVBased::PropertyInfo& property : known->properties)
        for (const PropertySetting& setting : effect.properties)
            if (property.kind == AVBased::ValueKind::Path && setting.name == property.name)
                names.push_back(setting.value);
    return names;
}

} // namespace aveffect
