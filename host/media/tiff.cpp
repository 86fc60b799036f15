#include "host/media/tiff.h"

namespace aveffect {
namespace {

constexpr size_t kCount = 2, kEntry = 12; // bytes of the count of entries, and of each

} // namespace

uint32_t NumberAt(std::string_view bytes, size_t at, size_t length, bool big) {
    uint32_t number = 0;
    for (size_t index = 0; index < length; ++index) {
        const size_t place = at + (big ? index : length - 1 - index);
        number = number << 8 | (place < bytes.size() ? static_cast<uint8_t>(bytes[place]) : 0u);
    }
    return number;
}

Tiff::Tiff(std::string_view bytes)
    : m_bytes(bytes)
    , m_big(bytes.starts_with("MM"))
    , m_valid(m_big || bytes.starts_with("II")) {}

size_t Tiff::First() const { return Number(4, 4); }

size_t Tiff::LinkOf(size_t directory) const {
    return directory + kCount + kEntry * Number(directory, kCount);
}

size_t Tiff::ValueOf(size_t directory, uint32_t tag) const {
    if (!m_valid) return 0;
    const size_t end = LinkOf(directory);
    for (size_t at = directory + kCount; at < end && at + kEntry <= m_bytes.size(); at += kEntry)
        if (Number(at, 2) == tag) return at + 8;
    return 0;
}

} // namespace aveffect
