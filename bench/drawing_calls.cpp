// Kernels of light and paint.
#include <memory>

#include "AVEffect/support/portrait_mixes.h"
#include "bench/kernel_calls.h"
#include "kernels/edge_light.h"
#include "kernels/oil.h"
#include "kernels/radiate.h"
#include "kernels/spotlight.h"

namespace bench {

namespace {

using namespace AVBased::kernels;
using AVBased::Scratch;
using Calls = std::vector<KernelCall>;

void AddLights(Calls& calls, unsigned features) {
    const auto& edges = SelectKernels<EdgeLightKernels>(features);
    for (const int32_t level : {3, 20, 91}) {
        const std::string suffix = " " + std::to_string(level);
        calls.push_back(OnPlane("edgeLightRgba32" + suffix, edges.edgeLightRgba32, level));
        calls.push_back(
            OnPlane("edgeLightComponent" + suffix, edges.edgeLightComponent, level, uint8_t{128}));
    }
    const auto& spots = SelectKernels<SpotlightKernels>(features);
    const auto scratch = std::make_shared<Scratch>();
    // Radii beyond 32767 go pixel by pixel.
    for (const size_t radius : {size_t{540}, size_t{40000}}) {
        const auto spotOf = [=](size_t width, size_t height) {
            return Spot{width / 2, height / 2, radius, 26214, 128};
        };
        const std::string suffix = " " + std::to_string(radius);
        calls.push_back({"spotlightRgba32" + suffix, 1, 4, [=](const auto& planes) {
                             spots.spotlightRgba32(Pixels(planes[0]),
                                                   spotOf(planes[0].width / 4, planes[0].rows), 0x82C911,
                                                   scratch->Require(SpotScratchBytes(planes[0].width)));
                         }});
        calls.push_back({"spotlightComponent" + suffix, 3, 1, [=](const auto& planes) {
                             spots.spotlightComponent({planes[0], planes[1], planes[2], 17, 201, 130, 1, 1},
                                                      spotOf(planes[0].width, planes[0].rows),
                                                      scratch->Require(SpotScratchBytes(planes[0].width)));
                         }});
    }
}

void AddRays(Calls& calls, unsigned features) {
    const auto& kernels = SelectKernels<RadiateKernels>(features);
    const auto scratch = std::make_shared<Scratch>();
    const auto memory = [=](size_t width, size_t rows, unsigned shift) {
        return scratch->Require(RadiateScratchBytes(width, rows << shift, shift));
    };
    const Rays rays = {960 * 256, 540 * 256, 300};
    for (const bool mmx : {false, true})
        calls.push_back({mmx ? "radiateRgba32Mmx" : "radiateRgba32", 2, 4, [=](const auto& planes) {
                             const Plane32 plane = Pixels(planes[0]);
                             (mmx ? kernels.radiateRgba32Mmx : kernels.radiateRgba32)(
                                 plane, Pixels(planes[1]), rays, memory(plane.width, plane.rows, 0));
                         }});
    calls.push_back({"radiateLuma", 2, 1, [=](const auto& planes) {
                         kernels.radiateLuma(planes[0], planes[1], rays,
                                             memory(planes[0].width, planes[0].rows, 0));
                     }});
    calls.push_back({"radiateChroma", 2, 1, [=](const auto& planes) {
                         const Plane8& plane = planes[0];
                         kernels.radiateChroma(plane, planes[1], rays,
                                               {2 * plane.width, 2 * plane.rows, 1, 1},
                                               memory(plane.width, plane.rows, 1));
                     }});
}

void AddPaint(Calls& calls, unsigned features) {
    const auto& portraits = SelectKernels<PortraitKernels>(features);
    const auto mixes = std::make_shared<AVBased::PortraitMixes>();
    calls.push_back({"portraitRgba32", 1, 4, [=](const auto& planes) {
                         const Plane32 plane = Pixels(planes[0]);
                         portraits.portraitRgba32(plane, mixes->Of({200, plane.width, plane.rows, 0, 0},
                                                                   plane.width, plane.rows, 4, 0x3080F0));
                     }});
    for (const unsigned shift : {0u, 1u})
        calls.push_back({"portraitComponent " + std::to_string(shift), 1, 1, [=](const auto& planes) {
                             const Plane8& plane = planes[0];
                             portraits.portraitComponent(plane, mixes->Of({200, plane.width << shift,
                                                                           plane.rows << shift, shift, shift},
                                                                          plane.width, plane.rows, 1, 77));
                         }});
    const auto& oils = SelectKernels<OilKernels>(features);
    const auto scratch = std::make_shared<Scratch>();
    // The usual brush, the largest small one with the most bins, the smallest large one.
    for (const OilBrush brush : {OilBrush{3, 50}, {7, 255}, {8, 50}}) {
        const std::string suffix = " " + std::to_string(brush.radius) + " " + std::to_string(brush.levels);
        calls.push_back({"oilRgba32" + suffix, 1, 4, [=](const auto& planes) {
                             const Plane32 plane = Pixels(planes[0]);
                             oils.oilRgba32(
                                 plane, brush,
                                 scratch->Require(OilMemory(plane.width, plane.rows, brush).total));
                         }});
        calls.push_back({"oilComponent" + suffix, 3, 1, [=](const auto& planes) {
                             const OilMemory memory(planes[0].width, planes[0].rows, brush);
                             oils.oilComponent(planes[0], planes[1], planes[2], 1, 1, brush,
                                               scratch->Require(memory.total));
                         }});
    }
}

} // namespace

void AddDrawingCalls(Calls& calls, unsigned features) {
    AddLights(calls, features);
    AddRays(calls, features);
    AddPaint(calls, features);
}

} // namespace bench
