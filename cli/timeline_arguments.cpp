#include "cli/timeline_arguments.h"

#include <CLI/CLI.hpp>

#include "cli/exit_code.h"
#include "host/support/error.h"

namespace aveffect {

namespace {

void AddRenderFilm(CLI::App& timeline, FilmRenderCommand& command) {
    CLI::App* const render = timeline.add_subcommand("render", "Render a film");
    AddFilmSource(*render, command.source);
    render->add_option("OUTPUT", command.output, "Clip to write")->required();
    render->add_flag("--no-limiter", command.noLimiter,
                     "Let sound clip where it grows too loud instead of turning it down for a moment");
    AddFilmOptions(*render, command.film);
    render->footer(std::string("Size, rate and codecs that are not said are the film's wishes or those of "
                               "its first clip.\n"
                               "Example:\n  aveffect timeline render film.otio film.mp4\n\n") +
                   kExitCodeHelp);
}

void AddCheck(CLI::App& timeline, FilmCheckCommand& command) {
    CLI::App* const check =
        timeline.add_subcommand("check", "Tell all that is wrong with a film, without rendering it");
    AddFilmSource(*check, command.source);
    check->add_flag("--json", command.json, "Tell it as JSON");
    check->footer(std::string("Media are opened once each, and only what they say in front is read.\n"
                              "Example:\n  aveffect timeline check film.otio --strict\n\n") +
                  kExitCodeHelp);
}

void AddShow(CLI::App& timeline, FilmShowCommand& command) {
    CLI::App* const show = timeline.add_subcommand(
        "show", "Show a film's tracks, items, effects and transitions with their times");
    AddFilmSource(*show, command.source);
    show->add_option("--html", command.html, "Page to write instead, with a small picture of each clip")
        ->type_name("FILE");
    AddRunOptions(*show, command.run);
    show->footer(std::string("Example:\n  aveffect timeline show film.otio\n"
                             "  aveffect timeline show film.otio --html film.html\n\n") +
                 kExitCodeHelp);
}

} // namespace

void AddFilmSource(CLI::App& app, FilmSourceArguments& source) {
    app.add_option("FILM", source.film, "Film to read, an .otio file")->required();
    app.add_option("--media-root", source.mediaRoot,
                   "Directory that all media have to lie in, symbolic links followed")
        ->type_name("DIRECTORY");
    app.add_flag("--allow-urls", source.allowUrls, "Let the film name devices, pipes and URLs");
    app.add_flag("--strict", source.strict, "Refuse films with anything in them that is not used");
}

void AddTimeline(CLI::App& app, TimelineCommands& commands) {
    CLI::App* const timeline = app.add_subcommand(
        "timeline", "Work with films of several tracks, in the format that editors exchange");
    timeline->require_subcommand(1, 1);
    AddRenderFilm(*timeline, commands.render);
    AddCheck(*timeline, commands.check);
    AddShow(*timeline, commands.show);
    timeline->footer(std::string("Example:\n  aveffect timeline render film.otio film.mp4\n"
                                 "`aveffect timeline COMMAND --help` tells more.\n\n") +
                     kExitCodeHelp);
}

TimelineCommand ChosenTimeline(const CLI::App& app, const TimelineCommands& commands) {
    const CLI::App& timeline = *app.get_subcommand("timeline");
    if (timeline.got_subcommand("render")) return commands.render;
    if (timeline.got_subcommand("check")) return commands.check;
    return commands.show;
}

FilmRenderOptions MakeFilmRenderOptions(const FilmRenderCommand& command) {
    FilmRenderOptions options;
    static_cast<FilmOptions&>(options) = MakeFilmOptions(command.film, command.output);
    if (command.noLimiter) options.limiter = false;
    return options;
}

OtioTerms MakeOtioTerms(const FilmSourceArguments& source, MediaHeaders& headers) {
    OtioTerms terms;
    terms.media.urls = source.allowUrls;
    terms.headers = &headers;
    if (source.mediaRoot.empty()) return terms;
    if (!std::filesystem::is_directory(source.mediaRoot))
        throw Error(ErrorKind::Usage,
                    "--media-root takes a directory that exists, not '" + source.mediaRoot + "'");
    terms.media.root = source.mediaRoot;
    return terms;
}

} // namespace aveffect
