// Every pair of samples, at every place within a pixel, for the progresses that transitions have.
#include <gtest/gtest.h>

#include <numeric>
#include <random>

#include "aveffect/base_media.h"
#include "kernels/transition.h"

namespace {

using AVBased::kernels::Plane32;
using Pixels = std::vector<uint8_t>;

constexpr size_t kSide = 256;

// Row y and column x hold the pair (y, x), in the other bytes other pairs.
Pixels Samples(bool first) {
    Pixels pixels(kSide * kSide * 4);
    for (size_t y = 0; y < kSide; ++y)
        for (size_t x = 0; x < kSide; ++x) {
            const size_t pairs[4][2] = {{y, x}, {255 - x, y}, {x ^ 85, 255 - y}, {7, 7}};
            for (size_t i = 0; i < 4; ++i)
                pixels[(y * kSide + x) * 4 + i] = static_cast<uint8_t>(pairs[i][first ? 0 : 1]);
        }
    return pixels;
}

Plane32 View(Pixels& pixels) { return {pixels.data(), kSide, kSide * 4, kSide}; }

std::vector<double> Progresses() {
    std::vector<double> all = {
        1e-300, 1e-12, 1 - 1e-12, 1e-7, 1 / 3.0 + 1e-12, 0.25 - 1e-11, 0.4 + 3e-13, -0.5, 2, 1.04, -1e9, 4e9};
    // Whole steps, in lowest terms: frames of spans up to a minute's 60th.
    for (int n = 2; n <= 60; ++n)
        for (int k = 1; k < n; ++k)
            if (std::gcd(k, n) == 1) all.push_back(static_cast<double>(k) / n);
    // Milliseconds, and spans of weeks.
    std::mt19937 random(1);
    for (const unsigned span : {250u, 255u, 510u, 1001u, 2000u, 4294967295u})
        for (int i = 0; i < 40; ++i) all.push_back(static_cast<double>(random() % span) / span);
    return all;
}

uint8_t CrossFaded(int a, int b, double progress) {
    const double sum = a * (1 - progress) + b * progress;
    return sum >= 256 ? 255 : sum < 1 ? 0 : static_cast<uint8_t>(sum);
}

TEST(CrossFade, GivesTheDefinitionsByteForEveryPair) {
    Pixels first = Samples(true), second = Samples(false), expected(first.size(), 99);
    for (const double progress : Progresses()) {
        for (size_t i = 0; i < first.size(); ++i)
            if (i % 4 != 3) expected[i] = CrossFaded(first[i], second[i], progress);
        for (const unsigned level :
             {unsigned{AVBased::kCpuSSE2}, unsigned{AVBased::kCpuAVX2}, unsigned{AVBased::kCpuAVX512},
              AVBased::kCpuAVX512 | AVBased::kCpuAVX512VBMI}) {
            if ((AVBasedGetCPUFeatures() & level) != level) continue;
            Pixels out(first.size(), 99);
            AVBased::kernels::SelectKernels<AVBased::kernels::TransitionKernels>(level).crossFadeRgba32(
                View(out), View(first), View(second), progress);
            ASSERT_EQ(out, expected) << progress << ", level " << level;
        }
    }
}

} // namespace
