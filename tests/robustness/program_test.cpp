// The program on damaged files, on disks that fill up, under signals, at pipes that stand still, and against
// itself: one line and an exit code, nothing but whole files under their final names and nothing beside them,
// and always an end. AVEFFECT_SOAK=1 tries every percent and many more moments.
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <random>
#include <set>
#include <sstream>
#include <thread>

#include "tests/cli/program.h"

namespace {

using test::Outcome;
using test::ReadFile;
using test::RunningProgram;
using test::WriteFile;
using Strings = std::vector<std::string>;

bool Soaks() {
    const char* const text = std::getenv("AVEFFECT_SOAK");
    return text && std::string(text) == "1";
}

Strings Words(const std::string& line) {
    std::istringstream text(line);
    return {std::istream_iterator<std::string>(text), {}};
}

std::string WithoutWarnings(const std::string& messages) {
    std::istringstream lines(messages);
    std::string rest;
    for (std::string line; std::getline(lines, line);)
        if (line.rfind("aveffect: warning: ", 0) != 0) rest += line + "\n";
    return rest;
}

class Robustness : public test::ProgramTest {
protected:
    Robustness() {
        // Signals mean what they usually mean, and libraries may stand before the sanitizer's.
        setenv("ASAN_OPTIONS",
               "allocator_may_return_null=1:verify_asan_link_order=0:"
               "handle_segv=0:handle_sigbus=0:handle_sigfpe=0",
               1);
        MakeStill("good.png", "408020");
        // The index lies in front, so that what is cut off is missed late.
        Make("good.mp4", "-c:v libx264 -preset ultrafast -pix_fmt yuv420p -c:a aac -movflags +faststart");
        m_kept = Names();
        const int file = open(m_directory.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
        m_nameless = file >= 0;
        close(file);
    }

    /// A clip of a second and a half, with sound.
    void Make(const std::string& name, const std::string& options) const {
        Strings arguments =
            Words("-f lavfi -i testsrc2=s=96x64:r=10:d=1.5 -f lavfi -i sine=d=1.5 " + options);
        arguments.push_back(name);
        Ffmpeg(arguments);
    }

    Outcome Run(const std::string& command) const { return Aveffect(Words(command)); }

    /// Runs with the library that makes the disk poor.
    Outcome RunOn(const std::string& disk, const std::string& command) const {
        Strings words = AveffectCommand(Words(command));
        words.insert(words.begin(), {"env", "LD_PRELOAD=" POOR_DISK, "POOR_DISK=" + disk});
        return RunningProgram(words, m_directory).Wait();
    }

    /// The run said one line at most, or what is damaged, ended in one of these ways, and left nothing but
    /// the output, whole, if it says that it made one; a signal can end it behind that. Removes the output.
    void EndsWell(const Outcome& outcome, const std::set<int>& exitCodes, const std::string& output) const {
        const bool made = outcome.exitCode == 0 || outcome.exitCode == 6;
        EXPECT_TRUE(exitCodes.count(outcome.exitCode)) << outcome.exitCode << " " << outcome.messages;
        const std::string said = WithoutWarnings(outcome.messages);
        if (outcome.exitCode == 6) {
            EXPECT_TRUE(test::AreMessages(said)); // a line for each file and each decoder
        } else if (outcome.exitCode > 0) {
            EXPECT_TRUE(test::IsOneMessage(said));
        } else {
            EXPECT_EQ(said, "");
        }
        Strings names = Names();
        const bool there = std::erase(names, output) == 1;
        EXPECT_TRUE(there == made || outcome.exitCode < 0) << outcome.exitCode;
        if (outcome.exitCode >= 0 || m_nameless) {
            EXPECT_EQ(names, m_kept);
        }
        // The other program fails the test when the output isn't whole; sound that was copied may be damaged
        // as before.
        const bool soundAlone = output.ends_with(".flac");
        if (there) Ffmpeg({"-i", output, "-map", soundAlone ? "0:a" : "0:v", "-f", "null", "-"});
        for (const std::string& name : Names())
            if (std::find(m_kept.begin(), m_kept.end(), name) == m_kept.end())
                std::filesystem::remove(Path(name));
    }

    bool m_nameless = false; ///< without such files a killed program leaves the one that it wrote
    Strings m_kept;          ///< what has to be in the directory after every run
};

struct Media {
    const char *name, *options;
    const char* kinds; ///< c clip, p picture, s sound
};

void PrintTo(const Media& media, std::ostream* stream) { *stream << media.name; }

constexpr Media kMedia[] = {
    {"bad.mp4", "-c:v libx264 -preset ultrafast -pix_fmt yuv420p -c:a aac -movflags +faststart", "cs"},
    {"bad.mkv", "-c:v ffv1 -pix_fmt yuv420p -c:a flac", "c"},
    {"bad.avi", "-c:v mjpeg -pix_fmt yuvj420p -c:a pcm_s16le", "c"},
    {"bad.ts", "-c:v mpeg2video -pix_fmt yuv420p -c:a mp2", "c"},
    {"bad.webm", "-c:v libvpx -deadline realtime -c:a libvorbis -ac 2", "c"},
    {"bad.png", "-frames:v 1 -map 0:v", "p"},
    {"bad.jpg", "-frames:v 1 -map 0:v", "p"},
    {"bad.gif", "-frames:v 5 -map 0:v", "cp"},
    {"bad.flac", "-map 1:a", "s"},
    {"bad.wav", "-map 1:a", "s"},
};

/// What is done with such a file, the output last but for options.
struct Use {
    const char *kinds, *command, *output;
};

constexpr Use kUses[] = {
    {"c", "render BAD out.mkv -e invert", "out.mkv"},
    {"c", "render good.mp4 out.mkv --right BAD -e EffectName3DRenderEffect", "out.mkv"},
    {"c", "transition BAD good.mp4 out.mkv -e EffectNameMkFade --live --duration 0.5", "out.mkv"},
    {"c", "transition good.png BAD out.mp4 -e EffectNameMkRoll --live --duration 0.5", "out.mp4"},
    {"c", "join good.mp4 BAD out.mp4 -e EffectNameMkClock --duration 0.2", "out.mp4"},
    {"c", "join BAD BAD out.mkv -e EffectNameMkClock --duration 0.2", "out.mkv"},
    {"cp", "frame BAD out.png --at 0.3 -e gray", "out.png"},
    {"cp", "sheet good.png BAD out.png --size 16x12", "out.png"},
    {"p", "render BAD out.png --frames 1 -e gray", "out.png"},
    {"p", "render good.mp4 out.mkv -e EffectNameMkFade:EffectPropVFPath1=BAD:EffectPropVFPath2=good.png",
     "out.mkv"},
    {"s", "render good.mp4 out.mkv -a audio_replace:audio_replace_path=BAD", "out.mkv"},
    {"s", "render good.png out.mkv -a audio_replace:audio_replace_path=BAD:audio_replace_loop=on", "out.mkv"},
    {"s", "render BAD out.flac -a audio_volume:audio_volume=50", "out.flac"},
};

std::string Flipped(std::string bytes, size_t seed) {
    std::mt19937 random(static_cast<unsigned>(seed));
    for (size_t flip = 0; flip < 1 + seed % 20; ++flip)
        bytes[random() % bytes.size()] = static_cast<char>(random());
    return bytes;
}

class Damaged : public Robustness, public testing::WithParamInterface<Media> {
protected:
    void Try(const Use& use, const std::string& bytes) const {
        const std::string name = GetParam().name;
        WriteFile(Path(name), bytes);
        std::string command = use.command;
        for (size_t at = 0; (at = command.find("BAD")) != std::string::npos;) command.replace(at, 3, name);
        // Damage can make a clip too short for what is asked (2) or change pictures under an effect (5).
        EndsWell(Run(command), {0, 2, 3, 5, 6}, use.output);
    }
};

TEST_P(Damaged, CutOffOrFlipped) {
    const Media& media = GetParam();
    Make(media.name, media.options);
    m_kept = Names();
    const std::string whole = ReadFile(Path(media.name));
    size_t turn = 0;
    for (const Use& use : kUses) {
        if (!std::strpbrk(media.kinds, use.kinds)) continue;
        // At every percent, then flipped; else one of the two in turn.
        for (size_t i = 0; i < (Soaks() ? 125u : 1u); ++i, ++turn) {
            const bool cut = Soaks() ? i < 100 : turn % 2 == 0;
            const size_t percent = Soaks() ? i : turn * 37 % 100;
            SCOPED_TRACE(std::string(use.command) + (cut ? ", cut off at percent " : ", flips of seed ") +
                         std::to_string(cut ? percent : turn));
            Try(use, cut ? whole.substr(0, whole.size() * percent / 100) : Flipped(whole, turn));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Of, Damaged, testing::ValuesIn(kMedia),
                         [](const auto& each) { return std::string(each.param.name).substr(4); });

/// Every command that writes, the output in second place from the end of its files.
constexpr Use kWriters[] = {
    {"", "render good.mp4 out.mkv -e invert", "out.mkv"},
    {"", "render good.mp4 out.mp4", "out.mp4"},
    {"", "render good.png out.png -e gray", "out.png"},
    {"", "frame good.mp4 out.jpg --at 0.5", "out.jpg"},
    {"", "transition good.mp4 good.png out.mkv -e EffectNameMkFade --live --duration 0.5", "out.mkv"},
    {"", "join good.mp4 good.mp4 out.mp4 -e EffectNameMkClock --duration 0.5", "out.mp4"},
    {"", "sheet good.png good.png out.png --size 16x12", "out.png"},
    {"", "render good.mp4 out.flac -a audio_volume:audio_volume=50", "out.flac"},
};

TEST_F(Robustness, DisksThatFillUpAndKillsWhileWriting) {
    for (const Use& use : kWriters) {
        ASSERT_EQ(Run(use.command).exitCode, 0) << use.command;
        const auto size = static_cast<int64_t>(std::filesystem::file_size(Path(use.output)));
        std::filesystem::remove(Path(use.output));
        const int64_t moments = Soaks() ? 50 : 1;
        for (int64_t moment = 0; moment <= moments; ++moment) {
            const std::string room =
                "room=" + std::to_string(std::max<int64_t>(0, size * moment / moments - 1));
            SCOPED_TRACE(use.command + (" " + room));
            EndsWell(RunOn(room, use.command), {4}, use.output);
            EndsWell(RunOn(room + " named", use.command), {4}, use.output);
            EndsWell(RunOn(room + " kill", use.command), {-SIGKILL}, use.output);
        }
        SCOPED_TRACE(use.command);
        EndsWell(RunOn("late", use.command), {4}, use.output);
    }
    EXPECT_EQ(RunningProgram({"sh", "-c", AVEFFECT_BIN_DIR "/aveffect list > /dev/full"}, m_directory)
                  .Wait()
                  .exitCode,
              4);
    EXPECT_EQ(Run("render good.mp4 /dev/full").exitCode, 4);
    EXPECT_EQ(Run("render good.mp4 /dev/null").exitCode, 0);
}

TEST_F(Robustness, OnEveryFileSystemOneStepGivesTheName) {
    const std::string command = "render good.png out.png";
    ASSERT_EQ(Run(command).exitCode, 0);
    const std::string result = ReadFile(Path("out.png"));
    for (const char* disk : {"", "named", "named old", "named old linkless", "linkless", "linkless old"}) {
        SCOPED_TRACE(disk);
        WriteFile(Path("out.png"), "precious");
        chmod(Path("out.png").c_str(), 0640);
        EXPECT_EQ(RunOn(disk, command).exitCode, 4);
        EXPECT_EQ(RunOn(std::string("room=9 ") + disk, command + " --overwrite").exitCode, 4);
        EXPECT_EQ(ReadFile(Path("out.png")), "precious");
        EXPECT_EQ(RunOn(disk, command + " --overwrite").exitCode, 0);
        EXPECT_EQ(ReadFile(Path("out.png")), result);
        EXPECT_EQ(std::filesystem::status(Path("out.png")).permissions(), std::filesystem::perms(0640));
        std::filesystem::remove(Path("out.png"));
        EndsWell(RunOn(disk, command), {0}, "out.png");
    }
}

TEST_F(Robustness, SignalsAtAnyMoment) {
    const std::string command = "join good.mp4 good.mp4 out.mp4 -e EffectNameMkClock --duration 0.5";
    const auto start = std::chrono::steady_clock::now();
    EndsWell(Run(command), {0}, "out.mp4");
    const auto usual =
        std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - start);
    std::mt19937 random(7);
    for (int round = 0; round < (Soaks() ? 20 : 1); ++round) {
        for (int signal = 1; signal <= SIGRTMAX; ++signal) {
            if (signal > SIGSYS && signal < SIGRTMAX && !Soaks()) continue; // all alike, and none named
            if (signal == SIGTSTP || signal == SIGTTIN || signal == SIGTTOU)
                continue; // stop, as SIGSTOP does
            SCOPED_TRACE("signal " + std::to_string(signal) + " in round " + std::to_string(round));
            RunningProgram program(AveffectCommand(Words(command)), m_directory);
            std::this_thread::sleep_for(usual * static_cast<int>(random() % 1000) / 1000);
            program.Signal(signal);
            if (signal == SIGSTOP) program.Signal(SIGCONT);
            EndsWell(program.Wait(), {0, -signal, 128 + signal}, "out.mp4");
        }
    }
}

TEST_F(Robustness, PipesThatStandStill) {
    for (const char* name : {"in", "out"}) ASSERT_EQ(mkfifo(Path(name).c_str(), 0600), 0);
    m_kept = Names();
    const char* const commands[] = {
        "render in out.mkv",
        "frame in out.png",
        "sheet in good.png out.png",
        "transition good.png in out.mkv -e EffectNameMkFade",
        "render good.mp4 out.mkv --right in -e EffectName3DRenderEffect",
        "render good.mp4 out.mkv -a audio_replace:audio_replace_path=in",
        "frame good.mp4 out.png -e EffectNameMkFade:EffectPropVFPath1=in:EffectPropVFPath2=good.png",
        "render good.mp4 out --codec rawvideo"};
    for (const std::string command : commands)
        for (const bool opened : {false, true}) {
            SCOPED_TRACE(command + (opened ? "" : ", with nobody at the other side"));
            // Both ways, so that opening waits for nobody; what is written is too little to tell what it is.
            const auto pipe = [&](const char* name) {
                return opened ? open(Path(name).c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC) : -1;
            };
            const int in = pipe("in"), out = pipe("out");
            EXPECT_EQ(write(in, "RIFF", 4), opened ? 4 : -1);
            RunningProgram program(AveffectCommand(Words(command)), m_directory);
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
            program.Signal(SIGTERM);
            EndsWell(program.Wait(), {-SIGTERM, 128 + SIGTERM}, "none");
            close(in);
            close(out);
        }
}

TEST_F(Robustness, TwoProgramsWithOneOutput) {
    for (int round = 0; round < (Soaks() ? 40 : 1); ++round)
        for (const std::string option : {" --overwrite", ""})
            for (const Use& use : kWriters) {
                SCOPED_TRACE(use.command + option);
                const Strings command = AveffectCommand(Words(use.command + option));
                RunningProgram one(command, m_directory), two(command, m_directory);
                const Outcome first = one.Wait(), second = two.Wait();
                EXPECT_TRUE(first.exitCode == 0 || second.exitCode == 0) << first.messages << second.messages;
                EXPECT_EQ(first.exitCode + second.exitCode, option.empty() ? 4 : 0);
                EXPECT_TRUE(!option.empty() || test::IsOneMessage(first.messages + second.messages));
                EndsWell({0, "", ""}, {0}, use.output);
            }
}

} // namespace
