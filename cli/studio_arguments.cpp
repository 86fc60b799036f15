#include "cli/studio_arguments.h"

#include <CLI/CLI.hpp>
#include <cstdlib>
#include <fstream>
#include <spawn.h>

#include "cli/arguments.h"
#include "cli/catalogue_json.h"
#include "cli/exit_code.h"
#include "cli/option_values.h"

extern char** environ;

namespace aveffect {

namespace {

/// The command that those words are.
template <typename Chosen>
Chosen Parse(const char* command, const std::vector<std::string>& words) {
    std::vector<const char*> arguments = {"aveffect", command};
    for (const std::string& word : words) arguments.push_back(word.c_str());
    return std::get<Chosen>(ParseCommandLine(static_cast<int>(arguments.size()), arguments.data()));
}

} // namespace

void AddStudio(CLI::App& app, StudioCommand& command) {
    CLI::App* const studio =
        app.add_subcommand("studio", "Find settings by looking: a page in the browser of this machine");
    studio
        ->add_option("FILES", command.files,
                     "Clips, pictures or sound to begin with, or a film (.otio) that the page has saved")
        ->type_name("");
    studio
        ->add_option("--folder", command.folders,
                     "Folder whose files, and those below, may be read and written; repeat for more; those "
                     "of the files are, "
                     "or the current one without any")
        ->type_name("FOLDER")
        ->allow_extra_args(false);
    studio->add_option("--port", command.port, "Port of 127.0.0.1 to listen at; a free one if not given")
        ->type_name("NUMBER");
    studio->add_flag("--no-browser", command.noBrowser, "Print the address, and open nothing");
    studio->add_flag("--exit-when-closed", command.exitWhenClosed, "End when the page has been closed");
    AddRunOptions(*studio, command.run);
    AddSeedOption(*studio, command.run);
    studio->footer(std::string("It goes on until Ctrl-C, or until its terminal is closed.\n"
                               "Example:\n  aveffect studio holiday.mp4\n\n") +
                   kExitCodeHelp);
}

std::unique_ptr<StudioSession> OpenStudio(const StudioCommand& command) {
    constexpr int64_t kLastPort = 65535;
    auto session = std::make_unique<StudioSession>();
    StudioOptions options;
    options.files = command.files;
    options.folders = command.folders;
    options.scratch = session->scratch.Path();
    options.catalogue = CatalogueJson().dump();
    options.version = AVEFFECT_VERSION;
    options.commands.render = [](const std::vector<std::string>& words) {
        return MakeRenderOptions(Parse<RenderCommand>("render", words));
    };
    options.commands.frame = [](const std::vector<std::string>& words) {
        return MakeFrameOptions(Parse<FrameCommand>("frame", words));
    };
    if (command.port) options.port = static_cast<int>(WholeOption("--port", *command.port, 1, kLastPort));
    options.endsWithPage = command.exitWhenClosed;
    session->studio = std::make_unique<Studio>(std::move(options));
    return session;
}

Reach ReachOf(const StudioSession& session) {
    Reach reach;
    reach.writes = session.studio->Roots();
    reach.writes.push_back(session.scratch.Path());
    reach.server = true;
    return reach;
}

// Everybody on the machine sees programs' arguments, so that the address with the token lies in a file that
// only this user reads.
bool ShowInBrowser(const StudioSession& session) {
    if (!std::getenv("DISPLAY") && !std::getenv("WAYLAND_DISPLAY")) return false;
    std::string program = "xdg-open", text = session.scratch.Path() + "/studio.html";
    std::ofstream(text)
        << "<!doctype html><title>AVEffect Studio</title><meta http-equiv=\"refresh\" content=\"0;url="
        << session.studio->Address() << "\">\n";
    char* const arguments[] = {program.data(), text.data(), nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", 1, 0);
    posix_spawn_file_actions_adddup2(&actions, 1, 2);
    pid_t process = 0;
    const int error = posix_spawnp(&process, program.c_str(), &actions, nullptr, arguments, environ);
    posix_spawn_file_actions_destroy(&actions);
    return error == 0;
}

} // namespace aveffect
