/// Transparency, and how animations are played.
#include <algorithm>

#include <gtest/gtest.h>

#include "tests/host/clips.h"

namespace {

const std::atomic<bool> kGoOn{false};

class Animation : public testing::Test {
protected:
    std::string Path(const std::string& name) const { return m_directory / name; }
    void Ffmpeg(const std::string& arguments, const std::string& output) {
        clips::Run("ffmpeg -v error -nostdin -y " + arguments + " " + Path(output));
    }
    /// What is said about transparency.
    std::string Render(const std::string& input, const std::string& output, const std::string& effect = "",
                       const std::string& pixelFormat = "auto") {
        aveffect::RenderOptions options;
        options.input = Path(input);
        options.output = Path(output);
        options.overwrite = true;
        options.pixelFormat = pixelFormat;
        if (!effect.empty()) options.effects.push_back(aveffect::ParseEffect(effect, false));
        std::string said;
        aveffect::RenderObserver observer;
        observer.warning = [&](const std::string& text) { said += text + "\n"; };
        aveffect::Render(clips::ThePlugin(), options, observer, kGoOn);
        return said;
    }
    /// R, G, B, A of all pictures, those that are transparent black.
    clips::Bytes Pixels(const std::string& name) const {
        clips::Bytes rgba = clips::Run("ffmpeg -v error -nostdin -i " + Path(name) +
                                       " -fps_mode passthrough -pix_fmt rgba -f rawvideo -");
        for (size_t pixel = 0; pixel < rgba.size(); pixel += 4)
            if (rgba[pixel + 3] == 0) std::fill_n(rgba.begin() + static_cast<ptrdiff_t>(pixel), 3, 0);
        return rgba;
    }
    /// Up to 40 bytes for as many pictures as the file shows until it is done.
    size_t PicturesPlayed(const std::string& name) const {
        return clips::Run("ffmpeg -v error -nostdin -ignore_loop 0 -i " + Path(name) +
                          " -vf scale=1:1,format=gray -frames:v 40 -fps_mode passthrough -f rawvideo -")
            .size();
    }

    clips::TemporaryDirectory m_directory;
};

clips::Bytes Inverted(clips::Bytes rgba) {
    for (size_t at = 0; at < rgba.size(); ++at)
        if (at % 4 != 3 && rgba[at / 4 * 4 + 3] != 0) rgba[at] = static_cast<unsigned char>(255 - rgba[at]);
    return rgba;
}

TEST_F(Animation, KeepsTransparencyTimesAndPlays) {
    // Four pictures, each shown for another time, of a square that moves over nothing.
    const std::string pictures =
        "-f lavfi -i testsrc2=s=17x12:r=10:d=0.4,format=rgba -f lavfi -i "
        "color=black@0:s=49x31:r=10:d=0.4,format=rgba "
        "-filter_complex "
        "\"[1][0]overlay=x=n*6:y=7:format=rgb,format=rgba,setpts='(N*7+gt(N,1)*20)/100/TB',settb=1/100";
    const std::string palette = ",split[a][b];[a]palettegen=reserve_transparent=1[p];[b][p]paletteuse";
    struct Kind {
        std::string format, options;
        size_t played;
    };
    const Kind kKinds[] = {{"gif", palette + "\" -loop -1 -final_delay 77", 4},
                           {"gif", palette + "\" -loop 2 -final_delay 77", 12},
                           {"gif", palette + "\" -loop 0 -final_delay 77", 40},
                           {"apng", "\" -plays 1 -final_delay 77/100", 4},
                           {"apng", "\" -plays 3 -final_delay 77/100", 12},
                           {"apng", "\" -plays 0 -final_delay 77/100", 40}};
    for (const Kind& kind : kKinds) {
        SCOPED_TRACE(kind.format + kind.options);
        const std::string in = "in." + kind.format, out = "out." + kind.format;
        Ffmpeg(pictures + kind.options + " -fps_mode passthrough", in);
        const clips::Bytes wanted = Pixels(in);
        EXPECT_EQ(Render(in, out), "");
        EXPECT_TRUE(Pixels(out) == wanted);
        EXPECT_EQ(Render(in, out, "invert"), "");
        EXPECT_TRUE(Pixels(out) == Inverted(wanted));
        EXPECT_EQ(clips::Packets(Path(out), "v:0", "pts_time,duration_time"),
                  clips::Packets(Path(in), "v:0", "pts_time,duration_time"));
        EXPECT_EQ(PicturesPlayed(out), kind.played);
        const std::string other = kind.format == "gif" ? "other.apng" : "other.gif";
        Render(in, other);
        EXPECT_EQ(PicturesPlayed(other), kind.played) << other;
    }
}

TEST_F(Animation, WarnsOfTransparencyWhereThereIsSome) {
    const std::string kAlphas[] = {"255", "if(eq(N,2)*eq(X,20),254,255)"}; // one column of the third picture
    const std::pair<std::string, std::string> kFiles[] = {{"rgba.apng", "rgba"},
                                                          {"gray.apng", "ya8"},
                                                          {"deep.apng", "rgba64be"},
                                                          {"yuva.mkv", "yuva420p -c:v ffv1"},
                                                          {"deep.mkv", "yuva444p10le -c:v ffv1"}};
    for (const std::string& alpha : kAlphas)
        for (const auto& [name, format] : kFiles) {
            SCOPED_TRACE(name + ", " + alpha);
            Ffmpeg("-f lavfi -i "
                   "\"testsrc2=s=35x27:r=10:d=0.3,format=rgba,geq=r='r(X,Y)':g='g(X,Y)':b='b(X,Y)':a='" +
                       alpha + "'\" -pix_fmt " + format,
                   name);
            const size_t warnings = alpha == "255" ? 0 : 1;
            const auto expect = [&](const std::string& said) {
                EXPECT_EQ(std::count(said.begin(), said.end(), '\n') -
                              (said.find("8 bits") != std::string::npos),
                          warnings)
                    << said;
                EXPECT_EQ(said.find("transparency") != std::string::npos, warnings == 1) << said;
            };
            expect(Render(name, "out.mp4"));
            expect(Render(name, "out.mp4", "gray"));
            expect(Render(name, "out.apng", "gray", "yuv420p"));
        }
    // Of the palette's colours those that the pictures use count.
    Ffmpeg("-f lavfi -i testsrc2=s=35x27:r=10:d=0.3", "opaque.gif");
    EXPECT_EQ(Render("opaque.gif", "out.mp4", "gray"), "");
    for (const std::string colour : {"red", "red@0"}) {
        Ffmpeg("-f lavfi -i color=" + colour +
                   ":s=9x9,format=rgba -filter_complex "
                   "'split[a][b];[a]palettegen=reserve_transparent=1[p];[b][p]paletteuse' -frames:v 1",
               "pal8.png");
        ASSERT_EQ(clips::Probe(Path("pal8.png"), "pix_fmt"), "pal8");
        EXPECT_EQ(Render("pal8.png", "out.ppm").empty(), colour == "red");
    }
}

} // namespace
