/// The formats in which pictures are written, and where files have their index.
#include <fstream>
#include <iterator>

#include <gtest/gtest.h>

#include "host/transition.h"
#include "tests/host/clips.h"

namespace {

using aveffect::ErrorKind;

class Formats : public testing::Test {
protected:
    /// Format, size and range of what the encoder of that name makes.
    std::string Made(const std::string& input, const std::string& output, const std::string& codec,
                     const std::string& format = "") {
        aveffect::RenderOptions options;
        options.input = input;
        options.output = m_directory / output;
        options.videoCodec = codec;
        options.outputFormat = format;
        options.overwrite = true;
        clips::Render(options, m_cancel);
        return Shape(options.output);
    }
    /// H.264 that says no range means the limited one.
    static std::string Shape(const std::string& path) {
        const std::string shape = clips::RunText("ffprobe -v error -select_streams v -show_entries "
                                                 "stream=width,height,pix_fmt,color_range -of csv=p=0:nk=1 " +
                                                 path);
        const size_t unknown = shape.find("unknown");
        return unknown == std::string::npos ? shape : shape.substr(0, unknown) + "tv";
    }
    std::string Join(const std::string& input, const std::string& output) {
        aveffect::JoinOptions options;
        options.film.output = m_directory / output;
        options.film.transition = "EffectNameMkFade";
        options.clips = {input, input};
        options.durationMs = 80;
        aveffect::RenderJoin(clips::ThePlugin(), options, {}, m_cancel);
        return Shape(options.film.output);
    }
    std::string Cross(const std::string& input, const std::string& output) {
        aveffect::TransitionOptions options;
        options.film.output = m_directory / output;
        options.film.transition = "EffectNameMkFade";
        options.first = options.second = input;
        options.durationMs = 80;
        aveffect::RenderTransition(clips::ThePlugin(), options, {}, m_cancel);
        return Shape(options.film.output);
    }

    clips::TemporaryDirectory m_directory;
    const std::atomic<bool> m_cancel{false};
};

TEST_F(Formats, AreThoseThatPeoplePlay) {
    const std::string jpeg =
        clips::Make(m_directory / "in.jpg", "65x49", 25, 0.04, "-frames:v 1 -pix_fmt yuvj444p");
    const std::string png =
        clips::Make(m_directory / "in.png", "65x49", 25, 0.04, "-frames:v 1 -pix_fmt rgba");
    const std::string yuv =
        clips::Make(m_directory / "in.mkv", "65x49", 25, 0.12, "-c:v ffv1 -pix_fmt yuv444p -color_range tv");
    for (const std::string& input : {jpeg, png, yuv}) {
        EXPECT_EQ(Made(input, "out.mp4", "libx264"), "66,50,yuv420p,tv") << input;
        EXPECT_EQ(Made(input, "out.mp4", "libx265"), "66,50,yuv420p,tv") << input;
        EXPECT_EQ(Made(input, "out.mp4", "libvpx-vp9"), "65,49,yuv420p,tv") << input;
        EXPECT_EQ(Made(input, "out.avi", "mpeg4").substr(0, 13), "65,49,yuv420p") << input;
    }
    EXPECT_EQ(Made(yuv, "out.mkv", "libaom-av1"), "65,49,yuv420p,tv");
    EXPECT_EQ(Join(yuv, "join.mp4"), "66,50,yuv420p,tv");
    EXPECT_EQ(Cross(jpeg, "cross.mp4"), "66,50,yuv420p,tv");

    EXPECT_EQ(Made(yuv, "out.mkv", "ffv1"), "65,49,yuv444p,tv");
    EXPECT_EQ(Made(jpeg, "out.mkv", "ffv1"), "65,49,yuv444p,pc");
    EXPECT_EQ(Made(png, "out.mov", "qtrle").substr(0, 10), "65,49,argb");
    EXPECT_EQ(Made(yuv, "out.mkv", "libx264rgb"), "65,49,gbrp,pc");

    EXPECT_EQ(Made(yuv, "out.mp4", "libx264", "yuv444p"), "65,49,yuv444p,tv");
    EXPECT_EQ(Made(yuv, "out.mp4", "libx264", "yuvj420p"), "66,50,yuvj420p,pc");
    const auto refused = clips::FailureOf([&] { Made(yuv, "no.mp4", "libx264", "rgb24"); });
    EXPECT_EQ(refused.kind, ErrorKind::Usage);
    EXPECT_NE(refused.text.find("yuv420p, yuvj420p"), std::string::npos) << refused.text;
}

// A white right column and bottom row on black.
TEST_F(Formats, OddSizesGoOnWithTheirEdge) {
    const std::string input =
        clips::Make(m_directory / "in.mkv", "65x49", 25, 0.12,
                    "-vf drawbox=c=black:t=fill,drawbox=x=64:c=white:t=fill,"
                    "drawbox=y=48:c=white:t=fill -c:v ffv1 -pix_fmt yuv444p -color_range tv");
    Made(input, "out.mp4", "libx264");
    const clips::Bytes luma = clips::Decode(m_directory / "out.mp4");
    for (const size_t index : {size_t{30 * 66 + 65}, size_t{49 * 66 + 30}, size_t{49 * 66 + 65}})
        EXPECT_GT(luma[index], 200) << index;
    EXPECT_LT(luma[30 * 66 + 30], 40);
}

TEST_F(Formats, FilesStartWithTheirIndex) {
    const std::string input =
        clips::Make(m_directory / "in.mkv", "64x48", 25, 1, "-c:v ffv1 -c:a flac", true);
    for (const std::string name : {"out.mp4", "out.mov", "out.m4a"}) {
        aveffect::RenderOptions options;
        options.input = input;
        options.output = m_directory / name;
        options.audioCodec = "aac";
        clips::Render(options, m_cancel);
        std::ifstream file(options.output, std::ios::binary);
        const std::string bytes(std::istreambuf_iterator<char>(file), {});
        EXPECT_LT(bytes.find("moov"), bytes.find("mdat")) << name;
        EXPECT_EQ(clips::RunText("ffmpeg -v warning -nostdin -i " + options.output + " -f null - 2>&1"), "")
            << name;
    }
    EXPECT_EQ(clips::Packets(m_directory / "out.mp4", "v:0", "pts").size(), 25u);
}

} // namespace
