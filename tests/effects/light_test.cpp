// The light effects through the plug-in, against their plain computations.
#include <gtest/gtest.h>

#include "aveffect/errors.h"
#include "tests/support/effect_cases.h"
#include "tests/support/light.h"

namespace {

using namespace AVBased;
using test::HostFrame;
using test::kPacked;
using test::kPlanarFormats;

std::vector<test::Plane8> PlanesOf(HostFrame& frame) {
    std::vector<test::Plane8> planes;
    for (size_t i = 0; i < frame.planes.size() && i < 3; ++i) {
        HostFrame::Plane& plane = frame.planes[i];
        planes.push_back({plane.Data(), plane.width, plane.pitch, plane.rows});
    }
    return planes;
}

using Properties = std::vector<std::pair<std::string, std::string>>;

void ExpectBoth(const test::Setting& setting, const std::function<void(HostFrame&)>& plain) {
    ASSERT_NO_FATAL_FAILURE(test::ExpectComputes(setting, kPacked, plain));
    ASSERT_NO_FATAL_FAILURE(test::ExpectComputes(setting, kPlanarFormats, plain));
}

// Colours are B, G, R in packed pictures and Y, U, V in planar ones.
auto Spotlight(test::PlainSpotlight light, std::vector<int> packed, std::vector<int> planar) {
    return [=](HostFrame& frame) mutable {
        const test::Layout layout = test::LayoutOf(frame.GetPixelFormat());
        light.colours = frame.GetPixelFormat() == BGRA ? packed : planar;
        light.hShift = layout.hShift;
        light.vShift = layout.vShift;
        light(PlanesOf(frame));
    };
}

TEST(Spotlight, LightsADisc) {
    struct Light {
        const char *x, *y, *r, *brightness, *density;
        test::PlainSpotlight plain;
    };
    for (const Light& l : {Light{"8", "4", "5", "50", "40", {8, 4, 5, 128, 40, {}}},
                           {"60", "0", "70", "-50", "100", {60, 0, 70, -128, 100, {}}},
                           {"16", "2", "2", "-33", "77", {16, 2, 2, -84, 77, {}}}, // -84.48 towards 0
                           {"3", "3", "400", "7", "-300", {3, 3, 400, 17, -300, {}}},
                           {"1", "1", "2147483647", "0", "50", {1, 1, 2147483647, 0, 50, {}}}}) {
        const Properties properties = {{"spotlight_x", l.x},
                                       {"spotlight_y", l.y},
                                       {"spotlight_r", l.r},
                                       {"spotlight_brightness", l.brightness},
                                       {"spotlight_density", l.density}};
        // White is 235.045, 128, 128 truncated; and 0xFF8000 is 146.047, 53.012, 192.841.
        ExpectBoth({"spotlight", properties}, Spotlight(l.plain, {255, 255, 255}, {235, 128, 128}));
        Properties orange = properties;
        orange.emplace_back("spotlight_color", "16744448");
        ExpectBoth({"spotlight", orange}, Spotlight(l.plain, {0, 128, 255}, {146, 53, 192}));
    }
    // As it is before anything is set, whatever the properties' texts say.
    auto frame = test::MakeFrame({YUV420P, 500, 460, 3, 0, true});
    HostFrame expected = *frame;
    Spotlight({250, 250, 200, 128, 40, {}}, {}, {235, 128, 128})(expected);
    test::Run(*test::MakeVideo("spotlight"), *frame);
    test::ExpectSame(*frame, expected, "defaults");
}

TEST(Spotlight, LeavesPicturesAloneThatItCannotLight) {
    const auto expectUnchanged = [](const char* x, const char* y, const char* r, int code) {
        for (const unsigned format : {BGRA, YUV420P}) {
            const auto proc =
                test::MakeVideo("spotlight", {{"spotlight_x", x}, {"spotlight_y", y}, {"spotlight_r", r}});
            auto frame = test::MakeFrame({format, 20, 10});
            const HostFrame original = *frame;
            GetBaseException()->Clear();
            test::Run(*proc, *frame);
            test::ExpectSame(*frame, original, x);
            EXPECT_EQ(GetBaseException()->GetExceptionCode(), code);
            const std::string message = code ? GetBaseException()->GetExceptionMsg() : "spotlight_r";
            EXPECT_NE(message.find("spotlight_r"), std::string::npos);
        }
    };
    for (const char* r : {"1", "0", "-5", "-2147483648"}) expectUnchanged("5", "5", r, kUnknownException);
    expectUnchanged("21", "5", "30", 0);
    expectUnchanged("5", "11", "30", 0);
    expectUnchanged("-1", "5", "30", 0);
    expectUnchanged("5", "-1", "30", 0);
}

TEST(EdgeLight, ShowsHowSteepThePictureIs) {
    for (const int level : {3, -20, 1000})
        ExpectBoth({"edgelight", {{"edgelight_level", std::to_string(level)}}}, [=](HostFrame& frame) {
            const auto planes = PlanesOf(frame);
            const size_t unit = planes.size() == 1 ? 4 : 1;
            for (size_t i = 0; i < planes.size(); ++i)
                if (planes[i].rows > 0) test::PlainEdgeLight(planes[i], unit, level, i ? 128 : 0);
        });
}

// A step of 100 is 300 at level 3, of which 44 is left; no step is black, without colour.
TEST(EdgeLight, ByHand) {
    auto frame = test::MakeFrame({YUVA444P, 4, 2});
    for (size_t i = 0; i < 3; ++i) test::FillPitch(frame->planes[i], 50);
    for (unsigned y = 0; y < 2; ++y) frame->planes[0].At(2, y) = frame->planes[0].At(3, y) = 150;
    test::Run(*test::MakeVideo("edgelight"), *frame);
    for (const auto& [x, luma] : {std::pair{0u, 0}, {1u, 44}, {2u, 0}}) {
        EXPECT_EQ(frame->planes[0].At(x, 0), luma) << x;
        EXPECT_EQ(frame->planes[1].At(x, 0), 128) << x;
    }
}

TEST(Radiate, AddsWhatLiesOnTheWayToTheCentre) {
    for (const test::PlainRays& rays : {test::PlainRays{20, 3, 500}, {-100, 900, 300}, {31, 2, -200}})
        test::ExpectComputes({"radiate",
                              {{"radiate_x", std::to_string(rays.x)},
                               {"radiate_y", std::to_string(rays.y)},
                               {"radiate_level", std::to_string(rays.level)}}},
                             kPlanarFormats, [&](HostFrame& frame) {
                                 const auto planes = PlanesOf(frame);
                                 const test::Layout layout = test::LayoutOf(frame.GetPixelFormat());
                                 const size_t w = planes[0].width, h = planes[0].rows;
                                 rays.Radiate(planes[0], 1, w, h, 0, 0, rays.PlainTone());
                                 for (const size_t i : {1u, 2u})
                                     rays.Radiate(planes[i], 1, w, h, layout.hShift, layout.vShift,
                                                  test::PlainRays::ChromaTone);
                             });
}

// Seventeen times 160 in sixteenths; 300 / 8 more as it is before anything is set.
TEST(Radiate, ByHand) {
    for (const auto& [level, expected] : {std::pair{"0", 170}, {"300", 207}, {"", 207}})
        for (const unsigned format : {BGRA, YUV420P}) {
            const auto proc = test::MakeVideo("radiate");
            if (*level) proc->SetProperty("radiate_level", level);
            auto frame = test::MakeFrame({format, 70, 40});
            for (HostFrame::Plane& plane : frame->planes) test::FillPitch(plane, 160);
            test::Run(*proc, *frame);
            EXPECT_EQ(frame->planes[0].At(40, 20), expected);
            EXPECT_EQ(frame->planes[0].At(3, 20), format == BGRA ? 160 : expected); // alpha
        }
}

} // namespace
