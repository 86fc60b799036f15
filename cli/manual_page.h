#pragma once
/// The manual's pages, where they are installed or built.
#include <filesystem>
#include <string>

#include "aveffect/effect_info.h"

namespace aveffect {

/// The effect's page in the manual nearest above the folder of the program: a build's own, an install
/// prefix's. Empty when there is none.
std::filesystem::path ManualPage(const AVBased::EffectInfo& effect, const std::filesystem::path& program);

} // namespace aveffect
