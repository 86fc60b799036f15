#pragma once
/// What scaling makes of one sample, straight from the definition, for every format.
#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>

#include "aveffect/audio_frame.h"

namespace test {

/// Read is the type that the sample is taken for.
template <class Sample, class Read = Sample>
void PlainScaleAs(uint8_t* at, bool swapped, double scale) {
    constexpr bool kFloating = std::is_floating_point_v<Sample>;
    const double lowest = kFloating ? -1.0 : static_cast<double>(std::numeric_limits<Sample>::lowest());
    const double highest = kFloating ? 1.0 : static_cast<double>(std::numeric_limits<Sample>::max());
    Sample sample;
    if (swapped) std::reverse(at, at + sizeof sample);
    std::memcpy(&sample, at, sizeof sample);
    const double v = static_cast<double>(std::bit_cast<Read>(sample)) * scale;
    sample = v > highest              ? static_cast<Sample>(highest)
             : v < lowest             ? static_cast<Sample>(lowest)
             : !kFloating && (v != v) ? Sample{} // infinity times 0
                                      : static_cast<Sample>(v);
    std::memcpy(at, &sample, sizeof sample);
    if (swapped) std::reverse(at, at + sizeof sample);
}

inline void PlainScale(int format, uint8_t* at, bool swapped, double scale) {
    switch (format) {
    case AVBased::sfSigned8:
        return PlainScaleAs<int8_t>(at, swapped, scale);
    case AVBased::sfUnsigned8:
        return PlainScaleAs<uint8_t>(at, swapped, scale);
    case AVBased::sfSigned16:
        return PlainScaleAs<int16_t>(at, swapped, scale);
    case AVBased::sfUnsigned16:
        return PlainScaleAs<uint16_t>(at, swapped, scale);
    case AVBased::sfSigned32:
        return PlainScaleAs<int32_t>(at, swapped, scale);
    case AVBased::sfUnsigned32:
        return PlainScaleAs<uint32_t, int32_t>(at, swapped, scale);
    case AVBased::sfFloat:
        return PlainScaleAs<float>(at, swapped, scale);
    default:
        return PlainScaleAs<double>(at, swapped, scale);
    }
}

} // namespace test
