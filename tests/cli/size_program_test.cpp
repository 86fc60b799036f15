// The program's options on what is taken of inputs, how large pictures become, and how good.
#include "tests/cli/program.h"

namespace {

using test::IsOneMessage;
using test::Outcome;
using Strings = std::vector<std::string>;

class SizeProgram : public test::ProgramTest {
protected:
    /// Renders into a file of that name, and gives its pictures.
    std::string Made(const std::string& input, const std::string& output, Strings options) const {
        options.insert(options.begin(), {"render", input, output});
        const Outcome outcome = Aveffect(options);
        EXPECT_EQ(outcome.exitCode, 0) << outcome.messages;
        return Pixels(output);
    }
};

/// A pixel of a picture that wide, as letters for the colours that the tests use.
char At(const std::string& pixels, size_t width, size_t x, size_t y) {
    const size_t at = (y * width + x) * 3;
    if (at + 2 >= pixels.size()) return '?';
    const auto is = [&](size_t channel) { return static_cast<unsigned char>(pixels[at + channel]) > 128; };
    return is(0) ? 'r' : is(1) ? 'g' : is(2) ? 'b' : '-';
}

// Left half red, right half blue.
TEST_F(SizeProgram, PicturesGetSizes) {
    Ffmpeg({"-f", "lavfi", "-i", "color=red:s=50x50,format=rgb24,pad=100:50:0:0:blue", "-frames:v", "1",
            "in.png"});
    const struct {
        Strings options;
        size_t width, height;
        const char* seen; ///< at the top left, left and right in the middle
    } cases[] = {
        {{"--size", "40x40", "--background", "#00ff00"}, 40, 40, "grb"},
        {{"--size", "40x40", "--fit", "cover"}, 40, 40, "rrb"},
        {{"--size", "30x60", "--fit", "stretch"}, 30, 60, "rrb"},
        {{"--size", "40:"}, 40, 20, "rrb"},
        {{"--size", "50%"}, 50, 25, "rrb"},
        {{"--crop", "50%:20:50%:0"}, 50, 20, "bbb"},
        {{"--crop", "40:40", "--size", ":20"}, 20, 20, "rrb"},
        {{"--size", "21x41", "--size-after", "-e", "quarter-turns"}, 21, 41, "?"},
    };
    int number = 0;
    for (const auto& each : cases) {
        const std::string pixels = Made("in.png", std::to_string(++number) + ".png", each.options);
        ASSERT_EQ(pixels.size(), each.width * each.height * 3) << number;
        if (each.seen[0] == '?') continue;
        const std::string seen = {At(pixels, each.width, 0, 0), At(pixels, each.width, 3, each.height / 2),
                                  At(pixels, each.width, each.width - 3, each.height / 2)};
        EXPECT_EQ(seen, each.seen) << number;
    }
    // What is seen counts: pixels twice as wide as high, in a clip that lies on its side.
    Ffmpeg({"-i", "in.png", "-vf", "setsar=2,format=yuv420p", "-c:v", "libx264", "wide.mp4"});
    Ffmpeg({"-i", "wide.mp4", "-c", "copy", "-metadata:s:v", "rotate=90", "turned.mp4"});
    EXPECT_EQ(Made("wide.mp4", "wide.mkv", {"--codec", "ffv1", "--size", "100:"}).size(), 100u * 25 * 3);
    EXPECT_EQ(Made("turned.mp4", "turned.mkv", {"--codec", "ffv1", "--size", ":100"}).size(), 100u * 25 * 3);
}

TEST_F(SizeProgram, SourcesOfAnyShapeBecomeOneFilm) {
    MakeStill("a.png", "ff0000"); // 8x6
    Ffmpeg(
        {"-f", "lavfi", "-i", "color=lime:s=40x20:r=10:d=0.4", "-c:v", "ffv1", "-pix_fmt", "bgr0", "b.mkv"});
    Ffmpeg({"-f", "lavfi", "-i", "color=red:s=2000x1500", "-frames:v", "1", "photo.png"});
    const Strings join = {"join", "a.png@0.2", "b.mkv", "film.mkv", "-e", "cut"};
    const Strings across = {"transition", "a.png",     "b.mkv",        "film.mkv",
                            "-e",         "crossfade", "--hold-after", "0.1"};
    const Strings photos = {"join", "photo.png", "photo.png",          "film.mkv",
                            "-e",   "cut",       "--picture-duration", "0.04"};
    const struct {
        Strings command, options;
        size_t width, height, pictures;
        const char* seen; ///< at the top left and in the middle, of the first picture, then of the last
        const char* said;
    } cases[] = {
        {join, {}, 40, 20, 6, "-rgg", ""},
        {join, {"--size", "20x40", "--fit", "cover", "--fps", "20"}, 20, 40, 12, "rrgg", ""},
        {join, {"--size", ":40", "--background", "blue"}, 80, 40, 6, "brgg", ""},
        {join, {"--fit", "stretch"}, 40, 20, 6, "rrgg", ""},
        {join, {"--crop", "50%:50%"}, 20, 10, 6, "-rgg", ""},
        {join, {"--size", "20x20", "--background", "blue", "--size-after"}, 20, 20, 6, "brbg", ""},
        {across, {"--live", "--duration", "0.3"}, 8, 6, 10, "rr-g", ""},
        {across, {"--size", "20x40", "--fit", "cover"}, 20, 40, 28, "rrgg", "first picture of b.mkv"},
        {across, {"--fps", "10", "--background", "blue"}, 8, 6, 11, "rrbg", "first picture of b.mkv"},
        {photos, {}, 1440, 1080, 2, "rrrr", "1440x1080"},
        {photos, {"--size", "100%"}, 2000, 1500, 2, "rrrr", ""},
    };
    for (const auto& each : cases) {
        Strings command = each.command;
        command.insert(command.end(), {"--codec", "ffv1", "--overwrite"});
        command.insert(command.end(), each.options.begin(), each.options.end());
        SCOPED_TRACE(testing::PrintToString(command));
        const Outcome outcome = Aveffect(command);
        EXPECT_EQ(outcome.exitCode, 0);
        EXPECT_EQ(outcome.messages.find("warning"), std::string::npos) << outcome.messages;
        EXPECT_TRUE(*each.said ? outcome.messages.find(each.said) != std::string::npos
                               : outcome.messages.empty())
            << outcome.messages;
        const std::string film = Pixels("film.mkv");
        ASSERT_EQ(film.size(), each.width * each.height * 3 * each.pictures);
        const std::string last = film.substr(film.size() - each.width * each.height * 3);
        const std::string seen = {
            At(film, each.width, 0, 0), At(film, each.width, each.width / 2, each.height / 2),
            At(last, each.width, 0, 0), At(last, each.width, each.width / 2, each.height / 2)};
        EXPECT_EQ(seen, each.seen);
    }
}

TEST_F(SizeProgram, FilmsAreNumberedPicturesToo) {
    MakeStill("a.png", "ff0000");
    MakeStill("b.png", "0000ff");
    std::filesystem::create_directory(Path("f"));
    for (const Strings& command :
         {Strings{"join", "a.png@0.2", "b.png@0.2", "f/%d.png", "-e", "cut"},
          {"join", "a.png@0.2", "b.png@0.2", "one.mkv", "-e", "cut", "--codec", "ffv1"},
          {"transition", "a.png", "b.png", "f/t%02d.jpg", "-e", "clock", "--fps", "5"},
          {"render", "f/%d.png", "slow.mkv", "--fps", "5", "--codec", "ffv1"},
          {"join", "f/%d.png?fps=5", "slow.mkv", "both.mkv", "-e", "cut", "--fps", "10"}}) {
        const Outcome outcome = Aveffect(command);
        EXPECT_EQ(outcome.exitCode, 0) << outcome.messages;
    }
    EXPECT_EQ(Pixels("f/t01.jpg").size(), Pixels("f/t05.jpg").size());
    EXPECT_FALSE(std::filesystem::exists(Path("f/t06.jpg")));
    EXPECT_EQ(Aveffect({"compare", "f/%d.png", "one.mkv"}).exitCode, 0);
    EXPECT_EQ(Aveffect({"compare", "f/%d.png", "slow.mkv"}).exitCode, 0); // 10 pictures
    EXPECT_EQ(Pixels("both.mkv").size(), 40 * Pixels("a.png").size());
    // Nothing that is read is written over.
    for (const Strings& inputs : {Strings{"f/%d.png", "a.png"}, {"a.png", "f/3.png"}}) {
        const Outcome refused =
            Aveffect({"transition", inputs[0], inputs[1], "f/%d.png", "-e", "clock", "--overwrite"});
        EXPECT_EQ(refused.exitCode, 4);
        EXPECT_TRUE(IsOneMessage(refused.messages));
    }
}

TEST_F(SizeProgram, RatesKeepTimes) {
    MakeClip("in.mkv", "32x32", 10);
    const std::string own = Pixels("in.mkv");
    constexpr size_t kPicture = 32 * 32 * 3;
    const Strings lossless = {"--codec", "ffv1", "--fps"};
    const auto at = [&](const std::string& rate, const Strings& more = {}) {
        Strings options = lossless;
        options.push_back(rate);
        options.insert(options.end(), more.begin(), more.end());
        return Made("in.mkv", "at" + rate + (more.empty() ? "" : more.front()) + ".mkv", options);
    };
    std::string twice, half;
    for (size_t picture = 0; picture < 10; ++picture) {
        const std::string one = own.substr(picture * kPicture, kPicture);
        twice += one + one;
        if (picture % 2 == 0) half += one;
    }
    EXPECT_EQ(at("50"), twice);
    EXPECT_EQ(at("12.5"), half);
    EXPECT_EQ(at("50", {"--frames", "3"}), twice.substr(0, 3 * kPicture));
    EXPECT_EQ(at("50", {"--from", "0.2"}), twice.substr(10 * kPicture));
}

TEST_F(SizeProgram, StreamsAndQuality) {
    Ffmpeg({"-f", "lavfi", "-i", "testsrc2=s=64x48:d=1", "-f", "lavfi", "-i", "testsrc=s=32x32:d=1", "-f",
            "lavfi", "-i", "sine=d=1", "-map", "0", "-map", "1", "-map", "2", "in.mkv"});
    EXPECT_EQ(Made("in.mkv", "a.mkv", {"--stream", "v:1", "--frames", "1"}).size(), 32u * 32 * 3);
    EXPECT_EQ(Made("in.mkv?vstreamid=1", "b.mkv", {"--frames", "1", "--no-sound"}).size(), 32u * 32 * 3);
    EXPECT_EQ(Aveffect({"render", "b.mkv", "b.wav"}).exitCode, 3) << "there is no sound";
    for (const bool named : {false, true}) // what someone chose is not said to be missing
        EXPECT_EQ(Aveffect({"render", named ? "in.mkv?vstreamid=0" : "in.mkv", "c.mkv", "--overwrite"})
                      .messages.empty(),
                  named);
    const Strings qualities[] = {{"--quality", "95"}, {"--quality", "40"}};
    for (const std::string kind : {"jpg", "webp", "avif"}) {
        size_t sizes[2] = {};
        for (size_t index = 0; index < 2; ++index) {
            const std::string name = std::to_string(index) + "." + kind;
            Strings command = {"render", "in.mkv", name, "--frames", "1", "--no-sound"};
            command.insert(command.end(), qualities[index].begin(), qualities[index].end());
            const Outcome outcome = Aveffect(command);
            EXPECT_EQ(outcome.exitCode, 0) << outcome.messages;
            sizes[index] = test::ReadFile(Path(name)).size();
        }
        EXPECT_GT(sizes[0], sizes[1] * 3 / 2) << kind;
    }
    const struct {
        Strings options;
        const char* word;
    } refused[] = {
        {{"--stream", "a:4"}, "2 is a:0"},
        {{"--stream", "x:1"}, "v:0"},
        {{"--quality", "101"}, "1 to 100"},
        {{"--quality", "50"}, "libx264 has no quality"},
        {{"--codec", "ffv1", "--bitrate", "5M"}, "ffv1 loses nothing"},
        {{"--encoder-option", "nonesuch=1"}, "no option \"nonesuch\"; `ffmpeg -h encoder=libx264`"},
        {{"--encoder-option", "rc_lookahed=1"}, "did you mean 'rc-lookahead'"},
        {{"--encoder-option", "rc-lookahead=x"}, "from -1 to"},
        {{"--encoder-option", "a:aac_coder=7", "--audio-codec", "aac"}, "0 to 2"},
        {{"--crop", "200%:50%"}, "--crop asks for 128x24"},
        {{"--size", "0x50"}, "--size"},
        {{"--fit", "cover"}, "--size"},
        {{"--size", "50%", "--background", "nonesuch"}, "colour"},
    };
    for (const auto& each : refused) {
        Strings command = {"render", "in.mkv", "refused.mkv"};
        command.insert(command.end(), each.options.begin(), each.options.end());
        const Outcome outcome = Aveffect(command);
        EXPECT_EQ(outcome.exitCode, 2) << each.word;
        EXPECT_NE(outcome.messages.find(each.word), std::string::npos) << outcome.messages;
        EXPECT_TRUE(IsOneMessage(outcome.messages)) << outcome.messages;
    }
}

} // namespace
