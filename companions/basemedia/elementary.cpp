/// SLEEF's deterministic functions: the same bits on every processor, in vectors as one by one.
#include <sleef.h>

#include "aveffect/base_media.h"

namespace {

// As many angles as SLEEF takes at once on any processor of the kind; Several() takes and gives them.
#if defined(__SSE2__)
constexpr size_t kSeveral = 2;
void Several(const double* radians, double* sines, double* cosines) {
    const Sleef___m128d_2 both = Sleef_cinz_sincosd2_u10sse2(_mm_loadu_pd(radians));
    _mm_storeu_pd(sines, both.x);
    _mm_storeu_pd(cosines, both.y);
}
#elif defined(__aarch64__)
constexpr size_t kSeveral = 2;
void Several(const double* radians, double* sines, double* cosines) {
    const Sleef_float64x2_t_2 both = Sleef_cinz_sincosd2_u10advsimdnofma(vld1q_f64(radians));
    vst1q_f64(sines, both.x);
    vst1q_f64(cosines, both.y);
}
#else
constexpr size_t kSeveral = 1;
void Several(const double* radians, double* sines, double* cosines) {
    *sines = AVBasedSine(*radians);
    *cosines = AVBasedCosine(*radians);
}
#endif

} // namespace

double AVBasedSine(double radians) { return Sleef_cinz_sincosd1_u10purec(radians).x; }

double AVBasedCosine(double radians) { return Sleef_cinz_sincosd1_u10purec(radians).y; }

double AVBasedTangent(double radians) { return Sleef_cinz_tand1_u10purec(radians); }

double AVBasedArcCosine(double cosine) { return Sleef_cinz_acosd1_u10purec(cosine); }

double AVBasedPower(double base, double exponent) { return Sleef_cinz_powd1_u10purec(base, exponent); }

void AVBasedSinesAndCosines(const double* radians, double* sines, double* cosines, size_t count) {
    size_t i = 0;
    for (; i + kSeveral <= count; i += kSeveral) Several(radians + i, sines + i, cosines + i);
    for (; i < count; ++i) {
        sines[i] = AVBasedSine(radians[i]);
        cosines[i] = AVBasedCosine(radians[i]);
    }
}
