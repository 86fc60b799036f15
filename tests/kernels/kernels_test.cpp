// What kernels tell besides what they draw, and the guards that effects are tried with.
#include <gtest/gtest.h>

#include "AVEffect/support/scratch.h"
#include "aveffect/base_media.h"
#include "kernels/filter3x3.h"
#include "tests/support/guarded_bytes.h"

namespace {

TEST(Filter3x3, TrackedTellsWhetherAByteChanged) {
    for (const unsigned features :
         {unsigned{AVBased::kCpuSSE2}, unsigned{AVBased::kCpuAVX2}, unsigned{AVBased::kCpuAVX512}}) {
        if ((AVBasedGetCPUFeatures() & features) != features) continue;
        const auto& kernels = AVBased::kernels::SelectKernels<AVBased::kernels::Filter3x3Kernels>(features);
        for (const size_t width : {9u, 300u})
            for (const size_t changed : {size_t{0}, width / 2, width - 2}) {
                std::vector<uint8_t> picture(width * 5, 60);
                if (changed) picture[2 * width + changed] = 61; // sharpened to 69
                AVBased::Scratch scratch;
                uint8_t* memory = scratch.Require(AVBased::kernels::FilterScratchBytes(width));
                EXPECT_EQ(kernels.sharpenComponent({picture.data(), width, width, 5}, memory, true),
                          changed != 0);
            }
    }
}

TEST(GuardedBytesDeathTest, NoByteBesideThemCanBeTouched) {
    const test::GuardedBytes atEnd(100);
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): a copy is guarded at its other end
    const test::GuardedBytes atStart = atEnd;
    volatile const uint8_t* const behind = atEnd.data() + 100;
    volatile const uint8_t* const before = atStart.data() - 1;
    EXPECT_DEATH(static_cast<void>(*behind), "");
    EXPECT_DEATH(static_cast<void>(*before), "");
}

} // namespace
