#pragma once
/// Effects for a picture that is shown smaller than it is.
#include <vector>

#include "host/settings/effect_settings.h"

namespace aveffect {

/// Settings that count pixels count as many fewer, so that a picture scaled by that factor (above 0, at most
/// 1) nearly looks as the whole one would: whole numbers are rounded, and nothing leaves its range.
std::vector<EffectSpec> ScaleEffects(std::vector<EffectSpec> effects, double factor);

} // namespace aveffect
