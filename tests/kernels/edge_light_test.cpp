// Edge light on every pair of differences that three samples can have.
#include <gtest/gtest.h>

#include "AVEffect/kernels/edge_light.h"
#include "aveffect/base_media.h"
#include "tests/support/light.h"

namespace {

// Two rows; in the first one a sample and its right neighbour in turns, below the sample the second row's.
struct AllDifferences {
    std::vector<uint8_t> first, second;

    AllDifferences() {
        for (int dx = -255; dx <= 255; ++dx)
            for (int dy = -255; dy <= 255; ++dy) {
                const int sample = std::max({dx, dy, 0});
                if (sample - std::min(dx, dy) > 255) continue; // there are none
                for (const int x : {sample, sample - dx}) first.push_back(static_cast<uint8_t>(x));
                for (const int x : {sample - dy, 0}) second.push_back(static_cast<uint8_t>(x));
            }
    }
};

TEST(EdgeLight, IsThatOfDoublePrecisionForEveryDifference) {
    const AllDifferences all;
    const size_t width = all.first.size();
    std::vector<int> levels = {-10000, -256, -200, 200, 255, 256, 131072};
    for (int level = -100; level <= 100; ++level) levels.push_back(level);
    std::vector<uint8_t> expected(255 * 255 * 2 + 1), plane;
    for (const int level : levels) {
        for (size_t square = 0; square < expected.size(); ++square)
            expected[square] = test::EdgeLightOf(static_cast<int>(square), level);
        for (const unsigned features : {0u, unsigned{AVBased::kCpuAVX2}, unsigned{AVBased::kCpuAVX512}}) {
            if ((AVBasedGetCPUFeatures() & features) != features) continue;
            plane = all.first;
            plane.insert(plane.end(), all.second.begin(), all.second.end());
            AVBased::kernels::SelectEdgeLightKernels(features).edgeLightComponent(
                {plane.data(), width, width, 2}, level, 0);
            size_t wrong = 0;
            for (size_t i = 0; i + 1 < width; i += 2) {
                const int dx = all.first[i] - all.first[i + 1], dy = all.first[i] - all.second[i];
                wrong += plane[i] != expected[static_cast<size_t>(dx * dx + dy * dy)];
            }
            ASSERT_EQ(wrong, 0u) << "level " << level << ", features " << features;
        }
    }
}

} // namespace
