#include "cli/film_arguments.h"

#include <CLI/CLI.hpp>

#include "cli/exit_code.h"
#include "cli/join_values.h"
#include "cli/option_values.h"
#include "host/support/error.h"

namespace aveffect {

namespace {

constexpr char kTimeHelp[] = ": seconds, mm:ss or hh:mm:ss.ms";

CLI::Option* AddTime(CLI::App& app, const char* option, std::string& value, const std::string& help) {
    return app.add_option(option, value, help + kTimeHelp)->type_name("TIME");
}

void AddPair(CLI::App& app, std::string& first, std::string& second, std::string& output,
             const char* result) {
    app.add_option("A", first, "Picture or clip to begin with; A?vstreamid=1 chooses a stream")->required();
    app.add_option("B", second, "Picture or clip to end with")->required();
    app.add_option("OUTPUT", output, result)->required();
}

int64_t PositiveTime(const char* option, const std::string& value) {
    const int64_t time = TimeOption(option, value);
    if (time == 0) Refuse(option, "a time above 0", value);
    return time;
}

/// One for all seams, or one for each. Without a word there is no transition but a straight cut.
std::vector<JoinSeam> MakeSeams(const JoinCommand& command) {
    const int64_t usual = TimeOption("--duration", command.duration);
    std::vector<JoinSeam> seams;
    for (const std::string& text : command.transitions) seams.push_back(JoinSeamOf(text, usual));
    if (!seams.empty()) return seams;
    if (usual > 0)
        throw Error(ErrorKind::Usage,
                    "clips need a transition between them: -e NAME, or -e cut for straight cuts");
    return {{}};
}

void AddMusic(CLI::App& app, JoinCommand& command) {
    CLI::Option* const music =
        app.add_option("--music", command.music,
                       "Sound of a file to add to the clips', from beginning to end, repeated if need be")
            ->type_name("FILE");
    AddTime(app, "--music-fade-in", command.musicFadeIn, "How long the music takes to come up")->needs(music);
    AddTime(app, "--music-fade-out", command.musicFadeOut, "How long the music takes to die away")
        ->needs(music);
    app.add_option("--music-volume", command.musicVolume, "Volume of the music, 100% if not given")
        ->type_name("PERCENT")
        ->needs(music);
    app.add_flag("--no-clip-sound", command.noClipSound, "Leave out the clips' own sound");
}

JoinMusic MakeMusic(const JoinCommand& command) {
    JoinMusic music{command.music};
    music.fadeInMs = TimeOption("--music-fade-in", command.musicFadeIn);
    music.fadeOutMs = TimeOption("--music-fade-out", command.musicFadeOut);
    music.volume = VolumeOption("--music-volume", command.musicVolume);
    return music;
}

} // namespace

void AddFilmOptions(CLI::App& app, FilmArguments& film) {
    AddFramingOptions(app, film.framing);
    AddRateOption(app, film.fps);
    AddFormatOption(app, film.format);
    AddEncoderOptions(app, film.encoder, "Sound encoder or codec; the format's usual one if not given");
    app.add_flag("--no-sound", film.noSound, "Leave the sound out");
    AddSdrOption(app, film.sdr);
    AddProgressOption(app, film.progress);
    AddRunOptions(app, film.run);
}

FilmOptions MakeFilmOptions(const FilmArguments& film, const std::string& output) {
    FilmOptions options;
    options.output = output;
    options.format = film.format;
    TakeEncoder(film.encoder, options);
    TakeFraming(film.framing, options);
    TakeRate(film.fps, options);
    options.silent = film.noSound;
    options.sdr = film.sdr;
    options.overwrite = film.run.overwrite;
    return options;
}

void AddTransition(CLI::App& app, TransitionCommand& command) {
    CLI::App* const transition =
        app.add_subcommand("transition", "Make a clip of a transition between two pictures or clips");
    AddPair(*transition, command.first, command.second, command.output, "Clip to write");
    transition
        ->add_option("-e,--effect", command.transition, "Name of the transition (`aveffect list` shows them)")
        ->type_name("NAME")
        ->required();
    AddTime(*transition, "--duration", command.duration, "How long the transition takes, 1 if not given");
    AddTime(*transition, "--start", command.start,
            "When the transition begins within the duration; A stands before");
    AddTime(*transition, "--hold-before", command.holdBefore, "Time of A to put in front");
    AddTime(*transition, "--hold-after", command.holdAfter, "Time of B to put behind");
    transition->add_flag("--live", command.live,
                         "Let both clips play from their beginnings, with sound, instead of A's last and "
                         "B's first picture");
    AddFilmOptions(*transition, command.film);
    transition->footer(
        std::string("Example:\n  aveffect transition a.jpg b.jpg out.mp4 -e crossfade --duration 2 "
                    "--hold-before 1 --hold-after 1\n\n") +
        kExitCodeHelp);
}

void AddJoin(CLI::App& app, JoinCommand& command) {
    CLI::App* const join = app.add_subcommand(
        "join", "Put clips and pictures one after the other with a transition at each seam");
    join->add_option("FILES", command.files,
                     "A B [C...] OUTPUT: clips and pictures in their order, two or more, then the clip to "
                     "write; photo.jpg@5 stands for 5 seconds, of clip.mp4@5 the first 5 are shown")
        ->type_name("")
        ->required();
    AddJoinParts(*join, command);
    AddFilmOptions(*join, command.film);
    join->footer(std::string("Examples:\n  aveffect join a.mp4 b.mov c.mkv out.mp4 -e clock --duration 1\n"
                             "  aveffect join title.png@5 a.mp4 b.mp4 out.mp4 -e crossfade -e cut\n"
                             "  aveffect join *.jpg show.mp4 -e push --size 1080x1920 --fit cover\n\n") +
                 kExitCodeHelp);
}

void AddJoinParts(CLI::App& app, JoinCommand& command) {
    app.add_option("-e,--effect", command.transitions,
                   "Transition at all seams; given once for each seam, theirs in order. NAME@TIME has a "
                   "duration of its own, `cut` is a straight cut")
        ->type_name("NAME[@TIME]")
        ->allow_extra_args(false);
    AddTime(app, "--duration", command.duration,
            "How long transitions take, 1 if not given; 0 cuts straight");
    AddTime(app, "--picture-duration", command.pictureDuration,
            "How long pictures stand that say no time of their own, 3 if not given");
    AddMusic(app, command);
}

void AddSheet(CLI::App& app, SheetCommand& command) {
    CLI::App* const sheet = app.add_subcommand(
        "sheet", "Draw all transitions between two pictures: a row each, eight moments across");
    AddPair(*sheet, command.first, command.second, command.output, "Picture to write");
    sheet->add_option("--size", command.size, "Size of one sample; A's shape within 160x160 if not given")
        ->type_name("WIDTHxHEIGHT");
    sheet->add_option("--threads", command.threads, "Threads that draw; 0 for one a processor")
        ->type_name("N");
    AddRunOptions(*sheet, command.run);
    sheet->footer(std::string("Example:\n  aveffect sheet a.jpg b.jpg sheet.png\n\n") + kExitCodeHelp);
}

TransitionOptions MakeTransitionOptions(const TransitionCommand& command) {
    TransitionOptions options;
    options.film = MakeFilmOptions(command.film, command.output);
    options.first = InputName(command.first);
    options.second = InputName(command.second);
    options.transition = command.transition;
    options.durationMs = PositiveTime("--duration", command.duration);
    options.startMs = TimeOption("--start", command.start);
    if (options.startMs >= options.durationMs)
        throw Error(ErrorKind::Usage, "--start must lie before the end of --duration, but " + command.start +
                                          " does not lie before " + command.duration);
    options.holdBeforeMs = TimeOption("--hold-before", command.holdBefore);
    options.holdAfterMs = TimeOption("--hold-after", command.holdAfter);
    options.live = command.live;
    return options;
}

JoinOptions MakeJoinParts(const JoinCommand& command, std::span<const std::string> clips) {
    JoinOptions options;
    for (const std::string& clip : clips) options.clips.push_back(JoinClipOf(clip));
    if (clips.size() > 1) options.seams = MakeSeams(command);
    options.pictureMs = PositiveTime("--picture-duration", command.pictureDuration);
    if (!command.music.empty()) options.music = MakeMusic(command);
    options.clipSound = !command.noClipSound;
    return options;
}

JoinOptions MakeJoinOptions(const JoinCommand& command) {
    constexpr size_t kFewest = 3; // two clips and the output
    if (command.files.size() < kFewest)
        throw Error(ErrorKind::Usage, "join takes two clips or more and the output, not " +
                                          std::to_string(command.files.size()) +
                                          (command.files.size() == 1 ? " file" : " files") +
                                          " (see `aveffect join --help`)");
    JoinOptions options = MakeJoinParts(command, std::span(command.files).first(command.files.size() - 1));
    options.film = MakeFilmOptions(command.film, command.files.back());
    return options;
}

SheetOptions MakeSheetOptions(const SheetCommand& command) {
    SheetOptions options;
    options.first = InputName(command.first);
    options.second = InputName(command.second);
    options.output = command.output;
    if (command.size) options.tile = SizeOption(*command.size);
    if (command.threads) options.threads = ThreadsOption(*command.threads);
    options.overwrite = command.run.overwrite;
    return options;
}

} // namespace aveffect
