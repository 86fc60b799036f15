#pragma once
/// Effects and properties by name, with help for names that are slightly wrong.
#include <string>
#include <string_view>
#include <vector>

#include "aveffect/effect_info.h"

namespace aveffect {

/// Every effect, video before audio, each in its factory's order.
std::vector<const AVBased::EffectInfo*> AllEffects();

/// The candidate that the text was probably meant to be: few typing errors away, or containing it. Empty when
/// none is near. Letter case does not count; among equals the first wins.
std::string_view NearestName(std::string_view text, const std::vector<std::string_view>& candidates);

/// Whether the text is the effect's name or its short one.
bool Names(std::string_view text, const AVBased::EffectInfo& effect);

/// The effect of that name or short name, null when there is none.
const AVBased::EffectInfo* FindNamed(std::string_view name);

/// "did you mean 'a', 'b' or 'c'?"; empty without guesses. Empty ones are left out.
std::string DidYouMean(const std::vector<std::string_view>& guesses);

/// DidYouMean with the short names of those effects that the text was probably meant to be: the ones that
/// people call so, else the one whose name, title or synonym is nearest. Empty when none is near.
std::string GuessEffect(std::string_view text, const std::vector<const AVBased::EffectInfo*>& effects);

/// The effect of that name or short name. Throws Error (Usage) with the nearest name when there is none.
const AVBased::EffectInfo& RequireEffect(const std::string& name);

/// The effect's property of that name, "duration" included. Throws Error (Usage) with the nearest name when
/// there is none.
const AVBased::PropertyInfo& RequireProperty(const AVBased::EffectInfo& effect, const std::string& name);

/// The effect's preset of that name. Throws Error (Usage) with the nearest name, or all, when there is none.
const AVBased::EffectPreset& RequirePreset(const AVBased::EffectInfo& effect, const std::string& name);

} // namespace aveffect
