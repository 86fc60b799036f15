// Preloaded into a program, it counts the calls of a function (FAULT, or all of them where FAULT_COUNTS names
// a file for the numbers) and makes one of them (FAULT_AT) fail as failures.txt says. The functions
// themselves are in layer_functions.S, made for what the objects call: they come here with their number and
// who called, and go on to where they are sent, arguments untouched.
#include "tests/faults/layer.h"

#include <dlfcn.h>
#include <execinfo.h>
#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <initializer_list>
#include <new>

namespace {

constexpr int kMostFunctions = 1024;

void* g_real[kMostFunctions];
std::atomic<long> g_calls[kMostFunctions];
thread_local bool t_inside __attribute__((tls_model("initial-exec"))) = false;

// Loops of our own: a sanitizer asks this layer for the C library's functions before its own forms of them,
// strcmp among them, can be called.
bool Begins(const char* text, const char* beginning) {
    for (; *beginning; ++text, ++beginning)
        if (*text != *beginning) return false;
    return true;
}

bool Same(const char* text, const char* other) {
    for (; *other && *text == *other; ++text) ++other;
    return *text == *other;
}

bool LiesIn(const void* caller, std::initializer_list<const char*> objects) {
    Dl_info found;
    if (dladdr(caller, &found) == 0 || !found.dli_fname) return false;
    const char* name = found.dli_fname;
    for (const char* at = name; *at; ++at)
        if (*at == '/') name = at + 1;
    for (const char* const object : objects)
        if (Begins(name, object)) return true;
    return false;
}

// The program sees some of the libraries' calls first, and hands them on: the next return address on the
// stack that is not its own is theirs.
const void* CallerBehindProgram(const void* const* stack) {
    constexpr int kDeep = 16;
    for (int i = 1; i < kDeep; ++i)
        if (LiesIn(stack[i], {"lib"}) && !LiesIn(stack[i], {"libfaults", "libc.", "libAV"})) return stack[i];
    return stack[0];
}

/// Whether a call counts, by failures.txt's WHOSE.
bool Counts(char whose, const void* const* stack) {
    const void* const caller = stack[0];
    if (LiesIn(caller, {"libasan"})) return false;
    switch (whose) {
    case '*':
        return true;
    case 'm':
        return LiesIn(LiesIn(caller, {"aveffect"}) ? CallerBehindProgram(stack) : caller, {"libav", "libsw"});
    case 'd':
        return LiesIn(caller, {"aveffect", "libAVE", "libAVB"});
    default:
        return LiesIn(caller, {"aveffect", "libAVE", "libAVB", "libstdc++"});
    }
}

template <int Value, int Code>
long Failing() {
    errno = Code;
    return Value;
}

long Throwing() { throw std::bad_alloc(); }

// dlsym is one of the functions itself.
void* Real(const char* name) {
    using LookUp = void* (*)(void*, const char*);
    static const auto lookUp = reinterpret_cast<LookUp>(dlvsym(RTLD_NEXT, "dlsym", "GLIBC_2.34"));
    return lookUp(RTLD_NEXT, name);
}

// What opens a file frees the context it was given when it fails.
long FailingToOpen(void** context) {
    using Free = void (*)(void*);
    reinterpret_cast<Free>(Real("avformat_free_context"))(*context);
    *context = nullptr;
    return -ENOMEM;
}

void* FailureOf(char kind) {
    const auto address = [](auto* function) { return reinterpret_cast<void*>(function); };
    switch (kind) {
    case 'n':
        return address(Failing<0, ENOMEM>);
    case 'z':
        return address(Failing<0, EIO>);
    case 'm':
        return address(Failing<-ENOMEM, ENOMEM>);
    case 't':
        return address(Throwing);
    case 'o':
        return address(FailingToOpen);
    case 'a':
        return address(Failing<ENOMEM, 0>);
    case 'i':
        return address(Failing<-EBADF, EBADF>);
    case 's':
        return address(Failing<-1, ENOSPC>);
    default:
        return address(Failing<-1, EIO>);
    }
}

// What the C library has is found behind the program.
bool FindsNext(int function, const void* const* stack) {
    const void* const firstArgument = stack[-3]; // saved by the functions' common part
    return Same(kLayerNames[function], "dlsym") && firstArgument == RTLD_NEXT;
}

/// The function that fails, and at which call; -1 when none does.
struct Chosen {
    int function = -1;
    long at = 0;
    const char* counts = nullptr;
};

const Chosen& TheChosen() {
    static Chosen chosen;
    if (!environ) return chosen;       // not yet there when sanitizers first call
    static std::atomic<int> state = 0; // 1 while being filled
    int fresh = 0;
    if (state.compare_exchange_strong(fresh, 1)) {
        const char* const name = std::getenv("FAULT");
        const char* const at = std::getenv("FAULT_AT");
        chosen.at = at ? std::atol(at) : 0;
        chosen.counts = std::getenv("FAULT_COUNTS");
        for (int index = 0; name && index < kLayerFunctions; ++index)
            if (Same(name, kLayerNames[index])) chosen.function = index;
    }
    return chosen;
}

// Opened at the beginning, since later the program may have locked itself in.
class CountsFile {
public:
    CountsFile() {
        t_inside = true;
        if (TheChosen().counts) m_file = std::fopen(TheChosen().counts, "w");
        t_inside = false;
    }
    ~CountsFile() {
        t_inside = true;
        if (!m_file) return;
        for (int index = 0; index < kLayerFunctions; ++index)
            std::fprintf(m_file, "%s %s %ld\n", kLayerNames[index], kLayerKinds[index],
                         g_calls[index].load());
        std::fclose(m_file);
    }

private:
    std::FILE* m_file = nullptr;
} counts;

// Says where in FFmpeg's libraries a crash is; of functions that have no names outside, which one lies
// before.
class CrashTeller {
public:
    CrashTeller() {
        void* first[1];
        backtrace(first, 1); // loads what it needs
        struct sigaction action = {};
        action.sa_handler = Tell;
        action.sa_flags = static_cast<int>(SA_RESETHAND);
        for (const int signal : {SIGABRT, SIGSEGV}) sigaction(signal, &action, nullptr);
    }

private:
    static void Tell(int signal) {
        void* frames[32];
        const int count = backtrace(frames, 32);
        for (int i = 0; i < count; ++i) {
            Dl_info found;
            if (!LiesIn(frames[i], {"libav", "libsw"}) || dladdr(frames[i], &found) == 0 || !found.dli_sname)
                continue;
            dprintf(STDERR_FILENO, "crash in %s\n", found.dli_sname);
            break;
        }
        raise(signal);
    }
} crashTeller;

} // namespace

/// Stack: the place of the return address.
extern "C" void* FaultDecide(int function, const void* const* stack) {
    void*& real = g_real[function];
    if (!real) real = Real(kLayerNames[function]);
    if (t_inside || FindsNext(function, stack)) return real;
    t_inside = true;
    const int error = errno;
    const Chosen& chosen = TheChosen();
    void* next = real;
    if ((chosen.counts || chosen.function == function) && Counts(kLayerKinds[function][1], stack) &&
        ++g_calls[function] == chosen.at && chosen.function == function)
        next = FailureOf(kLayerKinds[function][0]);
    errno = error;
    t_inside = false;
    return next;
}
