// Whatever is wrong: one message, the documented exit code, and nothing left behind.
#include <nlohmann/json.hpp>

#include "tests/cli/program.h"

namespace {

using test::IsOneMessage;
using test::Outcome;
using Strings = std::vector<std::string>;

class BadInput : public test::ProgramTest {
protected:
    void Write(const std::string& name, const std::string& bytes) const {
        test::WriteFile(Path(name), bytes);
    }

    /// The message of a run that must fail with this code and change nothing in the directory.
    std::string Fails(int exitCode, const Strings& arguments) const {
        const Strings before = Names();
        const Outcome outcome = Aveffect(arguments);
        EXPECT_EQ(outcome.exitCode, exitCode);
        EXPECT_TRUE(IsOneMessage(outcome.messages));
        EXPECT_EQ(outcome.output, "");
        EXPECT_EQ(Names(), before);
        return outcome.messages;
    }
};

bool Contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

// Objects and pictures in one file are neither.
TEST_F(BadInput, JsonStaysOutOfTheOutput) {
    MakeStill("in.png", "102030");
    const Outcome outcome = Aveffect({"render", "in.png", "/dev/stdout", "--progress", "json"});
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_EQ(outcome.output, "");
    EXPECT_TRUE(IsOneMessage(outcome.messages)) << outcome.messages;
    EXPECT_EQ(Aveffect({"render", "in.png", "out.png", "--progress", "json"}).exitCode, 0);
}

TEST_F(BadInput, CommandLines) {
    MakeStill("in.png", "204060");
    const Strings commands[] = {{},
                                {"rendr"},
                                {"describe"},
                                {"render", "in.png"},
                                {"render", "in.png", "out.png", "--colour", "red"},
                                {"render", "in.png", "out.png", "third"},
                                {"render", "in.png", "out.png", "-e"}};
    for (const Strings& command : commands) {
        SCOPED_TRACE(::testing::PrintToString(command));
        Fails(2, command);
    }
    EXPECT_TRUE(Contains(Fails(2, {"rendr"}), "did you mean 'render'?"));
    EXPECT_TRUE(Contains(Fails(2, {"render", "in.png", "out.png", "--form=1"}), "did you mean '--from'?"));
}

TEST_F(BadInput, OptionValues) {
    MakeStill("in.png", "204060");
    struct Case {
        Strings options;
        const char* rule;
    };
    const Case cases[] = {
        {{"--from", "abc"}, "--from takes seconds or hh:mm:ss.ms, not 'abc'"},
        {{"--from", "-5"}, "--from takes seconds or hh:mm:ss.ms, not '-5'"},
        {{"--from", "2", "--to", "0:02"}, "--to must lie after --from"},
        {{"--to", "0"}, "--to must lie after --from"},
        {{"--frames", "0"}, "--frames takes a whole number from 1 upwards, not '0'"},
        {{"--frames", "1.5"}, "--frames takes"},
        {{"--crf", "nan"}, "--crf takes a number from 0 upwards, not 'nan'"},
        {{"--crf", "-1"}, "--crf takes"},
        {{"--threads", "-1"}, "--threads takes a whole number from 0"},
        {{"--memory", "2T"}, "--memory takes bytes from 1 upwards"},
        {{"--progress", "loud"}, "--progress takes auto, bar, json or none, not 'loud'"},
        {{"--seed", "-1"}, "--seed takes a whole number from 0 to 4294967295, not '-1'"},
        {{"--cpu-level", "mmx"}, "--cpu-level takes auto, sse2, avx2 or avx512, not 'mmx'"},
        {{"--pixel-format", "purple"}, "purple"},
        {{"--stereo-in", "tb"}, "--stereo-in takes sbs or tab, not 'tb'"},
        {{"--right", "in.png"}, "two views need the effect anaglyph"},
        {{"-e", "grey"}, "unknown effect 'grey'; did you mean 'gray'?"},
        {{"-e", "simple_gauss_blur:blur_count=70000"}, "from 0 to 65535"},
        {{"-e", "mosaic:mosaic_x2=900000%"},
         "mosaic_x2 of mosaic is a whole number from 0 to 65535 px or a percentage of the picture's width, "
         "but 900000% is 72000 px in a picture of 8x6"},
        {{"--codec", "no_such_codec"}, "no_such_codec"},
        {{"-e", "audio_volume"}, "volume works on sound: name it with -a, not with -e"},
        {{"-a", "gray"}, "gray works on pictures: name it with -e, not with -a"},
        {{"-a", "audio_volume:audio_volume=12800"}, "from 0 to 12799"},
        {{"-a", "audio_volume"}, ".png files hold no sound"},
    };
    for (const Case& wrong : cases) {
        Strings command = {"render", "in.png", "out.png"};
        command.insert(command.end(), wrong.options.begin(), wrong.options.end());
        SCOPED_TRACE(::testing::PrintToString(command));
        const std::string message = Fails(2, command);
        EXPECT_TRUE(Contains(message, wrong.rule)) << message;
    }
    Fails(2, {"frame", "in.png", "out.png", "--at", "1:75"});
    Fails(2, {"render", "in.png", "out.mp4", "--codec", "libx264", "--preset", "nope"});
}

TEST_F(BadInput, Inputs) {
    Fails(3, {"frame", "two\nlines", "out.png", "-e", "invert"});
    EXPECT_TRUE(Contains(Fails(3, {"render", "missing.mp4", "out.mp4"}), "missing.mp4"));
}

TEST_F(BadInput, Outputs) {
    MakeStill("in.png", "204060");
    Write("there.png", "precious");
    const std::string message = Fails(4, {"render", "in.png", "there.png", "-e", "invert"});
    EXPECT_TRUE(Contains(message, "there.png") && Contains(message, "--overwrite")) << message;
    Fails(4, {"frame", "in.png", "there.png"});
    Fails(4, {"render", "in.png", "/proc/out.png"});
    // What is replaced stays when the render fails, and goes when it succeeds.
    Fails(5, {"render", "in.png", "there.png", "--overwrite", "--lenient", "-e",
              "simple_gauss_blur:blur_count=-1"});
    EXPECT_EQ(test::ReadFile(Path("there.png")), "precious");
    EXPECT_EQ(Aveffect({"render", "in.png", "there.png", "--overwrite"}).exitCode, 0);
    EXPECT_EQ(Pixels("there.png"), Pixels("in.png"));
}

TEST_F(BadInput, FailingEffectIsNamed) {
    MakeStill("in.png", "204060");
    const std::string message = Fails(5, {"render", "in.png", "out.png", "--lenient", "-e", "gray", "-e",
                                          "simple_gauss_blur:blur_count=70000"});
    EXPECT_TRUE(Contains(message, "simple_gauss_blur")) << message;
}

TEST_F(BadInput, TruncatedClipKeepsWhatCouldBeDecoded) {
    MakeClip("whole.mkv", "320x240", 50);
    const std::string bytes = test::ReadFile(Path("whole.mkv"));
    Write("in.mkv", bytes.substr(0, bytes.size() / 2));
    const Outcome outcome = Aveffect({"render", "in.mkv", "out.mkv", "--codec", "ffv1"});
    EXPECT_EQ(outcome.exitCode, 6);
    EXPECT_TRUE(IsOneMessage(outcome.messages));
    EXPECT_TRUE(Contains(outcome.messages, " of about ")) << outcome.messages;
    const std::string kept = Pixels("out.mkv"), whole = Pixels("whole.mkv");
    constexpr size_t kFrame = 320 * 240 * 3;
    ASSERT_GT(kept.size(), 10 * kFrame);
    ASSERT_LT(kept.size(), whole.size());
    // The last picture may have been cut itself; those before it are whole.
    EXPECT_EQ(kept.substr(0, kept.size() - kFrame), whole.substr(0, kept.size() - kFrame));
}

TEST_F(BadInput, JsonProgressTellsTheError) {
    const Outcome outcome = Aveffect({"render", "missing.mp4", "out.mp4", "--progress", "json"});
    EXPECT_EQ(outcome.exitCode, 3);
    EXPECT_TRUE(IsOneMessage(outcome.messages));
    const auto last = nlohmann::json::parse(outcome.output);
    EXPECT_EQ(last["state"], "failed");
    EXPECT_EQ(last["exitCode"], 3);
    EXPECT_EQ("aveffect: " + last["error"].get<std::string>() + "\n", outcome.messages);
}

} // namespace
