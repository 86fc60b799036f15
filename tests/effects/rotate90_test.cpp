// Turns by quarters: the picture, the rectangle that it stands in, and what is reported.
#include <gtest/gtest.h>

#include <cmath>

#include "aveffect/base_property.h"
#include "tests/ledger/confirm.h"
#include "tests/support/effect_cases.h"
#include "tests/support/turned.h"

namespace {

using namespace AVBased;
using namespace test;
using Byte = unsigned char;
using kernels::PlaneArea;

constexpr unsigned kServed[] = {BGRA, YUV420P};

Setting Direction(const std::string& text) { return {"EffectNameRotate90X", {{"Rotate90XDerection", text}}}; }

// Start and size along the longer side.
std::pair<size_t, size_t> SpanOf(size_t shorter, size_t longer, size_t step) {
    const double fitting = static_cast<double>(shorter * shorter) / static_cast<double>(longer);
    const auto steps = static_cast<size_t>(std::floor(fitting / static_cast<double>(step) + 0.5));
    const size_t size = std::max(steps, size_t{1}) * step;
    return {(longer - size) / 2 / step * step, size};
}

void QuarterTurn(HostFrame& frame, bool clockwise) {
    const bool packed = frame.GetPixelFormat() == BGRA;
    const size_t unit = packed ? 4 : 1;
    const size_t width = frame.planes[0].width / unit, height = frame.planes[0].rows;
    for (size_t i = 0; i < frame.planes.size(); ++i) {
        HostFrame::Plane& plane = frame.planes[i];
        if (plane.width == 0 || plane.rows == 0) continue;
        PlaneArea area{0, 0, plane.width / unit, plane.rows};
        const auto [start, size] = SpanOf(std::min(width, height), std::max(width, height), packed ? 1 : 2);
        const size_t part = i ? 2 : 1;
        if (width > height && size < width) {
            area.left = start / part;
            area.width = size / part;
        } else if (height > width && size < height) {
            area.top = start / part;
            area.height = size / part;
        }
        Turned({plane.Data(), plane.width, plane.pitch, plane.rows}, unit, area, clockwise,
               packed ? 0xFF000000
               : i    ? 128
                      : 16);
    }
}

void HalfTurn(HostFrame& frame) {
    const unsigned unit = frame.GetPixelFormat() == BGRA ? 4 : 1;
    for (HostFrame::Plane& plane : frame.planes) {
        HostFrame::Plane old = plane;
        for (unsigned y = 0; y < plane.rows; ++y)
            for (unsigned x = 0; x < plane.width; ++x)
                plane.At(x, y) = old.At(plane.width - unit - x / unit * unit + x % unit, plane.rows - 1 - y);
    }
}

TEST(Rotate90X, TurnsByQuarters) {
    for (const auto& [text, clockwise] : {std::pair{"1", true}, {"3", false}, {"-1", false}, {"5", true}})
        ASSERT_NO_FATAL_FAILURE(ExpectComputes(
            Direction(text), kServed, [turn = clockwise](HostFrame& frame) { QuarterTurn(frame, turn); }));
    for (const char* text : {"0", "4", "-4"})
        ASSERT_NO_FATAL_FAILURE(ExpectComputes(Direction(text), kServed, [](HostFrame&) {}));
    ASSERT_NO_FATAL_FAILURE(ExpectComputes(Direction("-2"), kServed, HalfTurn));
    ledger::ExpectInLedger("EffectNameRotate90X", [](const auto& of, HostFrame& frame) {
        const int quarters = of.Int("Rotate90XDerection") & 3;
        if (quarters == 2) return HalfTurn(frame);
        if (quarters) QuarterTurn(frame, quarters == 1);
    });
}

TEST(Rotate90X, TurnsTallFrames) {
    ForLevels([] {
        for (const unsigned format : kServed)
            for (const auto& [width, height] :
                 {std::pair{9u, 33u}, {40u, 71u}, {68u, 68u}, {1u, 2u}, {3u, 300u}, {301u, 523u}})
                ASSERT_NO_FATAL_FAILURE(ExpectFrame(
                    *MakeVideo(Direction("1")), {format, width, height, 5, 1, height % 4 == 1},
                    [](HostFrame& frame) { QuarterTurn(frame, true); }, "tall"));
    });
}

// Two rows become one, 30 40 50 60, and four columns two: 35 over 55 in the middle.
TEST(Rotate90X, ByHand) {
    for (const char* direction : {"1", "3"}) {
        auto frame = MakeFrame({BGRA, 4, 2});
        for (unsigned i = 0; i < 32; ++i) frame->planes[0].bytes[i] = static_cast<Byte>(i / 4 * 10 + 10);
        test::Run(*MakeVideo(Direction(direction)), *frame);
        const bool clockwise = *direction == '1';
        for (unsigned y = 0; y < 2; ++y)
            for (unsigned i = 0; i < 16; ++i) {
                const int black = i % 4 == 3 ? 255 : 0;
                EXPECT_EQ(frame->planes[0].At(i, y), i / 4 != 1 ? black : (y == 0) == clockwise ? 35 : 55);
            }
    }
}

IAVBaseProperty& Properties(IVideoProc& proc) {
    return *static_cast<IAVBaseProperty*>(proc.GetInterface("EffectInterfaceNameProp"));
}

std::vector<int> Rectangle(IVideoProc& proc) {
    std::vector<int> values;
    for (const char* name :
         {"EffectRotate90XOffX", "EffectRotate90XOffY", "EffectRotate90XOffW", "EffectRotate90XOffH"}) {
        int value = -1;
        EXPECT_TRUE(Properties(proc).GetProp(name, &value));
        values.push_back(value);
    }
    return values;
}

TEST(Rotate90X, TellsTheRectangle) {
    struct Case {
        unsigned format, width, height;
        const char* direction;
        std::vector<int> rectangle;
    };
    const auto proc = MakeVideo(Direction("1"));
    EXPECT_EQ(Rectangle(*proc), (std::vector<int>(4)));
    for (const Case& c : {Case{BGRA, 1920, 1080, "1", {656, 0, 608, 1080}}, // 607.5
                          {BGRA, 1080, 1920, "3", {0, 656, 1080, 608}},
                          {BGRA, 720, 576, "1", {129, 0, 461, 576}}, // 460.8
                          {YUV420P, 720, 576, "1", {130, 0, 460, 576}},
                          {BGRA, 7, 5, "1", {1, 0, 4, 5}}, // 3.57
                          {YUV420P, 7, 5, "1", {0, 0, 4, 5}},
                          {YUV420P, 5, 1, "1", {0, 0, 2, 1}},
                          {BGRA, 100, 1, "1", {49, 0, 1, 1}},
                          {BGRA, 16, 16, "1", {0, 0, 16, 16}},
                          {BGRA, 9, 4, "2", {0, 0, 9, 4}},
                          {YUV420P, 9, 5, "0", {0, 0, 9, 5}}}) {
        proc->SetProperty("Rotate90XDerection", c.direction);
        test::Run(*proc, *MakeFrame({c.format, c.width, c.height}));
        EXPECT_EQ(Rectangle(*proc), c.rectangle) << c.width << " by " << c.height;
    }
}

TEST(Rotate90X, ReportsWhatItDoesNotServe) {
    for (const char* direction : {"0", "1", "2"}) {
        const auto proc = MakeVideo(Direction(direction));
        ExpectRefuses(*proc, {YUVJ420P, 20, 10}, "rotate 90 effect only support BGRA/yuv pixfmt, value:12");
        int value = 7;
        for (const auto& [name, to, code] : {std::tuple{"EffectRotate90XOffZ", &value, 10021005},
                                             {static_cast<const char*>(nullptr), &value, 10021003},
                                             {"EffectRotate90XOffX", static_cast<int*>(nullptr), 10021003}}) {
            EXPECT_FALSE(Properties(*proc).GetProp(name, to));
            EXPECT_EQ(GetBaseException()->GetExceptionCode(), code);
        }
        EXPECT_STREQ(GetBaseException()->GetExceptionMsg(), "Bad pointer");
        EXPECT_EQ(value, 7);
    }
}

} // namespace
