/// Functions that round alike on every processor, beside the C library's in 64 bits of precision.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "aveffect/base_media.h"

namespace {

constexpr double kInfinite = std::numeric_limits<double>::infinity();
constexpr double kNoNumber = std::numeric_limits<double>::quiet_NaN();

/// Within one unit in the last place.
void ExpectNear(double found, long double exact, double of) {
    const auto nearest = static_cast<double>(exact);
    EXPECT_GE(found, std::nextafter(nearest, -kInfinite)) << "of " << of;
    EXPECT_LE(found, std::nextafter(nearest, kInfinite)) << "of " << of;
}

TEST(Elementary, AreOffByAUnitAtMost) {
    std::mt19937_64 random(1);
    std::uniform_real_distribution<double> angles(-100, 100), shares(0, 1), exponents(-9, 9);
    for (int i = 0; i < 20000; ++i) {
        const double angle = angles(random), share = shares(random), exponent = exponents(random);
        ExpectNear(AVBasedSine(angle), std::sin(static_cast<long double>(angle)), angle);
        ExpectNear(AVBasedCosine(angle), std::cos(static_cast<long double>(angle)), angle);
        ExpectNear(AVBasedTangent(angle), std::tan(static_cast<long double>(angle)), angle);
        ExpectNear(AVBasedArcCosine(2 * share - 1), std::acos(static_cast<long double>(2 * share - 1)),
                   share);
        ExpectNear(AVBasedPower(share, exponent), std::pow(static_cast<long double>(share), exponent), share);
        if (HasFailure()) return;
    }
}

TEST(Elementary, GiveWhatTheCLibraryGivesAtTheEnds) {
    for (const double x : {0.0, 1.0, 0.5, kInfinite, kNoNumber})
        for (const double y : {0.0, -0.5, 1.0, -kInfinite, kInfinite, kNoNumber}) {
            const double found = AVBasedPower(x, y), wanted = std::pow(x, y);
            EXPECT_TRUE(found == wanted || (std::isnan(found) && std::isnan(wanted))) << x << " to " << y;
        }
    for (const double angle : {kInfinite, kNoNumber}) {
        EXPECT_TRUE(std::isnan(AVBasedSine(angle)));
        EXPECT_TRUE(std::isnan(AVBasedCosine(angle)));
        EXPECT_TRUE(std::isnan(AVBasedTangent(angle)));
    }
    EXPECT_EQ(AVBasedArcCosine(1), 0);
    EXPECT_TRUE(std::isnan(AVBasedArcCosine(1.5)));
}

TEST(Elementary, AreTheNearestSingleNumbersForMany) {
    for (const size_t count : {0u, 1u, 2u, 3u, 7u, 10000u}) {
        std::vector<float> angles(count), sines(count + 1, 9), cosines(count + 1, 9);
        for (size_t i = 0; i < count; ++i) angles[i] = static_cast<float>(i * i) / 70000 - 20;
        AVBasedSinesAndCosines(angles.data(), sines.data(), cosines.data(), count);
        for (size_t i = 0; i < count; ++i) {
            const long double angle = angles[i];
            ASSERT_EQ(sines[i], static_cast<float>(std::sin(angle))) << angle;
            ASSERT_EQ(cosines[i], static_cast<float>(std::cos(angle))) << angle;
        }
        EXPECT_EQ(sines[count], 9);
        EXPECT_EQ(cosines[count], 9);
    }
}

} // namespace
