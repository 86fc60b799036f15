#include "adapters/frei0r/notices.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <functional>
#include <mutex>

namespace aveffect::frei0r {

void SayOnce(std::string_view subject, std::string_view text) noexcept {
    constexpr size_t kMostLines = 64;
    static std::mutex mutex;
    static std::array<size_t, kMostLines> said;
    static size_t count = 0;
    const std::hash<std::string_view> hash;
    const size_t line = hash(subject) * 31 + hash(text);
    const std::scoped_lock lock(mutex);
    const auto end = said.begin() + static_cast<ptrdiff_t>(count);
    if (count == kMostLines || std::find(said.begin(), end, line) != end) return;
    said[count++] = line;
    std::fprintf(stderr, "aveffect: %.*s: %.*s\n", static_cast<int>(subject.size()), subject.data(),
                 static_cast<int>(text.size()), text.data());
}

} // namespace aveffect::frei0r
