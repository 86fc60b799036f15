#pragma once
/// The manual's pages: one of the program, one of each command, one of all effects.
#include <string>
#include <vector>

#include "cli/documents/command_words.h"
#include "cli/documents/man_page.h"

namespace aveffect::documents {

/// "aveffect", "aveffect-render".
std::string PageName(const CommandWords& command);

/// The page of the first one, the program itself, tells of all commands.
ManPage CommandManual(const std::vector<CommandWords>& commands, const CommandWords& command,
                      const Edition& edition);

ManPage EffectsManual(const Edition& edition);

} // namespace aveffect::documents
