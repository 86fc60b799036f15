/// Effects on a part of a picture: blending with the picture before, areas, and masks from files.
#include <algorithm>
#include <cmath>
#include <numbers>

#include <gtest/gtest.h>

#include "host/effects/mask_file.h"
#include "host/picture/area_mask.h"
#include "mediabridge/picture_blend.h"
#include "mediabridge/picture_pool.h"
#include "tests/host/clips.h"
#include "tests/support/feature_mask.h"
#include "tests/support/host_frame.h"

namespace {

using aveffect::Area;
using mediabridge::AVFramePtr;

int Nearest(double value) { return static_cast<int>(std::floor(value + 0.5)); }
int At(const AVFrame& grey, int x, int y) { return grey.data[0][ptrdiff_t{y} * grey.linesize[0] + x]; }

AVFramePtr RandomMask(int width, int height, unsigned seed) {
    AVFramePtr mask = mediabridge::AllocatePicture(AV_PIX_FMT_GRAY8, width, height);
    std::mt19937 random(seed);
    for (int i = 0; i < height * mask->linesize[0]; ++i) mask->data[0][i] = static_cast<uint8_t>(random());
    return mask;
}

/// The effect's share of a sample by the masks of the pixels that it belongs to, 0 to 255.
int ShareOf(const AVFrame& mask, double strength, int x, int y, int across, int down) {
    int sum = 0;
    for (int j = 0; j < down; ++j)
        for (int i = 0; i < across; ++i)
            sum += Nearest(
                At(mask, std::min(x * across + i, mask.width - 1), std::min(y * down + j, mask.height - 1)) *
                strength);
    return Nearest(sum / static_cast<double>(across * down));
}

/// Blends random frames, without or with a mask, and holds every byte to plain arithmetic.
void ExpectBlends(const test::Shape& shape, double strength, bool masked) {
    SCOPED_TRACE(Describe(shape) + ", " + std::to_string(strength) + (masked ? ", mask" : ""));
    const auto frame = test::MakeFrame(shape, 1);
    test::Shape otherShape = shape;
    otherShape.extraPitch += 3;
    const auto before = test::MakeFrame(otherShape, 2);
    const AVFramePtr mask = RandomMask(static_cast<int>(shape.width), static_cast<int>(shape.height), 3);
    test::HostFrame wanted = *frame;
    const test::Layout layout = test::LayoutOf(shape.format);
    for (unsigned plane = 0; plane < wanted.planes.size(); ++plane)
        for (unsigned y = 0; y < wanted.planes[plane].rows; ++y)
            for (unsigned x = 0; x < wanted.planes[plane].width; ++x) {
                const bool chroma = plane == 1 || plane == 2;
                unsigned char& to = wanted.planes[plane].At(x, y);
                const int old = before->planes[plane].At(x, y);
                double share = strength;
                if (masked)
                    share =
                        ShareOf(*mask, strength, static_cast<int>(x / layout.pixelBytes), static_cast<int>(y),
                                1 << (chroma ? layout.hShift : 0), 1 << (chroma ? layout.vShift : 0)) /
                        255.0;
                to = static_cast<unsigned char>(Nearest(old + (to - old) * share + 1e-9));
            }
    mediabridge::PictureBlend blend;
    ASSERT_TRUE(masked ? blend.Mask(*frame, *before, *mask, strength) : blend.Mix(*frame, *before, strength));
    EXPECT_TRUE(*frame == wanted);
}

TEST(PictureBlend, IsPlainArithmeticOnEveryServedFormat) {
    for (const unsigned format : AVBased::kEffectFormats)
        for (const auto& [width, height] : {std::pair{1u, 1u}, {5u, 3u}, {66u, 39u}, {129u, 70u}})
            for (const bool roundUp : {false, true})
                for (const double strength : {0.0, 0.25, 11000 / 32768.0, 1.0})
                    for (const bool masked : {false, true})
                        ExpectBlends({.format = format,
                                      .width = width,
                                      .height = height,
                                      .extraPitch = 5,
                                      .roundUp = roundUp},
                                     strength, masked);
}

TEST(PictureBlend, LeavesWhatDoesNotMatch) {
    const auto frame = test::MakeFrame({AVBased::BGRA, 8, 8});
    const test::HostFrame old = *frame;
    mediabridge::PictureBlend blend;
    const AVFramePtr mask = RandomMask(8, 8, 1), small = RandomMask(8, 7, 1);
    for (const test::Shape& shape :
         {test::Shape{AVBased::YUV420P, 8, 8}, {AVBased::BGRA, 8, 7}, {AVBased::BGRA, 9, 8}})
        EXPECT_FALSE(blend.Mix(*frame, *test::MakeFrame(shape), 0.5)) << Describe(shape);
    const auto before = test::MakeFrame({AVBased::BGRA, 8, 8}, 2);
    EXPECT_FALSE(blend.Mask(*frame, *before, *small, 1));
    const AVFramePtr pixels = mediabridge::AllocatePicture(AV_PIX_FMT_BGRA, 8, 8);
    EXPECT_FALSE(blend.Mask(*frame, *before, *pixels, 1));
    EXPECT_TRUE(*frame == old);
}

TEST(PictureBlend, KnowsAMaskThatStays) {
    aveffect::AreaMask areas;
    mediabridge::PictureBlend kept;
    const auto ellipse = [](double x) { return Area{Area::Shape::Ellipse, x, 0.1, 0.5, 0.6}; };
    for (const auto& [x, strength, format] : {std::tuple{0.1, 1.0, unsigned{AVBased::YUV420P}},
                                              {0.1, 1.0, AVBased::YUV420P},
                                              {0.1, 0.3, AVBased::YUV420P},
                                              {0.4, 0.3, AVBased::YUV420P},
                                              {0.4, 0.3, AVBased::YUV422P},
                                              {0.4, 0.3, AVBased::BGRA},
                                              {0.4, 0.3, AVBased::YUV420P}}) {
        const test::Shape shape{format, 40, 30};
        const auto one = test::MakeFrame(shape, 1), other = test::MakeFrame(shape, 1),
                   before = test::MakeFrame(shape, 2);
        const AVFrame& mask = areas.Draw(ellipse(x), 5, false, 40, 30);
        ASSERT_TRUE(kept.Mask(*one, *before, mask, strength));
        ASSERT_TRUE(mediabridge::PictureBlend().Mask(*other, *before, mask, strength));
        EXPECT_TRUE(*one == *other) << x << " " << strength << " " << format;
    }
}

constexpr int kWidth = 72, kHeight = 54;

struct Pixels {
    double left, top, right, bottom;
    explicit Pixels(const Area& area)
        : left(area.x * kWidth)
        , top(area.y * kHeight)
        , right(left + area.width * kWidth)
        , bottom(top + area.height * kHeight) {}
};

double Overlap(double begin, double end, double otherBegin, double otherEnd) {
    return std::max(0.0, std::min(end, otherEnd) - std::max(begin, otherBegin)) / (end - begin);
}

double RectangleShare(const Area& area, double feather, double x, double y) {
    const Pixels box(area);
    const double half = std::max(1.0, std::min({feather, box.right - box.left, box.bottom - box.top})) / 2;
    return Overlap(x - half, x + half, box.left, box.right) *
           Overlap(y - half, y + half, box.top, box.bottom);
}

double EllipseShare(const Area& area, double feather, double x, double y) {
    const Pixels box(area);
    const double a = (box.right - box.left) / 2, b = (box.bottom - box.top) / 2;
    const double middleX = box.left + a, middleY = box.top + b;
    feather = std::min({feather, 2 * a, 2 * b});
    const auto inside = [&](double px, double py) {
        return std::hypot((px - middleX) / a, (py - middleY) / b) < 1;
    };
    if (feather == 0) { // counted on a fine grid
        constexpr int kFine = 40;
        int count = 0;
        for (int i = 0; i < kFine * kFine; ++i) {
            const int column = i % kFine, row = i / kFine;
            count += inside(x - 0.5 + (column + 0.5) / kFine, y - 0.5 + (row + 0.5) / kFine);
        }
        return count / static_cast<double>(kFine * kFine);
    }
    double nearest = 1e9;
    constexpr int kSteps = 800; // of one quarter, which is as all
    for (int i = 0; i < kSteps; ++i) {
        const double angle = i * std::numbers::pi / 2 / kSteps;
        nearest = std::min(nearest, std::hypot(a * std::cos(angle) - std::abs(x - middleX),
                                               b * std::sin(angle) - std::abs(y - middleY)));
    }
    return std::clamp(0.5 + (inside(x, y) ? nearest : -nearest) / feather, 0.0, 1.0);
}

TEST(AreaMask, IsTheShareOfEachPixelOrAnEvenRamp) {
    using enum Area::Shape;
    const struct {
        Area area;
        double feather;
        bool inverted;
        double tolerance; ///< levels: half for rounding, more for counting and for ellipses' distances
    } cases[] = {
        {{Rectangle, 0.25, 0.25, 0.5, 0.5}, 0, false, 0.51},
        {{Rectangle, 0.123, 0.217, 0.4567, 0.333}, 0, true, 0.51},
        {{Rectangle, -0.3, 0.6, 0.71, 2}, 9, false, 0.51},
        {{Rectangle, 0.3, 0.3, 0.2, 0.003}, 60, false, 0.51},
        {{Rectangle, 0.5, 0.5, 0, 0.5}, 5, true, 0.51},
        {{Rectangle, 1.5, 0.5, 1, 1}, 5, false, 0.51},
        {{Ellipse, 0.123, 0.217, 0.4567, 0.533}, 0, false, 2},
        {{Ellipse, -0.4, 0.37, 1.1, 1.5}, 0, true, 2},
        {{Ellipse, 0.41, 0.32, 0.012, 0.07}, 0, false, 2},
        {{Ellipse, -3, -3, 7, 7}, 0, false, 2},
        {{Ellipse, 0.2, 0.2, 0.375, 0.5}, 1, false, 1},
        {{Ellipse, 0.2, 0.1, 0.5625, 0.75}, 20, true, 0.6},
        {{Ellipse, 0.12, 0.1, 0.7, 0.6}, 8, false, 1},
        {{Ellipse, -0.2, 0.3, 1.3, 0.4}, 300, false, 1},
        {{Ellipse, 0.3, -0.5, 0.2, 1.8}, 6, true, 1.5},
        {{Ellipse, 0.5, 0.5, 0.5, 0}, 5, false, 0.51},
        {{Ellipse, std::nan(""), 0.5, 0.5, 0.5}, 5, false, 0.51},
        {{Rectangle, 0.5, std::nan(""), 0.5, 0.5}, 0, false, 0.51},
    };
    int index = 0;
    for (const auto& [area, feather, inverted, tolerance] : cases) {
        SCOPED_TRACE(index++);
        const bool none = !(area.width > 0 && area.height > 0) || std::isnan(area.x + area.y);
        const auto shareOf = area.shape == Rectangle ? RectangleShare : EllipseShare;
        std::vector<double> wanted;
        for (int i = 0; i < kWidth * kHeight; ++i) {
            const int column = i % kWidth, row = i / kWidth;
            const double share = none ? 0 : shareOf(area, feather, column + 0.5, row + 0.5);
            wanted.push_back(255 * (inverted ? 1 - share : share));
        }
        for (const unsigned level : test::kLevelMasks) {
            const test::FeatureMask levels(level);
            aveffect::AreaMask masks;
            const AVFrame& mask = masks.Draw(area, feather, inverted, kWidth, kHeight);
            for (int i = 0; i < kWidth * kHeight; ++i)
                ASSERT_NEAR(At(mask, i % kWidth, i / kWidth), wanted[static_cast<size_t>(i)], tolerance)
                    << i % kWidth << ", " << i / kWidth << ", level " << level;
        }
    }
}

TEST(AreaMask, IsDrawnAgainWhenSomethingChanged) {
    aveffect::AreaMask masks;
    const Area area;
    const auto scribble = [&](const AVFrame& mask) { mask.data[0][0] = 77; };
    scribble(masks.Draw(area, 3, false, 20, 10));
    EXPECT_EQ(At(masks.Draw(area, 3, false, 20, 10), 0, 0), 77);
    for (const auto& [feather, inverted, width] :
         {std::tuple{4.0, false, 20}, {4.0, true, 20}, {4.0, true, 21}}) {
        const AVFrame& mask = masks.Draw(area, feather, inverted, width, 10);
        EXPECT_NE(At(mask, 0, 0), 77);
        EXPECT_EQ(mask.width, width);
        scribble(mask);
    }
}

class MaskFiles : public testing::Test {
protected:
    /// Makes a file of what libavfilter's words describe.
    std::string Make(const std::string& name, const std::string& source, const std::string& options = "") {
        clips::Run("ffmpeg -v error -nostdin -y -f lavfi -i \"" + source + "\" " + options + " " +
                   (m_directory / name));
        return m_directory / name;
    }
    clips::TemporaryDirectory m_directory;
};

TEST_F(MaskFiles, ShowTheirPictureOfATimeInFullRange) {
    // Five pictures, 100 ms each, of luma 16, 66, 116, ...; in full range (Y - 16) * 255 / 219.
    const std::string clip =
        Make("clip.mkv", "nullsrc=s=32x24:r=10:d=0.5,format=yuv420p,geq=lum=16+50*N:cb=128:cr=128",
             "-c:v ffv1 -color_range tv");
    aveffect::MaskFile mask(clip, false, 0, nullptr), inverted(clip, true, 0, nullptr);
    for (const auto& [ms, number] : {std::pair{0, 0},
                                     {99, 0},
                                     {100, 1},
                                     {250, 2},
                                     {399, 3},
                                     {400, 4},
                                     {99000, 4},
                                     {100, 1},
                                     {0, 0},
                                     {310, 3}}) {
        const int wanted = Nearest(number * 50 * 255 / 219.0);
        const AVFrame& grey = mask.At(ms, 20, 30);
        EXPECT_EQ(grey.width * 1000 + grey.height, 20030);
        EXPECT_NEAR(At(grey, 10, 15), wanted, 1) << ms;
        EXPECT_NEAR(At(inverted.At(ms, 32, 24), 3, 3), 255 - wanted, 1) << ms;
    }
    const uint8_t* const made = mask.At(310, 20, 30).data[0];
    EXPECT_EQ(mask.At(320, 20, 30).data[0], made); // the same picture still
    aveffect::MaskFile late(clip, false, 0, nullptr);
    EXPECT_NEAR(At(late.At(250, 32, 24), 1, 1), Nearest(100 * 255 / 219.0), 1);
}

TEST_F(MaskFiles, AreTheirAlphaWhereTheyAreTransparent) {
    const std::string words = "nullsrc=s=16x8:d=0.04,format=rgba,geq=r=200:g=200:b=200:a=";
    const std::string half = Make("half.png", words + "'if(lt(X,8),255,40)'", "-frames:v 1");
    const std::string opaque = Make("opaque.png", words + "255", "-frames:v 1");
    aveffect::MaskFile byAlpha(half, false, 0, nullptr), byLight(opaque, false, 0, nullptr);
    EXPECT_EQ(At(byAlpha.At(5000, 16, 8), 1, 1), 255);
    EXPECT_EQ(At(byAlpha.At(0, 16, 8), 14, 1), 40);
    EXPECT_NEAR(At(byLight.At(0, 16, 8), 1, 1), 200, 1);
}

TEST_F(MaskFiles, AreAsSoftAsTheFeatherSays) {
    const std::string edge =
        Make("edge.png", "nullsrc=s=200x20:d=0.04,format=gray,geq='if(lt(X,100),255,0)'", "-frames:v 1");
    aveffect::MaskFile mask(edge, false, 24, nullptr);
    const AVFrame& grey = mask.At(0, 200, 20);
    EXPECT_EQ(At(grey, 20, 10), 255);
    EXPECT_EQ(At(grey, 180, 10), 0);
    // The ramp's deviation from its mean is that of an even one of 24 pixels.
    double weights = 0, mean = 0, square = 0;
    for (int x = 0; x < 199; ++x) {
        const double weight = At(grey, x, 10) - At(grey, x + 1, 10);
        EXPECT_GE(weight, 0);
        weights += weight;
        mean += weight * (x + 1);
        square += weight * (x + 1) * (x + 1);
    }
    mean /= weights;
    EXPECT_NEAR(mean, 100, 0.5);
    EXPECT_NEAR(std::sqrt(square / weights - mean * mean), 24 / std::sqrt(12.0), 0.5);
    // White stays white in any size and however soft.
    const std::string white = Make("white.png", "nullsrc=s=8x8:d=0.04,format=gray,geq=255", "-frames:v 1");
    for (const double feather : {0.5, 30.0, 100000.0})
        for (const auto& [width, height] : {std::pair{1, 1}, {3, 2}, {64, 1}, {4, 33}, {100, 60}}) {
            aveffect::MaskFile all(white, false, feather, nullptr);
            const AVFrame& even = all.At(0, width, height);
            for (int i = 0; i < width * height; ++i) ASSERT_EQ(At(even, i % width, i / width), 255);
        }
}

TEST_F(MaskFiles, NameThemselvesWhenTheyCannotBeRead) {
    using clips::FailureOf;
    const std::string text = m_directory / "text.png";
    clips::Run("echo no picture > " + text);
    for (const std::string& path : {m_directory / "missing.png", text})
        clips::ExpectFailure(FailureOf([&] { aveffect::MaskFile(path, false, 0, nullptr).At(0, 8, 8); }),
                             aveffect::ErrorKind::Input, path);
}

} // namespace
