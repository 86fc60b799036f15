#pragma once
/// Checksums that name what they are of.
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

extern "C" {
#include <libavutil/mem.h>
#include <libavutil/sha.h>
}

namespace aveffect {

/// SHA-256 of bytes that are added piece by piece. Used by one thread at a time.
class Digest {
public:
    /// Throws std::bad_alloc.
    Digest();

    void Add(const void* bytes, size_t count);
    /// Once, at the end: 64 hexadecimal digits.
    std::string Text();

private:
    std::unique_ptr<AVSHA, decltype(&av_free)> m_sha;
};

/// Of a whole text.
std::string DigestOf(std::string_view text);

} // namespace aveffect
