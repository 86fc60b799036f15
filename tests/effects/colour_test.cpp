// Each effect against a plain computation from its formula, and against values worked out by hand.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>

#include "tests/ledger/confirm.h"
#include "tests/support/effect_cases.h"

namespace {

using namespace AVBased;
using namespace test;
using Byte = unsigned char;

Byte Clamp(long long value) { return static_cast<Byte>(std::clamp(value, 0LL, 255LL)); }
long long FloorShift8(long long value) {
    return static_cast<long long>(std::floor(static_cast<double>(value) / 256));
}

// Without settings, and as the ledger has it.
void ExpectAlways(const char* effect, const Plain& packed, const Plain& planar) {
    ExpectComputes({effect}, packed, planar);
    ledger::ExpectInLedger(effect, packed, planar);
}

TEST(Gray, TakesTheMeanOrFillsChroma) {
    ExpectAlways(
        "gray",
        [](HostFrame& frame) {
            ForPixels(frame,
                      [](Byte* p) { p[0] = p[1] = p[2] = static_cast<Byte>((p[0] + p[1] + p[2]) / 3); });
        },
        [](HostFrame& frame) {
            FillPitch(frame.planes[1], 127);
            FillPitch(frame.planes[2], 127);
        });
}

TEST(FlipColor, SwapsBlueAndRedOrThePlanes) {
    ExpectAlways(
        "flip_color", [](HostFrame& frame) { ForPixels(frame, [](Byte* p) { std::swap(p[0], p[2]); }); },
        [](HostFrame& frame) {
            for (unsigned y = 0; y < frame.planes[1].rows; ++y)
                for (unsigned x = 0; x < frame.planes[1].width; ++x)
                    std::swap(frame.planes[1].At(x, y), frame.planes[2].At(x, y));
        });
}

TEST(Invert, ComplementsAllButAlpha) {
    const auto invert = [](Byte& x) { x = static_cast<Byte>(255 - x); };
    ExpectAlways(
        "invert",
        [=](HostFrame& frame) { ForPixels(frame, [=](Byte* p) { std::for_each(p, p + 3, invert); }); },
        [=](HostFrame& frame) {
            for (size_t i = 0; i < 3; ++i) ForSamples(frame.planes[i], invert);
        });
}

TEST(AgedFilm, TintsAndLiftsTheDark) {
    ExpectAlways(
        "aged_film",
        [](HostFrame& frame) {
            ForPixels(frame, [](Byte* p) {
                int mean = (p[0] + p[1] + p[2]) / 3;
                if (mean < 36) mean = 35;
                p[0] = static_cast<Byte>(mean - 35);
                p[1] = static_cast<Byte>(mean - 15);
                p[2] = static_cast<Byte>(mean);
            });
        },
        [](HostFrame& frame) {
            FillPitch(frame.planes[1], 117);
            FillPitch(frame.planes[2], 136);
        });
}

// The definition in wide integers and doubles.
struct BrightnessContrast {
    double brightness, contrast, saturation;

    Byte Table(int i, long long offset) const {
        const auto gain = static_cast<long long>((contrast / 100 + 1) * 256);
        return Clamp(FloorShift8((i - 127) * gain) + offset);
    }
    Byte Packed(int i) const { return Table(i, static_cast<long long>(brightness * 255 / 100) + 127); }
    void operator()(HostFrame& frame) const {
        const auto gain = static_cast<long long>((saturation + 100) * 5.12);
        if (frame.GetPixelFormat() == BGRA) {
            ForPixels(frame, [&](Byte* p) {
                for (int i = 0; i < 3; ++i) p[i] = Packed(p[i]);
                if (saturation == 0) return;
                const int mean = (p[0] + p[1] + p[2]) / 3;
                for (int i = 0; i < 3; ++i) p[i] = Clamp(mean + FloorShift8((p[i] - mean) * gain));
            });
            return;
        }
        if (brightness != 0 || contrast != 0)
            ForSamples(frame.planes[0],
                       [&](Byte& y) { y = Table(y, static_cast<long long>(brightness * 1.27) + 127); });
        if (saturation == 0) return;
        for (size_t i = 1; i < 3; ++i)
            ForSamples(frame.planes[i], [&](Byte& u) { u = Clamp(FloorShift8((u - 127) * gain) + 127); });
    }
};

TEST(BrightnessContrastEffect, ComputesItsFormulas) {
    for (const BrightnessContrast& c : {BrightnessContrast{0, 0, 0},
                                        {30, 0, 0},
                                        {-100, 0, 0},
                                        {100, 100, 0},
                                        {0, -100, 0},
                                        {0, 37.5, 0},
                                        {0, 0, 100},
                                        {0, 0, -100},
                                        {0, 0, -50},
                                        {0, 0, 0.001},
                                        {-12.3, 45.6, -78.9},
                                        {64, -20, 33}}) {
        const Setting setting{"brightness_contrast",
                              {{"brightness", std::to_string(c.brightness)},
                               {"contrast", std::to_string(c.contrast)},
                               {"saturation", std::to_string(c.saturation)}}};
        ASSERT_NO_FATAL_FAILURE(ExpectComputes(setting, c));
    }
    ledger::ExpectInLedger("brightness_contrast", [](const auto& of, HostFrame& frame) {
        BrightnessContrast{of.Number("brightness"), of.Number("contrast"), of.Number("saturation")}(frame);
    });
}

TEST(BrightnessContrastEffect, ClampsWhatItStoresAndKeepsTheText) {
    using Texts = std::vector<std::pair<std::string, std::string>>;
    const Texts beyond = {{"brightness", "250"}, {"contrast", "-101"}, {"saturation", "1e9"}};
    ExpectComputes({"brightness_contrast", beyond}, kPacked, BrightnessContrast{100, -100, 100});
    EXPECT_STREQ(MakeVideo({"brightness_contrast", beyond})->GetProperty("brightness", nullptr), "250");
    // Setting something else must not disturb them; text that is no number keeps the stored, clamped number.
    Texts more = beyond;
    more.insert(more.end(), {{"duration", "-5"}, {"brightness", "x"}});
    ExpectComputes({"brightness_contrast", more}, kPlanarFormats, BrightnessContrast{100, -100, 100});
}

TEST(BrightnessContrastEffect, HandWorkedValues) {
    auto frame = MakeFrame({BGRA, 1, 1});
    // Contrast 100 doubles the distance from 127: 100 -> 73, 150 -> 173, 250 -> 255. Brightness 10 adds 25.
    std::memcpy(frame->planes[0].Data(), "\x64\x96\xFA\x05", 4);
    test::Run(*MakeVideo("brightness_contrast", {{"contrast", "100"}}), *frame);
    EXPECT_EQ(std::memcmp(frame->planes[0].Data(), "\x49\xAD\xFF\x05", 4), 0);
    test::Run(*MakeVideo("brightness_contrast", {{"brightness", "10"}}), *frame);
    EXPECT_EQ(std::memcmp(frame->planes[0].Data(), "\x62\xC6\xFF\x05", 4), 0);
    // Saturation -100 leaves the mean, (98 + 198 + 255) / 3 = 183.
    test::Run(*MakeVideo("brightness_contrast", {{"saturation", "-100"}}), *frame);
    EXPECT_EQ(std::memcmp(frame->planes[0].Data(), "\xB7\xB7\xB7\x05", 4), 0);
    // Luma: brightness 10 adds 12 only.
    auto planar = MakeFrame({YUV420P, 2, 2});
    std::memset(planar->planes[0].Data(), 100, 4);
    test::Run(*MakeVideo("brightness_contrast", {{"brightness", "10"}}), *planar);
    EXPECT_EQ(planar->planes[0].At(1, 1), 112);
}

TEST(BrightnessContrastEffect, RefusesWhatIsNoNumber) {
    for (const char* property : {"brightness", "contrast", "saturation"}) {
        ASSERT_NO_FATAL_FAILURE(
            ExpectRefuses("brightness_contrast", {{"brightness", "5"}, {property, "nan"}}, property));
        // Where there is no byte to make there is nothing to refuse.
        const auto proc = MakeVideo("brightness_contrast", {{property, "nan"}});
        for (const Shape& shape : {Shape{RGB24, 33, 5}, {BGRA, 0, 5}, {YUV420P, 0, 5}})
            ExpectLeavesAlone(*proc, shape);
    }
}

// Null addresses for planes that the setting leaves alone, 1 to 4 as bits of a mask.
TEST(ColourEffects, AskForMemoryOnlyOfWhatTheyTouch) {
    struct Case {
        Setting setting;
        unsigned untouched;
    };
    for (const Case& c : {Case{{"gray"}, 0b1001},
                          {{"aged_film"}, 0b1001},
                          {{"flip_color"}, 0b1001},
                          {{"invert"}, 0b1000},
                          {{"brightness_contrast"}, 0b1111},
                          {{"brightness_contrast", {{"contrast", "5"}}}, 0b1110},
                          {{"brightness_contrast", {{"saturation", "5"}}}, 0b1001},
                          {{"simple_gauss_blur", {{"blur_count", "0"}}}, 0b1111},
                          {{"simple_gauss_blur"}, 0b0000}})
        for (unsigned missing = 0; missing < 4; ++missing) {
            auto whole = MakeFrame({YUVA420P, 16, 8});
            HostFrame expected = *whole;
            std::vector<MemoryFrame::Plane> planes;
            for (HostFrame::Plane& p : whole->planes) planes.push_back({p.Data(), p.width, p.pitch, p.rows});
            planes[missing].data = nullptr;
            MemoryFrame frame(YUVA420P, 16, 8, planes);
            const bool serves = c.untouched >> missing & 1;
            GetBaseException()->Clear();
            test::Run(*MakeVideo(c.setting), frame);
            EXPECT_EQ(GetBaseException()->GetExceptionCode(), serves ? 0 : 10021008)
                << c.setting.effect << missing;
            if (serves) test::Run(*MakeVideo(c.setting), expected);
            expected.planes[missing] = whole->planes[missing];
            ExpectSame(*whole, expected, c.setting.effect);
        }
}

} // namespace
