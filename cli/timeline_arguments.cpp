#include "cli/timeline_arguments.h"

#include <CLI/CLI.hpp>

#include "cli/exit_code.h"
#include "cli/option_values.h"
#include "host/support/error.h"

namespace aveffect {

namespace {

void AddMediaTerms(CLI::App& app, FilmSourceArguments& source) {
    app.add_option("--media-root", source.mediaRoot,
                   "Directory that all media have to lie in, symbolic links followed")
        ->type_name("DIRECTORY");
    app.add_flag("--allow-urls", source.allowUrls, "Let the film name devices, pipes and URLs");
}

void AddRenderFilm(CLI::App& timeline, FilmRenderCommand& command) {
    CLI::App* const render = timeline.add_subcommand("render", "Render a film");
    AddFilmSource(*render, command.source);
    render->add_option("OUTPUT", command.output, "Clip to write")->required();
    render->add_flag("--no-limiter", command.noLimiter,
                     "Let sound clip where it grows too loud instead of turning it down for a moment");
    CLI::Option* const work =
        render
            ->add_option(
                "--work", command.work,
                "Directory that keeps finished pieces of the film, so that a render which is repeated "
                "makes only what is missing or has changed")
            ->type_name("DIRECTORY");
    render
        ->add_option("--work-limit", command.workLimit,
                     "Bytes that this directory may hold, 50G if not given; what was used longest ago goes")
        ->type_name("BYTES")
        ->needs(work);
    AddFilmOptions(*render, command.film);
    AddSeedOption(*render, command.film.run);
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
    AddLimitOptions(*check, command.limits);
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

void AddNew(CLI::App& timeline, FilmNewCommand& command) {
    CLI::App* const make = timeline.add_subcommand(
        "new", "Make a film of clips and pictures with transitions and music, as join renders them");
    make->add_option("FILM", command.output, "Film to write, an .otio file")->required();
    make->add_option("FILES", command.join.files,
                     "Clips and pictures in their order; photo.jpg@5 stands for 5 seconds, of clip.mp4@5 the "
                     "first 5 are shown")
        ->type_name("")
        ->required();
    AddJoinParts(*make, command.join);
    make->add_option("--size", command.join.film.framing.size,
                     "Size of the film's pictures, that of its first clip if not given")
        ->type_name("WIDTHxHEIGHT");
    AddRateOption(*make, command.join.film.fps);
    AddRunOptions(*make, command.join.film.run);
    make->footer(
        std::string("Example:\n  aveffect timeline new film.otio title.png@5 a.mp4 b.mp4 -e crossfade\n\n") +
        kExitCodeHelp);
}

void AddSet(CLI::App& timeline, FilmSetCommand& command) {
    CLI::App* const set =
        timeline.add_subcommand("set", "Change settings of an effect or a transition in a film");
    set->add_option("FILM", command.source.film, "Film to change, an .otio file")->required();
    set->add_option("PLACE", command.place,
                    "Where the effect stands, as show and check name it: tracks[0].children[2].effects[0]")
        ->required();
    set->add_option("SETTINGS", command.settings,
                    "SETTING=VALUE: the effect's own, or preset, from, to, fade_in, fade_out, mix, mask, "
                    "mask_invert, mask_feather, area, enabled; of a transition, effect")
        ->type_name("")
        ->required();
    set->add_option("-o,--output", command.output, "Film to write instead of changing this one")
        ->type_name("FILE");
    AddMediaTerms(*set, command.source);
    AddRunOptions(*set, command.run);
    set->footer(
        std::string("Nothing is written when anything that is set is wrong.\nExample:\n"
                    "  aveffect timeline set film.otio 'tracks[0].children[2].effects[0]' mix=0.5\n\n") +
        kExitCodeHelp);
}

} // namespace

void AddFilmSource(CLI::App& app, FilmSourceArguments& source) {
    app.add_option("FILM", source.film, "Film to read, an .otio file")->required();
    AddMediaTerms(app, source);
    app.add_flag("--strict", source.strict, "Refuse films with anything in them that is not used");
}

void AddTimeline(CLI::App& app, TimelineCommands& commands) {
    CLI::App* const timeline = app.add_subcommand(
        "timeline", "Work with films of several tracks, in the format that editors exchange");
    timeline->require_subcommand(1, 1);
    AddRenderFilm(*timeline, commands.render);
    AddCheck(*timeline, commands.check);
    AddShow(*timeline, commands.show);
    AddNew(*timeline, commands.make);
    AddSet(*timeline, commands.set);
    timeline->add_subcommand("schema", "Print the JSON Schema of what films say to this program")
        ->footer(std::string("It is also installed, as share/aveffect/metadata.schema.json.\n"
                             "Example:\n  aveffect timeline schema >metadata.schema.json\n\n") +
                 kExitCodeHelp);
    timeline->footer(std::string("Example:\n  aveffect timeline render film.otio film.mp4\n"
                                 "`aveffect timeline COMMAND --help` tells more.\n\n") +
                     kExitCodeHelp);
}

TimelineCommand ChosenTimeline(const CLI::App& app, const TimelineCommands& commands) {
    const CLI::App& timeline = *app.get_subcommand("timeline");
    if (timeline.got_subcommand("render")) return commands.render;
    if (timeline.got_subcommand("check")) return commands.check;
    if (timeline.got_subcommand("show")) return commands.show;
    if (timeline.got_subcommand("new")) return commands.make;
    if (timeline.got_subcommand("set")) return commands.set;
    return commands.schema;
}

FilmRenderOptions MakeFilmRenderOptions(const FilmRenderCommand& command) {
    FilmRenderOptions options;
    static_cast<FilmOptions&>(options) = MakeFilmOptions(command.film, command.output);
    if (command.noLimiter) options.limiter = false;
    options.work = command.work;
    if (command.workLimit) options.workLimit = BytesOption("--work-limit", *command.workLimit);
    return options;
}

JoinOptions MakeNewOptions(const FilmNewCommand& command) {
    JoinOptions options = MakeJoinParts(command.join, command.join.files);
    options.film.output = command.output;
    options.film.overwrite = command.join.film.run.overwrite;
    TakeRate(command.join.film.fps, options.film);
    if (const auto& size = command.join.film.framing.size) {
        const PictureSize pixels = SizeOption(*size);
        options.film.framing.width = Extent{static_cast<double>(pixels.width)};
        options.film.framing.height = Extent{static_cast<double>(pixels.height)};
    }
    return options;
}

FilmSetOptions MakeSetOptions(const FilmSetCommand& command) {
    FilmSetOptions options{command.source.film, command.place,         command.settings,
                           command.output,      command.run.overwrite, {}};
    options.terms.media = MakeMediaTerms(command.source);
    return options;
}

MediaTerms MakeMediaTerms(const FilmSourceArguments& source) {
    MediaTerms terms;
    terms.urls = source.allowUrls;
    if (source.mediaRoot.empty()) return terms;
    if (!std::filesystem::is_directory(source.mediaRoot))
        throw Error(ErrorKind::Usage,
                    "--media-root takes a directory that exists, not '" + source.mediaRoot + "'");
    terms.root = source.mediaRoot;
    return terms;
}

} // namespace aveffect
