/// Still pictures in and out, and single pictures from clips.
#include <cmath>

#include <gtest/gtest.h>

#include "tests/host/clips.h"

namespace {

using aveffect::ErrorKind;

class Stills : public testing::Test {
protected:
    aveffect::RenderResult Frame(const std::string& input, const std::string& output, int64_t atMs,
                                 const std::string& effect = "") {
        aveffect::FrameOptions options;
        options.input = input;
        options.output = output;
        options.atMs = atMs;
        if (!effect.empty()) options.effects = {aveffect::ParseEffect(effect, false)};
        const std::atomic<bool> cancel{false};
        return aveffect::RenderFrame(clips::ThePlugin(), options, {}, cancel);
    }
    clips::TemporaryDirectory m_directory;
};

TEST_F(Stills, EveryFormatIsReadAndWritten) {
    const std::string input =
        clips::Make(m_directory / "in.png", "40x30", 25, 0.04, "-frames:v 1 -pix_fmt rgb24");
    const clips::Bytes wanted = clips::Decode(input);
    for (const std::string format : {"png", "jpg", "webp", "bmp", "tiff", "ppm", "tga"}) {
        const std::string output = m_directory / ("out." + format);
        clips::Render(input, output, "", {});
        const std::string back = m_directory / ("back_" + format + ".png");
        clips::Render(output, back, "", {});
        const clips::Bytes pixels =
            clips::Run("ffmpeg -v error -nostdin -i " + back + " -pix_fmt rgb24 -f rawvideo -");
        ASSERT_EQ(pixels.size(), wanted.size()) << format;
        double difference = 0;
        for (size_t index = 0; index < wanted.size(); ++index)
            difference += std::abs(static_cast<double>(wanted[index]) - pixels[index]);
        const bool lossy = format == "jpg" || format == "webp";
        EXPECT_LE(difference / static_cast<double>(wanted.size()), lossy ? 16.0 : 0.0) << format;
    }
}

TEST_F(Stills, BecomeClipsOfOnePicture) {
    const std::string input =
        clips::Make(m_directory / "in.png", "40x30", 25, 0.04, "-frames:v 1 -pix_fmt rgb24");
    clips::Render(input, m_directory / "out.mkv", "ffv1");
    EXPECT_EQ(clips::Packets(m_directory / "out.mkv", "v:0", "pts_time").size(), 1u);
}

TEST_F(Stills, ComeFromTheMomentAskedFor) {
    const std::string input = clips::Make(m_directory / "in.mp4", "64x48", 25, 4,
                                          "-c:v libx264 -g 30 -bf 3 -pix_fmt yuv420p -c:a aac", true);
    clips::Render(input, m_directory / "plain.mkv", "ffv1", {});
    const auto expect = [&](int64_t atMs, int picture) {
        const std::string name = std::to_string(atMs);
        Frame(input, m_directory / (name + ".png"), atMs);
        aveffect::RenderOptions options;
        options.input = m_directory / "plain.mkv";
        options.output = m_directory / (name + "_expected.png");
        options.fromMs = picture * 40;
        options.frameLimit = 1;
        const std::atomic<bool> cancel{false};
        clips::Render(options, cancel);
        EXPECT_TRUE(clips::Decode(m_directory / (name + ".png")) == clips::Decode(options.output)) << atMs;
    };
    expect(0, 0);
    expect(39, 0);
    expect(40, 1);
    expect(2345, 58);
    expect(3999, 99);
    clips::ExpectFailure(clips::FailureOf([&] { Frame(input, m_directory / "no.png", 4000); }),
                         ErrorKind::Usage, "lasts 4 s");
    clips::ExpectFailure(clips::FailureOf([&] { Frame(input, m_directory / "no.mp4", 0); }),
                         ErrorKind::Output, "no.mp4");
}

TEST_F(Stills, AreUprightAndChangedByEffects) {
    clips::Make(m_directory / "flat.mov", "64x48", 25, 0.2, "-c:v qtrle -pix_fmt rgb24");
    const std::string input = m_directory / "in.mov";
    clips::Run("ffmpeg -v error -nostdin -i " + (m_directory / "flat.mov") +
               " -c copy -metadata:s:v rotate=90 " + input);
    Frame(input, m_directory / "out.png", 100, "invert");
    EXPECT_EQ(clips::Probe(m_directory / "out.png", "width"), "48");
    Frame(input, m_directory / "plain.png", 100);
    clips::Bytes complement = clips::Decode(m_directory / "plain.png");
    for (unsigned char& sample : complement) sample = static_cast<unsigned char>(255 - sample);
    EXPECT_TRUE(clips::Decode(m_directory / "out.png") == complement);
}

} // namespace
