// Child processes: really started, stopped and ended, and none left behind.
#include <gtest/gtest.h>

#include <csignal>
#include <fstream>
#include <functional>
#include <memory>
#include <sys/wait.h>

#include "BaseTools/sysutils.h"
#include "tests/support/raised.h"

namespace {

using namespace BaseTool;
using Arguments = std::vector<std::string>;

TEST(CommandLine, SplitsAtBlanksOutsideQuotes) {
    const std::pair<const char*, Arguments> cases[] = {
        {"", {}},
        {" \t ", {}},
        {"one", {"one"}},
        {"  one \t two ", {"one", "two"}},
        {R"(a "b c" d)", {"a", "b c", "d"}},
        {R"(a"b c"d "" e"")", {"ab cd", "e"}},
        {R"(a\ b "c\"d\\" \"e \\)", {"a b", R"(c"d\)", R"("e)", R"(\)"}},
        {R"(\n "\n x" open"quote  y)", {"n", "n x", "openquote  y"}},
        {"end\\", {"end"}},
    };
    for (const auto& [line, expected] : cases) {
        Arguments args = {"old"};
        parse_cmd_line(line, args);
        EXPECT_EQ(args, expected) << line;
    }
}

class Process : public testing::Test {
protected:
    ~Process() override {
        EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child was left behind";
        EXPECT_EQ(errno, ECHILD);
    }
    /// The letter by which the system describes a process: T stopped, Z ended and not yet taken note of.
    static char StateOf(pid_t id) {
        std::ifstream file("/proc/" + std::to_string(id) + "/stat");
        std::string number, name;
        char state = 0;
        file >> number >> name >> state;
        return state;
    }
    static bool Becomes(pid_t id, const std::function<bool(char)>& expected) {
        for (int i = 0; i < 500 && !expected(StateOf(id)); ++i) SleepOnePoll();
        return expected(StateOf(id));
    }
    static bool Stops(pid_t id) {
        return Becomes(id, [](char state) { return state == 'T'; });
    }
    static bool GoesOn(pid_t id) {
        return Becomes(id, [](char state) { return state == 'S' || state == 'R'; });
    }
    static unsigned CodeOf(const CBaseToolProcess& process) {
        unsigned code = 12345;
        EXPECT_TRUE(process.GetExitCode(code));
        return code;
    }
};

TEST_F(Process, GivesItsExitCode) {
    const std::pair<const char*, unsigned> cases[] = {{"true", 0},
                                                      {R"(sh -c "exit 7")", 7},
                                                      {"/no/such/program", 254},
                                                      {"", 254},
                                                      {R"(sh -c "kill $$")", ~0u}};
    for (const auto& [line, code] : cases) {
        CBaseToolProcess process(line);
        EXPECT_EQ(process.GetProcesspId(), 0);
        EXPECT_TRUE(process.Run(false));
        EXPECT_GT(process.GetProcesspId(), 0);
        EXPECT_EQ(process.Wait(0xFFFFFFFF), 1);
        EXPECT_EQ(CodeOf(process), code) << line;
        EXPECT_FALSE(process.Suspend()) << "it has ended";
        EXPECT_FALSE(process.Terminate(3));
        EXPECT_EQ(CodeOf(process), 3u);
    }
}

TEST_F(Process, RunsOnceAndAnswersOnlyThen) {
    CBaseToolProcess process("true");
    unsigned code = 0;
    const std::string notYet = "10021019 The process has not run",
                      already = "10021019 The process has run already";
    EXPECT_EQ(test::RaisedBy([&] { process.Suspend(); }), notYet);
    EXPECT_EQ(test::RaisedBy([&] { process.Resume(); }), notYet);
    EXPECT_EQ(test::RaisedBy([&] { process.Wait(0); }), notYet);
    EXPECT_EQ(test::RaisedBy([&] { process.Terminate(0); }), notYet);
    EXPECT_EQ(test::RaisedBy([&] { process.GetExitCode(code); }), notYet);
    EXPECT_TRUE(process.Run(false));
    EXPECT_EQ(test::RaisedBy([&] { process.Run(false); }), already);
    process.Wait(0xFFFFFFFF);
    EXPECT_EQ(test::RaisedBy([&] { process.RunBackgroundly(true); }), already);
}

TEST_F(Process, StopsGoesOnAndIsKilled) {
    CBaseToolProcess process("sleep 100");
    EXPECT_TRUE(process.Run(true));
    const pid_t id = process.GetProcesspId();
    EXPECT_EQ(StateOf(id), 'T') << "suspended from the start";
    unsigned code = 1;
    EXPECT_FALSE(process.GetExitCode(code));
    EXPECT_TRUE(process.Resume());
    EXPECT_TRUE(GoesOn(id));
    EXPECT_TRUE(process.Suspend());
    EXPECT_TRUE(Stops(id));
    EXPECT_EQ(process.Wait(20), 0);
    EXPECT_TRUE(process.Terminate(42));
    EXPECT_EQ(CodeOf(process), 42u);
    EXPECT_EQ(process.Wait(0), 1);
}

TEST_F(Process, InTheBackgroundIgnoresTheTerminalsEnd) {
    signal(SIGHUP, SIG_DFL); // children inherit what this program itself was started with
    CBaseToolProcess usual("sleep 100"), background("sleep 100");
    EXPECT_TRUE(usual.Run(false));
    EXPECT_TRUE(background.RunBackgroundly(true));
    for (CBaseToolProcess* process : {&background, &usual}) kill(process->GetProcesspId(), SIGHUP);
    EXPECT_TRUE(background.Resume());
    EXPECT_EQ(usual.Wait(5000), 1);
    EXPECT_EQ(CodeOf(usual), 0xFFFFFFFF);
    EXPECT_EQ(background.Wait(50), 0);
    EXPECT_TRUE(background.Terminate(0));
}

TEST_F(Process, DestructionWaitsOrLeavesTheChild) {
    pid_t waitedFor = 0, left = 0;
    {
        CBaseToolProcess process("sleep 0.1");
        EXPECT_TRUE(process.Run(false));
        waitedFor = process.GetProcesspId();
    }
    EXPECT_EQ(kill(waitedFor, 0), -1);
    {
        CBaseToolProcess process("sleep 100");
        process.SetWaitWhenDestruct(false);
        EXPECT_TRUE(process.Run(false));
        left = process.GetProcesspId();
    }
    EXPECT_TRUE(GoesOn(left));
    EXPECT_EQ(kill(left, SIGKILL), 0);
    EXPECT_EQ(waitpid(left, nullptr, 0), left);
}

} // namespace
