// The program on damaged files, under signals, and against itself: one line and an exit code, and nothing but
// whole files under their final names. AVEFFECT_SOAK=1 tries every percent and many more moments.
#include <signal.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <random>
#include <thread>

#include "tests/cli/program.h"

namespace {

using test::Outcome;
using Strings = std::vector<std::string>;

bool Soaks() {
    const char* const text = std::getenv("AVEFFECT_SOAK");
    return text && std::string(text) == "1";
}

class HardTimes : public test::ProgramTest {
protected:
    void Write(const std::string& name, const std::string& bytes) const {
        std::ofstream(Path(name), std::ios::binary) << bytes;
    }

    // A clip with sound that fails early in the file when it is cut: the index lies in front.
    std::string MakeMp4(const std::string& name) const {
        Ffmpeg({"-f", "lavfi", "-i", "testsrc2=s=96x64:r=10:d=1.5", "-f", "lavfi", "-i", "sine=d=1.5", "-c:v",
                "libx264", "-preset", "ultrafast", "-pix_fmt", "yuv420p", "-c:a", "aac", "-movflags",
                "+faststart", Path(name)});
        return test::ReadFile(Path(name));
    }

    // Runs a render of in.bin that may go well, end early or fail, as the file is.
    void TryDamaged(const std::string& bytes, const std::string& what) const {
        Write("in.bin", bytes);
        const Outcome outcome = Aveffect({"render", "in.bin", "out.mkv", "-e", "invert"});
        const bool made = outcome.exitCode == 0 || outcome.exitCode == 6;
        EXPECT_TRUE(made || outcome.exitCode == 3 || outcome.exitCode == 5)
            << what << ": " << outcome.exitCode;
        EXPECT_TRUE(outcome.exitCode == 0 || test::IsOneMessage(outcome.messages))
            << what << ": " << outcome.messages;
        Strings names = Names();
        EXPECT_EQ(std::erase(names, "out.mkv"), made ? 1u : 0u) << what;
        EXPECT_EQ(names, Strings{"in.bin"}) << what;
        if (made) Pixels("out.mkv"); // whole, or ffmpeg fails the test
        std::filesystem::remove(Path("out.mkv"));
    }
};

TEST_F(HardTimes, ClipsCutOffAnywhere) {
    const std::string whole = MakeMp4("whole.mp4");
    std::filesystem::remove(Path("whole.mp4"));
    for (size_t percent = 0; percent < 100; percent += Soaks() ? 1 : 12)
        TryDamaged(whole.substr(0, whole.size() * percent / 100), "cut at " + std::to_string(percent) + " %");
}

TEST_F(HardTimes, ClipsWithBytesFlipped) {
    const std::string whole = MakeMp4("whole.mp4");
    std::filesystem::remove(Path("whole.mp4"));
    for (unsigned seed = 1; seed <= (Soaks() ? 200u : 8u); ++seed) {
        std::mt19937 random(seed);
        std::string bytes = whole;
        for (unsigned i = 0; i < 1 + seed % 20; ++i)
            bytes[random() % bytes.size()] = static_cast<char>(random());
        TryDamaged(bytes, "flips of seed " + std::to_string(seed));
    }
}

TEST_F(HardTimes, SignalsAtAnyMoment) {
    MakeClip("in.mkv", "320x240", 60);
    std::mt19937 random(7);
    for (int i = 0; i < (Soaks() ? 120 : 8); ++i) {
        const int signals[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE, SIGUSR1, SIGALRM, SIGXCPU, SIGKILL};
        const int signal = signals[static_cast<size_t>(i) % std::size(signals)];
        test::RunningProgram program(AveffectCommand({"render", "in.mkv", "out.mkv", "-e", "invert"}),
                                     m_directory);
        std::this_thread::sleep_for(std::chrono::milliseconds(random() % 500));
        program.Signal(signal);
        const Outcome outcome = program.Wait();
        Strings names = Names();
        if (std::erase(names, "out.mkv")) Pixels("out.mkv"); // finished before, or had not to end
        std::filesystem::remove(Path("out.mkv"));
        // What can't be caught can't be cleaned up after; before main() nothing is caught, nor made.
        EXPECT_TRUE(signal == SIGKILL || names == Strings{"in.mkv"}) << "signal " << signal;
        EXPECT_TRUE(outcome.exitCode == -1 || outcome.exitCode == 0 || outcome.exitCode == 128 + signal)
            << outcome.exitCode;
        for (const std::string& name : Names())
            if (name != "in.mkv") std::filesystem::remove(Path(name));
    }
}

TEST_F(HardTimes, TwoProgramsWithOneOutput) {
    MakeClip("in.mkv", "160x120", 50);
    for (int i = 0; i < (Soaks() ? 20 : 2); ++i) {
        const auto start = [&] {
            return AveffectCommand({"render", "in.mkv", "out.mkv", "--overwrite", "--codec", "ffv1"});
        };
        test::RunningProgram one(start(), m_directory), two(start(), m_directory);
        for (test::RunningProgram* program : {&one, &two}) {
            const Outcome outcome = program->Wait();
            EXPECT_TRUE(outcome.exitCode == 0 || test::IsOneMessage(outcome.messages)) << outcome.messages;
        }
        EXPECT_EQ(Names(), (Strings{"in.mkv", "out.mkv"}));
        EXPECT_EQ(Pixels("out.mkv"), Pixels("in.mkv"));
    }
}

} // namespace
