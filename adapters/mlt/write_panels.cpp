// Writes what Kdenlive shows of the module's services: write_panels FOLDER, with the folders effects and
// transitions in it.
//
// Kdenlive sets every property that a panel names, so that nothing would be left to a preset: presets have a
// panel of their own. What the module describes of itself is not enough for it: lengths, which may be
// percentages there, could not be set, and a transition's progress would stand at 0.
#include <array>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "aveffect/catalogue.h"
#include "host/settings/value_text.h"

namespace {

using namespace AVBased;

struct Attribute {
    std::string name, value;
};

std::string Escaped(std::string_view text) {
    std::string escaped;
    for (const char letter : text) switch (letter) {
        case '&':
            escaped += "&amp;";
            break;
        case '<':
            escaped += "&lt;";
            break;
        case '>':
            escaped += "&gt;";
            break;
        case '"':
            escaped += "&quot;";
            break;
        default:
            escaped += letter;
        }
    return escaped;
}

std::string Opening(const std::string& name, const std::vector<Attribute>& attributes) {
    std::string text = "<" + name;
    for (const Attribute& attribute : attributes)
        text += " " + attribute.name + "=\"" + Escaped(attribute.value) + "\"";
    return text + ">";
}

std::string Element(const std::string& name, std::string_view content) {
    return "<" + name + ">" + Escaped(content) + "</" + name + ">";
}

template <typename Items>
std::string NamesOf(const Items& items, char between) {
    std::string names;
    for (const auto& item : items) names.append(names.empty() ? 0 : 1, between).append(item.name);
    return names;
}

/// What follows a number in its field.
std::string SuffixOf(const PropertyInfo& property) {
    const std::string unit(property.unit);
    return unit == "%" || unit.starts_with('/') ? unit : " " + unit;
}

// Beyond the picture sliders would be of little use; the whole range serves a length that begins at its end.
std::string MaximumOf(const PropertyInfo& property, const char* inForce) {
    std::string most = aveffect::NumberText(property.maximum);
    if (property.pixels == PixelAxis::None || (inForce && inForce == most)) return most;
    return property.pixels == PixelAxis::Height ? "%height" : "%width";
}

// Only a number that does not move can be left unset, and not by every version: 22.12 makes it 0.
std::vector<Attribute> NumberOf(const PropertyInfo& property) {
    const char* const inForce = property.InForceAtFirst();
    std::vector<Attribute> attributes = {{"type", inForce ? "animated" : "constant"}};
    if (inForce) attributes.push_back({"default", inForce});
    attributes.push_back({"min", aveffect::NumberText(property.minimum)});
    attributes.push_back({"max", MaximumOf(property, inForce)});
    if (property.type == kDouble) attributes.push_back({"decimals", "3"});
    if (!property.unit.empty()) attributes.push_back({"suffix", SuffixOf(property)});
    return attributes;
}

std::vector<Attribute> ColourOf(const PropertyInfo& property) {
    const char* const inForce = property.InForceAtFirst();
    if (!inForce) return {{"type", "color"}};
    std::array<char, sizeof "0xrrggbbaa"> text{};
    std::snprintf(text.data(), text.size(), "0x%06xff",
                  static_cast<unsigned>(std::stoul(inForce, nullptr, 0)) & 0xFFFFFFU);
    return {{"type", "color"}, {"default", text.data()}};
}

std::vector<Attribute> ChoiceOf(const PropertyInfo& property) {
    return {{"type", "list"},
            {"default", aveffect::SpokenValue(property, property.InForceAtFirst())},
            {"paramlist", NamesOf(property.choices, ';')}};
}

std::vector<Attribute> FieldOf(const PropertyInfo& property) {
    switch (property.kind) {
    case ValueKind::Number:
        return NumberOf(property);
    case ValueKind::Switch:
        return {{"type", "bool"}, {"default", property.InForceAtFirst()}};
    case ValueKind::Choice:
        return ChoiceOf(property);
    case ValueKind::Colour:
        return ColourOf(property);
    case ValueKind::Path:
        return {{"type", "url"}};
    case ValueKind::Text:
        break;
    }
    throw std::string(property.name) + ": a text, which panels have no field for";
}

/// A parameter; its lines begin with a name for people.
void WriteParameter(std::ostream& to, const char* name, std::vector<Attribute> attributes,
                    const std::vector<std::string>& lines) {
    attributes.insert(attributes.begin() + 1, {"name", name});
    to << "        " << Opening("parameter", attributes) << '\n';
    for (const std::string& line : lines) to << "            " << line << '\n';
    to << "        </parameter>\n";
}

std::string HelpOf(const PropertyInfo& property) {
    std::string help(property.help);
    for (const PropertyChoice& choice : property.choices)
        help.append(" ").append(choice.name).append(": ").append(choice.help);
    return help;
}

void WriteProperty(std::ostream& to, const PropertyInfo& property) {
    std::vector<std::string> lines = {Element("name", property.title)};
    if (!property.choices.empty())
        lines.push_back(Element("paramlistdisplay", NamesOf(property.choices, ',')));
    lines.push_back(Element("comment", HelpOf(property)));
    WriteParameter(to, property.name, FieldOf(property), lines);
}

/// A fade is as long as its filter, which is to be a clip's beginning or its end.
void WriteSpan(std::ostream& to, const EffectInfo& effect) {
    if (effect.kind != EffectKind::Fade) return;
    const bool in = effect.shortName.starts_with("fade-in");
    const char* const most = in ? "90000" : "0"; // counted from the clip's end where it is one
    WriteParameter(to, in ? "in" : "out",
                   {{"type", "fixed"}, {"default", in ? "0" : "%out"}, {"min", "0"}, {"max", "90000"}}, {});
    WriteParameter(to, in ? "out" : "in",
                   {{"type", "position"}, {"default", in ? "%fade" : "-%fade"}, {"min", "0"}, {"max", most}},
                   {Element("name", "Duration")});
}

void WritePresets(std::ostream& to, const EffectInfo& effect) {
    std::string help;
    for (const EffectPreset& preset : effect.presets)
        help.append(help.empty() ? "" : " ").append(preset.name).append(": ").append(preset.help);
    WriteParameter(to, "preset",
                   {{"type", "list"},
                    {"default", std::string(effect.presets.front().name)},
                    {"paramlist", NamesOf(effect.presets, ';')}},
                   {Element("name", "Preset"), Element("paramlistdisplay", NamesOf(effect.presets, ',')),
                    Element("comment", help)});
}

/// What a panel begins with. Kdenlive searches names alone, and has some of the same words.
void WriteHead(std::ostream& to, const EffectInfo& effect, const char* kind, const char* type,
               const char* what) {
    const std::string service = "aveffect." + std::string(effect.shortName);
    const std::string suffix = *what ? std::string(".") + what : "";
    std::string help(effect.help);
    if (!effect.note.empty()) help.append(" ").append(effect.note);
    to << "    " << Opening(kind, {{"tag", service}, {"id", service + suffix}, {"type", type}})
       << "\n        "
       << Element("name", std::string(effect.title) + (*what ? std::string(", ") + what : "") + " (AVEffect)")
       << "\n        " << Element("description", help) << "\n        "
       << Element("author", "The AVEffect developers") << '\n';
}

void WriteFilter(std::ostream& to, const EffectInfo& effect) {
    const char* const type = effect.kind == EffectKind::Audio ? "audio" : "video";
    WriteHead(to, effect, "effect", type, "");
    WriteSpan(to, effect);
    for (const PropertyInfo& property : effect.properties) WriteProperty(to, property);
    to << "    </effect>\n";
    if (effect.presets.empty()) return;
    WriteHead(to, effect, "effect", type, "presets");
    WriteSpan(to, effect);
    WritePresets(to, effect);
    to << "    </effect>\n";
}

// Set up by what the host says of its time alone: its progress would have to be left unset.
void WriteTransition(std::ostream& to, const EffectInfo& effect) {
    WriteHead(to, effect, "transition", "short", "");
    to << "    </transition>\n";
}

void WritePanel(const std::filesystem::path& folder, const EffectInfo& effect) {
    const bool transition = effect.kind == EffectKind::Transition;
    const std::filesystem::path file = folder / (transition ? "transitions" : "effects") /
                                       ("aveffect_" + std::string(effect.shortName) + ".xml");
    std::filesystem::create_directories(file.parent_path());
    std::ofstream to(file);
    to << "<?xml version=\"1.0\"?>\n<!DOCTYPE kpartgui>\n<group>\n";
    if (transition)
        WriteTransition(to, effect);
    else
        WriteFilter(to, effect);
    to << "</group>\n";
    if (!to.flush()) throw file.string() + ": can't be written";
}

} // namespace

int main(int count, char** arguments) try {
    if (count != 2) throw std::string("write_panels FOLDER");
    for (const EffectInfo& effect : kVideoEffects) WritePanel(arguments[1], effect);
    for (const EffectInfo& effect : kAudioEffects) WritePanel(arguments[1], effect);
    return 0;
} catch (const std::string& what) {
    std::cerr << what << '\n';
    return 1;
} catch (const std::exception& what) {
    std::cerr << what.what() << '\n';
    return 1;
}
