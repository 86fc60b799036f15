#include "host/effects/catalogue_lookup.h"

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

std::string Unknown(const std::string& what, std::string_view nearest, const std::string& elsewhere) {
    if (nearest.empty()) return "unknown " + what + "; " + elsewhere;
    return "unknown " + what + "; did you mean '" + std::string(nearest) + "'?";
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

const AVBased::EffectInfo& RequireEffect(const std::string& name) {
    if (const auto* effect = AVBased::FindEffect(name)) return *effect;
    std::vector<std::string_view> names;
    const auto effects = AllEffects();
    names.reserve(effects.size());
    for (const auto* effect : effects) names.emplace_back(effect->name);
    throw Error(ErrorKind::Usage,
                Unknown("effect '" + name + "'", NearestName(name, names), "`aveffect list` shows them all"));
}

const AVBased::PropertyInfo& RequireProperty(const AVBased::EffectInfo& effect, const std::string& name) {
    if (const auto* property = AVBased::FindProperty(effect, name)) return *property;
    std::vector<std::string_view> names;
    names.reserve(effect.properties.size() + 1);
    for (const auto& property : effect.properties) names.emplace_back(property.name);
    names.emplace_back(AVBased::kDurationProperty.name);
    throw Error(ErrorKind::Usage,
                Unknown("property '" + name + "' of " + effect.name, NearestName(name, names),
                        "`aveffect describe " + std::string(effect.name) + "` shows them all"));
}

} // namespace aveffect
