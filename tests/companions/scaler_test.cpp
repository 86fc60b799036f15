/// Format and size conversion between the media libraries' pictures.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <set>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "mediabridge/picture_pool.h"
#include "mediabridge/scaler.h"

namespace {

using namespace mediabridge;

/// A picture of one colour; 8 bits a sample, or 16 stored.
AVFramePtr Flat(AVPixelFormat format, const std::vector<unsigned>& samples, bool wide = false) {
    constexpr int kSide = 32;
    AVFramePtr picture = AllocatePicture(format, kSide, kSide);
    for (int plane = 0; plane < 4 && picture->data[plane]; ++plane) {
        const bool packed = !picture->data[1];
        const int bytes = picture->linesize[plane];
        for (int y = 0; y < kSide && (plane == 0 || y < kSide / 2 || format == AV_PIX_FMT_YUV444P); ++y)
            for (int x = 0; x < bytes; ++x) {
                const auto component =
                    static_cast<std::size_t>(packed ? x % static_cast<int>(samples.size()) : plane);
                picture->data[plane][bytes * y + x] =
                    static_cast<unsigned char>(wide ? samples[component] >> (x % 2 * 8) : samples[component]);
            }
    }
    return picture;
}

std::vector<int> FirstPixel(const AVFrame* picture) {
    if (!picture->data[1]) return {picture->data[0][0], picture->data[0][1], picture->data[0][2]};
    return {picture->data[0][0], picture->data[1][0], picture->data[2][0]};
}

void ExpectNear(const std::vector<int>& found, const std::vector<int>& wanted, int tolerance) {
    for (std::size_t i = 0; i < wanted.size(); ++i)
        EXPECT_NEAR(found[i], wanted[i], tolerance) << "component " << i;
}

TEST(Scaler, DithersLostDepth) {
    for (const ScaleQuality quality :
         {ScaleQuality::Fastest, ScaleQuality::Bilinear, ScaleQuality::Bicubic}) {
        const AVFramePtr picture = Flat(AV_PIX_FMT_YUV420P10LE, {513, 512, 512}, true);
        const AVFramePtr result = Scaler(AV_PIX_FMT_YUV420P, 0, 0, quality).Convert(picture.get());
        ASSERT_TRUE(result);
        int sum = 0;
        std::set<int> values;
        for (int y = 0; y < 32; ++y)
            for (int x = 0; x < 32; ++x) {
                const int value = result->data[0][result->linesize[0] * y + x];
                values.insert(value);
                sum += value;
            }
        EXPECT_EQ(values, (std::set<int>{128, 129}));
        EXPECT_NEAR(sum / 1024.0, 513 / 4.0, 0.1);
    }
}

TEST(Scaler, LosesNothingThatFits) {
    AVFramePtr picture = AllocatePicture(AV_PIX_FMT_YUV420P, 33, 17);
    std::srand(3);
    for (int plane = 0; plane < 3; ++plane)
        for (int i = 0; i < picture->linesize[plane] * (plane ? 9 : 17); ++i)
            picture->data[plane][i] = static_cast<unsigned char>(std::rand());
    const auto roundTrip = [](const AVFrame* source, AVPixelFormat format) {
        const AVFramePtr there = Scaler(format, 0, 0, ScaleQuality::Bicubic).Convert(source);
        return Scaler(static_cast<AVPixelFormat>(source->format), 0, 0, ScaleQuality::Bicubic)
            .Convert(there.get());
    };
    const auto expectSame = [](const AVFrame* a, const AVFrame* b, int plane, int bytes, int rows) {
        for (int y = 0; y < rows; ++y)
            ASSERT_EQ(std::memcmp(a->data[plane] + a->linesize[plane] * y,
                                  b->data[plane] + b->linesize[plane] * y, static_cast<std::size_t>(bytes)),
                      0)
                << "plane " << plane << " row " << y;
    };
    for (const AVPixelFormat between : {AV_PIX_FMT_YUV420P, AV_PIX_FMT_YUV420P10LE, AV_PIX_FMT_NV12}) {
        const AVFramePtr back = roundTrip(picture.get(), between);
        for (int plane = 0; plane < 3; ++plane)
            expectSame(picture.get(), back.get(), plane, plane ? 17 : 33, plane ? 9 : 17);
    }
    AVFramePtr packed = AllocatePicture(AV_PIX_FMT_BGRA, 33, 17);
    for (int i = 0; i < packed->linesize[0] * 17; ++i)
        packed->data[0][i] = static_cast<unsigned char>(std::rand());
    const AVFramePtr back = roundTrip(packed.get(), AV_PIX_FMT_ARGB);
    expectSame(packed.get(), back.get(), 0, 33 * 4, 17);
}

// Whatever used the block before; some effects copy or show what lies there.
TEST(Scaler, LeavesZerosBehindRowsAsNewPicturesHaveThem) {
    constexpr int kWidth = 47, kHeight = 9;
    const AVFramePtr wide = Flat(AV_PIX_FMT_RGB24, {200, 100, 50});
    for (const AVPixelFormat format : {AV_PIX_FMT_BGRA, AV_PIX_FMT_YUV420P, AV_PIX_FMT_GRAY8}) {
        const auto expectZeros = [&](AVFramePtr picture, const char* how) {
            for (int plane = 0; plane < 4 && picture->data[plane]; ++plane) {
                const int bytes = format == AV_PIX_FMT_BGRA ? 4 * kWidth : plane ? (kWidth + 1) / 2 : kWidth;
                const int rows = plane ? (kHeight + 1) / 2 : kHeight, pitch = picture->linesize[plane];
                ASSERT_LT(bytes, pitch);
                for (int y = 0; y < rows; ++y) {
                    const auto* const row = picture->data[plane] + pitch * y;
                    ASSERT_EQ(std::count(row + bytes, row + pitch, 0), pitch - bytes)
                        << how << ", format " << format << ", plane " << plane << ", row " << y;
                }
                std::memset(picture->data[plane], 0xA5,
                            static_cast<std::size_t>(pitch) * static_cast<std::size_t>(rows));
            }
        };
        Scaler scaler(format, kWidth, kHeight, ScaleQuality::Bicubic);
        const AVFramePtr like = AllocatePicture(format, kWidth, kHeight);
        for (int time = 0; time < 2; ++time) {
            expectZeros(AllocatePicture(format, kWidth, kHeight), "new");
            expectZeros(scaler.Convert(wide.get()), "converted");
            expectZeros(CopyPicture(like.get()), "copied");
            expectZeros(scaler.Convert(like.get()), "already of that shape");
        }
    }
}

TEST(Scaler, HonoursRange) {
    AVFramePtr limited = Flat(AV_PIX_FMT_YUV420P, {235, 128, 128});
    Scaler toRgb(AV_PIX_FMT_BGRA, 0, 0, ScaleQuality::Bilinear);
    ExpectNear(FirstPixel(toRgb.Convert(limited.get()).get()), {255, 255, 255}, 1);
    limited->color_range = AVCOL_RANGE_JPEG; // the same scaler sees that the shape has changed
    ExpectNear(FirstPixel(toRgb.Convert(limited.get()).get()), {235, 235, 235}, 1);
    limited->color_range = AVCOL_RANGE_MPEG;
    const AVFramePtr full = Scaler(AV_PIX_FMT_YUVJ420P, 0, 0, ScaleQuality::Bilinear).Convert(limited.get());
    EXPECT_EQ(full->format, AV_PIX_FMT_YUVJ420P);
    ExpectNear(FirstPixel(full.get()), {255, 128, 128}, 1);
    ExpectNear(FirstPixel(toRgb.Convert(full.get()).get()), {255, 255, 255}, 1);
    const AVFramePtr kept = Scaler(AV_PIX_FMT_YUV422P, 0, 0, ScaleQuality::Bilinear).Convert(full.get());
    EXPECT_EQ(kept->color_range, AVCOL_RANGE_JPEG);
    ExpectNear(FirstPixel(kept.get()), {255, 128, 128}, 1);
    const AVFramePtr white = Flat(AV_PIX_FMT_BGRA, {255, 255, 255, 255});
    ExpectNear(FirstPixel(Scaler(AV_PIX_FMT_YUV420P, 0, 0, ScaleQuality::Bilinear, AVCOL_RANGE_JPEG)
                              .Convert(white.get())
                              .get()),
               {255, 128, 128}, 1);
}

TEST(Scaler, HonoursMatrix) {
    const AVFramePtr red = Flat(AV_PIX_FMT_BGRA, {0, 0, 255, 255});
    const std::pair<AVColorSpace, std::vector<int>> matrices[] = {
        {AVCOL_SPC_BT709, {63, 102, 240}},
        {AVCOL_SPC_UNSPECIFIED, {81, 90, 240}},
        {AVCOL_SPC_SMPTE170M, {81, 90, 240}},
    };
    for (const auto& [matrix, expected] : matrices) {
        red->colorspace = matrix;
        const AVFramePtr yuv = Scaler(AV_PIX_FMT_YUV444P, 0, 0, ScaleQuality::Bilinear).Convert(red.get());
        EXPECT_EQ(yuv->colorspace, matrix);
        ExpectNear(FirstPixel(yuv.get()), expected, 1);
        const AVFramePtr back = Scaler(AV_PIX_FMT_BGRA, 0, 0, ScaleQuality::Bilinear).Convert(yuv.get());
        ExpectNear(FirstPixel(back.get()), {0, 0, 255}, 3);
    }
    red->colorspace = AVCOL_SPC_RGB;
    const AVFramePtr yuv = Scaler(AV_PIX_FMT_YUV444P, 0, 0, ScaleQuality::Bilinear).Convert(red.get());
    EXPECT_EQ(yuv->colorspace, AVCOL_SPC_SMPTE170M);
}

TEST(Scaler, KeepsPropertiesAndShowsThePictureAsWide) {
    const AVFramePtr picture = Flat(AV_PIX_FMT_YUV420P, {90, 128, 128});
    picture->pts = 77;
    picture->interlaced_frame = 1;
    picture->color_primaries = AVCOL_PRI_BT709;
    picture->sample_aspect_ratio = {4, 3};
    Scaler scaler(AV_PIX_FMT_BGRA, 16, 64, ScaleQuality::Bicubic);
    const AVFramePtr result = scaler.Convert(picture.get());
    ASSERT_TRUE(result) << scaler.Error();
    EXPECT_EQ(result->width, 16);
    EXPECT_EQ(result->height, 64);
    EXPECT_EQ(result->pts, 77);
    EXPECT_EQ(result->interlaced_frame, 1);
    EXPECT_EQ(result->color_primaries, AVCOL_PRI_BT709);
    EXPECT_NEAR(av_q2d(result->sample_aspect_ratio) * 16 / 64, 4.0 / 3, 1e-9);

    Scaler impossible(AV_PIX_FMT_PAL8, 0, 0, ScaleQuality::Bicubic);
    EXPECT_FALSE(impossible.Convert(picture.get()));
    EXPECT_NE(impossible.Error().find("yuv420p 32x32 to pal8"), std::string::npos) << impossible.Error();
}

} // namespace
