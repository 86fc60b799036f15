#include "cli/interruption.h"

#include <csignal>
#include <sys/time.h>

namespace aveffect {

namespace {

std::atomic<bool> g_interrupted{false};
std::atomic<int> g_signal{0};
int64_t g_deadline = 0; ///< milliseconds; 0: none
static_assert(std::atomic<bool>::is_always_lock_free && std::atomic<int>::is_always_lock_free,
              "signal handlers may touch lock-free atomics only");

void Note(int signal) {
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
    g_deadline = milliseconds;
    const itimerval once = {{}, {milliseconds / kASecond, milliseconds % kASecond * kASecond}};
    setitimer(ITIMER_REAL, &once, nullptr);
}

int64_t EndedAfter() { return g_signal == SIGALRM ? g_deadline : 0; }

int InterruptingSignal() { return g_signal; }

} // namespace aveffect
