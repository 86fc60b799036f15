// The progress line fits the terminal and never says more than is known.
#include "cli/progress.h"

#include <gtest/gtest.h>

namespace {

aveffect::RenderProgress Half() { return {150, 300, 2.5, 60, 2.5}; }

TEST(BarText, ShowsHowFarAndHowFast) {
    const std::string text = aveffect::BarText(Half(), 79);
    for (const char* part : {" 50 %", "150/300 frames", "60.0 fps", "0:03 left"})
        EXPECT_NE(text.find(part), std::string::npos) << text;
    const auto filled = std::count(text.begin(), text.end(), '#');
    EXPECT_GT(filled, 0);
    EXPECT_LE(std::abs(filled - std::count(text.begin(), text.end(), '-')), 1) << text;
}

TEST(BarText, FitsEveryWidth) {
    aveffect::RenderProgress huge = {123456789012, 999999999999, 1e9, 123456.7, 1e300};
    for (size_t columns = 0; columns < 200; ++columns) {
        EXPECT_LE(aveffect::BarText(Half(), columns).size(), columns);
        EXPECT_LE(aveffect::BarText(huge, columns).size(), columns);
    }
}

TEST(BarText, LeavesOutWhatIsNotKnown) {
    const std::string text = aveffect::BarText({7, std::nullopt, 1, 7, std::nullopt}, 79);
    EXPECT_EQ(text, "7 frames  7.0 fps");
}

TEST(Percent, StaysBetweenItsEnds) {
    EXPECT_EQ(aveffect::Percent({7, std::nullopt, 1, 7, std::nullopt}), std::nullopt);
    EXPECT_EQ(aveffect::Percent({0, 0, 0, 0, 0}), 100);
    EXPECT_EQ(aveffect::Percent({301, 300, 0, 0, 0}), 100);
}

} // namespace
