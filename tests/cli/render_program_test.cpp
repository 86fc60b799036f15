// The program renders clips and pictures, in order, and stops when asked.
#include <csignal>
#include <sstream>

#include <nlohmann/json.hpp>

#include "tests/cli/program.h"

namespace {

using nlohmann::json;
using test::IsOneMessage;
using test::Outcome;
using Strings = std::vector<std::string>;

class RenderProgram : public test::ProgramTest {
protected:
    /// Runs and expects success without a word.
    void Run(const Strings& arguments) const {
        const Outcome outcome = Aveffect(arguments);
        EXPECT_EQ(outcome.exitCode, 0) << outcome.messages;
        EXPECT_EQ(outcome.output, "");
        EXPECT_EQ(outcome.messages, "");
    }

    /// Starts a render that takes long, sends the signals once it is under way, and tells how it ended.
    Outcome Interrupt(const std::vector<int>& signals) const {
        test::RunningProgram program(
            AveffectCommand({"render", "in.mkv", "out.mkv", "-e", "simple_gauss_blur:blur_count=2000",
                             "--progress", "json"}),
            m_directory);
        program.AwaitOutput("\"running\"");
        for (const int signal : signals) program.Signal(signal);
        return program.Wait();
    }
};

std::vector<json> JsonLines(const std::string& text) {
    std::vector<json> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.push_back(json::parse(line));
    return lines;
}

std::string Inverted(std::string pixels) {
    for (char& sample : pixels) sample = static_cast<char>(~sample);
    return pixels;
}

TEST_F(RenderProgram, StillsInAndOut) {
    MakeStill("in.png", "204060");
    Run({"render", "in.png", "render.png", "-e", "invert"});
    Run({"frame", "in.png", "frame.png", "-e", "invert"});
    Run({"render", "in.png", "gray.png", "-e", "gray"});
    const std::string inverted = Inverted(Pixels("in.png"));
    ASSERT_EQ(inverted.size(), 8u * 6 * 3);
    EXPECT_EQ(Pixels("render.png"), inverted);
    EXPECT_EQ(Pixels("frame.png"), inverted);
    const std::string gray = Pixels("gray.png");
    EXPECT_EQ(gray, std::string(inverted.size(), gray[0]));
    EXPECT_EQ(Names(), (Strings{"frame.png", "gray.png", "in.png", "render.png"}));
}

TEST_F(RenderProgram, EffectsWorkInTheOrderGiven) {
    MakeStill("in.png", "204060");
    const std::string brighter = "brightness_contrast:brightness=30";
    Run({"render", "in.png", "both.png", "-e", brighter, "-e", "invert"});
    Run({"render", "in.png", "first.png", "-e", brighter});
    Run({"render", "first.png", "second.png", "-e", "invert"});
    Run({"render", "-e", "invert", "-e", brighter, "in.png", "swapped.png"});
    EXPECT_NE(Pixels("first.png"), Pixels("in.png"));
    EXPECT_EQ(Pixels("both.png"), Pixels("second.png"));
    EXPECT_NE(Pixels("both.png"), Pixels("swapped.png"));
}

TEST_F(RenderProgram, PercentagesStandForPixels) {
    MakeClip("in.mkv", "64x48", 3);
    const auto render = [&](const std::string& output, const std::string& corners) {
        Run({"render", "in.mkv", output, "--codec", "ffv1", "-e", "mosaic:mosaic_step=3:" + corners});
        return Pixels(output);
    };
    const std::string pixels = render("px.mkv", "mosaic_x1=16:mosaic_y1=6:mosaic_x2=64:mosaic_y2=48");
    EXPECT_NE(pixels, Pixels("in.mkv"));
    // What is set last counts, whichever way it is written.
    EXPECT_EQ(render("percent.mkv",
                     "mosaic_x1=90%:mosaic_x1=16:mosaic_y1=40:mosaic_y1=12.5%:mosaic_x2=100%:mosaic_y2=100%"),
              pixels);
}

TEST_F(RenderProgram, SpanAndFrameLimitChooseTheFrames) {
    MakeClip("in.mkv", "64x48", 50);
    const std::string all = Pixels("in.mkv");
    constexpr size_t kFrame = 64 * 48 * 3;
    ASSERT_EQ(all.size(), 50 * kFrame);
    Run({"render", "in.mkv", "span.mkv", "--codec", "ffv1", "--from", "0.4", "--to", "0:01.2"});
    EXPECT_EQ(Pixels("span.mkv"), all.substr(10 * kFrame, 20 * kFrame));
    Run({"render", "in.mkv", "limit.mkv", "--codec", "ffv1", "--from", "0.4", "--frames", "3"});
    EXPECT_EQ(Pixels("limit.mkv"), all.substr(10 * kFrame, 3 * kFrame));
}

TEST_F(RenderProgram, JsonProgressEndsAtTheWhole) {
    MakeClip("in.mkv", "64x48", 50);
    const Outcome outcome = Aveffect({"render", "in.mkv", "out.mkv", "-e", "invert", "--progress", "json"});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.messages;
    const auto lines = JsonLines(outcome.output);
    ASSERT_FALSE(lines.empty());
    for (size_t index = 0; index + 1 < lines.size(); ++index) EXPECT_EQ(lines[index]["state"], "running");
    EXPECT_EQ(lines.back()["state"], "done");
    EXPECT_EQ(lines.back()["percent"], 100);
    EXPECT_EQ(lines.back()["frames"], 50);
    EXPECT_EQ(outcome.messages, "");
}

TEST_F(RenderProgram, BarEndsItsLine) {
    MakeClip("in.mkv", "64x48", 50);
    const Outcome outcome = Aveffect({"render", "in.mkv", "out.mkv", "--progress", "bar"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output, "");
    EXPECT_NE(outcome.messages.find("100 %  50/50 frames"), std::string::npos) << outcome.messages;
    EXPECT_EQ(outcome.messages.find('\n'), outcome.messages.size() - 1) << outcome.messages;
}

TEST_F(RenderProgram, SignalsLeaveNothingBehind) {
    MakeClip("in.mkv", "320x240", 100);
    const std::pair<std::vector<int>, int> cases[] = {
        {{SIGINT}, 130}, {{SIGTERM, SIGINT, SIGTERM}, 143}, {{SIGHUP}, 129}};
    for (const auto& [signals, exitCode] : cases) {
        const Outcome outcome = Interrupt(signals);
        EXPECT_EQ(outcome.exitCode, exitCode);
        EXPECT_TRUE(IsOneMessage(outcome.messages));
        EXPECT_NE(outcome.messages.find("nothing was written"), std::string::npos) << outcome.messages;
        EXPECT_EQ(Names(), Strings{"in.mkv"});
        const json last = JsonLines(outcome.output).back();
        EXPECT_EQ(last["state"], "failed");
        EXPECT_EQ(last["exitCode"], exitCode);
    }
}

TEST_F(RenderProgram, VerboseTellsTheWorkingFormat) {
    MakeClip("in.mkv", "64x48", 2);
    const Outcome outcome = Aveffect({"render", "in.mkv", "out.mkv", "-e", "invert", "-v"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_NE(outcome.messages.find("yuv420p"), std::string::npos) << outcome.messages;
}

TEST_F(RenderProgram, SoundBecomesWhatEncoderAndFormatTake) {
    Ffmpeg({"-f", "lavfi", "-i", "sine=r=11025:d=0.6", "in.wav"});
    const Outcome told = Aveffect({"render", "in.wav", "out.webm", "-v"});
    EXPECT_EQ(told.exitCode, 0);
    EXPECT_NE(told.messages.find("can't hold the pcm_s16le sound"), std::string::npos) << told.messages;
    EXPECT_NE(told.messages.find("libopus, at 12000 Hz instead of 11025"), std::string::npos)
        << told.messages;
    for (const char* codec : {"sonic", "libx264", "nonesuch", "wmav2"}) {
        const Outcome refused = Aveffect({"render", "in.wav", "out.mp4", "--audio-codec", codec});
        EXPECT_EQ(refused.exitCode, 2) << codec;
        EXPECT_TRUE(IsOneMessage(refused.messages)) << refused.messages;
    }
}

// Each command of the guide does something, on a part of the pictures at least.
TEST_F(RenderProgram, CooksWhatTheRecipesSay) {
    Ffmpeg({"-f", "lavfi", "-i", "testsrc2=s=160x120:r=25:d=4", "-c:v", "libx264", "-crf", "8", "-g", "50",
            "-pix_fmt", "yuv420p", "in.mp4"});
    Run({"render", "in.mp4", "plain.mp4", "--crf", "8"});
    const std::string plain = Pixels("plain.mp4");
    std::istringstream guide(test::ReadFile(std::string(AVEFFECT_TEST_DATA) + "/../docs/recipes.md"));
    std::string command;
    size_t cooked = 0;
    for (std::string line; std::getline(guide, line);) {
        if (command.empty() && !line.starts_with("aveffect ")) continue;
        command += line;
        if (command.ends_with('\\')) {
            command.pop_back();
            continue;
        }
        const std::string directory = AVEFFECT_BIN_DIR;
        const std::string output = command.substr(command.find(" in.mp4 ") + 8,
                                                  command.find(".mp4 -") - command.find(" in.mp4 ") - 4);
        test::RunningProgram program(
            {"/bin/sh", "-c", "PATH=" + directory + ":$PATH; " + command + " --crf 8"}, m_directory);
        const Outcome outcome = program.Wait();
        EXPECT_EQ(outcome.exitCode, 0) << command << outcome.messages;
        EXPECT_EQ(outcome.messages, "") << command;
        const std::string made = Pixels(output);
        ASSERT_EQ(made.size(), plain.size()) << command;
        size_t other = 0;
        for (size_t at = 0; at < made.size(); ++at)
            other +=
                std::abs(static_cast<unsigned char>(made[at]) - static_cast<unsigned char>(plain[at])) > 24;
        EXPECT_GT(other, made.size() / 50) << command;
        EXPECT_LT(other, made.size() / 10 * 9) << command;
        command.clear();
        ++cooked;
    }
    EXPECT_GE(cooked, 6u);
}

} // namespace
