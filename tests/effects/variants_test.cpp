// Effects that have a plain kernel and one after MMX, which compute different things. Compiled twice: once
// for the processor as it is, and once, with TEST_PLAIN_VARIANTS, hiding from the plug-in what makes it
// choose the second kind. A program of its own, since some of the choices last as long as the process.
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/ledger/confirm.h"
#include "tests/support/effect_cases.h"
#include "tests/support/light.h"

namespace {

using namespace AVBased;
using test::HostFrame;
using Byte = unsigned char;

#ifdef TEST_PLAIN_VARIANTS
constexpr bool kMmx = false;
constexpr unsigned kMasks[] = {0, 0x1FA, 0x3FA, ~5u};
#else
constexpr bool kMmx = true;
constexpr std::span<const unsigned> kMasks = test::kLevelMasks;
#endif

void ExpectVariant(const test::Setting& setting, const test::Plain& packed, const test::Plain& planar) {
    test::ExpectComputes(setting, packed, planar, 0, kMasks);
}

const test::Plain kUnchanged = [](HostFrame&) {};

Byte Limited(long long value, long long low, long long high) {
    return static_cast<Byte>(std::clamp(value, low, high));
}

// Emboss

Byte EmbossPacked(int c, int above, int level) {
    if (!kMmx) return static_cast<Byte>(std::clamp((c - above) * 1LL * level, -128LL, 127LL) + 128);
    const int16_t t = static_cast<int16_t>(c * 1LL * level + 128),
                  u = static_cast<int16_t>(above * 1LL * level);
    return Limited(std::clamp(t - u, -32768, 32767), 0, 255);
}

Byte EmbossPlanar(int c, int above, int level, bool tail) {
    if (!kMmx) {
        const auto value = static_cast<uint32_t>((c - above) * 1LL * level + 128);
        return static_cast<Byte>(std::min(value, 255u));
    }
    return tail ? static_cast<Byte>(std::clamp(2 * (c - above), -128, 127) + 128)
                : EmbossPacked(c, above, level);
}

auto Emboss(int level) {
    return [=](HostFrame& frame) {
        const bool packed = frame.GetPixelFormat() == BGRA;
        for (size_t i = 0; i < (packed ? 1 : 3); ++i) {
            HostFrame::Plane& plane = frame.planes[i];
            HostFrame::Plane old = plane;
            for (unsigned y = 1; y < plane.rows; ++y)
                for (unsigned x = 0; x < plane.width; ++x) {
                    const int c = plane.At(x, y), above = old.At(x, y - 1);
                    if (!packed)
                        plane.At(x, y) = EmbossPlanar(c, above, level, x >= plane.width / 4 * 4);
                    else if (x % 4 != 3)
                        plane.At(x, y) = EmbossPacked(c, above, level);
                }
        }
    };
}

TEST(Variants, Emboss) {
    for (const int level : {0, 1, -3, 127, -128, 129, 257, 1000, 65536, 16777217, -2147483647 - 1}) {
        const test::Setting setting{"emboss", {{"emboss_level", std::to_string(level)}}, level <= 129};
        ASSERT_NO_FATAL_FAILURE(ExpectVariant(setting, Emboss(level), Emboss(level)));
    }
}

// Mosaic

struct Rectangle {
    unsigned x1, y1, x2, y2;
};

// As it is defined: row by row and block by block, on the picture as it is by then.
auto Mosaic(Rectangle r, unsigned step, bool packed) {
    return [=](HostFrame& frame) {
        HostFrame::Plane& first = frame.planes[0];
        const unsigned unit = packed ? 4 : 1, width = first.width / unit, block = 1u << step;
        const unsigned left = std::min(r.x1, r.x2), top = std::min(r.y1, r.y2);
        const unsigned right = std::max(r.x1, r.x2) / block * block;
        const unsigned bottom = std::max(r.y1, r.y2) / block * block;
        if (std::max(r.x1, r.x2) > width || std::max(r.y1, r.y2) > first.rows) return;
        const test::Layout layout = test::LayoutOf(frame.GetPixelFormat());
        for (unsigned y = top; y < bottom; ++y) {
            const unsigned source = top + (y - top) / block * block;
            for (unsigned start = left; start < right; start += block)
                for (unsigned x = start; x < std::min(start + block, width); ++x) {
                    for (unsigned i = 0; i < unit; ++i)
                        first.At(x * unit + i, y) = first.At(start * unit + i, source);
                    if (packed || (x - start) % 4 != 0) continue;
                    for (const size_t p : {1u, 2u}) {
                        HostFrame::Plane& chroma = frame.planes[p];
                        const unsigned cx = x >> layout.hShift, cy = y >> layout.vShift;
                        if (cx < chroma.width && cy < chroma.rows)
                            chroma.At(cx, cy) = chroma.At(start >> layout.hShift, source >> layout.vShift);
                    }
                }
        }
    };
}

TEST(Variants, Mosaic) {
    for (const Rectangle r : {Rectangle{0, 0, 16, 4},
                              {2, 1, 13, 3},
                              {17, 7, 3, 2},
                              {0, 0, 65, 5},
                              {64, 5, 1, 0},
                              {74, 80, 523, 401}})
        for (const unsigned step : {1u, 2u, 3u, 5u, 7u}) {
            const test::Setting setting{"mosaic",
                                        {{"mosaic_x1", std::to_string(r.x1)},
                                         {"mosaic_y1", std::to_string(r.y1)},
                                         {"mosaic_x2", std::to_string(r.x2)},
                                         {"mosaic_y2", std::to_string(r.y2)},
                                         {"mosaic_step", std::to_string(step)}}};
            const test::Plain packed = Mosaic(r, step, true), planar = Mosaic(r, step, false);
            const bool tooSmall = step == 1;
            ASSERT_NO_FATAL_FAILURE(ExpectVariant(setting, tooSmall && kMmx ? kUnchanged : packed,
                                                  tooSmall ? kUnchanged : planar));
        }
}

TEST(Variants, MosaicWithoutBlocks) {
    for (const char* step : {"0", "31", "32", "-1"}) {
        const test::Setting setting{"mosaic",
                                    {{"mosaic_x2", "8"}, {"mosaic_y2", "4"}, {"mosaic_step", step}}};
        ASSERT_NO_FATAL_FAILURE(ExpectVariant(setting, kUnchanged, kUnchanged));
    }
    // Corners are unsigned: one left of the picture lies far to its right.
    const test::Setting outside{"mosaic", {{"mosaic_x1", "-1"}, {"mosaic_y2", "4"}, {"mosaic_step", "2"}}};
    ASSERT_NO_FATAL_FAILURE(ExpectVariant(outside, kUnchanged, kUnchanged));
    // Blocks larger than any picture.
    const test::Setting huge{"mosaic", {{"mosaic_x2", "64"}, {"mosaic_y2", "4"}, {"mosaic_step", "30"}}};
    ASSERT_NO_FATAL_FAILURE(test::ExpectComputes(huge, test::kPlanarFormats, kUnchanged, 0, kMasks));
}

// Mirage

// Both passes over the luma positions, as they are defined; the second one changes what it has left itself.
auto Mirage(unsigned enlargement, unsigned alpha) {
    return [=](HostFrame& frame) {
        HostFrame old = frame;
        const bool packed = frame.GetPixelFormat() == BGRA;
        const unsigned unit = packed ? 4 : 1;
        const unsigned w = frame.planes[0].width / unit, h = frame.planes[0].rows;
        const unsigned scale = 200 + enlargement, step = (200u << 16) / scale, z = (scale << 16) / 200;
        const unsigned offsetX = (((z * w) >> 16) - w) * step >> 1,
                       offsetY = (((z * h) >> 16) - h) * step >> 1;
        const unsigned a = ((alpha << 7) + 5120) / 100;
        const test::Layout layout = test::LayoutOf(frame.GetPixelFormat());
        // Calls visit(plane, old plane, column and row there, luma column and row, shifts).
        const auto forSamples = [&](auto visit) {
            for (unsigned y = 0; y < h; ++y)
                for (unsigned x = 0; x < w; ++x)
                    for (size_t p = 0; p < (packed ? 1 : 3); ++p) {
                        const unsigned hs = p ? layout.hShift : 0, vs = p ? layout.vShift : 0;
                        HostFrame::Plane& plane = frame.planes[p];
                        HostFrame::Plane& from = old.planes[p];
                        if ((x >> hs) * unit < plane.width && y >> vs < plane.rows)
                            visit(plane, from, x >> hs, y >> vs, x, y, hs, vs);
                    }
        };
        forSamples([&](HostFrame::Plane& plane, HostFrame::Plane& from, unsigned cx, unsigned cy, unsigned x,
                       unsigned y, unsigned hs, unsigned vs) {
            const unsigned sx =
                std::min(std::min((offsetX + x * step) >> 16, w - 1) >> hs, plane.width / unit - 1);
            const unsigned sy = std::min(std::min((offsetY + y * step) >> 16, h - 1) >> vs, plane.rows - 1);
            for (unsigned i = 0; i < unit; ++i) plane.At(cx * unit + i, cy) = from.At(sx * unit + i, sy);
        });
        forSamples([&](HostFrame::Plane& plane, HostFrame::Plane& from, unsigned cx, unsigned cy, unsigned,
                       unsigned, unsigned, unsigned) {
            for (unsigned i = 0; i < unit; ++i) {
                if (i == 3 && !kMmx) continue; // alpha stays that of the enlarged picture
                Byte& c = plane.At(cx * unit + i, cy);
                c = static_cast<Byte>((from.At(cx * unit + i, cy) * (256 - a) + c * a) >> 8);
            }
        });
    };
}

TEST(Variants, Mirage) {
    // Enlarged a little, a lot, not at all; below 0 it becomes smaller.
    for (const auto& [width, alpha] :
         {std::pair{10, 10}, {0, 0}, {333, 100}, {1000, 55}, {-100, 10}, {-201, 10}}) {
        const test::Setting setting{
            "mirage", {{"mirage_width", std::to_string(width)}, {"mirage_alpha", std::to_string(alpha)}}};
        const auto reference = Mirage(static_cast<unsigned>(width), static_cast<unsigned>(alpha));
        ASSERT_NO_FATAL_FAILURE(ExpectVariant(setting, reference, reference));
    }
}

#ifndef TEST_PLAIN_VARIANTS
TEST(Variants, AreAsInTheLedger) {
    ledger::ExpectInLedger("emboss",
                           [](const auto& of, HostFrame& frame) { Emboss(of.Int("emboss_level"))(frame); });
    ledger::ExpectInLedger("mosaic", [](const auto& of, HostFrame& frame) {
        const auto at = [&](const char* name) { return static_cast<unsigned>(of.Int(name)); };
        const Rectangle r = {at("mosaic_x1"), at("mosaic_y1"), at("mosaic_x2"), at("mosaic_y2")};
        if (at("mosaic_step") > 1) Mosaic(r, at("mosaic_step"), of.format == BGRA)(frame);
    });
    ledger::ExpectInLedger("mirage", [](const auto& of, HostFrame& frame) {
        Mirage(static_cast<unsigned>(of.Int("mirage_width")),
               static_cast<unsigned>(of.Int("mirage_alpha")))(frame);
    });
}
#endif

// Radiate

// They differ where an eighth of the level is no byte.
TEST(Variants, Radiate) {
    for (const test::PlainRays& rays : {test::PlainRays{20, 3, 500},
                                        {-100, 900, 2100},
                                        {31, 2, -20},
                                        {9, 9, -3000},
                                        {7, 3, 40000},
                                        {5, 3, -2147483647 - 1}})
        test::ExpectComputes(
            {"radiate",
             {{"radiate_x", std::to_string(rays.x)},
              {"radiate_y", std::to_string(rays.y)},
              {"radiate_level", std::to_string(rays.level)}}},
            test::kPacked,
            [&](HostFrame& frame) {
                HostFrame::Plane& pixels = frame.planes[0];
                const test::Plane8 plane = {pixels.Data(), pixels.width, pixels.pitch, pixels.rows};
                const size_t width = pixels.width / 4;
                if (kMmx)
                    rays.Radiate(plane, 4, width, pixels.rows, 0, 0, rays.MmxTone());
                else
                    rays.Radiate(plane, 4, width, pixels.rows, 0, 0, rays.PlainTone());
            },
            0, kMasks);
}

// A constant mix is the same through either kernel.
TEST(Variants, DirectFade) {
    const test::Setting setting{"directfadein", {{"duration", "120"}, {"fadein_color", "16711680"}}};
    const auto mix = [](HostFrame& frame) {
        test::ForPixels(frame, [](Byte* p) {
            p[0] /= 2;
            p[1] /= 2;
            p[2] = static_cast<Byte>((p[2] + 255) / 2);
        });
    };
    test::ExpectComputes(setting, test::kPacked, mix, 0, kMasks);
}

} // namespace
