#include "cli/catalogue_text.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "host/settings/catalogue_lookup.h"
#include "host/settings/reach.h"
#include "host/settings/value_text.h"

namespace aveffect {

using AVBased::EffectInfo;
using AVBased::EffectKind;
using AVBased::PropertyInfo;
using AVBased::PropertyType;
using AVBased::ValueKind;

namespace {

constexpr size_t kTextWidth = 100; // long sentences are broken here

std::string Padded(std::string_view text, size_t width) {
    std::string result(text);
    result.resize(std::max(width, result.size()), ' ');
    return result;
}

/// The text in lines of kTextWidth, each but the first indented; words stay whole.
std::string Wrapped(const std::string& text, size_t indent) {
    std::string result;
    size_t column = indent;
    for (size_t start = 0; start < text.size();) {
        const size_t end = std::min(text.find(' ', start), text.size());
        const size_t length = end - start;
        if (!result.empty()) {
            const bool full = column + 1 + length > kTextWidth;
            result += full ? "\n" + std::string(indent, ' ') : " ";
            column = full ? indent : column + 1;
        }
        result.append(text, start, length);
        column += length;
        start = end + 1;
    }
    return result;
}

std::string PropertyText(const PropertyInfo& property, size_t nameWidth) {
    constexpr size_t kMargin = 2;
    constexpr size_t kGap = 2;
    const size_t indent = kMargin + nameWidth + kGap;
    const std::string title = std::string(property.title) + ". " + std::string(property.help);
    std::string text = std::string(kMargin, ' ') + Padded(property.name, nameWidth + kGap);
    text += Wrapped(title, indent) + "\n" + std::string(indent, ' ');
    text += Wrapped(PropertyDetails(property), indent) + "\n";

    size_t choiceWidth = 0;
    for (const auto& choice : property.choices) choiceWidth = std::max(choiceWidth, choice.name.size());
    for (const auto& choice : property.choices)
        if (!choice.help.empty())
            text += std::string(indent + kMargin, ' ') + Padded(choice.name, choiceWidth + kGap) +
                    Wrapped(std::string(choice.help), indent + kMargin + choiceWidth + kGap) + "\n";
    return text;
}

/// A line each, with what they set below it.
std::string PresetsText(const EffectInfo& effect) {
    constexpr size_t kIndent = 4;
    std::string text = "\nPresets\n";
    if (effect.presets.empty()) return text + "  none: " + Wrapped(std::string(effect.noPresets), 2) + "\n";
    size_t width = 0;
    for (const auto& preset : effect.presets) width = std::max(width, preset.name.size());
    width += effect.shortName.size() + 1;
    for (const auto& preset : effect.presets)
        text += "  " + Padded(PresetName(effect, preset), width + 2) +
                Wrapped(std::string(preset.help), width + kIndent) + "\n" +
                std::string(width + kIndent, ' ') + SettingsText(effect, preset) + "\n";
    return text;
}

} // namespace

std::string_view KindHeading(EffectKind kind) {
    switch (kind) {
    case EffectKind::Filter:
        return "Filters";
    case EffectKind::Fade:
        return "Fades";
    case EffectKind::Distortion:
        return "Distortions";
    case EffectKind::Look:
        return "Looks";
    case EffectKind::Transition:
        return "Transitions";
    case EffectKind::Stereo:
        return "Stereo";
    case EffectKind::Audio:
        break;
    }
    return "Audio";
}

std::string TraitsText(unsigned traits) {
    std::string text;
    const auto add = [&text](const char* part) { text += (text.empty() ? "" : "; ") + std::string(part); };
    if (traits & AVBased::kFollowsTime) add("changes with the time in its span");
    const bool prepares = (traits & AVBased::kPreparesOnce) != 0;
    if (prepares) add("prepares itself on the first frame, for all of its size");
    if (traits & AVBased::kKeepsState && !prepares) add("can let a frame depend on the frames before it");
    if (traits & AVBased::kDrawsRandom) add("draws random numbers");
    if (traits & AVBased::kFewFormats) add("works in BGRA and YUV420P only");
    if (traits & AVBased::kChangesAlpha) add("changes transparency alone");
    if (traits & AVBased::kMovesPixels) add("moves pixels across the picture, or brings others in");
    if (text.empty()) add("treats every frame alike, for itself");
    return text;
}

std::string PropertyDetails(const PropertyInfo& property) {
    std::string text = ValueRule(property) + "; default " + DefaultText(property);
    if (!std::isnan(property.neutral))
        text += "; neutral " + SpokenValue(property, NumberText(property.neutral));
    if (!PercentageBase(property).empty()) text += "; counts pixels of the picture";
    return text + "; type " + std::string(TypeName(property.type));
}

std::string_view KindName(EffectKind kind) {
    switch (kind) {
    case EffectKind::Filter:
        return "filter";
    case EffectKind::Fade:
        return "fade";
    case EffectKind::Distortion:
        return "distortion";
    case EffectKind::Look:
        return "look";
    case EffectKind::Transition:
        return "transition";
    case EffectKind::Stereo:
        return "stereo";
    case EffectKind::Audio:
        break;
    }
    return "audio";
}

std::string_view ValueKindName(ValueKind kind) {
    switch (kind) {
    case ValueKind::Number:
        return "number";
    case ValueKind::Switch:
        return "switch";
    case ValueKind::Choice:
        return "choice";
    case ValueKind::Colour:
        return "colour";
    case ValueKind::Path:
        return "path";
    case ValueKind::Text:
        break;
    }
    return "text";
}

std::string_view TypeName(PropertyType type) {
    switch (type) {
    case PropertyType::kDouble:
        return "double";
    case PropertyType::kInt64:
        return "int64";
    case PropertyType::kInt32:
        return "int32";
    case PropertyType::kInt16:
        return "int16";
    case PropertyType::kText:
        break;
    }
    return "text";
}

/// What every effect takes besides.
std::string ReachText(const EffectInfo& effect) {
    std::string names;
    for (const PropertyInfo& property : ReachProperties(effect.kind == EffectKind::Audio))
        names += (names.empty() ? "" : ", ") + std::string(property.name);
    std::string text = "Like every effect it takes " + names + ".";
    if (!effect.properties.empty())
        text += " All but texts and paths can move: property=0%=VALUE;2.5=VALUE;-1=VALUE.";
    return "  " + Wrapped(text, 2) + "\n";
}

bool IsVideoEffect(const EffectInfo& effect) { return effect.kind != EffectKind::Audio; }

std::string ListText() {
    const auto effects = AllEffects();
    size_t width = 0, longWidth = 0;
    for (const auto* effect : effects) {
        width = std::max(width, effect->shortName.size());
        longWidth = std::max(longWidth, std::strlen(effect->name));
    }
    std::string text;
    for (const EffectKind kind : kEffectKinds) {
        std::string lines;
        for (const auto* effect : effects)
            if (effect->kind == kind)
                lines += "  " + Padded(effect->shortName, width + 2) + Padded(effect->name, longWidth + 2) +
                         Wrapped(std::string(effect->help), width + longWidth + 6) + "\n";
        if (!lines.empty()) text += std::string(KindHeading(kind)) + "\n" + lines + "\n";
    }
    return text +
           "Either name is taken. `aveffect describe NAME` shows an effect's properties and presets.\n";
}

std::string ExampleSetting(const EffectInfo& effect) {
    if (!effect.presets.empty()) return PresetName(effect, effect.presets.front());
    std::string text(effect.shortName);
    for (const auto& property : effect.properties)
        if (property.kind == ValueKind::Path && effect.kind == EffectKind::Audio)
            text += std::string(":") + property.name + "=music.flac";
    return text;
}

std::string ExampleCommand(const EffectInfo& effect) {
    const std::string shortName(effect.shortName);
    if (effect.kind == EffectKind::Transition)
        return "aveffect transition a.jpg b.jpg out.mp4 -e " + shortName + " --duration 2";
    const bool sound = effect.kind == EffectKind::Audio;
    return "aveffect render in.mp4 out.mp4 " + std::string(sound ? "-a " : "-e ") + ExampleSetting(effect);
}

std::string DescribeText(const EffectInfo& effect) {
    size_t width = std::strlen(AVBased::kDurationProperty.name);
    for (const auto& property : effect.properties) width = std::max(width, std::strlen(property.name));

    std::string text(effect.shortName);
    if (effect.shortName != effect.name) text += " (" + std::string(effect.name) + ")";
    text += " - " + std::string(effect.title) + " (" + std::string(KindName(effect.kind)) + ")\n";
    text += "  " + Wrapped(std::string(effect.help), 2) + "\n";
    text += "  " + Wrapped("The effect " + TraitsText(effect.traits) + ".", 2) + "\n";
    if (!effect.note.empty()) text += "  " + Wrapped("Note: " + std::string(effect.note), 2) + "\n";
    text += PresetsText(effect) + "\nProperties\n";
    for (const auto& property : effect.properties) text += PropertyText(property, width);
    text += PropertyText(AVBased::kDurationProperty, width);
    text += std::string(width + 4, ' ') + "(set by the program to how long the effect lasts)\n";
    text += ReachText(effect);
    return text + "\nExample\n  " + ExampleCommand(effect) + "\n";
}

} // namespace aveffect
