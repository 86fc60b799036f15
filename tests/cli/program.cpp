#include "tests/cli/program.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <poll.h>
#include <sstream>
#include <stdexcept>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace test {

namespace fs = std::filesystem;

namespace {

constexpr int kMinuteMs = 60000;

/// A new empty directory.
fs::path MakeDirectory() {
    std::string name = (fs::temp_directory_path() / "aveffect-cli-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("can't make a directory for the test");
    return name;
}

void Redirect(const fs::path& file, int descriptor) {
    const int opened = open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    if (opened < 0 || dup2(opened, descriptor) < 0) _exit(127);
}

} // namespace

RunningProgram::RunningProgram(const std::vector<std::string>& command, const fs::path& workingDirectory)
    : m_files(MakeDirectory() / "program") {
    std::vector<char*> arguments;
    arguments.reserve(command.size() + 1);
    for (const std::string& argument : command) arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    const fs::path out = m_files.string() + ".out", err = m_files.string() + ".err";
    m_process = fork();
    if (m_process != 0) return;
    Redirect("/dev/null", STDIN_FILENO);
    Redirect(out, STDOUT_FILENO);
    Redirect(err, STDERR_FILENO);
    if (chdir(workingDirectory.c_str()) != 0) _exit(127);
    execvp(arguments[0], arguments.data());
    _exit(127);
}

RunningProgram::~RunningProgram() {
    if (m_process > 0) {
        kill(m_process, SIGKILL);
        waitpid(m_process, nullptr, 0);
    }
    fs::remove_all(m_files.parent_path());
}

bool RunningProgram::Becomes(const std::function<bool()>& state) const {
    for (int turn = 0; turn < kMinuteMs; ++turn) {
        if (state()) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return false;
}

void RunningProgram::Signal(int signal) const {
    const fs::path status = "/proc/" + std::to_string(m_process) + "/status";
    kill(m_process, signal);
    EXPECT_TRUE(Becomes([&] {
        const std::string text = ReadFile(status);
        if (text.find("State:\tZ") != std::string::npos) return true;
        const size_t pending = text.find("ShdPnd:\t") + 8;
        return (std::stoull(text.substr(pending, 16), nullptr, 16) >> (signal - 1) & 1) == 0;
    })) << "signal "
        << signal << " waits";
}

void RunningProgram::AwaitOutput(const std::string& text) const {
    EXPECT_TRUE(Becomes([&] { return Output().find(text) != std::string::npos; })) << text;
}

std::string RunningProgram::Output() const { return ReadFile(m_files.string() + ".out"); }

Outcome RunningProgram::Wait() {
    pollfd end{static_cast<int>(syscall(SYS_pidfd_open, m_process, 0)), POLLIN, 0};
    if (poll(&end, 1, kMinuteMs) == 0) {
        ADD_FAILURE() << "the program still runs after a minute";
        Signal(SIGKILL);
    }
    close(end.fd);
    int status = 0;
    waitpid(m_process, &status, 0);
    m_process = -1;
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status), Output(),
            ReadFile(m_files.string() + ".err")};
}

void FindFirstIn(const std::string& directory) {
    const char* const known = getenv("PATH");
    const std::string path = known ? known : "";
    if (!path.starts_with(directory)) setenv("PATH", (directory + ":" + path).c_str(), 1);
}

ProgramTest::ProgramTest()
    : m_directory(MakeDirectory()) {}

ProgramTest::~ProgramTest() { fs::remove_all(m_directory); }

std::vector<std::string> ProgramTest::Names() const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(m_directory)) names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
}

std::vector<std::string> ProgramTest::AveffectCommand(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), AVEFFECT_BIN_DIR "/aveffect");
    return arguments;
}

Outcome ProgramTest::Aveffect(std::vector<std::string> arguments) const {
    return RunningProgram(AveffectCommand(std::move(arguments)), m_directory).Wait();
}

std::string ProgramTest::Ffmpeg(const std::vector<std::string>& arguments) const {
    std::vector<std::string> command = {"ffmpeg", "-v", "error", "-nostdin"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    Outcome outcome = RunningProgram(command, m_directory).Wait();
    if (outcome.exitCode != 0) throw std::runtime_error("ffmpeg failed: " + outcome.messages);
    return std::move(outcome.output);
}

void ProgramTest::MakeClip(const std::string& name, const std::string& size, int frames) const {
    Ffmpeg({"-f", "lavfi", "-i", "testsrc2=rate=25:size=" + size + ",noise=alls=24:allf=t", "-frames:v",
            std::to_string(frames), "-pix_fmt", "yuv420p", "-c:v", "ffv1", name});
}

void ProgramTest::MakeStill(const std::string& name, const std::string& colour) const {
    Ffmpeg({"-f", "lavfi", "-i", "color=0x" + colour + ":size=8x6", "-frames:v", "1", "-pix_fmt", "rgb24",
            name});
}

std::string ProgramTest::Pixels(const std::string& name) const {
    return Ffmpeg({"-i", name, "-f", "rawvideo", "-pix_fmt", "rgb24", "-vsync", "passthrough", "-"});
}

::testing::AssertionResult IsOneMessage(const std::string& text) {
    const bool single = text.find('\n') == text.size() - 1 && !text.empty();
    if (single && text.rfind("aveffect: ", 0) == 0) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "not one message: <" << text << ">";
}

::testing::AssertionResult AreMessages(const std::string& text) {
    std::istringstream lines(text);
    int count = 0;
    for (std::string line; std::getline(lines, line); ++count)
        if (line.rfind("aveffect: ", 0) != 0) return ::testing::AssertionFailure() << "no message: " << line;
    return count > 0 ? ::testing::AssertionSuccess() : ::testing::AssertionFailure() << "nothing was said";
}

std::string ReadFile(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void WriteFile(const fs::path& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

} // namespace test
