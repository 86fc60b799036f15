// Distortions against their definitions, sample by sample, on the untouched copy of the frame.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>

#include "tests/ledger/confirm.h"
#include "tests/support/effect_cases.h"
#include "tests/support/picture.h"

namespace {

using namespace AVBased;
using namespace test;
using Byte = unsigned char;
using Properties = std::vector<std::pair<std::string, std::string>>;

struct Source {
    int x, y;
    bool written = true; // by the frame that makes the map
};

// The map of a circle as spherize and rotate define it.
struct CircleMap {
    unsigned xBegin = 0, xEnd = 0, yBegin = 0, yEnd = 0;
    std::vector<Source> sources;

    template <class SourceOf>
    CircleMap(unsigned width, unsigned height, int r, int cx, int cy, SourceOf sourceOf) {
        if (r < 0 || static_cast<unsigned>(cx) > width || static_cast<unsigned>(cy) > height) return;
        xBegin = static_cast<unsigned>(std::max(cx - r, 0));
        yBegin = static_cast<unsigned>(std::max(cy - r, 0));
        xEnd = std::min(static_cast<unsigned>(cx + r), width);
        yEnd = std::min(static_cast<unsigned>(cy + r), height);
        for (unsigned y = yBegin; y < yEnd; ++y)
            for (unsigned x = xBegin; x < xEnd; ++x)
                sources.push_back(sourceOf(static_cast<int>(x), static_cast<int>(y)));
    }
    void Apply(HostFrame& frame, bool fillsPacked, bool first) const {
        Picture picture(frame);
        size_t i = 0;
        for (unsigned y = yBegin; y < yEnd; ++y)
            for (unsigned x = xBegin; x < xEnd; ++x) {
                const Source& source = sources[i++];
                if (x >= picture.width || y >= picture.height || (first && !source.written)) continue;
                const auto sx = static_cast<unsigned>(source.x), sy = static_cast<unsigned>(source.y);
                if (sx < picture.width && sy < picture.height)
                    picture.Copy(x, y, sx, sy);
                else if (!picture.packed || fillsPacked)
                    picture.Fill(x, y);
            }
    }
};

auto SpherizeSource(int r, int cx, int cy, double scale) {
    return [=](int x, int y) {
        int dx = x - cx, dy = y - cy;
        const int d2 = dx * dx + dy * dy;
        if (d2 <= r * r) {
            const int k = static_cast<int>(std::pow(std::sqrt(d2) / r, scale) * 256);
            dx = static_cast<int>(std::floor(dx * k / 256.0));
            dy = static_cast<int>(std::floor(dy * k / 256.0));
        }
        return Source{dx + cx, dy + cy};
    };
}

auto RotateSource(int r, int cx, int cy, double scale) {
    return [=](int x, int y) {
        const auto radius = static_cast<float>(r);
        const float nx = static_cast<float>(x - cx) / radius, ny = static_cast<float>(y - cy) / radius;
        const float d = std::sqrt(static_cast<float>((y - cy) * (y - cy) + (x - cx) * (x - cx)));
        if (!(radius > d)) return Source{x, y, false};
        const double t = (radius - d) * scale, m = std::sqrt(nx * nx + ny * ny) - 0.7;
        const auto angle = static_cast<float>(2 * (t / radius * m));
        const float s = std::sin(angle), c = std::cos(angle);
        return Source{static_cast<int>((nx * c - ny * s) * radius + static_cast<float>(cx)),
                      static_cast<int>(static_cast<float>(cy) + (ny * c + nx * s) * radius)};
    };
}

Properties CircleProperties(const std::string& effect, int r, int x, int y, double scale) {
    return {{effect + "_r", std::to_string(r)},
            {effect + "_x", std::to_string(x)},
            {effect + "_y", std::to_string(y)},
            {effect + "_scale", std::to_string(scale)}};
}

struct Circle {
    int r, x, y;
    double scale;
};

// Two frames with a processor each time: the one that makes the map, and one that replays it.
template <class MapOf>
void TryCircle(const std::string& effect, const Circle& c, bool fillsPacked, MapOf mapOf) {
    for (const unsigned format : {BGRA, YUV420P, YUV422P, YUV410P, YUV411P, YUVA420P, YUVA444P})
        for (const bool roundUp : {false, true})
            ForLevels([&] {
                const auto proc = MakeVideo({effect, CircleProperties(effect, c.r, c.x, c.y, c.scale)});
                const unsigned width = c.r > 60 ? 301 : 43, height = c.r > 60 ? 203 : 27;
                const CircleMap map = mapOf(c, width, height);
                for (const bool first : {true, false})
                    ASSERT_NO_FATAL_FAILURE(ExpectFrame(
                        *proc, {format, width, height, 5, 1, roundUp},
                        [&](HostFrame& frame) { map.Apply(frame, fillsPacked, first); },
                        effect + " of " + std::to_string(c.r)));
            });
}

constexpr Circle kCircles[] = {{10, 20, 13, 1.5}, {10, 20, 13, -0.5},  {100, 43, 27, 0.7},
                               {13, 0, 0, 2},     {90, 133, 101, 1.2}, {30, 5, 25, 3},
                               {0, 5, 5, 1},      {5, 44, 3, 1},       {-3, 9, 9, 1}};

CircleMap SpherizeMap(const Circle& c, unsigned width, unsigned height) {
    return {width, height, c.r, c.x, c.y, SpherizeSource(c.r, c.x, c.y, c.scale)};
}
CircleMap RotateMap(const Circle& c, unsigned width, unsigned height) {
    return {width, height, c.r, c.x, c.y, RotateSource(c.r, c.x, c.y, c.scale)};
}

TEST(Spherize, MovesAlongTheRays) {
    for (const Circle& c : kCircles) ASSERT_NO_FATAL_FAILURE(TryCircle("spherize", c, false, SpherizeMap));
}

TEST(Rotate, TwistsTheCircle) {
    for (const Circle& c : kCircles) ASSERT_NO_FATAL_FAILURE(TryCircle("rotate", c, true, RotateMap));
    // An angle of 0 moves nothing, not even where the division by the radius misses a pixel's own place.
    for (int r = 1; r < 60; r += 2) {
        const auto proc = MakeVideo({"rotate", CircleProperties("rotate", r, r + 3, r + 5, 0)});
        for (const unsigned format : {BGRA, YUV420P}) {
            auto frame = MakeFrame({format, 128, 128}, 3);
            const HostFrame original = *frame;
            test::Run(*proc, *frame);
            ASSERT_NO_FATAL_FAILURE(ExpectSame(*frame, original, std::to_string(r)));
        }
    }
}

Circle CircleOf(const ledger::PictureCase& of, const std::string& effect) {
    return {of.Int(effect + "_r"), of.Int(effect + "_x"), of.Int(effect + "_y"),
            of.Number(effect + "_scale")};
}

// The first picture, and one that is made by the map that there is.
TEST(CircleMaps, AreAsInTheLedger) {
    ledger::ExpectInLedger("spherize", [](const auto& of, HostFrame& frame) {
        SpherizeMap(CircleOf(of, "spherize"), of.width, of.height).Apply(frame, false, !of.again);
    });
    ledger::ExpectInLedger("rotate", [](const auto& of, HostFrame& frame) {
        RotateMap(CircleOf(of, "rotate"), of.width, of.height).Apply(frame, true, !of.again);
    });
}

// With exponent 1 a pixel of radius 20 at distance 10 comes from distance 10 * 10 / 20 = 5.
TEST(Spherize, ByHand) {
    auto frame = MakeFrame({BGRA, 60, 60});
    const HostFrame old = *frame;
    test::Run(*MakeVideo({"spherize", CircleProperties("spherize", 20, 30, 30, 1)}), *frame);
    EXPECT_EQ(frame->planes[0].At(40 * 4, 30), HostFrame(old).planes[0].At(35 * 4, 30));
    EXPECT_EQ(frame->planes[0].At(30 * 4, 20), HostFrame(old).planes[0].At(30 * 4, 25));
    EXPECT_EQ(frame->planes[0].At(51 * 4, 30), HostFrame(old).planes[0].At(51 * 4, 30));
}

TEST(CircleMaps, AreReplayedOnFramesOfOtherSizesAndFormats) {
    const struct {
        Circle circle;
        const char *effect, *name, *value; ///< what is set then and leaves the map as it is
    } cases[] = {{{20, 20, 13, -0.4}, "spherize", "spherize_y", "13"},
                 {{20, 20, 13, 0}, "spherize", "spherize_scale", "2"},
                 {{20, 20, 13, -0.4}, "rotate", "rotate_y", "20"},
                 {{20, 43, 13, -0.4}, "rotate", "rotate_x", "20"}};
    for (const auto& [c, name, property, value] : cases) {
        const std::string effect = name;
        const bool spherize = effect == "spherize";
        const CircleMap map = spherize ? SpherizeMap(c, 43, 27) : RotateMap(c, 43, 27);
        const auto proc = MakeVideo({effect, CircleProperties(effect, c.r, c.x, c.y, c.scale)});
        auto first = MakeFrame({BGRA, 43, 27});
        test::Run(*proc, *first);
        ASSERT_TRUE(proc->SetProperty(property, value));
        for (const unsigned format : {BGRA, YUV420P})
            for (const auto& [width, height] : {std::pair{30u, 40u}, {80u, 9u}, {43u, 27u}, {3u, 3u}}) {
                auto frame = MakeFrame({format, width, height, 2}, 7);
                HostFrame expected = *frame;
                map.Apply(expected, !spherize, false);
                test::Run(*proc, *frame);
                ASSERT_NO_FATAL_FAILURE(ExpectSame(*frame, expected, effect + std::to_string(width)));
            }
    }
}

// Runs a frame with some properties, sets one more, and says whether the map was made anew.
bool MakesANewMap(const std::string& effect, const Circle& c, const std::string& name,
                  const std::string& value) {
    const auto proc = MakeVideo({effect, CircleProperties(effect, c.r, c.x, c.y, c.scale)});
    const auto render = [&] {
        auto frame = MakeFrame({BGRA, 64, 64}, 2);
        test::Run(*proc, *frame);
        return frame->planes[0].bytes;
    };
    const auto before = render();
    proc->SetProperty((effect + name).c_str(), value.c_str());
    return render() != before;
}

TEST(CircleMaps, ChangeWhenTheirTestsSaySo) {
    const Circle c{20, 30, 32, 0.5};
    EXPECT_TRUE(MakesANewMap("spherize", c, "_r", "25"));
    EXPECT_TRUE(MakesANewMap("spherize", c, "_x", "31"));
    EXPECT_TRUE(MakesANewMap("spherize", c, "_y", "25"));
    EXPECT_FALSE(MakesANewMap("spherize", c, "_y", "32"));
    // The scale is held against the low half of the new number, which is 0 for 2 and not for 2.1.
    EXPECT_TRUE(MakesANewMap("spherize", c, "_scale", "2")) << "0.5 is not 0";
    EXPECT_FALSE(MakesANewMap("spherize", {20, 30, 32, 0}, "_scale", "2"));
    EXPECT_TRUE(MakesANewMap("spherize", {20, 30, 32, 0}, "_scale", "2.1"));
    // Everything is held against the radius.
    EXPECT_TRUE(MakesANewMap("rotate", c, "_r", "25"));
    EXPECT_TRUE(MakesANewMap("rotate", c, "_x", "25"));
    EXPECT_FALSE(MakesANewMap("rotate", c, "_x", "20"));
    EXPECT_FALSE(MakesANewMap("rotate", c, "_y", "20"));
    EXPECT_TRUE(MakesANewMap("rotate", c, "_scale", "3")) << "its low half is 0, not 20";
    // A value that passed unnoticed is stored all the same.
    const auto proc = MakeVideo({"rotate", CircleProperties("rotate", 20, 30, 32, 0.5)});
    auto frame = MakeFrame({BGRA, 64, 64}, 2);
    test::Run(*proc, *frame);
    proc->SetProperty("rotate_x", "20");
    proc->SetProperty("rotate_scale", "0.5");
    frame = MakeFrame({BGRA, 64, 64}, 2);
    HostFrame expected = *frame;
    RotateMap({20, 20, 32, 0.5}, 64, 64).Apply(expected, true, true);
    test::Run(*proc, *frame);
    ExpectSame(*frame, expected, "stored");
}

TEST(CircleMaps, StandWhatNumbersCanBe) {
    for (const char* scale : {"nan", "inf", "-inf", "1e300", "-1e300", "-5"})
        for (const char* effect : {"spherize", "rotate", "magnifier"})
            for (const unsigned format : {BGRA, YUV420P}) {
                const std::string prefix = effect;
                const auto proc = MakeVideo({effect,
                                             {{prefix + "_r", "9"},
                                              {prefix + "_x", "10"},
                                              {prefix + "_y", "10"},
                                              {prefix + "_scale", scale}}});
                auto frame = MakeFrame({format, 20, 20}, 2);
                test::Run(*proc, *frame);
                test::Run(*proc, *frame);
                proc->SetProperty((prefix + "_r").c_str(), "2147483647");
                test::Run(*proc, *frame);
            }
}

// Magnifier

void Magnify(HostFrame& frame, int r, int cx, int cy, double z) {
    Picture picture(frame);
    const unsigned width = picture.width, height = picture.height, radius = static_cast<unsigned>(r);
    if (!(z > 1) || radius > width / 2 || radius > height / 2) return;
    if (static_cast<unsigned>(cx) > width || static_cast<unsigned>(cy) > height) return;
    const bool blends = z > 2;
    const auto begin = [&](int c) {
        return c < r ? (blends && picture.packed ? 1u : 0u) : static_cast<unsigned>(c - r);
    };
    const auto size = [&](int c, unsigned limit) {
        return c < r ? static_cast<unsigned>(r + c)
                     : std::min(limit - static_cast<unsigned>(c - r), 2 * radius);
    };
    const unsigned xBegin = begin(cx), yBegin = begin(cy), w = size(cx, width), h = size(cy, height);
    const auto inv = static_cast<unsigned>((blends ? 65536 : 256) / z);
    const auto place = [&](unsigned first, unsigned length, unsigned i) {
        const unsigned margin = static_cast<unsigned>(length * z) - length;
        if (blends) return ((margin * inv) >> 1) + (first << 16) + i * inv;
        return (first + ((i * inv) >> 8) + ((margin * inv) >> 9)) << 16;
    };
    for (unsigned j = 0; j < h; ++j)
        for (unsigned i = 0; i < w; ++i) {
            const unsigned x = xBegin + i, y = yBegin + j;
            const int dx = static_cast<int>(x) - cx, dy = static_cast<int>(y) - cy;
            if (dx * dx + dy * dy >= r * r) continue;
            const unsigned px = place(xBegin, w, i), py = place(yBegin, h, j);
            if (!blends) {
                picture.Copy(x, y, px >> 16, py >> 16);
                continue;
            }
            const unsigned fx = (px >> 8) & 255, fy = (py >> 8) & 255, w11 = (fx * fy) >> 8;
            const auto blend = [&](HostFrame::Plane& from, unsigned unit, unsigned sx, unsigned sy,
                                   unsigned b) {
                const auto at = [&](unsigned ax, unsigned ay) {
                    return from.At(std::min(ax, from.width / unit - 1) * unit + b,
                                   std::min(ay, from.rows - 1));
                };
                const unsigned right = unit == 4 ? fx - w11 : fy - w11,
                               below = unit == 4 ? fy - w11 : fx - w11;
                return static_cast<Byte>((at(sx, sy) * (256 - (fy + (fx - w11))) + at(sx + 1, sy) * right +
                                          at(sx, sy + 1) * below + at(sx + 1, sy + 1) * w11) >>
                                         8);
            };
            const unsigned unit = picture.packed ? 4 : 1;
            for (unsigned b = 0; b < unit; ++b)
                frame.planes[0].At(x * unit + b, y) =
                    blend(picture.old.planes[0], unit, px >> 16, py >> 16, b);
            picture.ForChroma(
                x, y, [&](HostFrame::Plane& plane, HostFrame::Plane& from, unsigned tx, unsigned ty) {
                    plane.At(tx, ty) =
                        blend(from, 1, std::min(px >> 16 >> picture.layout.hShift, plane.width - 1),
                              std::min(py >> 16 >> picture.layout.vShift, plane.rows - 1), 0);
                });
        }
}

TEST(Magnifier, EnlargesTheCircle) {
    // The middle, the edges, a circle as large as the picture, too large a one, and one for the deep frame;
    // nearest and blended.
    for (const auto& [r, x, y] :
         {std::tuple{3, 8, 4}, {2, 1, 0}, {2, 15, 6}, {1, 2, 2}, {3, 17, 3}, {40, 30, 30}, {90, 133, 101}})
        for (const double z : {1.0, 1.3, 2.0, 2.01, 5.7, 300.0}) {
            const Setting setting{"magnifier", CircleProperties("magnifier", r, x, y, z), r > 40};
            ASSERT_NO_FATAL_FAILURE(
                ExpectComputes(setting, [&, radius = r, cx = x, cy = y](HostFrame& frame) {
                    Magnify(frame, radius, cx, cy, z);
                }));
        }
    ledger::ExpectInLedger("magnifier", [](const auto& of, HostFrame& frame) {
        const Circle circle = CircleOf(of, "magnifier");
        Magnify(frame, circle.r, circle.x, circle.y, circle.scale);
    });
}

// Tensile

std::vector<unsigned> TensileRows(unsigned y1, unsigned y2, double scale) {
    std::vector<unsigned> rows;
    const auto n = static_cast<unsigned>((y2 - y1) * scale), inv = static_cast<unsigned>(256 / scale);
    const unsigned top = y2 - n;
    if (static_cast<int>(top) < 1) {
        const unsigned offset = ((n - y2) * inv) >> 8;
        for (unsigned r = 0; r < y2; ++r) rows.push_back(y1 + offset + ((r * inv) >> 8));
        return rows;
    }
    for (unsigned r = 0; r < top; ++r) rows.push_back((r * ((y1 << 8) / top)) >> 8);
    for (unsigned k = 0; k < n; ++k) rows.push_back(y1 + ((k * inv) >> 8));
    return rows;
}

std::vector<unsigned> TensileColumns(unsigned width, unsigned x1, unsigned x2, double scale) {
    std::vector<unsigned> map(width);
    const int n = static_cast<int>((x2 - x1) * scale), e = (n - static_cast<int>(x2 - x1)) >> 1;
    const int a = static_cast<int>(x1) - e, b = static_cast<int>(x2) + e, w = static_cast<int>(width);
    const auto inv = static_cast<unsigned>(256 / scale);
    const auto set = [&](int c, unsigned source) {
        if (c >= 0 && c < w) map[static_cast<size_t>(c)] = source;
    };
    if (a > 0) {
        for (int c = 0; c < a; ++c)
            set(c, (static_cast<unsigned>(c) * ((x1 << 8) / static_cast<unsigned>(a))) >> 8);
        for (int k = 0; k < (b < w ? n : w - a); ++k)
            set(a + k, x1 + ((static_cast<unsigned>(k) * inv) >> 8));
    } else {
        const unsigned offset = ((static_cast<unsigned>(e) - x1) * inv) >> 8;
        for (int k = 0; k < std::min(b, w); ++k)
            set(k, x1 + offset + ((static_cast<unsigned>(k) * inv) >> 8));
    }
    const int m = w - b;
    for (int k = 0; k < m; ++k)
        set(b + k, x2 + ((static_cast<unsigned>(k) * (((width - x2) << 8) / static_cast<unsigned>(m))) >> 8));
    return map;
}

struct Tensile {
    bool vertical, horizontal;
    unsigned y1, y2;
    double yScale;
    unsigned x1, x2;
    double xScale;

    void operator()(HostFrame& frame) const {
        Picture picture(frame);
        if (vertical && !(y2 <= picture.height && y2 > y1 && yScale >= 1)) return;
        if (horizontal && !(x2 <= picture.width && x2 > x1 && xScale >= 1)) return;
        std::vector<unsigned> rows, columns;
        if (vertical) rows = TensileRows(y1, y2, yScale);
        for (unsigned y = 0; !vertical && y < picture.height; ++y) rows.push_back(y);
        if (horizontal) columns = TensileColumns(picture.width, x1, x2, xScale);
        for (unsigned x = 0; !horizontal && x < picture.width; ++x) columns.push_back(x);
        for (unsigned y = 0; y < rows.size(); ++y) {
            for (unsigned x = 0; x < picture.width; ++x)
                picture.Copy(x, y, std::min(columns[x], picture.width - 1),
                             std::min(rows[y], picture.height - 1));
            if (!horizontal) CopyPadding(picture, y, std::min(rows[y], picture.height - 1));
        }
    }
    // Rows are moved whole, with what lies behind their last sample.
    static void CopyPadding(Picture& picture, unsigned y, unsigned from) {
        for (size_t p = 0; p < (picture.packed ? 1 : 3); ++p) {
            auto& plane = picture.now.planes[p];
            const unsigned shift = p ? picture.layout.vShift : 0;
            if (y >> shift >= plane.rows || plane.width == 0) continue;
            const unsigned row = std::min(from >> shift, plane.rows - 1);
            for (unsigned x = 0; x < plane.pitch; ++x)
                plane.At(x, y >> shift) = picture.old.planes[p].At(x, row);
        }
    }
    Properties Settings() const {
        return {{"tensile_vertical", vertical ? "1" : "0"},
                {"tensile_vertical_y1", std::to_string(y1)},
                {"tensile_vertical_y2", std::to_string(y2)},
                {"tensile_vertical_scale", std::to_string(yScale)},
                {"tensile_horizontal", horizontal ? "1" : "2"},
                {"tensile_horizontal_x1", std::to_string(x1)},
                {"tensile_horizontal_x2", std::to_string(x2)},
                {"tensile_horizontal_scale", std::to_string(xScale)}};
    }
};

TEST(Tensile, StretchesTheBandAndSqueezesTheRest) {
    for (const Tensile& t : {Tensile{false, false, 1, 2, 2, 1, 2, 2},
                             {true, false, 1, 3, 1.5, 0, 0, 0},
                             {true, false, 2, 4, 2, 0, 0, 0},
                             {true, false, 0, 5, 7, 0, 0, 0},
                             {false, true, 0, 0, 0, 20, 31, 1.5},
                             {false, true, 0, 0, 0, 3, 13, 1.7},
                             {false, true, 0, 0, 0, 30, 63, 1.2},
                             {false, true, 0, 0, 0, 5, 15, 1},
                             {false, true, 0, 0, 0, 1, 2, 100},
                             {true, true, 1, 3, 1.5, 8, 15, 1.9},
                             {true, true, 120, 300, 1.3, 140, 401, 1.7},
                             {false, true, 0, 0, 0, 200, 300, 3},
                             {false, true, 0, 0, 0, 200, 300, 3.5},
                             {true, true, 1, 3, 0.5, 8, 15, 1.9},
                             {true, true, 1, 3, 1.5, 15, 8, 1.9}}) {
        ASSERT_NO_FATAL_FAILURE(ExpectComputes({"tensile", t.Settings()}, t));
    }
    ledger::ExpectInLedger("tensile", [](const auto& of, HostFrame& frame) {
        const auto place = [&](const char* name) { return static_cast<unsigned>(of.Int(name)); };
        Tensile{of.Int("tensile_vertical") == 1,     of.Int("tensile_horizontal") == 1,
                place("tensile_vertical_y1"),        place("tensile_vertical_y2"),
                of.Number("tensile_vertical_scale"), place("tensile_horizontal_x1"),
                place("tensile_horizontal_x2"),      of.Number("tensile_horizontal_scale")}(frame);
    });
}

// 300 to 400 by 1.5 on 480 rows: rows 0 to 249 show 0 to 298, 250 to 399 the band, the rest stays.
TEST(Tensile, ByHand) {
    auto frame = MakeFrame({YUV420P, 2, 480});
    for (unsigned y = 0; y < 480; ++y) frame->planes[0].At(0, y) = static_cast<Byte>(y / 2);
    test::Run(*MakeVideo({"tensile", Tensile{true, false, 300, 400, 1.5, 0, 0, 0}.Settings()}), *frame);
    for (const auto& [y, from] :
         {std::pair{0u, 0u}, {249u, 298u}, {250u, 300u}, {399u, 398u}, {400u, 400u}, {479u, 479u}})
        EXPECT_EQ(frame->planes[0].At(0, y), from / 2) << y;
}

// Atomize

struct Atomize {
    bool horizontal, vertical;
    unsigned level;

    // In place, in the order of the samples, with the generator that is seeded alike before.
    void Draw(HostFrame& frame) const {
        HostFrame::Plane& first = frame.planes[0];
        const bool packed = frame.GetPixelFormat() == BGRA;
        const unsigned unit = packed ? 4 : 1, width = first.width / unit, height = first.rows;
        const Layout layout = LayoutOf(frame.GetPixelFormat());
        for (unsigned y = 0; y < height; ++y)
            for (unsigned x = 0; x < width; ++x) {
                const unsigned d = static_cast<unsigned>(std::rand()) % level;
                const unsigned c = horizontal ? std::min(d + x, width) : x;
                const unsigned r = vertical ? std::min(d + y, height - 1) : y;
                Move(first, unit, x, y, c, r);
                for (size_t p = 1; p < 3 && !packed; ++p) {
                    HostFrame::Plane& plane = frame.planes[p];
                    if (x >> layout.hShift < plane.width && y >> layout.vShift < plane.rows)
                        Move(plane, 1, x >> layout.hShift, y >> layout.vShift, c >> layout.hShift,
                             std::min(r >> layout.vShift, plane.rows - 1));
                }
            }
    }
    // One past a row's end is the next in memory, in the last row the last one itself.
    static void Move(HostFrame::Plane& plane, unsigned unit, unsigned x, unsigned y, unsigned c, unsigned r) {
        if (r + 1 == plane.rows) c = std::min(c, plane.width / unit - 1);
        for (unsigned i = 0; i < unit; ++i) plane.At(x * unit + i, y) = plane.At(c * unit + i, r);
    }
};

TEST(Atomize, ScattersAndRepeatsTheScatter) {
    for (const Atomize& a :
         {Atomize{true, false, 5}, {false, true, 5}, {true, true, 3}, {true, true, 200}, {true, true, 1}})
        for (const unsigned format : {BGRA, YUV420P, YUV422P, YUV410P, YUV411P, YUVA420P, YUVA444P})
            for (const unsigned padding : {0u, 3u}) {
                const auto proc = MakeVideo("atomize");
                proc->SetProperty("atomize_ishorizontal", a.horizontal ? "1" : "0");
                proc->SetProperty("atomize_isvertical", a.vertical ? "1" : "0");
                proc->SetProperty("atomize_level", std::to_string(a.level).c_str());
                for (const unsigned seed : {5u, 6u}) { // the second frame draws nothing
                    auto frame = MakeFrame({format, 37, 22, padding, 0, padding == 3}, seed);
                    HostFrame expected = *frame;
                    std::srand(5);
                    a.Draw(expected);
                    std::srand(seed == 5 ? 5 : 99);
                    test::Run(*proc, *frame);
                    ASSERT_NO_FATAL_FAILURE(ExpectSame(*frame, expected,
                                                       "level " + std::to_string(a.level) + ", format " +
                                                           std::to_string(format)));
                }
            }
}

TEST(Atomize, IsAsInTheLedger) {
    ledger::ExpectInLedger("atomize", [](const auto& of, HostFrame& frame) {
        const Atomize plain{of.Int("atomize_ishorizontal") == 1, of.Int("atomize_isvertical") == 1,
                            static_cast<unsigned>(of.Int("atomize_level"))};
        std::srand(ledger::kSeed);
        if (plain.level > 1) plain.Draw(frame);
    });
}

TEST(Atomize, ChangesWithItsPropertiesOnly) {
    const auto proc = MakeVideo("atomize", {{"atomize_ishorizontal", "1"}, {"atomize_level", "9"}});
    const auto render = [&](unsigned width = 64, unsigned height = 40) {
        auto frame = MakeFrame({BGRA, width, height}, 5);
        test::Run(*proc, *frame);
        return frame->planes[0].bytes;
    };
    const auto first = render();
    EXPECT_EQ(render(), first);
    render(30, 20); // frames of other sizes change nothing
    render(90, 60);
    EXPECT_EQ(render(), first);
    proc->SetProperty("atomize_level", "9");
    EXPECT_EQ(render(), first);
    proc->SetProperty("atomize_level", "0");
    EXPECT_EQ(render(), MakeFrame({BGRA, 64, 40}, 5)->planes[0].bytes);
    proc->SetProperty("atomize_level", "9");
    EXPECT_NE(render(), first);
    // A frame that is not served takes the turn of the first one.
    proc->SetProperty("atomize_level", "8");
    auto unserved = MakeFrame({RGB24, 8, 8});
    test::Run(*proc, *unserved);
    EXPECT_EQ(render(), MakeFrame({BGRA, 64, 40}, 5)->planes[0].bytes);
}

} // namespace
