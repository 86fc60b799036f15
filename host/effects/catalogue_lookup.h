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

/// The effect of that name. Throws Error (Usage) with the nearest name when there is none.
const AVBased::EffectInfo& RequireEffect(const std::string& name);

/// The effect's property of that name, "duration" included. Throws Error (Usage) with the nearest name when
/// there is none.
const AVBased::PropertyInfo& RequireProperty(const AVBased::EffectInfo& effect, const std::string& name);

} // namespace aveffect
