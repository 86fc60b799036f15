// The program tells where pictures differ, and by how much.
#include <algorithm>
#include <cmath>
#include <cstdlib>

#include <nlohmann/json.hpp>

#include "tests/cli/program.h"

namespace {

using test::Outcome;
using Strings = std::vector<std::string>;

class CompareProgram : public test::ProgramTest {
protected:
    nlohmann::json Compare(const Strings& arguments, int exitCode) const {
        Strings command = {"compare", "--json"};
        command.insert(command.end(), arguments.begin(), arguments.end());
        const Outcome outcome = Aveffect(command);
        EXPECT_EQ(outcome.exitCode, exitCode) << outcome.messages;
        return nlohmann::json::parse(outcome.output);
    }
};

TEST_F(CompareProgram, FindsTheFrameAndTheErrorThatWerePlanted) {
    MakeClip("a.mkv", "64x48", 8);
    Ffmpeg({"-i", "a.mkv", "-vf", "drawbox=x=8:y=8:w=4:h=4:c=red:t=fill:enable='between(n,3,4)'", "-c:v",
            "ffv1", "b.mkv"});
    Ffmpeg({"-i", "a.mkv", "-c", "copy", "-t", "0.2", "short.mkv"});
    const auto planted = Compare({"a.mkv", "b.mkv"}, 7);
    EXPECT_EQ(planted["first_difference"], (nlohmann::json{{"picture", 3}, {"milliseconds", 120}}));
    EXPECT_EQ(planted["differing"], 2);
    EXPECT_EQ(planted["pictures"], 8);
    EXPECT_LT(planted["ssim"], 1.0);
    const auto cut = Compare({"short.mkv", "a.mkv"}, 7);
    EXPECT_EQ(cut["only_in_b"], 3);
    EXPECT_EQ(cut["differing"], 0);
    const auto same = Compare({"a.mkv", "a.mkv"}, 0);
    EXPECT_TRUE(same["same"]);
    EXPECT_TRUE(same["psnr"].is_null());
}

TEST_F(CompareProgram, RatioAndPictureAreThoseOfTheDifference) {
    MakeStill("a.png", "ff0000");
    MakeStill("b.png", "fa0000");
    const Outcome outcome = Aveffect({"compare", "a.png", "b.png", "--difference", "d.png"});
    EXPECT_EQ(outcome.exitCode, 7);
    const std::string first = Pixels("a.png"), second = Pixels("b.png"), drawn = Pixels("d.png");
    double squares = 0;
    int steps[3], largest = 0;
    for (size_t i = 0; i < 3; ++i) {
        steps[i] = std::abs(static_cast<unsigned char>(first[i]) - static_cast<unsigned char>(second[i]));
        largest = std::max(largest, steps[i]);
        squares += steps[i] * steps[i];
    }
    ASSERT_GT(largest, 1);
    char ratio[32];
    std::snprintf(ratio, sizeof ratio, "PSNR: %.2f dB", 10 * std::log10(255.0 * 255 * 3 / squares));
    EXPECT_NE(outcome.output.find(ratio), std::string::npos) << outcome.output;
    for (size_t i = 0; i < 3; ++i)
        EXPECT_EQ(static_cast<unsigned char>(drawn[i]), steps[i] * (255 / largest)) << i;

    MakeClip("large.mkv", "64x48", 1);
    const Outcome refused = Aveffect({"compare", "a.png", "large.mkv"});
    EXPECT_EQ(refused.exitCode, 2);
    EXPECT_TRUE(test::IsOneMessage(refused.messages));
}

} // namespace
