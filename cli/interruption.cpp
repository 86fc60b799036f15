#include "cli/interruption.h"

#include <cinttypes>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <sys/time.h>
#include <unistd.h>

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

// The second alarm of the timer: whoever was to end the run hangs in somebody's call.
[[noreturn]] void EndNow() {
    RemoveUnfinished();
    const ssize_t written = write(STDERR_FILENO, g_lastLine, std::strlen(g_lastLine));
    static_cast<void>(written);
    _exit(128 + SIGALRM);
}

void Note(int signal) {
    if (signal == SIGALRM && g_deadline > 0 && g_late.exchange(true)) EndNow();
    int none = 0;
    g_signal.compare_exchange_strong(none, signal);
    g_interrupted = true;
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
    constexpr time_t kGraceSeconds = 2; ///< for the orderly way
    g_deadline = milliseconds;
    std::snprintf(g_lastLine, sizeof g_lastLine,
                  "aveffect: --timeout: the run took longer than %" PRId64
                  " ms and did not end; what was unfinished is removed\n",
                  milliseconds);
    const itimerval twice = {{kGraceSeconds, 0},
                             {milliseconds / kASecond, milliseconds % kASecond * kASecond}};
    setitimer(ITIMER_REAL, &twice, nullptr);
}

int64_t EndedAfter() { return g_signal == SIGALRM ? g_deadline : 0; }

int InterruptingSignal() { return g_signal; }

} // namespace aveffect
