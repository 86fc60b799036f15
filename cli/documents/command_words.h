#pragma once
/// The program's commands and options as plain words, for manuals and for shells' completion.
#include <string>
#include <vector>

namespace aveffect::documents {

/// What a shell offers as a value.
struct Offer {
    enum class Kind { Nothing, Words, Files, Directories, VideoSetting, AudioSetting };
    Kind kind = Kind::Nothing;
    std::vector<std::string> words = {}; ///< of kind Words
};

struct OptionWords {
    std::vector<std::string> names; ///< "-e", "--effect"; the one name of a positional
    std::string type;               ///< of its value; empty for a flag
    std::string help;
    bool repeats = false;
    Offer offer = {};

    bool IsFlag() const { return type.empty(); }
};

struct CommandWords {
    std::string name; ///< empty for the program itself
    std::string help;
    std::vector<OptionWords> positionals, options;
    std::string footer; ///< below the options in --help
};

/// The program itself, then its commands in the order of --help.
std::vector<CommandWords> AllCommandWords();

} // namespace aveffect::documents
