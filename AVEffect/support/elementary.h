#pragma once
/// What effects compute places and weights with: functions that round alike on every processor, which
/// libAVBaseMedia.so has (aveffect/base_media.h). Beside one of another maker that has none they are the C
/// library's.
#include <cstddef>

namespace AVBased {

/// Angles in radians.
double Sine(double angle);
double Cosine(double angle);
double Tangent(double angle);
double Power(double base, double exponent);

/// Of each angle, in single precision; the ranges hold `count` numbers each and do not overlap.
void SinesAndCosines(const float* angles, float* sines, float* cosines, size_t count);

} // namespace AVBased
