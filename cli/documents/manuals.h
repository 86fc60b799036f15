#pragma once
/// The manual's pages: one of the program, one of each command, one of all effects, one for each other
/// program that has them as its own.
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

/// How another program has the effects.
struct Door {
    std::string page;    ///< "aveffect-mlt"
    std::string program; ///< "MLT", as in the guide's headings
    std::string prefix;  ///< of the effects' short names
    bool dashes;         ///< properties have dashes where they have underscores elsewhere
    std::string tool;    ///< whose page tells more
};

/// What the guide to the effects in other programs says of one, and what it has. Throws std::runtime_error
/// when the guide says nothing.
ManPage DoorManual(const Door& door, std::string_view guide, const Edition& edition);

} // namespace aveffect::documents
