// Loaded before the C library: a disk with little room, a moment at which the program is killed, file systems
// that can do less than others. POOR_DISK holds the words that say which.
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

namespace {

const char* Find(const char* word) {
    const char* const words = std::getenv("POOR_DISK");
    return words ? std::strstr(words, word) : nullptr;
}

long Room() {
    const char* const text = Find("room=");
    return text ? std::atol(text + std::strlen("room=")) : -1;
}

template <typename Function>
Function* TheReal(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

int Fail(int error) {
    errno = error;
    return -1;
}

std::atomic<int> g_second{-1};

} // namespace

extern "C" {

/// "room=N": takes N bytes in all. "kill": the program ends when they are used up.
ssize_t write(int file, const void* bytes, size_t count) {
    static auto* const real = TheReal<ssize_t(int, const void*, size_t)>("write");
    static std::atomic<long> room = Room();
    if (file <= STDERR_FILENO || room < 0) return real(file, bytes, count);
    if (room == 0 && Find("kill")) raise(SIGKILL);
    if (room == 0) return Fail(ENOSPC);
    const ssize_t written =
        real(file, bytes, count < static_cast<size_t>(room) ? count : static_cast<size_t>(room));
    if (written > 0) room -= written;
    return written;
}

/// "named": no files without a name.
int open(const char* path, int flags, ...) {
    static auto* const real = TheReal<int(const char*, int, ...)>("open");
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = flags & (O_CREAT | __O_TMPFILE) ? va_arg(rest, mode_t) : 0;
    va_end(rest);
    return (flags & __O_TMPFILE) && Find("named") ? Fail(EOPNOTSUPP) : real(path, flags, mode);
}

/// "linkless": no links.
int linkat(int fromFolder, const char* from, int toFolder, const char* to, int flags) {
    static auto* const real = TheReal<int(int, const char*, int, const char*, int)>("linkat");
    return Find("linkless") ? Fail(EPERM) : real(fromFolder, from, toFolder, to, flags);
}

int link(const char* from, const char* to) { return linkat(AT_FDCWD, from, AT_FDCWD, to, 0); }

/// "old": no renaming that replaces nothing.
int renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) {
    static auto* const real = TheReal<int(int, const char*, int, const char*, unsigned)>("renameat2");
    return Find("old") ? Fail(EINVAL) : real(fromFolder, from, toFolder, to, flags);
}

/// "late": says at the end only that there was no room.
int dup(int file) {
    static auto* const real = TheReal<int(int)>("dup");
    return g_second = real(file);
}

int close(int file) {
    static auto* const real = TheReal<int(int)>("close");
    const int closed = real(file);
    return file == g_second && Find("late") ? Fail(EDQUOT) : closed;
}

} // extern "C"
