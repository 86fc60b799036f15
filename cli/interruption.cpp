#include "cli/interruption.h"

#include <cinttypes>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <sys/time.h>
#include <unistd.h>

#include "cli/exit_code.h"
#include "host/support/refusals.h"
#include "host/support/unfinished.h"

namespace aveffect {

namespace {

std::atomic<bool> g_interrupted{false};
std::atomic<int> g_signal{0};
int64_t g_deadline = 0; ///< milliseconds; 0: none
static_assert(std::atomic<bool>::is_always_lock_free && std::atomic<int>::is_always_lock_free,
              "signal handlers may touch lock-free atomics only");

char g_lastLine[160]; ///< of a run that does not end
std::atomic<bool> g_late{false};

constexpr time_t kGraceSeconds = 2; ///< for the orderly way

std::atomic<bool> g_refusalDooms{false};
std::atomic<bool> g_wasRefused{false}; ///< something, at any time
std::atomic<bool> g_doomedByRefusal{false};

constexpr int kCrashes[] = {SIGSEGV, SIGBUS, SIGFPE, SIGABRT};
struct sigaction g_onCrash[std::size(kCrashes)]; ///< before CatchCrashesBehindRefusals()

// For handlers, where whoever was to end the run hangs in somebody's call, or has fallen.
[[noreturn]] void EndNow(const char* line, int exitCode) {
    RemoveUnfinished();
    const ssize_t written = write(STDERR_FILENO, line, std::strlen(line));
    static_cast<void>(written);
    _exit(exitCode);
}

[[noreturn]] void EndShortOfMemory() {
    EndNow("aveffect: out of memory; what was unfinished is removed\n", kUnexpected);
}

void Note(int signal) {
    if (signal == SIGALRM && g_doomedByRefusal) EndShortOfMemory();
    if (signal == SIGALRM && g_deadline > 0 && g_late.exchange(true)) EndNow(g_lastLine, 128 + SIGALRM);
    int none = 0;
    g_signal.compare_exchange_strong(none, signal);
    g_interrupted = true;
}

void NoteCrash(int signal) {
    if (g_wasRefused) EndShortOfMemory();
    for (size_t i = 0; i < std::size(kCrashes); ++i)
        if (kCrashes[i] == signal) sigaction(signal, &g_onCrash[i], nullptr);
    raise(signal);
}

} // namespace

void CatchInterruptions() {
    struct sigaction action {};
    // No SA_RESTART: waiting for a pipe that nobody writes to has to end too.
    action.sa_handler = Note;
    sigfillset(&action.sa_mask); // the first one that comes is the first one noted
    for (const int signal :
         {SIGINT, SIGTERM, SIGQUIT, SIGALRM, SIGUSR1, SIGUSR2, SIGXCPU, SIGVTALRM, SIGPROF, SIGPOLL})
        sigaction(signal, &action, nullptr);

    struct sigaction old {};
    sigaction(SIGHUP, nullptr, &old);
    if (old.sa_handler != SIG_IGN) sigaction(SIGHUP, &action, nullptr);

    action.sa_handler = SIG_IGN;
    sigaction(SIGPIPE, &action, nullptr);
    sigaction(SIGXFSZ, &action, nullptr);
}

const std::atomic<bool>& Interrupted() { return g_interrupted; }

void InterruptAfter(int64_t milliseconds) {
    constexpr int64_t kASecond = 1000;
    g_deadline = milliseconds;
    std::snprintf(g_lastLine, sizeof g_lastLine,
                  "aveffect: --timeout: the run took longer than %" PRId64
                  " ms and did not end; what was unfinished is removed\n",
                  milliseconds);
    const itimerval twice = {{kGraceSeconds, 0},
                             {milliseconds / kASecond, milliseconds % kASecond * kASecond}};
    setitimer(ITIMER_REAL, &twice, nullptr);
}

void CatchCrashesBehindRefusals() {
    struct sigaction action {};
    action.sa_handler = NoteCrash;
    for (size_t i = 0; i < std::size(kCrashes); ++i) sigaction(kCrashes[i], &action, &g_onCrash[i]);
}

void RefusalsDoom() { g_refusalDooms = true; }

void NoteRefusal() noexcept {
    g_refused = true;
    if (g_wasRefused.exchange(true) || !g_refusalDooms) return;
    g_doomedByRefusal = true;
    constexpr itimerval kOnce = {{}, {kGraceSeconds, 0}};
    setitimer(ITIMER_REAL, &kOnce, nullptr);
}

int64_t EndedAfter() { return g_signal == SIGALRM ? g_deadline : 0; }

int InterruptingSignal() { return g_signal; }

} // namespace aveffect
