#include <gtest/gtest.h>

#include <algorithm>

#include "tests/ledger/confirm.h"
#include "tests/support/effect_cases.h"

namespace {

using namespace AVBased;
using test::HostFrame;
using Byte = unsigned char;

// A 3x3 filter as textbooks have it, from a copy of the whole plane.
template <class Combine>
void Filter(HostFrame::Plane& plane, unsigned step, Combine combine) {
    if (plane.width < 3 * step || plane.rows < 3) return;
    HostFrame::Plane old = plane;
    for (unsigned y = 1; y + 1 < plane.rows; ++y)
        for (unsigned x = step; x + step < plane.width; ++x) {
            int around[3][3];
            for (unsigned j = 0; j < 3; ++j)
                for (unsigned i = 0; i < 3; ++i) around[j][i] = old.At(x + i * step - step, y + j - 1);
            plane.At(x, y) = combine(around);
        }
}

Byte Blur(const int (&p)[3][3]) {
    return static_cast<Byte>((p[0][0] + 2 * p[0][1] + p[0][2] + 2 * p[1][0] + 4 * p[1][1] + 2 * p[1][2] +
                              p[2][0] + 2 * p[2][1] + p[2][2]) /
                             16);
}

Byte Sharpen(const int (&p)[3][3]) {
    int value = 9 * p[1][1];
    for (int j = 0; j < 3; ++j)
        for (int i = 0; i < 3; ++i)
            if (i != 1 || j != 1) value -= p[j][i];
    return static_cast<Byte>(std::clamp(value, 0, 255));
}

template <class Combine>
auto Passes(int count, Combine combine) {
    return [=](HostFrame& frame) {
        for (int pass = 0; pass < count; ++pass)
            for (auto& plane : frame.planes) Filter(plane, frame.GetPixelFormat() == BGRA ? 4 : 1, combine);
    };
}

TEST(Filters, ComputeTheTextbookResultInEveryPlane) {
    for (const int count : {0, 1, 3}) {
        const std::string text = std::to_string(count);
        const test::Setting blur{"simple_gauss_blur", {{"blur_count", text}}};
        const test::Setting sharpen{"simple_laplacian_sharpen", {{"sharpen_count", text}}};
        ASSERT_NO_FATAL_FAILURE(test::ExpectComputes(blur, Passes(count, Blur)));
        ASSERT_NO_FATAL_FAILURE(test::ExpectComputes(sharpen, Passes(count, Sharpen)));
    }
    ledger::ExpectInLedger("simple_gauss_blur", [](const auto& of, HostFrame& frame) {
        Passes(of.Int("blur_count"), Blur)(frame);
    });
    ledger::ExpectInLedger("simple_laplacian_sharpen", [](const auto& of, HostFrame& frame) {
        Passes(of.Int("sharpen_count"), Sharpen)(frame);
    });
}

// Counts beyond all use: a settled picture ends early, an absurd one is refused.
TEST(Filters, LargeCounts) {
    GetBaseException()->Clear();
    const auto blur = test::MakeVideo("simple_gauss_blur", {{"blur_count", "65535"}});
    auto frame = test::MakeFrame({YUV420P, 64, 64});
    for (auto& plane : frame->planes) std::fill(plane.bytes.begin(), plane.bytes.end(), Byte{77});
    const HostFrame original = *frame;
    test::Run(*blur, *frame);
    test::ExpectSame(*frame, original, "flat");
    EXPECT_EQ(GetBaseException()->GetExceptionCode(), 0);
    for (const char* count : {"65536", "-1"})
        test::ExpectRefuses("simple_gauss_blur", {{"blur_count", count}}, "blur_count");
}

} // namespace
