// Strokes, portrait frames and oil paint.
#include <gtest/gtest.h>

#include "tests/support/effect_cases.h"
#include "tests/support/painted.h"

namespace {

using namespace AVBased;
using test::ExpectComputes;
using test::HostFrame;
using test::kPacked;
using test::kPlanarFormats;
using test::MakeVideo;
using test::Setting;
using Byte = unsigned char;
using kernels::Plane8;

Plane8 View(HostFrame& frame, size_t plane) {
    auto& p = frame.planes[plane];
    return {p.Data(), p.width, p.pitch, p.rows};
}

Plane8 WholePixels(HostFrame& frame) {
    Plane8 plane = View(frame, 0);
    plane.width = plane.width / 4 * 4;
    return plane;
}

TEST(Stroke, DrawsWhatDiffersByMoreThanThePressureAllows) {
    struct Case {
        const char* pressure; // none where null
        uint32_t threshold;
    };
    // A value is taken off 100 in 32 bits without sign, and the default's text reads as 0.
    for (const Case& c : {Case{nullptr, 32}, {"100", 0}, {"101", 4294967295}, {"0x20", 100}, {"-100", 200}}) {
        Setting setting = {"stroke"};
        if (c.pressure) setting.properties = {{"stroke_pressure", c.pressure}};
        ExpectComputes(setting, kPacked,
                       [&](HostFrame& frame) { test::StrokedPixels(WholePixels(frame), c.threshold); });
        ExpectComputes(setting, kPlanarFormats, [&](HostFrame& frame) {
            if (frame.GetPixelFormat() == YUV410P) return; // not drawn
            test::FillPitch(frame.planes[1], 117);
            test::FillPitch(frame.planes[2], 136);
            test::StrokedSamples(View(frame, 0), c.threshold);
        });
    }
}

struct PortraitCase {
    std::vector<std::pair<std::string, std::string>> properties;
    long band;
    uint32_t colour; // 0xAARRGGBB
    uint8_t y, u, v;

    void operator()(HostFrame& frame) const {
        if (frame.GetPixelFormat() == BGRA) {
            test::PortraitPixels(WholePixels(frame), band, colour);
            return;
        }
        const test::Layout layout = test::LayoutOf(frame.GetPixelFormat());
        const size_t width = frame.planes[0].width, height = frame.planes[0].rows;
        test::PortraitSamples(View(frame, 0), width, height, 0, 0, band, y);
        test::PortraitSamples(View(frame, 1), width, height, layout.hShift, layout.vShift, band, u);
        test::PortraitSamples(View(frame, 2), width, height, layout.hShift, layout.vShift, band, v);
    }
};

TEST(Portrait, FadesFromTheFrameIntoThePicture) {
    for (const PortraitCase& c :
         {PortraitCase{{}, 200, 0, 16, 128, 128},
          // 0x823456 is 84, 131, 159; alpha is opaque whatever is set.
          {{{"portrait_fillcolor", "8533078"}, {"portrait_width", "30"}}, 30, 0xFF823456, 84, 131, 159},
          {{{"portrait_width", "3"}, {"portrait_fillcolor", "8533078"}}, 3, 0xFF823456, 84, 131, 159},
          {{{"portrait_width", "64"}}, 64, 0, 16, 128, 128},
          {{{"portrait_width", "2147483647"}}, 2147483647, 0, 16, 128, 128}}) {
        const Setting setting = {"portrait", c.properties};
        ExpectComputes(setting, kPacked, c);
        ExpectComputes(setting, kPlanarFormats, c);
    }
}

TEST(Portrait, HasTheBandsOfItsWidth) {
    auto frame = test::MakeFrame({BGRA, 640, 480});
    std::fill(frame->planes[0].bytes.begin(), frame->planes[0].bytes.end(), Byte{255});
    test::Run(*MakeVideo("portrait", {{"portrait_fillcolor", "0"}}), *frame);
    const auto green = [&](unsigned x, unsigned y) { return int{frame->planes[0].At(4 * x + 1, y)}; };
    EXPECT_EQ(green(320, 11), 0);
    EXPECT_EQ(green(320, 12), 0);
    EXPECT_EQ(green(320, 211), 254); // 255 of 256 parts
    EXPECT_EQ(green(320, 212), 255);
    EXPECT_EQ(green(320, 267), 255);
    EXPECT_EQ(green(320, 268), 255); // the whole picture's weight
    EXPECT_EQ(green(320, 466), 1);   // 2 of 256 parts
}

struct OilCase {
    const char *radius, *levels;
    long r, l;

    void operator()(HostFrame& frame) const {
        if (frame.GetPixelFormat() == BGRA) {
            test::OilPixels(WholePixels(frame), r, l);
            return;
        }
        const test::Layout layout = test::LayoutOf(frame.GetPixelFormat());
        test::OilPlanes(View(frame, 0), View(frame, 1), View(frame, 2), layout.hShift, layout.vShift, r, l);
    }
};

TEST(OilPainting, TakesTheMeanOfTheMostFrequentBrightness) {
    // As made, with the registered texts, and what the small and the large neighbourhoods end at.
    for (const OilCase& c : {OilCase{nullptr, nullptr, 3, 50},
                             {"3", "3", 3, 3},
                             {"0", "0", 0, 0},
                             {"1", "0", 1, 0},
                             {"7", "255", 7, 255},
                             {"8", "20", 8, 20},
                             {"2", "256", 2, 256},
                             {"2147483647", "2147483647", 200, 2147483647}}) {
        Setting setting = {"oilpainting"};
        if (c.radius)
            setting.properties = {{"oilpainting_brushsize", c.radius}, {"oilpainting_coarseness", c.levels}};
        ExpectComputes(setting, kPacked, c);
        ExpectComputes(setting, kPlanarFormats, c);
    }
}

TEST(Paint, LeavesTheFrameWhereNothingCanBePainted) {
    struct Case {
        const char *effect, *property, *value;
    };
    for (const Case& c : {Case{"portrait", "portrait_width", "0"},
                          {"portrait", "portrait_width", "0xffffffff"},
                          {"portrait", "portrait_width", "-20"},
                          {"oilpainting", "oilpainting_brushsize", "-1"},
                          {"oilpainting", "oilpainting_coarseness", "-1"}}) {
        for (const unsigned format : {BGRA, YUV420P}) {
            auto frame = test::MakeFrame({format, 20, 12});
            const HostFrame original = *frame;
            GetBaseException()->Clear();
            test::Run(*MakeVideo(c.effect, {{c.property, c.value}}), *frame);
            test::ExpectSame(*frame, original, c.property);
            EXPECT_EQ(GetBaseException()->GetExceptionCode(), 10021008);
            EXPECT_NE(std::string(GetBaseException()->GetExceptionMsg()).find(c.property), std::string::npos);
        }
    }
}

} // namespace
