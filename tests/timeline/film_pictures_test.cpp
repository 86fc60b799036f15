/// Films' pictures, against plain arithmetic on what their clips hold.
#include <cmath>
#include <numeric>

#include <gtest/gtest.h>

#include "tests/host/clips.h"
#include "timeline/jobs/film_render.h"

namespace {

using aveffect::FilmItem;
using aveffect::FilmMedia;
using aveffect::FilmTime;
using clips::Bytes;
using clips::kGoOn;
using Kind = FilmItem::Kind;

constexpr int kWidth = 32, kHeight = 24;
constexpr AVRational kPictureRate{24, 1};

FilmTime At(int64_t pictures, AVRational rate = kPictureRate) { return {pictures, rate}; }

FilmItem Clip(const std::string& file, int64_t start, int64_t pictures, AVRational speed = {1, 1}) {
    FilmItem clip{Kind::Clip, file, file};
    clip.start = At(start);
    clip.duration = At(pictures);
    clip.speed = speed;
    clip.media.kind = FilmMedia::Kind::File;
    clip.media.url = file;
    return clip;
}

FilmItem Gap(int64_t pictures) {
    FilmItem gap;
    gap.duration = At(pictures);
    return gap;
}

FilmItem Track(std::vector<FilmItem> children, std::vector<FilmItem::Transition> transitions = {}) {
    FilmItem track{Kind::Track};
    for (const FilmItem& child : children) track.duration = track.duration + child.duration;
    track.children = std::move(children);
    track.transitions = std::move(transitions);
    return track;
}

FilmItem Stack(std::vector<FilmItem> layers) {
    FilmItem stack{Kind::Stack};
    for (const FilmItem& layer : layers) stack.duration = std::max(stack.duration, layer.duration);
    stack.children = std::move(layers);
    return stack;
}

aveffect::FilmEffect Effect(const std::string& text) { return {aveffect::ParseEffect(text, false)}; }

class FilmPictures : public testing::Test {
protected:
    /// A lossless clip whose picture n has luma 16 + 4 (n mod 50).
    std::string Numbered(const std::string& name, int pictures, const std::string& rate = "24",
                         const std::string& codec = "-c:v ffv1") {
        return Ffmpeg("-f lavfi -i nullsrc=s=32x24:r=" + rate +
                          ",trim=end_frame=" + std::to_string(pictures) +
                          ",format=yuv420p,geq=lum='16+mod(4*N\\,200)':cb=128:cr=128 " + codec,
                      name);
    }
    std::string Colour(const std::string& name, const std::string& colour, int pictures,
                       const std::string& more = "-c:v ffv1 -pix_fmt bgr0") {
        return Ffmpeg("-f lavfi -i color=" + colour +
                          ":s=32x24:r=24,format=rgba,trim=end_frame=" + std::to_string(pictures) + " " + more,
                      name);
    }
    std::string Ffmpeg(const std::string& arguments, const std::string& name) {
        clips::Run("ffmpeg -v error -nostdin -y " + arguments + " " + (m_directory / name));
        return m_directory / name;
    }

    std::string Render(FilmItem stack, const std::string& name = "film.mkv", unsigned threads = 0) {
        aveffect::FilmRenderOptions options;
        options.output = m_directory / name;
        options.videoCodec = "ffv1";
        options.overwrite = true;
        options.threads = threads;
        aveffect::RenderFilm(clips::ThePlugin(), {"film", std::move(stack)}, options, {}, kGoOn);
        return options.output;
    }
    /// What a film of numbered clips shows: the numbers, -4 for black.
    std::vector<int> Numbers(FilmItem stack) {
        const Bytes pictures = clips::Run("ffmpeg -v error -nostdin -i " + Render(std::move(stack)) +
                                          " -f rawvideo -pix_fmt yuv420p -");
        std::vector<int> numbers;
        constexpr size_t kPicture = size_t{kWidth} * kHeight * 3 / 2;
        for (size_t at = 0; at < pictures.size(); at += kPicture)
            numbers.push_back(static_cast<int>(std::lround((pictures[at + kWidth * 12 + 16] - 16) / 4.0)));
        return numbers;
    }
    /// The middle of each picture as blue, green, red.
    std::vector<std::array<int, 3>> Colours(FilmItem stack) {
        const Bytes pictures = clips::Run("ffmpeg -v error -nostdin -i " + Render(std::move(stack)) +
                                          " -f rawvideo -pix_fmt bgr24 -");
        std::vector<std::array<int, 3>> colours;
        constexpr size_t kPicture = size_t{kWidth} * kHeight * 3;
        for (size_t at = 0; at < pictures.size(); at += kPicture) {
            const unsigned char* const middle = pictures.data() + at + (kWidth * 12 + 16) * 3;
            colours.push_back({middle[0], middle[1], middle[2]});
        }
        return colours;
    }

    clips::TemporaryDirectory m_directory;
};

// Cuts, gaps, what is switched off, other rates, and clips that are shorter than they are used.
TEST_F(FilmPictures, ShowEachClipsOwnPicturesAtTheirTimes) {
    const std::string a = Numbered("a.mkv", 40), b = Numbered("b.nut", 10);
    const std::string half = Numbered("half.mov", 20, "12");
    FilmItem off = Clip(a, 0, 2);
    off.enabled = false;
    EXPECT_EQ(Numbers(Stack(
                  {Track({Clip(a, 5, 3), Gap(2), Clip(b, 8, 4), off, Clip(half, 4, 4), Clip(a, 30, 2)})})),
              (std::vector<int>{5, 6, 7, 0, 0, 8, 9, 9, 9, 0, 0, 2, 2, 3, 3, 30, 31}));
}

// Sought for, in containers that round times and codecs whose pictures depend on each other.
TEST_F(FilmPictures, BeginInTheMiddleOfClips) {
    const std::string coded = "-c:v libx264 -qp 0 -g 60 -bf 3";
    for (const char* const name : {"long.mkv", "long.mp4", "long.ts"}) {
        const std::string file = Numbered(name, 320, "30000/1001", coded);
        FilmItem first = Clip(file, 0, 0), last = first;
        const AVRational rate{30000, 1001};
        first.start = At(203, rate);
        last.start = At(311, rate);
        first.duration = last.duration = At(3, rate);
        EXPECT_EQ(Numbers(Stack({Track({first, last, first})})),
                  (std::vector<int>{3, 4, 5, 11, 12, 13, 3, 4, 5}))
            << name;
    }
}

TEST_F(FilmPictures, RunAtOtherSpeedsBackwardsAndStill) {
    const std::string a = Numbered("a.mkv", 50);
    EXPECT_EQ(Numbers(Stack({Track({Clip(a, 4, 3, {2, 1}), Clip(a, 4, 4, {1, 2}), Clip(a, 20, 3, {0, 1}),
                                    Clip(a, 30, 15, {-1, 1})})})),
              (std::vector<int>{4,  6,  8,  4,  4,  5,  5,  20, 20, 20, 30, 29, 28,
                                27, 26, 25, 24, 23, 22, 21, 20, 19, 18, 17, 16}));
}

// A trimmed track in a stack in a track, the stack at double speed.
TEST_F(FilmPictures, NestAtWill) {
    const std::string a = Numbered("a.mkv", 50);
    FilmItem inner = Track({Clip(a, 0, 6), Clip(a, 20, 10)});
    inner.start = At(4);
    inner.duration = At(8);
    FilmItem nested = Stack({inner});
    nested.duration = At(4);
    nested.speed = {2, 1};
    EXPECT_EQ(Numbers(Stack({Track({Clip(a, 40, 1), nested, Clip(a, 41, 1)})})),
              (std::vector<int>{40, 4, 20, 22, 24, 41}));
}

// Both clips go on in their handles while they cross: (first * (1 - p) + second * p) for p = 0, 1/4, 1/2,
// 3/4.
TEST_F(FilmPictures, CrossInTheirHandles) {
    const std::string a = Numbered("a.mkv", 50);
    const FilmItem::Transition across{1, At(2), At(2), aveffect::ParseEffect("crossfade", false)};
    const std::vector<int> numbers = Numbers(Stack({Track({Clip(a, 0, 6), Clip(a, 40, 6)}, {across})}));
    const std::vector<double> expected = {
        0, 1, 2, 3, 4, 5 * 0.75 + 39 * 0.25, 6 * 0.5 + 40 * 0.5, 7 * 0.25 + 41 * 0.75, 42, 43, 44, 45};
    ASSERT_EQ(numbers.size(), expected.size());
    for (size_t i = 0; i < numbers.size(); ++i) EXPECT_NEAR(numbers[i], expected[i], 0.8) << i;
}

void ExpectNear(const std::array<int, 3>& colour, const std::array<double, 3>& expected) {
    for (size_t i = 0; i < 3; ++i) EXPECT_NEAR(colour[i], expected[i], 1.01) << i;
}

// What is above covers as its alpha says, beside it and where it fades out the track below is seen.
TEST_F(FilmPictures, LieAboveEachOtherAsAlphaSays) {
    const std::string below = Colour("below.mkv", "0x204080", 20);
    const std::string clear = Colour("clear.png", "0xC08020@0.5", 1, "-frames:v 1");
    const std::string opaque = Colour("opaque.mkv", "0xC08020", 20);
    const FilmItem::Transition away{1, At(2), At(2), aveffect::ParseEffect("crossfade", false)};
    const auto colours =
        Colours(Stack({Track({Clip(below, 0, 9)}), Track({Gap(1), Clip(clear, 0, 1)}),
                       Track({Gap(3), Clip(opaque, 0, 2), Gap(4)},
                             {{2, At(1), At(3), aveffect::ParseEffect("crossfade", false)}})}));
    ASSERT_EQ(colours.size(), 9u);
    const auto mixed = [](double weight) {
        return std::array{0x80 + (0x20 - 0x80) * weight, 0x40 + (0x80 - 0x40) * weight,
                          0x20 + (0xC0 - 0x20) * weight};
    };
    const double alpha = 127 / 255.0; // as the generator rounds a half
    const std::vector<double> weights = {0, alpha, 0, 1, 1, 0.75, 0.5, 0.25, 0};
    for (size_t i = 0; i < weights.size(); ++i) {
        SCOPED_TRACE(i);
        ExpectNear(colours[i], mixed(weights[i]));
    }
}

// A clip of another shape leaves room beside it.
TEST_F(FilmPictures, LeaveWhatIsBesideSmallerPicturesFree) {
    const std::string below = Colour("below.mkv", "0x204080", 2);
    const std::string tall = Ffmpeg(
        "-f lavfi -i color=0xC08020:s=12x24:r=24,trim=end_frame=2 -c:v ffv1 -pix_fmt bgr0", "tall.mkv");
    const Bytes picture = clips::Run("ffmpeg -v error -nostdin -i " +
                                     Render(Stack({Track({Clip(below, 0, 1)}), Track({Clip(tall, 0, 1)})})) +
                                     " -f rawvideo -pix_fmt bgr24 -");
    const auto pixel = [&](int x) {
        const unsigned char* const at = picture.data() + (kWidth * 12 + x) * 3;
        return std::array<int, 3>{at[0], at[1], at[2]};
    };
    ExpectNear(pixel(4), {0x80, 0x40, 0x20});
    ExpectNear(pixel(16), {0x20, 0x80, 0xC0});
    ExpectNear(pixel(28), {0x80, 0x40, 0x20});
}

// A film of one clip is what `render` makes of it; effects see the clip's own times.
TEST_F(FilmPictures, HaveEffectsAsRendersHaveThem) {
    const std::string file = clips::Make(m_directory / "in.mkv", "64x48", 24, 1, "-c:v ffv1");
    const std::vector<std::string> effects = {"invert:@from=0.3:@fade-in=0.2", "spherize", "addnoise"};
    const std::string rendered = m_directory / "rendered.mkv";
    clips::Render(file, rendered, "ffv1", effects);
    FilmItem clip = Clip(file, 0, 24);
    for (const std::string& effect : effects) clip.effects.push_back(Effect(effect));
    const Bytes expected = clips::Decode(rendered);
    for (const unsigned threads : {1u, 3u})
        EXPECT_EQ(clips::Decode(Render(Stack({Track({clip})}), "film.mkv", threads)), expected) << threads;
}

// On a track and on the whole film, whose gaps are black by then.
TEST_F(FilmPictures, HaveEffectsOnTracksAndTheWhole) {
    const std::string grey = Colour("grey.mkv", "0x204080", 4);
    FilmItem track = Track({Clip(grey, 0, 2), Gap(1)});
    track.effects.push_back(Effect("invert"));
    FilmItem film = Stack({track});
    EXPECT_EQ(Colours(film),
              (std::vector<std::array<int, 3>>{{0x7F, 0xBF, 0xDF}, {0x7F, 0xBF, 0xDF}, {0, 0, 0}}));
    film.effects.push_back(Effect("invert"));
    EXPECT_EQ(Colours(film),
              (std::vector<std::array<int, 3>>{{0x80, 0x40, 0x20}, {0x80, 0x40, 0x20}, {255, 255, 255}}));
}

// Size and colours of the first clip, which stands still here, rate and codec of the first that moves.
TEST_F(FilmPictures, AreLikeTheFirstClips) {
    const std::string title = Colour("title.png", "0x204080", 1, "-frames:v 1");
    const std::string moving = clips::Make(m_directory / "moving.avi", "64x48", 30, 1, "-c:v mpeg4");
    aveffect::FilmRenderOptions options;
    options.output = m_directory / "film.mkv";
    aveffect::RenderFilm(clips::ThePlugin(), {"", Stack({Track({Clip(title, 0, 6), Clip(moving, 0, 6)})})},
                         options, {}, kGoOn);
    EXPECT_EQ(clips::Probe(options.output, "codec_name"), "mpeg4");
    EXPECT_EQ(clips::Probe(options.output, "r_frame_rate"), "30/1");
    EXPECT_EQ(clips::Probe(options.output, "width"), "32");
}

// Numbered from a negative one on, by twos; one is missing.
TEST_F(FilmPictures, ComeFromNumberedFiles) {
    const std::vector<std::pair<std::string, std::string>> files = {
        {"p-002", "0x100000"}, {"p000", "0x200000"}, {"p004", "0x300000"}};
    for (const auto& [name, colour] : files) Colour(name + ".png", colour, 1, "-frames:v 1");
    FilmItem clip = Clip("", 0, 8);
    clip.media.kind = FilmMedia::Kind::Numbered;
    clip.media.numbered = {m_directory / "p", ".png", -2, 2, 3, kPictureRate};
    using Missing = aveffect::NumberedMedia::Missing;
    clip.media.numbered.missing = Missing::Hold;
    const auto reds = [&] {
        std::vector<int> values;
        for (const auto& colour : Colours(Stack({Track({clip})}))) values.push_back(colour[2]);
        return values;
    };
    EXPECT_EQ(reds(), (std::vector<int>{16, 16, 32, 32, 32, 32, 48, 48}));
    clip.media.numbered.missing = Missing::Black;
    EXPECT_EQ(reds(), (std::vector<int>{16, 16, 32, 32, 0, 0, 48, 48}));
    clip.media.numbered.missing = Missing::Refuse;
    const auto failure = clips::FailureOf(reds);
    clips::ExpectFailure(failure, aveffect::ErrorKind::Input, "p002.png");
}

} // namespace
