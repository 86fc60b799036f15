// Strokes, portrait frames and oil paint.
#include <gtest/gtest.h>

#include "tests/ledger/confirm.h"
#include "tests/support/effect_cases.h"
#include "tests/support/painted.h"

namespace {

using namespace AVBased;
using namespace test;

Plane View(HostFrame& frame, size_t plane) {
    auto& p = frame.planes[plane];
    return {p.Data(), p.width, p.pitch, p.rows};
}

// B, G and R, or Y, U and V.
std::array<Channel, 3> ChannelsOf(HostFrame& frame) {
    const Plane first = View(frame, 0);
    if (frame.GetPixelFormat() == BGRA) return {Channel{first, 4, 0}, {first, 4, 1}, {first, 4, 2}};
    const Layout layout = LayoutOf(frame.GetPixelFormat());
    return {Channel{first},
            {View(frame, 1), 1, 0, layout.hShift, layout.vShift},
            {View(frame, 2), 1, 0, layout.hShift, layout.vShift}};
}

void DrawStrokes(HostFrame& frame, uint32_t threshold) {
    if (frame.GetPixelFormat() == YUV410P) return; // not drawn
    if (frame.GetPixelFormat() == BGRA) return StrokedPixels(View(frame, 0), threshold);
    FillPitch(frame.planes[1], 117);
    FillPitch(frame.planes[2], 136);
    StrokedSamples(View(frame, 0), threshold);
}

TEST(Stroke, DrawsWhatDiffersByMoreThanThePressureAllows) {
    struct Case {
        Setting setting;
        uint32_t threshold;
    };
    // A value is taken off 100 in 32 bits without sign, and the default's text reads as 0.
    for (const Case& c : {Case{{"stroke"}, 32},
                          {{"stroke", {{"stroke_pressure", "100"}}}, 0},
                          {{"stroke", {{"stroke_pressure", "101"}}}, 4294967295},
                          {{"stroke", {{"stroke_pressure", "0x20"}}}, 100},
                          {{"stroke", {{"stroke_pressure", "-155"}}}, 255},
                          {{"stroke", {{"stroke_pressure", "-156"}}}, 256},
                          {{"stroke", {{"stroke_pressure", "-409"}}}, 509},
                          {{"stroke", {{"stroke_pressure", "-410"}}}, 510},
                          {{"stroke", {{"stroke_pressure", "-919"}}}, 1019}})
        ExpectComputes(c.setting, [&](HostFrame& frame) { DrawStrokes(frame, c.threshold); });
    ledger::ExpectInLedger("stroke", [](const auto& of, HostFrame& frame) {
        DrawStrokes(frame, of.settings.empty() ? 32 : static_cast<uint32_t>(100 - of.Int("stroke_pressure")));
    });
}

struct Frame {
    Setting setting;
    long band;
    uint8_t pixel[4]; // B, G, R, A
    uint8_t samples[3];

    void operator()(HostFrame& frame) const {
        const auto channels = ChannelsOf(frame);
        const bool packed = frame.GetPixelFormat() == BGRA;
        const size_t width = channels[0].Width(), height = channels[0].plane.rows;
        for (size_t i = 0; i < 3; ++i)
            Portrait(channels[i], width, height, band, packed ? pixel[i] : samples[i]);
        if (packed) Portrait({View(frame, 0), 4, 3}, width, height, band, pixel[3], true);
    }
};

TEST(Portrait, FadesFromTheFrameIntoThePicture) {
    const uint8_t y = 84, u = 131, v = 159; // of 0x823456
    for (const Frame& c :
         {Frame{{"portrait"}, 200, {0, 0, 0, 0}, {16, 128, 128}}, // only colours that were set are opaque
          {{"portrait", {{"portrait_fillcolor", "8533078"}, {"portrait_width", "30"}}},
           30,
           {0x56, 0x34, 0x82, 255},
           {y, u, v}},
          {{"portrait", {{"portrait_width", "3"}, {"portrait_fillcolor", "8533078"}}},
           3,
           {0x56, 0x34, 0x82, 255},
           {y, u, v}},
          {{"portrait", {{"portrait_width", "64"}}}, 64, {0, 0, 0, 0}, {16, 128, 128}},
          {{"portrait", {{"portrait_width", "2147483647"}}}, 2147483647, {0, 0, 0, 0}, {16, 128, 128}}})
        ExpectComputes(c.setting, c);
    ledger::ExpectInLedger("portrait", [](const auto& of, HostFrame& frame) {
        const int colour = of.Int("portrait_fillcolor");
        const auto byte = [](int value) { return static_cast<uint8_t>(value); };
        const auto yuv = ledger::CutYuv(colour);
        Frame{{},
              of.Int("portrait_width"),
              {byte(colour), byte(colour >> 8), byte(colour >> 16), byte(of.settings.empty() ? 0 : 255)},
              {byte(yuv[0]), byte(yuv[1]), byte(yuv[2])}}(frame);
    });
}

void PaintInOil(HostFrame& frame, size_t radius, size_t levels) {
    const bool packed = frame.GetPixelFormat() == BGRA;
    Oil(ChannelsOf(frame), packed ? 1 : 0, radius, levels);
    if (packed) ForPixels(frame, [](unsigned char* p) { p[3] = 0; });
}

TEST(OilPainting, TakesTheMeanOfTheMostFrequentBrightness) {
    struct Case {
        const char *radius, *levels;
        size_t r, l;
    };
    // As made, with the registered texts, and where the small and the large neighbourhoods end.
    for (const Case& c : {Case{nullptr, nullptr, 3, 50},
                          {"3", "3", 3, 3},
                          {"0", "0", 0, 0},
                          {"1", "0", 1, 0},
                          {"7", "255", 7, 255},
                          {"8", "20", 8, 20},
                          {"2", "256", 2, 256},
                          {"2147483647", "2147483647", 300, 256}}) {
        Setting setting = {"oilpainting", {}, c.r < 100};
        if (c.radius)
            setting.properties = {{"oilpainting_brushsize", c.radius}, {"oilpainting_coarseness", c.levels}};
        ExpectComputes(setting, [&](HostFrame& frame) { PaintInOil(frame, c.r, c.l); });
    }
    ledger::ExpectInLedger("oilpainting", [](const auto& of, HostFrame& frame) {
        PaintInOil(frame, static_cast<size_t>(of.Int("oilpainting_brushsize")),
                   static_cast<size_t>(of.Int("oilpainting_coarseness")));
    });
}

TEST(Paint, LeavesTheFrameWhereNothingCanBePainted) {
    struct Case {
        const char *effect, *property, *value;
    };
    for (const Case& c : {Case{"portrait", "portrait_width", "-20"},
                          {"oilpainting", "oilpainting_brushsize", "-1"},
                          {"oilpainting", "oilpainting_coarseness", "-1"}})
        ExpectRefuses(c.effect, {{c.property, c.value}}, c.property);
    // No band is nothing to paint, and nothing to say. The registered text counts as 0 too.
    for (const char* width : {"0", "0xffffffff"})
        for (const unsigned format : {BGRA, YUV420P})
            ExpectLeavesAlone(*MakeVideo("portrait", {{"portrait_width", width}}), {format, 20, 12});
}

} // namespace
