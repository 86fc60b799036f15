#include "BaseTools/process.h"

#include <cerrno>
#include <csignal>
#include <exception>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

#include "BaseTools/CBaseException.h"
#include "BaseTools/synchronisation.h"
#include "BaseTools/thread.h"

namespace BaseTool {

namespace {

constexpr pid_t kNotRun = 0;
constexpr pid_t kStarting = -1;
constexpr int kCouldNotStart = -2; // 254 as an exit status

constexpr bool IsBlank(char c) noexcept { return c == ' ' || c == '\t'; }

/// The new process's life: it may call nothing that is not safe between fork and exec.
[[noreturn]] void BecomeChild(char* const* arguments, bool background, bool startSuspended) {
    if (background) signal(SIGHUP, SIG_IGN);
    if (startSuspended) raise(SIGSTOP);
    if (arguments[0]) execvp(arguments[0], arguments);
    _exit(kCouldNotStart);
}

/// Until the child has stopped itself: a SIGCONT before that would be lost, and the child stopped for good.
void WaitUntilStopped(pid_t child) {
    siginfo_t state{};
    while (waitid(P_PID, static_cast<id_t>(child), &state, WSTOPPED | WEXITED | WNOWAIT) < 0 &&
           errno == EINTR) {
    }
}

} // namespace

void parse_cmd_line(const std::string& commandLine, std::vector<std::string>& args) {
    enum class State { Normal, Quoted, Escaped };
    args.clear();
    std::string argument;
    State state = State::Normal, escapedFrom = State::Normal;
    const auto finish = [&] {
        if (!argument.empty()) args.push_back(std::exchange(argument, {}));
    };
    for (const char c : commandLine) {
        if (state == State::Escaped) {
            argument += c;
            state = escapedFrom;
        } else if (c == '\\') {
            escapedFrom = std::exchange(state, State::Escaped);
        } else if (c == '"') {
            state = state == State::Quoted ? State::Normal : State::Quoted;
        } else if (state == State::Normal && IsBlank(c)) {
            finish();
        } else {
            argument += c;
        }
    }
    finish();
}

CBaseToolProcess::CBaseToolProcess(std::string commandLine)
    : m_strCommandLine(std::move(commandLine)) {}

CBaseToolProcess::~CBaseToolProcess() {
    if (!m_bWaitWhenDestruct) m_bStopWatching = true;
    JoinWatcher();
}

void CBaseToolProcess::JoinWatcher() {
    if (m_Watcher.joinable()) m_Watcher.join();
}

void CBaseToolProcess::RequireRun() const {
    // Neither 0 nor -1 may reach kill(): they stand for many processes.
    if (m_nProcessId <= kNotRun) Raise(AVBased::kWrongState, "The process has not run");
}

bool CBaseToolProcess::RunInternal(bool startSuspended, bool background) {
    if (m_nProcessId != kNotRun) Raise(AVBased::kWrongState, "The process has run already");
    JoinWatcher(); // of an attempt without a child
    m_bStartSuspended = startSuspended;
    m_bBackground = background;
    try {
        PrepareArguments();
        m_nProcessId = kStarting;
        m_Watcher = std::thread([this] { StartAndWatch(); });
    } catch (const std::exception&) { // no thread, or no memory
        m_nProcessId = kNotRun;
        return false;
    }
    while (m_nProcessId == kStarting) SleepOnePoll();
    return m_nProcessId != kNotRun;
}

void CBaseToolProcess::PrepareArguments() {
    parse_cmd_line(m_strCommandLine, m_Arguments);
    m_ArgumentPointers.clear();
    m_ArgumentPointers.reserve(m_Arguments.size() + 1);
    for (std::string& argument : m_Arguments) m_ArgumentPointers.push_back(argument.data());
    m_ArgumentPointers.push_back(nullptr);
}

// The watching thread allocates nothing and so throws nothing.
void CBaseToolProcess::StartAndWatch() noexcept {
    const pid_t child = fork();
    if (child == 0) BecomeChild(m_ArgumentPointers.data(), m_bBackground, m_bStartSuspended);
    if (child < 0) {
        m_nProcessId = kNotRun;
        return;
    }
    if (m_bStartSuspended) WaitUntilStopped(child);
    m_nProcessId = child;
    WatchUntilEnded();
}

void CBaseToolProcess::WatchUntilEnded() {
    for (; !m_bStopWatching; SleepOnePoll()) {
        const std::lock_guard lock(m_ChildMutex);
        int status = 0;
        const pid_t result = waitpid(m_nProcessId, &status, WNOHANG);
        if (result == 0 || (result < 0 && errno == EINTR)) continue;
        const bool exited = result > 0 && WIFEXITED(status);
        m_nExitCode = exited ? static_cast<unsigned>(WEXITSTATUS(status)) : kNoExitCode;
        m_bEnded = true;
        return;
    }
}

bool CBaseToolProcess::Signal(int signal) {
    RequireRun();
    const std::lock_guard lock(m_ChildMutex);
    return !m_bEnded && kill(m_nProcessId, signal) == 0;
}

bool CBaseToolProcess::Suspend() { return Signal(SIGSTOP); }

bool CBaseToolProcess::Resume() { return Signal(SIGCONT); }

int CBaseToolProcess::Wait(unsigned timeout) {
    RequireRun();
    return PollUntil(m_bEnded, timeout) ? 1 : 0;
}

bool CBaseToolProcess::Terminate(unsigned code) {
    RequireRun();
    m_nExitCode = code;
    if (!Signal(SIGKILL)) return false;
    JoinWatcher();
    m_nExitCode = code; // once more: it wins over the child's status
    return true;
}

bool CBaseToolProcess::GetExitCode(unsigned& code) const {
    RequireRun();
    if (!m_bEnded) return false;
    code = m_nExitCode;
    return true;
}

} // namespace BaseTool
