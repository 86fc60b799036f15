// References of the transitions' kernels, each written straight from its formula.
#include "AVEffect/kernels/transition.h"
#include "tests/kernels/case_makers.h"

namespace test {

namespace {

// Calls change(byte, x, y) for the colours of a plane of pixels.
template <class Change>
void ForColours(const Plane8& plane, Change change) {
    for (size_t y = 0; y < plane.rows; ++y)
        for (size_t x = 0; x < plane.width; ++x)
            if (x % 4 != 3) change(plane.Row(y)[x], x, y);
}

} // namespace

uint8_t CrossFaded(int a, int b, double progress) {
    const double sum = a * (1 - progress) + b * progress;
    return sum >= 256 ? 255 : sum < 1 ? 0 : static_cast<uint8_t>(sum);
}

void AddTransitionCases(std::vector<KernelCase>& cases, unsigned features) {
    const auto& kernels = AVBased::kernels::SelectTransitionKernels(features);
    for (const double progress : {0.3, 0.0, 0.123, 7.0 / 25, 1 / 3.0, 0.5, 6 / 7.0, 1.0, 1.5, -0.25})
        cases.push_back({"crossFadeRgba32 " + std::to_string(progress), 3, 4,
                         [=](const auto& planes) {
                             kernels.crossFadeRgba32(Pixels(planes[0]), Pixels(planes[1]), Pixels(planes[2]),
                                                     progress);
                         },
                         [=](const auto& planes) {
                             ForColours(planes[0], [&](uint8_t& c, size_t x, size_t y) {
                                 c = CrossFaded(planes[1].Row(y)[x], planes[2].Row(y)[x], progress);
                             });
                         }});
    const auto whole = [](size_t x) { return static_cast<uint32_t>(x % 5); };
    const auto fraction = [](size_t x) { return static_cast<uint32_t>(x * 40503 % 65536); };
    cases.push_back(
        {"mirrorRgba32", 2, 4,
         [=](const auto& planes) {
             std::vector<uint32_t> wholes(planes[0].width / 4), fractions(wholes);
             for (size_t x = 0; x < wholes.size(); ++x) {
                 wholes[x] = whole(x) * 0x10001;
                 fractions[x] = fraction(x) * 0x10001;
             }
             kernels.mirrorRgba32(Pixels(planes[0]), Pixels(planes[1]), {wholes.data(), fractions.data()});
         },
         [=](const auto& planes) {
             ForColours(planes[0], [&](uint8_t& c, size_t x, size_t y) {
                 const size_t from = planes[1].width - 4 - x / 4 * 4 + x % 4;
                 const long old = planes[1].Row(y)[from];
                 c = Clamp(old * whole(x / 4) + FloorDivide256(old * fraction(x / 4) / 256));
             });
         }});
}

} // namespace test
