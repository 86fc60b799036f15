#pragma once
/// The command lines of `timeline`.
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "cli/film_arguments.h"
#include "cli/run_arguments.h"
#include "timeline/jobs/film_render.h"
#include "timeline/jobs/film_set.h"
#include "timeline/otio/film_reader.h"

namespace CLI {
class App;
}

namespace aveffect {

/// Which film is read, and on which terms.
struct FilmSourceArguments {
    std::string film;
    std::string mediaRoot;
    bool allowUrls = false, strict = false;
};

struct FilmRenderCommand {
    FilmSourceArguments source;
    FilmArguments film;
    std::string output;
    bool noLimiter = false;
    std::string work;
    std::optional<std::string> workLimit;
};

struct FilmCheckCommand {
    FilmSourceArguments source;
    bool json = false;
    LimitArguments limits;
};

struct FilmShowCommand {
    FilmSourceArguments source;
    std::string html; ///< page to write; empty: as text
    RunArguments run;
};

struct FilmNewCommand {
    std::string output;
    JoinCommand join; ///< its files are the clips
};

struct FilmSetCommand {
    FilmSourceArguments source;
    std::string place, output;
    std::vector<std::string> settings;
    RunArguments run;
};

struct FilmSchemaCommand {};

/// What parsing fills, one for each of its commands.
struct TimelineCommands {
    FilmRenderCommand render;
    FilmCheckCommand check;
    FilmShowCommand show;
    FilmNewCommand make;
    FilmSetCommand set;
    FilmSchemaCommand schema;
};

using TimelineCommand = std::variant<FilmRenderCommand, FilmCheckCommand, FilmShowCommand, FilmNewCommand,
                                     FilmSetCommand, FilmSchemaCommand>;

/// Add the commands to the program's; what is parsed goes into the command.
void AddTimeline(CLI::App& app, TimelineCommands& commands);

/// The one that was chosen; app is the program's.
TimelineCommand ChosenTimeline(const CLI::App& app, const TimelineCommands& commands);

/// For commands that read a film.
void AddFilmSource(CLI::App& app, FilmSourceArguments& source);

/// Check and translate the values. Throw Error (Usage) that names the option, the value and what would be
/// right.
FilmRenderOptions MakeFilmRenderOptions(const FilmRenderCommand& command);
JoinOptions MakeNewOptions(const FilmNewCommand& command);
FilmSetOptions MakeSetOptions(const FilmSetCommand& command);

/// Which media the film may name, without a folder.
MediaTerms MakeMediaTerms(const FilmSourceArguments& source);

} // namespace aveffect
