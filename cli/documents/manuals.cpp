#include "cli/documents/manuals.h"

#include <algorithm>

namespace aveffect::documents {

namespace {

constexpr char kEffectsPage[] = "aveffect-effects";

std::string Reference(const std::string& page, int section) {
    return Bold(page) + "(" + std::to_string(section) + ")";
}

std::string Decapitalised(std::string text) {
    if (text.ends_with('.')) text.pop_back();
    if (!text.empty() && text[0] >= 'A' && text[0] <= 'Z') text[0] = static_cast<char>(text[0] - 'A' + 'a');
    return text;
}

std::string Sentence(const std::string& text) { return text.ends_with('.') ? text : text + "."; }

void AddSynopsis(ManPage& page, const CommandWords& command) {
    page.Section("Synopsis");
    std::string text = Bold("aveffect") + (command.name.empty() ? "" : " " + Bold(command.name));
    if (command.hasCommands) text += " " + Italic("COMMAND");
    text += " [" + Italic("OPTIONS") + "]";
    for (const OptionWords& positional : command.positionals)
        text += " " + Italic(positional.names.front()) + (positional.repeats ? "..." : "");
    page.Paragraph(text);
}

void AddCommands(ManPage& page, const std::vector<CommandWords>& commands, const std::string& group) {
    page.Section("Commands");
    for (const CommandWords& command : commands)
        if (command.IsOf(group)) page.Item(Reference(PageName(command), 1), Plain(Sentence(command.help)));
}

void AddOptions(ManPage& page, const CommandWords& command) {
    page.Section("Options");
    for (const OptionWords& option : command.options) {
        std::string tag;
        for (const std::string& name : option.names) tag += (tag.empty() ? "" : ", ") + Bold(name);
        if (!option.IsFlag()) tag += " " + Italic(option.type);
        page.Item(tag, Plain(Sentence(option.help)));
    }
}

/// "  0    done", whose further lines have no code.
void AddExitCodes(ManPage& page, const std::string& lines) {
    std::string code, meaning;
    const auto flush = [&] {
        if (!code.empty()) page.Item(Bold(code), Plain(Sentence(meaning)));
        code.clear();
    };
    for (size_t start = 0; start < lines.size();) {
        const size_t end = std::min(lines.find('\n', start), lines.size());
        const std::string line = lines.substr(start, end - start);
        start = end + 1;
        const size_t first = line.find_first_not_of(' ');
        if (first == std::string::npos) continue;
        constexpr size_t kCodes = 2; // the column of codes
        if (first > kCodes) {
            meaning += " " + line.substr(first);
            continue;
        }
        flush();
        const size_t blank = line.find(' ', first);
        code = line.substr(first, blank - first);
        meaning = line.substr(line.find_first_not_of(' ', blank));
    }
    flush();
}

/// What --help shows below the options: sentences, examples and exit codes.
void AddFooter(ManPage& page, const std::string& footer) {
    std::string notes, examples, codes;
    std::string* part = &notes;
    for (size_t start = 0; start < footer.size();) {
        const size_t end = std::min(footer.find('\n', start), footer.size());
        const std::string line = footer.substr(start, end - start);
        start = end + 1;
        if (line == "Example:" || line == "Examples:")
            part = &examples;
        else if (line == "Exit codes:")
            part = &codes;
        else if (part == &examples && !line.starts_with("  "))
            notes += line + " ";
        else
            *part += part == &notes ? line + " " : line + "\n";
    }
    if (notes.find_first_not_of(' ') != std::string::npos) {
        page.Section("Notes");
        page.Paragraph(Plain(notes));
    }
    if (!codes.empty()) {
        page.Section("Exit status");
        AddExitCodes(page, codes);
    }
    if (!examples.empty()) {
        page.Section("Examples");
        constexpr size_t kIndent = 2;
        std::string lines;
        for (size_t start = 0; start < examples.size();) {
            const size_t end = examples.find('\n', start);
            lines += examples.substr(start + kIndent, end + 1 - start - kIndent);
            start = end + 1;
        }
        page.Lines(lines);
    }
}

void AddSeeAlso(ManPage& page, const std::vector<CommandWords>& commands, const CommandWords& self) {
    page.Section("See also");
    std::string text;
    for (const CommandWords& command : commands)
        if (&command != &self) text += Reference(PageName(command), 1) + ", ";
    page.Paragraph(text + Reference(kEffectsPage, 7));
}

} // namespace

std::string PageName(const CommandWords& command) {
    std::string name = command.name.empty() ? "aveffect" : "aveffect-" + command.name;
    std::ranges::replace(name, ' ', '-');
    return name;
}

ManPage CommandManual(const std::vector<CommandWords>& commands, const CommandWords& command,
                      const Edition& edition) {
    ManPage page(PageName(command), 1, edition, Decapitalised(command.help));
    AddSynopsis(page, command);
    page.Section("Description");
    page.Paragraph(Plain(Sentence(command.help)));
    for (const OptionWords& positional : command.positionals)
        page.Item(Italic(positional.names.front()), Plain(Sentence(positional.help)));
    if (command.name.empty()) {
        page.Paragraph(
            Plain("Results go to standard output, messages to standard error, each on one line that "
                  "begins with \"aveffect: \". A failure is exactly one such line and an exit status."));
        page.Paragraph(
            Reference(kEffectsPage, 7) + " " +
            Plain("tells of all effects, of their presets and properties, and how they are written."));
    }
    if (command.hasCommands) AddCommands(page, commands, command.name);
    AddOptions(page, command);
    AddFooter(page, command.footer);
    AddSeeAlso(page, commands, command);
    return page;
}

} // namespace aveffect::documents
