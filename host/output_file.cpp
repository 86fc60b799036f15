#include "host/output_file.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <random>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

#include "host/error.h"

namespace aveffect {
namespace {

namespace fs = std::filesystem;

constexpr int kBufferBytes = 256 * 1024;
constexpr size_t kLongestName = 255;

std::string RandomSuffix() {
    static constexpr char kLetters[] = "abcdefghijklmnopqrstuvwxyz0123456789";
    std::random_device device;
    std::uniform_int_distribution<size_t> pick(0, sizeof kLetters - 2);
    std::string suffix(6, ' ');
    std::ranges::generate(suffix, [&] { return kLetters[pick(device)]; });
    return suffix;
}

std::string FollowLinks(const std::string& target) {
    std::error_code failed;
    if (!fs::is_symlink(target, failed)) return target;
    const fs::path resolved = fs::weakly_canonical(target, failed);
    return failed ? target : resolved.string();
}

} // namespace

bool OutputFile::IsDevice(const std::string& target) {
    struct stat info = {};
    return stat(target.c_str(), &info) == 0 && !S_ISREG(info.st_mode) && !S_ISDIR(info.st_mode);
}

void OutputFile::Check(const std::string& target, const std::string& input, bool overwrite) {
    struct stat info = {};
    if (target.empty()) throw Error(ErrorKind::Output, "the output has no name");
    if (stat(target.c_str(), &info) != 0) return;
    if (S_ISDIR(info.st_mode)) throw Error(ErrorKind::Output, target + " is a directory; name a file in it");
    if (!S_ISREG(info.st_mode)) return;
    struct stat source = {};
    if (stat(input.c_str(), &source) == 0 && source.st_dev == info.st_dev && source.st_ino == info.st_ino)
        throw Error(ErrorKind::Output, target + " is the input itself; name another output");
    if (!overwrite) throw Error(ErrorKind::Output, target + " exists; --overwrite replaces it");
}

OutputFile::OutputFile(const std::string& target, bool overwrite)
    : m_target(target)
    , m_resolved(FollowLinks(target))
    , m_overwrite(overwrite) {
    if (IsDevice(target)) {
        m_file = open(target.c_str(), O_WRONLY | O_CLOEXEC);
        if (m_file < 0) Fail("can't be opened", errno);
    } else {
        CreateTemporary();
    }
    try {
        OpenIo();
    } catch (...) {
        close(m_file);
        if (!m_temporary.empty()) unlink(m_temporary.c_str());
        throw;
    }
}

OutputFile::~OutputFile() {
    if (m_file >= 0) close(m_file);
    if (!m_temporary.empty()) unlink(m_temporary.c_str());
}

void OutputFile::CreateTemporary() {
    const fs::path resolved(m_resolved);
    constexpr size_t kAround = sizeof "..XXXXXX.part" - 1;
    const std::string name = resolved.filename().string().substr(0, kLongestName - kAround);
    for (int attempt = 0; attempt < 100; ++attempt) {
        const std::string path =
            (resolved.parent_path() / ("." + name + "." + RandomSuffix() + ".part")).string();
        m_file = open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (m_file >= 0) {
            m_temporary = path;
            struct stat replaced = {};
            // A replaced file's permissions stay; where that isn't allowed the new file's are as good.
            if (stat(m_resolved.c_str(), &replaced) == 0 && fchmod(m_file, replaced.st_mode & 07777) != 0)
                errno = 0;
            return;
        }
        if (errno != EEXIST) break;
    }
    Fail("can't be written", errno);
}

void OutputFile::OpenIo() {
    auto* buffer = static_cast<unsigned char*>(av_malloc(kBufferBytes));
    const bool seekable = lseek(m_file, 0, SEEK_CUR) >= 0;
    AVIOContext* io =
        buffer ? avio_alloc_context(buffer, kBufferBytes, 1, this, nullptr, Write, seekable ? Seek : nullptr)
               : nullptr;
    if (!io) {
        av_free(buffer);
        Fail("can't be written", ENOMEM);
    }
    m_io.reset(io);
}

int OutputFile::Write(void* self, uint8_t* data, int bytes) {
    auto* file = static_cast<OutputFile*>(self);
    for (int done = 0; done < bytes;) {
        const ssize_t written = write(file->m_file, data + done, static_cast<size_t>(bytes - done));
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) {
            if (!file->m_error) file->m_error = errno;
            return AVERROR(errno);
        }
        done += static_cast<int>(written);
    }
    return bytes;
}

int64_t OutputFile::Seek(void* self, int64_t offset, int whence) {
    const auto* file = static_cast<const OutputFile*>(self);
    if (whence == AVSEEK_SIZE) {
        struct stat info = {};
        return fstat(file->m_file, &info) == 0 ? info.st_size : AVERROR(errno);
    }
    const off_t reached = lseek(file->m_file, offset, whence & ~AVSEEK_FORCE);
    return reached < 0 ? AVERROR(errno) : reached;
}

void OutputFile::Require(int code, const char* doing) {
    if (m_error) Fail(doing, m_error);
    if (code < 0) throw Error(ErrorKind::Output, m_target + " " + doing + ": " + AvText(code));
}

void OutputFile::Publish() {
    avio_flush(m_io.get());
    Require(m_io->error, "can't be written");
    const int file = std::exchange(m_file, -1);
    if (close(file) != 0) Fail("can't be written", errno);
    if (m_temporary.empty()) return;
    Rename();
    m_temporary.clear();
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
    if (errno == EEXIST) throw Error(ErrorKind::Output, m_target + " exists; --overwrite replaces it");
    Fail("can't be written", errno);
}

void OutputFile::Fail(const char* doing, int error) const {
    throw Error(ErrorKind::Output, m_target + " " + doing + ": " + std::strerror(error));
}

} // namespace aveffect
