#include <gtest/gtest.h>

#include <set>

#include "AVEffect/support/scratch.h"
#include "aveffect/base_media.h"
#include "kernels/filter3x3.h"
#include "tests/kernels/harness.h"

namespace {

using test::KernelCase;
using test::Plane8;
using test::TryKernel;

struct Level {
    const char* name;
    unsigned features; ///< what the processor must have, and what selects the level
};

class Kernels : public testing::TestWithParam<Level> {};

TEST_P(Kernels, ComputeTheirReferences) {
    const unsigned features = GetParam().features;
    if ((AVBasedGetCPUFeatures() & features) != features)
        GTEST_SKIP() << "this processor lacks " << GetParam().name;
    // Each kernel in depth with its first parameters; the others have fewer inputs that differ.
    std::set<std::string> seen;
    for (const KernelCase& kernelCase : test::KernelCases(features)) {
        const std::string kernel = kernelCase.name.substr(0, kernelCase.name.find(' '));
        EXPECT_EQ(TryKernel(kernelCase, seen.insert(kernel).second), "");
    }
}

INSTANTIATE_TEST_SUITE_P(Levels, Kernels,
                         testing::Values(Level{"SSE2", AVBased::kCpuSSE2}, Level{"AVX2", AVBased::kCpuAVX2},
                                         Level{"AVX512", AVBased::kCpuAVX512},
                                         Level{"AVX512VBMI", AVBased::kCpuAVX512 | AVBased::kCpuAVX512VBMI}),
                         [](const auto& level) { return level.param.name; });

TEST_P(Kernels, TrackedFiltersTellWhetherAByteChanged) {
    const unsigned features = GetParam().features;
    if ((AVBasedGetCPUFeatures() & features) != features)
        GTEST_SKIP() << "this processor lacks " << GetParam().name;
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

// A kernel that inverts samples, with a fault.
KernelCase Inverting(test::PlaneFunction fault) {
    const test::PlaneFunction invert = [](const auto& planes) {
        for (size_t y = 0; y < planes[0].rows; ++y)
            for (size_t x = 0; x < planes[0].width; ++x) planes[0].Row(y)[x] ^= 0xFF;
    };
    return {"planted", 1, 1,
            [=](const auto& planes) {
                invert(planes);
                if (fault) fault(planes);
            },
            invert};
}

TEST(Harness, CatchesPlantedFaults) {
    EXPECT_EQ(TryKernel(Inverting(nullptr)), "");
    const auto tailOffByOne = [](const auto& planes) {
        const Plane8& plane = planes[0];
        if (plane.width % 16 == 1) plane.Row(plane.rows - 1)[plane.width - 1] ^= 0xFF;
    };
    const auto paddingWritten = [](const auto& planes) {
        const Plane8& plane = planes[0];
        if (plane.rows > 1 && plane.pitch > plane.width) plane.Row(0)[plane.width] ^= 1;
    };
    const auto oneInAMillion = [](const auto& planes) {
        for (size_t y = 0; y < planes[0].rows; ++y)
            for (size_t x = 0; x + 4 <= planes[0].width; x += 4) {
                const uint8_t* p = planes[0].Row(y) + x;
                if (p[0] == 3 && p[1] == 200 && p[2] < 16) ++planes[0].Row(y)[x]; // 1 of 2^20 random pixels
            }
    };
    EXPECT_NE(TryKernel(Inverting(tailOffByOne)), "");
    EXPECT_NE(TryKernel(Inverting(paddingWritten)), "");
    EXPECT_NE(TryKernel(Inverting(oneInAMillion)), "");
}

TEST(HarnessDeathTest, PagesAroundThePlaneAreProtected) {
    const auto beyond = [](size_t distance) {
        return Inverting([=](const auto& planes) {
            const Plane8& plane = planes[0];
            volatile uint8_t* row = plane.Row(plane.rows - 1);
            row[plane.width + distance] = row[plane.width + distance];
        });
    };
    EXPECT_DEATH(TryKernel(beyond(0)), "");
    EXPECT_DEATH(TryKernel(Inverting([](const auto& planes) {
                     volatile uint8_t* data = planes[0].data;
                     data[-1] = data[-1];
                 })),
                 "");
}

} // namespace
