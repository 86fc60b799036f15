#pragma once
/// Effects that change nothing, by the catalogue's neutral values.
#include "host/effects/effect_chain.h"
#include "host/support/reporter.h"

namespace aveffect {

/// Warns of each effect that leaves pictures (or sound) as they are with its settings, and names settings
/// that don't. Some rules need the pictures' size; 0 by 0 leaves them out.
void WarnOfNeutral(const std::vector<EffectSpec>& effects, unsigned width, unsigned height,
                   Reporter& reporter);

} // namespace aveffect
