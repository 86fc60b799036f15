#include "host/support/digest.h"

#include <array>
#include <cstdint>
#include <new>

namespace aveffect {

namespace {

constexpr int kDigestBits = 256;

} // namespace

Digest::Digest()
    : m_sha(av_sha_alloc(), av_free) {
    if (!m_sha || av_sha_init(m_sha.get(), kDigestBits) < 0) throw std::bad_alloc();
}

void Digest::Add(const void* bytes, size_t count) {
    av_sha_update(m_sha.get(), static_cast<const uint8_t*>(bytes), count);
}

std::string Digest::Text() {
    std::array<uint8_t, kDigestBits / 8> digest{};
    av_sha_final(m_sha.get(), digest.data());
    std::string text;
    for (const uint8_t byte : digest)
        for (const int digit : {byte >> 4, byte & 15}) text += "0123456789abcdef"[digit];
    return text;
}

std::string DigestOf(std::string_view text) {
    Digest digest;
    digest.Add(text.data(), text.size());
    return digest.Text();
}

} // namespace aveffect
