#include "host/output/output_file.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <optional>
#include <random>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

#include "host/media/device.h"
#include "host/support/durability.h"
#include "host/support/error.h"
#include "host/support/refusals.h"

namespace aveffect {
namespace {

namespace fs = std::filesystem;

constexpr int kBufferBytes = 256 * 1024;
constexpr size_t kLongestName = 255;
constexpr int kAttempts = 100; ///< to find a name that nobody has

std::string RandomSuffix() {
    static constexpr char kLetters[] = "abcdefghijklmnopqrstuvwxyz0123456789";
    std::random_device device;
    std::uniform_int_distribution<size_t> pick(0, sizeof kLetters - 2);
    std::string suffix(6, ' ');
    std::ranges::generate(suffix, [&] { return kLetters[pick(device)]; });
    return suffix;
}

std::string DescriptorPath(int file) { return "/proc/self/fd/" + std::to_string(file); }

std::string FollowLinks(const std::string& target) {
    std::error_code failed;
    if (!fs::is_symlink(target, failed)) return target;
    const fs::path resolved = fs::weakly_canonical(target, failed);
    return failed ? target : resolved.string();
}

/// A file's folder, which its name belongs to.
class OutputFolder {
public:
    explicit OutputFolder(const std::string& file) {
        const fs::path folder = fs::path(file).parent_path();
        m_folder = open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        m_error = errno;
    }
    ~OutputFolder() {
        if (m_folder >= 0) close(m_folder);
    }
    OutputFolder(const OutputFolder&) = delete;
    OutputFolder& operator=(const OutputFolder&) = delete;

    /// False, with errno, when its names can't be brought to the disk. Some file systems keep them by
    /// themselves.
    bool Settle() const noexcept {
        errno = m_error;
        return m_folder >= 0 && (fsync(m_folder) == 0 || errno == EINVAL);
    }

private:
    int m_folder = -1;
    int m_error = 0; ///< errno where it could not be opened
};

} // namespace

void OutputFile::Check(const std::string& target, const std::string& input, bool overwrite) {
    struct stat info = {};
    if (target.empty()) throw Error(ErrorKind::Output, "the output has no name");
    if (IsStandardOutput(target)) return;
    if (stat(target.c_str(), &info) != 0) return;
    if (S_ISDIR(info.st_mode)) throw Error(ErrorKind::Output, target + " is a directory; name a file in it");
    if (!S_ISREG(info.st_mode)) return;
    struct stat source = {};
    if (stat(input.c_str(), &source) == 0 && source.st_dev == info.st_dev && source.st_ino == info.st_ino)
        throw Error(ErrorKind::Output, target + " is the input itself; name another output");
    if (!overwrite) throw Error(ErrorKind::Output, target + " exists; --overwrite replaces it");
}

OutputFile::OutputFile(const std::string& target, bool overwrite, const std::atomic<bool>& cancel)
    : m_target(target)
    , m_resolved(FollowLinks(target))
    , m_overwrite(overwrite)
    , m_cancel(cancel) {
    if (IsStandardOutput(target) || IsDevice(target)) {
        m_file = OpenDeviceOutput(target, cancel);
        if (m_file < 0) Fail("can't be opened", errno);
    } else if (!CreateNameless()) {
        m_file = CreateTemporary();
    }
    try {
        OpenIo();
    } catch (...) {
        Discard();
        throw;
    }
}

OutputFile::~OutputFile() { Discard(); }

void OutputFile::Discard() noexcept {
    if (m_file >= 0) close(m_file);
    if (!m_temporary.empty()) unlink(m_temporary.c_str());
}

bool OutputFile::CreateNameless() {
    const fs::path directory = fs::path(m_resolved).parent_path();
    m_file = open(directory.empty() ? "." : directory.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0666);
    if (m_file < 0) return false;
    // Without /proc it could never be given a name.
    m_nameless = access(DescriptorPath(m_file).c_str(), F_OK) == 0;
    if (m_nameless)
        TakePermissions(m_file);
    else
        close(std::exchange(m_file, -1));
    return m_nameless;
}

int OutputFile::CreateTemporary() {
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        const std::string path = TemporaryPath();
        const int file = open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (file >= 0) {
            m_temporary = path;
            m_unfinished.emplace(m_temporary.c_str());
            TakePermissions(file);
            return file;
        }
        if (errno != EEXIST) break;
    }
    Fail("can't be written", errno);
}

std::string OutputFile::TemporaryPath() const {
    const fs::path resolved(m_resolved);
    constexpr size_t kAround = sizeof "..XXXXXX.part" - 1;
    const std::string name = resolved.filename().string().substr(0, kLongestName - kAround);
    return (resolved.parent_path() / ("." + name + "." + RandomSuffix() + ".part")).string();
}

// A replaced file's permissions stay; where that isn't allowed the new file's are as good.
void OutputFile::TakePermissions(int file) const {
    struct stat replaced = {};
    if (stat(m_resolved.c_str(), &replaced) == 0 && fchmod(file, replaced.st_mode & 07777) != 0) errno = 0;
}

void OutputFile::OpenIo() {
    const bool seekable = !IsStandardOutput(m_target) && lseek(m_file, 0, SEEK_CUR) >= 0;
    if (!seekable && m_temporary.size() + m_nameless > 0) Fail("can't be written", errno);
    auto* buffer = static_cast<unsigned char*>(av_malloc(kBufferBytes));
    AVIOContext* io =
        buffer ? avio_alloc_context(buffer, kBufferBytes, 1, this, nullptr, Write, seekable ? Seek : nullptr)
               : nullptr;
    if (!io) {
        av_free(buffer);
        throw NoMemory(m_target + ": out of memory");
    }
    m_io.reset(io);
}

int OutputFile::Write(void* self, uint8_t* data, int bytes) {
    auto* file = static_cast<OutputFile*>(self);
    for (int done = 0; done < bytes;) {
        const ssize_t written = write(file->m_file, data + done, static_cast<size_t>(bytes - done));
        if (written < 0 && errno == EINTR) continue;
        if (written < 0 && errno == EAGAIN) {
            if (WaitForRoom(file->m_file, file->m_cancel)) continue;
            errno = ECANCELED;
        }
        if (written < 0) {
            if (!file->m_error) file->m_error = errno;
            return AVERROR(errno);
        }
        done += static_cast<int>(written);
    }
    return bytes;
}

int64_t OutputFile::Seek(void* self, int64_t offset, int whence) {
    auto* file = static_cast<OutputFile*>(self);
    if (whence == AVSEEK_SIZE) {
        struct stat info = {};
        return fstat(file->m_file, &info) == 0 ? info.st_size : AVERROR(errno);
    }
    const off_t reached = lseek(file->m_file, offset, whence & ~AVSEEK_FORCE);
    if (reached < 0 && !file->m_error) file->m_error = errno; // the library goes on as if it had been there
    return reached < 0 ? AVERROR(errno) : reached;
}

AVIOContext* OutputFile::OpenReader() {
    auto* buffer = static_cast<unsigned char*>(av_malloc(kBufferBytes));
    AVIOContext* reader =
        buffer ? avio_alloc_context(buffer, kBufferBytes, 0, this, Read, nullptr, SeekReader) : nullptr;
    if (!reader) av_free(buffer);
    m_readerAt = 0;
    return reader;
}

void OutputFile::CloseReader(AVIOContext* reader) noexcept {
    av_freep(&reader->buffer);
    avio_context_free(&reader);
}

// At a place of its own, since writing goes on beside it. The library takes what can't be read for the end,
// so that failures are kept for Require().
int OutputFile::Read(void* self, uint8_t* data, int bytes) {
    auto* file = static_cast<OutputFile*>(self);
    ssize_t count = -1;
    if (file->m_cancel.load())
        errno = ECANCELED;
    else
        do count = pread(file->m_file, data, static_cast<size_t>(bytes), file->m_readerAt);
        while (count < 0 && errno == EINTR);
    if (count < 0 && !file->m_error) file->m_error = errno;
    if (count <= 0) return count < 0 ? AVERROR(file->m_error) : AVERROR_EOF;
    file->m_readerAt += count;
    return static_cast<int>(count);
}

int64_t OutputFile::SeekReader(void* self, int64_t offset, int whence) {
    auto* file = static_cast<OutputFile*>(self);
    if (whence == AVSEEK_SIZE) return Seek(self, 0, whence);
    if ((whence & ~AVSEEK_FORCE) != SEEK_SET) return AVERROR(EINVAL);
    return file->m_readerAt = offset;
}

void OutputFile::Require(int code, const char* doing) {
    if (m_error) Fail(doing, m_error);
    if (code < 0) ThrowFailure(ErrorKind::Output, m_target + " " + doing, code);
}

void OutputFile::Publish() {
    avio_flush(m_io.get());
    Require(m_io->error, "can't be written");
    RequireNothingRefused(m_target);
    Settle();
    std::optional<OutputFolder> folder;
    if (IsRegular() && g_durableOutputs) folder.emplace(m_resolved);
    if (m_nameless) GiveName();
    if (!m_temporary.empty()) Rename();
    m_unfinished.reset();
    m_temporary.clear();
    if (!folder || folder->Settle()) return;
    const int error = errno;
    if (!m_overwrite) unlink(m_resolved.c_str()); // what was replaced can't be had again
    Fail("can't be made durable", error);
}

// Some file systems say what they could not write only when a descriptor is closed; any will do.
void OutputFile::Settle() const {
    const int second = dup(m_file);
    if (second < 0 || close(second) != 0) Fail("can't be written", errno);
    if (IsRegular() && g_durableOutputs && fsync(m_file) != 0) Fail("can't be made durable", errno);
}

// A link replaces nothing: it takes the target's name if that is free, else one that can be renamed.
void OutputFile::GiveName() {
    int error = LinkTo(m_resolved);
    if (error == 0) return;
    if (error == EEXIST && !m_overwrite) FailExists();
    for (int attempt = 0; attempt < kAttempts && error == EEXIST; ++attempt) {
        const std::string path = TemporaryPath();
        error = LinkTo(path);
        if (error != 0) continue;
        m_temporary = path;
        m_unfinished.emplace(m_temporary.c_str());
    }
    if (error != 0) CopyToTemporary();
}

int OutputFile::LinkTo(const std::string& path) const {
    const std::string from = DescriptorPath(m_file);
    const bool linked = linkat(AT_FDCWD, from.c_str(), AT_FDCWD, path.c_str(), AT_SYMLINK_FOLLOW) == 0;
    return linked ? 0 : errno;
}

// The work of hours isn't lost where files may be made but not linked.
void OutputFile::CopyToTemporary() {
    const int nameless = std::exchange(m_file, CreateTemporary());
    off_t done = 0;
    ssize_t copied = 0;
    do copied = sendfile(m_file, nameless, &done, INT_MAX);
    while (copied > 0);
    const int error = errno;
    close(nameless);
    if (copied < 0) Fail("can't be written", error);
    Settle();
}

void OutputFile::Rename() {
    const char* from = m_temporary.c_str();
    const char* to = m_resolved.c_str();
    if (m_overwrite) {
        if (rename(from, to) != 0) Fail("can't be written", errno);
        return;
    }
    if (renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0) return;
    // File systems without that operation have hard links, which do not replace either; some have neither.
    if (errno != EEXIST && link(from, to) == 0) {
        unlink(from);
        return;
    }
    if (errno == EPERM || errno == EOPNOTSUPP) {
        if (access(to, F_OK) != 0 && rename(from, to) == 0) return;
        errno = EEXIST;
    }
    if (errno == EEXIST) FailExists();
    Fail("can't be written", errno);
}

void OutputFile::FailExists() const {
    throw Error(ErrorKind::Output, m_target + " exists; --overwrite replaces it");
}

void OutputFile::Fail(const char* doing, int error) const {
    if (error == ECANCELED && m_cancel.load())
        throw Error(ErrorKind::Interrupted, "interrupted; nothing was written");
    throw Error(ErrorKind::Output, (IsStandardOutput(m_target) ? "standard output" : m_target) + " " + doing +
                                       ": " + std::strerror(error));
}

} // namespace aveffect
