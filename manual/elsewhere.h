#pragma once
/// An effect's names and commands in this program and in others.
#include <string>
#include <vector>

#include "aveffect/effect_info.h"

namespace aveffect::manual {

/// A name by which a program or interface knows the effect.
struct NameElsewhere {
    std::string where, name;
};

std::vector<NameElsewhere> NamesElsewhere(const AVBased::EffectInfo& effect);

/// A command that does something to be seen or heard, and in which program.
struct CommandElsewhere {
    std::string program, line;
};

std::vector<CommandElsewhere> CommandsElsewhere(const AVBased::EffectInfo& effect);

} // namespace aveffect::manual
