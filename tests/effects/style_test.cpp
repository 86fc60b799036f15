// Poster, video wall, reflecting tiles and inversion against their definitions.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "tests/ledger/confirm.h"
#include "tests/support/effect_cases.h"
#include "tests/support/picture.h"

namespace {

using namespace AVBased;
using namespace test;
using Byte = unsigned char;

// Poster

struct Poster {
    unsigned threshold, colour;
    Byte y, u, v;

    void operator()(HostFrame& frame) const {
        if (frame.GetPixelFormat() == BGRA) {
            ForPixels(frame, [this](Byte* p) {
                const unsigned pixel = p[1] > threshold ? colour : 0;
                for (unsigned i = 0; i < 3; ++i) p[i] = static_cast<Byte>(pixel >> (8 * i));
            });
            return;
        }
        Picture picture(frame);
        for (unsigned row = 0; row < picture.height; ++row)
            for (unsigned x = 0; x < picture.width; ++x) {
                const bool bright = picture.old.planes[0].At(x, row) > threshold;
                frame.planes[0].At(x, row) = bright ? y : 16;
                picture.ForChroma(x, row,
                                  [&](HostFrame::Plane& plane, HostFrame::Plane&, unsigned cx, unsigned cy) {
                                      plane.At(cx, cy) = !bright ? 128 : &plane == &frame.planes[1] ? u : v;
                                  });
            }
    }
};

TEST(PopStyle, MakesAPoster) {
    struct Case {
        const char *threshold, *colour;
        Poster poster;
    };
    // A threshold below 0 is a large one.
    for (const Case& c : {Case{"0", "16711680", {0, 0xFF0000, 81, 90, 239}},
                          {"200", "-1", {200, 0xFFFFFF, 235, 128, 128}},
                          {"255", "16711680", {255, 0, 0, 0, 0}},
                          {"-1", "16711680", {255, 0, 0, 0, 0}}})
        ASSERT_NO_FATAL_FAILURE(ExpectComputes(
            {"popstyle", {{"popstyle_threshold", c.threshold}, {"popstyle_color", c.colour}}}, c.poster));
    // 0.257 * 255 + 0.504 * 175 + 0.098 * 209 + 16 = 190.2, 131.1 and 160.7 for 0xFFAFD1.
    ASSERT_NO_FATAL_FAILURE(ExpectComputes({"popstyle"}, Poster{128, 0xFFAFD1, 190, 131, 160}));
}

// Video wall

// In place, sample by sample, chroma along with every luma sample.
struct Wall {
    double across, down;

    void operator()(HostFrame& frame) const {
        const Picture picture(frame);
        const bool packed = picture.packed;
        const unsigned w = picture.width, h = picture.height, xs = picture.layout.hShift,
                       ys = picture.layout.vShift;
        const unsigned tileW = static_cast<unsigned>(w * 256 / across) >> 8;
        const unsigned tileH = static_cast<unsigned>(h * 256 / down) >> 8;
        if (tileW == 0 || tileH == 0) return;
        const auto copy = [&](unsigned x, unsigned y, unsigned sx, unsigned sy) {
            for (unsigned i = 0; i < (packed ? 4u : 1u); ++i) {
                auto& plane = frame.planes[0];
                plane.At(packed ? 4 * x + i : x, y) = plane.At(packed ? 4 * sx + i : sx, sy);
            }
            for (size_t p = 1; p < 3 && !packed; ++p) {
                auto& plane = frame.planes[p];
                if (x >> xs < plane.width && y >> ys < plane.rows)
                    plane.At(x >> xs, y >> ys) =
                        plane.At(std::min(sx >> xs, plane.width - 1), std::min(sy >> ys, plane.rows - 1));
            }
        };
        const auto stepX = static_cast<unsigned>(across * 256), stepY = static_cast<unsigned>(down * 256);
        for (unsigned y = 0; y < tileH; ++y)
            for (unsigned x = 0; x < tileW; ++x) copy(x, y, (x * stepX) >> 8, (y * stepY) >> 8);
        for (unsigned y = 0; y < tileH; ++y)
            for (unsigned x = tileW, from = 0; x < w; ++x, from = from == tileW ? 1 : from + 1)
                copy(x, y, from, y);
        for (unsigned y = tileH; y < h; ++y)
            for (size_t p = 0; p < (packed ? 1 : 3); ++p) {
                auto& plane = frame.planes[p];
                const unsigned to = y >> (p ? ys : 0), from = (y - tileH) % tileH >> (p ? ys : 0);
                for (unsigned x = 0; x < plane.pitch && to < plane.rows && plane.width; ++x)
                    plane.At(x, to) = plane.At(x, from);
            }
    }
    Setting Settings() const {
        return {
            "videowall",
            {{"videowall_horiTiles", std::to_string(across)}, {"videowall_verTiles", std::to_string(down)}}};
    }
};

TEST(VideoWall, RepeatsTheShrunkPicture) {
    // With fewer than two tiles on top of each other chroma rows come from themselves, and are shrunk again.
    for (const Wall& wall :
         {Wall{1, 1}, {3, 3}, {3, 1}, {1, 3}, {1.25, 1.5}, {1.003, 1.003}, {7.75, 2.5}, {2, 4.5}})
        ASSERT_NO_FATAL_FAILURE(ExpectComputes(wall.Settings(), wall));
}

TEST(VideoWall, RefusesTilesThatDoNotFit) {
    for (const char* property : {"videowall_horiTiles", "videowall_verTiles"})
        for (const char* count : {"0", "0.99", "-3", "nan", "inf", "-inf", "1e300", "21"})
            ASSERT_NO_FATAL_FAILURE(ExpectRefuses("videowall", {{property, count}}, property));
}

// Stored maps

// In 32 bits.
int Wrapped(long long x) { return static_cast<int>(x); }

struct Map {
    unsigned width, height;
    std::vector<std::pair<unsigned, unsigned>> sources;

    template <class SourceOf>
    Map(unsigned w, unsigned h, SourceOf sourceOf)
        : width(w)
        , height(h) {
        for (unsigned y = 0; y < h; ++y)
            for (unsigned x = 0; x < w; ++x)
                sources.push_back(sourceOf(int(x) - int(w / 2), int(y) - int(h / 2)));
    }
    void operator()(HostFrame& frame) const {
        Picture picture(frame);
        for (unsigned y = 0; y < std::min(height, picture.height); ++y)
            for (unsigned x = 0; x < std::min(width, picture.width); ++x) {
                const auto& [sx, sy] = sources[y * width + x];
                if (sx < picture.width && sy < picture.height) picture.Copy(x, y, sx, sy);
            }
    }
};

long long Sine(int degrees) { return std::lround(std::sin(degrees * std::numbers::pi / 180) * 32768); }

struct TileReflect {
    int angle, size, curvature;

    std::pair<long long, long long> Turn() const {
        if (angle > 90) return {Sine(180 - angle), -Sine(angle - 90)};
        if (angle > 0) return {Sine(angle), -Sine(90 - angle)};
        if (angle >= -90) return {-Sine(-angle), Sine(90 + angle)};
        return {-Sine(180 + angle), -Sine(-90 - angle)};
    }
    Map MapOf(unsigned w, unsigned h) const { return MapOf(w, h, Turn(), 46080 / size, curvature); }
    static Map MapOf(unsigned w, unsigned h, std::pair<long long, long long> turn, int k, long long c) {
        const auto bent = [=](int along) {
            int a = Wrapped(1LL * along * k) >> 23;
            while (a > 90) a -= 180;
            while (a < -90) a += 180;
            const long long tangent =
                std::abs(a) > 88 ? 0 : std::lround(std::tan(a * std::numbers::pi / 180) * 32768);
            return Wrapped(tangent * Wrapped(c * c) + along) >> 15;
        };
        const auto [sine, cosine] = turn;
        return {w, h, [=, s = sine, t = cosine](int dx, int dy) {
                    const long long t1 = bent(Wrapped(s * dy + t * dx)), t2 = bent(Wrapped(t * dy - dx * s));
                    const unsigned x = static_cast<unsigned>(Wrapped(t1 * t - t2 * s) >> 15) + w / 2 + w;
                    const unsigned y = static_cast<unsigned>(Wrapped(t2 * t + t1 * s) >> 15) + h / 2 + h;
                    return std::pair{x % w, y % h};
                }};
    }
    Setting Settings() const {
        return {"tilereflect",
                {{"tilereflect_angle", std::to_string(angle)},
                 {"tilereflect_size", std::to_string(size)},
                 {"tilereflect_curvature", std::to_string(curvature)}}};
    }
};

struct MirrorInvert {
    int amount;

    Map MapOf(unsigned w, unsigned h) const {
        const unsigned m = std::min(h / 2, w / 2);
        const int power = Wrapped(amount * (static_cast<long long>(m * m / 100) << 8));
        return {w, h, [=](int dx, int dy) {
                    const int f = dx == 0 && dy == 0 ? 0 : power / Wrapped(1LL * dx * dx + 1LL * dy * dy);
                    return std::pair{(static_cast<unsigned>(Wrapped(1LL * dx * f) >> 8) + w / 2) % w,
                                     (static_cast<unsigned>(Wrapped(1LL * f * dy) >> 8) + h / 2) % h};
                }};
    }
    Setting Settings() const { return {"mirrorinvert", {{"mirrorinvert_amount", std::to_string(amount)}}}; }
};

// The frame that makes the map, and one that replays it, at every level, on tiny pictures and larger ones.
template <class Effect>
void ExpectMapped(const Setting& setting, const Effect& mapOf) {
    for (const unsigned mask : kLevelMasks) {
        const FeatureMask hidden(mask);
        for (const unsigned format : {BGRA, YUV420P, YUV422P, YUV410P, YUV411P, YUVA444P})
            for (const auto& [w, h] :
                 {std::pair{1u, 1u}, {1u, 5u}, {2u, 2u}, {133u, 61u}, {98u, 103u}, {4200u, 2u}}) {
                const auto proc = MakeVideo(setting);
                const Map map = mapOf(w, h);
                for (const bool roundUp : {true, false})
                    ASSERT_NO_FATAL_FAILURE(
                        ExpectFrame(*proc, {format, w, h, 5, 1, roundUp}, map, setting.effect));
            }
    }
}

constexpr TileReflect kTiles[] = {
    {30, 30, 8},    {-30, 30, 8}, {0, 17, 5},      {90, 7, 3},      {91, 300, 20},
    {180, 30, 8},   {-90, 1, 30}, {-91, 50000, 4}, {-180, -30, 47}, {45, 46080, 2147483647},
    {17, 2, 65535}, {60, 5, -100}};

TEST(TileReflect, BendsEachTile) {
    for (const TileReflect& t : kTiles)
        ASSERT_NO_FATAL_FAILURE(
            ExpectMapped(t.Settings(), [&](unsigned w, unsigned h) { return t.MapOf(w, h); }));
    // Other angles than those of a half turn either way are whole turns away from them.
    for (const auto& [angle, same] :
         {std::pair{390, 30}, {540, 180}, {190, -170}, {-181, 179}, {-2147483648, -128}}) {
        const TileReflect turned{same, 20, 6};
        Setting setting = turned.Settings();
        setting.properties[0].second = std::to_string(angle);
        ASSERT_NO_FATAL_FAILURE(
            ExpectMapped(setting, [&](unsigned w, unsigned h) { return turned.MapOf(w, h); }));
    }
    ASSERT_NO_FATAL_FAILURE(ExpectMapped({"tilereflect"}, [](unsigned w, unsigned h) {
        return TileReflect::MapOf(w, h, {11743, 25466}, 1, 8);
    }));
}

TEST(MirrorInvert, ExchangesInsideAndOutside) {
    for (const int amount : {100, 0, 1, -70, 999, 2147483647, -2147483647 - 1})
        ASSERT_NO_FATAL_FAILURE(ExpectMapped(MirrorInvert{amount}.Settings(), [=](unsigned w, unsigned h) {
            return MirrorInvert{amount}.MapOf(w, h);
        }));
    // Without wraps: what lies at the radius of 100 and in the middle stays, 50 and 200 change places.
    auto frame = MakeFrame({BGRA, 500, 200});
    HostFrame old = *frame;
    test::Run(*MakeVideo("mirrorinvert"), *frame);
    for (const auto& [x, from] :
         {std::pair{350u, 350u}, {150u, 150u}, {250u, 250u}, {300u, 450u}, {450u, 300u}})
        EXPECT_EQ(frame->planes[0].At(4 * x, 100), old.planes[0].At(4 * from, 100)) << x;
}

TEST(StyleMaps, AreReplayedOnFramesOfOtherSizesAndFormats) {
    const TileReflect tile{30, 20, 6};
    const MirrorInvert inverted{100};
    for (const unsigned made : {BGRA, YUV420P})
        for (const bool tiles : {true, false}) {
            const Map map = tiles ? tile.MapOf(43, 27) : inverted.MapOf(43, 27);
            const auto proc = MakeVideo(tiles ? tile.Settings() : inverted.Settings());
            ASSERT_NO_FATAL_FAILURE(ExpectFrame(*proc, {made, 43, 27}, map, "first"));
            for (const unsigned format : {BGRA, YUV420P, YUV410P})
                for (const auto& [w, h] : {std::pair{30u, 40u}, {80u, 9u}, {43u, 27u}, {3u, 3u}, {50u, 50u}})
                    ASSERT_NO_FATAL_FAILURE(ExpectFrame(*proc, {format, w, h, 2}, map, "replayed"));
        }
}

TEST(Style, IsAsInTheLedger) {
    using ledger::ExpectInLedger;
    ExpectInLedger("popstyle", [](const auto& of, HostFrame& frame) {
        const int colour = of.Int("popstyle_color");
        const auto yuv = ledger::CutYuv(colour);
        Poster{static_cast<unsigned>(of.Int("popstyle_threshold")), static_cast<unsigned>(colour),
               static_cast<Byte>(yuv[0]), static_cast<Byte>(yuv[1]), static_cast<Byte>(yuv[2])}(frame);
    });
    ExpectInLedger("videowall", [](const auto& of, HostFrame& frame) {
        Wall{of.Number("videowall_horiTiles"), of.Number("videowall_verTiles")}(frame);
    });
    ExpectInLedger("tilereflect", [](const auto& of, HostFrame& frame) {
        if (of.settings.empty()) return TileReflect::MapOf(of.width, of.height, {11743, 25466}, 1, 8)(frame);
        TileReflect{of.Int("tilereflect_angle"), of.Int("tilereflect_size"), of.Int("tilereflect_curvature")}
            .MapOf(of.width, of.height)(frame);
    });
    ExpectInLedger("mirrorinvert", [](const auto& of, HostFrame& frame) {
        MirrorInvert{of.Int("mirrorinvert_amount")}.MapOf(of.width, of.height)(frame);
    });
}

// A map of a small picture is still used for a larger one exactly as long as nothing changes.
TEST(StyleMaps, AreMadeAnewWhenAStoredValueChanges) {
    const auto isMadeAnew = [](const Setting& setting, const std::string& name, const std::string& value) {
        const auto proc = MakeVideo(setting);
        auto small = MakeFrame({BGRA, 20, 20}), frame = MakeFrame({BGRA, 64, 64});
        const auto corner = frame->planes[0].bytes;
        test::Run(*proc, *small);
        proc->SetProperty(name.c_str(), value.c_str());
        test::Run(*proc, *frame);
        return !std::equal(corner.end() - 400, corner.end(), frame->planes[0].bytes.end() - 400);
    };
    const Setting tile = TileReflect{30, 30, 8}.Settings(), inverted = MirrorInvert{100}.Settings();
    for (const auto& [name, same, other] :
         {std::tuple{"angle", "390", "31"}, {"size", "30", "31"}, {"curvature", "8", "9"}}) {
        EXPECT_FALSE(isMadeAnew(tile, std::string("tilereflect_") + name, same)) << name;
        EXPECT_TRUE(isMadeAnew(tile, std::string("tilereflect_") + name, other)) << name;
    }
    EXPECT_FALSE(isMadeAnew(tile, "duration", "9"));
    EXPECT_FALSE(isMadeAnew({"tilereflect", {{"tilereflect_size", "40000"}}}, "tilereflect_size", "46080"))
        << "what is stored is 1 for both";
    EXPECT_FALSE(isMadeAnew(inverted, "mirrorinvert_amount", "100"));
    EXPECT_TRUE(isMadeAnew(inverted, "mirrorinvert_amount", "101"));
}

TEST(StyleMaps, RefuseWhatTheyCannotDivide) {
    const auto proc = MakeVideo("tilereflect", {{"tilereflect_size", "0"}});
    const auto inverting = MakeVideo("mirrorinvert");
    for (const unsigned format : {BGRA, YUV420P}) {
        ASSERT_NO_FATAL_FAILURE(ExpectRefuses(*proc, {format, 20, 20}, "tilereflect_size"));
        ASSERT_NO_FATAL_FAILURE(
            ExpectRefuses(*MakeVideo("tilereflect"), {format, 20, 0}, "tilereflect_size"));
        ASSERT_NO_FATAL_FAILURE(ExpectRefuses(*inverting, {format, 0, 20}, "mirrorinvert_amount"));
    }
    // 65536 columns from the middle the square of the distance is 0 in 32 bits.
    ASSERT_NO_FATAL_FAILURE(ExpectRefuses(*inverting, {BGRA, 131072, 1}, "mirrorinvert_amount"));
    ASSERT_NO_FATAL_FAILURE(
        ExpectFrame(*inverting, {BGRA, 131071, 1}, MirrorInvert{100}.MapOf(131071, 1), "the widest"));
}

} // namespace
