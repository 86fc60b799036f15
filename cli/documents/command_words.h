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
    std::string name; ///< empty for the program itself; "timeline check" is a command of timeline
    std::string help;
    std::vector<OptionWords> positionals, options;
    std::string footer; ///< below the options in --help
    bool hasCommands = false;

    /// As it is typed behind what it belongs to.
    std::string Word() const { return name.substr(name.rfind(' ') + 1); }
    /// Whether it belongs to the command of that name, the program's being empty.
    bool IsOf(const std::string& group) const {
        const size_t blank = name.rfind(' ');
        return !name.empty() && (blank == std::string::npos ? "" : name.substr(0, blank)) == group;
    }
};

/// The program itself, then its commands in the order of --help, each before its own ones.
std::vector<CommandWords> AllCommandWords();

} // namespace aveffect::documents
