// Transparency, colour filter, noise, and what mirage does with the host's frame.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "tests/ledger/confirm.h"
#include "tests/support/effect_cases.h"

namespace {

using namespace AVBased;
using namespace test;
using Byte = unsigned char;

constexpr unsigned kPlanarWithAlpha[] = {YUVA420P, YUVA444P};
constexpr unsigned kPlanarWithoutAlpha[] = {YUV420P, YUV422P, YUV410P, YUV411P, YUVJ420P, YUVJ422P};

const auto kUnchanged = [](HostFrame&) {};

TEST(Transparency, ScalesAlpha) {
    struct Case {
        Setting setting;
        long long factor;
    };
    for (const Case& c : {
             Case{{"transparency", {{"transparency_scale", "50"}}}, 128},
             {{"transparency", {{"transparency_scale", "100"}}}, 256},
             {{"transparency", {{"transparency_scale", "1"}}}, 2},
             {{"transparency", {{"transparency_scale", "300"}}}, 768}, // alpha reaches its limit
             {{"transparency", {{"transparency_scale", "-50"}}}, 0},
             // Whatever is set afterwards takes the factor for percent.
             {{"transparency", {{"transparency_scale", "50"}, {"duration", "9"}}}, 327},
             {{"transparency", {{"duration", "9"}, {"transparency_scale", "50"}}}, 128},
         }) {
        const auto scale = [&](Byte& a) { a = static_cast<Byte>(std::min(a * c.factor / 256, 255LL)); };
        ExpectComputes(c.setting, kPacked,
                       [&](HostFrame& frame) { ForPixels(frame, [&](Byte* p) { scale(p[3]); }); });
        ExpectComputes(c.setting, kPlanarWithAlpha,
                       [&](HostFrame& frame) { ForSamples(frame.planes[3], scale); });
        ExpectComputes(c.setting, kPlanarWithoutAlpha, kUnchanged);
    }
    ledger::ExpectInLedger("transparency", [](const auto& of, HostFrame& frame) {
        const auto scale = [factor = of.Int("transparency_scale") * 256 / 100](Byte& a) {
            if (factor) a = static_cast<Byte>(std::min(a * factor / 256, 255));
        };
        if (of.format == BGRA) return ForPixels(frame, [&](Byte* p) { scale(p[3]); });
        if (frame.planes.size() == 4) ForSamples(frame.planes[3], scale);
    });
    ExpectComputes({"transparency"}, kPacked, kUnchanged);
    ExpectComputes({"transparency", {{"transparency_scale", "0"}}}, kPlanarWithAlpha, kUnchanged);
}

// Makes it likely that random samples match.
void Posterise(HostFrame& frame) {
    for (auto& plane : frame.planes)
        for (Byte& byte : plane.bytes) byte = static_cast<Byte>(byte / 64 * 64);
}

TEST(ColorFilter, MakesPackedColoursTransparent) {
    struct Case {
        int scope;
        unsigned colour;
        unsigned low, high;
    };
    for (const Case& c : {Case{0, 0x404040, 0x404040, 0x404040},
                          {1, 0x3F4040, 0x3E3F3F, 0x404141},
                          {0x50, 0x204080, 0, 0x7090D0},
                          {255, 0xC08040, 0, 0xFFFFFF},
                          {2147483647, 0xC08040, 0, 0xFFFFFF},
                          {-1, 0x404040, 1, 0}})
        ExpectComputes(
            {"colorfilter",
             {{"filter_scope", std::to_string(c.scope)}, {"filter_color", std::to_string(c.colour)}}},
            kPacked, [&](HostFrame& frame) {
                ForPixels(frame, [&](Byte* p) {
                    const unsigned colour = p[0] + p[1] * 256u + p[2] * 65536u;
                    if (colour >= c.low && colour <= c.high) p[3] = 0;
                });
            });
    auto frame = MakeFrame({BGRA, 200, 50}, 8);
    Posterise(*frame);
    HostFrame expected = *frame;
    size_t matches = 0;
    ForPixels(expected, [&](Byte* p) {
        if (p[0] != 64 || p[1] != 128 || p[2] != 192) return;
        p[3] = 0;
        ++matches;
    });
    test::Run(*MakeVideo("colorfilter", {{"filter_color", "12615744"}}), *frame); // 0xC08040
    ExpectSame(*frame, expected, "exactly the colour");
    EXPECT_GT(matches, 20u);
}

struct PlanarKey {
    int y, u, v, scope;

    static bool In(int x, int middle, int scope) { return std::abs(x - middle) <= scope; }
    // Chroma of the nearest sample there is, for sizes whose chroma is rounded down.
    void operator()(HostFrame& frame) const {
        const unsigned shift = LayoutOf(frame.GetPixelFormat()).hShift;
        auto& us = frame.planes[1];
        if (us.width == 0 || us.rows == 0) return;
        for (unsigned row = 0; row < frame.planes[0].rows; ++row)
            for (unsigned x = 0; x < frame.planes[0].width; ++x) {
                const unsigned cx = std::min(x >> shift, us.width - 1),
                               cy = std::min(row >> shift, us.rows - 1);
                if (In(frame.planes[0].At(x, row), y, scope) && In(us.At(cx, cy), u, scope) &&
                    In(frame.planes[2].At(cx, cy), v, scope))
                    frame.planes[3].At(x, row) = 0;
            }
    }
};

TEST(ColorFilter, MakesPlanarColoursTransparent) {
    // 0x823456 is 84, 131, 159.
    for (const int scope : {0, 60, 120, 300})
        ExpectComputes(
            {"colorfilter", {{"filter_scope", std::to_string(scope)}, {"filter_color", "8533078"}}},
            kPlanarWithAlpha, PlanarKey{84, 131, 159, scope});
    // Before a colour is set it is black.
    ExpectComputes({"colorfilter", {{"filter_scope", "90"}}}, kPlanarWithAlpha, PlanarKey{16, 128, 128, 90});
    ExpectComputes({"colorfilter", {{"filter_scope", "-1"}}}, kPlanarWithAlpha, kUnchanged);
    ExpectComputes({"colorfilter", {{"filter_scope", "255"}}}, kPlanarWithoutAlpha, kUnchanged);
}

TEST(ColorFilter, IsAsInTheLedger) {
    ledger::ExpectInLedger("colorfilter", [](const auto& of, HostFrame& frame) {
        const int colour = of.Int("filter_color"), scope = of.Int("filter_scope");
        if (of.format == BGRA)
            return ForPixels(frame, [=](Byte* p) {
                const int pixel = p[0] + p[1] * 256 + p[2] * 65536;
                if (std::abs(pixel - colour) <= scope * 0x010101) p[3] = 0;
            });
        const auto yuv = ledger::CutYuv(colour);
        if (frame.planes.size() == 4) PlanarKey{yuv[0], yuv[1], yuv[2], scope}(frame);
    });
}

// The C library's generator, replayed: the plug-in draws from it in a known order.
std::vector<int> Draws(unsigned seed, size_t count, int shift) {
    std::srand(seed);
    std::vector<int> noise(count);
    for (int& n : noise) n = std::rand() >> shift;
    std::srand(seed);
    return noise;
}

Byte Noisy(Byte x, int shift, int noise) {
    return static_cast<Byte>(std::min<long long>((x * (20LL * shift + 40) >> 8) + noise, 255));
}

void AddToPixels(HostFrame& frame, int shift, const std::vector<int>& noise) {
    size_t n = 0;
    ForPixels(frame, [&](Byte* p) {
        for (const size_t i : {2u, 1u, 0u}) p[i] = Noisy(p[i], shift, noise[n++]);
    });
}

void AddToLuma(HostFrame& frame, int shift, const std::vector<int>& noise) {
    size_t n = 0;
    ForSamples(frame.planes[0], [&](Byte& y) { y = Noisy(y, shift, noise[n++]); });
}

TEST(AddNoise, AddsTheGeneratorsNumbersInTheirOrder) {
    ForLevels([] {
        for (const auto& [level, shift] :
             {std::pair{"-12", 24}, {"-16", 28}, {"-100", 31}, {"4", 8}, {"99", 0}})
            for (const unsigned format : {unsigned{BGRA}, unsigned{YUVA420P}})
                for (const Shape& shape : AwkwardShapes(format)) {
                    const auto proc = MakeVideo("addnoise", {{"addnoise_level", level}});
                    const size_t perPixel = format == BGRA ? 3 : 1;
                    for (const bool first : {true, false}) { // the second has the same grain
                        const std::vector<int> noise =
                            Draws(11, perPixel * shape.width * shape.height, shift);
                        ASSERT_NO_FATAL_FAILURE(ExpectFrame(
                            *proc, shape,
                            [&, by = shift](HostFrame& frame) {
                                (format == BGRA ? AddToPixels : AddToLuma)(frame, by, noise);
                            },
                            level));
                        EXPECT_TRUE(first || std::rand() >> shift == noise[0]) << "more is drawn";
                    }
                }
    });
}

TEST(AddNoise, IsAsInTheLedger) {
    ledger::ExpectInLedger("addnoise", [](const auto& of, HostFrame& frame) {
        const int shift = 12 - of.Int("addnoise_level");
        const size_t perPixel = of.format == BGRA ? 3 : 1;
        const auto noise = Draws(ledger::kSeed, perPixel * of.width * of.height, shift);
        (of.format == BGRA ? AddToPixels : AddToLuma)(frame, shift, noise);
    });
}

TEST(AddNoise, StartsWithAnotherLevelThanItsText) {
    const auto proc = MakeVideo("addnoise");
    const std::vector<int> noise = Draws(3, 40, 8);
    auto frame = MakeFrame({YUV420P, 8, 5}, 5);
    HostFrame expected = *frame;
    AddToLuma(expected, 8, noise);
    test::Run(*proc, *frame);
    ExpectSame(*frame, expected, "shift 8, not 10");
}

TEST(AddNoise, KeepsItsGrainForFramesOfOtherSizesAndKinds) {
    const auto proc = MakeVideo("addnoise", {{"addnoise_level", "-12"}});
    auto unsupported = MakeFrame({RGB24, 8, 4});
    test::Run(*proc, *unsupported);
    const std::vector<int> noise = Draws(21, 64 * 48, 24);
    // Smaller frames use the beginning of what was drawn, larger ones draw what is missing.
    for (const auto& [width, height] : {std::pair{32u, 20u}, {20u, 10u}, {64u, 48u}, {33u, 47u}}) {
        auto frame = MakeFrame({YUV422P, width, height, 7}, 5);
        HostFrame expected = *frame;
        AddToLuma(expected, 24, noise);
        test::Run(*proc, *frame);
        ASSERT_NO_FATAL_FAILURE(ExpectSame(*frame, expected, std::to_string(width)));
    }
    const std::vector<int> packedNoise = Draws(22, 9 * 9 * 3, 24);
    auto frame = MakeFrame({BGRA, 9, 9}, 5);
    HostFrame expected = *frame;
    AddToPixels(expected, 24, packedNoise);
    test::Run(*proc, *frame);
    ExpectSame(*frame, expected, "packed");
}

TEST(AddNoise, DrawsAnewWhenTheLevelChanges) {
    const auto proc = MakeVideo("addnoise", {{"addnoise_level", "-12"}});
    const auto render = [&](const char* level) {
        proc->SetProperty("addnoise_level", level);
        auto frame = MakeFrame({YUV420P, 64, 64}, 5);
        test::Run(*proc, *frame);
        return frame->planes[0].bytes;
    };
    std::srand(77); // another number than any that the time gives
    const auto first = render("-12");
    EXPECT_EQ(render("-12"), first);
    render("-13");
    EXPECT_NE(render("-12"), first);
}

TEST(Mirage, ClonesTheFrameAndFreesTheCloneOnEveryPath) {
    struct Case {
        unsigned format;
        const char *width, *alpha;
    };
    for (const Case& c : {Case{BGRA, "10", "10"},
                          {YUV420P, "10", "10"},
                          {RGB24, "10", "10"},
                          {BGRA, "10", "101"},
                          {BGRA, "10", "-1"},
                          {YUV420P, "-200", "10"}}) {
        GetBaseException()->Clear();
        const auto proc = MakeVideo("mirage", {{"mirage_width", c.width}, {"mirage_alpha", c.alpha}});
        auto frame = MakeFrame({c.format, 40, 30}, 5);
        const HostFrame original = *frame;
        int cloned = 0, freed = 0;
        frame->onClone = [&](HostFrame& host) {
            ++cloned;
            auto* clone = new HostFrame(host);
            clone->freed = &freed;
            return clone;
        };
        test::Run(*proc, *frame);
        EXPECT_EQ(cloned, 1);
        EXPECT_EQ(freed, 1);
        const bool nothingToZoom = std::string(c.width) == "-200";
        EXPECT_EQ(GetBaseException()->GetExceptionCode(), nothingToZoom ? 10021008 : 0);
        if (nothingToZoom || c.format == RGB24 || std::string(c.alpha) != "10")
            ExpectSame(*frame, original, c.alpha);
    }
}

TEST(Mirage, ReportsAFrameThatCannotBeCloned) {
    GetBaseException()->Clear();
    auto frame = MakeFrame({BGRA, 40, 30}, 5);
    const HostFrame original = *frame;
    frame->onClone = [](HostFrame&) { return nullptr; };
    test::Run(*MakeVideo("mirage"), *frame);
    ExpectSame(*frame, original, "no clone");
    EXPECT_EQ(GetBaseException()->GetExceptionCode(), 10021008);
}

} // namespace
