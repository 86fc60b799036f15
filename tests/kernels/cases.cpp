// The list of all kernels with their references, and the references of the colour and filter kernels, each
// written straight from its formula.
#include <algorithm>
#include <memory>

#include "AVEffect/support/scratch.h"
#include "kernels/colour.h"
#include "kernels/filter3x3.h"
#include "tests/kernels/case_makers.h"

namespace test {

namespace {

using AVBased::kernels::MiddleGain;

uint8_t Gain(MiddleGain map, int x) { return Clamp(FloorDivide256((x - 127L) * map.gain) + map.offset); }

// A 3x3 filter, from a copy of the plane: the weights of the middle, of the four sides, of the four corners,
// and the divisor.
struct Weights {
    int middle, side, corner, divisor;
};

void FilterReference(const Plane8& plane, size_t step, Weights weights) {
    if (plane.width < 3 * step || plane.rows < 3) return;
    std::vector<uint8_t> old(plane.data, plane.Row(plane.rows - 1) + plane.width);
    const auto at = [&](size_t x, size_t y) { return int{old[y * plane.pitch + x]}; };
    for (size_t y = 1; y + 1 < plane.rows; ++y)
        for (size_t x = step; x + step < plane.width; ++x) {
            const int sides = at(x - step, y) + at(x + step, y) + at(x, y - 1) + at(x, y + 1);
            const int corners =
                at(x - step, y - 1) + at(x + step, y - 1) + at(x - step, y + 1) + at(x + step, y + 1);
            plane.Row(y)[x] =
                Clamp((weights.middle * at(x, y) + weights.side * sides + weights.corner * corners) /
                      weights.divisor);
        }
}

template <class Plane, class Kernel>
KernelCase Filter(std::string name, Kernel kernel, Weights weights, bool track = false) {
    constexpr size_t kStep = std::is_same_v<Plane, Plane32> ? 4 : 1;
    const auto scratch = std::make_shared<AVBased::Scratch>();
    return {std::move(name), 1, kStep,
            [=](const auto& planes) {
                uint8_t* memory = scratch->Require(AVBased::kernels::FilterScratchBytes(planes[0].width));
                if constexpr (kStep == 4)
                    kernel(Pixels(planes[0]), memory, track);
                else
                    kernel(planes[0], memory, track);
            },
            [=](const auto& planes) { FilterReference(planes[0], kStep, weights); }};
}

void AddColourCases(std::vector<KernelCase>& cases, unsigned features) {
    const auto& kernels = AVBased::kernels::SelectKernels<AVBased::kernels::ColourKernels>(features);
    const auto mean = [](const uint8_t* p) { return (p[0] + p[1] + p[2]) / 3; };
    cases.push_back(
        OnPixels("grayRgba32", kernels.grayRgba32, [=](uint8_t* p) { std::fill_n(p, 3, mean(p)); }));
    cases.push_back(
        OnPixels("flipColorRgba32", kernels.flipColorRgba32, [](uint8_t* p) { std::swap(p[0], p[2]); }));
    cases.push_back(OnPixels("invertRgba32", kernels.invertRgba32, [](uint8_t* p) {
        for (int i = 0; i < 3; ++i) p[i] = static_cast<uint8_t>(255 - p[i]);
    }));
    cases.push_back(OnPixels("agedFilmRgba32", kernels.agedFilmRgba32, [=](uint8_t* p) {
        const int m = std::max(mean(p), 35);
        p[0] = static_cast<uint8_t>(m - 35);
        p[1] = static_cast<uint8_t>(m - 15);
        p[2] = static_cast<uint8_t>(m);
    }));
    cases.push_back(OnSamples("invertComponent", kernels.invertComponent,
                              [](uint8_t x) { return static_cast<uint8_t>(255 - x); }));
    // Gains and offsets at the ends of what the effects ask for, and odd ones between.
    for (const MiddleGain map :
         {MiddleGain{0, -128}, {512, 382}, {512, -128}, {256, 127}, {301, 140}, {1024, 127}}) {
        const std::string suffix = " " + std::to_string(map.gain) + " " + std::to_string(map.offset);
        const auto spread = [=](int gain, uint8_t* p) {
            for (int i = 0; i < 3; ++i) p[i] = Gain(map, p[i]);
            const int m = mean(p);
            for (int i = 0; i < 3; ++i) p[i] = Clamp(m + FloorDivide256((p[i] - m) * long{gain}));
        };
        cases.push_back(OnPixels(
            "middleGainRgba32" + suffix, kernels.middleGainRgba32,
            [=](uint8_t* p) {
                for (int i = 0; i < 3; ++i) p[i] = Gain(map, p[i]);
            },
            map));
        cases.push_back(OnSamples(
            "middleGainComponent" + suffix, kernels.middleGainComponent,
            [=](uint8_t x) { return Gain(map, x); }, map));
        for (const int gain : {0, 77, 1024})
            cases.push_back(OnPixels(
                "saturateRgba32" + suffix + " by " + std::to_string(gain), kernels.saturateRgba32,
                [=](uint8_t* p) { spread(gain, p); }, map, gain));
    }
    cases.push_back(
        {"swapPlanes", 2, 1, [=](const auto& planes) { kernels.swapPlanes(planes[0], planes[1]); },
         [](const auto& planes) {
             for (size_t y = 0; y < planes[0].rows; ++y)
                 std::swap_ranges(planes[0].Row(y), planes[0].Row(y) + planes[0].width, planes[1].Row(y));
         }});
}

void AddFilterCases(std::vector<KernelCase>& cases, unsigned features) {
    const auto& kernels = AVBased::kernels::SelectKernels<AVBased::kernels::Filter3x3Kernels>(features);
    const Weights blur = {4, 2, 1, 16}, sharpen = {9, -1, -1, 1};
    cases.push_back(Filter<Plane8>("blurComponent", kernels.blurComponent, blur));
    cases.push_back(Filter<Plane32>("blurRgba32", kernels.blurRgba32, blur));
    cases.push_back(Filter<Plane8>("sharpenComponent", kernels.sharpenComponent, sharpen));
    cases.push_back(Filter<Plane32>("sharpenRgba32", kernels.sharpenRgba32, sharpen));
    cases.push_back(Filter<Plane32>("sharpenRgba32, tracked", kernels.sharpenRgba32, sharpen, true));
}

} // namespace

std::vector<KernelCase> KernelCases(unsigned features) {
    std::vector<KernelCase> cases;
    AddColourCases(cases, features);
    AddFilterCases(cases, features);
    AddWeightCases(cases, features);
    AddPositionCases(cases, features);
    AddNeighbourCases(cases, features);
    AddTransitionCases(cases, features);
    AddStyleCases(cases, features);
    AddLightCases(cases, features);
    AddPaintCases(cases, features);
    AddStereoCases(cases, features);
    AddSoundCases(cases, features);
    return cases;
}

} // namespace test
