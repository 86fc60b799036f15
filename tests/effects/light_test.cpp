// The light effects through the plug-in, against their plain computations.
#include <gtest/gtest.h>

#include "aveffect/errors.h"
#include "tests/ledger/confirm.h"
#include "tests/support/effect_cases.h"
#include "tests/support/light.h"

namespace {

using namespace AVBased;
using namespace test;

std::vector<Plane8> PlanesOf(HostFrame& frame) {
    std::vector<Plane8> planes;
    for (HostFrame::Plane& p : frame.planes) planes.push_back({p.Data(), p.width, p.pitch, p.rows});
    planes.resize(std::min<size_t>(planes.size(), 3));
    return planes;
}

// The plain computation gets the first three planes, and the format's layout.
void ExpectComputes(const Setting& setting, bool packed,
                    const std::function<void(const std::vector<Plane8>&, Layout)>& plain) {
    const auto compute = [&](HostFrame& frame) { plain(PlanesOf(frame), LayoutOf(frame.GetPixelFormat())); };
    if (packed)
        ExpectComputes(setting, kPacked, compute);
    else
        ExpectComputes(setting, kPlanarFormats, compute);
}

// White is 235.045, 128, 128 truncated, and 0xFF8000 is 146.047, 53.012, 192.841. Without orange no colour is
// set.
void ExpectSpotlight(Setting setting, PlainSpotlight light, bool orange) {
    if (orange) setting.properties.emplace_back("spotlight_color", "16744448");
    for (const bool packed : {true, false})
        ExpectComputes(setting, packed, [&](const auto& planes, Layout layout) {
            if (packed)
                light.colours = orange ? std::vector{0, 128, 255} : std::vector{255, 255, 255};
            else
                light.colours = orange ? std::vector{146, 53, 192} : std::vector{235, 128, 128};
            light.hShift = layout.hShift;
            light.vShift = layout.vShift;
            light(planes);
        });
}

TEST(Spotlight, LightsADisc) {
    for (const int radius : {5, 2, 70, 400, 2147483647})
        for (const auto& [percent, density] : {std::pair{50, 40}, {-33, 100}, {7, -300}})
            for (const int y : {4, -1, 6}) {
                const Setting setting{"spotlight",
                                      {{"spotlight_x", "8"},
                                       {"spotlight_y", std::to_string(y)},
                                       {"spotlight_r", std::to_string(radius)},
                                       {"spotlight_brightness", std::to_string(percent)},
                                       {"spotlight_density", std::to_string(density)}},
                                      y == 4};
                // Above the picture is far below it.
                const PlainSpotlight plain = {
                    8, static_cast<unsigned>(y), radius, percent * 256 / 100, density, {}};
                ASSERT_NO_FATAL_FAILURE(ExpectSpotlight(setting, plain, y == 4));
            }
    // What it is before anything is set, whatever the texts say; the frames are smaller than 250.
    ExpectSpotlight({"spotlight", {{"spotlight_x", "0"}, {"spotlight_y", "0"}}}, {0, 0, 200, 128, 40, {}},
                    false);
}

TEST(Spotlight, SaysThatTheRadiusIsTooSmall) {
    for (const char* radius : {"1", "0", "-5", "-2147483648"})
        ExpectRefuses("spotlight", {{"spotlight_x", "5"}, {"spotlight_y", "5"}, {"spotlight_r", radius}},
                      "spotlight_r");
}

TEST(EdgeLight, ShowsHowSteepThePictureIs) {
    for (const int level : {3, -20, 91, 1000, 2147483647, -2147483647 - 1})
        for (const bool packed : {true, false})
            ExpectComputes({"edgelight", {{"edgelight_level", std::to_string(level)}}}, packed,
                           [&](const auto& planes, Layout layout) {
                               for (size_t i = 0; i < planes.size(); ++i)
                                   PlainEdgeLight(planes[i], layout.pixelBytes, level, i ? 128 : 0);
                           });
}

TEST(Radiate, AddsWhatLiesOnTheWayToTheCentre) {
    for (const PlainRays& rays :
         {PlainRays{20, 3, 500}, {-100, 900, 300}, {31, 2, -200}, {9, 9, 40000}, {5, 3, 0}})
        ExpectComputes({"radiate",
                        {{"radiate_x", std::to_string(rays.x)},
                         {"radiate_y", std::to_string(rays.y)},
                         {"radiate_level", std::to_string(rays.level)}}},
                       false, [&](const auto& planes, Layout layout) {
                           const size_t w = planes[0].width, h = planes[0].rows;
                           rays.Radiate(planes[0], 1, w, h, 0, 0, rays.PlainTone());
                           for (const size_t i : {1u, 2u})
                               rays.Radiate(planes[i], 1, w, h, layout.hShift, layout.vShift,
                                            PlainRays::ChromaTone);
                       });
    // As it is before anything is set.
    ExpectComputes({"radiate"}, true, [](const auto& planes, Layout) {
        const PlainRays rays = {300, 300, 300};
        rays.Radiate(planes[0], 4, planes[0].width / 4, planes[0].rows, 0, 0, rays.MmxTone());
    });
}

TEST(Light, IsAsInTheLedger) {
    using ledger::ExpectInLedger;
    ExpectInLedger("edgelight", [](const auto& of, HostFrame& frame) {
        const Layout layout = LayoutOf(of.format);
        const auto planes = PlanesOf(frame);
        for (size_t i = 0; i < planes.size(); ++i)
            PlainEdgeLight(planes[i], layout.pixelBytes, of.Int("edgelight_level"), i ? 128 : 0);
    });
    ExpectInLedger("spotlight", [](const auto& of, HostFrame& frame) {
        const Layout layout = LayoutOf(of.format);
        const int colour = of.Int("spotlight_color");
        const auto yuv = ledger::CutYuv(colour);
        const std::vector<int> bgr = {colour & 255, colour >> 8 & 255, colour >> 16 & 255};
        PlainSpotlight{of.Int("spotlight_x"),
                       of.Int("spotlight_y"),
                       of.Int("spotlight_r"),
                       of.Int("spotlight_brightness") * 256 / 100,
                       of.Int("spotlight_density"),
                       of.format == BGRA ? bgr : std::vector<int>(yuv.begin(), yuv.end()),
                       layout.hShift,
                       layout.vShift}(PlanesOf(frame));
    });
    ExpectInLedger("radiate", [](const auto& of, HostFrame& frame) {
        const PlainRays rays = {of.Int("radiate_x"), of.Int("radiate_y"), of.Int("radiate_level")};
        const Layout layout = LayoutOf(of.format);
        const auto planes = PlanesOf(frame);
        const size_t w = of.width, h = of.height;
        if (of.format == BGRA) return rays.Radiate(planes[0], 4, w, h, 0, 0, rays.MmxTone());
        rays.Radiate(planes[0], 1, w, h, 0, 0, rays.PlainTone());
        for (const size_t i : {1u, 2u})
            rays.Radiate(planes[i], 1, w, h, layout.hShift, layout.vShift, PlainRays::ChromaTone);
    });
}

} // namespace
