/// The formats in which pictures are written, and where files have their index.
#include <fstream>
#include <iterator>

#include <gtest/gtest.h>

#include "host/jobs/transition.h"
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
    aveffect::FilmOptions Film(const std::string& output, const std::string& codec, bool sdr) const {
        aveffect::FilmOptions film;
        film.output = m_directory / output;
        film.videoCodec = codec;
        film.sdr = sdr;
        film.overwrite = true;
        return film;
    }
    /// The path of a film in which a clip crosses into itself.
    std::string Join(const std::string& input, const std::string& output, const std::string& codec = "",
                     bool sdr = false) {
        aveffect::JoinOptions options;
        options.film = Film(output, codec, sdr);
        options.clips = {{input}, {input}};
        options.seams = {{"EffectNameMkFade", 80}};
        aveffect::RenderJoin(clips::ThePlugin(), options, Listener(), m_cancel);
        return options.film.output;
    }
    std::string Cross(const std::string& input, const std::string& output, const std::string& codec = "",
                      bool sdr = false, bool live = false) {
        aveffect::TransitionOptions options;
        options.film = Film(output, codec, sdr);
        options.first = options.second = input;
        options.transition = "EffectNameMkFade";
        options.durationMs = 80;
        options.live = live;
        aveffect::RenderTransition(clips::ThePlugin(), options, Listener(), m_cancel);
        return options.film.output;
    }
    /// Keeps what is said in m_said.
    aveffect::RenderObserver Listener() {
        m_said.clear();
        aveffect::RenderObserver observer;
        observer.warning = observer.note = [this](const std::string& text) { m_said += text + "\n"; };
        return observer;
    }
    size_t TimesSaid(const std::string& text) const {
        size_t times = 0;
        for (size_t at = m_said.find(text); at != std::string::npos; at = m_said.find(text, at + 1)) ++times;
        return times;
    }

    std::string m_said;
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
    EXPECT_EQ(Shape(Join(yuv, "join.mp4")), "66,50,yuv420p,tv");
    EXPECT_EQ(Shape(Cross(jpeg, "cross.mp4")), "66,50,yuv420p,tv");

    EXPECT_EQ(Made(yuv, "out.mkv", "ffv1"), "65,49,yuv444p,tv");
    EXPECT_EQ(Made(jpeg, "out.mkv", "ffv1"), "65,49,yuv444p,pc");
    EXPECT_EQ(Made(png, "out.mov", "qtrle").substr(0, 10), "65,49,argb");
    EXPECT_EQ(Made(yuv, "out.mkv", "libx264rgb"), "65,49,gbrp,pc");

    EXPECT_EQ(Made(yuv, "out.mp4", "libx264", "yuv444p"), "65,49,yuv444p,tv");
    EXPECT_EQ(Made(yuv, "out.mp4", "libx264", "yuvj420p"), "66,50,yuvj420p,pc");
    clips::ExpectFailure(clips::FailureOf([&] { Made(yuv, "no.mp4", "libx264", "rgb24"); }), ErrorKind::Usage,
                         "yuv420p, yuvj420p");
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

constexpr char kPq[] =
    "-vf format=yuv420p10le,setparams=color_primaries=bt2020:color_trc=smpte2084:"
    "colorspace=bt2020nc:range=tv -c:v libx265 -x265-params log-level=none:hdr10=1:max-cll=1000,400:"
    "master-display='G(13250,34500)B(7500,3000)R(34000,16000)WP(15635,16450)L(10000000,50)' ";

/// Transfer, format, the mastering display's brightest and the brightest picture, as file and first picture
/// say.
std::string Light(const std::string& path) {
    return clips::RunText(
        "ffprobe -v error -select_streams v -read_intervals %+#1 -show_frames -show_streams " + path +
        " | sed -nE 's/^(color_transfer|pix_fmt|max_luminance|max_content)=//p' | sort -u | "
        "tr '\\n' ' '");
}

TEST_F(Formats, HighDynamicRangeIsKeptOrMapped) {
    const std::string pq = clips::Make(m_directory / "pq.mp4", "128x96", 25, 0.2, kPq);
    const auto render = [&](const std::string& output, const std::string& codec, const char* effect,
                            bool sdr) {
        aveffect::RenderOptions options;
        options.input = pq;
        options.output = m_directory / output;
        options.videoCodec = codec;
        if (effect) options.effects = {aveffect::ParseEffect(effect, false)};
        options.sdr = sdr;
        options.overwrite = true;
        clips::Render(options, m_cancel);
        return Light(options.output);
    };
    const std::string kept = "1000 10000000/10000 smpte2084 yuv420p10le ";
    ASSERT_EQ(Light(pq), kept);
    EXPECT_EQ(render("out.mp4", "libx265", nullptr, false), kept);
    EXPECT_EQ(render("out.ts", "libx265", nullptr, false), kept);
    EXPECT_EQ(render("out.mp4", "libx265", "invert", false), "1000 10000000/10000 smpte2084 yuv420p ");
    EXPECT_EQ(render("out.mp4", "libx264", nullptr, false), "1000 10000000/10000 smpte2084 yuv420p ");
    EXPECT_EQ(render("out.mp4", "libx265", nullptr, true), "bt709 yuv420p ");
    const std::string keptIn8 = "1000 10000000/10000 smpte2084 yuv420p ";
    EXPECT_EQ(Light(Join(pq, "join.mp4", "libx265")), kept);
    for (const bool live : {false, true}) {
        EXPECT_EQ(Light(Cross(pq, "cross.mp4", "libx265", false, live)), live ? kept : keptIn8);
        EXPECT_EQ(Light(Cross(pq, "cross.mp4", "libx265", true, live)), "bt709 yuv420p ");
    }
    EXPECT_EQ(Light(Join(pq, "join.mp4", "libx265", true)), "bt709 yuv420p ");
    EXPECT_EQ(TimesSaid("--sdr changes nothing"), 0u);
    Join(m_directory / "join.mp4", "again.mp4", "", true);
    EXPECT_EQ(TimesSaid("--sdr changes nothing"), 1u);
    // Grey of 203 cd/m2, which PQ writes as 0.58 of its range, is near the brightest that SDR has.
    clips::Run(
        "ffmpeg -v error -nostdin -y -i " + pq +
        " -vf format=gray10le,geq=lum=64+508,format=yuv420p10le,"
        "setparams=color_primaries=bt2020:color_trc=smpte2084:colorspace=bt2020nc:range=tv -c:v ffv1 " +
        (m_directory / "white.mkv"));
    aveffect::FrameOptions frame;
    frame.input = m_directory / "white.mkv";
    frame.output = m_directory / "white.png";
    frame.sdr = true;
    aveffect::RenderFrame(clips::ThePlugin(), frame, {}, m_cancel);
    const clips::Bytes white = clips::Decode(frame.output);
    EXPECT_GT(white[0], 150);
    EXPECT_NEAR(white[0], white[1], 2);
    // The same as a right view, and laid into another clip.
    const std::string black = clips::Make(m_directory / "black.mkv", "128x96", 25, 0.2,
                                          "-vf drawbox=c=black:t=fill -c:v ffv1 -pix_fmt yuv420p");
    for (const char* effect : {"EffectName3DRenderEffect:render_3d_mode=3:render_3d_swtich=1",
                               "EffectNameMkFade:EffectPropVFPath1=white:EffectPropVFPath2=white"}) {
        aveffect::FrameOptions laid;
        laid.input = black;
        laid.output = m_directory / "laid.png";
        laid.effects = {aveffect::ParseEffect(effect, false)};
        for (auto& property : laid.effects[0].properties)
            if (property.value == "white") property.value = frame.input;
        if (laid.effects[0].properties[0].value == "3") laid.stereo.right = frame.input;
        laid.sdr = laid.overwrite = true;
        aveffect::RenderFrame(clips::ThePlugin(), laid, {}, m_cancel);
        const clips::Bytes rgb =
            clips::Run("ffmpeg -v error -nostdin -i " + laid.output + " -pix_fmt rgb24 -f rawvideo -");
        EXPECT_NEAR(rgb[0], white[0], 3) << effect;
        // Among pictures of standard range nobody needs to ask for it.
        laid.sdr = false;
        m_said.clear();
        aveffect::RenderFrame(clips::ThePlugin(), laid, Listener(), m_cancel);
        EXPECT_TRUE(clips::Run("ffmpeg -v error -nostdin -i " + laid.output +
                               " -pix_fmt rgb24 -f rawvideo -") == rgb);
        EXPECT_EQ(TimesSaid("standard dynamic range of the others"), 1u);
    }
}

// A ramp of a tenth of a code a pixel: with dithering, rows differ from each other.
TEST_F(Formats, MoreThanEightBitsAreDithered) {
    const std::string ramp =
        "-frames:v 1 -vf format=gbrp16le,geq=r='16384+X*26':g='16384+X*26':b='16384+X*26' ";
    for (const std::string form : {"rgb48be", "gray16be", "yuv444p10le", "yuv420p10le"}) {
        const bool still = form.ends_with("be");
        const std::string input = clips::Make(m_directory / (form + (still ? ".png" : ".mkv")), "128x16", 25,
                                              0.04, ramp + (still ? "" : "-c:v ffv1 ") + "-pix_fmt " + form);
        const auto expectDithered = [&](const std::string& path) {
            EXPECT_EQ(TimesSaid("with dithering"), 1u) << path << m_said;
            const clips::Bytes grey = clips::Run("ffmpeg -v error -nostdin -i " + path +
                                                 " -frames:v 1 -pix_fmt gray -f rawvideo -");
            int differ = 0;
            for (size_t index = 128; index < grey.size(); ++index) differ += grey[index] != grey[index - 128];
            EXPECT_GT(differ, 200) << path;
        };
        aveffect::RenderOptions options;
        options.input = input;
        options.output = m_directory / (form + "_out.png");
        options.effects = {aveffect::ParseEffect("mosaic:mosaic_x2=1:mosaic_y2=1", false)};
        aveffect::Render(clips::ThePlugin(), options, Listener(), m_cancel);
        expectDithered(options.output);
        expectDithered(Cross(input, form + "_still.mkv", "ffv1"));
        if (still) continue;
        const std::string longer = clips::Make(m_directory / (form + "_long.mkv"), "128x16", 25, 0.2,
                                               ramp.substr(ramp.find("-vf")) + "-c:v ffv1 -pix_fmt " + form);
        expectDithered(Cross(longer, form + "_live.mkv", "ffv1", false, true));
        options.input =
            clips::Make(m_directory / "left.mkv", "128x16", 25, 0.04, "-c:v ffv1 -pix_fmt yuv444p");
        options.output = m_directory / (form + "_right.png");
        options.stereo.right = input;
        options.effects = {
            aveffect::ParseEffect("EffectName3DRenderEffect:render_3d_mode=0:render_3d_swtich=1", false)};
        aveffect::Render(clips::ThePlugin(), options, Listener(), m_cancel);
        expectDithered(options.output);
    }
}

} // namespace
