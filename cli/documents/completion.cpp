#include "cli/documents/completion.h"

#include "cli/catalogue_text.h"
#include "host/settings/catalogue_lookup.h"
#include "host/settings/reach.h"

namespace aveffect::documents {

using AVBased::EffectInfo;
using AVBased::PropertyInfo;
using AVBased::ValueKind;

namespace {

/// Marks are the characters that a backslash has to stand before.
std::string Escaped(std::string_view text, std::string_view marks) {
    std::string escaped;
    for (const char letter : text) {
        if (marks.find(letter) != std::string_view::npos) escaped += '\\';
        escaped += letter;
    }
    return escaped;
}

/// In single quotes, as bash and zsh read them.
std::string ShellQuoted(std::string_view text) {
    std::string quoted = "'";
    for (const char letter : text) quoted += letter == '\'' ? "'\\''" : std::string(1, letter);
    return quoted + "'";
}

std::string FishQuoted(std::string_view text) { return "'" + Escaped(text, "'\\") + "'"; }

using Quote = std::string (*)(std::string_view);

std::string Joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) text += (text.empty() ? "" : " ") + word;
    return text;
}

std::string ValueField(const Offer& offer) {
    switch (offer.kind) {
    case Offer::Kind::Words:
        return Joined(offer.words);
    case Offer::Kind::Files:
        return "@files";
    case Offer::Kind::Directories:
        return "@directories";
    case Offer::Kind::VideoSetting:
        return "@video";
    case Offer::Kind::AudioSetting:
        return "@audio";
    case Offer::Kind::Nothing:
        break;
    }
    return "?";
}

std::string ValueField(const PropertyInfo& property) {
    if (property.kind == ValueKind::Switch) return "on off";
    if (property.kind == ValueKind::Path) return "@files";
    if (property.name == std::string_view(reach::kArea)) return "rectangle, ellipse,";
    std::string words;
    for (const auto& choice : property.choices)
        words += (words.empty() ? "" : " ") + std::string(choice.name);
    return words.empty() ? "?" : words;
}

std::string Line(const std::string& written, const std::string& value, std::string_view help) {
    return written + "\t" + value + "\t" + std::string(help);
}

using Lines = std::vector<std::string>;

Lines SettingLines(const EffectInfo& effect) {
    Lines lines;
    for (const auto& preset : effect.presets)
        lines.push_back(Line("/" + std::string(preset.name), "-", preset.help));
    const auto add = [&lines](const PropertyInfo& property) {
        lines.push_back(Line(":" + std::string(property.name) + "=", ValueField(property), property.help));
    };
    for (const PropertyInfo& property : effect.properties) add(property);
    add(AVBased::kDurationProperty);
    for (const PropertyInfo& property : ReachProperties(!IsVideoEffect(effect))) add(property);
    return lines;
}

Lines EffectLines(bool video) {
    Lines lines;
    for (const EffectInfo* effect : AllEffects())
        if (IsVideoEffect(*effect) == video)
            lines.push_back(Line(std::string(effect->shortName), "-", effect->title));
    return lines;
}

/// Commands of one command, or of the program.
Lines CommandLines(const std::vector<CommandWords>& commands, const std::string& group) {
    Lines lines;
    for (const CommandWords& command : commands)
        if (command.IsOf(group)) lines.push_back(Line(command.Word(), "-", command.help));
    return lines;
}

/// Names of commands that have commands, each between blanks.
std::string Groups(const std::vector<CommandWords>& commands) {
    std::string text = " ";
    for (const CommandWords& command : commands)
        if (command.hasCommands && !command.name.empty()) text += command.name + " ";
    return text;
}

Lines OptionLines(const CommandWords& command) {
    Lines lines;
    for (const OptionWords& option : command.options)
        for (const std::string& name : option.names)
            lines.push_back(Line(name, option.IsFlag() ? "-" : ValueField(option.offer), option.help));
    for (const OptionWords& positional : command.positionals)
        lines.push_back(Line("*", ValueField(positional.offer), positional.help));
    return lines;
}

/// A shell's way to write a function that sets lines by its argument.
struct Syntax {
    const char* name;  ///< what the functions' names begin with
    const char* begin; ///< behind the function's name
    const char* one;   ///< before the argument's value, behind it
    const char* behind;
    const char* set;
    const char* next; ///< between lines
    const char* done; ///< behind the lines
    const char* end;
    Quote quote;
};

constexpr Syntax kBash = {
    "_aveffect", "() {\n  case $1 in\n",          "  ",       ")\n", "    lines=(", "\n      ",
    ") ;;\n",    "  *) lines=() ;;\n  esac\n}\n", ShellQuoted};
constexpr Syntax kFish = {"function __aveffect",
                          "\n  switch $argv[1]\n",
                          "  case ",
                          "\n",
                          "    printf '%s\\n'",
                          " \\\n      ",
                          "\n",
                          "  end\nend\n",
                          FishQuoted};

std::string Case(const Syntax& syntax, const std::vector<std::string>& arguments, const Lines& lines) {
    std::string text = syntax.one;
    const bool bars = std::string_view(syntax.behind).starts_with(')');
    for (const std::string& argument : arguments)
        text += (&argument == arguments.data() ? "" : bars ? "|" : " ") + syntax.quote(argument);
    text += std::string(syntax.behind) + syntax.set;
    for (const std::string& line : lines) text += syntax.next + syntax.quote(line);
    return text + syntax.done;
}

/// The functions that all shells have: settings of an effect by either of its names, and effects by medium.
std::string EffectTables(const Syntax& syntax) {
    std::string text = std::string(syntax.name) + "_settings" + syntax.begin;
    for (const EffectInfo* effect : AllEffects()) {
        std::vector<std::string> names = {std::string(effect->shortName)};
        if (effect->shortName != effect->name) names.emplace_back(effect->name);
        text += Case(syntax, names, SettingLines(*effect));
    }
    text += std::string(syntax.end) + syntax.name + "_effects" + syntax.begin;
    return text + Case(syntax, {"video"}, EffectLines(true)) + Case(syntax, {"audio"}, EffectLines(false)) +
           syntax.end;
}

/// Brackets and colons have a meaning in what zsh is told of a word.
std::string ZshText(std::string_view text) { return Escaped(text, "\\[]:"); }

/// A blank in front of an action keeps zsh from adding arguments to it.
std::string ZshAction(const Offer& offer) {
    switch (offer.kind) {
    case Offer::Kind::Words:
        return "(" + Joined(offer.words) + ")";
    case Offer::Kind::Files:
        return "_files";
    case Offer::Kind::Directories:
        return "_files -/";
    case Offer::Kind::VideoSetting:
        return " _aveffect_setting video";
    case Offer::Kind::AudioSetting:
        return " _aveffect_setting audio";
    case Offer::Kind::Nothing:
        break;
    }
    return " ";
}

/// As _arguments takes it: once, or any number of times.
std::string ZshOption(const OptionWords& option, const std::string& name) {
    std::string others;
    for (const std::string& other : option.names) others += (others.empty() ? "" : " ") + other;
    const bool help = name == "-h" || name == "--help" || name == "--version";
    std::string text = option.repeats ? "*" : help ? "(- *)" : "(" + others + ")";
    text += name;
    if (!option.IsFlag()) text += name.starts_with("--") ? "=" : "+";
    text += "[" + ZshText(option.help) + "]";
    if (!option.IsFlag()) text += ":" + ZshText(option.type) + ":" + ZshAction(option.offer);
    return ShellQuoted(text);
}

std::string ZshArguments(const CommandWords& command) {
    std::string text;
    for (const OptionWords& option : command.options)
        for (const std::string& name : option.names) text += " \\\n      " + ZshOption(option, name);
    for (const OptionWords& positional : command.positionals)
        text += " \\\n      " + ShellQuoted(std::string(positional.repeats ? "*" : "") + ":" +
                                            ZshText(positional.type) + ":" + ZshAction(positional.offer));
    return text;
}

std::string FishValue(const Offer& offer) {
    switch (offer.kind) {
    case Offer::Kind::Words:
        return " -x -a " + FishQuoted(Joined(offer.words));
    case Offer::Kind::Files:
        return " -r -F";
    case Offer::Kind::Directories:
        return " -x -a '(__fish_complete_directories)'";
    case Offer::Kind::VideoSetting:
        return " -x -a '(__aveffect_setting video)'";
    case Offer::Kind::AudioSetting:
        return " -x -a '(__aveffect_setting audio)'";
    case Offer::Kind::Nothing:
        break;
    }
    return " -x";
}

std::string FishOption(const std::string& condition, const OptionWords& option) {
    std::string text = "complete -c aveffect -n " + FishQuoted(condition);
    for (const std::string& name : option.names)
        text += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
    if (!option.IsFlag()) text += FishValue(option.offer);
    return text + " -d " + FishQuoted(option.help) + "\n";
}

std::string FishCommand(const CommandWords& command) {
    const bool program = command.name.empty();
    const std::string condition = program ? "__fish_use_subcommand" : "__aveffect_at " + command.name;
    const size_t blank = command.name.rfind(' ');
    const std::string above = blank == std::string::npos ? "__fish_use_subcommand"
                                                         : "__aveffect_at " + command.name.substr(0, blank);
    std::string text;
    if (!program)
        text += "complete -c aveffect -n " + FishQuoted(above) + " -f -a " + command.Word() + " -d " +
                FishQuoted(command.help) + "\n";
    for (const OptionWords& option : command.options) text += FishOption(condition, option);
    const bool files =
        !command.positionals.empty() && command.positionals.front().offer.kind == Offer::Kind::Files;
    if (!program && !files) {
        text += "complete -c aveffect -n " + FishQuoted(condition) + " -f";
        for (const OptionWords& positional : command.positionals)
            text += " -a " + FishQuoted(Joined(positional.offer.words));
        text += "\n";
    }
    return text;
}

} // namespace

std::string BashTables(const std::vector<CommandWords>& commands) {
    std::string text =
        "_aveffect_groups=" + ShellQuoted(Groups(commands)) + "\n_aveffect_options" + kBash.begin;
    for (const CommandWords& command : commands) {
        Lines lines = OptionLines(command);
        for (const std::string& line : CommandLines(commands, command.name)) lines.push_back(line);
        text += Case(kBash, {command.name}, lines);
    }
    return text + kBash.end + EffectTables(kBash);
}

std::string ZshTables(const std::vector<CommandWords>& commands) {
    std::string text = EffectTables(kBash) + "_aveffect_commands" + kBash.begin;
    for (const CommandWords& command : commands)
        if (command.hasCommands) text += Case(kBash, {command.name}, CommandLines(commands, command.name));
    text += std::string(kBash.end) + "_aveffect_arguments() {\n  case $1 in\n";
    for (const CommandWords& command : commands)
        if (!command.name.empty())
            text += "  " + ShellQuoted(command.name) + ")\n    " +
                    (command.hasCommands ? "_aveffect_group " + command.name
                                         : "_arguments -s" + ZshArguments(command)) +
                    " ;;\n";
    return text + "  esac\n}\n";
}

std::string FishTables(const std::vector<CommandWords>& commands) {
    std::string text =
        "set -g __aveffect_groups " + FishQuoted(Groups(commands)) + "\n" + EffectTables(kFish);
    for (const CommandWords& command : commands) text += FishCommand(command);
    return text;
}

} // namespace aveffect::documents
