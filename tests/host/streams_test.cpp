/// What goes beside the pictures: sound that a file edits itself, subtitles, and what is left out.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <utility>

#include <gtest/gtest.h>

#include "tests/host/clips.h"

namespace {

struct Said {
    std::string notes, warnings;
};

Said RenderHeard(const std::string& input, const std::string& output,
                 const std::pair<std::optional<int64_t>, std::optional<int64_t>>& spanMs = {},
                 std::optional<int64_t> pictures = {}) {
    Said heard;
    aveffect::RenderOptions options;
    options.input = input;
    options.output = output;
    options.fromMs = spanMs.first;
    options.toMs = spanMs.second;
    options.frameLimit = pictures;
    aveffect::RenderObserver observer;
    observer.note = [&](const std::string& text) { heard.notes += text + "\n"; };
    observer.warning = [&](const std::string& text) { heard.warnings += text + "\n"; };
    const std::atomic<bool> cancel{false};
    aveffect::Render(clips::ThePlugin(), options, observer, cancel);
    return heard;
}

class Streams : public testing::Test {
protected:
    // Three seconds with two tones that rise and fall.
    std::string MakeFilm(const std::string& name, const std::string& sound) const {
        clips::Run("ffmpeg -v error -nostdin -y -f lavfi -i testsrc2=s=64x48:r=25:d=3 -f lavfi -i "
                   "\"aevalsrc='0.4*sin(2*PI*(300+200*t)*t)|0.3*sin(2*PI*(900-90*t)*t)':s=48000:d=3\" "
                   "-c:v libx264 -pix_fmt yuv420p -g 250 -strict -2 " +
                   sound + " " + m_directory / name);
        return m_directory / name;
    }
    std::string Subtitles(const std::string& path, int index) const {
        return clips::RunText("ffmpeg -v error -nostdin -i " + path + " -map 0:s:" + std::to_string(index) +
                              " -f srt -");
    }
    const clips::TemporaryDirectory m_directory;
};

// How far two sounds, 16 bits stereo, differ on average, and the shift of the second that brings them
// nearest.
std::pair<double, int> Difference(const clips::Bytes& a, const clips::Bytes& b) {
    const auto sample = [](const clips::Bytes& bytes, size_t at) {
        return static_cast<int16_t>(bytes[4 * at] | bytes[4 * at + 1] << 8);
    };
    std::pair<double, int> best{1e9, 0};
    for (int shift = 0; shift <= 2400; ++shift) {
        double sum = 0;
        for (size_t at = 4800; at < 24000; at += 7)
            sum += std::abs(sample(a, at) - sample(b, at + static_cast<size_t>(shift)));
        best = std::min(best, {sum * 7 / 19200, shift});
    }
    return best;
}

TEST_F(Streams, WhatAnEditListLeavesOutIsNotHeard) {
    for (const std::string codec : {"aac", "pcm_s16le", "flac"}) {
        const std::string kind = codec == "pcm_s16le" ? ".mov" : ".mp4";
        const std::string whole = MakeFilm(codec + kind, "-c:a " + codec);
        const std::string cut = m_directory / (codec + "_cut" + kind);
        clips::Run("ffmpeg -v error -nostdin -ss 0.5 -i " + whole + " -c copy -strict -2 " + cut);
        const clips::Bytes played = clips::DecodeSound(cut);
        for (const std::string target : {"mkv", "mov", "mp4", "ts", "avi", "mka"}) {
            const std::string output = m_directory / (codec + "_out." + target);
            const Said heard = RenderHeard(cut, output);
            const clips::Bytes sound = clips::DecodeSound(output);
            const bool says = target == "mov" || target == "mp4";
            const bool held = heard.notes.find("can't hold") == std::string::npos;
            EXPECT_EQ(heard.notes.find("not heard") != std::string::npos, held && !says) << output;
            if (held && (says || codec != "aac")) {
                EXPECT_TRUE(sound == played) << output;
                continue;
            }
            // What an encoder puts before and behind the sound is less than three packets of 1152 samples.
            const auto [difference, shift] = Difference(played, sound);
            EXPECT_LT(difference, 600) << output;
            EXPECT_LE(shift, 1152) << output;
            EXPECT_LT(std::abs(std::ssize(sound) - std::ssize(played)), 4 * 3 * 1152) << output;
        }
        // What encoders put before the sound by themselves is nothing that anybody cut.
        for (const std::string target : {"mkv", "mp4"}) {
            const std::string output = m_directory / (codec + "_whole." + target);
            if (codec == "pcm_s16le") continue;
            RenderHeard(whole, output);
            EXPECT_EQ(clips::PacketSum(output, "a:0"), clips::PacketSum(whole, "a:0")) << codec << target;
        }
    }
}

TEST_F(Streams, SubtitlesAreRewrittenAndEndWithTheSpan) {
    const std::string words = m_directory / "words.srt";
    const std::string film = MakeFilm("film.mkv", "-an");
    clips::Run("printf '1\\n00:00:00,200 --> 00:00:00,900\\none <i>slanted</i> & more\\n\\n2\\n00:00:01,000 "
               "--> 00:00:02,800\\ntwo\\nlines\\n' > " +
               words);
    const std::string input = m_directory / "in.mkv", asMp4 = m_directory / "in.mp4";
    clips::Run("ffmpeg -v error -nostdin -i " + film + " -i " + words +
               " -map 0 -map 1 -map 1 -c copy -c:s:0 subrip -c:s:1 ass " + input);
    const std::string all = Subtitles(input, 0);
    ASSERT_NE(all.find("00:00:01,000 --> 00:00:02,800"), std::string::npos);
    const struct {
        std::string input, target, codec;
    } cases[] = {{input, "a.mp4", "mov_text"},
                 {input, "b.webm", "webvtt"},
                 {input, "c.mkv", "ass"},
                 {m_directory / "a.mp4", "d.mkv", "subrip"},
                 {m_directory / "a.mp4", "e.webm", "webvtt"}};
    for (const auto& [from, target, codec] : cases) {
        const std::string output = m_directory / target;
        const Said heard = RenderHeard(from, output);
        EXPECT_EQ(heard.warnings, "") << target;
        EXPECT_EQ(heard.notes.find("rewritten as " + codec) != std::string::npos, codec != "ass") << target;
        EXPECT_EQ(clips::RunText("ffprobe -v error -select_streams s:1 -show_entries stream=codec_name -of "
                                 "csv=p=0 " +
                                 output),
                  codec);
        for (const int stream : {0, 1}) EXPECT_EQ(Subtitles(output, stream), all) << target << stream;
    }
    for (const std::string target : {"span.mkv", "span.mp4"}) {
        const std::string output = m_directory / target;
        RenderHeard(input, output, {400, 1520});
        const std::string text = Subtitles(output, 0);
        EXPECT_NE(text.find("00:00:00,000 --> 00:00:00,500"), std::string::npos) << text;
        EXPECT_NE(text.find("00:00:00,600 --> 00:00:01,120"), std::string::npos) << text;
        RenderHeard(input, m_directory / ("first" + target), {}, 35); // 1.4 s
        const std::string first = Subtitles(m_directory / ("first" + target), 0);
        EXPECT_NE(first.find("00:00:01,000 --> 00:00:01,400"), std::string::npos) << first;
    }
}

// The encoder's delay is left out by players, and moves neither sound nor pictures.
TEST_F(Streams, OpusBeginsWithThePictures) {
    const std::string film = MakeFilm("film.mkv", "-c:a pcm_s16le"), output = m_directory / "out.webm";
    RenderHeard(film, output);
    for (const std::string stream : {"v", "a"})
        EXPECT_EQ(clips::RunText("ffprobe -v error -select_streams " + stream +
                                 " -read_intervals %+#1 -show_entries frame=pts_time -of csv=p=0 " + output +
                                 " | head -c 5"),
                  "0.000")
            << stream;
}

TEST_F(Streams, WhatIsLeftOutIsSaid) {
    const std::string film = MakeFilm("film.mp4", "-c:a aac"), cover = m_directory / "cover.png";
    clips::Run("ffmpeg -v error -nostdin -f lavfi -i color=red:s=32x32 -frames:v 1 " + cover);
    const std::string input = m_directory / "in.mp4";
    clips::Run("ffmpeg -v error -nostdin -i " + film + " -i " + cover +
               " -map 0:v -map 0:a -map 0:v -map 1 -c copy -disposition:v:2 attached_pic -timecode "
               "01:00:00:00 " +
               input);
    const std::string timecode = "a data stream (timecode)", pictures = "another picture stream (h264)";
    for (const std::string target : {"out.mkv", "out.m4a"}) {
        const std::string said = RenderHeard(input, m_directory / target).warnings;
        EXPECT_NE(said.find("a cover picture (png)"), std::string::npos) << said;
        EXPECT_NE(said.find(timecode), std::string::npos) << said;
        EXPECT_EQ(said.find(pictures) != std::string::npos, target == "out.mkv") << said;
        EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1) << said;
    }
    EXPECT_EQ(RenderHeard(film, m_directory / "plain.mkv").warnings, "");
}

} // namespace
