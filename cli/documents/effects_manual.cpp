#include "cli/catalogue_text.h"
#include "cli/documents/manuals.h"
#include "host/settings/catalogue_lookup.h"
#include "host/settings/reach.h"
#include "host/settings/value_text.h"

namespace aveffect::documents {

using AVBased::EffectInfo;
using AVBased::PropertyInfo;

namespace {

/// A form or value, and what it means.
struct Meaning {
    const char* form;
    const char* text;
};

constexpr Meaning kValues[] = {
    {"number", "A decimal number in the property's range: 12, \\-0.5, 1e1."},
    {"number of pixels", "Also a percentage of the picture's width, height or smaller side: 12.5%."},
    {"switch", "on, true, yes or 1; off, false, no or 0."},
    {"choice", "One of the listed names, or its number."},
    {"colour", "#RRGGBB, 0xRRGGBB or a decimal number."},
    {"path", "A media file."},
};

constexpr Meaning kKeyframes[] = {
    {"TIME=VALUE", "moves evenly to the next one."},
    {"TIME|=VALUE", "stays until the next one's time."},
    {"TIME~=VALUE", "moves smoothly: along a Catmull\\-Rom curve, but never beyond the two values."},
    {"TIME[ease-in]=VALUE", "moves slowly at first: as the cube of the time."},
    {"TIME[ease-out]=VALUE", "moves slowly at last."},
    {"TIME[ease-in-out]=VALUE", "moves slowly at both ends."},
};

void AddWriting(ManPage& page) {
    page.Section("Synopsis");
    page.Paragraph(Bold("-e") + " " + Italic("NAME") + "[/" + Italic("PRESET") + "][:" + Italic("property") +
                   "=" + Italic("value") + "...]");
    page.Section("Description");
    page.Paragraph(Bold("aveffect") +
                   Plain(" takes effects on pictures by -e and effects on sound by -a. "
                         "Each has a short name and the one that hosts know it by, which is "
                         "said behind it where it is another; either is taken. "
                         "A preset is a group of settings with a name; what is written behind "
                         "it takes the place of its own. \\: stands for a colon in a value and "
                         "\\\\ for a backslash."));
    page.Section("Values");
    for (const Meaning& value : kValues) page.Item(Bold(value.form), value.text);
}

void AddKeyframes(ManPage& page) {
    page.Section("Settings that move");
    page.Paragraph(
        Plain("Every property but texts and paths can be given values at times, with semicolons between. "
              "From there to the next one, the value"));
    for (const Meaning& keyframe : kKeyframes) page.Item(Bold(keyframe.form), keyframe.text);
    page.Paragraph(
        Plain("Times are seconds, mm:ss or hh:mm:ss.ms, 25f for the picture of that number, and 50% of the "
              "time that the effect lasts; - in front counts from its end. They rise. Before the first "
              "time its value holds, behind the last one that one's."));
    page.Lines("aveffect render in.mp4 out.mp4 -e \"spherize/bulge:spherize_scale=0%=0;50%=2;100%=0\"");
}

void AddProperty(ManPage& page, const PropertyInfo& property) {
    page.Item(Bold(property.name), Plain(std::string(property.title) + ". " + std::string(property.help)));
    page.More(Plain(PropertyDetails(property) + "."));
    for (const auto& choice : property.choices)
        if (!choice.help.empty()) page.More(Bold(choice.name) + ": " + Plain(choice.help));
}

void AddReach(ManPage& page) {
    page.Section("A part, more or less, here and there");
    page.Paragraph(
        Plain("Every effect takes these besides its own properties; effects on sound take the first " +
              std::to_string(ReachProperties(true).size()) + ". Times are those above."));
    for (const PropertyInfo& property : ReachProperties(false))
        page.Item(Bold(property.name), Plain(property.help));
    page.Lines("aveffect render in.mp4 out.mp4 -e \"gray:@from=1:@to=3:@fade-in=0.5\"\n"
               "aveffect render in.mp4 out.mp4 -e \"blur/soft:@area=ellipse,30,20,40,60:@mask-invert=on\"");
    page.Paragraph(
        Bold(AVBased::kDurationProperty.name) +
        Plain(", the length of an effect's span in milliseconds, is set by the program to how long the "
              "effect lasts; a value of your own wins."));
}

/// Settings that may go on in a next line behind a colon.
std::string Breakable(std::string_view settings) {
    std::string text;
    for (const char letter : settings) text += letter == ':' ? ":\\:" : Plain({&letter, 1});
    return text;
}

void AddEffect(ManPage& page, const EffectInfo& effect) {
    const bool alias = effect.shortName != effect.name;
    page.Subsection(std::string(effect.shortName) + (alias ? " (" + std::string(effect.name) + ")" : ""));
    page.Paragraph(Plain(effect.help));
    page.Paragraph(Plain("The effect " + TraitsText(effect.traits) + "."));
    if (!effect.note.empty()) page.Paragraph(Plain(effect.note));
    for (const auto& preset : effect.presets) {
        page.Item(Bold(PresetName(effect, preset)), Plain(preset.help));
        page.More(Breakable(SettingsText(effect, preset)));
    }
    for (const PropertyInfo& property : effect.properties) AddProperty(page, property);
}

} // namespace

ManPage EffectsManual(const Edition& edition) {
    ManPage page("aveffect-effects", 7, edition, "effects, their presets and their properties");
    AddWriting(page);
    AddKeyframes(page);
    AddReach(page);
    for (const AVBased::EffectKind kind : kEffectKinds) {
        page.Section(KindHeading(kind));
        for (const EffectInfo* effect : AllEffects())
            if (effect->kind == kind) AddEffect(page, *effect);
    }
    page.Section("See also");
    page.Paragraph(Bold("aveffect") + "(1), " + Bold("aveffect-render") + "(1), " +
                   Bold("aveffect-describe") + "(1), " + Bold("aveffect-list") + "(1)");
    return page;
}

} // namespace aveffect::documents
