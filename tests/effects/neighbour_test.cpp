// Dilate and erode.
#include "tests/support/neighbours.h"

#include "tests/support/effect_cases.h"

namespace {

using namespace AVBased;
using test::HostFrame;

// change(plane, bytes from a sample to the next) on the pixels, or on luma and chroma each by itself.
void ExpectChanges(const test::Setting& setting, const std::function<void(test::Plane8, size_t)>& change) {
    const auto plain = [&](HostFrame& frame) {
        const bool packed = frame.GetPixelFormat() == BGRA;
        for (size_t i = 0; i < (packed ? 1 : 3); ++i)
            if (auto& plane = frame.planes[i]; plane.width > 0 && plane.rows > 0)
                change({plane.Data(), plane.width, plane.pitch, plane.rows}, packed ? 4 : 1);
    };
    ASSERT_NO_FATAL_FAILURE(test::ExpectComputes(setting, test::kPacked, plain));
    ASSERT_NO_FATAL_FAILURE(test::ExpectComputes(setting, test::kPlanarFormats, plain));
}

TEST(Morphology, TakesExtremesOfBlocksThatEndOrBeginAtTheSample) {
    ExpectChanges({"dilate"}, test::TakeExtreme<true>);
    ExpectChanges({"erode"}, test::TakeExtreme<false>);
    for (const bool dilates : {true, false}) { // one white pixel on black
        auto frame = test::MakeFrame({BGRA, 40, 20});
        auto& plane = frame->planes[0];
        test::FillPitch(plane, 0);
        std::fill_n(&plane.At(4 * 10, 10), 3, 255);
        test::Run(*test::MakeVideo(dilates ? "dilate" : "erode"), *frame);
        for (unsigned y = 0; y < 20; ++y)
            for (unsigned x = 0; x < 160; ++x) {
                const bool white = dilates && x / 4 >= 10 && x / 4 <= 12 && y >= 10 && y <= 12 && x % 4 != 3;
                EXPECT_EQ(plane.At(x, y), white ? 255 : 0) << x << ", " << y;
            }
    }
}

} // namespace
