/// Transparency, and how animations are played.
#include <algorithm>

#include <gtest/gtest.h>

#include "tests/host/clips.h"

namespace {

using clips::kGoOn;

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
    };
    const Kind kKinds[] = {
        {"gif", palette + "\" -loop -1 -final_delay 77"}, {"gif", palette + "\" -loop 2 -final_delay 77"},
        {"gif", palette + "\" -loop 0 -final_delay 77"},  {"apng", "\" -plays 1 -final_delay 77/100"},
        {"apng", "\" -plays 3 -final_delay 77/100"},      {"apng", "\" -plays 0 -final_delay 77/100"}};
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
        EXPECT_EQ(PicturesPlayed(out), PicturesPlayed(in));
    }
}

TEST_F(Animation, WarnsOfTransparencyWhereThereIsSome) {
    const std::pair<std::string, std::string> kFiles[] = {
        {"in.apng", "rgba"}, {"in.mkv", "yuva420p -c:v ffv1"}, {"in.gif", ""}};
    for (const std::string share : {"1", "0.4"})
        for (const auto& [name, format] : kFiles) {
            SCOPED_TRACE(name + ", " + share);
            if (format.empty() && share != "1") continue;
            Ffmpeg("-f lavfi -i testsrc2=s=36x28:r=10:d=0.2,format=rgba,colorchannelmixer=aa=" + share +
                       (format.empty() ? "" : " -pix_fmt " + format),
                   name);
            const std::string why = share == "1" ? "" : " no transparency";
            for (const std::string& said :
                 {Render(name, "out.mp4"), Render(name, "out.apng", "gray", "yuv420p")})
                EXPECT_TRUE(why.empty() ? said.empty() : said.find(why) != std::string::npos) << said;
        }
}

} // namespace
