#pragma once
/// How far fades and transitions have come, where hosts say it as a number from 0 to 1.
#include <algorithm>
#include <cmath>

namespace aveffect::adapters {

/// The length that it is counted in. Fades count 256 levels of it in 32 bits.
inline constexpr int kWhole = 1 << 20;

inline int PartOfWhole(double progress) {
    return static_cast<int>(std::lround(std::clamp(progress, 0.0, 1.0) * kWhole));
}

} // namespace aveffect::adapters
