#include "cli/documents/command_words.h"

#include <map>

#include "aveffect/pixel_format.h"
#include "cli/command_app.h"
#include "host/settings/catalogue_lookup.h"

namespace aveffect::documents {

namespace {

std::vector<std::string> EffectNames(bool transitionsOnly) {
    std::vector<std::string> names;
    for (const AVBased::EffectInfo* effect : AllEffects())
        if (!transitionsOnly || effect->kind == AVBased::EffectKind::Transition)
            names.emplace_back(effect->shortName);
    return names;
}

std::vector<std::string> WorkingFormats() {
    std::vector<std::string> names = {"auto"};
    for (const unsigned format : AVBased::kEffectFormats)
        names.emplace_back(AVBased::FindPixelFormat(format)->name);
    return names;
}

/// Words that the option takes, all of them or the usual ones; none where any value will do.
std::vector<std::string> UsualWords(const std::string& option) {
    static const std::map<std::string, std::vector<std::string>> kWords = {
        {"--audio-codec", {"aac", "ac3", "flac", "libmp3lame", "libopus", "libvorbis", "pcm_s16le"}},
        {"--codec",
         {"copy", "libx264", "libx265", "libvpx-vp9", "libaom-av1", "libsvtav1", "ffv1", "prores_ks",
          "mjpeg"}},
        {"--cpu-level", {"auto", "sse2", "avx2", "avx512"}},
        {"--extension", {"mp4", "mkv", "webm", "mov", "gif", "png", "jpg", "webp", "wav", "flac"}},
        {"--fit", {"contain", "cover", "stretch"}},
        {"--format",
         {"mp4", "mov", "matroska", "webm", "mpegts", "nut", "avi", "gif", "png", "jpg", "webp", "wav",
          "flac", "ogg", "mp3"}},
        {"--output-format",
         {"yuv420p", "yuv422p", "yuv444p", "yuva420p", "yuv420p10le", "yuv422p10le", "yuv444p10le", "rgb24",
          "rgba"}},
        {"--pixel-format", WorkingFormats()},
        {"--preset",
         {"ultrafast", "superfast", "veryfast", "faster", "fast", "medium", "slow", "slower", "veryslow"}},
        {"--progress", {"auto", "bar", "json", "none"}},
        {"--stereo-in", {"sbs", "tab"}},
    };
    const auto found = kWords.find(option);
    return found == kWords.end() ? std::vector<std::string>() : found->second;
}

Offer OfferOf(const CLI::App& command, const OptionWords& option, bool positional) {
    const std::string& name = option.names.back();
    if (command.get_name() == "describe" && positional) return {Offer::Kind::Words, EffectNames(false)};
    if (positional || option.type == "FILE") return {Offer::Kind::Files};
    if (option.type == "DIRECTORY") return {Offer::Kind::Directories};
    if (name == "--audio-effect") return {Offer::Kind::AudioSetting};
    if (name == "--effect") {
        if (option.type.starts_with("NAME[/PRESET]")) return {Offer::Kind::VideoSetting};
        Offer transitions = {Offer::Kind::Words, EffectNames(true)};
        if (command.get_name() != "transition") transitions.words.emplace_back("cut");
        return transitions;
    }
    Offer offer = {Offer::Kind::Words, UsualWords(name)};
    if (offer.words.empty()) offer.kind = Offer::Kind::Nothing;
    return offer;
}

OptionWords WordsOf(const CLI::App& command, const CLI::Option& option) {
    OptionWords words;
    const bool positional = option.get_positional();
    if (positional) {
        words.names.push_back(option.get_name(true));
    } else {
        for (const std::string& name : option.get_snames()) words.names.push_back("-" + name);
        for (const std::string& name : option.get_lnames()) words.names.push_back("--" + name);
    }
    const bool flag = option.get_type_size() == 0;
    if (!flag) words.type = positional ? words.names.front() : option.get_type_name();
    words.help = option.get_description();
    words.repeats = option.get_expected_max() > 1 || words.names.front() == "-v";
    if (!flag) words.offer = OfferOf(command, words, positional);
    return words;
}

std::vector<const CLI::App*> CommandsOf(const CLI::App& command) {
    return command.get_subcommands([](const CLI::App*) { return true; });
}

CommandWords WordsOf(const CLI::App& command, std::string name) {
    CommandWords words;
    words.name = std::move(name);
    words.help = command.get_description();
    words.footer = command.get_footer();
    words.hasCommands = !CommandsOf(command).empty();
    for (const CLI::Option* option : command.get_options())
        (option->get_positional() ? words.positionals : words.options).push_back(WordsOf(command, *option));
    return words;
}

void AddWords(const CLI::App& command, const std::string& name, std::vector<CommandWords>& commands) {
    commands.push_back(WordsOf(command, name));
    for (const CLI::App* own : CommandsOf(command))
        AddWords(*own, name + (name.empty() ? "" : " ") + own->get_name(), commands);
}

} // namespace

std::vector<CommandWords> AllCommandWords() {
    AllCommands filled;
    const std::unique_ptr<CLI::App> app = MakeApp(filled);
    std::vector<CommandWords> commands;
    AddWords(*app, "", commands);
    return commands;
}

} // namespace aveffect::documents
