#pragma once
/// Transitions: their settings and their pictures.
#include <string>
#include <vector>

#include "host/effects/effect_chain.h"
#include "host/picture/fitting.h"

namespace aveffect {

/// The catalogue's transitions, in its order.
std::vector<const AVBased::EffectInfo*> AllTransitions();

/// Throws Error (Usage) that lists the transitions unless the name is one of theirs.
void RequireTransition(const std::string& name);

/// The transition between two source URLs with its times in milliseconds.
EffectSpec TransitionSpec(const std::string& transition, const std::string& first, const std::string& second,
                          int64_t startMs, int64_t endMs);

/// What the chain draws at a moment on a canvas, over black, as BGR0: transitions leave nothing of use in
/// alpha. Throws Error.
mediabridge::AVFramePtr DrawTransition(EffectChain& chain, const Canvas& canvas, int64_t timeMs);

} // namespace aveffect
