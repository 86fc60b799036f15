// Loaded before the media libraries: what a file could have them do that found a hole in them. Each attempt
// is told on standard error, as done or refused; after them the library's own function does its work.
// STRANGER_KEY names a file to read, STRANGER_PLACE one to write, STRANGER_PORT where somebody listens.
#include <arpa/inet.h>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <fcntl.h>
#include <linux/bpf.h>
#include <sched.h>
#include <spawn.h>
#include <string>
#include <sys/mount.h>
#include <sys/ptrace.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

extern "C" {
struct AVFormatContext;
struct AVDictionary;
struct AVCodecContext;
struct AVPacket;
struct AVFrame;
}

namespace {

const char* Setting(const char* name) {
    const char* const value = getenv(name);
    return value ? value : "";
}

void Tell(const char* what, long result) {
    char line[64];
    const bool refused = result < 0 && (errno == EPERM || errno == EACCES);
    const int length = std::snprintf(line, sizeof line, "%s %s\n", what, refused ? "refused" : "done");
    if (write(STDERR_FILENO, line, static_cast<size_t>(length)) != length) _exit(9);
}

long Connect() {
    const int file = socket(AF_INET, SOCK_STREAM, 0);
    if (file < 0) return -1;
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<uint16_t>(std::atoi(Setting("STRANGER_PORT"))));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const long result = connect(file, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    close(file);
    return result;
}

// The child that a call makes is this process once more, which no program follows.
long Fork() {
    const long child = syscall(SYS_fork);
    if (child == 0) _exit(0);
    if (child > 0) waitpid(static_cast<pid_t>(child), nullptr, 0);
    return child;
}

long Spawn() {
    const char* const command[] = {"true", nullptr};
    pid_t child = 0;
    errno = posix_spawn(&child, "/bin/true", nullptr, nullptr, const_cast<char**>(command), environ);
    if (errno != 0) return -1;
    waitpid(child, nullptr, 0);
    return 0;
}

void TryEverything() {
    const char* const key = Setting("STRANGER_KEY");
    const char* const place = Setting("STRANGER_PLACE");
    char bytes[8];
    iovec mine{bytes, sizeof bytes}, theirs{&mine, sizeof bytes};
    Tell("read-key", open(key, O_RDONLY));
    Tell("write-elsewhere", open(place, O_WRONLY | O_CREAT, 0600));
    Tell("cut-key", truncate(key, 1));
    Tell("move-key", rename(key, place));
    Tell("link-key", link(key, place));
    Tell("remove-key", unlink(key));
    Tell("connect", Connect());
    Tell("socket-here", socket(AF_UNIX, SOCK_STREAM, 0));
    Tell("fork", Fork());
    Tell("spawn", Spawn());
    Tell("exec", execl("/nowhere/at/all", "all", static_cast<char*>(nullptr)));
    Tell("signal", kill(getppid(), 0));
    Tell("trace", ptrace(PTRACE_SEIZE, getppid(), nullptr, nullptr));
    Tell("peek", process_vm_readv(getppid(), &mine, 1, &theirs, 1, 0));
    Tell("keys", syscall(SYS_keyctl, 0, 0, 0));
    Tell("mount", mount("none", "/", "tmpfs", 0, nullptr));
    Tell("bpf", syscall(SYS_bpf, BPF_MAP_CREATE, nullptr, 0));
    Tell("ring", syscall(SYS_io_uring_setup, 1, nullptr));
    Tell("type", ioctl(STDIN_FILENO, TIOCSTI, "x"));
    Tell("namespace", unshare(CLONE_NEWUSER));
}

template <typename Function>
Function* TheReal(const char* name) {
    static const bool once = (TryEverything(), true); // of each replaced function, in its own thread
    static_cast<void>(once);
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

} // namespace

extern "C" {

int avformat_find_stream_info(AVFormatContext* input, AVDictionary** options) {
    static auto* const real = TheReal<int(AVFormatContext*, AVDictionary**)>("avformat_find_stream_info");
    return real(input, options);
}

// What libraries may do that are refused memory: wait for ever, or fall. With "falls" there was enough.
void BeShort(const std::string& what) {
    void* memory = nullptr;
    if (what != "falls" && posix_memalign(&memory, 64, SIZE_MAX / 2) == 0) _exit(9);
    while (what == "short-waits") pause();
    if (what == "short-aborts") abort();
    raise(SIGSEGV);
}

// With STRANGER_HANGS an encoder that never answers, on a file system without nameless files; with
// STRANGER_BREAKS one of the above on such a one.
int avcodec_send_frame(AVCodecContext* encoder, const AVFrame* frame) {
    static auto* const real =
        reinterpret_cast<int (*)(AVCodecContext*, const AVFrame*)>(dlsym(RTLD_NEXT, "avcodec_send_frame"));
    while (getenv("STRANGER_HANGS")) pause();
    if (const char* const what = getenv("STRANGER_BREAKS")) BeShort(what);
    return real(encoder, frame);
}

int open(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = va_arg(arguments, mode_t);
    va_end(arguments);
    if ((flags & O_TMPFILE) != O_TMPFILE || (!getenv("STRANGER_HANGS") && !getenv("STRANGER_BREAKS")))
        return openat(AT_FDCWD, path, flags, mode);
    errno = EOPNOTSUPP;
    return -1;
}

int avcodec_send_packet(AVCodecContext* decoder, const AVPacket* packet) {
    static auto* const real = TheReal<int(AVCodecContext*, const AVPacket*)>("avcodec_send_packet");
    return real(decoder, packet);
}
}
