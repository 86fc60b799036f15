/// Our own conversions between planes and pixels, and flattening, at every level, against double precision.
#include <algorithm>
#include <cmath>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "mediabridge/compose.h"
#include "mediabridge/flatten.h"
#include "mediabridge/pixel_conversion.h"
#include "tests/support/colour_model.h"
#include "tests/support/feature_mask.h"
#include "tests/support/guarded_bytes.h"

namespace {

using namespace mediabridge;
using namespace test;

/// A picture whose planes end, or begin, at protected pages.
struct Guarded {
    AVFramePtr picture{av_frame_alloc()};
    std::vector<GuardedBytes> planes;

    Guarded(AVPixelFormat format, int width, int height, Flush flush, unsigned seed) {
        std::mt19937 random(seed);
        const AVPixFmtDescriptor& of = *av_pix_fmt_desc_get(format);
        picture->format = format;
        picture->width = width;
        picture->height = height;
        for (int plane = 0; plane < av_pix_fmt_count_planes(format); ++plane) {
            const bool chroma = plane == 1 || plane == 2;
            const int columns = AV_CEIL_RSHIFT(width, chroma ? of.log2_chroma_w : 0) * of.comp[0].step;
            const int rows = AV_CEIL_RSHIFT(height, chroma ? of.log2_chroma_h : 0), pitch = columns + plane;
            planes.emplace_back(static_cast<size_t>(pitch * (rows - 1) + columns), uint8_t{}, flush);
            // Extremes in every other picture: filters and matrices go furthest there.
            for (uint8_t& byte : planes.back())
                byte = static_cast<uint8_t>(seed % 2 ? random() : random() % 2 * 255);
            picture->data[plane] = planes.back().data();
            picture->linesize[plane] = pitch;
        }
    }
};

struct Case {
    AVColorSpace matrix;
    AVColorRange range;
    AVChromaLocation chroma;
    ScaleQuality quality;
    ColourModel model;
};
const Case kCases[] = {
    {AVCOL_SPC_SMPTE170M,
     AVCOL_RANGE_MPEG,
     AVCHROMA_LOC_LEFT,
     ScaleQuality::Bicubic,
     {0.299, 0.114, false, true, 0, 0.5}},
    {AVCOL_SPC_BT709,
     AVCOL_RANGE_MPEG,
     AVCHROMA_LOC_TOPLEFT,
     ScaleQuality::Bicubic,
     {0.2126, 0.0722, false, true, 0, 0}},
    {AVCOL_SPC_BT2020_NCL,
     AVCOL_RANGE_MPEG,
     AVCHROMA_LOC_CENTER,
     ScaleQuality::Bicubic,
     {0.2627, 0.0593, false, true, 0.5, 0.5}},
    {AVCOL_SPC_SMPTE170M,
     AVCOL_RANGE_JPEG,
     AVCHROMA_LOC_CENTER,
     ScaleQuality::Bilinear,
     {0.299, 0.114, true, false, 0.5, 0.5}},
    {AVCOL_SPC_BT709,
     AVCOL_RANGE_JPEG,
     AVCHROMA_LOC_BOTTOMLEFT,
     ScaleQuality::Fastest,
     {0.2126, 0.0722, true, false, 0, 1}},
    {AVCOL_SPC_BT2020_NCL,
     AVCOL_RANGE_JPEG,
     AVCHROMA_LOC_BOTTOM,
     ScaleQuality::Bicubic,
     {0.2627, 0.0593, true, true, 0.5, 1}},
};
constexpr AVPixelFormat kPlanar[] = {AV_PIX_FMT_YUV420P,  AV_PIX_FMT_YUV422P,  AV_PIX_FMT_YUV444P,
                                     AV_PIX_FMT_YUVA420P, AV_PIX_FMT_YUVA422P, AV_PIX_FMT_YUVA444P};
constexpr AVPixelFormat kPacked[] = {AV_PIX_FMT_BGRA, AV_PIX_FMT_BGR0,  AV_PIX_FMT_RGBA,
                                     AV_PIX_FMT_RGB0, AV_PIX_FMT_RGB24, AV_PIX_FMT_BGR24};

void Judge(const AVFrame& source, const AVFrame& result, const Case& way, bool toPixels) {
    const Grid chroma = Component(toPixels ? source : result, 1);
    const auto wanted = toPixels ? way.model.Rgb(source) : way.model.Yuv(source, chroma.width, chroma.height);
    for (int i = 0; i < 3; ++i) {
        const SampleError error(Component(result, i), wanted[static_cast<size_t>(i)]);
        EXPECT_LE(error.largest, 0.55) << "component " << i;
    }
    const auto alpha = [](const AVFrame& picture) {
        return av_pix_fmt_desc_get(static_cast<AVPixelFormat>(picture.format))->flags & AV_PIX_FMT_FLAG_ALPHA;
    };
    if (!alpha(result)) return;
    const Grid found = Component(result, 3);
    if (alpha(source))
        EXPECT_EQ(found.samples, Component(source, 3).samples);
    else
        EXPECT_EQ(std::ranges::count(found.samples, 255), std::ssize(found.samples));
}

/// What the conversion makes of the source, at every level the same.
Guarded Converted(const PictureSide& from, const PictureSide& to, ScaleQuality quality, const AVFrame& source,
                  Flush flush) {
    auto conversion = PixelConversion::Between(from, to, quality);
    Guarded first(to.format, to.width, to.height, flush, 1);
    EXPECT_TRUE(conversion);
    for (const unsigned mask : kLevelMasks) {
        const FeatureMask level(mask);
        Guarded result(to.format, to.width, to.height, flush, 1);
        if (conversion) conversion->Run(source, *result.picture);
        EXPECT_TRUE(mask == kLevelMasks[0] || result.planes == first.planes) << mask;
        first = std::move(result);
    }
    return first;
}

PictureSide Rgb(AVPixelFormat format, int width, int height) {
    return {format, width, height, AVCOL_RANGE_JPEG, AVCOL_SPC_SMPTE170M, AVCHROMA_LOC_UNSPECIFIED, false};
}

TEST(PixelConversion, IsTheNearestToDoublePrecisionAndTheSameAtEveryLevel) {
    const int sizes[][2] = {{1, 1}, {2, 3}, {5, 2}, {33, 17}, {64, 9}, {131, 6}, {198, 12}};
    unsigned seed = 0;
    for (const auto& [width, height] : sizes)
        for (const AVPixelFormat planar : kPlanar)
            for (const AVPixelFormat packed : kPacked)
                for (const bool toPixels : {true, false}) {
                    const Case& way = kCases[++seed / 2 % std::size(kCases)];
                    const AVPixelFormat from = toPixels ? planar : packed, to = toPixels ? packed : planar;
                    SCOPED_TRACE(std::string(av_get_pix_fmt_name(from)) + " to " + av_get_pix_fmt_name(to) +
                                 ", " + std::to_string(width) + "x" + std::to_string(height) + ", case " +
                                 std::to_string(&way - kCases));
                    const PictureSide rgb = Rgb(packed, width, height);
                    const PictureSide yuv = {planar, width, height, way.range, way.matrix, way.chroma, false};
                    const Flush flush = seed % 3 ? Flush::End : Flush::Start;
                    const Guarded source(from, width, height, flush, seed);
                    const Guarded first = Converted(toPixels ? yuv : rgb, toPixels ? rgb : yuv, way.quality,
                                                    *source.picture, flush);
                    Judge(*source.picture, *first.picture, way, toPixels);
                }
}

TEST(PixelConversion, WidensAndAddsAlpha) {
    const int sizes[][2] = {{1, 2}, {3, 4}, {5, 7}, {70, 71}, {131, 140}, {200, 210}, {64, 128}};
    unsigned seed = 0;
    for (const auto& size : sizes)
        for (const AVPixelFormat format :
             {AV_PIX_FMT_BGRA, AV_PIX_FMT_RGB0, AV_PIX_FMT_YUV420P, AV_PIX_FMT_YUVA444P}) {
            const int width = size[0], wide = size[1];
            SCOPED_TRACE(std::string(av_get_pix_fmt_name(format)) + ", " + std::to_string(width) + " to " +
                         std::to_string(wide));
            const Case& way = kCases[++seed % 2 ? 0 : 3];
            const bool planar = format == AV_PIX_FMT_YUV420P || format == AV_PIX_FMT_YUVA444P;
            PictureSide from = Rgb(format, width, 5);
            if (planar) from = {format, width, 5, way.range, way.matrix, way.chroma, false};
            const Flush flush = seed % 3 ? Flush::End : Flush::Start;
            const Guarded source(format, width, 5, flush, seed);
            const Guarded found =
                Converted(from, Rgb(AV_PIX_FMT_RGB24, wide, 5), way.quality, *source.picture, flush);
            for (int i = 0; i < 3; ++i) {
                Grid old = planar ? way.model.Rgb(*source.picture)[static_cast<size_t>(i)]
                                  : Component(*source.picture, i);
                Grid wanted(wide, 5);
                for (int x = 0; x < wide; ++x)
                    for (int y = 0; y < 5; ++y)
                        wanted.At(x, y) =
                            way.model.Mixed((x + 0.5) * width / wide - 0.5, 1, width, [&](int column) {
                                return std::clamp(old.At(column, y), -512.0, 512.0);
                            });
                EXPECT_LE(SampleError(Component(*found.picture, i), wanted).largest, 0.625)
                    << "component " << i;
            }
            for (const AVPixelFormat to : {AV_PIX_FMT_BGRA, AV_PIX_FMT_RGBA}) {
                const Guarded opaque = Converted(Rgb(AV_PIX_FMT_RGB24, wide, 5), Rgb(to, wide, 5),
                                                 way.quality, *found.picture, flush);
                for (int i = 0; i < 3; ++i)
                    EXPECT_EQ(Component(*opaque.picture, i).samples, Component(*found.picture, i).samples);
                const Grid alpha = Component(*opaque.picture, 3);
                EXPECT_EQ(std::ranges::count(alpha.samples, 255), std::ssize(alpha.samples));
            }
        }
}

/// A component blended over a colour, by the mean alpha of the pixels that share each sample.
Grid Flattened(const AVFrame& picture, int component, double colour) {
    Grid samples = Component(picture, component), alpha = Component(picture, 3);
    const int shared = component > 0 && picture.format == AV_PIX_FMT_YUVA420P ? 2 : 1;
    for (int y = 0; y < samples.height; ++y)
        for (int x = 0; x < samples.width; ++x) {
            double sum = 0;
            for (int i = 0; i < shared * shared; ++i)
                sum += alpha.At(std::min(x * shared + i % shared, alpha.width - 1),
                                std::min(y * shared + i / shared, alpha.height - 1));
            const double weight = std::floor(sum / (shared * shared) + 0.5) / 255;
            samples.At(x, y) = std::floor(samples.At(x, y) * weight + colour * (1 - weight) + 0.5);
        }
    return samples;
}

// The largest pictures have each value at each alpha. Of pictures that others have too a copy is made.
void ExpectFlattens(Guarded source, bool packed) {
    AVFrame& picture = *source.picture;
    if (picture.width == 512)
        for (int plane = 0; plane < (packed ? 1 : 4); ++plane)
            for (int i = 0; i < std::ssize(source.planes[static_cast<size_t>(plane)]); ++i) {
                const bool small = picture.format == AV_PIX_FMT_YUVA420P && plane % 3 != 0;
                const int x = i % picture.linesize[plane] / (packed ? 4 : 1), y = i / picture.linesize[plane];
                const bool alpha = packed ? i % 4 == 3 : plane == 3;
                picture.data[plane][i] = static_cast<uint8_t>((alpha ? y : x) / (small ? 1 : 2));
            }
    std::vector<Grid> wanted;
    const int black = packed || picture.color_range == AVCOL_RANGE_JPEG ? 0 : 16;
    for (int i = 0; i < 3; ++i) wanted.push_back(Flattened(picture, i, i > 0 && !packed ? 128 : black));
    picture.buf[0] = av_buffer_create(
        picture.data[0], 1, [](void*, uint8_t*) {}, nullptr, 0);
    const uint8_t* const own = picture.data[0];
    const AVFramePtr copy = FlattenOverBlack(AVFramePtr(av_frame_clone(&picture)));
    const AVFramePtr flat = FlattenOverBlack(std::move(source.picture));
    ASSERT_TRUE(copy && flat);
    EXPECT_EQ(flat->data[0], own);
    EXPECT_NE(copy->data[0], own);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(Component(*flat, i).samples, wanted[static_cast<size_t>(i)].samples) << i;
        EXPECT_EQ(Component(*copy, i).samples, wanted[static_cast<size_t>(i)].samples) << i;
    }
    if (packed)
        EXPECT_EQ(std::ranges::count(Component(*flat, 3).samples, 255), flat->width * flat->height);
    else
        EXPECT_EQ(av_pix_fmt_count_planes(static_cast<AVPixelFormat>(flat->format)), 3);
}

TEST(Flatten, IsTheNearestToPlainArithmeticAtEveryLevel) {
    const int sizes[][2] = {{1, 1}, {2, 3}, {5, 2}, {33, 17}, {131, 6}, {198, 5}, {512, 512}};
    unsigned seed = 0;
    for (const auto& [width, height] : sizes)
        for (const AVPixelFormat format : {AV_PIX_FMT_BGRA, AV_PIX_FMT_YUVA420P, AV_PIX_FMT_YUVA444P})
            for (const unsigned mask : kLevelMasks) {
                SCOPED_TRACE(std::string(av_get_pix_fmt_name(format)) + ", " + std::to_string(width) +
                             ", level " + std::to_string(mask));
                const FeatureMask level(mask);
                ++seed;
                Guarded source(format, width, height, seed % 3 ? Flush::End : Flush::Start, seed);
                source.picture->color_range = seed % 2 ? AVCOL_RANGE_JPEG : AVCOL_RANGE_UNSPECIFIED;
                ExpectFlattens(std::move(source), format == AV_PIX_FMT_BGRA);
            }
}

// Above an opaque picture at every level, above a transparent one, and colours back from over black.
TEST(Compose, IsTheNearestToPlainArithmetic) {
    const int sizes[][2] = {{1, 1}, {5, 2}, {33, 17}, {131, 6}, {256, 64}};
    unsigned seed = 0;
    for (const auto& size : sizes)
        for (const unsigned mask : kLevelMasks) {
            const int width = size[0], height = size[1];
            SCOPED_TRACE(std::to_string(width) + ", level " + std::to_string(mask));
            const FeatureMask level(mask);
            seed += 2;
            const Flush flush = seed % 3 ? Flush::End : Flush::Start;
            const Guarded above(AV_PIX_FMT_BGRA, width, height, flush, seed + 1);
            const Guarded below(AV_PIX_FMT_BGRA, width, height, flush, seed + mask % 2);
            const auto covered = [&](auto cover, bool opaque) {
                Guarded result(AV_PIX_FMT_BGRA, width, height, flush, seed + mask % 2);
                cover(*result.picture, *above.picture);
                const auto &to = result.planes[0], &from = above.planes[0], &old = below.planes[0];
                for (size_t i = 0; i < to.size(); ++i) {
                    const double a = from[i | 3] / 255.0, b = (opaque ? 1 : old[i | 3] / 255.0) * (1 - a);
                    if (a + b == 0) continue; // any colour will do
                    const double colour = (from[i] * a + old[i] * b) / (a + b);
                    const double wanted = i % 4 != 3 ? colour : 255 * (a + b);
                    ASSERT_NEAR(to[i], wanted, 0.5 + 1e-9) << i;
                }
            };
            covered(mediabridge::CoverOpaque, true);
            covered(mediabridge::Cover, false);

            Guarded flat(AV_PIX_FMT_BGRA, width, height, flush, seed + 1);
            for (size_t i = 0; i < flat.planes[0].size(); ++i)
                flat.planes[0][i] =
                    static_cast<uint8_t>((flat.planes[0][i] * flat.planes[0][i | 3] + 127) / 255);
            mediabridge::TakeAlpha(*flat.picture, *mediabridge::AlphaAsGrey(*above.picture));
            for (size_t i = 0; i < flat.planes[0].size(); ++i) {
                const double alpha = above.planes[0][i | 3];
                const double near = alpha == 0 ? 255 : 0.5 + 127.5 / alpha;
                ASSERT_NEAR(flat.planes[0][i], above.planes[0][i], i % 4 == 3 ? 0 : near) << i;
            }
        }
}

TEST(PixelConversion, LeavesTheRestToTheLibrary) {
    const PictureSide rgb = Rgb(AV_PIX_FMT_BGRA, 8, 8);
    const PictureSide yuv = {AV_PIX_FMT_YUV420P, 8,    8, AVCOL_RANGE_MPEG, AVCOL_SPC_BT709,
                             AVCHROMA_LOC_LEFT,  false};
    const auto serves = [&](auto change, ScaleQuality quality = ScaleQuality::Bicubic) {
        PictureSide source = yuv;
        change(source);
        return PixelConversion::Between(source, rgb, quality).has_value();
    };
    EXPECT_TRUE(serves([](PictureSide&) {}));
    EXPECT_FALSE(serves([](PictureSide&) {}, ScaleQuality::Lanczos));
    EXPECT_FALSE(serves([](PictureSide& side) { side.width = 9; }));
    EXPECT_FALSE(serves([](PictureSide& side) { side.matrix = AVCOL_SPC_YCGCO; }));
    EXPECT_FALSE(serves([](PictureSide& side) { side.bottomUp = true; }));
    EXPECT_FALSE(serves([](PictureSide& side) { side.format = AV_PIX_FMT_NV12; }));
    EXPECT_FALSE(serves([](PictureSide& side) { side.format = AV_PIX_FMT_BGRA; }));
}

} // namespace
