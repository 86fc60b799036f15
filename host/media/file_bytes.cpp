#include "host/media/file_bytes.h"

#include <algorithm>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace aveffect {

namespace {

constexpr uint64_t kLargestNumber = uint64_t{1} << 61;

} // namespace

FileBytes::FileBytes(const std::string& path) {
    struct stat info = {};
    if (stat(path.c_str(), &info) != 0 || !S_ISREG(info.st_mode)) return;
    m_file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (m_file >= 0) m_size = info.st_size;
}

FileBytes::~FileBytes() {
    if (m_file >= 0) close(m_file);
}

uint8_t FileBytes::At(int64_t position) {
    if (position < 0 || position >= m_size) return 0;
    if (position < m_begin || position >= m_end) {
        const ssize_t got = pread(m_file, m_window.data(), m_window.size(), position);
        m_begin = position;
        m_end = position + std::max<ssize_t>(0, got);
        if (got <= 0) return 0;
    }
    return m_window[static_cast<size_t>(position - m_begin)];
}

int64_t FileBytes::Big(int64_t position, int bytes) {
    uint64_t number = 0;
    for (int index = 0; index < bytes; ++index) number = number << 8 | At(position + index);
    return static_cast<int64_t>(std::min<uint64_t>(number, kLargestNumber));
}

int64_t FileBytes::Little(int64_t position, int bytes) {
    uint64_t number = 0;
    for (int index = bytes - 1; index >= 0; --index) number = number << 8 | At(position + index);
    return static_cast<int64_t>(std::min<uint64_t>(number, kLargestNumber));
}

bool FileBytes::Says(int64_t position, std::string_view text) {
    for (const char letter : text)
        if (position >= m_size || At(position++) != static_cast<uint8_t>(letter)) return false;
    return true;
}

} // namespace aveffect
