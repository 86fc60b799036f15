/// Clips made of transitions, against plain arithmetic on what the ffmpeg program decodes.
#include <cmath>
#include <cstring>
#include <numbers>

#include <gtest/gtest.h>

#include "host/jobs/transition.h"
#include "tests/host/clips.h"

namespace {

using aveffect::ErrorKind;
using clips::Bytes;

using clips::kGoOn;

class Transitions : public testing::Test {
protected:
    std::string Ffmpeg(const std::string& arguments, const std::string& name) {
        clips::Run("ffmpeg -v error -nostdin -y " + arguments + " " + (m_directory / name));
        return m_directory / name;
    }
    /// A lossless clip of one colour, with a tone unless its pitch is 0.
    std::string Clip(const std::string& name, const std::string& colour, const std::string& size, int rate,
                     double seconds, int hertz = 0, const std::string& more = "") {
        const std::string length = ":d=" + std::to_string(seconds);
        std::string inputs =
            "-f lavfi -i color=" + colour + ":s=" + size + ":r=" + std::to_string(rate) + length;
        if (hertz) inputs += " -f lavfi -i sine=f=" + std::to_string(hertz) + ":r=44100" + length;
        return Ffmpeg(inputs + " -c:v ffv1 -pix_fmt yuv420p -c:a pcm_s16le " + more, name);
    }
    static aveffect::FilmOptions Film(const std::string& output) {
        aveffect::FilmOptions film;
        film.output = output;
        film.videoCodec = "ffv1";
        film.audioCodec = "flac";
        return film;
    }
    /// Joins clips and returns the output's path.
    std::string Join(const std::vector<std::string>& inputs, int64_t durationMs) {
        aveffect::JoinOptions options{
            Film(m_directory / "joined.mkv"), {}, {{"EffectNameMkFade", durationMs}}};
        for (const std::string& input : inputs) options.clips.push_back({input});
        aveffect::RenderJoin(clips::ThePlugin(), options, {}, kGoOn);
        return options.film.output;
    }
    std::string Failure(const aveffect::TransitionOptions& options, ErrorKind kind) {
        const auto before = m_directory.Entries();
        const auto failure =
            clips::FailureOf([&] { aveffect::RenderTransition(clips::ThePlugin(), options, {}, kGoOn); });
        clips::ExpectFailure(failure, kind, "");
        EXPECT_EQ(m_directory.Entries(), before);
        return failure.text;
    }

    clips::TemporaryDirectory m_directory;
};

Bytes Pixels(const std::string& path) {
    return clips::Run("ffmpeg -v error -nostdin -i " + path +
                      " -fps_mode passthrough -f rawvideo -pix_fmt bgr0 -");
}

/// The luma of every picture's middle, the rate of the pictures being that of the file.
std::vector<int> MiddleLuma(const std::string& path, int width, int height) {
    const Bytes pictures = clips::Decode(path);
    std::vector<int> luma;
    const size_t picture = static_cast<size_t>(width * height * 3 / 2);
    for (size_t at = 0; at < pictures.size(); at += picture)
        luma.push_back(pictures[at + static_cast<size_t>((height / 2) * width + width / 2)]);
    return luma;
}

/// Strength of a tone in a tenth of a second of sound at 44.1 kHz.
double Tone(const std::vector<float>& sound, double from, double hertz) {
    constexpr double kRate = 44100, kSpan = 0.1;
    double cosine = 0, sine = 0;
    for (size_t at = static_cast<size_t>(from * kRate); at < static_cast<size_t>((from + kSpan) * kRate);
         ++at) {
        const double angle = 2 * std::numbers::pi * hertz * static_cast<double>(at) / kRate;
        cosine += sound[at] * std::cos(angle);
        sine += sound[at] * std::sin(angle);
    }
    return 2 * std::hypot(cosine, sine) / (kRate * kSpan);
}

std::vector<float> Sound(const std::string& path) {
    const Bytes bytes = clips::Run("ffmpeg -v error -nostdin -i " + path + " -f f32le -ac 1 -");
    std::vector<float> sound(bytes.size() / sizeof(float));
    std::memcpy(sound.data(), bytes.data(), sound.size() * sizeof(float));
    return sound;
}

TEST_F(Transitions, StillPicturesFadeInTheirTime) {
    const std::string first = Ffmpeg("-f lavfi -i testsrc2=s=64x48 -frames:v 1 -pix_fmt rgb24", "a.png");
    const std::string second =
        Ffmpeg("-f lavfi -i gradients=s=64x48:c0=red:c1=blue -frames:v 1 -pix_fmt rgb24", "b.png");
    aveffect::TransitionOptions options{Film(m_directory / "out.mkv"), "EffectNameMkFade", first, second};
    options.durationMs = 1000;
    options.startMs = 200;
    options.holdBeforeMs = 300;
    options.holdAfterMs = 150;
    options.film.rate = AVRational{20, 1};
    const auto result = aveffect::RenderTransition(clips::ThePlugin(), options, {}, kGoOn);
    EXPECT_EQ(result.frames, 29);

    const Bytes a = Pixels(first), b = Pixels(second), film = Pixels(options.film.output);
    ASSERT_EQ(film.size(), 29 * a.size());
    for (size_t picture = 0; picture < 29; ++picture) {
        // 6 pictures of hold, 4 until the start, 16 of transition, 3 of hold.
        const double progress = picture < 10 ? 0 : picture >= 26 ? 1 : static_cast<double>(picture - 10) / 16;
        for (size_t at = 0; at < a.size(); ++at) {
            if (at % 4 == 3) continue;
            const int mixed = static_cast<int>(a[at] * (1 - progress) + b[at] * progress);
            ASSERT_EQ(film[picture * a.size() + at], mixed) << picture << " " << at;
        }
    }
}

TEST_F(Transitions, PicturesAreFittedTurnedAndChosenByStream) {
    // A film of two streams, the second of pixels twice as wide as high, to be turned by a quarter.
    const std::string two = Ffmpeg(
        "-f lavfi -i color=lime:s=32x32:d=0.2 -f lavfi -i color=blue:s=24x16:d=0.2,setsar=2 -map 0 -map 1 "
        "-c:v mpeg4 -q:v 1",
        "two.mp4");
    Ffmpeg("-i " + two + " -map 0 -c copy -metadata:s:v:1 rotate=90", "turned.mp4");
    const std::string first = Ffmpeg("-f lavfi -i color=red:s=50x40 -frames:v 1", "a.png");
    aveffect::TransitionOptions options{Film(m_directory / "out.mkv"), "EffectNameMkRoll", first,
                                        m_directory / "turned.mp4?vstreamid=1"};
    options.film.framing.width = options.film.framing.height = aveffect::Extent{60};
    options.holdAfterMs = 40;
    aveffect::RenderTransition(clips::ThePlugin(), options, {}, kGoOn);
    const Bytes film = Pixels(options.film.output);
    ASSERT_EQ(film.size(), 26u * 60 * 60 * 4);
    const auto colour = [&](size_t picture, size_t x, size_t y) {
        const unsigned char* pixel = &film[((picture * 60 + y) * 60 + x) * 4];
        return std::string(pixel[0] > 200 ? "B" : "") + (pixel[1] > 200 ? "G" : "") +
               (pixel[2] > 200 ? "R" : "");
    };
    // The first is 50 by 40: 60 by 48 in the middle. The second is 48 by 16, upright 16 by 48: 20 by 60.
    EXPECT_EQ(colour(0, 30, 5) + colour(0, 30, 7) + colour(0, 30, 52) + colour(0, 30, 54), "RR");
    EXPECT_EQ(colour(25, 18, 30) + colour(25, 21, 1) + colour(25, 38, 58) + colour(25, 41, 30), "BB");
}

TEST_F(Transitions, JoinedClipsKeepTheirPicturesAndCrossInBetween) {
    // Pale, so that no colour lies outside RGB.
    const std::string pale = "-vf eq=saturation=0.2:contrast=0.6 -c:v ffv1 -pix_fmt yuv420p";
    const std::string first = clips::Make(m_directory / "a.mkv", "64x48", 25, 1, pale);
    const std::string second = Clip("b.mkv", "gray", "64x48", 12, 1.5);
    const std::string third = clips::Make(m_directory / "c.mkv", "64x48", 25, 1, pale);
    const std::string joined = Join({first, second, third}, 400);
    EXPECT_EQ(clips::Probe(joined, "pix_fmt"), "yuv420p");
    const Bytes source = clips::Decode(first), grey = clips::Decode(second), film = clips::Decode(joined);
    constexpr size_t kPicture = 64 * 48 * 3 / 2;
    ASSERT_EQ(film.size(), (25 + 38 + 25 - 20) * kPicture);
    EXPECT_TRUE(std::equal(source.begin(), source.begin() + 15 * kPicture, film.begin()));
    EXPECT_TRUE(std::equal(source.begin() + 10 * kPicture, source.end(), film.end() - 15 * kPicture));
    EXPECT_TRUE(std::equal(grey.begin(), grey.begin() + kPicture, film.begin() + 30 * kPicture));
    // Moving pictures cross: 4 tenths of the way, 6 parts of the one and 4 of the other.
    double worst = 0;
    for (size_t at = 0; at < 64 * 48; ++at) {
        const double mixed = source[19 * kPicture + at] * 0.6 + grey[at] * 0.4;
        worst = std::max(worst, std::abs(film[19 * kPicture + at] - mixed));
    }
    EXPECT_LE(worst, 2.5); // there and back between YUV and RGB
    const auto times = clips::Packets(joined, "v:0", "pts_time");
    for (size_t index = 0; index < times.size(); ++index)
        EXPECT_NEAR(std::stod(times[index]), static_cast<double>(index) / 25, 0.0006);
}

TEST_F(Transitions, JoinedSoundFadesWithThePictures) {
    const std::string first = Clip("a.mkv", "gray", "32x32", 25, 1, 440);
    const std::string silent = Clip("b.mkv", "white", "48x32", 30, 1.2);
    const std::string third = Clip("c.mov", "black", "32x32", 25, 1.2, 880, "-ar 48000 -ac 2 -shortest");
    const std::string joined = Join({first, silent, third}, 400);
    // 25 + 30 + 30 pictures less two times 10.
    const std::vector<float> sound = Sound(joined);
    EXPECT_EQ(sound.size(), 65u * 44100 / 25);
    EXPECT_EQ(MiddleLuma(joined, 32, 32).size(), 65u);
    const double whole = Tone(sound, 0.2, 440);
    EXPECT_NEAR(whole, 0.125, 0.01);
    EXPECT_NEAR(Tone(sound, 0.75, 440), whole * 0.5, 0.01); // half way through the first seam
    EXPECT_NEAR(Tone(sound, 1.2, 440) + Tone(sound, 1.2, 880), 0, 0.001);
    EXPECT_NEAR(Tone(sound, 1.55, 880), 0.125 * 0.5, 0.015);
    EXPECT_NEAR(Tone(sound, 2.3, 880), 0.125, 0.015);
}

TEST_F(Transitions, LiveClipsPlayFromTheirBeginnings) {
    // Luma tells the time: a picture's middle brightens by 4 a picture.
    const std::string ramp = "-f lavfi -i color=s=32x32:r=25:d=2,format=yuv420p,geq=lum=20+4*N:cb=128:cr=128 "
                             "-f lavfi -i sine=d=2 -c:v ffv1 -c:a pcm_s16le";
    const std::string clip = Ffmpeg(ramp, "a.mkv");
    aveffect::TransitionOptions options{Film(m_directory / "out.mkv"), "EffectNameMkLeftRightMove", clip,
                                        clip};
    options.live = true;
    options.durationMs = 800;
    options.startMs = 200;
    options.holdBeforeMs = 200;
    options.holdAfterMs = 400;
    aveffect::RenderTransition(clips::ThePlugin(), options, {}, kGoOn);
    const std::vector<int> luma = MiddleLuma(options.film.output, 32, 32);
    ASSERT_EQ(luma.size(), 35u);
    EXPECT_EQ(luma[9], 20 + 4 * 9);
    EXPECT_NEAR(luma[12], 20 + 4 * 12, 1); // the first has not left the middle yet
    EXPECT_NEAR(luma[24], 20 + 4 * 14, 1); // the second began with picture 10
    EXPECT_EQ(luma[34], 20 + 4 * 24);
    EXPECT_EQ(Sound(options.film.output).size(), 35u * 44100 / 25);

    options.film.output = m_directory / "still.mkv";
    options.second = Ffmpeg("-f lavfi -i color=white:s=32x32 -frames:v 1", "b.png");
    aveffect::RenderTransition(clips::ThePlugin(), options, {}, kGoOn); // a picture lasts as long as it takes
    EXPECT_EQ(MiddleLuma(options.film.output, 32, 32).size(), 35u);
}

TEST_F(Transitions, WhatCannotBeShownIsSaid) {
    const std::string clip = Clip("a.mkv", "gray", "32x32", 25, 0.4);
    // More than 30 packets of sound before the first picture.
    const std::string late =
        Ffmpeg("-f lavfi -i sine=d=9 -itsoffset 8 -f lavfi -i color=s=32x32:d=1 -map 0 -map 1 "
               "-c:a pcm_s16le -c:v ffv1",
               "late.mkv");
    aveffect::TransitionOptions options{Film(m_directory / "out.mkv"), "EffectNameMkFade", clip, late};
    EXPECT_EQ(Failure(options, ErrorKind::Input), late + " has no picture among its first 30 items");
    options.second = m_directory / "none.png";
    EXPECT_EQ(Failure(options, ErrorKind::Input), options.second + ": no such file");
    options.second = clip;
    options.live = true;
    EXPECT_EQ(Failure(options, ErrorKind::Usage), clip + " lasts 0.4 s, but 1 s of it are asked for");
    options.durationMs = 10;
    EXPECT_NE(Failure(options, ErrorKind::Usage).find("a picture lasts 0.04 s"), std::string::npos);
    options.transition = "invert";
    const std::string text = Failure(options, ErrorKind::Usage);
    EXPECT_NE(text.find("crossfade, "), std::string::npos) << text;
    const auto middle = clips::FailureOf([&] { Join({clip, clip, clip}, 400); });
    EXPECT_EQ(middle.text, clip + " lasts 0.4 s, too short for a transition of 0.4 s at each of its ends");
}

} // namespace
