// Edge light on every pair of differences that three samples can have.
#include <gtest/gtest.h>

#include "aveffect/base_media.h"
#include "kernels/edge_light.h"
#include "tests/support/light.h"

namespace {

TEST(EdgeLight, IsThatOfDoublePrecisionForEveryDifference) {
    // Samples and their right neighbours in turns, and what lies below them.
    std::vector<uint8_t> first, second, expected(255 * 255 * 2 + 1);
    for (int dx = -255; dx <= 255; ++dx)
        for (int dy = -255; dy <= 255; ++dy) {
            const int sample = std::max({dx, dy, 0});
            if (sample - std::min(dx, dy) > 255) continue; // there are none
            for (const int x : {sample, sample - dx}) first.push_back(static_cast<uint8_t>(x));
            for (const int x : {sample - dy, 0}) second.push_back(static_cast<uint8_t>(x));
        }
    std::vector<int> levels = {-10000, -256, -200, 200, 255, 256, 131072};
    for (int level = -100; level <= 100; ++level) levels.push_back(level);
    for (const int level : levels) {
        for (size_t square = 0; square < expected.size(); ++square)
            expected[square] = test::EdgeLightOf(static_cast<int>(square), level);
        for (const unsigned features : {0u, unsigned{AVBased::kCpuAVX2}, unsigned{AVBased::kCpuAVX512}}) {
            if ((AVBasedGetCPUFeatures() & features) != features) continue;
            std::vector<uint8_t> plane = first;
            plane.insert(plane.end(), second.begin(), second.end());
            AVBased::kernels::SelectKernels<AVBased::kernels::EdgeLightKernels>(features).edgeLightComponent(
                {plane.data(), first.size(), first.size(), 2}, level, 0);
            size_t wrong = 0;
            for (size_t i = 0; i < first.size(); i += 2) {
                const int dx = first[i] - first[i + 1], dy = first[i] - second[i];
                const auto square = static_cast<unsigned>(dx * dx + dy * dy);
                wrong += plane[i] != expected[square];
            }
            ASSERT_EQ(wrong, 0u) << "level " << level << ", features " << features;
        }
    }
}

} // namespace
