// The light kernels against their plain computations.
#include <limits>
#include <memory>

#include "AVEffect/kernels/edge_light.h"
#include "AVEffect/kernels/radiate.h"
#include "AVEffect/kernels/spotlight.h"
#include "AVEffect/scratch.h"
#include "tests/kernels/case_makers.h"
#include "tests/support/light.h"

namespace test {

namespace {

constexpr int kLowest = std::numeric_limits<int>::min(), kHighest = std::numeric_limits<int>::max();

void AddEdgeLightCases(std::vector<KernelCase>& cases, unsigned features) {
    const auto& kernels = AVBased::kernels::SelectEdgeLightKernels(features);
    for (const int level : {3, -11, 12, -90, 91, kHighest, kLowest}) {
        const std::string suffix = " " + std::to_string(level);
        cases.push_back({"edgeLightRgba32" + suffix, 1, 4,
                         [=](const auto& planes) { kernels.edgeLightRgba32(Pixels(planes[0]), level); },
                         [=](const auto& planes) { PlainEdgeLight(planes[0], 4, level, 0); }});
        cases.push_back({"edgeLightComponent" + suffix, 1, 1,
                         [=](const auto& planes) { kernels.edgeLightComponent(planes[0], level, 128); },
                         [=](const auto& planes) { PlainEdgeLight(planes[0], 1, level, 128); }});
    }
}

AVBased::kernels::Spot SpotOf(const PlainSpotlight& plain, size_t width, size_t height) {
    const auto x = static_cast<size_t>(plain.x), y = static_cast<size_t>(plain.y),
               r = static_cast<size_t>(plain.radius), rim = 3 * r / 4;
    const int64_t density = plain.density * 65536 / 100, steps = static_cast<int64_t>(rim);
    return {x - std::min(x, r),
            std::min(x + r, width),
            y - std::min(y, r),
            std::min(y + r, height),
            x,
            y,
            r,
            rim,
            density,
            plain.brightness,
            density / steps,
            plain.brightness * 256 / steps};
}

void AddSpotlightCases(std::vector<KernelCase>& cases, unsigned features) {
    const auto& kernels = AVBased::kernels::SelectSpotlightKernels(features);
    const auto scratch = std::make_shared<AVBased::Scratch>();
    struct Light {
        int64_t radius, brightness, density;
    };
    // The last ones go pixel by pixel.
    for (const Light light : {Light{1100, 128, 40},
                              {2, 128, 40},
                              {5, -40, 100},
                              {41, 300, 77},
                              {256, 3, 100},
                              {20000, -128, 50},
                              {40000, 128, 60},
                              {40, 200, -70},
                              {30, -90000, 250}}) {
        const std::string suffix =
            " " + std::to_string(light.radius) + " by " + std::to_string(light.brightness);
        const auto lightOf = [=](const Plane8& plane, size_t unit, unsigned h, unsigned v) {
            return PlainSpotlight{static_cast<int64_t>(plane.width / unit / 3),
                                  static_cast<int64_t>(plane.rows / 2),
                                  light.radius,
                                  light.brightness,
                                  light.density,
                                  {17, 201, 130},
                                  h,
                                  v};
        };
        cases.push_back({"spotlightRgba32" + suffix, 1, 4,
                         [=](const auto& planes) {
                             const Plane32 plane = Pixels(planes[0]);
                             const auto spot = SpotOf(lightOf(planes[0], 4, 0, 0), plane.width, plane.rows);
                             kernels.spotlightRgba32(plane, spot, 0x82C911,
                                                     scratch->Require(SpotScratchBytes(spot)));
                         },
                         [=](const auto& planes) { lightOf(planes[0], 4, 0, 0)(planes); }});
        for (const auto& [h, v] : {std::pair{1u, 1u}, {0u, 0u}, {2u, 0u}})
            cases.push_back({"spotlightComponent" + suffix + ", " + std::to_string(10 * h + v), 3, 1,
                             [=, hShift = h, vShift = v](const auto& planes) {
                                 const auto spot =
                                     SpotOf(lightOf(planes[0], 1, 0, 0), planes[0].width, planes[0].rows);
                                 kernels.spotlightComponent(
                                     {planes[0], planes[1], planes[2], 17, 201, 130, hShift, vShift}, spot,
                                     scratch->Require(SpotScratchBytes(spot)));
                             },
                             [=, hShift = h, vShift = v](const auto& planes) {
                                 lightOf(planes[0], 1, hShift, vShift)(planes);
                             }});
    }
}

void AddRadiateCases(std::vector<KernelCase>& cases, unsigned features) {
    const auto& kernels = AVBased::kernels::SelectRadiateKernels(features);
    const auto scratch = std::make_shared<AVBased::Scratch>();
    // A kernel's plane is made of the second one; the reference's is a copy of that. One name before the
    // blank: one of them in depth is enough.
    const auto add = [&](const std::string& name, PlainRays plain, size_t unit, unsigned h, unsigned v,
                         auto kernel, auto tone) {
        const auto lumaOf = [=](const Plane8& plane) {
            return AVBased::kernels::LumaShape{(plane.width / unit << h) - (h ? 1 : 0),
                                               (plane.rows << v) - (v ? 1 : 0), h, v};
        };
        cases.push_back(
            {"radiate " + name + " " + std::to_string(plain.level) + " " + std::to_string(10 * h + v), 2,
             unit,
             [=](const auto& planes) {
                 const AVBased::kernels::Rays rays = {static_cast<uint32_t>(plain.x) * 256,
                                                      static_cast<uint32_t>(plain.y) * 256, plain.level};
                 if (planes[0].Empty()) return;
                 const auto luma = lumaOf(planes[0]);
                 kernel(planes, rays, luma,
                        scratch->Require(
                            AVBased::kernels::RadiateScratchBytes(planes[0].width / unit, luma.rows, h)));
             },
             [=](const auto& planes) {
                 if (planes[0].Empty()) return;
                 for (size_t y = 0; y < planes[0].rows; ++y)
                     std::copy_n(planes[1].Row(y), planes[1].width, planes[0].Row(y));
                 const auto luma = lumaOf(planes[0]);
                 plain.Radiate(planes[0], unit, luma.width, luma.rows, h, v, tone);
             }});
    };
    for (const PlainRays plain : {PlainRays{50, 20, 300},
                                  {10, 5, 0},
                                  {-70, 900, 2047},
                                  {33, 3, -80},
                                  {60, 0, 40000},
                                  {kHighest, kLowest, kLowest}}) {
        const auto pixels = [](auto kernel) {
            return [=](const auto& planes, const auto& rays, const auto&, uint8_t* memory) {
                kernel(Pixels(planes[0]), Pixels(planes[1]), rays, memory);
            };
        };
        add("Rgba32", plain, 4, 0, 0, pixels(kernels.radiateRgba32), plain.PlainTone());
        add("Rgba32Mmx", plain, 4, 0, 0, pixels(kernels.radiateRgba32Mmx), plain.MmxTone());
        add(
            "Luma", plain, 1, 0, 0,
            [=](const auto& planes, const auto& rays, const auto&, uint8_t* memory) {
                kernels.radiateLuma(planes[0], planes[1], rays, memory);
            },
            plain.PlainTone());
        for (const auto& [h, v] : {std::pair{0u, 0u}, {1u, 1u}, {2u, 0u}})
            add(
                "Chroma", plain, 1, h, v,
                [=](const auto& planes, const auto& rays, const auto& luma, uint8_t* memory) {
                    kernels.radiateChroma(planes[0], planes[1], rays, luma, memory);
                },
                PlainRays::ChromaTone);
    }
}

} // namespace

void AddLightCases(std::vector<KernelCase>& cases, unsigned features) {
    AddEdgeLightCases(cases, features);
    AddSpotlightCases(cases, features);
    AddRadiateCases(cases, features);
}

} // namespace test
