#include "AVEffect/support/elementary.h"

#include <cmath>

#include "aveffect/base_media.h"

// Null where the companion has none: the plug-in is loaded beside any.
extern "C" {
[[gnu::weak]] double AVBasedSine(double);
[[gnu::weak]] double AVBasedCosine(double);
[[gnu::weak]] double AVBasedTangent(double);
[[gnu::weak]] double AVBasedPower(double, double);
[[gnu::weak]] void AVBasedSinesAndCosines(const float*, float*, float*, size_t);
}

namespace AVBased {

double Sine(double angle) { return AVBasedSine ? AVBasedSine(angle) : std::sin(angle); }

double Cosine(double angle) { return AVBasedCosine ? AVBasedCosine(angle) : std::cos(angle); }

double Tangent(double angle) { return AVBasedTangent ? AVBasedTangent(angle) : std::tan(angle); }

double Power(double base, double exponent) {
    return AVBasedPower ? AVBasedPower(base, exponent) : std::pow(base, exponent);
}

void SinesAndCosines(const float* angles, float* sines, float* cosines, size_t count) {
    if (AVBasedSinesAndCosines) return AVBasedSinesAndCosines(angles, sines, cosines, count);
    for (size_t i = 0; i < count; ++i) {
        sines[i] = std::sin(angles[i]);
        cosines[i] = std::cos(angles[i]);
    }
}

} // namespace AVBased
