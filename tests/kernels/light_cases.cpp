// The light kernels against their plain computations.
#include <limits>
#include <memory>

#include "AVEffect/support/scratch.h"
#include "kernels/edge_light.h"
#include "kernels/radiate.h"
#include "kernels/spotlight.h"
#include "tests/kernels/case_makers.h"
#include "tests/support/light.h"

namespace test {

namespace {

constexpr int kLowest = std::numeric_limits<int>::min(), kHighest = std::numeric_limits<int>::max();

void AddEdgeLightCases(std::vector<KernelCase>& cases, unsigned features) {
    const auto& kernels = AVBased::kernels::SelectKernels<AVBased::kernels::EdgeLightKernels>(features);
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

// With a colour of 17, 201 and 130. Of pixels, or of luma and chroma.
KernelCase SpotlightCase(unsigned features, PlainSpotlight light, size_t unit) {
    const auto kernels = AVBased::kernels::SelectKernels<AVBased::kernels::SpotlightKernels>(features);
    const auto place = [unit](const Plane8& plane, PlainSpotlight placed) {
        placed.x = static_cast<int64_t>(plane.width / unit / 3);
        placed.y = static_cast<int64_t>(plane.rows / 2);
        placed.colours = {17, 201, 130};
        return placed;
    };
    return {(unit == 4 ? "spotlightRgba32 " : "spotlightComponent ") + std::to_string(light.radius) + " by " +
                std::to_string(light.brightness) + ", " + std::to_string(10 * light.hShift + light.vShift),
            unit == 4 ? size_t{1} : size_t{3}, unit,
            [=, memory = std::make_shared<AVBased::Scratch>()](const auto& planes) {
                const PlainSpotlight l = place(planes[0], light);
                const AVBased::kernels::Spot spot = {static_cast<size_t>(l.x), static_cast<size_t>(l.y),
                                                     static_cast<size_t>(l.radius), l.density * 65536 / 100,
                                                     l.brightness};
                uint8_t* scratch = memory->Require(AVBased::kernels::SpotScratchBytes(planes[0].width));
                if (unit == 4)
                    kernels.spotlightRgba32(Pixels(planes[0]), spot, 0x82C911, scratch);
                else
                    kernels.spotlightComponent(
                        {planes[0], planes[1], planes[2], 17, 201, 130, l.hShift, l.vShift}, spot, scratch);
            },
            [=](const auto& planes) { place(planes[0], light)(planes); }};
}

void AddSpotlightCases(std::vector<KernelCase>& cases, unsigned features) {
    // Radii of 2 and 40000 go pixel by pixel, and densities below 0.
    for (const int64_t radius : {1100, 2, 5, 41, 256, 20000, 40000})
        for (const auto& [brightness, density] : {std::pair{128, 40}, {-40, 100}, {300, -70}}) {
            cases.push_back(SpotlightCase(features, {0, 0, radius, brightness, density, {}}, 4));
            for (const auto& [h, v] : {std::pair{1u, 1u}, {0u, 0u}, {2u, 0u}})
                cases.push_back(SpotlightCase(features, {0, 0, radius, brightness, density, {}, h, v}, 1));
        }
}

// Call is given planes, rays, the luma plane's shape and scratch. A kernel makes its plane of the second one;
// the reference's is a copy of that. One name before the blank: one of them in depth is enough.
template <class Call, class Tone>
KernelCase RadiateCase(const char* name, PlainRays plain, size_t unit, unsigned h, unsigned v, Call call,
                       Tone tone) {
    const auto lumaOf = [=](const Plane8& plane) {
        return AVBased::kernels::LumaShape{(plane.width / unit << h) - (h ? 1 : 0),
                                           (plane.rows << v) - (v ? 1 : 0), h, v};
    };
    return {
        std::string("radiate ") + name + " " + std::to_string(plain.level) + " " + std::to_string(10 * h + v),
        2, unit,
        [=, memory = std::make_shared<AVBased::Scratch>()](const auto& planes) {
            if (planes[0].Empty()) return;
            const auto luma = lumaOf(planes[0]);
            const AVBased::kernels::Rays rays = {static_cast<uint32_t>(plain.x) * 256,
                                                 static_cast<uint32_t>(plain.y) * 256, plain.level};
            call(
                planes, rays, luma,
                memory->Require(AVBased::kernels::RadiateScratchBytes(planes[0].width / unit, luma.rows, h)));
        },
        [=](const auto& planes) {
            if (planes[0].Empty()) return;
            for (size_t y = 0; y < planes[0].rows; ++y)
                std::copy_n(planes[1].Row(y), planes[1].width, planes[0].Row(y));
            const auto luma = lumaOf(planes[0]);
            plain.Radiate(planes[0], unit, luma.width, luma.rows, h, v, tone);
        }};
}

void AddRadiateCases(std::vector<KernelCase>& cases, unsigned features) {
    const auto kernels = AVBased::kernels::SelectKernels<AVBased::kernels::RadiateKernels>(features);
    const auto pixels = [](auto kernel) {
        return [=](const auto& planes, const auto& rays, const auto&, uint8_t* scratch) {
            kernel(Pixels(planes[0]), Pixels(planes[1]), rays, scratch);
        };
    };
    const auto luma = [=](const auto& planes, const auto& rays, const auto&, uint8_t* scratch) {
        kernels.radiateLuma(planes[0], planes[1], rays, scratch);
    };
    const auto chroma = [=](const auto& planes, const auto& rays, const auto& shape, uint8_t* scratch) {
        kernels.radiateChroma(planes[0], planes[1], rays, shape, scratch);
    };
    for (const int level : {300, 0, 2047, -80, 40000, kLowest}) { // centres within pictures and far away
        const PlainRays r = {level / 7, level / 11, level};
        cases.push_back(RadiateCase("Rgba32", r, 4, 0, 0, pixels(kernels.radiateRgba32), r.PlainTone()));
        cases.push_back(RadiateCase("Rgba32Mmx", r, 4, 0, 0, pixels(kernels.radiateRgba32Mmx), r.MmxTone()));
        cases.push_back(RadiateCase("Luma", r, 1, 0, 0, luma, r.PlainTone()));
        for (const auto& [h, v] : {std::pair{0u, 0u}, {1u, 1u}, {2u, 0u}})
            cases.push_back(RadiateCase("Chroma", r, 1, h, v, chroma, PlainRays::ChromaTone));
    }
}

} // namespace

void AddLightCases(std::vector<KernelCase>& cases, unsigned features) {
    AddEdgeLightCases(cases, features);
    AddSpotlightCases(cases, features);
    AddRadiateCases(cases, features);
}

} // namespace test
