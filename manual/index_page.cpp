#include "cli/catalogue_text.h"
#include "manual/pages.h"

namespace aveffect::manual {

namespace {

using AVBased::EffectInfo;
using AVBased::EffectKind;

constexpr Root kFromIndex{""};

std::string Face(const EffectPage& page) {
    const EffectInfo& effect = page.Effect();
    if (page.waves) return DrawWave(page.waves->after, "The loudness of its sound over time");
    const std::string instead = std::string(effect.title) + ", tried on a picture";
    if (page.shots.main) return Picture(kFromIndex, page.shots.main->file, instead);
    return MovingPicture(kFromIndex, page.shots.moving->file, instead);
}

/// All that an effect is looked for by, in lower case.
std::string SearchWords(const EffectInfo& effect) {
    std::string words = std::string(effect.shortName) + " " + effect.name + " " + std::string(effect.title) +
                        " " + std::string(effect.help) + " " + std::string(KindName(effect.kind));
    for (const std::string_view synonym : effect.synonyms) words += " " + std::string(synonym);
    for (const auto& preset : effect.presets) words += " " + std::string(preset.name);
    for (char& c : words)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return words;
}

std::string Card(const EffectPage& page) {
    const EffectInfo& effect = page.Effect();
    return "<li class=\"card\" data-kind=\"" + std::string(KindName(effect.kind)) + "\" data-words=\"" +
           Escaped(SearchWords(effect)) + "\"><a href=\"" + page.File() + "\">" + Face(page) +
           Element("strong", Escaped(effect.title)) + Code(effect.shortName) + "</a>" +
           Element("p", Escaped(effect.help)) + "</li>\n";
}

std::string Choice(std::string_view value, std::string_view label, bool chosen) {
    return "<label><input type=\"radio\" name=\"kind\" value=\"" + std::string(value) + "\"" +
           (chosen ? " checked" : "") + "><span>" + std::string(label) + "</span></label>\n";
}

// Shown by the script, for they do nothing without it.
std::string Finder() {
    std::string choices = Choice("", "All", true);
    for (const EffectKind kind : kEffectKinds) choices += Choice(KindName(kind), KindHeading(kind), false);
    return "<form class=\"finder\" role=\"search\" hidden>\n<label>Search <input type=\"search\" "
           "id=\"search\" autocomplete=\"off\" placeholder=\"blur, wipe, old film\"></label>\n"
           "<fieldset><legend>Kind</legend>" +
           choices + "</fieldset>\n<p id=\"found\" role=\"status\"></p>\n</form>\n";
}

} // namespace

std::string IndexPage(const std::vector<EffectPage>& effects) {
    std::string sections;
    for (const EffectKind kind : kEffectKinds) {
        std::string cards;
        for (const EffectPage& page : effects)
            if (page.Effect().kind == kind) cards += Card(page);
        if (!cards.empty())
            sections += "<section class=\"kind\">" + Element("h2", std::string(KindHeading(kind))) +
                        "<ul class=\"cards\">" + cards + "</ul></section>\n";
    }
    return WholePage(kFromIndex, "AVEffect: all effects",
                     Element("h1", "All effects") +
                         Element("p", "Effects for pictures and sound: in the program " + Code("aveffect") +
                                          ", in other programs, and in a library for programs of your own. "
                                          "Choose one to see what it does, with commands to copy.") +
                         Finder() + sections);
}

} // namespace aveffect::manual
