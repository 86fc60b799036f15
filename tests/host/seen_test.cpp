/// Pictures as they are seen: upright, in their own colours, of their own shape, as the views that they hold.
#include <array>
#include <cstdlib>
#include <fstream>

#include <gtest/gtest.h>

extern "C" {
#include <libavutil/crc.h>
}

#include "host/jobs/transition.h"
#include "tests/host/clips.h"

namespace {

using clips::Bytes;

using clips::kGoOn;

class AsSeen : public testing::Test {
protected:
    std::string Path(const std::string& name) const { return m_directory / name; }
    void Ffmpeg(const std::string& arguments, const std::string& output) {
        clips::Run("ffmpeg -v error -nostdin -y " + arguments + " " + Path(output));
    }
    /// A copy that players turn.
    void Turned(const std::string& input, const std::string& angle, const std::string& output) {
        Ffmpeg("-i " + Path(input) + " -c copy -metadata:s:v rotate=" + angle, output);
    }
    /// The stream's mark for two views and its turn, as players are told of them.
    std::string Marks(const std::string& name) const {
        return clips::RunText("ffprobe -v error -show_entries "
                              "stream_tags=stereo_mode:stream_side_data=type,rotation:frame_side_data=type "
                              "-read_intervals %+#1 -of csv=p=0:nk=0 " +
                              Path(name) +
                              " | grep -io 'stereo_mode=[a-z_]*\\|stereo 3d\\|rotation' | sort -u");
    }
    void Render(const std::string& input, const std::string& output, const std::vector<std::string>& effects,
                aveffect::StereoOptions stereo = {}, const std::string& pixelFormat = "auto") {
        aveffect::RenderOptions options;
        options.input = Path(input);
        options.output = Path(output);
        options.videoCodec = output.ends_with(".mkv") ? "ffv1" : "";
        options.overwrite = true;
        options.pixelFormat = pixelFormat;
        options.stereo = std::move(stereo);
        for (const std::string& effect : effects)
            options.effects.push_back(aveffect::ParseEffect(effect, false));
        clips::Render(options, kGoOn);
    }
    /// The first picture's colour at a place, in RGB.
    std::array<int, 3> Colour(const std::string& name, int x = 4, int y = 4) const {
        const Bytes rgb =
            clips::Run("ffmpeg -v error -nostdin -i " + Path(name) + " -vf crop=1:1:" + std::to_string(x) +
                       ":" + std::to_string(y) + ":exact=1 -frames:v 1 -pix_fmt rgb24 -f rawvideo -");
        return {rgb.at(0), rgb.at(1), rgb.at(2)};
    }

    clips::TemporaryDirectory m_directory;
};

std::string WithNumber(std::string text, size_t position, int64_t number) {
    for (size_t byte = 4; byte-- > 0; number >>= 8) text[position + byte] = static_cast<char>(number);
    return text;
}

/// What a camera adds to its files; TIFF's tags go up.
void SetOrientation(const std::string& path, int orientation) {
    std::ifstream in(path, std::ios::binary);
    std::string file((std::istreambuf_iterator<char>(in)), {});
    std::string exif("II*\0\x08\0\0\0\x01\0\x12\x01\x03\0\x01\0\0\0?\0\0\0\0\0\0\0", 26);
    exif[18] = static_cast<char>(orientation);
    if (path.ends_with(".jpg")) {
        file.insert(2, std::string("\xFF\xE1\0\x22"
                                   "Exif\0\0",
                                   10) +
                           exif);
    } else if (path.ends_with(".png")) {
        const std::string chunk = "eXIf" + exif;
        const auto* bytes = reinterpret_cast<const uint8_t*>(chunk.data());
        const uint32_t sum = ~av_crc(av_crc_get_table(AV_CRC_32_IEEE_LE), 0xffffffff, bytes, chunk.size());
        file.insert(33, WithNumber("0000", 0, static_cast<int64_t>(exif.size())) + chunk +
                            WithNumber("0000", 0, sum));
    } else if (path.ends_with(".tif")) {
        // An entry's head: the tag, the type and one value.
        const auto entry = [&file](char tag, char type) {
            return file.find(std::string{tag, 1, type, 0, 1, 0, 0, 0});
        };
        file.erase(entry(0x16, 4), 12);
        file.insert(entry(0x15, 3), exif, 10, 12);
    } else if (path.ends_with(
                   ".avif")) { // where it said its colours; 270 degrees to the left are orientation 6
        const std::string turn("\0\0\0\x09irot\3\0\0\0\x0a"
                               "free\0\0",
                               19);
        file.replace(file.find("colr") - 4, turn.size(), turn);
    } else {
        const std::string chunk = "EXIF" + std::string("\x1a\0\0\0", 4) + exif;
        const std::string head = std::string("VP8X\x0a\0\0\0\x08\0\0\0\x22\0\0\x1a\0\0", 18);
        file = file.substr(0, 12) + head + file.substr(12) + chunk;
        file[4] = static_cast<char>(file.size() - 8);
        file[5] = static_cast<char>((file.size() - 8) >> 8);
    }
    std::ofstream(path, std::ios::binary) << file;
}

/// Three planes, chroma halved both ways, as the orientation has them seen.
Bytes SeenPlanes(const Bytes& stored, int width, int height, int orientation) {
    Bytes seen;
    size_t begin = 0;
    for (const int shift : {0, 1, 1}) {
        const int w = (width + shift) >> shift, h = (height + shift) >> shift;
        const bool quarter = orientation > 4;
        for (int y = 0; y < (quarter ? w : h); ++y)
            for (int x = 0; x < (quarter ? h : w); ++x) {
                const std::array<std::pair<int, int>, 8> from = {{{x, y},
                                                                  {w - 1 - x, y},
                                                                  {w - 1 - x, h - 1 - y},
                                                                  {x, h - 1 - y},
                                                                  {y, x},
                                                                  {y, h - 1 - x},
                                                                  {w - 1 - y, h - 1 - x},
                                                                  {w - 1 - y, x}}};
                const auto& [column, row] = from[static_cast<size_t>(orientation - 1)];
                seen.push_back(stored[begin + static_cast<size_t>(row * w + column)]);
            }
        begin += static_cast<size_t>(w * h);
    }
    return seen;
}

TEST_F(AsSeen, PhotosAreUpright) {
    const std::string base =
        clips::Make(Path("base.jpg"), "35x27", 25, 0.04, "-frames:v 1 -pix_fmt yuvj420p -q:v 2");
    const Bytes stored = clips::Decode(base);
    for (int orientation = 1; orientation <= 8; ++orientation) {
        std::filesystem::copy_file(base, Path("photo.jpg"),
                                   std::filesystem::copy_options::overwrite_existing);
        SetOrientation(Path("photo.jpg"), orientation);
        const Bytes seen = SeenPlanes(stored, 35, 27, orientation);
        Render("photo.jpg", "plain.mkv", {});
        EXPECT_TRUE(clips::Decode(Path("plain.mkv")) == seen) << orientation;
        Render("photo.jpg", "inverted.mkv", {"invert"});
        const bool quarter = orientation > 4;
        EXPECT_TRUE(clips::Decode(Path("inverted.mkv")) ==
                    clips::InvertYuv(seen, quarter ? 27 : 35, quarter ? 35 : 27, 1, 1, false))
            << orientation;
        Render("photo.jpg", "photo.png", {});
        EXPECT_EQ(clips::Probe(Path("photo.png"), "width"), quarter ? "27" : "35");
        EXPECT_EQ(Marks("photo.png"), "");
    }
    constexpr const char* kTurns[] = {"null",        "hflip",       "hflip,vflip", "vflip",
                                      "transpose=0", "transpose=1", "transpose=3", "transpose=2"};
    for (const std::string name : {"photo.png", "photo.tif", "photo.webp", "photo.avif"})
        for (int orientation = name == "photo.png" ? 1 : 6; orientation <= (name == "photo.png" ? 8 : 6);
             ++orientation) {
            Ffmpeg("-i " + base + " -pix_fmt rgb24 " +
                       (name.ends_with(".webp")   ? "-c:v libwebp -lossless 1"
                        : name.ends_with(".avif") ? "-c:v libaom-av1 -cpu-used 8"
                                                  : ""),
                   name);
            const Bytes seen = clips::Run("ffmpeg -v error -nostdin -i " + Path(name) +
                                          " -pix_fmt gbrp -vf " + kTurns[orientation - 1] + " -f rawvideo -");
            SetOrientation(Path(name), orientation);
            Render(name, "upright.mkv", {});
            EXPECT_TRUE(clips::Run("ffmpeg -v error -nostdin -i " + Path("upright.mkv") +
                                   " -pix_fmt gbrp -f rawvideo -") == seen)
                << name << orientation;
        }
}

TEST_F(AsSeen, EffectsWorkOnTurnedClipsAsTheyAreShown) {
    clips::Make(Path("flat.mov"), "64x48", 25, 0.12, "-c:v libx264 -qp 0 -pix_fmt yuv420p");
    clips::Make(Path("wide.mov"), "64x48", 25, 0.12, "-c:v prores_ks -pix_fmt yuv422p10le");
    for (const std::string angle : {"90", "180", "270"}) {
        Turned("flat.mov", angle, "in.mov");
        const size_t width = angle == "180" ? 64 : 48, height = 112 - width;
        const Bytes shown = clips::Run("ffmpeg -v error -nostdin -i " + Path("in.mov") + " -f rawvideo -");
        Render("in.mov", "out.mkv", {"mosaic:mosaic_x1=50%:mosaic_x2=100%:mosaic_y2=100%:mosaic_step=4"});
        const Bytes made = clips::Decode(Path("out.mkv"));
        ASSERT_EQ(made.size(), shown.size());
        size_t leftChanged = 0, rightChanged = 0;
        for (size_t i = 0; i < width * height; ++i)
            (i % width < width / 2 ? leftChanged : rightChanged) += made[i] != shown[i];
        EXPECT_EQ(leftChanged, 0u) << angle;
        EXPECT_GT(rightChanged, width * height / 8) << angle;
        Render("in.mov", "out.mp4", {"gray"});
        EXPECT_EQ(clips::Probe(Path("out.mp4"), "width"), std::to_string(width));
        EXPECT_EQ(Marks("out.mp4"), "");
        // Two views, one above the other as they are shown.
        Render("in.mov", "upper.mkv", {"EffectName3DRenderEffect:render_3d_mode=left"},
               {{}, aveffect::StereoLayout::TopAndBottom});
        const Bytes upper = clips::Decode(Path("upper.mkv"));
        EXPECT_TRUE(std::equal(upper.begin(), upper.begin() + static_cast<ptrdiff_t>(width * height / 2),
                               shown.begin()))
            << angle;
        // Chroma that is halved one way alone keeps its format.
        Turned("wide.mov", angle, "wide_turned.mov");
        Render("wide_turned.mov", "wide.mkv", {});
        EXPECT_EQ(clips::Probe(Path("wide.mkv"), "pix_fmt"), "yuv422p10le");
    }
    // The second clip's mark counts for its pictures, whatever the first one's.
    Turned("flat.mov", "180", "over.mov");
    Render("flat.mov", "views.mkv", {"EffectName3DRenderEffect:render_3d_mode=left:render_3d_swtich=on"},
           {Path("over.mov"), {}});
    const Bytes shown = clips::Run("ffmpeg -v error -nostdin -i " + Path("over.mov") + " -f rawvideo -");
    EXPECT_TRUE(clips::Decode(Path("views.mkv")) == shown);
}

TEST_F(AsSeen, MarksOfTwoViewsHoldOrGo) {
    const std::string beside = "EffectName3DRenderEffect:render_3d_mode=side-by-side";
    clips::Make(Path("plain.mkv"), "64x48", 25, 0.12, "-c:v libx264 -pix_fmt yuv420p");
    Ffmpeg("-i " + Path("plain.mkv") + " -c copy -metadata:s:v stereo_mode=left_right", "marked.mkv");
    const std::string marked = Marks("marked.mkv");
    ASSERT_NE(marked.find("left_right"), std::string::npos);
    const std::pair<std::string, bool> kEffects[] = {
        {"gray", true},     {"simple_gauss_blur", true}, {"directfadein", true},
        {"portrait", true}, {"reverse", false},          {"tensile", false},
        {"mirage", false},  {"videowall", false},        {"EffectNameRotate90X", false},
    };
    for (const auto& [effect, holds] : kEffects) {
        Render("plain.mkv", "out.mkv", {beside, effect});
        EXPECT_EQ(Marks("out.mkv"), holds ? marked : "") << effect;
        Render("marked.mkv", "out.mkv", {effect});
        EXPECT_EQ(Marks("out.mkv"), holds ? marked : "") << effect;
    }
    Render("plain.mkv", "out.mkv", {"reverse", beside, "gray"});
    EXPECT_EQ(Marks("out.mkv"), marked);
}

/// A green that BT.601 and BT.709 tell apart by 12, in YUV of that matrix and range.
const std::string kGreen = "-f lavfi -i color=0x1dbe2c:s=64x48:d=0.2,format=gbrp -c:v ffv1 ";
std::string As(const std::string& matrix, const std::string& range, const std::string& format = "yuv420p") {
    return kGreen + "-vf scale=out_color_matrix=" + matrix + ":out_range=" + range + ",format=" + format +
           " -colorspace " + matrix + " -color_range " + range;
}
testing::AssertionResult IsGreen(const std::array<int, 3>& colour, int off = 3) {
    for (const auto& [is, wanted] : {std::pair{colour[0], 0x1d}, {colour[1], 0xbe}, {colour[2], 0x2c}})
        if (std::abs(is - wanted) > off)
            return testing::AssertionFailure() << colour[0] << " " << colour[1] << " " << colour[2];
    return testing::AssertionSuccess();
}

TEST_F(AsSeen, ColoursAreThoseThatPicturesSay) {
    Ffmpeg(As("bt709", "tv"), "hd.mkv");
    Ffmpeg(As("smpte170m", "tv"), "sd.mkv");
    Ffmpeg(As("bt709", "pc", "yuva420p"), "full.mkv");
    Ffmpeg(As("bt2020nc", "tv", "yuv422p"), "wide.mkv");
    const std::vector<std::string> names = {"hd", "sd", "full", "wide"};
    for (size_t index = 0; index < names.size(); ++index) {
        const std::string &first = names[index], &second = names[(index + 1) % names.size()];
        const std::string a = Path(first + ".mkv"), b = Path(second + ".mkv"), pair = first + ", " + second;
        aveffect::TransitionOptions still;
        still.film.output = Path("still.mp4");
        still.transition = "EffectNameMkFade";
        still.first = a;
        still.second = b;
        still.film.overwrite = true;
        still.film.crf = 4;
        still.durationMs = 80;
        still.holdAfterMs = 40;
        aveffect::RenderTransition(clips::ThePlugin(), still, {}, kGoOn);
        EXPECT_TRUE(IsGreen(Colour("still.mp4"))) << pair;
        EXPECT_EQ(clips::Probe(Path("still.mp4"), "color_space"), clips::Probe(a, "color_space"));
        clips::Run("ffmpeg -v error -nostdin -y -i " + Path("still.mp4") + " -vf reverse -c:v ffv1 " +
                   Path("end.mkv"));
        EXPECT_TRUE(IsGreen(Colour("end.mkv"))) << pair;

        const std::string settings =
            "EffectNameMkFade:EffectPropSourceDur=80:EffectPropVFPath1=" + b + ":EffectPropVFPath2=" + a;
        for (const std::string format : {"auto", "yuv420p", "yuva420p"}) {
            Render(first + ".mkv", "render.mkv", {settings}, {}, format);
            EXPECT_TRUE(IsGreen(Colour("render.mkv"))) << pair << ", " << format;
        }
        Render(first + ".mkv", "views.mkv", {"EffectName3DRenderEffect:render_3d_mode=3"}, {b, {}});
        EXPECT_TRUE(IsGreen(Colour("views.mkv"))) << pair;
        EXPECT_TRUE(IsGreen(Colour("views.mkv", 48))) << pair;
    }
    for (const std::string& clip : names) {
        // Moving the colours of an even picture leaves it as it is.
        for (const std::string format : {"auto", "yuv420p"}) {
            Render(clip + ".mkv", "anaglyph.mkv", {"EffectName3DRenderEffect:render_3d_mode=1"}, {}, format);
            EXPECT_TRUE(IsGreen(Colour("anaglyph.mkv"))) << clip << ", " << format;
        }
        aveffect::FrameOptions frame;
        frame.input = Path(clip + ".mkv");
        frame.output = Path("frame.jpg");
        frame.effects = {aveffect::ParseEffect("EffectName3DRenderEffect:render_3d_mode=1", false)};
        frame.overwrite = true;
        aveffect::RenderFrame(clips::ThePlugin(), frame, {}, kGoOn);
        EXPECT_TRUE(IsGreen(Colour("frame.jpg"))) << clip;
        aveffect::SheetOptions sheet;
        sheet.first = Path(clip + ".mkv");
        sheet.second = Path("sd.mkv");
        sheet.output = Path("sheet.jpg");
        sheet.overwrite = true;
        aveffect::RenderSheet(clips::ThePlugin(), sheet, {}, kGoOn);
        EXPECT_TRUE(IsGreen(Colour("sheet.jpg"))) << clip;
    }
}

// The green of BT.709's primaries in those of BT.2020, as the ffmpeg program works it out.
TEST_F(AsSeen, PrimariesAreBroughtToThoseOfTheFirst) {
    constexpr int kOff = 10; // a step in the wider primaries is up to six in dark red
    const std::string tags = " -colorspace bt709 -color_trc bt709 -color_primaries ";
    Ffmpeg(As("bt709", "tv") + tags + "bt709", "usual.mkv");
    Ffmpeg("-i " + Path("usual.mkv") + " -vf zscale=p=2020:pin=709,format=yuv420p -c:v ffv1" + tags +
               "bt2020",
           "wide.mkv");
    ASSERT_FALSE(IsGreen(Colour("wide.mkv"))) << "the samples differ";
    const std::string wide = Path("wide.mkv");
    Render("usual.mkv", "drawn.mkv",
           {"EffectNameMkFade:EffectPropVFPath1=" + wide + ":EffectPropVFPath2=" + wide});
    EXPECT_TRUE(IsGreen(Colour("drawn.mkv"), kOff));
    Render("usual.mkv", "views.mkv", {"EffectName3DRenderEffect:render_3d_mode=3"}, {wide, {}});
    EXPECT_TRUE(IsGreen(Colour("views.mkv", 48), kOff));
    aveffect::JoinOptions join;
    join.film.output = Path("joined.mkv");
    join.film.videoCodec = "ffv1";
    join.clips = {{Path("usual.mkv")}, {wide}};
    join.seams = {{"EffectNameMkFade", 40}};
    aveffect::RenderJoin(clips::ThePlugin(), join, {}, kGoOn);
    Ffmpeg("-i " + Path("joined.mkv") + " -vf reverse -c:v ffv1", "end.mkv");
    EXPECT_TRUE(IsGreen(Colour("end.mkv"), kOff));
}

TEST_F(AsSeen, PicturesOfClipsFitTheirOwnShape) {
    for (const std::string shape : {"16/15", "3", "1/2"}) {
        Ffmpeg("-f lavfi -i testsrc2=s=64x48:d=0.2 -vf loop=5:1:0,setsar=" + shape +
                   " -c:v ffv1 -pix_fmt bgra",
               "in.mkv");
        const std::string path = Path("in.mkv");
        Render("in.mkv", "out.mkv",
               {"EffectNameMkLeftRightMove:EffectPropStartTime=1000:EffectPropVFPath1=" + path +
                ":EffectPropVFPath2=" + path});
        EXPECT_EQ(
            clips::Run("ffmpeg -v error -nostdin -i " + Path("out.mkv") +
                       " -frames:v 1 -f rawvideo -pix_fmt bgr24 -"),
            clips::Run("ffmpeg -v error -nostdin -i " + path + " -frames:v 1 -f rawvideo -pix_fmt bgr24 -"))
            << shape;
    }
}

} // namespace
