#pragma once
/// Shells' completion: the tables that their scripts work on.
#include <string>
#include <vector>

#include "cli/documents/command_words.h"

namespace aveffect::documents {

/// What takes the place of @TABLES@ in the scripts beside this file. Lines of bash's tables, and of every
/// shell's for effects, have three fields between tabs:
///   what is written: "--fit", "/bulge" behind an effect's name, ":spherize_r=", a command's name, or "*" for
///   its positionals;
///   what its value is: words with blanks between, @files, @directories, @video or @audio for an effect with
///   settings, "?" for what nobody can know, "-" for no value;
///   what it means.
std::string BashTables(const std::vector<CommandWords>& commands);
std::string ZshTables(const std::vector<CommandWords>& commands);
std::string FishTables(const std::vector<CommandWords>& commands);

} // namespace aveffect::documents
