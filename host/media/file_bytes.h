#pragma once
/// A file's bytes at any place, for looking at what it says of itself.
#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace aveffect {

/// Reads behind the end give 0. Used by one thread at a time.
class FileBytes {
public:
    /// Anything but an ordinary file that can be read has size 0.
    explicit FileBytes(const std::string& path);
    ~FileBytes();
    FileBytes(const FileBytes&) = delete;
    FileBytes& operator=(const FileBytes&) = delete;

    int64_t Size() const noexcept { return m_size; }
    uint8_t At(int64_t position);
    /// So many bytes, 8 at most, as one number; larger ones than 2^61 become that, so that some may be added
    /// up.
    int64_t Big(int64_t position, int bytes);
    int64_t Little(int64_t position, int bytes);
    bool Says(int64_t position, std::string_view text);

private:
    int m_file = -1;
    int64_t m_size = 0;
    int64_t m_begin = 0; ///< of the window
    int64_t m_end = 0;
    std::array<uint8_t, 4096> m_window{};
};

} // namespace aveffect
