#include <array>
#include <cerrno>
#include <cstring>
#include <memory>
#include <sched.h>
#include <seccomp.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include "cli/confinement/walls.h"

namespace aveffect {

namespace {

#ifdef AVEFFECT_HAS_SANITIZERS
constexpr bool kHasSanitizers = true;
#else
constexpr bool kHasSanitizers = false;
#endif

/// What the program, its libraries and the C library below them do, whatever the arguments are: all of it
/// reaches only what is open or what the other wall lets be opened.
constexpr const char* kCalls[] = {
    // what is open
    "read", "write", "readv", "writev", "pread64", "pwrite64", "preadv", "pwritev", "preadv2", "pwritev2",
    "lseek", "close", "close_range", "dup", "dup2", "dup3", "fcntl", "flock", "fallocate", "fadvise64",
    "readahead", "fsync", "fdatasync", "sync_file_range", "ftruncate", "copy_file_range", "sendfile",
    "splice", "pipe", "pipe2", "poll", "ppoll", "select", "pselect6", "epoll_create1", "epoll_ctl",
    "epoll_wait", "epoll_pwait", "epoll_pwait2", "eventfd2", "timerfd_create", "timerfd_settime",
    "timerfd_gettime", "getdents64", "fstat", "fstatfs", "fchmod", "fgetxattr",
    // names
    "open", "openat", "stat", "lstat", "newfstatat", "statx", "statfs", "access", "faccessat", "faccessat2",
    "readlink", "readlinkat", "getcwd", "rename", "renameat", "renameat2", "link", "linkat", "unlink",
    "unlinkat", "mkdir", "mkdirat", "rmdir", "chmod", "fchmodat", "utimensat", "truncate", "umask",
    "getxattr", "lgetxattr",
    // memory
    "brk", "mmap", "munmap", "mprotect", "mremap", "madvise", "mincore", "msync", "mlock", "mlock2",
    "munlock", "membarrier", "memfd_create", "get_mempolicy", "set_mempolicy", "mbind", "pkey_alloc",
    "pkey_free", "pkey_mprotect",
    // threads and time
    "futex", "futex_waitv", "set_robust_list", "get_robust_list", "set_tid_address", "rseq", "sched_yield",
    "sched_getaffinity", "sched_setaffinity", "sched_getparam", "sched_setparam", "sched_getscheduler",
    "sched_setscheduler", "sched_getattr", "sched_get_priority_max", "sched_get_priority_min",
    "sched_rr_get_interval", "getpriority", "setpriority", "getcpu", "exit", "exit_group", "nanosleep",
    "clock_nanosleep", "clock_gettime", "clock_getres", "gettimeofday", "time", "times", "alarm", "setitimer",
    "getitimer", "pause", "restart_syscall", "wait4",
    // signals to itself
    "rt_sigaction", "rt_sigprocmask", "rt_sigreturn", "rt_sigpending", "rt_sigsuspend", "rt_sigtimedwait",
    "sigaltstack",
    // what is asked of the system
    "getpid", "getppid", "gettid", "getuid", "geteuid", "getgid", "getegid", "getresuid", "getresgid",
    "getgroups", "getpgrp", "getpgid", "getsid", "capget", "uname", "sysinfo", "getrandom", "getrusage",
    "getrlimit", "arch_prctl", "prctl"};

/// Of a connection that is made already or about to be; socket() itself says with whom.
constexpr const char* kTalk[] = {"connect",  "bind",       "getsockname", "getpeername", "sendto",
                                 "recvfrom", "sendmsg",    "recvmsg",     "sendmmsg",    "recvmmsg",
                                 "shutdown", "getsockopt", "setsockopt",  "socketpair"};

/// Of displays: memory that is shared with them, and notice of devices that come and go.
constexpr const char* kPlayersCalls[] = {"shmget",           "shmat",         "shmdt",
                                         "shmctl",           "inotify_init1", "inotify_add_watch",
                                         "inotify_rm_watch", "kcmp",          "signalfd4"};

/// Of files and terminals. Others steer devices, or type on a terminal as if its user did.
constexpr unsigned long kControls[] = {TCGETS, TIOCGWINSZ, TIOCGPGRP, FIONREAD, FIONBIO, FIOCLEX, FIONCLEX};

/// Of a socket that listens already, and of those that connect to it.
constexpr const char* kServersCalls[] = {"accept",   "accept4", "getsockname", "getpeername",
                                         "recvfrom", "sendto",  "getsockopt",  "setsockopt",
                                         "shutdown", "recvmsg", "sendmsg"};

class Filter {
public:
    Filter()
        : m_context(seccomp_init(SCMP_ACT_ERRNO(EPERM))) {}

    /// Names that the library doesn't know are of calls that it can't let through either.
    template <typename... Conditions>
    void Allow(const char* name, Conditions... conditions) {
        Add(SCMP_ACT_ALLOW, name, conditions...);
    }
    template <typename... Conditions>
    void Add(uint32_t action, const char* name, Conditions... conditions) {
        const int call = seccomp_syscall_resolve_name(name);
        if (!m_context || call == __NR_SCMP_ERROR) return;
        const std::array<scmp_arg_cmp, sizeof...(conditions)> all = {conditions...};
        const int code = seccomp_rule_add_array(m_context.get(), action, call,
                                                static_cast<unsigned>(all.size()), all.data());
        if (code != 0) m_error = -code;
    }

    /// 0, or an error's number.
    int Load() {
        if (!m_context) return ENOMEM;
        if (m_error != 0) return m_error;
        seccomp_attr_set(m_context.get(), SCMP_FLTATR_CTL_TSYNC, 1);
        // A tree instead of a list: every call passes the filter.
        seccomp_attr_set(m_context.get(), SCMP_FLTATR_CTL_OPTIMIZE, 2);
        return -seccomp_load(m_context.get());
    }

private:
    struct Release {
        void operator()(void* context) const noexcept { seccomp_release(context); }
    };
    std::unique_ptr<void, Release> m_context;
    int m_error = 0;
};

scmp_arg_cmp Is(unsigned argument, uint64_t value) { return {argument, SCMP_CMP_EQ, value, 0}; }
scmp_arg_cmp Has(unsigned argument, uint64_t bits) { return {argument, SCMP_CMP_MASKED_EQ, bits, bits}; }

void AllowOwn(Filter& filter) {
    const auto process = static_cast<uint64_t>(getpid());
    filter.Allow("tgkill", Is(0, process)); // how the C library aborts
    filter.Allow("prlimit64", Is(0, 0));
    filter.Allow("clone", Has(0, CLONE_THREAD));
    // Its flags lie in memory, where the filter doesn't look; the C library goes back to the older call.
    filter.Add(SCMP_ACT_ERRNO(ENOSYS), "clone3");
}

void AllowTalk(Filter& filter, std::initializer_list<int> families) {
    for (const char* call : kTalk) filter.Allow(call);
    for (const int family : families) filter.Allow("socket", Is(0, static_cast<uint64_t>(family)));
}

} // namespace

std::string RestrictCalls(const Reach& reach) {
    // They stop and look into their own process by calls that nobody else makes.
    if (kHasSanitizers) return "system calls aren't confined in a build with sanitizers";
    Filter filter;
    for (const char* call : kCalls) filter.Allow(call);
    AllowOwn(filter);
    if (reach.player) {
        for (const char* call : kPlayersCalls) filter.Allow(call);
        filter.Allow("ioctl"); // each driver has its own; the other wall says whose devices
    } else {
        for (const unsigned long control : kControls) filter.Allow("ioctl", Is(1, control));
    }
    if (reach.server)
        for (const char* call : kServersCalls) filter.Allow(call);
    if (reach.network)
        AllowTalk(filter, {AF_UNIX, AF_INET, AF_INET6, AF_NETLINK});
    else if (reach.player)
        AllowTalk(filter, {AF_UNIX});
    const int error = filter.Load();
    return error == 0 ? "" : std::string("system calls aren't confined: ") + std::strerror(error);
}

} // namespace aveffect
