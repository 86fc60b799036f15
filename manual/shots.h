#pragma once
/// Which pictures show an effect, planned from the catalogue before any of them is made.
#include <optional>
#include <string>
#include <vector>

#include "aveffect/effect_info.h"

namespace aveffect::manual {

/// A picture of an effect at work, or a short animation with a still picture of its middle.
struct Shot {
    std::string file;    ///< in the folder of pictures, without an extension
    std::string setting; ///< the effect as the option -e takes it
    std::string caption;
    bool moves = false;
    bool twoViews = false;
    std::string failure = {}; ///< why there is none, said by the effect; empty once it was made
};

/// A property with what its ends, or each of its choices, look like.
struct PropertyShots {
    const AVBased::PropertyInfo* property;
    std::vector<Shot> shots = {};
};

/// All that is to be seen of one effect.
struct EffectShots {
    const AVBased::EffectInfo* effect;
    std::optional<Shot> main;       ///< beside the picture before; absent for sound and transitions
    std::vector<Shot> presets = {}; ///< in the catalogue's order
    std::vector<PropertyShots> properties = {};
    std::optional<Shot> moving = {}; ///< the effect over time, or one of its settings that moves
};

/// Of every effect, in the catalogue's order.
std::vector<EffectShots> PlanShots();

} // namespace aveffect::manual
