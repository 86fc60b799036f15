// References of the transitions' kernels, each written straight from its formula.
#include "kernels/transition.h"
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

// A byte of an overlay: whether it comes from the other plane, and from which place of its row.
using Source = std::function<std::pair<bool, size_t>(size_t x, size_t width)>;

KernelCase Overlay(const std::string& name, PlaneFunction kernel, Source source) {
    return {name, 3, 1, std::move(kernel), [=](const auto& planes) {
                for (size_t y = 0; y < planes[0].rows; ++y)
                    for (size_t x = 0; x < planes[0].width; ++x) {
                        const auto [over, from] = source(x, planes[0].width);
                        planes[0].Row(y)[x] = over ? planes[2].Row(y)[from] : planes[1].Row(y)[x];
                    }
            }};
}

void AddOverlayCases(std::vector<KernelCase>& cases, unsigned features) {
    const auto& kernels = AVBased::kernels::SelectKernels<AVBased::kernels::TransitionKernels>(features);
    // The middle third from the row's beginning, the last sixth as it stands.
    cases.push_back(Overlay(
        "overlayRuns",
        [=](const auto& planes) {
            const size_t width = planes[0].width, third = width / 3, last = width - width / 6;
            const AVBased::kernels::Run runs[] = {{third, 2 * third, 0}, {5, 5, 0}, {last, width, last}};
            kernels.overlayRuns(planes[0], planes[1], planes[2], runs, 3);
        },
        [](size_t x, size_t width) {
            const size_t third = width / 3;
            const bool middle = x >= third && x < 2 * third;
            return std::pair{middle || x >= width - width / 6, middle ? x - third : x};
        }));
    for (const auto& [begin, bytes] : {std::pair<size_t, size_t>{0, 384}, {40, 40}, {1, 1}, {0, 37}})
        cases.push_back(Overlay(
            "overlayStripes " + std::to_string(bytes),
            [=, from = begin, stripe = bytes](const auto& planes) {
                kernels.overlayStripes(planes[0], planes[1], planes[2], from, stripe);
            },
            [=, from = begin, stripe = bytes](size_t x, size_t) {
                return std::pair{x >= from && (x - from) / stripe % 2 == 0, x};
            }));
}

} // namespace

uint8_t CrossFaded(int a, int b, double progress) {
    const double sum = a * (1 - progress) + b * progress;
    return sum >= 256 ? 255 : sum < 1 ? 0 : static_cast<uint8_t>(sum);
}

void AddTransitionCases(std::vector<KernelCase>& cases, unsigned features) {
    AddOverlayCases(cases, features);
    const auto& kernels = AVBased::kernels::SelectKernels<AVBased::kernels::TransitionKernels>(features);
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
