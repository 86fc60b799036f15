#include "cli/arguments.h"

#include "cli/command_app.h"
#include "cli/exit_code.h"
#include "cli/option_values.h"
#include "cli/player.h"
#include "host/settings/catalogue_lookup.h"
#include "host/settings/value_text.h"

namespace aveffect {

namespace {

std::vector<EffectSpec> ParseEffects(const std::vector<std::string>& texts, bool lenient, Medium medium) {
    std::vector<EffectSpec> effects;
    effects.reserve(texts.size());
    for (const std::string& text : texts) effects.push_back(ParseEffect(text, lenient, medium));
    return effects;
}

void AddEffects(CLI::App& app, const char* option, std::vector<std::string>& effects, const char* help) {
    app.add_option(option, effects, help)
        ->type_name("NAME[/PRESET][:property=value...]")
        ->allow_extra_args(false);
}

void AddFiles(CLI::App& app, MediaArguments& media) {
    app.add_option("INPUT", media.input, "Clip or still picture to read; - for standard input")->required();
    app.add_option("OUTPUT", media.output,
                   "File to write; its extension chooses the format; - for standard output")
        ->required();
    AddFormatOption(app, media.format);
}

void AddMediaOptions(CLI::App& app, MediaArguments& media) {
    AddEffects(app, "-e,--effect", media.effects,
               "Effect with its settings, applied in the order given; repeat for a chain");
    app.add_option("--pixel-format", media.pixelFormat,
                   "Format that the effects work in: auto, bgra, yuv420p, ...")
        ->type_name("NAME");
    AddSdrOption(app, media.sdr);
    AddStreamOptions(app, media.streams);
    app.add_flag("--strip", media.strip, "Leave out what a photo says of place, time and camera");
    app.add_flag("--lenient", media.lenient, "Hand property values on as they are, unchecked");
    AddRunOptions(app, media.run);
    AddSeedOption(app, media.run);
}

void AddStereoOptions(CLI::App& app, StereoArguments& stereo) {
    app.add_option("--right", stereo.right, "Clip of the right view; INPUT is the left one")
        ->type_name("FILE");
    app.add_option("--stereo-in", stereo.layout,
                   "How INPUT's pictures hold both views: sbs (side by side) or tab (top and bottom)")
        ->type_name("LAYOUT");
}

StereoOptions MakeStereoOptions(const StereoArguments& stereo) {
    StereoOptions options;
    options.right = stereo.right;
    if (stereo.layout == "sbs")
        options.layout = StereoLayout::SideBySide;
    else if (stereo.layout == "tab")
        options.layout = StereoLayout::TopAndBottom;
    else if (!stereo.layout.empty())
        Refuse("--stereo-in", "sbs or tab", stereo.layout);
    return options;
}

void AddAudioEffects(CLI::App& app, RenderCommand& command) {
    AddEffects(app, "-a,--audio-effect", command.audioEffects,
               "Audio effect with its settings, for the sound; repeat for a chain");
}

void AddSpan(CLI::App& app, RenderCommand& command) {
    app.add_option("--from", command.from, "First moment to keep: seconds, mm:ss or hh:mm:ss.ms")
        ->type_name("TIME");
    app.add_option("--to", command.to, "First moment to leave out again")->type_name("TIME");
    app.add_flag("--restart", command.restart,
                 "Effects take what --from and --to keep for the whole clip, and begin and end with it");
}

void AddCodecs(CLI::App& app, RenderCommand& command) {
    AddFramingOptions(app, command.framing);
    AddRateOption(app, command.fps);
    AddEncoderOptions(app, command.encoder,
                      "Sound encoder or codec, the input's own or aac if not given; without it and -a, sound "
                      "is copied as it is");
}

void AddRender(CLI::App& app, RenderCommand& command) {
    CLI::App* const render =
        app.add_subcommand("render", "Render a clip, picture or piece of sound through effects");
    AddFiles(*render, command.media);
    AddMediaOptions(*render, command.media);
    AddAudioEffects(*render, command);
    AddStereoOptions(*render, command.stereo);
    AddSpan(*render, command);
    render->add_option("--frames", command.frames, "Stop after this many pictures")->type_name("N");
    AddCodecs(*render, command);
    AddProgressOption(*render, command.progress);
    render->footer(std::string("Example:\n  aveffect render in.mp4 out.mp4 -e gray "
                               "-e brightness-contrast/punchy --from 0:05 --to 0:15\n"
                               "  aveffect render wide.mp4 short.mp4 --size 1080x1920 --fit cover\n"
                               "  aveffect render in.mp4 out.mp4 -a volume/half\n"
                               "  aveffect render in.wav out.flac -a volume:audio_volume=80%\n\n") +
                   kExitCodeHelp);
}

void AddFrame(CLI::App& app, FrameCommand& command) {
    CLI::App* const frame = app.add_subcommand("frame", "Render one picture of a clip into a still picture");
    AddFiles(*frame, command.media);
    AddMediaOptions(*frame, command.media);
    AddStereoOptions(*frame, command.stereo);
    AddFramingOptions(*frame, command.framing);
    AddQualityOptions(*frame, command.quality);
    frame
        ->add_option("--at", command.at,
                     "Moment of the picture: seconds, mm:ss or hh:mm:ss.ms; 0 if not given")
        ->type_name("TIME");
    frame->footer(std::string("Example:\n  aveffect frame in.mp4 out.png --at 1:02.5 -e invert\n\n") +
                  kExitCodeHelp);
}

void AddBatch(CLI::App& app, BatchCommand& command) {
    CLI::App* const batch = app.add_subcommand("batch", "Render many files through the same effects");
    batch->add_option("INPUTS", command.inputs, "Clips, pictures or files of sound")
        ->type_name("")
        ->required();
    batch->add_option("--to", command.directory, "Directory to write to, under the inputs' names")
        ->type_name("DIRECTORY")
        ->required();
    batch
        ->add_option("--extension", command.extension, "Extension of the outputs, which chooses their format")
        ->type_name("NAME");
    batch->add_option("--jobs", command.workers, "Renders at a time; 0, the default, for one a processor")
        ->type_name("N");
    batch->add_flag("--skip-existing", command.skipExisting, "Leave inputs alone whose output exists");
    batch->add_flag("--json", command.json, "A JSON object for each file and one for the summary");
    AddMediaOptions(*batch, command.render.media);
    AddAudioEffects(*batch, command.render);
    AddCodecs(*batch, command.render);
    batch->footer(std::string("The exit code is that of the worst failure; one file's ends no other.\n"
                              "Example:\n  aveffect batch *.jpg --to gray --skip-existing -e gray\n\n") +
                  kExitCodeHelp);
}

void AddPlay(CLI::App& app, PlayCommand& command) {
    CLI::App* const play =
        app.add_subcommand("play", "Play a clip or sound or show a picture through effects, in a window");
    play->add_option("INPUT", command.render.media.input, "Clip, still picture or piece of sound")
        ->required();
    AddMediaOptions(*play, command.render.media);
    AddAudioEffects(*play, command.render);
    AddStereoOptions(*play, command.render.stereo);
    AddSpan(*play, command.render);
    AddFramingOptions(*play, command.render.framing);
    AddRateOption(*play, command.render.fps);
    play->footer(std::string(kPlayerKeys) + "Example:\n  aveffect play in.mp4 -e gray --from 0:05\n\n" +
                 kExitCodeHelp);
}

void AddList(CLI::App& app, ListCommand& command) {
    CLI::App* const list = app.add_subcommand("list", "Show all effects");
    list->add_flag("--json", command.json, "As JSON, with all properties");
    list->footer(std::string("Example:\n  aveffect list --json\n\n") + kExitCodeHelp);
}

void AddDescribe(CLI::App& app, DescribeCommand& command) {
    CLI::App* const describe = app.add_subcommand("describe", "Show one effect and its properties");
    describe->add_option("NAME", command.effect, "Name or short name of the effect")->required();
    describe->add_flag("--json", command.json, "As JSON");
    describe->footer(std::string("Example:\n  aveffect describe spherize\n\n") + kExitCodeHelp);
}

/// The command that was chosen, the innermost one; the program itself when there is none.
const CLI::App& Chosen(const CLI::App& app) {
    const auto chosen = app.get_subcommands();
    return chosen.empty() ? app : Chosen(*chosen.back());
}

/// "timeline check " of that command, with those that it is in; empty for the program.
std::string NameOf(const CLI::App& command) {
    const CLI::App* const parent = command.get_parent();
    return parent ? NameOf(*parent) + command.get_name() + " " : "";
}

/// What an argument that was not expected was probably meant to be; empty when nothing is near.
std::string Guess(const CLI::App& app, const std::string& argument) {
    std::vector<std::string> names;
    for (const CLI::Option* option : app.get_options())
        for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
    for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; }))
        names.push_back(command->get_name());
    const std::vector<std::string_view> candidates(names.begin(), names.end());
    return std::string(NearestName(argument.substr(0, argument.find('=')), candidates));
}

std::string Complaint(const CLI::App& app, const CLI::ParseError& wrong) {
    const CLI::App& chosen = Chosen(app);
    const auto unexpected = app.remaining(true);
    std::string text = wrong.what();
    if (!unexpected.empty()) {
        text = "'" + unexpected.front() + "' is not expected here";
        const std::string guess = Guess(chosen, unexpected.front());
        if (!guess.empty()) text += "; did you mean '" + guess + "'?";
    }
    return text + " (see `aveffect " + NameOf(chosen) + "--help`)";
}

} // namespace

std::unique_ptr<CLI::App> MakeApp(AllCommands& commands) {
    auto made = std::make_unique<CLI::App>("Renders clips, pictures and sound through effects.", "aveffect");
    CLI::App& app = *made;
    app.set_version_flag("--version", "aveffect " AVEFFECT_VERSION);
    app.require_subcommand(0, 1);
    app.footer(std::string("Example:\n  aveffect render in.mp4 out.mp4 -e invert\n"
                           "`aveffect COMMAND --help` tells more.\n\n") +
               kExitCodeHelp);
    AddList(app, commands.list);
    AddDescribe(app, commands.describe);
    AddRender(app, commands.render);
    AddFrame(app, commands.frame);
    AddTransition(app, commands.transition);
    AddJoin(app, commands.join);
    AddSheet(app, commands.sheet);
    AddCompare(app, commands.compare);
    AddBatch(app, commands.batch);
    AddPlay(app, commands.play);
    AddTimeline(app, commands.timeline);
    AddFarm(app, commands.farm);
    AddStudio(app, commands.studio);
    return made;
}

Command ParseCommandLine(int count, const char* const* arguments) {
    AllCommands commands;
    const std::unique_ptr<CLI::App> made = MakeApp(commands);
    CLI::App& app = *made;
    try {
        app.parse(count, arguments);
    } catch (const CLI::CallForVersion& version) {
        return TextCommand{std::string(version.what()) + "\n"};
    } catch (const CLI::CallForHelp&) {
        return TextCommand{app.help()};
    } catch (const CLI::ParseError& wrong) {
        throw Error(ErrorKind::Usage, Complaint(app, wrong));
    }
    if (app.get_subcommands().empty())
        throw Error(ErrorKind::Usage,
                    "no command given: list, describe, render, frame, batch, transition, join, sheet, "
                    "compare, play, studio, timeline, plan, work, finish or status (see `aveffect --help`)");
    if (app.got_subcommand("list")) return commands.list;
    if (app.got_subcommand("describe")) return commands.describe;
    if (app.got_subcommand("render")) return commands.render;
    if (app.got_subcommand("frame")) return commands.frame;
    if (app.got_subcommand("transition")) return commands.transition;
    if (app.got_subcommand("join")) return commands.join;
    if (app.got_subcommand("sheet")) return commands.sheet;
    if (app.got_subcommand("compare")) return commands.compare;
    if (app.got_subcommand("batch")) return commands.batch;
    if (app.got_subcommand("play")) return commands.play;
    if (app.got_subcommand("timeline")) return ChosenTimeline(app, commands.timeline);
    if (app.got_subcommand("studio")) return commands.studio;
    if (app.got_subcommand("work")) return commands.farm.work;
    if (app.got_subcommand("finish")) return commands.farm.finish;
    if (app.got_subcommand("status")) return commands.farm.status;
    commands.farm.plan.words = app.get_subcommand("plan")->remaining();
    return commands.farm.plan;
}

RenderOptions MakeRenderOptions(const RenderCommand& command) {
    RenderOptions options;
    options.input = InputName(command.media.input);
    options.output = command.media.output;
    options.format = command.media.format;
    options.effects = ParseEffects(command.media.effects, command.media.lenient, Medium::Video);
    options.audioEffects = ParseEffects(command.audioEffects, command.media.lenient, Medium::Audio);
    if (command.from) options.fromMs = TimeOption("--from", *command.from);
    if (command.to) {
        options.toMs = TimeOption("--to", *command.to);
        if (*options.toMs <= options.fromMs.value_or(0))
            throw Error(ErrorKind::Usage, "--to must lie after --from, but " + *command.to +
                                              " does not lie after " + command.from.value_or("0"));
    }
    options.restart = command.restart;
    if (command.frames) options.frameLimit = WholeOption("--frames", *command.frames, 1);
    TakeEncoder(command.encoder, options);
    TakeFraming(command.framing, options);
    TakeRate(command.fps, options);
    options.streams = MakeStreamSelection(command.media.streams);
    if (!options.streams.sound && !options.audioEffects.empty())
        throw Error(ErrorKind::Usage, "--no-sound leaves nothing for --audio-effect to work on");
    options.pixelFormat = command.media.pixelFormat;
    options.sdr = command.media.sdr;
    options.strip = command.media.strip;
    options.overwrite = command.media.run.overwrite;
    options.stereo = MakeStereoOptions(command.stereo);
    return options;
}

FrameOptions MakeFrameOptions(const FrameCommand& command) {
    FrameOptions options;
    options.input = InputName(command.media.input);
    options.output = command.media.output;
    options.format = command.media.format;
    options.atMs = TimeOption("--at", command.at);
    options.streams = MakeStreamSelection(command.media.streams);
    TakeQuality(command.quality, options);
    TakeFraming(command.framing, options);
    options.effects = ParseEffects(command.media.effects, command.media.lenient, Medium::Video);
    options.pixelFormat = command.media.pixelFormat;
    options.sdr = command.media.sdr;
    options.strip = command.media.strip;
    options.overwrite = command.media.run.overwrite;
    options.stereo = MakeStereoOptions(command.stereo);
    return options;
}

BatchOptions MakeBatchOptions(const BatchCommand& command) {
    BatchOptions options;
    options.render = MakeRenderOptions(command.render);
    options.inputs = command.inputs;
    options.directory = command.directory;
    options.extension = command.extension;
    constexpr int64_t kMostWorkers = 64;
    if (command.workers)
        options.workers = static_cast<unsigned>(WholeOption("--jobs", *command.workers, 0, kMostWorkers));
    options.skipExisting = command.skipExisting;
    if (command.skipExisting && options.render.overwrite)
        throw Error(ErrorKind::Usage, "--skip-existing and --overwrite exclude each other");
    return options;
}

} // namespace aveffect
