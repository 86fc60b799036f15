#include "studio/words.h"

#include "host/settings/value_text.h"
#include "host/support/shell_word.h"

namespace aveffect {

namespace {

// One word each, so that no value is taken for an option.
void AddEffects(std::vector<std::string>& words, const StudioChain& chain, bool sound) {
    for (const StudioEffect& effect : chain.effects)
        if (effect.on) words.push_back("--effect=" + effect.text);
    if (!sound) return;
    for (const StudioEffect& effect : chain.audioEffects)
        if (effect.on) words.push_back("--audio-effect=" + effect.text);
}

} // namespace

std::vector<std::string> FrameWords(const std::string& input, const std::string& output, int64_t atMs,
                                    const StudioChain& chain) {
    constexpr double kMs = 1000;
    std::vector<std::string> words = {input, output, "--at=" + NumberText(static_cast<double>(atMs) / kMs)};
    AddEffects(words, chain, false);
    return words;
}

std::vector<std::string> RenderWordsOf(const std::string& input, const std::string& output,
                                       const StudioChain& chain, const RenderWords& options) {
    std::vector<std::string> words = {input, output};
    AddEffects(words, chain, true);
    for (const auto& [name, value] : options)
        if (!value.empty()) words.push_back("--" + name + "=" + value);
    return words;
}

std::string ShellText(const std::string& command, const std::vector<std::string>& words) {
    constexpr std::string_view kEffect = "--effect=", kAudioEffect = "--audio-effect=";
    std::string text = "aveffect " + command;
    for (const std::string& word : words) {
        if (word.starts_with(kEffect))
            text += " -e " + ShellWord(word.substr(kEffect.size()));
        else if (word.starts_with(kAudioEffect))
            text += " -a " + ShellWord(word.substr(kAudioEffect.size()));
        else
            text += " " + ShellWord(word);
    }
    return text;
}

} // namespace aveffect
