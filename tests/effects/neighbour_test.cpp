// Dilate, erode and relief.
#include "tests/support/neighbours.h"

#include <cmath>
#include <numbers>

#include "tests/ledger/confirm.h"
#include "tests/support/effect_cases.h"

namespace {

using namespace AVBased;
using test::HostFrame;

// change(plane, bytes from a sample to the next) on the pixels, or on luma and chroma each by itself.
using Change = std::function<void(test::Plane8, size_t)>;

void ForPlanes(HostFrame& frame, const Change& change) {
    const bool packed = frame.GetPixelFormat() == BGRA;
    for (size_t i = 0; i < (packed ? 1 : 3); ++i)
        if (auto& plane = frame.planes[i]; plane.width > 0 && plane.rows > 0)
            change({plane.Data(), plane.width, plane.pitch, plane.rows}, packed ? 4 : 1);
}

void ExpectChanges(const test::Setting& setting, const Change& change) {
    test::ExpectComputes(setting, [&](HostFrame& frame) { ForPlanes(frame, change); });
}

TEST(Morphology, TakesExtremesOfBlocksThatEndOrBeginAtTheSample) {
    const auto expect = [](const char* effect, const Change& change) {
        ExpectChanges({effect}, change);
        const auto plain = [&](HostFrame& frame) { ForPlanes(frame, change); };
        ledger::ExpectInLedger(effect, plain, plain);
    };
    expect("dilate", test::TakeExtreme<true>);
    expect("erode", test::TakeExtreme<false>);
}

TEST(Relief, WeighsNeighboursByTheLightsAngle) {
    const int16_t at40[] = {22, -164, -255, 196, 256, -196, 255, 164, -22};
    const int16_t at45[] = {0, -181, -256, 181, 256, -181, 256, 181, 0};
    const int16_t at0[] = {181, 0, -181, 256, 256, -256, 181, 0, -181};
    const int16_t below[] = {181, 256, 181, 0, 256, 0, -181, -256, -181};
    ExpectChanges({"relief"}, [&](auto plane, size_t step) { test::Relief(plane, step, at40); });
    for (const auto& [angle, weights] :
         {std::pair{"40", at40}, {"45", at45}, {"405", at45}, {"0", at0}, {"-90", below}, {"630", below}})
        // Other properties leave the weights as they are.
        ExpectChanges({"relief", {{"relief_angle", angle}, {"duration", "7"}}},
                      [&, of = weights](auto plane, size_t step) { test::Relief(plane, step, of); });
}

// Each neighbour's weight is how far it lies away from the light, which its angle turns against the clock.
TEST(Relief, IsAsInTheLedger) {
    constexpr int kDirections[] = {135, 90, 45, 180, -1, 0, 225, 270, 315};
    ledger::ExpectInLedger("relief", [&](const auto& of, HostFrame& frame) {
        int16_t weights[9];
        for (size_t i = 0; i < 9; ++i) {
            const double away = (kDirections[i] - of.Int("relief_angle")) * std::numbers::pi / 180;
            weights[i] = static_cast<int16_t>(i == 4 ? 256 : -std::cos(away) * 256);
        }
        ForPlanes(frame, [&](auto plane, size_t step) { test::Relief(plane, step, weights); });
    });
}

// What is flat loses the fractions of the negative terms, and at the border what is not there.
TEST(Relief, FlatPictureByHand) {
    auto frame = test::MakeFrame({YUV420P, 3, 3});
    test::FillPitch(frame->planes[0], 100);
    test::Run(*test::MakeVideo("relief"), *frame);
    // 100 * weight >> 8 row by row: 8 -65 -100, 76 100 -77, 99 64 -9.
    EXPECT_EQ(frame->planes[0].bytes, (test::GuardedBytes{78, 253, 255, 0, 96, 255, 0, 0, 119}));
}

} // namespace
