/// What settings are at each time: forms, values between keyframes, parts and strength; and what is refused.
#include "host/settings/settings_at_time.h"

#include <cmath>

#include <gtest/gtest.h>

#include "host/support/error.h"

namespace {

using aveffect::Error;
using aveffect::Medium;
using aveffect::ParseEffect;
using aveffect::SettingsAtTime;
using aveffect::TimeSpan;

// Ten seconds at 25 pictures a second.
constexpr TimeSpan kClip{0, 10000, 25, 1};
constexpr unsigned kSettingsWidth = 400, kSettingsHeight = 200;

SettingsAtTime Parsed(const std::string& effect, const TimeSpan& clip = kClip) {
    SettingsAtTime settings(ParseEffect(effect, false), clip);
    settings.FitTo(kSettingsWidth, kSettingsHeight);
    return settings;
}

std::string TextAt(const std::string& effect, double ms) {
    return Parsed(effect).Properties().back().TextAt(ms);
}

TEST(SettingsAtTime, CountTimesInEveryForm) {
    const struct {
        const char* time;
        int ms;
    } cases[] = {{"2", 2000}, {"1.5", 1500}, {"0:01:02.5", 62500}, {"0:02.5", 2500}, {"25f", 1000},
                 {"1f", 40},  {"50%", 5000}, {"-1", 9000},         {"-25%", 7500},   {"-50f", 8000},
                 {"0", 0}};
    for (const auto& [time, ms] : cases) {
        const TimeSpan longer{0, 100000, 25, 1};
        EXPECT_EQ(Parsed(std::string("gray:@from=") + time, ms < 60000 ? kClip : longer).Span().beginMs, ms)
            << time;
    }
    // 29.97 pictures a second: the tenth one begins at 333.67 ms.
    const TimeSpan ntsc{0, 10000, 30000, 1001};
    EXPECT_EQ(Parsed("gray:@from=10f", ntsc).Span().beginMs, 334);
}

TEST(SettingsAtTime, MoveNumbersAsTheMarksSay) {
    const auto at = [](const std::string& keys, double ms) {
        return std::stod(TextAt("brightness-contrast:contrast=" + keys, ms));
    };
    EXPECT_EQ(at("2=10;4=20", 0), 10); // before the first one
    EXPECT_EQ(at("2=10;4=20", 2500), 12.5);
    EXPECT_EQ(at("2=10;4=20", 9000), 20);
    EXPECT_EQ(at("2|=10;4=20", 3999), 10);
    EXPECT_EQ(at("2|=10;4=20", 4000), 20);
    EXPECT_EQ(at("0[ease-in]=0;4=64", 2000), 8); // half, cubed
    EXPECT_EQ(at("0[ease-out]=0;4=64", 2000), 56);
    EXPECT_EQ(at("0[ease-in-out]=0;4=64", 1000), 4); // 4 * (1/4)^3
    EXPECT_EQ(at("0[ease-in-out]=0;4=64", 3000), 60);
    // Catmull-Rom through 0, 10, 30, 40 at even times: half-way (9 * (10 + 30) - (0 + 40)) / 16.
    EXPECT_DOUBLE_EQ(at("0~=0;2~=10;4~=30;6~=40", 3000), 20);
    // The curve through 0, 0, 10, 0 would dip below 0 before the rise; it does not.
    for (int ms = 0; ms <= 6000; ms += 50) {
        const double value = at("0~=0;2~=0;4~=10;6~=0", ms);
        EXPECT_GE(value, 0) << ms;
        EXPECT_LE(value, 10) << ms;
    }
    EXPECT_NEAR(at("0~=0;2~=10;4~=10;6~=0", 1000), 10 * 0.5 + 2 * 0.125 * (5 - 2.5),
                1e-9); // Hermite, tangents 5/s and 2.5/s
}

TEST(SettingsAtTime, RoundWholeNumbersAndKnowOtherKinds) {
    EXPECT_EQ(TextAt("emboss:emboss_level=0=1;10=5", 3700), "2");         // 2.48
    EXPECT_EQ(TextAt("emboss:emboss_level=0=1;10=5", 3800), "3");         // 2.52
    EXPECT_EQ(TextAt("spotlight:spotlight_x=0=10%;10=200", 5000), "120"); // 40 to 200 of 400
    EXPECT_EQ(TextAt("reverse:mirror=0=off;5=on", 4999), "0");            // switches hold
    EXPECT_EQ(TextAt("reverse:mirror=0=off;5=on", 5000), "1");
    // Half of white's light is what sRGB calls 188.
    EXPECT_EQ(TextAt("portrait:portrait_fillcolor=0=#000000;10=#ffffff", 5000), std::to_string(0xBCBCBC));
    EXPECT_EQ(TextAt("portrait:portrait_fillcolor=0=#ff0000;10=#ff0000", 5000), std::to_string(0xFF0000));
}

TEST(SettingsAtTime, KnowPartsAndStrength) {
    const SettingsAtTime part =
        Parsed("brightness-contrast:@from=2:@to=-4:@fade-in=1:@fade-out=50%:@mix=50%:contrast=0%=0;100%=40");
    EXPECT_EQ(part.Span(), (TimeSpan{2000, 6000, 25, 1}));
    EXPECT_EQ(part.LengthMs(), 4000);
    const struct {
        double ms, strength;
    } cases[] = {{1999, 0},    {2000, 0},          {2500, 0.25}, {3000, 0.5}, {3999, 0.5},
                 {5000, 0.25}, {5999, 0.5 / 2000}, {6000, 0},    {9000, 0}};
    for (const auto& [ms, strength] : cases) EXPECT_NEAR(part.StrengthAt(ms), strength, 1e-12) << ms;
    EXPECT_EQ(part.Properties().front().TextAt(3000), "10"); // of the part's own span
    EXPECT_EQ(Parsed("gray:@mix=0=0;10=100").StrengthAt(2500), 0.25);
    EXPECT_EQ(Parsed("gray", {0, std::nullopt}).StrengthAt(123456789), 1);
    const auto area =
        Parsed("gray:@area=0=ellipse,0,0,20,40;10=ellipse,50%,100%,40,20:@mask-feather=0=0;10=10%");
    EXPECT_EQ(area.Area()->At(5000),
              (aveffect::AreaShape{aveffect::AreaShape::Kind::Ellipse, 25, 50, 30, 30}));
    EXPECT_EQ(area.FeatherAt(5000), 10); // half of a tenth of 200
}

TEST(SettingsAtTime, RefuseWithAMarkUnderThePlace) {
    const struct {
        const char *effect, *part, *picture;
    } cases[] = {
        {"spherize:spherize_scale=0%=0;50%2", "'50%2' is no keyframe",
         "spherize_scale=0%=0;50%2\n                    ^~~~"},
        {"spherize:spherize_scale=0%=0;x=2", "'x' is no time",
         "spherize_scale=0%=0;x=2\n                    ^"},
        {"brightness-contrast:contrast=0=0;2=700", "is a number from",
         "contrast=0=0;2=700\n             ^~~~~"},
        {"spherize:spherize_scale=2=0;1=1", "is earlier than",
         "spherize_scale=2=0;1=1\n                   ^~~"},
        {"spherize:spherize_scale=0=0;;2=1", "a keyframe is missing", nullptr},
        {"spherize:spherize_scale=0[bounce]=1", "only [ease-in]", nullptr},
        {"spherize:spherize_scale=0=", "has no value", nullptr},
        {"spherize:spherize_scale=2=0;2000f=1", "lies beyond the effect's end", nullptr},
        {"spherize:spherize_scale=2=0;50f=1", "stands there twice", nullptr},
        {"spherize:spherize_scale=-11=1", "lies before the effect's begin", nullptr},
        {"gray:@area=0=ellipse,0,0,1,1;1=rectangle,0,0,1,1", "an area keeps its shape", nullptr},
        {"gray:@area=circle,1,2,3,4", "an area is rectangle", nullptr},
        {"gray:@from=5:@to=50%", "must lie after @from", nullptr},
        {"gray:@from=11", "beyond the clip's end", nullptr},
        {"gray:@fade-in=11", "longer than the effect", nullptr},
        {"gray:@fade-in=-1", "is a time", nullptr},
        {"gray:@mix=101", "from 0 to 100", nullptr},
        {"gray:@mask-invert=on", "needs @mask or @area", nullptr},
        {"gray:@mask=a.png:@area=ellipse,0,0,1,1", "either", nullptr},
        {"gray:@strength=1", "has no '@strength'", nullptr},
    };
    for (const auto& [effect, part, picture] : cases) {
        try {
            Parsed(effect);
            ADD_FAILURE() << effect << " was taken";
        } catch (const Error& error) {
            EXPECT_NE(std::string(error.what()).find(part), std::string::npos) << error.what();
            EXPECT_TRUE(!picture || error.Picture() == picture) << error.Picture();
        }
    }
    EXPECT_THROW(ParseEffect("volume:@mask=a.png", false, Medium::Audio), Error);
    EXPECT_THROW(Parsed("gray:@to=50%", {0, std::nullopt, 25, 1}), Error); // nobody knows the length
    EXPECT_THROW(SettingsAtTime(ParseEffect("volume:@from=5f", false, Medium::Audio), {0, 1000}), Error);
}

} // namespace
