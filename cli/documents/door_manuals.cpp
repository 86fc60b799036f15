#include <algorithm>
#include <sstream>
#include <stdexcept>

#include "cli/documents/manuals.h"
#include "host/settings/catalogue_lookup.h"

namespace aveffect::documents {

using AVBased::EffectInfo;
using AVBased::EffectKind;

namespace {

/// The text below a heading, up to the next one.
std::string_view PartBelow(std::string_view guide, const std::string& heading) {
    const std::string mark = "\n## " + heading + "\n";
    const size_t place = guide.find(mark);
    if (place == std::string_view::npos)
        throw std::runtime_error("the guide has no part \"" + heading + "\"");
    const std::string_view part = guide.substr(place + mark.size());
    return part.substr(0, part.find("\n## "));
}

/// Words between two marks stand out, the rest is plain.
std::string Inline(std::string_view text) {
    std::string words;
    while (!text.empty()) {
        const size_t mark = std::min(text.find('`'), text.find("**"));
        words += Plain(text.substr(0, mark));
        if (mark == std::string_view::npos) break;
        const size_t width = text[mark] == '`' ? 1 : 2;
        const size_t end = text.find(text.substr(mark, width), mark + width);
        if (end == std::string_view::npos) throw std::runtime_error("no end: " + std::string(text));
        words += Bold(text.substr(mark + width, end - mark - width));
        text.remove_prefix(end + width);
    }
    return words;
}

/// A part of the guide: its paragraphs, its commands as examples, its list as notes. Of Markdown no more is
/// known here than the guide has.
struct Part {
    std::vector<std::string> paragraphs, notes;
    std::string commands;

    explicit Part(std::string_view text) {
        std::vector<std::string>* list = &paragraphs;
        bool code = false, open = false;
        std::istringstream lines{std::string(text)};
        for (std::string line; std::getline(lines, line);) {
            const bool fence = line.starts_with("```"), item = line.starts_with("- ");
            if (fence) code = !code;
            if (code && !fence) commands.append(line).append("\n");
            const size_t words = line.find_first_not_of("- ");
            if (code || fence || words == line.npos) {
                open = false;
                continue;
            }
            if (item) list = &notes;
            if (item || !open) list->emplace_back();
            list->back().append(line, words).append(" ");
            open = true;
        }
    }
};

/// "Properties: a, b."
std::string Listed(const std::string& title, const std::vector<std::string>& names) {
    std::string text;
    for (const std::string& name : names) text += (text.empty() ? title : ",") + " " + Bold(name);
    return text.empty() ? "" : text + ".";
}

void AddService(ManPage& page, const Door& door, const EffectInfo& effect) {
    std::vector<std::string> properties, presets;
    // What a transition works on, and when, is the other program's matter.
    if (effect.kind != EffectKind::Transition)
        for (const AVBased::PropertyInfo& property : effect.properties) {
            properties.emplace_back(property.name);
            if (door.dashes) std::ranges::replace(properties.back(), '_', '-');
        }
    for (const AVBased::EffectPreset& preset : effect.presets) presets.emplace_back(preset.name);
    page.Item(Bold(door.prefix + std::string(effect.shortName)), Plain(effect.help) + " " +
                                                                     Listed("Properties:", properties) + " " +
                                                                     Listed("Presets:", presets));
}

void AddServices(ManPage& page, const Door& door, const char* heading, bool (*belongs)(EffectKind)) {
    page.Section(heading);
    for (const EffectInfo* effect : AllEffects())
        if (belongs(effect->kind)) AddService(page, door, *effect);
}

} // namespace

ManPage DoorManual(const Door& door, std::string_view guide, const Edition& edition) {
    ManPage page(door.page, 7, edition, "effects on pictures and sound for " + door.program);
    const Part part(PartBelow(guide, "Pictures and sound: " + door.program));
    page.Section("Description");
    for (const std::string& paragraph : part.paragraphs) page.Paragraph(Inline(paragraph));
    page.Section("Examples");
    page.Lines(part.commands);
    page.Section("Notes");
    for (const std::string& note : part.notes) page.Item("\\(bu", Inline(note));
    AddServices(page, door, "Pictures",
                [](EffectKind kind) { return kind != EffectKind::Transition && kind != EffectKind::Audio; });
    AddServices(page, door, "Transitions", [](EffectKind kind) { return kind == EffectKind::Transition; });
    AddServices(page, door, "Sound", [](EffectKind kind) { return kind == EffectKind::Audio; });
    page.Section("See also");
    page.Paragraph(Bold(door.tool) + "(1), " + Bold("aveffect-effects") + "(7)");
    return page;
}

} // namespace aveffect::documents
