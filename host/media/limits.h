#pragma once
/// How far the claims of files are believed.
#include <atomic>
#include <cstdint>

namespace aveffect {

/// Pixels that a picture may have which is decoded. For the whole process, from any thread, of inputs that
/// are opened from then on.
inline std::atomic<int64_t> g_mostPixels{int64_t{1} << 28};

} // namespace aveffect
