// Many files go through one command, and a bad one ends no other.
#include <algorithm>
#include <sstream>

#include <nlohmann/json.hpp>

#include "tests/cli/program.h"

namespace {

using test::Outcome;
using Strings = std::vector<std::string>;

class BatchProgram : public test::ProgramTest {
protected:
    Outcome Batch(const Strings& arguments, int exitCode) const {
        Strings command = {"batch", "-e", "invert", "--to", "out"};
        command.insert(command.end(), arguments.begin(), arguments.end());
        Outcome outcome = Aveffect(command);
        EXPECT_EQ(outcome.exitCode, exitCode) << outcome.messages;
        return outcome;
    }
};

TEST_F(BatchProgram, EachFileIsRenderedAsByItself) {
    MakeStill("a.png", "ff0000");
    MakeStill("b.png", "0000ff");
    MakeClip("c.mkv", "64x48", 5);
    test::WriteFile(Path("bad.png"), "no picture");
    const Outcome outcome = Batch({"a.png", "bad.png", "b.png", "c.mkv", "none.png", "--jobs", "2"}, 3);
    EXPECT_NE(outcome.output.find("3 done, 2 failed\n"), std::string::npos) << outcome.output;
    EXPECT_EQ(std::count(outcome.messages.begin(), outcome.messages.end(), '\n'), 2) << outcome.messages;
    EXPECT_TRUE(test::AreMessages(outcome.messages));
    for (const char* name : {"a.png", "b.png", "c.mkv"}) {
        ASSERT_EQ(Aveffect({"render", name, std::string("one-") + name, "-e", "invert"}).exitCode, 0);
        EXPECT_EQ(Pixels(std::string("out/") + name), Pixels(std::string("one-") + name)) << name;
    }
    EXPECT_FALSE(std::filesystem::exists(Path("out/bad.png")));
}

TEST_F(BatchProgram, InterruptedItKeepsWhatIsDone) {
    MakeStill("a.png", "ff0000");
    MakeClip("long.mkv", "640x480", 200);
    test::RunningProgram batch(AveffectCommand({"batch", "--jobs", "1", "--to", "out", "a.png", "long.mkv",
                                                "-e", "blur:blur_count=50"}),
                               m_directory);
    batch.AwaitOutput("a.png");
    constexpr int kSigInt = 2;
    batch.Signal(kSigInt);
    const Outcome outcome = batch.Wait();
    EXPECT_EQ(outcome.exitCode, 128 + kSigInt);
    EXPECT_NE(outcome.output.find("1 done"), std::string::npos) << outcome.output;
    EXPECT_TRUE(test::IsOneMessage(outcome.messages));
    for (const auto& entry : std::filesystem::directory_iterator(Path("out")))
        EXPECT_EQ(entry.path().filename(), "a.png");
}

TEST_F(BatchProgram, NothingThatExistsIsLost) {
    MakeStill("a.png", "ff0000");
    MakeStill("b.png", "0000ff");
    const std::string a = test::ReadFile(Path("a.png")), b = test::ReadFile(Path("b.png"));
    Batch({"a.png"}, 0);
    const std::string made = test::ReadFile(Path("out/a.png"));
    EXPECT_TRUE(test::IsOneMessage(Batch({"a.png"}, 4).messages));
    std::istringstream lines(Batch({"a.png", "b.png", "--skip-existing", "--json"}, 0).output);
    int skipped = 0, done = 0;
    for (std::string line; std::getline(lines, line);) {
        const auto told = nlohmann::json::parse(line);
        if (told.contains("summary")) {
            skipped = told["summary"]["skipped"];
            done = told["summary"]["done"];
        }
    }
    EXPECT_EQ(skipped, 1);
    EXPECT_EQ(done, 1);
    EXPECT_EQ(test::ReadFile(Path("out/a.png")), made);
    // Outputs that would replace an input, or one another, are refused before anything is written.
    for (const auto& [directory, second] : {std::pair(".", "b.png"), {"fresh", "./a.png"}}) {
        const Outcome refused =
            Aveffect({"batch", "-e", "invert", "--overwrite", "--to", directory, "a.png", second});
        EXPECT_EQ(refused.exitCode, 2);
        EXPECT_TRUE(test::IsOneMessage(refused.messages));
    }
    EXPECT_EQ(test::ReadFile(Path("a.png")), a);
    EXPECT_EQ(test::ReadFile(Path("b.png")), b);
    EXPECT_FALSE(std::filesystem::exists(Path("fresh")));
}

} // namespace
