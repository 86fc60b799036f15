// Writes man pages, shells' completion and the schema of films' metadata: write_documents SCRIPTS GUIDE
// FOLDER VERSION DATE
//
// SCRIPTS is the folder with the shells' scripts, GUIDE the one to the effects in other programs, FOLDER what
// share/ is to be under the install prefix.
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>

#include "cli/documents/completion.h"
#include "cli/documents/manuals.h"
#include "timeline/otio/metadata_schema.h"

namespace {

using namespace aveffect::documents;
using std::filesystem::path;

std::string Read(const path& file) {
    std::ifstream stream(file);
    std::ostringstream text;
    text << stream.rdbuf();
    if (!stream) throw std::runtime_error("can't read " + file.string());
    return text.str();
}

void Write(const path& file, const std::string& text) {
    create_directories(file.parent_path());
    std::ofstream stream(file, std::ios::binary);
    stream << text;
    stream.close();
    if (!stream) throw std::runtime_error("can't write " + file.string());
}

const Door kDoors[] = {{"aveffect-mlt", "MLT", "aveffect.", false, "melt"},
                       {"aveffect-gstreamer", "GStreamer", "aveffect-", true, "gst-inspect-1.0"}};

void WriteManuals(const path& folder, const std::string& guide, const std::vector<CommandWords>& commands,
                  const Edition& edition) {
    for (const CommandWords& command : commands)
        Write(folder / "man1" / (PageName(command) + ".1"), CommandManual(commands, command, edition).Text());
    Write(folder / "man7" / "aveffect-effects.7", EffectsManual(edition).Text());
    for (const Door& door : kDoors)
        Write(folder / "man7" / (door.page + ".7"), DoorManual(door, guide, edition).Text());
}

void WriteScript(const path& script, const std::string& tables, const path& file) {
    constexpr std::string_view kMark = "@TABLES@\n";
    std::string text = Read(script);
    const size_t place = text.find(kMark);
    if (place == std::string::npos) throw std::runtime_error(script.string() + " has no place for tables");
    Write(file, text.replace(place, kMark.size(), tables));
}

} // namespace

int main(int count, char** arguments) try {
    constexpr int kArguments = 5;
    if (count != kArguments + 1)
        throw std::runtime_error("usage: write_documents SCRIPTS GUIDE FOLDER VERSION DATE");
    const path scripts = arguments[1], folder = arguments[3];
    const std::vector<CommandWords> commands = AllCommandWords();
    WriteManuals(folder / "man", Read(arguments[2]), commands, {arguments[4], arguments[5]});
    WriteScript(scripts / "aveffect.bash", BashTables(commands),
                folder / "bash-completion/completions/aveffect");
    WriteScript(scripts / "aveffect.zsh", ZshTables(commands), folder / "zsh/site-functions/_aveffect");
    WriteScript(scripts / "aveffect.fish", FishTables(commands),
                folder / "fish/vendor_completions.d/aveffect.fish");
    constexpr int kIndent = 2;
    Write(folder / "aveffect/metadata.schema.json", aveffect::MetadataSchema().dump(kIndent) + "\n");
    return 0;
} catch (const std::exception& failure) {
    std::cerr << "write_documents: " << failure.what() << "\n";
    return 1;
}
