// The program shows clips and pictures in a window of a real display server, and plays their sound.
#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <thread>

#include "tests/cli/program.h"

namespace {

using test::Outcome;
using test::RunningProgram;
using Strings = std::vector<std::string>;

constexpr int kSigTerm = 15;

class PlayProgram : public test::ProgramTest {
protected:
    /// With these variables, and no display but the one that they name. Drivers of displays keep memory, and
    /// are unloaded before the leak sanitizer could tell whose it is.
    Strings Play(Strings variables, Strings arguments) const {
        Strings command = {"env", "-u", "DISPLAY", "-u", "WAYLAND_DISPLAY", "-u", "SDL_VIDEODRIVER"};
        command.push_back("ASAN_OPTIONS=detect_leaks=0");
        command.insert(command.end(), variables.begin(), variables.end());
        arguments.insert(arguments.begin(), "play");
        const Strings program = AveffectCommand(arguments);
        command.insert(command.end(), program.begin(), program.end());
        return command;
    }
};

TEST_F(PlayProgram, WindowShowsThePictureUntilItIsClosed) {
    // The server chooses a free number and writes it.
    RunningProgram server({"Xvfb", "-displayfd", "1", "-screen", "0", "320x240x24"}, m_directory);
    server.AwaitOutput("\n");
    const std::string display = ":" + std::to_string(std::atoi(server.Output().c_str()));
    MakeStill("red.png", "ff0000");
    RunningProgram player(Play({"DISPLAY=" + display},
                               {"red.png", "-e", "invert", "--size", "200x200", "--background", "#ffff00"}),
                          m_directory);
    // The picture, inverted and 200x150, is in the middle of the screen, which is black else.
    const auto middle = [&] {
        Ffmpeg({"-f", "x11grab", "-draw_mouse", "0", "-video_size", "320x240", "-i", display, "-frames:v",
                "1", "-y", "screen.png"});
        return Pixels("screen.png").substr(((120 * 320) + 160) * 3, 3);
    };
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    std::string seen = middle();
    while (seen == std::string(3, '\0') && std::chrono::steady_clock::now() < end) seen = middle();
    const std::string red = Pixels("red.png").substr(0, 3);
    for (size_t i = 0; i < 3; ++i)
        EXPECT_NEAR(static_cast<unsigned char>(seen[i]), 255 - static_cast<unsigned char>(red[i]), 3) << i;
    player.Signal(kSigTerm);
    EXPECT_EQ(player.Wait().exitCode, 128 + kSigTerm);
    server.Signal(kSigTerm);
    server.Wait();
}

// SDL's own drivers stand in for devices: one shows nothing, one writes what is heard to a file.
TEST_F(PlayProgram, ClipPlaysToItsEndWithItsSound) {
    Ffmpeg({"-f", "lavfi", "-i", "testsrc2=s=64x48:r=25:d=1", "-f", "lavfi", "-i",
            "aevalsrc=0.5|0.5:s=48000:d=1", "-c:v", "ffv1", "-c:a", "pcm_s16le", "a.mkv"});
    const Strings drivers = {"SDL_VIDEODRIVER=dummy", "SDL_AUDIODRIVER=disk",
                             "SDL_DISKAUDIOFILE=" + Path("heard.raw")};
    RunningProgram player(Play(drivers, {"a.mkv", "-a", "audio_volume:audio_volume=50"}), m_directory);
    const Outcome outcome = player.Wait();
    EXPECT_EQ(outcome.exitCode, 0) << outcome.messages;
    const std::string heard = test::ReadFile(Path("heard.raw"));
    size_t half = 0;
    for (size_t i = 0; i + 1 < heard.size(); i += 2) {
        const int sample = static_cast<int16_t>(static_cast<unsigned char>(heard[i]) |
                                                static_cast<unsigned char>(heard[i + 1]) << 8);
        EXPECT_TRUE(sample == 0 || std::abs(sample - 8192) <= 2) << sample; // silence where nothing is queued
        if (sample != 0) ++half;
    }
    EXPECT_GT(half, size_t{2} * 48000 * 9 / 10); // what is queued when the pictures end may be cut

    // Sound alone plays whole, with a window and, where there is no display, without.
    Ffmpeg({"-f", "lavfi", "-i", "aevalsrc=0.5:s=48000:d=0.4", "-c:a", "pcm_s16le", "a.wav"});
    for (const bool window : {true, false}) {
        std::filesystem::remove(Path("heard.raw"));
        const Strings given(drivers.begin() + (window ? 0 : 1), drivers.end());
        const Outcome played = RunningProgram(Play(given, {"a.wav"}), m_directory).Wait();
        EXPECT_EQ(played.exitCode, 0);
        EXPECT_EQ(played.messages, "");
        const std::string bytes = test::ReadFile(Path("heard.raw"));
        EXPECT_GE(std::count_if(bytes.begin(), bytes.end(), [](char byte) { return byte != 0; }),
                  48000 * 3 / 10);
    }
    for (const auto& [option, value] : {std::pair("-e", "gray"), {"--size", "9:"}})
        EXPECT_EQ(RunningProgram(Play(drivers, {"a.wav", option, value}), m_directory).Wait().exitCode, 2);

    const Outcome none = RunningProgram(Play({}, {"a.mkv"}), m_directory).Wait();
    EXPECT_EQ(none.exitCode, 4);
    EXPECT_NE(none.messages.find("no display"), std::string::npos) << none.messages;
}

} // namespace
