#pragma once
/// Directories of TIFF files, and of EXIF data, which are built as these are.
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace aveffect {

/// So many bytes, 4 at most, at a place; those behind the end count as 0.
uint32_t NumberAt(std::string_view bytes, size_t at, size_t length, bool big);

/// Looks at the bytes, which outlive it.
class Tiff {
public:
    static constexpr uint32_t kOrientation = 0x112; ///< its tag

    explicit Tiff(std::string_view bytes);

    /// Whether it begins as such files do; if not, it has no directory.
    bool Valid() const noexcept { return m_valid; }
    /// Whether numbers begin with their highest byte.
    bool Big() const noexcept { return m_big; }
    uint32_t Number(size_t at, size_t length) const { return NumberAt(m_bytes, at, length, m_big); }

    /// Where the first directory begins.
    size_t First() const;
    /// Where the place of the directory behind this one stands.
    size_t LinkOf(size_t directory) const;
    /// Where a tag's value stands; 0 when the directory doesn't have it.
    size_t ValueOf(size_t directory, uint32_t tag) const;

private:
    std::string_view m_bytes;
    bool m_big;
    bool m_valid;
};

} // namespace aveffect
