#pragma once
/// The catalogue for programs: what `list --json` and `describe --json` print.
#include <nlohmann/json.hpp>

#include "aveffect/effect_info.h"

namespace aveffect {

/// One effect with all its properties, "duration" included. What does not apply is null: a range without an
/// end, no neutral value.
nlohmann::ordered_json EffectJson(const AVBased::EffectInfo& effect);

/// {"effects": [...]} with every effect in the catalogue's order.
nlohmann::ordered_json CatalogueJson();

} // namespace aveffect
