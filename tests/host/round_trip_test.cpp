/// Pictures through decoder, effect and lossless encoder, against plain arithmetic on what the ffmpeg program
/// decodes.
#include <algorithm>
#include <cstdlib>
#include <ostream>

#include <gtest/gtest.h>

#include "tests/host/clips.h"

namespace {

using clips::Bytes;

struct YuvClip {
    const char* name;
    const char* file;
    int width, height, rate;
    double seconds;
    const char* options;
    int chromaShiftX, chromaShiftY;
    bool alpha = false;
    const char* decoder = ""; ///< for the ffmpeg program
};
void PrintTo(const YuvClip& clip, std::ostream* out) { *out << clip.name; }

const YuvClip kYuvClips[] = {
    {"h264", "c.mp4", 320, 240, 30, 1, "-c:v libx264 -bf 2 -pix_fmt yuv420p", 1, 1},
    {"h264_hd", "c.mp4", 1920, 1080, 30, 0.3, "-c:v libx264 -preset ultrafast -pix_fmt yuv420p", 1, 1},
    {"mpeg4", "c.avi", 320, 240, 25, 1, "-c:v mpeg4 -q:v 4", 1, 1},
    {"ffv1_422", "c.mkv", 160, 120, 25, 0.4, "-c:v ffv1 -pix_fmt yuv422p", 1, 0},
    {"ffv1_410", "c.mkv", 160, 120, 25, 0.4, "-c:v ffv1 -pix_fmt yuv410p", 2, 2},
    {"ffv1_411", "c.mkv", 160, 120, 25, 0.4, "-c:v ffv1 -pix_fmt yuv411p", 2, 0},
    {"mjpeg_full_range", "c.mov", 320, 240, 25, 0.4, "-c:v mjpeg -q:v 3 -pix_fmt yuvj420p", 1, 1},
    {"vp9_alpha", "c.webm", 64, 48, 25, 0.2,
     "-vf format=rgba,geq=r='r(X\\,Y)':g='g(X\\,Y)':b='b(X\\,Y)':a='X*4' -c:v libvpx-vp9 -pix_fmt yuva420p "
     "-deadline realtime -cpu-used 8",
     1, 1, true, "-c:v libvpx-vp9"},
    {"ffv1_alpha_444", "c.mkv", 33, 17, 25, 0.2, "-c:v ffv1 -pix_fmt yuva444p", 0, 0, true},
    {"one_pixel", "c.mkv", 1, 1, 25, 0.12, "-c:v ffv1 -pix_fmt yuv420p", 1, 1},
    {"odd_7x5", "c.mkv", 7, 5, 25, 0.2, "-c:v ffv1 -pix_fmt yuv420p", 1, 1},
    {"odd_7x5_422", "c.mkv", 7, 5, 25, 0.2, "-c:v ffv1 -pix_fmt yuv422p", 1, 0},
    {"odd_321x243", "c.mkv", 321, 243, 25, 0.2, "-c:v ffv1 -pix_fmt yuv420p", 1, 1},
};

class YuvRoundTrip : public testing::TestWithParam<YuvClip> {};

TEST_P(YuvRoundTrip, OnePassIsTheComplementAndTwoAreTheClip) {
    const YuvClip& clip = GetParam();
    const clips::TemporaryDirectory directory;
    const std::string size = std::to_string(clip.width) + "x" + std::to_string(clip.height);
    const std::string input = clips::Make(directory / clip.file, size, clip.rate, clip.seconds, clip.options);
    const std::string once = directory / "once.mkv";
    const std::string twice = directory / "twice.mkv";
    const Bytes original = clips::Decode(input, clip.decoder);
    ASSERT_FALSE(original.empty());

    const auto result = clips::Render(input, once, "ffv1");
    EXPECT_FALSE(result.inputDamage) << *result.inputDamage;
    clips::Render(once, twice, "ffv1");

    const Bytes inverted = clips::Decode(once);
    EXPECT_TRUE(inverted == clips::InvertYuv(original, clip.width, clip.height, clip.chromaShiftX,
                                             clip.chromaShiftY, clip.alpha));
    EXPECT_FALSE(inverted == original);
    EXPECT_TRUE(clips::Decode(twice) == original);
}

INSTANTIATE_TEST_SUITE_P(Clips, YuvRoundTrip, testing::ValuesIn(kYuvClips),
                         [](const auto& clip) { return std::string(clip.param.name); });

TEST(RoundTrip, RgbPictureComesBackByteForByte) {
    const clips::TemporaryDirectory directory;
    const std::string input =
        clips::Make(directory / "in.png", "33x21", 25, 0.04, "-frames:v 1 -pix_fmt rgb24");
    clips::Render(input, directory / "once.png");
    clips::Render(directory / "once.png", directory / "twice.png");
    EXPECT_EQ(clips::Probe(directory / "once.png", "pix_fmt"), "rgb24");
    Bytes complement = clips::Decode(input);
    for (unsigned char& sample : complement) sample = static_cast<unsigned char>(255 - sample);
    EXPECT_TRUE(clips::Decode(directory / "once.png") == complement);
    EXPECT_TRUE(clips::Decode(directory / "twice.png") == clips::Decode(input));
}

TEST(RoundTrip, TenBitsBecomeEightOnceAndStay) {
    const clips::TemporaryDirectory directory;
    const std::string input =
        clips::Make(directory / "in.mov", "160x120", 25, 0.2, "-c:v prores_ks -pix_fmt yuv422p10le");
    ASSERT_EQ(clips::Probe(input, "pix_fmt"), "yuv422p10le");
    clips::Render(input, directory / "once.mkv", "ffv1");
    clips::Render(directory / "once.mkv", directory / "twice.mkv", "ffv1");
    EXPECT_EQ(clips::Probe(directory / "once.mkv", "pix_fmt"), "yuv422p");
    const Bytes once = clips::Decode(directory / "once.mkv");
    const Bytes twice = clips::Decode(directory / "twice.mkv");
    EXPECT_TRUE(once == clips::InvertYuv(twice, 160, 120, 1, 0, false));
    // Dithering moves a sample to one of its two neighbours in 8 bits.
    const Bytes deep = clips::Decode(input);
    ASSERT_EQ(deep.size(), 2 * twice.size());
    int worst = 0;
    for (size_t index = 0; index < twice.size(); ++index) {
        const int sample = deep[2 * index] + 256 * deep[2 * index + 1];
        worst = std::max(worst, std::abs(4 * twice[index] - sample));
    }
    EXPECT_LE(worst, 4);
}

TEST(RoundTrip, FormatsThatEffectsDoNotServeComeBack) {
    const clips::TemporaryDirectory directory;
    // Packed and semi-planar kinds of a served subsampling lose nothing; RGB goes through BGRA.
    for (const std::string format : {"nv12", "yuyv422", "gray", "bgr24"}) {
        const std::string input =
            clips::Make(directory / (format + ".nut"), "34x20", 25, 0.12, "-c:v rawvideo -pix_fmt " + format);
        const std::string twice = directory / (format + "2.mkv");
        clips::Render(input, directory / (format + "1.mkv"), "ffv1");
        clips::Render(directory / (format + "1.mkv"), twice, "ffv1");
        const std::string same = format == "gray" ? "extractplanes=y" : "format=" + format;
        EXPECT_TRUE(clips::Run("ffmpeg -v error -nostdin -i " + twice + " -vf " + same + " -f rawvideo -") ==
                    clips::Decode(input))
            << format;
    }
}

TEST(RoundTrip, WithoutEffectsPicturesPassInTheirOwnFormat) {
    const clips::TemporaryDirectory directory;
    const std::string input =
        clips::Make(directory / "in.mkv", "34x20", 25, 0.12, "-c:v ffv1 -pix_fmt yuv422p10le");
    clips::Render(input, directory / "out.mkv", "ffv1", {});
    EXPECT_EQ(clips::Probe(directory / "out.mkv", "pix_fmt"), "yuv422p10le");
    EXPECT_TRUE(clips::Decode(directory / "out.mkv") == clips::Decode(input));
}

TEST(RoundTrip, NamedPixelFormatIsTheOneThatEffectsSee) {
    const clips::TemporaryDirectory directory;
    aveffect::RenderOptions options;
    options.input = clips::Make(directory / "in.mkv", "34x20", 25, 0.04, "-c:v ffv1 -pix_fmt yuv420p");
    options.output = directory / "out.png";
    options.frameLimit = 1;
    options.effects = {aveffect::ParseEffect("invert", false)};
    options.pixelFormat = "bgra";
    const std::atomic<bool> cancel{false};
    std::string notes;
    aveffect::RenderObserver observer;
    observer.note = [&](const std::string& text) { notes += text; };
    aveffect::Render(clips::ThePlugin(), options, observer, cancel);
    EXPECT_NE(notes.find("effects work in bgra"), std::string::npos) << notes;
    options.pixelFormat = "nv12";
    clips::ExpectFailure(clips::FailureOf([&] { clips::Render(options, cancel); }),
                         aveffect::ErrorKind::Usage, "yuva444p");
}

} // namespace
