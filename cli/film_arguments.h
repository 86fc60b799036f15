#pragma once
/// The command lines of `transition`, `join` and `sheet`.
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "cli/output_arguments.h"
#include "cli/progress.h"
#include "cli/run_arguments.h"
#include "host/jobs/transition.h"

namespace CLI {
class App;
}

namespace aveffect {

/// What `transition` and `join` have in common. Values are as they were written.
struct FilmArguments {
    RunArguments run;
    std::string format;
    EncoderArguments encoder;
    FramingArguments framing;
    std::optional<std::string> fps;
    bool noSound = false;
    bool sdr = false;
    ProgressStyle progress = ProgressStyle::Auto;
};

struct TransitionCommand {
    FilmArguments film;
    std::string first, second, output;
    std::string transition;
    std::string duration = "1", start = "0", holdBefore = "0", holdAfter = "0";
    bool live = false;
};

struct JoinCommand {
    FilmArguments film;
    std::vector<std::string> files;       ///< the clips, then the output
    std::vector<std::string> transitions; ///< one for all seams, or one for each
    std::string duration = "1", pictureDuration = "3";
    std::string music, musicFadeIn = "0", musicFadeOut = "0", musicVolume = "100%";
    bool noClipSound = false;
};

struct SheetCommand {
    RunArguments run;
    std::string first, second, output;
    std::optional<std::string> size, threads;
};

/// Adds the options, and checks and translates their values. Throws as below.
void AddFilmOptions(CLI::App& app, FilmArguments& film);
FilmOptions MakeFilmOptions(const FilmArguments& film, const std::string& output);

/// Add the commands to the program's; what is parsed goes into the command.
void AddTransition(CLI::App& app, TransitionCommand& command);
void AddJoin(CLI::App& app, JoinCommand& command);
void AddSheet(CLI::App& app, SheetCommand& command);

/// What says how clips follow each other, the music among it.
void AddJoinParts(CLI::App& app, JoinCommand& command);

/// Check and translate the values. Throw Error (Usage) that names the option, the value and what would be
/// right.
TransitionOptions MakeTransitionOptions(const TransitionCommand& command);
/// Those of AddJoinParts(), with clips named as join's are; the film's are left as they are.
JoinOptions MakeJoinParts(const JoinCommand& command, std::span<const std::string> clips);
JoinOptions MakeJoinOptions(const JoinCommand& command);
SheetOptions MakeSheetOptions(const SheetCommand& command);

} // namespace aveffect
