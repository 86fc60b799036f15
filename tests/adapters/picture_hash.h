#pragma once
/// What tells pictures apart: written by the tap, worked out by tests.
#include <cstddef>
#include <cstdint>

namespace test {

/// FNV-1a, of 32 bits at a time.
inline uint64_t PictureHash(const uint32_t* pixels, size_t count) {
    uint64_t hash = 0xCBF29CE484222325u;
    for (size_t i = 0; i < count; ++i) hash = (hash ^ pixels[i]) * 0x100000001B3u;
    return hash;
}

} // namespace test
