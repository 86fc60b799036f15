#include "cli/arguments.h"

#include <limits>

#include <CLI/CLI.hpp>

#include "aveffect/base_media.h"
#include "cli/exit_code.h"
#include "host/catalogue_lookup.h"
#include "host/value_text.h"

namespace aveffect {

namespace {

constexpr char kTimeForm[] = "seconds or hh:mm:ss.ms";

[[noreturn]] void Refuse(const char* option, const std::string& rule, const std::string& value) {
    throw Error(ErrorKind::Usage, std::string(option) + " takes " + rule + ", not '" + value + "'");
}

int64_t TimeOption(const char* option, const std::string& value) {
    const auto time = ParseTime(value);
    if (!time) Refuse(option, kTimeForm, value);
    return *time;
}

int64_t WholeOption(const char* option, const std::string& value, int64_t minimum, int64_t maximum) {
    const auto number = ParseWhole(value);
    if (number && *number >= minimum && *number <= maximum) return *number;
    const bool open = maximum == std::numeric_limits<int64_t>::max();
    Refuse(option,
           "a whole number from " + std::to_string(minimum) +
               (open ? " upwards" : " to " + std::to_string(maximum)),
           value);
}

double CrfOption(const std::string& value) {
    const auto number = ParseReal(value);
    if (!number || *number < 0) Refuse("--crf", "a number from 0 upwards", value);
    return *number;
}

std::vector<EffectSpec> ParseEffects(const MediaArguments& media) {
    std::vector<EffectSpec> effects;
    for (const std::string& text : media.effects) effects.push_back(ParseEffect(text, media.lenient));
    return effects;
}

void AddMediaOptions(CLI::App& app, MediaArguments& media) {
    app.add_option("INPUT", media.input, "Clip or still picture to read")->required();
    app.add_option("OUTPUT", media.output, "File to write; its extension chooses the format")->required();
    app.add_option("-e,--effect", media.effects,
                   "Effect with its settings, applied in the order given; repeat for a chain")
        ->type_name("NAME[:property=value...]")
        ->allow_extra_args(false);
    app.add_option("--pixel-format", media.pixelFormat,
                   "Format that the effects work in: auto, bgra, yuv420p, ...")
        ->type_name("NAME");
    app.add_option("--cpu-level", media.cpuLevel,
                   "Instructions that effects may use: auto, sse2, avx2 or avx512")
        ->type_name("LEVEL");
    app.add_flag("--lenient", media.lenient, "Hand property values on as they are, unchecked");
    app.add_flag("--overwrite", media.overwrite, "Replace the output if it exists");
    app.add_flag("-v,--verbose", media.verbosity,
                 "Say what is done in detail; -vv also shows the effects' log");
}

CLI::App* AddRender(CLI::App& app, RenderCommand& command) {
    CLI::App* const render = app.add_subcommand("render", "Render a clip or picture through effects");
    AddMediaOptions(*render, command.media);
    render->add_option("--from", command.from, "First moment to keep: seconds, mm:ss or hh:mm:ss.ms")
        ->type_name("TIME");
    render->add_option("--to", command.to, "First moment to leave out again")->type_name("TIME");
    render->add_option("--frames", command.frames, "Stop after this many pictures")->type_name("N");
    render
        ->add_option("--codec", command.codec, "Video encoder or codec; the format's usual one if not given")
        ->type_name("NAME");
    render->add_option("--crf", command.crf, "Constant quality of the encoder, lower is better")
        ->type_name("NUMBER");
    render->add_option("--preset", command.preset, "Preset of the encoder, such as ultrafast")
        ->type_name("NAME");
    render->add_option("--threads", command.threads, "Threads of decoder and encoder; 0 for one a processor")
        ->type_name("N");
    const std::map<std::string, ProgressStyle> styles = {{"auto", ProgressStyle::Auto},
                                                         {"bar", ProgressStyle::Bar},
                                                         {"json", ProgressStyle::Json},
                                                         {"none", ProgressStyle::None}};
    render
        ->add_option_function<std::string>(
            "--progress",
            [&command, styles](const std::string& name) {
                const auto style = styles.find(name);
                if (style == styles.end()) Refuse("--progress", "auto, bar, json or none", name);
                command.progress = style->second;
            },
            "Progress: auto (a bar on a terminal), bar, json (one object a second on standard output), none")
        ->type_name("STYLE");
    render->footer(std::string("Example:\n  aveffect render in.mp4 out.mp4 -e gray "
                               "-e brightness_contrast:contrast=20 --from 0:05 --to 0:15\n\n") +
                   kExitCodeHelp);
    return render;
}

CLI::App* AddFrame(CLI::App& app, FrameCommand& command) {
    CLI::App* const frame = app.add_subcommand("frame", "Render one picture of a clip into a still picture");
    AddMediaOptions(*frame, command.media);
    frame
        ->add_option("--at", command.at,
                     "Moment of the picture: seconds, mm:ss or hh:mm:ss.ms; 0 if not given")
        ->type_name("TIME");
    frame->footer(std::string("Example:\n  aveffect frame in.mp4 out.png --at 1:02.5 -e invert\n\n") +
                  kExitCodeHelp);
    return frame;
}

CLI::App* AddList(CLI::App& app, ListCommand& command) {
    CLI::App* const list = app.add_subcommand("list", "Show all effects");
    list->add_flag("--json", command.json, "As JSON, with all properties");
    list->footer(std::string("Example:\n  aveffect list --json\n\n") + kExitCodeHelp);
    return list;
}

CLI::App* AddDescribe(CLI::App& app, DescribeCommand& command) {
    CLI::App* const describe = app.add_subcommand("describe", "Show one effect and its properties");
    describe->add_option("NAME", command.effect, "Name of the effect")->required();
    describe->add_flag("--json", command.json, "As JSON");
    describe->footer(std::string("Example:\n  aveffect describe brightness_contrast\n\n") + kExitCodeHelp);
    return describe;
}

/// The command that was chosen, the program itself when there is none.
const CLI::App& Chosen(const CLI::App& app) {
    const auto chosen = app.get_subcommands();
    return chosen.empty() ? app : *chosen.back();
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
    const std::string command = &chosen == &app ? "" : chosen.get_name() + " ";
    return text + " (see `aveffect " + command + "--help`)";
}

} // namespace

Command ParseCommandLine(int count, const char* const* arguments) {
    ListCommand list;
    DescribeCommand describe;
    RenderCommand render;
    FrameCommand frame;

    CLI::App app("Renders clips and pictures through video effects.", "aveffect");
    app.set_version_flag("--version", "aveffect " AVEFFECT_VERSION);
    app.require_subcommand(0, 1);
    app.footer(std::string("Example:\n  aveffect render in.mp4 out.mp4 -e invert\n"
                           "`aveffect COMMAND --help` tells more.\n\n") +
               kExitCodeHelp);
    const CLI::App* const listApp = AddList(app, list);
    const CLI::App* const describeApp = AddDescribe(app, describe);
    const CLI::App* const renderApp = AddRender(app, render);
    AddFrame(app, frame);

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
                    "no command given: list, describe, render or frame (see `aveffect --help`)");
    if (listApp->parsed()) return list;
    if (describeApp->parsed()) return describe;
    if (renderApp->parsed()) return render;
    return frame;
}

RenderOptions MakeRenderOptions(const RenderCommand& command) {
    constexpr int64_t kMostThreads = 1024;
    RenderOptions options;
    options.input = command.media.input;
    options.output = command.media.output;
    options.effects = ParseEffects(command.media);
    if (command.from) options.fromMs = TimeOption("--from", *command.from);
    if (command.to) {
        options.toMs = TimeOption("--to", *command.to);
        if (*options.toMs <= options.fromMs.value_or(0))
            throw Error(ErrorKind::Usage, "--to must lie after --from, but " + *command.to +
                                              " does not lie after " + command.from.value_or("0"));
    }
    if (command.frames)
        options.frameLimit = WholeOption("--frames", *command.frames, 1, std::numeric_limits<int64_t>::max());
    if (command.crf) options.crf = CrfOption(*command.crf);
    if (command.threads)
        options.threads = static_cast<unsigned>(WholeOption("--threads", *command.threads, 0, kMostThreads));
    options.videoCodec = command.codec;
    options.preset = command.preset;
    options.pixelFormat = command.media.pixelFormat;
    options.overwrite = command.media.overwrite;
    return options;
}

FrameOptions MakeFrameOptions(const FrameCommand& command) {
    FrameOptions options;
    options.input = command.media.input;
    options.output = command.media.output;
    options.atMs = TimeOption("--at", command.at);
    options.effects = ParseEffects(command.media);
    options.pixelFormat = command.media.pixelFormat;
    options.overwrite = command.media.overwrite;
    return options;
}

std::string ApplyCpuLevel(const std::string& level) {
    constexpr unsigned kUpToSSE2 = AVBased::kCpuMMX | AVBased::kCpuSSE | AVBased::kCpuSSE2;
    constexpr unsigned kUpToAVX2 = (AVBased::kCpuAVX2 << 1) - 1;
    constexpr unsigned kEverything = ~0u;
    struct Level {
        const char* name;
        unsigned mask;
        unsigned needed;
    };
    constexpr Level kLevels[] = {{"auto", kEverything, 0},
                                 {"sse2", kUpToSSE2, AVBased::kCpuSSE2},
                                 {"avx2", kUpToAVX2, AVBased::kCpuAVX2},
                                 {"avx512", kEverything, AVBased::kCpuAVX512}};
    for (const Level& known : kLevels) {
        if (level != known.name) continue;
        AVBasedSetCPUFeatureMask(known.mask);
        if ((AVBasedGetCPUFeatures() & known.needed) == known.needed) return {};
        return "this processor has no " + level + "; effects use what it has";
    }
    Refuse("--cpu-level", "auto, sse2, avx2 or avx512", level);
}

} // namespace aveffect
