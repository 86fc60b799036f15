#include "timeline/otio/metadata_schema.h"

#include <string>
#include <utility>

#include "host/settings/catalogue_lookup.h"
#include "host/settings/reach.h"
#include "host/settings/value_text.h"

namespace aveffect {

namespace {

using AVBased::EffectInfo;
using AVBased::PropertyInfo;
using AVBased::ValueKind;

constexpr char kNumberText[] = R"(^[-+]?([0-9]+\.?[0-9]*|\.[0-9]+)([eE][-+]?[0-9]+)?%?$)";

OtioJson Any(OtioJson alternatives) { return {{"anyOf", std::move(alternatives)}}; }

OtioJson TextLike(const char* pattern) { return {{"type", "string"}, {"pattern", pattern}}; }

/// Keyframes as one text, as the command line takes them.
OtioJson MovingText() { return TextLike("="); }

OtioJson NumberBetween(double minimum, double maximum, bool whole) {
    return {{"type", whole ? "integer" : "number"}, {"minimum", minimum}, {"maximum", maximum}};
}

OtioJson SwitchValue() {
    return Any({{{"type", "boolean"}},
                {{"enum", {0, 1, "0", "1", "on", "off", "true", "false", "yes", "no"}}},
                MovingText()});
}

OtioJson ChoiceValue(const PropertyInfo& property) {
    OtioJson names = OtioJson::array();
    for (const auto& choice : property.choices) {
        names.push_back(choice.name);
        names.push_back(choice.value);
        names.push_back(std::to_string(choice.value));
    }
    return Any({{{"enum", std::move(names)}}, MovingText()});
}

/// What a property of an effect may be set to.
OtioJson ValueSchema(const PropertyInfo& property) {
    switch (property.kind) {
    case ValueKind::Switch:
        return SwitchValue();
    case ValueKind::Choice:
        return ChoiceValue(property);
    case ValueKind::Colour:
        return Any({NumberBetween(0, 0xFFFFFF, true), TextLike("^(#|0x)[0-9a-fA-F]{6}$|^[0-9]+$|=")});
    case ValueKind::Path:
    case ValueKind::Text:
        return {{"type", {"string", "number"}}};
    case ValueKind::Number:
        break;
    }
    const bool whole = property.type != AVBased::kDouble;
    return Any(
        {NumberBetween(property.minimum, property.maximum, whole), TextLike(kNumberText), MovingText()});
}

OtioJson Described(OtioJson schema, std::string_view text) {
    schema["description"] = text;
    return schema;
}

OtioJson Object(OtioJson properties) {
    return {{"type", "object"}, {"properties", std::move(properties)}, {"additionalProperties", false}};
}

OtioJson Reference(const std::string& name) { return {{"$ref", "#/$defs/" + name}}; }

OtioJson TimeSchema() {
    OtioJson rational = Object({{"OTIO_SCHEMA", {{"type", "string"}}},
                                {"value", {{"type", "number"}}},
                                {"rate", {{"type", "number"}, {"exclusiveMinimum", 0}}}});
    rational["required"] = {"value", "rate"};
    return Any({{{"type", "number"}},
                TextLike(R"(^-?([0-9]+:){0,2}[0-9]+(\.[0-9]*)?$|^-?[0-9.]+(f|%)$)"),
                std::move(rational)});
}

OtioJson KeyframesSchema(OtioJson value) {
    OtioJson key =
        Object({{"time", Reference("time")},
                {"value", std::move(value)},
                {"easing", {{"enum", {"linear", "hold", "smooth", "ease-in", "ease-out", "ease-in-out"}}}}});
    key["required"] = {"time", "value"};
    return {{"type", "array"}, {"minItems", 1}, {"items", std::move(key)}};
}

OtioJson ShareSchema() { return Any({NumberBetween(0, 1, false), TextLike(kNumberText), MovingText()}); }

/// Members that every effect has, beside its settings.
void AddReach(OtioJson& members, OtioJson& moving, bool sound) {
    for (const PropertyInfo& property : ReachProperties(sound)) {
        std::string name = std::string(property.name).substr(1); // "@fade-in" is fade_in
        for (char& letter : name)
            if (letter == '-') letter = '_';
        const std::string_view setting = property.name;
        OtioJson value = setting == reach::kMix ? ShareSchema() : ValueSchema(property);
        const bool time = setting == reach::kFrom || setting == reach::kTo || setting == reach::kFadeIn ||
                          setting == reach::kFadeOut;
        if (time) value = Reference("time");
        if (!time && setting != reach::kMask) moving[name] = KeyframesSchema(value);
        members[name] = Described(std::move(value), property.help);
    }
}

OtioJson EffectSchema(const EffectInfo& effect) {
    OtioJson settings = OtioJson::object(), moving = OtioJson::object();
    const auto add = [&](const PropertyInfo& property) {
        OtioJson value = ValueSchema(property);
        if (property.kind != ValueKind::Path && property.kind != ValueKind::Text)
            moving[property.name] = KeyframesSchema(value);
        settings[property.name] = Described(std::move(value), property.help);
    };
    for (const PropertyInfo& property : effect.properties) add(property);
    add(AVBased::kDurationProperty);
    OtioJson members = OtioJson::object();
    if (!effect.presets.empty()) {
        OtioJson names = OtioJson::array();
        for (const auto& preset : effect.presets) names.push_back(preset.name);
        members["preset"] = {{"enum", std::move(names)}};
    }
    AddReach(members, moving, effect.kind == AVBased::EffectKind::Audio);
    members["settings"] = Object(std::move(settings));
    members["keyframes"] = Object(std::move(moving));
    return Described(Object(std::move(members)), effect.help);
}

OtioJson TransitionSchema() {
    OtioJson names = OtioJson::array();
    for (const EffectInfo* effect : AllEffects()) {
        if (effect->kind != AVBased::EffectKind::Transition) continue;
        names.push_back(effect->shortName);
        names.push_back(effect->name);
    }
    return Object({{"effect", {{"enum", std::move(names)}}}, {"settings", {{"type", "object"}}}});
}

OtioJson OutputSchema() {
    constexpr double kMostPixels = 32768, kMostRate = 1000;
    const OtioJson side = NumberBetween(1, kMostPixels, true), text = {{"type", "string"}};
    OtioJson rate = Any({{{"type", "number"}, {"exclusiveMinimum", 0}, {"maximum", kMostRate}},
                         TextLike(R"(^[0-9.]+(/[0-9]+)?$)")});
    OtioJson output = Object({{"width", side},
                              {"height", side},
                              {"rate", std::move(rate)},
                              {"video_codec", text},
                              {"audio_codec", text},
                              {"pixel_format", text},
                              {"limiter", {{"type", "boolean"}}}});
    output["dependentRequired"] = {{"width", {"height"}}, {"height", {"width"}}};
    return output;
}

/// When a member is so, metadata.aveffect has to be as that definition says.
OtioJson Rule(const char* member, OtioJson is, OtioJson words) {
    OtioJson metadata = {{"properties", {{"aveffect", std::move(words)}}}};
    return {{"if", {{"properties", {{member, std::move(is)}}}, {"required", OtioJson::array({member})}}},
            {"then", {{"properties", {{"metadata", std::move(metadata)}}}}}};
}

OtioJson SchemaNamed(const char* name) { return TextLike((std::string("^") + name + "\\.").c_str()); }

/// Any object of a film, and what it holds.
OtioJson ObjectSchema(OtioJson rules) {
    const OtioJson list = {{"type", "array"}, {"items", Reference("object")}};
    return {{"properties", {{"tracks", Reference("object")}, {"children", list}, {"effects", list}}},
            {"allOf", std::move(rules)}};
}

} // namespace

OtioJson MetadataSchema() {
    OtioJson definitions = {{"time", TimeSchema()}, {"transition", TransitionSchema()}};
    OtioJson rules = OtioJson::array();
    OtioJson names = OtioJson::array();
    for (const EffectInfo* effect : AllEffects()) {
        if (effect->kind == AVBased::EffectKind::Transition || effect->kind == AVBased::EffectKind::Stereo)
            continue;
        const std::string name(effect->shortName);
        definitions[name] = EffectSchema(*effect);
        const OtioJson own = {"aveffect." + name, std::string("aveffect.") + effect->name};
        for (const OtioJson& one : own) names.push_back(one);
        rules.push_back(Rule("effect_name", {{"enum", own}}, Reference(name)));
    }
    const OtioJson other = {{"type", "string"}, {"not", {{"pattern", "^aveffect\\."}}}};
    rules.push_back(
        {{"properties", {{"effect_name", Any({{{"enum", std::move(names)}}, other, {{"type", "null"}}})}}}});
    rules.push_back(Rule("OTIO_SCHEMA", SchemaNamed("Transition"), Reference("transition")));
    rules.push_back(Rule("OTIO_SCHEMA", SchemaNamed("Timeline"), Object({{"output", OutputSchema()}})));
    definitions["object"] = ObjectSchema(std::move(rules));
    return {{"$schema", "https://json-schema.org/draft/2020-12/schema"},
            {"title", "metadata.aveffect in films"},
            {"$ref", "#/$defs/object"},
            {"$defs", std::move(definitions)}};
}

} // namespace aveffect
