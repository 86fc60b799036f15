// Fades against their formulas in wide integers, and against values worked out by hand.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "tests/ledger/confirm.h"
#include "tests/support/effect_cases.h"

namespace {

using namespace AVBased;
using namespace test;
using Byte = unsigned char;

constexpr unsigned kWithAlpha[] = {BGRA, YUVA420P, YUVA444P};
constexpr unsigned kWithoutAlpha[] = {YUV420P, YUV422P, YUV410P, YUV411P, YUVJ420P, YUVJ422P};

Byte Shifted8(long long value) { return static_cast<Byte>(std::clamp(value >> 8, 0LL, 255LL)); }

void ScaleAlpha(HostFrame& frame, long long level) {
    if (frame.GetPixelFormat() == BGRA)
        ForPixels(frame, [=](Byte* p) { p[3] = Shifted8(p[3] * level); });
    else
        ForSamples(frame.planes[3], [=](Byte& a) { a = Shifted8(a * level); });
}

// B, G, R or Y, U, V of the colour in turn.
struct Colour {
    int bytes[3];
};

auto Mix(Colour packed, Colour planar, long long level) {
    return [=](HostFrame& frame) {
        const auto mix = [=](Byte c, int k) { return Shifted8(c * level + k * (256 - level)); };
        if (frame.GetPixelFormat() == BGRA) {
            ForPixels(frame, [&](Byte* p) {
                for (int i = 0; i < 3; ++i) p[i] = mix(p[i], packed.bytes[i]);
            });
            return;
        }
        for (size_t i = 0; i < 3; ++i)
            ForSamples(frame.planes[i], [&](Byte& c) { c = mix(c, planar.bytes[i]); });
    };
}

constexpr Colour kBlackBgr{{0, 0, 0}}, kBlackYuv{{16, 128, 128}};

const auto kUnchanged = [](HostFrame&) {};

TEST(AlphaFades, ScaleAlphaByTheLevelOfTheMoment) {
    struct Case {
        Setting setting;
        int time;
        long long level;
    };
    for (const Case& c : {
             Case{{"fadein", {{"duration", "100"}}}, 0, 0},
             {{"fadein", {{"duration", "100"}}}, 33, 84},
             {{"fadein", {{"duration", "100"}}}, 100, 255},
             {{"fadein", {{"duration", "100"}, {"FadeMin", "128"}}}, 20, 128},
             {{"fadein", {{"duration", "100"}, {"FadeMin", "200"}, {"FadeMax", "90"}}}, 20, 200},
             {{"fadein", {{"duration", "100"}, {"FadeMax", "256"}}}, 100, 256},
             {{"fadeout", {{"duration", "100"}}}, 0, 255},
             {{"fadeout", {{"duration", "100"}}}, 33, 171},
             {{"fadeout", {{"duration", "100"}, {"FadeMax", "60"}}}, 33, 60},
             {{"fadeout", {{"duration", "100"}}}, 100, 0},
             // Beyond 256, and beyond 16 bits: samples reach the limit.
             {{"fadein", {{"duration", "100"}, {"FadeMin", "700"}}}, 20, 700},
             {{"fadein", {{"duration", "100"}, {"FadeMin", "65280"}}}, 20, 65280},
             {{"fadein", {{"duration", "100"}, {"FadeMin", "65536"}}}, 20, 65536},
             {{"fadein", {{"duration", "100"}, {"FadeMin", "-1"}}}, 20, 4294967295},
             // The shift of the position wraps in 32 bits: 2^24 + 5 counts as 5.
             {{"fadein", {{"duration", "20000000"}, {"FadeMin", "3"}}}, 16777221, 3},
         })
        ASSERT_NO_FATAL_FAILURE(ExpectComputes(
            c.setting, kWithAlpha, [&](HostFrame& frame) { ScaleAlpha(frame, c.level); }, c.time));
}

TEST(AlphaFades, LeavePicturesWithoutAlphaAlone) {
    ExpectComputes({"fadein", {{"duration", "100"}}}, kWithoutAlpha, kUnchanged, 50);
    ExpectComputes({"fadeout", {{"duration", "100"}}}, kWithoutAlpha, kUnchanged, 50);
}

TEST(DirectFades, MixTowardsTheColour) {
    const Colour bgr{{0x56, 0x34, 0x82}}; // 0x823456
    // 0.257 * 130 + 0.504 * 52 + 0.098 * 86 + 16 = 84.046, and so on, cut.
    const Colour yuv{{84, 131, 159}};
    const auto expect = [](const Setting& setting, Colour packed, Colour planar, long long level, int time) {
        const auto mix = Mix(packed, planar, level);
        ASSERT_NO_FATAL_FAILURE(ExpectComputes(setting, mix, mix, time));
    };
    for (const auto& [time, level] : {std::pair{0, 256}, {25, 192}, {33, 171}, {100, 0}})
        expect({"directfadeout", {{"duration", "100"}, {"fadeout_color", "8533078"}}}, bgr, yuv, level, time);
    // The same at every moment of the span: 15360 / duration.
    for (const auto& [duration, level] : {std::pair{"60", 256}, {"120", 128}, {"100", 153}, {"9", 256}})
        for (const int time : {0, 7})
            expect({"directfadein", {{"duration", duration}}}, kBlackBgr, kBlackYuv, level, time);
    expect({"directfadein", {{"duration", "100"}, {"fadein_max", "30"}}}, kBlackBgr, kBlackYuv, 30, 50);
    for (const int level : {1, 255, 257, 500, 1000})
        expect({"directfadein",
                {{"duration", "9"}, {"fadein_max", std::to_string(level)}, {"fadein_color", "8533078"}}},
               bgr, yuv, level, 5);
    for (const auto& [text, level] : {std::pair{"65280", 65280LL}, {"65536", 65536LL}, {"-1", 4294967295LL}})
        expect({"directfadeout", {{"duration", "100"}, {"fadeout_min", text}, {"fadeout_color", "8533078"}}},
               bgr, yuv, level, 50);
}

// The rise and the fall, in 256ths, within their bounds.
long long LevelOf(const ledger::PictureCase& of, int level, const char* least, const char* most) {
    return std::max(std::min(level, of.Int(most)), of.Int(least));
}

TEST(Fades, AreAsInTheLedger) {
    using ledger::ExpectInLedger, ledger::PictureCase, ledger::kSpanMs;
    const auto alpha = [](const PictureCase& of, HostFrame& frame, int elapsed) {
        if (of.format != BGRA && frame.planes.size() < 4) return;
        ScaleAlpha(frame, LevelOf(of, elapsed * 256 / kSpanMs, "FadeMin", "FadeMax"));
    };
    const auto mix = [](const PictureCase& of, HostFrame& frame, const char* name, long long level) {
        const int colour = of.Int(name);
        const auto yuv = ledger::CutYuv(colour);
        Mix({{colour & 255, colour >> 8 & 255, colour >> 16}}, {{yuv[0], yuv[1], yuv[2]}}, level)(frame);
    };
    ExpectInLedger("fadein", [=](const auto& of, HostFrame& frame) { alpha(of, frame, of.time); });
    ExpectInLedger("fadeout", [=](const auto& of, HostFrame& frame) { alpha(of, frame, kSpanMs - of.time); });
    ExpectInLedger("directfadein", [=](const auto& of, HostFrame& frame) {
        mix(of, frame, "fadein_color", LevelOf(of, 15360 / kSpanMs, "fadein_min", "fadein_max"));
    });
    ExpectInLedger("directfadeout", [=](const auto& of, HostFrame& frame) {
        const int level = (kSpanMs - of.time) * 256 / kSpanMs;
        mix(of, frame, "fadeout_color", LevelOf(of, level, "fadeout_min", "fadeout_max"));
    });
}

TEST(DirectFades, EndAtTheColour) {
    const auto proc = MakeVideo("directfadeout", {{"duration", "40"}, {"fadeout_color", "16777215"}});
    auto packed = MakeFrame({BGRA, 1, 1});
    std::memcpy(packed->planes[0].Data(), "\x01\x02\x03\x04", 4);
    test::Run(*proc, *packed, 40);
    EXPECT_EQ(std::memcmp(packed->planes[0].Data(), "\xFF\xFF\xFF\x04", 4), 0);
    auto planar = MakeFrame({YUV420P, 2, 2});
    test::Run(*proc, *planar, 40);
    EXPECT_EQ(planar->planes[0].At(1, 1), 235);
    EXPECT_EQ(planar->planes[1].At(0, 0), 128);
    EXPECT_EQ(planar->planes[2].At(0, 0), 128);
}

const char* const kFades[] = {"fadein", "fadeout", "directfadein", "directfadeout"};

TEST(Fades, LeaveFramesBeyondTheSpanAlone) {
    GetBaseException()->Clear();
    for (const char* fade : kFades)
        for (const unsigned format : kWithAlpha)
            for (const int time : {101, -1, 2147483647}) {
                auto frame = MakeFrame({format, 20, 10, 3}, 4);
                const HostFrame original = *frame;
                test::Run(*MakeVideo(fade, {{"duration", "100"}}), *frame, time);
                ExpectSame(*frame, original, fade);
            }
    EXPECT_EQ(GetBaseException()->GetExceptionCode(), 0);
}

TEST(Fades, TakeTheFramesOwnTimeWhenNoneIsGiven) {
    auto frame = MakeFrame({BGRA, 4, 4});
    frame->planes[0].At(3, 0) = 200;
    frame->SetTimeStamp(25);
    test::Run(*MakeVideo("fadein", {{"duration", "50"}}), *frame, -2147483647 - 1);
    EXPECT_EQ(frame->planes[0].At(3, 0), 100);
}

TEST(Fades, SayThatTheSpanIsEmpty) {
    for (const char* fade : kFades) {
        const auto proc = MakeVideo(fade, {{"duration", "0"}});
        const Shape shape{YUVA420P, 20, 10, 3};
        ASSERT_NO_FATAL_FAILURE(ExpectRefuses(*proc, shape, "duration"));
        for (const int time : {5, -1}) ExpectLeavesAlone(*proc, shape, time); // beyond it nothing fades
    }
}

} // namespace
