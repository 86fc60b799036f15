/// Times of pictures and sound, and spans.
#include <algorithm>

#include <gtest/gtest.h>

extern "C" {
#include <libavutil/parseutils.h>
}

#include "host/output/output_clock.h"
#include "tests/host/clips.h"

namespace {

using clips::Bytes;

// Pictures at 0, 1, 2, 4, 7, 11... hundredths: no two intervals alike.
const char* const kVariable =
    "-vf settb=1/1000,setpts='10*N*(N+1)/2' -fps_mode passthrough -enc_time_base 1/1000 ";

TEST(Timing, VariableRateClipsKeepEveryTime) {
    const clips::TemporaryDirectory directory;
    for (const std::string kind : {"mkv", "mp4"}) {
        const std::string input = clips::Make(directory / ("in." + kind), "64x48", 25, 0.6,
                                              std::string(kVariable) + "-c:v libx264 -bf 0 -pix_fmt yuv420p");
        const auto times = clips::Packets(input, "v:0", "pts_time");
        ASSERT_EQ(times.size(), 15u);
        for (const std::string output : {"out.mkv", "out.mp4", "out.mov"}) {
            const std::string path = directory / (kind + output);
            clips::Render(input, path);
            auto rendered = clips::Packets(path, "v:0", "pts_time");
            std::sort(rendered.begin(), rendered.end(),
                      [](const auto& a, const auto& b) { return std::stod(a) < std::stod(b); });
            EXPECT_EQ(rendered, times) << kind << " to " << output;
        }
        const std::string mpeg4 = directory / (kind + "4.mp4");
        clips::Render(input, mpeg4, "mpeg4");
        const auto rendered = clips::Packets(mpeg4, "v:0", "pts_time");
        ASSERT_EQ(rendered.size(), times.size());
        for (size_t index = 0; index < times.size(); ++index)
            EXPECT_NEAR(std::stod(rendered[index]), std::stod(times[index]), 0.0001);
    }
}

TEST(Timing, ConstantRateContainersLoseNoPicture) {
    const clips::TemporaryDirectory directory;
    const std::string input = clips::Make(directory / "in.mkv", "64x48", 25, 0.6,
                                          std::string(kVariable) + "-c:v ffv1 -pix_fmt yuv420p");
    clips::Render(input, directory / "out.avi", "ffv1", {});
    EXPECT_TRUE(clips::Decode(directory / "out.avi") == clips::Decode(input));
}

TEST(Timing, RatesThatAFormatLacksBecomeTheNearest) {
    const clips::TemporaryDirectory directory;
    const struct {
        const char *rate, *name, *written, *said;
    } cases[] = {{"24000/1001", "a.mpg", "24000/1001", ""},
                 {"2997/125", "b.ts", "24000/1001", "23.976024"},
                 {"2997/125", "c.mxf", "24000/1001", "23.976024"},
                 {"15", "d.mpg", "24000/1001", "shown again"},
                 {"15", "e.mxf", "24000/1001", "shown again"},
                 {"15", "f.ts", "15/1", ""},
                 {"15", "g.avi", "15/1", ""},
                 {"100", "h.mxf", "60/1", "left out"},
                 {"25", "i.ogv", "25/1", ""}};
    for (const auto& [rate, name, written, said] : cases) {
        const std::string input = directory / (std::string(name) + ".mp4");
        clips::Run("ffmpeg -v error -nostdin -f lavfi -i testsrc2=s=96x64:d=2:r=" + std::string(rate) +
                   " -c:v libx264 -preset ultrafast -pix_fmt yuv420p " + input);
        std::string heard;
        aveffect::RenderOptions options;
        options.input = input;
        options.output = directory / name;
        aveffect::RenderObserver observer;
        observer.warning = observer.note = [&](const std::string& text) { heard += text + "\n"; };
        const std::atomic<bool> cancel{false};
        aveffect::Render(clips::ThePlugin(), options, observer, cancel);
        EXPECT_TRUE(clips::Probe(options.output, "r_frame_rate").starts_with(written)) << name;
        EXPECT_EQ(heard.find("pictures a second") != std::string::npos, said[0] != 0) << name << heard;
        EXPECT_NE(heard.find(said), std::string::npos) << name << heard;
        // Every picture lasts as long as the next: their number tells how long the clip is.
        const int pictures = std::stoi(clips::RunText("ffprobe -v error -select_streams v -count_packets "
                                                      "-show_entries stream=nb_read_packets -of csv=p=0 " +
                                                      options.output + " | head -1"));
        AVRational base{};
        av_parse_ratio(&base, written, 1000000, 0, nullptr);
        EXPECT_NEAR(pictures / av_q2d(base), 2, 0.05) << name;
    }
}

TEST(Timing, TheLastPictureLastsAsLongAsBefore) {
    const clips::TemporaryDirectory directory;
    const std::string input =
        clips::Make(directory / "in.mp4", "64x48", 30, 1.5, "-c:v libx264 -pix_fmt yuv420p -c:a aac", true);
    clips::Render(input, directory / "out.mp4");
    clips::Render(input, directory / "out.mkv");
    for (const char* entry : {"duration", "nb_frames", "avg_frame_rate", "start_time"})
        EXPECT_EQ(clips::Probe(directory / "out.mp4", entry), clips::Probe(input, entry)) << entry;
    // Matroska rounds to milliseconds; the way back restores the exact rate.
    clips::Render(directory / "out.mkv", directory / "back.mp4");
    EXPECT_EQ(clips::Probe(directory / "back.mp4", "avg_frame_rate"), "30/1");
    EXPECT_EQ(clips::Probe(directory / "back.mp4", "duration"), clips::Probe(input, "duration"));
}

TEST(Timing, SoundIsCopiedPacketForPacket) {
    const clips::TemporaryDirectory directory;
    const std::string input =
        clips::Make(directory / "in.mkv", "64x48", 25, 1,
                    "-map 0 -map 1 -map 1 -c:v libx264 -pix_fmt yuv420p -c:a:0 aac -c:a:1 flac "
                    "-metadata:s:a:1 language=fra",
                    true);
    clips::Render(input, directory / "out.mkv");
    for (const char* stream : {"a:0", "a:1"}) {
        EXPECT_EQ(clips::PacketSum(directory / "out.mkv", stream), clips::PacketSum(input, stream));
        EXPECT_EQ(clips::Packets(directory / "out.mkv", stream, "pts_time"),
                  clips::Packets(input, stream, "pts_time"));
    }
    EXPECT_EQ(clips::RunText(
                  "ffprobe -v error -select_streams a:1 -show_entries stream_tags=language -of csv=p=0 " +
                  (directory / "out.mkv")),
              "fra");
}

class Spans : public testing::Test {
protected:
    // A long group of pictures with B-pictures: cutting needs decoding from far before.
    Spans()
        : m_input(clips::Make(m_directory / "in.mp4", "64x48", 25, 4,
                              "-c:v libx264 -g 250 -bf 3 -pix_fmt yuv420p -c:a pcm_s16le -f mov", true))
        , m_pictures(clips::Decode(m_input)) {}

    Bytes Expected(size_t first, size_t count) const {
        const size_t size = 64 * 48 * 3 / 2;
        return {m_pictures.begin() + static_cast<std::ptrdiff_t>(first * size),
                m_pictures.begin() + static_cast<std::ptrdiff_t>((first + count) * size)};
    }

    Bytes Cut(std::optional<int64_t> from, std::optional<int64_t> to, std::optional<int64_t> limit) {
        aveffect::RenderOptions options;
        options.input = m_input;
        options.output = m_directory / "out.mkv";
        options.videoCodec = "ffv1";
        options.fromMs = from;
        options.toMs = to;
        options.frameLimit = limit;
        options.overwrite = true;
        const std::atomic<bool> cancel{false};
        m_result = clips::Render(options, cancel);
        return clips::Decode(options.output);
    }

    double SoundSeconds() const {
        double seconds = 0;
        for (const std::string& duration : clips::Packets(m_directory / "out.mkv", "a:0", "duration_time"))
            seconds += std::stod(duration);
        return seconds;
    }

    clips::TemporaryDirectory m_directory;
    std::string m_input;
    Bytes m_pictures;
    aveffect::RenderResult m_result;
};

TEST_F(Spans, AreExactToThePicture) {
    EXPECT_TRUE(Cut(2000, 2400, {}) == Expected(50, 10));
    EXPECT_EQ(clips::Packets(m_directory / "out.mkv", "v:0", "pts_time").front(), "0.000000");
    EXPECT_NEAR(SoundSeconds(), 0.4, 0.05);
    EXPECT_TRUE(Cut(2001, 2401, {}) == Expected(51, 10)); // from and to between two pictures
    EXPECT_TRUE(Cut({}, 120, {}) == Expected(0, 3));
    EXPECT_TRUE(Cut(3920, {}, {}) == Expected(98, 2));
    EXPECT_TRUE(Cut(0, {}, 7) == Expected(0, 7));
    EXPECT_NEAR(SoundSeconds(), 0.28, 0.05);
    EXPECT_TRUE(Cut(3000, 3900, 2) == Expected(75, 2));
    EXPECT_EQ(m_result.frames, 2);
    EXPECT_FALSE(m_result.inputDamage) << *m_result.inputDamage;
}

TEST_F(Spans, OutsideTheClipAreRefused) {
    const auto expect = [this](int64_t from, std::optional<int64_t> to, const char* text) {
        clips::ExpectFailure(clips::FailureOf([&] { Cut(from, to, {}); }), aveffect::ErrorKind::Usage, text);
    };
    expect(4000, {}, "4 s");
    expect(2000, 2000, "2 s");
    expect(2001, 2002, "no picture");
    EXPECT_EQ(m_directory.Entries(), std::vector<std::string>{"in.mp4"});
}

TEST(OutputClock, SnapsRoundedTimesButNotOwnOnes) {
    aveffect::OutputClock clock({1, 1000}, {{30000, 1001}, true}, false, 0);
    const AVRational base = clock.Base();
    EXPECT_EQ(av_compare_ts(clock.Convert(33), base, 1001, {1, 30000}), 0);
    EXPECT_EQ(av_compare_ts(clock.Convert(67), base, 2002, {1, 30000}), 0);
    EXPECT_EQ(av_compare_ts(clock.Convert(90), base, 90, {1, 1000}), 0);
    aveffect::OutputClock ticks({1, 1000}, {{25, 1}, false}, true, 0);
    EXPECT_EQ(ticks.Convert(0), 0);
    EXPECT_EQ(ticks.Convert(5), 1); // the nearest tick is taken
    EXPECT_EQ(ticks.Convert(200), 5);
}

} // namespace
