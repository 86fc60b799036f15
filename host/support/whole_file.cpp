#include "host/support/whole_file.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

#include "host/support/error.h"

namespace aveffect {

namespace {

class OpenFile {
public:
    explicit OpenFile(const std::string& path)
        : m_file(open(path.c_str(), O_RDONLY | O_CLOEXEC)) {}
    ~OpenFile() {
        if (m_file >= 0) close(m_file);
    }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    int Descriptor() const noexcept { return m_file; }

private:
    int m_file;
};

} // namespace

std::optional<std::string> WholeFile(const std::string& path, size_t most) {
    const auto fail = [&path] {
        throw Error(ErrorKind::Input, path + " can't be read: " + std::strerror(errno));
    };
    const OpenFile file(path);
    if (file.Descriptor() < 0 && (errno == ENOENT || errno == ENOTDIR)) return std::nullopt;
    if (file.Descriptor() < 0) fail();
    constexpr size_t kPiece = size_t{1} << 16;
    std::string bytes;
    for (size_t end = 0; end < most;) {
        bytes.resize(std::min(most, end + kPiece));
        const ssize_t got = read(file.Descriptor(), bytes.data() + end, bytes.size() - end);
        if (got < 0 && errno != EINTR) fail();
        end += static_cast<size_t>(std::max<ssize_t>(0, got));
        bytes.resize(end);
        if (got == 0) break;
    }
    return bytes;
}

} // namespace aveffect
