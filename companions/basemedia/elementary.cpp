/// By SLEEF's deterministic functions, which give the same bits on every processor.
#include <sleef.h>

#include "aveffect/base_media.h"

namespace {

// In double precision, off by 3.5 units in its last place at most, then rounded: but for one number in some
// ten millions that is the nearest single one.
void One(const float* radians, float* sines, float* cosines) {
    const Sleef_double_2 both = Sleef_cinz_sincosd1_u35purec(*radians);
    *sines = static_cast<float>(both.x);
    *cosines = static_cast<float>(both.y);
}

#if defined(__SSE2__)
void Two(const float* radians, float* sines, float* cosines) {
    __m128i pair = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(radians));
    const Sleef___m128d_2 both = Sleef_cinz_sincosd2_u35sse2(_mm_cvtps_pd(_mm_castsi128_ps(pair)));
    pair = _mm_castps_si128(_mm_cvtpd_ps(both.x));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(sines), pair);
    pair = _mm_castps_si128(_mm_cvtpd_ps(both.y));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(cosines), pair);
}
#elif defined(__aarch64__)
void Two(const float* radians, float* sines, float* cosines) {
    const Sleef_float64x2_t_2 both = Sleef_cinz_sincosd2_u35advsimdnofma(vcvt_f64_f32(vld1_f32(radians)));
    vst1_f32(sines, vcvt_f32_f64(both.x));
    vst1_f32(cosines, vcvt_f32_f64(both.y));
}
#else
void Two(const float* radians, float* sines, float* cosines) {
    One(radians, sines, cosines);
    One(radians + 1, sines + 1, cosines + 1);
}
#endif

} // namespace

double AVBasedSine(double radians) { return Sleef_cinz_sincosd1_u10purec(radians).x; }

double AVBasedCosine(double radians) { return Sleef_cinz_sincosd1_u10purec(radians).y; }

double AVBasedTangent(double radians) { return Sleef_cinz_tand1_u10purec(radians); }

double AVBasedArcCosine(double cosine) { return Sleef_cinz_acosd1_u10purec(cosine); }

double AVBasedPower(double base, double exponent) { return Sleef_cinz_powd1_u10purec(base, exponent); }

void AVBasedSinesAndCosines(const float* radians, float* sines, float* cosines, size_t count) {
    size_t i = 0;
    for (; i + 2 <= count; i += 2) Two(radians + i, sines + i, cosines + i);
    if (i < count) One(radians + i, sines + i, cosines + i);
}
