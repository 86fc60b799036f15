#pragma once
/// What is drawn from several pictures: layers above each other, transitions, effects on what is put
/// together.
#include <memory>
#include <vector>

#include "timeline/playout/playout_setup.h"

namespace aveffect {

/// Puts pictures together, on each worker. What it returns holds what it needs.
class Layering {
public:
    explicit Layering(const PlayoutSetup& setup);

    /// Those that are seen, from below upwards; on black where nothing is opaque, if that is asked for.
    Sketch Stack(std::vector<Sketch> layers, bool onBlack) const;

    /// A moment of a transition that takes so long. Nothing on a side counts as transparent.
    Sketch Cross(const EffectSpec& effect, Sketch from, Sketch to, int64_t timeMs, int64_t lengthMs) const;

private:
    struct Ways;
    std::shared_ptr<Ways> m_ways;
};

} // namespace aveffect
