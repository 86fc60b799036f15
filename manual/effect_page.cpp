#include "cli/catalogue_text.h"
#include "host/settings/value_text.h"
#include "manual/darkroom.h"
#include "manual/elsewhere.h"
#include "manual/pages.h"

namespace aveffect::manual {

namespace {

using AVBased::EffectInfo;
using AVBased::EffectKind;
using AVBased::EffectPreset;
using AVBased::PropertyInfo;

constexpr Root kFromEffect{"../"};

std::string Sentence(std::string text) {
    if (text.empty()) return text;
    if (text[0] >= 'a' && text[0] <= 'z') text[0] = static_cast<char>(text[0] - 'a' + 'A');
    if (text.back() != '.') text += '.';
    return text;
}

/// Below a picture, or in its place where the effect refused.
std::string Figure(const Shot& shot, const std::string& instead, const std::string& caption) {
    const std::string face = shot.failure.empty()
                                 ? Picture(kFromEffect, shot.file, instead)
                                 : "<p class=\"refused\">No picture: " + Escaped(shot.failure) + "</p>";
    return Element("figure", face + Element("figcaption", caption));
}

/// Both pictures under one slider. The script moves the edge between them; without it both are seen in part.
std::string Slider(const EffectInfo& effect, const Shot& shot) {
    const std::string title(effect.title);
    return "<div class=\"compare\">" + Picture(kFromEffect, Darkroom::kDay, "The picture before the effect") +
           "<div class=\"after\">" + Picture(kFromEffect, shot.file, "The picture with " + title) +
           "</div><input type=\"range\" min=\"0\" max=\"100\" value=\"50\" aria-label=\"How much of the "
           "picture before the effect is shown, in percent\"><span class=\"edge\"></span></div>\n" +
           Element("p", "Left before, right with " + Code(shot.setting) + ".");
}

std::string WaveFigure(const Loudness& loudness, const std::string& caption) {
    return Element("figure", DrawWave(loudness, caption + ": how loud, over time") +
                                 Element("figcaption", Escaped(caption)));
}

std::string Movement(const Shot& shot, const std::string& title) {
    if (!shot.failure.empty()) return {};
    return Element("figure", MovingPicture(kFromEffect, shot.file, title + ", moving") +
                                 Element("figcaption", Escaped(shot.caption)));
}

/// What is seen first of an effect.
std::string Opening(const EffectPage& page) {
    const EffectInfo& effect = page.Effect();
    if (page.waves)
        return "<div class=\"shots\">" + WaveFigure(page.waves->before, "Before") +
               WaveFigure(page.waves->after, "With " + ExampleSetting(effect)) + "</div>\n";
    if (page.shots.main) return Slider(effect, *page.shots.main);
    return Movement(*page.shots.moving, std::string(effect.title));
}

std::string Presets(const EffectPage& page) {
    const EffectInfo& effect = page.Effect();
    std::string content = Element("h2", "Presets");
    if (effect.presets.empty()) return content + Element("p", "None. " + Escaped(effect.noPresets));
    content += effect.kind == EffectKind::Audio ? "<dl>" : "<div class=\"shots\">\n";
    for (size_t i = 0; i < effect.presets.size(); ++i) {
        const EffectPreset& preset = effect.presets[i];
        const std::string name = PresetName(effect, preset), settings = SettingsText(effect, preset);
        const std::string text = Escaped(preset.help) + "<br>" + Code(settings);
        content += effect.kind == EffectKind::Audio
                       ? Element("dt", Code(name)) + Element("dd", text)
                       : Figure(page.shots.presets[i], "With the preset " + std::string(preset.name),
                                Code(name) + "<br>" + text);
    }
    return content + (effect.kind == EffectKind::Audio ? "</dl>\n" : "</div>\n");
}

std::string Property(const PropertyShots& planned) {
    const PropertyInfo& property = *planned.property;
    std::string content =
        Element("h3", Code(property.name)) +
        Element("p", Element("strong", Escaped(property.title) + ".") + Escaped(property.help)) +
        Element("p", Escaped(Sentence(PropertyDetails(property))));
    std::string shots;
    for (const Shot& shot : planned.shots)
        shots += Figure(shot, std::string(property.title) + " at " + shot.caption, Code(shot.caption));
    if (!shots.empty()) content += "<div class=\"shots small\">\n" + shots + "</div>\n";
    std::vector<std::vector<std::string>> choices;
    for (const auto& choice : property.choices)
        if (!choice.help.empty()) choices.push_back({Code(choice.name), Escaped(choice.help)});
    if (!choices.empty()) content += Table({"Choice", "Meaning"}, choices);
    return content;
}

std::string Properties(const EffectPage& page) {
    std::string content = Element("h2", "Properties");
    for (const PropertyShots& property : page.shots.properties) content += Property(property);
    if (page.shots.properties.empty()) content += Element("p", "None of its own.");
    return content +
           Element("p", "Like every effect it takes " + Code(AVBased::kDurationProperty.name) +
                            ", which the program sets to how long the effect lasts, and settings that say "
                            "when, where and how strongly it works: <a href=\"../cli.html#a-part-more-or-"
                            "less-here-and-there\">a part, more or less, here and there</a>. All but texts "
                            "and paths can <a href=\"../cli.html#settings-that-move\">move</a>.");
}

std::string Commands(const EffectPage& page) {
    const EffectInfo& effect = page.Effect();
    std::string content = Element("h2", "Commands") + Command(ExampleCommand(effect));
    if (page.shots.main)
        content += Command("aveffect frame in.mp4 out.png --at 1 -e " + ExampleSetting(effect));
    if (effect.kind == EffectKind::Stereo)
        content += Command("aveffect render left.mp4 out.mp4 --right right.mp4 -e " + ExampleSetting(effect));
    if (page.shots.main && page.shots.moving && page.shots.moving->setting != page.shots.main->setting)
        content += Command("aveffect render in.mp4 out.mp4 -e '" + page.shots.moving->setting + "'");
    return content;
}

std::string Elsewhere(const EffectInfo& effect) {
    std::vector<std::vector<std::string>> names;
    for (const NameElsewhere& name : NamesElsewhere(effect)) names.push_back({name.where, Code(name.name)});
    std::string content = Element("h2", "In other programs") + Table({"Where", "Name"}, names);
    for (const CommandElsewhere& command : CommandsElsewhere(effect))
        content += Element("p", command.program + ":") + Command(command.line);
    return content + Element("p", "<a href=\"../in-other-programs.html\">How other programs find the "
                                  "effects</a>");
}

std::string Neighbours(const std::vector<EffectPage>& effects, size_t index) {
    const auto link = [&](size_t other, const char* relation, const std::string& before) {
        return "<a rel=\"" + std::string(relation) + "\" href=\"" + kFromEffect.To(effects[other].File()) +
               "\">" + before + Escaped(effects[other].Effect().title) + "</a> ";
    };
    std::string links;
    if (index > 0) links += link(index - 1, "prev", "Before: ");
    if (index + 1 < effects.size()) links += link(index + 1, "next", "Next: ");
    return "<nav class=\"neighbours\" aria-label=\"Effects beside this one\">" + links + "</nav>\n";
}

} // namespace

std::string PageOf(const std::vector<EffectPage>& effects, size_t index) {
    const EffectPage& page = effects[index];
    const EffectInfo& effect = page.Effect();
    const std::string title(effect.title);
    std::string content = Element("h1", Escaped(title)) +
                          Element("p", Code(effect.shortName) + " · " + std::string(KindName(effect.kind))) +
                          Element("p", Escaped(effect.help)) + Opening(page);
    content += Element("p", "The effect " + Escaped(TraitsText(effect.traits)) + ".");
    if (!effect.note.empty()) content += Element("p", Element("strong", "Note:") + Escaped(effect.note));
    content += Commands(page) + Presets(page);
    if (page.shots.main && page.shots.moving)
        content += Element("h2", "Moving") + Movement(*page.shots.moving, title);
    content += Properties(page) + Elsewhere(effect) + Neighbours(effects, index);
    return WholePage(kFromEffect, title + ", an effect of AVEffect", content);
}

} // namespace aveffect::manual
