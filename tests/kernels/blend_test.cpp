// Two pictures blended: every pair of samples and every mask, and planes of any shape between protected
// pages.
#include <gtest/gtest.h>

#include <functional>
#include <random>

#include "aveffect/base_media.h"
#include "kernels/blend.h"
#include "tests/support/guarded_bytes.h"

namespace {

using namespace AVBased::kernels;
using test::Flush;

// The whole number nearest to a quotient, of two the upper one.
uint8_t Nearest(int dividend, int divisor) {
    return static_cast<uint8_t>((2 * dividend + divisor) / (2 * divisor));
}
uint8_t Mixed(int to, int before, int weight) {
    return Nearest(before * (32768 - weight) + to * weight, 32768);
}
uint8_t Masked(int to, int before, int mask) { return Nearest(before * (255 - mask) + to * mask, 255); }

class Blend : public testing::TestWithParam<unsigned> {
protected:
    void SetUp() override {
        if ((AVBasedGetCPUFeatures() & GetParam()) != GetParam()) GTEST_SKIP();
    }
    const BlendKernels& m_kernels = SelectKernels<BlendKernels>(GetParam());
};
INSTANTIATE_TEST_SUITE_P(Levels, Blend,
                         testing::Values(unsigned{AVBased::kCpuSSE2}, unsigned{AVBased::kCpuAVX2},
                                         unsigned{AVBased::kCpuAVX512},
                                         AVBased::kCpuAVX512 | AVBased::kCpuAVX512VBMI));

TEST_P(Blend, GivesTheNearestByteForEveryPairAndMask) {
    constexpr size_t kSide = 256;
    std::vector<uint8_t> to(kSide * kSide), before(to.size()), mask(to.size()), expected(to.size());
    const auto view = [](std::vector<uint8_t>& bytes) { return Plane8{bytes.data(), kSide, kSide, kSide}; };
    const auto fill = [&](const auto& of) {
        for (size_t i = 0; i < to.size(); ++i) {
            to[i] = static_cast<uint8_t>(i % kSide);
            before[i] = static_cast<uint8_t>(i / kSide);
            expected[i] = of(to[i], before[i]);
        }
    };
    for (const int weight : {0, 1, 63, 64, 8192, 11000, 16383, 16384, 16385, 24576, 32767, 32768}) {
        fill([&](int a, int b) { return Mixed(a, b, weight); });
        m_kernels.mixBytes(view(to), view(before), static_cast<unsigned>(weight));
        ASSERT_EQ(to, expected) << weight;
        fill([&](int, int b) { return Mixed(b, 0, weight); });
        m_kernels.scaleBytes(view(to), view(before), static_cast<unsigned>(weight));
        ASSERT_EQ(to, expected) << weight;
    }
    for (int m = 0; m < 256; ++m) {
        mask.assign(mask.size(), static_cast<uint8_t>(m));
        fill([&](int a, int b) { return Masked(a, b, m); });
        m_kernels.maskBytes(view(to), view(before), view(mask));
        ASSERT_EQ(to, expected) << m;
    }
}

// A plane whose last byte, or first, lies at a protected page.
struct Guarded {
    test::GuardedBytes bytes;
    Plane8 plane;

    Guarded(size_t width, size_t rows, size_t padding, Flush flush, std::mt19937& random)
        : bytes(width + (width + padding) * (rows - 1), uint8_t{}, flush)
        , plane{bytes.data(), width, width + padding, rows} {
        for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random() % 3 ? random() : random() % 2 * 255);
    }
    Guarded(const Guarded& other) = delete;
    uint8_t At(size_t x, size_t y) const { return plane.Row(y)[x]; }
    /// Every byte is what it was, or what of(x, y) says within the rows.
    void Expect(const test::GuardedBytes& old, const std::function<int(size_t x, size_t y)>& of) const {
        for (size_t i = 0; i < bytes.size(); ++i) {
            const size_t x = i % plane.pitch, y = i / plane.pitch;
            ASSERT_EQ(bytes[i], x < plane.width ? of(x, y) : old[i]) << x << ", " << y;
        }
    }
};

TEST_P(Blend, StaysWithinItsPlanes) {
    std::mt19937 random(GetParam());
    for (const size_t width : {1u, 2u, 3u, 15u, 16u, 17u, 31u, 33u, 65u, 127u, 300u})
        for (const Flush flush : {Flush::Start, Flush::End}) {
            SCOPED_TRACE(width);
            Guarded to(width * 4, 3, 5, flush, random);
            const Guarded before(width * 4, 3, 2, flush, random), mask(width * 4, 3, 1, flush, random);
            const auto run = [&](const auto& kernel, const auto& of) {
                const test::GuardedBytes old = to.bytes;
                kernel();
                to.Expect(old, [&](size_t x, size_t y) {
                    return of(old[y * to.plane.pitch + x], before.At(x, y), x, y);
                });
            };
            run([&] { m_kernels.mixBytes(to.plane, before.plane, 12345); },
                [](int a, int b, auto...) { return Mixed(a, b, 12345); });
            run([&] { m_kernels.maskBytes(to.plane, before.plane, mask.plane); },
                [&](int a, int b, size_t x, size_t y) { return Masked(a, b, mask.At(x, y)); });
            run([&] { m_kernels.scaleBytes(to.plane, before.plane, 23456); },
                [](int, int b, auto...) { return Mixed(b, 0, 23456); });
            const Guarded pixelMask(width, 3, 1, flush, random);
            run(
                [&] {
                    m_kernels.maskRgba32({to.plane.data, width, to.plane.pitch, 3},
                                         {before.plane.data, width, before.plane.pitch, 3}, pixelMask.plane);
                },
                [&](int a, int b, size_t x, size_t y) { return Masked(a, b, pixelMask.At(x / 4, y)); });
        }
}

TEST_P(Blend, ShrinksMasksToTheMeanOfEachBlock) {
    std::mt19937 random(7);
    for (const size_t width : {1u, 3u, 4u, 30u, 63u, 64u, 130u, 515u})
        for (unsigned shifts = 0; shifts < 9; ++shifts)
            for (const bool up : {false, true}) { // blocks that the edge cuts
                const unsigned h = shifts % 3, v = shifts / 3;
                const size_t columns = (width + (up ? (1u << h) - 1 : 0)) >> h,
                             rows = (7u + (up ? (1u << v) - 1 : 0)) >> v;
                if (columns == 0) continue;
                SCOPED_TRACE(std::to_string(width) + ", " + std::to_string(h) + std::to_string(v));
                const Guarded mask(width, 7, 3, up ? Flush::Start : Flush::End, random);
                Guarded to(columns, rows, 2, Flush::End, random);
                const test::GuardedBytes old = to.bytes;
                m_kernels.shrinkMask(to.plane, mask.plane, h, v);
                to.Expect(old, [&](size_t x, size_t y) {
                    int sum = 0;
                    for (size_t i = 0; i < size_t{1} << h; ++i)
                        for (size_t j = 0; j < size_t{1} << v; ++j)
                            sum +=
                                mask.At(std::min((x << h) + i, width - 1), std::min((y << v) + j, size_t{6}));
                    return Nearest(sum, 1 << (h + v));
                });
            }
}

} // namespace
