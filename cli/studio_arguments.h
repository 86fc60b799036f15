#pragma once
/// The command line of `studio`.
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/confinement/reach.h"
#include "cli/run_arguments.h"
#include "cli/scratch_folder.h"
#include "studio/studio.h"

namespace CLI {
class App;
}

namespace aveffect {

struct StudioCommand {
    std::vector<std::string> files, folders;
    std::optional<std::string> port;
    bool noBrowser = false, exitWhenClosed = false;
    RunArguments run;
};

/// Adds the command to the program's; what is parsed goes into the command.
void AddStudio(CLI::App& app, StudioCommand& command);

/// A server that listens, and where it puts what it makes.
struct StudioSession {
    ScratchFolder scratch;
    std::unique_ptr<Studio> studio;
};

/// Throws Error.
std::unique_ptr<StudioSession> OpenStudio(const StudioCommand& command);

/// What it may reach.
Reach ReachOf(const StudioSession& session);

/// Has the desktop show its page. False when there is nobody to ask.
bool ShowInBrowser(const StudioSession& session);

} // namespace aveffect
