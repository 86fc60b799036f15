// Effects and values as people write them.
#include "host/settings/value_text.h"

#include <gtest/gtest.h>

#include "host/effects/effect_chain.h"
#include "host/settings/catalogue_lookup.h"
#include "host/support/error.h"

namespace {

using aveffect::EffectSpec;
using aveffect::Error;
using aveffect::ErrorKind;
using aveffect::ParseEffect;
using aveffect::PropertySetting;
using Settings = std::vector<PropertySetting>;

/// The message of the usage error that the call throws; empty when it throws none.
template <typename Call>
std::string UsageError(Call call) {
    try {
        call();
    } catch (const Error& error) {
        return error.Kind() == ErrorKind::Usage ? error.what() : "another kind of error";
    }
    return {};
}

std::string ParseError(const std::string& text) {
    return UsageError([&] { ParseEffect(text, false); });
}

constexpr AVBased::PropertyChoice kModes[] = {{3, "left", ""}, {7, "right", ""}};
constexpr AVBased::EffectInfo kEffect = {.name = "thing",
                                         .shortName = "thing",
                                         .kind = AVBased::EffectKind::Look,
                                         .traits = 0,
                                         .title = "",
                                         .help = ""};

AVBased::PropertyInfo Property(AVBased::ValueKind kind, double maximum) {
    return {"part", "0",     AVBased::kInt32,     kind, "",      "",    "",
            0,      maximum, AVBased::kNoNeutral, {},   nullptr, kModes};
}

std::string Translated(const AVBased::PropertyInfo& property, const std::string& value) {
    try {
        return aveffect::TranslateValue(kEffect, property, value);
    } catch (const Error&) {
        return "refused";
    }
}

TEST(ParseEffect, ReadsNamesAndSettingsInOrder) {
    const EffectSpec spec =
        ParseEffect("brightness_contrast:contrast=-12.5:brightness=1e1:duration=40", false);
    EXPECT_EQ(spec.name, "brightness_contrast");
    EXPECT_EQ(spec.properties, (Settings{{"contrast", "-12.5"}, {"brightness", "1e1"}, {"duration", "40"}}));
    EXPECT_TRUE(ParseEffect("gray", false).properties.empty());
    EXPECT_EQ(ParseEffect("blur:blur_count=+2", false).name, "simple_gauss_blur");
    EXPECT_EQ(
        ParseEffect("brightness-contrast:brightness=50%:contrast=+12.5%:saturation=-5", false).properties,
        (Settings{{"brightness", "50"}, {"contrast", "12.5"}, {"saturation", "-5"}}));
    // A plug-in that reads numbers in C's way would take a zero in front for base eight.
    EXPECT_EQ(ParseEffect("simple_gauss_blur:blur_count=010", false).properties,
              (Settings{{"blur_count", "10"}}));
}

// What is written beside a preset takes the place of its own.
TEST(ParseEffect, StartsFromPresets) {
    EXPECT_EQ(
        ParseEffect("rotate/twirl:rotate_x=20:rotate_scale=2", false).properties,
        (Settings{{"rotate_r", "", 45}, {"rotate_y", "", 50}, {"rotate_x", "20"}, {"rotate_scale", "2"}}));
    EXPECT_EQ(ParseEffect("popstyle/lemon", true).properties,
              (Settings{{"popstyle_threshold", "100"}, {"popstyle_color", "16769070"}}));
    EXPECT_EQ(ParseError("rotate/twril"), "unknown preset 'twril' of rotate; did you mean 'twirl'?");
    EXPECT_EQ(ParseError("emboss/teapot"),
              "unknown preset 'teapot' of emboss; these are: soft, deep, engraved");
    EXPECT_EQ(ParseError("gray/dark"), "gray has no presets, so no 'dark'");
}

TEST(ParseEffect, TakesEscapesInValues) {
    const EffectSpec spec = ParseEffect(R"(gray:duration=C\:\\a\b=:duration=\)", true);
    EXPECT_EQ(spec.properties, (Settings{{"duration", R"(C:\a\b=)"}, {"duration", "\\"}}));
}

TEST(ParseEffect, NamesTheNearest) {
    EXPECT_EQ(ParseError("grey"), "unknown effect 'grey'; did you mean 'gray'?");
    EXPECT_EQ(ParseError("INVERT"), "unknown effect 'INVERT'; did you mean 'invert'?");
    EXPECT_EQ(ParseError("flip_colro"), "unknown effect 'flip_colro'; did you mean 'flip-color'?");
    EXPECT_EQ(ParseError("Gauss blr"), "unknown effect 'Gauss blr'; did you mean 'blur'?");
    EXPECT_EQ(ParseError("Black and white"), "unknown effect 'Black and white'; did you mean 'gray'?");
    EXPECT_EQ(ParseError("wipe"),
              "unknown effect 'wipe'; did you mean 'clock', 'close-door', 'shutter' or 'push'?");
    EXPECT_EQ(ParseError("simple_gauss_blur:blurcount=2"),
              "unknown property 'blurcount' of blur; did you mean 'blur_count'?");
    EXPECT_EQ(ParseError("gray:durration=2"),
              "unknown property 'durration' of gray; did you mean 'duration'?");
    EXPECT_NE(ParseError("teapot").find("aveffect list"), std::string::npos);
    EXPECT_NE(ParseError("gray:kettle=1").find("aveffect describe gray"), std::string::npos);
    EXPECT_EQ(ParseError(std::string(100000, 'g')).find("did you mean"), std::string::npos);
}

TEST(ParseEffect, RefusesWhatIsNoSetting) {
    for (const char* text :
         {"", ":", ":blur_count=1", "gray:", "gray::duration=1", "gray:=1", "gray:duration"})
        EXPECT_NE(ParseError(text), "") << text;
}

TEST(ParseEffect, SaysTheRange) {
    EXPECT_EQ(ParseError("simple_gauss_blur:blur_count=1.5"),
              "blur_count of blur is a whole number from 0 to 65535, not '1.5'");
    EXPECT_EQ(ParseError("brightness_contrast:contrast=100.01"),
              "contrast of brightness-contrast is a number from -100 to 100 %, not '100.01'");
    for (const char* value : {"", " 1", "1 ", "1x", "0x1", "nan", "inf", "-inf", "1e999", "1,5", "-101", "+",
                              "++1", "+-1", "1%%"})
        EXPECT_NE(ParseError(std::string("brightness_contrast:brightness=") + value), "") << value;
    for (const char* value : {"65536", "-1", "1e1", "99999999999999999999", "1.0"})
        EXPECT_NE(ParseError(std::string("simple_gauss_blur:blur_count=") + value), "") << value;
    EXPECT_EQ(ParseError("simple_gauss_blur:blur_count=65535"), "");
}

TEST(ParseEffect, LenientHandsValuesOnButKnowsNames) {
    EXPECT_EQ(ParseEffect("simple_gauss_blur:blur_count=-7x", true).properties,
              (Settings{{"blur_count", "-7x"}}));
    EXPECT_NE(UsageError([] { ParseEffect("grey", true); }), "");
    EXPECT_NE(UsageError([] { ParseEffect("gray:count=1", true); }), "");
}

TEST(ParseEffect, KeepsPercentagesOfPicturesApart) {
    EXPECT_EQ(ParseEffect("mosaic:mosaic_x1=12.5%:mosaic_y2=30:mosaic_x1=1e2%", false).properties,
              (Settings{{"mosaic_x1", "", 12.5}, {"mosaic_y2", "30"}, {"mosaic_x1", "", 100}}));
    EXPECT_EQ(ParseEffect("mosaic:mosaic_x1=50%", true).properties, (Settings{{"mosaic_x1", "50%"}}));
    EXPECT_EQ(ParseError("mosaic:mosaic_step=50%"),
              "mosaic_step of mosaic is a whole number from 0 to 30, not '50%'");
    EXPECT_EQ(ParseError("mosaic:mosaic_y1=-1%"), "mosaic_y1 of mosaic is a whole number from 0 to 65535 px "
                                                  "or a percentage of the picture's height, not '-1%'");
    for (const char* value : {"%", "5 %", "%5", "5%%", "nan%", "inf%", "1,5%"})
        EXPECT_NE(ParseError(std::string("mosaic:mosaic_x1=") + value), "") << value;
}

TEST(Percentages, BecomeTheNearestPixels) {
    auto length = Property(AVBased::ValueKind::Number, 400);
    length.minimum = -400;
    const auto pixels = [&](AVBased::PixelAxis axis, double percentage, unsigned width, unsigned height) {
        length.pixels = axis;
        return aveffect::PixelsOfPercentage(kEffect, length, percentage, width, height);
    };
    using enum AVBased::PixelAxis;
    EXPECT_EQ(pixels(Width, 50, 64, 48), "32");
    EXPECT_EQ(pixels(Height, 50, 64, 48), "24");
    EXPECT_EQ(pixels(Smaller, 50, 64, 48), "24");
    EXPECT_EQ(pixels(Smaller, 50, 48, 64), "24");
    EXPECT_EQ(pixels(Width, 12.5, 100, 1), "13");  // 12.5
    EXPECT_EQ(pixels(Width, 12.4, 100, 1), "12");  // 12.4
    EXPECT_EQ(pixels(Width, 32.3, 500, 1), "162"); // 161.5, which binary fractions miss
    EXPECT_EQ(pixels(Width, -12.5, 100, 1), "-12");
    EXPECT_EQ(pixels(Width, -0.1, 100, 1), "0");
    EXPECT_EQ(aveffect::ParsePercentage(length, "-5%"), -5);
    EXPECT_EQ(pixels(Width, 400, 100, 1), "400");
    EXPECT_NE(UsageError([&] { pixels(Width, 401, 100, 1); }), "");
    EXPECT_NE(UsageError([&] { pixels(Width, -1e300, 100, 1); }), "");
}

TEST(TranslateValue, Colours) {
    const auto colour = Property(AVBased::ValueKind::Colour, 0xffffff);
    EXPECT_EQ(Translated(colour, "#FF8000"), "16744448");
    EXPECT_EQ(Translated(colour, "0xff8000"), "16744448");
    EXPECT_EQ(Translated(colour, "0000255"), "255");
    for (const char* value : {"#FFF", "#FF80000", "#GG0000", "0x", "#-FF800", "16777216", "-1", "red"})
        EXPECT_EQ(Translated(colour, value), "refused") << value;
}

TEST(TranslateValue, SwitchesChoicesAndPaths) {
    const auto onOff = Property(AVBased::ValueKind::Switch, 1);
    for (const char* on : {"on", "true", "yes", "1"}) EXPECT_EQ(Translated(onOff, on), "1");
    for (const char* off : {"off", "false", "no", "0"}) EXPECT_EQ(Translated(onOff, off), "0");
    EXPECT_EQ(Translated(onOff, "2"), "refused");

    const auto mode = Property(AVBased::ValueKind::Choice, 7);
    EXPECT_EQ(Translated(mode, "right"), "7");
    EXPECT_EQ(Translated(mode, "3"), "3");
    EXPECT_EQ(Translated(mode, "5"), "refused");
    const std::string error = UsageError([&] { aveffect::TranslateValue(kEffect, mode, "up"); });
    EXPECT_EQ(error, "part of thing is one of left (3), right (7), not 'up'");

    const auto path = Property(AVBased::ValueKind::Path, 0);
    EXPECT_EQ(Translated(path, "a b?c=1"), "a b?c=1");
    EXPECT_EQ(Translated(path, ""), "refused");
}

TEST(ParseTime, ReadsSecondsAndClockForms) {
    const std::pair<const char*, int64_t> times[] = {
        {"0", 0},           {"12", 12000},        {"1.5", 1500},
        {".25", 250},       {"90", 90000},        {"1:02.5", 62500},
        {"75:00", 4500000}, {"1:02:03", 3723000}, {"01:00:00.04", 3600040},
        {"0.0004", 0},      {"0.0333333333", 33}, {"2147483.647", 2147483647}};
    for (const auto& [text, milliseconds] : times) EXPECT_EQ(aveffect::ParseTime(text), milliseconds) << text;
    for (const char* text :
         {"", ".", ":", "abc", "-5", "+5", "1:", ":1", "1:60", "1:60:00", "1:2:3:4", "1.5:00", "1e3", "nan",
          "inf", "5s", " 5", "2147483.648", "99999999999999999999:00:00"})
        EXPECT_EQ(aveffect::ParseTime(text), std::nullopt) << text;
}

} // namespace
