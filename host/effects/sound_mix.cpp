#include "host/effects/sound_mix.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace aveffect {
namespace {

template <typename Sample>
void Mix(int channels, void* to, const void* other, std::span<const double> weights) {
    auto* first = static_cast<Sample*>(to);
    const auto* second = static_cast<const Sample*>(other);
    for (const double weight : weights) {
        for (int channel = 0; channel < channels; ++channel, ++first, ++second) {
            // Exactly the one or the other at the ends, whatever the precision.
            const double mixed = std::lerp(static_cast<double>(*first), static_cast<double>(*second), weight);
            if constexpr (std::is_integral_v<Sample>)
                *first = static_cast<Sample>(std::llround(mixed));
            else
                *first = static_cast<Sample>(mixed);
        }
    }
}

} // namespace

void MixSamples(AVSampleFormat format, int channels, void* first, const void* second,
                std::span<const double> weights) {
    switch (format) {
    case AV_SAMPLE_FMT_S16:
        return Mix<int16_t>(channels, first, second, weights);
    case AV_SAMPLE_FMT_S32:
        return Mix<int32_t>(channels, first, second, weights);
    case AV_SAMPLE_FMT_DBL:
        return Mix<double>(channels, first, second, weights);
    default:
        return Mix<float>(channels, first, second, weights);
    }
}

} // namespace aveffect
