/// Colour description, shape, rotation, tags and containers.
#include <gtest/gtest.h>

#include "tests/host/clips.h"

namespace {

using aveffect::ErrorKind;

TEST(Properties, ColourAndShapeReachTheOutput) {
    const clips::TemporaryDirectory directory;
    const std::string input =
        clips::Make(directory / "in.mp4", "64x48", 25, 0.2,
                    "-c:v libx264 -pix_fmt yuv420p -color_range tv -colorspace bt709 -color_primaries bt709 "
                    "-color_trc bt709 -chroma_sample_location left -vf setsar=16/11 -metadata title=Sea");
    for (const std::string output : {"out.mp4", "out.mkv"}) {
        clips::Render(input, directory / output);
        for (const char* entry : {"color_range", "color_space", "color_primaries", "color_transfer",
                                  "chroma_location", "sample_aspect_ratio", "pix_fmt"})
            EXPECT_EQ(clips::Probe(directory / output, entry), clips::Probe(input, entry)) << entry;
        EXPECT_EQ(clips::RunText("ffprobe -v error -show_entries format_tags=title -of csv=p=0 " +
                                 (directory / output)),
                  "Sea");
    }
}

// MPEG-4 in AVI has no place for the range: samples are brought to the one that players take for granted.
TEST(Properties, FullRangeStaysWhereItCanBeSaid) {
    const clips::TemporaryDirectory directory;
    const std::string white =
        clips::Make(directory / "white.mov", "64x48", 25, 0.2,
                    "-vf drawbox=c=white:t=fill,format=yuv420p -c:v mjpeg -pix_fmt yuvj422p");
    clips::Render(white, directory / "out.mkv", "ffv1", {});
    EXPECT_EQ(clips::Probe(directory / "out.mkv", "color_range"), "pc");
    clips::Render(white, directory / "out.avi", "", {});
    EXPECT_NEAR(clips::Decode(directory / "out.avi").front(), 235, 2);
}

// Half without fields, half with: pictures say it themselves in FFV1, streams as a whole in the others.
TEST(Properties, FieldsAreMarkedAsTheCodecCan) {
    const clips::TemporaryDirectory directory;
    const auto make = [&](const std::string& name, const char* stream) {
        clips::Run("ffmpeg -v error -nostdin -f lavfi -i testsrc2=s=96x64:d=0.2 -filter_complex "
                   "'split[a][b];[a]setfield=prog[p];[b]setfield=tff[i];[p][i]concat' -pix_fmt yuv420p "
                   "-c:v ffv1 -level 3 " +
                   std::string(stream) + (directory / name));
        return directory / name;
    };
    const std::string unsaid = make("unsaid.mkv", ""), said = make("said.mkv", "-flags +ildct -top 1 ");
    const auto fields = [](const std::string& path) {
        return clips::RunText("ffprobe -v error -select_streams v -show_entries "
                              "frame=interlaced_frame,top_field_first -of csv=p=0 " +
                              path + " | grep -o '[01],[01]' | uniq -c | tr -d ' ' | tr '\\n' ' '");
    };
    ASSERT_EQ(fields(unsaid), "50,0 51,1 ");
    const struct {
        const char *input, *codec, *output, *fields;
    } cases[] = {{"unsaid.mkv", "ffv1", "a.mkv", "50,0 51,1 "}, {"said.mkv", "ffv1", "b.avi", "50,0 51,1 "},
                 {"unsaid.mkv", "libx264", "c.mkv", "100,0 "},  {"said.mkv", "libx264", "d.mkv", "101,1 "},
                 {"said.mkv", "mpeg2video", "e.mkv", "101,1 "}, {"said.mkv", "mpeg4", "f.avi", "101,1 "},
                 {"said.mkv", "prores_ks", "g.mov", "101,1 "}};
    for (const auto& [input, codec, output, expected] : cases) {
        clips::Render(directory / input, directory / output, codec);
        EXPECT_EQ(fields(directory / output), expected) << input << " " << codec;
    }
}

TEST(Properties, RotationIsCopiedOrCarriedOut) {
    const clips::TemporaryDirectory directory;
    clips::Make(directory / "flat.mp4", "64x48", 25, 0.12, "-c:v libx264 -pix_fmt yuv420p");
    const std::string rotation = "ffprobe -v error -show_entries stream_side_data=rotation -of csv=p=0 ";
    for (const std::string angle : {"90", "180", "270"}) {
        const std::string input = directory / (angle + ".mp4");
        clips::Run("ffmpeg -v error -nostdin -i " + (directory / "flat.mp4") +
                   " -c copy -metadata:s:v rotate=" + angle + " " + input);
        ASSERT_FALSE(clips::RunText(rotation + input).empty());
        const std::string said = directory / (angle + ".mov");
        clips::Render(input, said, "libx264", {});
        EXPECT_EQ(clips::RunText(rotation + said), clips::RunText(rotation + input));
        EXPECT_EQ(clips::Probe(said, "width"), "64");

        const std::string turned = directory / (angle + ".mkv");
        clips::Render(input, turned, "ffv1", {});
        EXPECT_TRUE(clips::RunText(rotation + turned).empty());
        EXPECT_EQ(clips::Probe(turned, "width"), angle == "180" ? "64" : "48");
        // The ffmpeg program turns pictures on its own.
        EXPECT_TRUE(clips::Decode(turned) ==
                    clips::Run("ffmpeg -v error -nostdin -i " + input + " -f rawvideo -"));
    }
}

TEST(Properties, AlphaGoesToWebmAndBack) {
    const clips::TemporaryDirectory directory;
    const std::string input =
        clips::Make(directory / "in.mkv", "64x48", 25, 0.12,
                    "-vf format=rgba,geq=r=200:g='Y*4':b=10:a='255*floor(X/32)' -c:v ffv1 -pix_fmt yuva420p");
    clips::Render(input, directory / "out.webm");
    EXPECT_EQ(clips::RunText("ffprobe -v error -show_entries stream_tags=alpha_mode -of csv=p=0 " +
                             (directory / "out.webm")),
              "1");
    clips::Render(directory / "out.webm", directory / "back.mkv", "ffv1", {});
    ASSERT_EQ(clips::Probe(directory / "back.mkv", "pix_fmt"), "yuva420p");
    const clips::Bytes back = clips::Decode(directory / "back.mkv");
    const size_t alpha = 64 * 48 * 3 / 2 + 64 * 24;
    EXPECT_NEAR(back[alpha + 8], 0, 8);
    EXPECT_NEAR(back[alpha + 56], 255, 8);
}

// A grey picture at half opacity: kept where the encoder can, else half as bright.
TEST(Properties, TransparencyIsKeptOrBlendedOverBlack) {
    const clips::TemporaryDirectory directory;
    const std::string input =
        clips::Make(directory / "in.mkv", "64x48", 25, 0.04,
                    "-vf format=gray,geq=lum=200 -c:v ffv1 -pix_fmt yuv420p -color_range tv");
    const std::string half = "transparency:transparency_scale=50";
    const auto render = [&](const std::string& name, const std::string& codec) {
        clips::Render(input, directory / name, codec, {half});
        return clips::Probe(directory / name, "pix_fmt");
    };
    ASSERT_EQ(render("kept.mkv", "ffv1"), "yuva420p");
    const clips::Bytes luma = clips::Decode(input), kept = clips::Decode(directory / "kept.mkv");
    EXPECT_EQ(kept[0], luma[0]);
    EXPECT_EQ(kept[64 * 48 * 3 / 2], 127);
    ASSERT_EQ(render("black.mp4", "libx264"), "yuv420p");
    EXPECT_NEAR(clips::Decode(directory / "black.mp4")[0], 16 + (luma[0] - 16) / 2.0, 3);
    EXPECT_EQ(render("picture.png", ""), "rgba");
}

TEST(Properties, EffectsGetAFormatThatTheyServe) {
    const clips::TemporaryDirectory directory;
    const std::string turn = "EffectNameRotate90X:Rotate90XDerection=half";
    for (const std::string format : {"yuvj420p", "yuvj422p", "yuv444p"}) {
        const std::string input =
            clips::Make(directory / (format + ".mkv"), "64x48", 25, 0.04, "-c:v ffv1 -pix_fmt " + format);
        EXPECT_NO_THROW(clips::Render(input, directory / (format + "_out.mkv"), "ffv1", {turn})) << format;
    }
}

TEST(Containers, WhatDoesNotFitIsSaidBeforeAnythingIsWritten) {
    const clips::TemporaryDirectory directory;
    const std::string odd =
        clips::Make(directory / "odd.mkv", "33x21", 25, 0.12, "-c:v ffv1 -pix_fmt yuv420p");
    const auto before = directory.Entries();
    const auto refused = [&](const std::string& input, const std::string& output, const std::string& codec,
                             ErrorKind kind, const std::string& word) {
        clips::ExpectFailure(clips::FailureOf([&] { clips::Render(input, directory / output, codec); }), kind,
                             word);
    };
    refused(odd, "out.webm", "ffv1", ErrorKind::Usage, ".mkv");
    refused(odd, "out.mkv", "no_such_codec", ErrorKind::Usage, "no_such_codec");
    refused(odd, "out.xyz", "", ErrorKind::Output, "mp4");
    refused(odd, "out", "", ErrorKind::Output, "mkv");
    refused(odd, "out.png", "", ErrorKind::Usage, "--frames 1");
    EXPECT_EQ(directory.Entries(), before);
}

TEST(Containers, EncoderOptionsAreChecked) {
    const clips::TemporaryDirectory directory;
    aveffect::RenderOptions options;
    options.input = clips::Make(directory / "in.mkv", "64x48", 25, 0.12, "-c:v ffv1 -pix_fmt yuv420p");
    options.output = directory / "out.mkv";
    const std::atomic<bool> cancel{false};
    const auto failure = [&] { return clips::FailureOf([&] { clips::Render(options, cancel); }); };
    options.videoCodec = "ffv1";
    options.crf = 20;
    clips::ExpectFailure(failure(), ErrorKind::Usage, "ffv1");
    options.crf.reset();
    options.preset = "fast";
    clips::ExpectFailure(failure(), ErrorKind::Usage, "preset");
    options.videoCodec = "h264"; // a codec's name stands for its encoder
    options.preset = "no_such_preset";
    clips::ExpectFailure(failure(), ErrorKind::Usage, "no_such_preset");
    EXPECT_EQ(directory.Entries(), std::vector<std::string>{"in.mkv"});
    options.preset = "ultrafast";
    options.crf = 30;
    EXPECT_FALSE(failure().failed);
    EXPECT_EQ(clips::Probe(options.output, "codec_name"), "h264");
}

} // namespace
