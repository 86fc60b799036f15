#include "host/media/device.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include "host/support/error.h"

namespace aveffect {
namespace {

constexpr int kBufferBytes = 64 * 1024;
constexpr int kTurnMs = 50;

struct Device {
    int file;
    const ReadInterrupt& interrupt;
};

int Read(void* self, uint8_t* data, int bytes) {
    const auto* from = static_cast<const Device*>(self);
    pollfd ready{from->file, POLLIN, 0};
    while (!from->interrupt.Due()) {
        if (poll(&ready, 1, kTurnMs) <= 0) continue;
        const ssize_t count = read(from->file, data, static_cast<size_t>(bytes));
        if (count > 0) return static_cast<int>(count);
        if (count == 0) return AVERROR_EOF;
        if (errno != EAGAIN && errno != EINTR) return AVERROR(errno);
    }
    return AVERROR_EXIT;
}

} // namespace

void DeviceInputDeleter::operator()(AVIOContext* io) const noexcept {
    const std::unique_ptr<Device> from(static_cast<Device*>(io->opaque));
    close(from->file);
    av_freep(&io->buffer);
    avio_context_free(&io);
}

bool IsDevice(const std::string& path) {
    struct stat info = {};
    return stat(path.c_str(), &info) == 0 && !S_ISREG(info.st_mode) && !S_ISDIR(info.st_mode);
}

bool IsStream(const std::string& path) {
    struct stat info = {};
    return IsStandardOutput(path) ||
           (stat(path.c_str(), &info) == 0 && (S_ISFIFO(info.st_mode) || S_ISSOCK(info.st_mode)));
}

DeviceInputPtr OpenDeviceInput(const std::string& path, const ReadInterrupt& interrupt) {
    const int file = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (file < 0) throw Error(ErrorKind::Input, path + " can't be read: " + std::strerror(errno));
    auto from = std::make_unique<Device>(Device{file, interrupt});
    auto* buffer = static_cast<unsigned char*>(av_malloc(kBufferBytes));
    AVIOContext* io =
        buffer ? avio_alloc_context(buffer, kBufferBytes, 0, from.get(), Read, nullptr, nullptr) : nullptr;
    if (!io) {
        av_free(buffer);
        close(file);
        throw NoMemory(path + ": out of memory");
    }
    static_cast<void>(from.release()); // the context's from now on
    return DeviceInputPtr(io);
}

// Of a pipe a description of its own, since others share ours and don't expect it never to block. A file
// that others append to is shared.
static int OpenStandardOutput() {
    struct stat info = {};
    if (fstat(STDOUT_FILENO, &info) != 0) return -1;
    return S_ISFIFO(info.st_mode) ? open("/proc/self/fd/1", O_WRONLY | O_NONBLOCK | O_CLOEXEC)
                                  : fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0);
}

int OpenDeviceOutput(const std::string& path, const std::atomic<bool>& cancel) {
    if (IsStandardOutput(path)) return OpenStandardOutput();
    for (;;) {
        const int file = open(path.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
        struct stat info = {};
        const bool waits =
            file < 0 && errno == ENXIO && stat(path.c_str(), &info) == 0 && S_ISFIFO(info.st_mode);
        if (!waits) return file;
        if (cancel.load()) {
            errno = ECANCELED;
            return -1;
        }
        poll(nullptr, 0, kTurnMs);
    }
}

bool WaitForRoom(int file, const std::atomic<bool>& cancel) {
    pollfd room{file, POLLOUT, 0};
    while (!cancel.load())
        if (poll(&room, 1, kTurnMs) > 0) return true;
    return false;
}

} // namespace aveffect
