#include "host/settings/catalogue_lookup.h"

#include <algorithm>
#include <cctype>

#include "aveffect/catalogue.h"
#include "host/support/error.h"

namespace aveffect {

namespace {

std::string LowerCase(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return result;
}

/// Insertions, deletions, replacements and swaps of neighbours that turn one text into the other.
size_t EditDistance(std::string_view from, std::string_view to) {
    std::vector<size_t> beforeLast, last(to.size() + 1), current(to.size() + 1);
    for (size_t column = 0; column <= to.size(); ++column) last[column] = column;
    for (size_t row = 1; row <= from.size(); ++row) {
        current[0] = row;
        for (size_t column = 1; column <= to.size(); ++column) {
            const bool same = from[row - 1] == to[column - 1];
            size_t best =
                std::min({last[column] + 1, current[column - 1] + 1, last[column - 1] + (same ? 0u : 1u)});
            if (row > 1 && column > 1 && from[row - 1] == to[column - 2] && from[row - 2] == to[column - 1])
                best = std::min(best, beforeLast[column - 2] + 1);
            current[column] = best;
        }
        beforeLast = last;
        std::swap(last, current);
    }
    return last[to.size()];
}

std::string Unknown(const std::string& what, const std::string& guess, const std::string& elsewhere) {
    return "unknown " + what + "; " + (guess.empty() ? elsewhere : guess);
}

/// The words that people know an effect by.
std::vector<std::string_view> WordsFor(const AVBased::EffectInfo& effect) {
    std::vector<std::string_view> words = {effect.shortName, effect.name, effect.title};
    words.insert(words.end(), effect.synonyms.begin(), effect.synonyms.end());
    return words;
}

/// In the form of short names, for words that people join in ways of their own.
std::string Dashed(std::string_view text) {
    std::string result = LowerCase(text);
    for (char& letter : result)
        if (letter == ' ' || letter == '_') letter = '-';
    return result;
}

} // namespace

std::vector<const AVBased::EffectInfo*> AllEffects() {
    std::vector<const AVBased::EffectInfo*> effects;
    effects.reserve(AVBased::kVideoEffects.size() + AVBased::kAudioEffects.size());
    for (const auto& effect : AVBased::kVideoEffects) effects.push_back(&effect);
    for (const auto& effect : AVBased::kAudioEffects) effects.push_back(&effect);
    return effects;
}

std::string_view NearestName(std::string_view text, const std::vector<std::string_view>& candidates) {
    constexpr size_t kLettersPerError = 3;  // one slip in "grey", two in "brigthnes"
    constexpr size_t kSmallestFragment = 3; // "blur" is enough for simple_gauss_blur
    constexpr size_t kLongestText = 64;     // longer than any name: nothing to guess
    const std::string wanted = LowerCase(text);
    if (wanted.size() > kLongestText) return {};

    std::string_view nearest, containing;
    size_t fewest = std::max<size_t>(1, wanted.size() / kLettersPerError) + 1;
    for (const std::string_view candidate : candidates) {
        const std::string name = LowerCase(candidate);
        const size_t distance = EditDistance(wanted, name);
        if (distance < fewest && distance < name.size()) {
            fewest = distance;
            nearest = candidate;
        }
        if (containing.empty() && wanted.size() >= kSmallestFragment &&
            name.find(wanted) != std::string::npos)
            containing = candidate;
    }
    return nearest.empty() ? containing : nearest;
}

bool Names(std::string_view text, const AVBased::EffectInfo& effect) {
    return text == effect.name || text == effect.shortName;
}

const AVBased::EffectInfo* FindNamed(std::string_view name) {
    const auto effects = AllEffects();
    const auto found =
        std::ranges::find_if(effects, [&](const auto* effect) { return Names(name, *effect); });
    return found == effects.end() ? nullptr : *found;
}

std::string GuessEffect(std::string_view text, const std::vector<const AVBased::EffectInfo*>& effects) {
    std::vector<std::string_view> guesses, words;
    std::vector<const AVBased::EffectInfo*> owners; // of the words
    const std::string wanted = Dashed(text);
    for (const auto* effect : effects) {
        const auto known = WordsFor(*effect);
        if (std::ranges::any_of(known, [&](std::string_view word) { return Dashed(word) == wanted; }))
            guesses.push_back(effect->shortName);
        words.insert(words.end(), known.begin(), known.end());
        owners.insert(owners.end(), known.size(), effect);
    }
    if (guesses.empty()) {
        const std::string_view nearest = NearestName(text, words);
        const auto place = std::ranges::find(words, nearest.data(), &std::string_view::data);
        if (!nearest.empty())
            guesses.push_back(owners[static_cast<size_t>(place - words.begin())]->shortName);
    }
    return DidYouMean(guesses);
}

std::string DidYouMean(const std::vector<std::string_view>& guesses) {
    std::string text;
    for (size_t index = 0; index < guesses.size(); ++index) {
        if (guesses[index].empty()) continue;
        if (!text.empty()) text += index + 1 == guesses.size() ? " or " : ", ";
        text += "'" + std::string(guesses[index]) + "'";
    }
    return text.empty() ? text : "did you mean " + text + "?";
}

const AVBased::EffectInfo& RequireEffect(const std::string& name) {
    if (const auto* effect = FindNamed(name)) return *effect;
    throw Error(ErrorKind::Usage, Unknown("effect '" + name + "'", GuessEffect(name, AllEffects()),
                                          "`aveffect list` shows them all"));
}

const AVBased::PropertyInfo& RequireProperty(const AVBased::EffectInfo& effect, const std::string& name) {
    if (const auto* property = AVBased::FindProperty(effect, name)) return *property;
    std::vector<std::string_view> names;
    names.reserve(effect.properties.size() + 1);
    for (const auto& property : effect.properties) names.emplace_back(property.name);
    names.emplace_back(AVBased::kDurationProperty.name);
    const std::string shortName(effect.shortName);
    throw Error(ErrorKind::Usage,
                Unknown("property '" + name + "' of " + shortName, DidYouMean({NearestName(name, names)}),
                        "`aveffect describe " + shortName + "` shows them all"));
}

const AVBased::EffectPreset& RequirePreset(const AVBased::EffectInfo& effect, const std::string& name) {
    std::vector<std::string_view> names;
    for (const auto& preset : effect.presets) {
        if (preset.name == name) return preset;
        names.emplace_back(preset.name);
    }
    const std::string shortName(effect.shortName);
    if (names.empty()) throw Error(ErrorKind::Usage, shortName + " has no presets, so no '" + name + "'");
    std::string all;
    for (const auto& preset : names) all += (all.empty() ? "" : ", ") + std::string(preset);
    throw Error(ErrorKind::Usage, Unknown("preset '" + name + "' of " + shortName,
                                          DidYouMean({NearestName(name, names)}), "these are: " + all));
}

} // namespace aveffect
