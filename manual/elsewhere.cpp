#include "manual/elsewhere.h"

#include <algorithm>

#include "host/settings/value_text.h"

namespace aveffect::manual {

using AVBased::EffectInfo;
using AVBased::EffectKind;
using AVBased::PropertyInfo;
using AVBased::ValueKind;

namespace {

/// The short name with other dashes.
std::string Joined(const EffectInfo& effect, char dash) {
    std::string name(effect.shortName);
    std::replace(name.begin(), name.end(), '-', dash);
    return name;
}

/// Sound plug-ins are those effects that need no file.
bool IsSoundPlugin(const EffectInfo& effect) {
    return effect.kind == EffectKind::Audio &&
           std::none_of(effect.properties.begin(), effect.properties.end(),
                        [](const PropertyInfo& property) { return property.kind == ValueKind::Path; });
}

/// The controls' values with the first preset, in the order of the properties.
std::vector<std::string> ControlValues(const EffectInfo& effect) {
    std::vector<std::string> values;
    for (const PropertyInfo& property : effect.properties) {
        const char* const start = property.InForceAtFirst();
        values.emplace_back(start ? start : property.defaultText);
        for (const auto& setting : effect.presets.front().Settings())
            if (std::string_view(property.name) == setting.property)
                values.back() = NumberText(setting.value);
    }
    return values;
}

std::string Together(const std::vector<std::string>& words, const std::string& between) {
    std::string text;
    for (const std::string& word : words) text += (text.empty() ? "" : between) + word;
    return text;
}

std::vector<CommandElsewhere> SoundCommands(const EffectInfo& effect) {
    const std::vector<std::string> values = ControlValues(effect);
    std::vector<std::string> numbered;
    for (size_t i = 0; i < values.size(); ++i) numbered.push_back("c" + std::to_string(i) + "=" + values[i]);
    const std::string name = effect.name;
    return {{"ffmpeg", "ffmpeg -i in.wav -af 'ladspa=file=aveffect:plugin=" + name +
                           ":c=" + Together(numbered, "|") + "' out.wav"},
            {"SoX", "sox in.wav out.wav ladspa -r aveffect " + name + " " + Together(values, " ")}};
}

std::vector<CommandElsewhere> PictureCommands(const EffectInfo& effect) {
    const std::string module = "aveffect_" + Joined(effect, '_');
    const std::string element = "aveffect-" + Joined(effect, '-');
    const std::string out = " -consumer avformat:out.mp4";
    constexpr char kProgress[] = " progress=\"0=0;-1=1\"";
    if (effect.kind == EffectKind::Transition)
        return {{"melt", "melt in.mp4 next.mp4 -mix 25 -mixer frei0r." + module + kProgress + out}};
    if (effect.traits & AVBased::kFollowsTime)
        return {{"melt", "melt in.mp4 -filter frei0r." + module + kProgress + out}};
    const std::string preset =
        effect.presets.empty() ? "" : " preset=" + std::string(effect.presets.front().name);
    std::vector<CommandElsewhere> commands;
    if (!(effect.traits & AVBased::kNeedsSettings))
        commands.push_back({"ffmpeg", "ffmpeg -i in.mp4 -vf frei0r=" + module + " out.mp4"});
    commands.push_back({"melt", "melt in.mp4 -filter frei0r." + module + preset + out});
    commands.push_back({"GStreamer", "gst-launch-1.0 -q filesrc location=in.png ! pngdec ! videoconvert \\\n"
                                     "  ! frei0r-filter-" +
                                         element + preset +
                                         " ! videoconvert ! pngenc ! filesink location=out.png"});
    return commands;
}

} // namespace

std::vector<NameElsewhere> NamesElsewhere(const EffectInfo& effect) {
    std::vector<NameElsewhere> names{{"aveffect", std::string(effect.shortName)},
                                     {"Hosts of the plug-in", effect.name}};
    if (effect.kind != EffectKind::Audio) {
        const bool mixes = effect.kind == EffectKind::Transition;
        names.push_back({"frei0r", "aveffect_" + Joined(effect, '_')});
        names.push_back({"GStreamer, by frei0r", std::string(mixes ? "frei0r-mixer-" : "frei0r-filter-") +
                                                     "aveffect-" + Joined(effect, '-')});
    } else if (IsSoundPlugin(effect)) {
        names.push_back({"LADSPA", std::string(effect.name) + " in aveffect.so"});
        names.push_back({"LV2", "urn:aveffect:" + std::string(effect.name)});
    }
    return names;
}

std::vector<CommandElsewhere> CommandsElsewhere(const EffectInfo& effect) {
    if (effect.kind != EffectKind::Audio) return PictureCommands(effect);
    return IsSoundPlugin(effect) ? SoundCommands(effect) : std::vector<CommandElsewhere>{};
}

} // namespace aveffect::manual
