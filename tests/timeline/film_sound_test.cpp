// A film's sound against plain arithmetic on the samples of files that are written here.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <fstream>

#include <gtest/gtest.h>

#include "host/media/media_manager.h"
#include "host/support/error.h"
#include "tests/host/clips.h"
#include "timeline/playout/film_sound.h"

namespace {

using aveffect::Film;
using aveffect::FilmItem;
using aveffect::FilmTime;
using Samples = std::vector<float>; // stereo
using Kind = FilmItem::Kind;

constexpr int kRate = 48000;

FilmTime Ms(int64_t milliseconds) { return {milliseconds, {1000, 1}}; }

/// A sample that tells its place.
int16_t Noise(int64_t sample, int channel) {
    return static_cast<int16_t>((sample * 7919 + channel * 104729) % 30011 - 15000);
}
int16_t Tone(int64_t sample, int) {
    return static_cast<int16_t>(
        std::lround(20000 * std::sin(2 * M_PI * 1000 / kRate * static_cast<double>(sample))));
}

FilmItem Make(Kind kind, const FilmTime& duration, std::vector<FilmItem> children = {}) {
    FilmItem item;
    item.kind = kind;
    item.duration = duration;
    item.children = std::move(children);
    if (kind == Kind::Track) item.carries = FilmItem::Carries::Sound;
    return item;
}

FilmItem MakeClip(const std::string& url, const FilmTime& start, const FilmTime& duration) {
    FilmItem clip = Make(Kind::Clip, duration);
    clip.media = {aveffect::FilmMedia::Kind::File, url};
    clip.start = start;
    clip.place = "clip of " + url;
    return clip;
}

FilmItem MakeTrack(std::vector<FilmItem> children) {
    FilmTime duration;
    for (const FilmItem& child : children) duration = duration + child.duration;
    return Make(Kind::Track, duration, std::move(children));
}

FilmItem With(FilmItem item, const std::vector<std::string>& effects) {
    for (const std::string& effect : effects)
        item.effects.push_back(
            {aveffect::ParseEffect(effect, false, aveffect::Medium::Audio), aveffect::Medium::Audio, ""});
    return item;
}

FilmItem At(AVRational speed, FilmItem item) {
    item.speed = speed;
    return item;
}

class FilmSoundTest : public testing::Test {
protected:
    /// 16-bit stereo.
    std::string Write(const std::string& name, int64_t samples, int16_t (*valueOf)(int64_t, int),
                      int rate = kRate) {
        std::vector<int16_t> values;
        for (int64_t at = 0; at < samples; ++at)
            for (int channel = 0; channel < 2; ++channel) values.push_back(valueOf(at, channel));
        std::string path = m_directory / name;
        const std::string raw = m_directory / "raw";
        std::ofstream(raw).write(reinterpret_cast<const char*>(values.data()),
                                 static_cast<std::streamsize>(2 * values.size()));
        clips::Run("ffmpeg -v error -y -f s16le -ac 2 -ar " + std::to_string(rate) + " -i " + raw +
                   " -bitexact " + path);
        return path;
    }

    /// The tracks' sound in floating point.
    Samples Play(std::vector<FilmItem> tracks, bool limiter = false, const FilmTime& from = {},
                 int frameSize = 0) {
        FilmTime longest;
        for (const FilmItem& track : tracks) longest = std::max(longest, track.duration);
        Film film{"", Make(Kind::Stack, longest, std::move(tracks))};
        film.stack.effects = m_filmEffects;
        aveffect::FilmSound sound({clips::ThePlugin(),
                                   &m_manager,
                                   film,
                                   {{kRate, "stereo"}, AV_SAMPLE_FMT_FLT, frameSize},
                                   from,
                                   limiter,
                                   {30000, 1001},
                                   m_reporter,
                                   clips::kGoOn});
        sound.EndAt({});
        Samples samples;
        while (const auto frame = sound.Next({})) {
            EXPECT_EQ(frame->pts, static_cast<int64_t>(samples.size() / 2));
            const auto* data = reinterpret_cast<const float*>(frame->data[0]);
            samples.insert(samples.end(), data, data + 2 * frame->nb_samples);
            const auto open = std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
            m_mostOpen = std::max(m_mostOpen, open);
        }
        EXPECT_FALSE(sound.Damage().Text());
        return samples;
    }

    clips::TemporaryDirectory m_directory;
    std::vector<std::string> m_said;
    aveffect::RenderObserver m_observer{
        {}, {}, [this](const std::string& text) { m_said.push_back(text); }, {}};
    aveffect::Reporter m_reporter{m_observer};
    aveffect::MediaManager m_manager;
    std::vector<aveffect::FilmEffect> m_filmEffects;
    ptrdiff_t m_mostOpen = 0;
};

// Each clip's first sample stands at the sample nearest to its exact time, and is the file's one nearest to
// the clip's start, without a drift.
TEST_F(FilmSoundTest, ThousandsOfClipsLieWhereTheirTimesSay) {
    const std::string noise = Write("noise.au", 5 * kRate, Noise);
    const auto nearest = [](int64_t frames, AVRational rate) {
        return (2 * frames * kRate * rate.den + rate.num) / (2 * rate.num);
    };
    const auto baseline = std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    for (const AVRational rate : {AVRational{30000, 1001}, AVRational{24000, 1001}}) {
        std::vector<FilmItem> items;
        std::vector<std::pair<int64_t, int64_t>> places; // frame in the film, and in the file
        int64_t frame = 0;
        for (int64_t index = 0; index < 1500; ++index) {
            const int64_t length = 1 + index % 3, start = index * 7 % 100;
            places.emplace_back(frame, start);
            items.push_back(MakeClip(noise, {start, rate}, {length, rate}));
            frame += length;
        }
        const Samples samples = Play({MakeTrack(items)});
        ASSERT_EQ(samples.size(), 2 * static_cast<size_t>(nearest(frame, rate)));
        places.emplace_back(frame, 0);
        size_t wrong = 0;
        for (size_t index = 0; index + 1 < places.size(); ++index) {
            const int64_t begin = nearest(places[index].first, rate),
                          end = nearest(places[index + 1].first, rate);
            for (int64_t at = begin; at < end; ++at)
                for (int channel = 0; channel < 2; ++channel)
                    wrong +=
                        samples[static_cast<size_t>(2 * at + channel)] !=
                        static_cast<float>(Noise(nearest(places[index].second, rate) + at - begin, channel)) /
                            32768;
        }
        EXPECT_EQ(wrong, 0u);
    }
    EXPECT_LE(m_mostOpen, baseline + 2);
    EXPECT_TRUE(m_said.empty());
}

/// Of the noise, faded in or out between two samples of the film.
struct Heard {
    int64_t begin, end, own; ///< own: the file's sample at the begin
    int64_t rise = 0, risen = 0, fall = 0, fallen = 0;
    double gain = 1;
};

void ExpectHears(const Samples& samples, size_t length, const std::vector<Heard>& all) {
    std::vector<double> expected(2 * length);
    for (const Heard& heard : all)
        for (int64_t at = heard.begin; at < heard.end; ++at) {
            const auto way = [at](int64_t from, int64_t to) {
                return std::clamp((static_cast<double>(at - from) + 0.5) / static_cast<double>(to - from),
                                  0.0, 1.0);
            };
            double gain = heard.gain / 32768;
            if (heard.risen > heard.rise) gain *= way(heard.rise, heard.risen);
            if (heard.fallen > heard.fall) gain *= 1 - way(heard.fall, heard.fallen);
            const int64_t own = heard.own + at - heard.begin;
            for (int channel = 0; channel < 2 && own >= 0; ++channel)
                expected[static_cast<size_t>(2 * at + channel)] += gain * Noise(own, channel);
        }
    ASSERT_EQ(samples.size(), expected.size());
    double worst = 0;
    for (size_t at = 0; at < expected.size(); ++at)
        worst = std::max(worst, std::abs(samples[at] - expected[at]));
    EXPECT_LT(worst, 1e-6);
}

TEST_F(FilmSoundTest, TransitionsReadBothSidesAcrossTheCut) {
    const std::string noise = Write("noise.wav", 5 * kRate, Noise);
    FilmItem off = MakeClip(noise, {}, Ms(500));
    off.enabled = false;
    FilmItem track = MakeTrack({MakeClip(noise, Ms(1000), Ms(1000)), MakeClip(noise, Ms(2000), Ms(1000)),
                                Make(Kind::Gap, Ms(500)), off, MakeClip(noise, {}, Ms(500))});
    const auto across = [&](size_t cut, int64_t before, int64_t after) {
        track.transitions.push_back({cut, Ms(before), Ms(after), {}, "", ""});
    };
    across(1, 100, 200);
    across(2, 100, 100);
    across(4, 100, 0); // the file has nothing before its beginning
    across(5, 250, 0);
    ExpectHears(Play({track}), 168000,
                {{0, 57600, 48000, 0, 0, 43200, 57600},
                 {43200, 100800, 91200, 43200, 57600, 91200, 100800},
                 {139200, 168000, -4800, 139200, 144000, 156000, 168000}});
}

// Only what lies in tracks of sound is heard, and of a nested film the part that is asked for.
TEST_F(FilmSoundTest, NestedTracksAreCutAndSummed) {
    const std::string noise = Write("noise.wav", 5 * kRate, Noise);
    FilmItem pictures = MakeTrack({MakeClip(noise, {}, Ms(2000))});
    pictures.carries = FilmItem::Carries::Pictures;
    FilmItem nested =
        Make(Kind::Stack, Ms(700),
             {pictures, MakeTrack({MakeClip(noise, Ms(100), Ms(800)), MakeClip(noise, {}, Ms(800))}),
              With(MakeClip(noise, Ms(3000), Ms(1000)), {"volume:audio_volume=200:@from=0.5:@to=0.75"})});
    nested.start = Ms(500);
    FilmItem outer = pictures;
    outer.children.push_back(nested);
    m_filmEffects =
        With({}, {"fade-sound:@from=1.5:fader_duration=2000:fader_start_scale=0:fader_end_scale=0"}).effects;
    ExpectHears(Play({outer, MakeTrack({Make(Kind::Gap, Ms(250)), nested}),
                      MakeTrack({MakeClip(noise, {}, Ms(1600))})}),
                96000,
                {{12000, 26400, 28800},
                 {26400, 45600, 0},
                 {12000, 24000, 168000, 0, 0, 0, 0, 2},
                 {24000, 36000, 180000},
                 {0, 72000, 0}});
}

TEST_F(FilmSoundTest, LimiterTurnsDownOnlyWhatIsTooLoud) {
    const std::string tone = Write("tone.wav", 4 * kRate, Tone);
    const std::vector<FilmItem> tracks{
        MakeTrack({MakeClip(tone, {}, Ms(3000)), MakeClip(tone, {}, Ms(3000)), MakeClip(tone, {}, Ms(3000)),
                   MakeClip(tone, {}, Ms(3000))}),
        MakeTrack({Make(Kind::Gap, Ms(5000)), MakeClip(tone, {}, Ms(1000))})};
    const auto plain = Play(tracks), limited = Play(tracks, true);
    ASSERT_EQ(plain.size(), limited.size());
    const auto loudest = [](const Samples& samples) {
        return std::abs(*std::ranges::max_element(samples, {}, [](float value) { return std::abs(value); }));
    };
    EXPECT_NEAR(loudest(plain), 2 * 20000.0 / 32768, 1e-4); // the encoder's to cut
    EXPECT_LE(loudest(limited), 1);
    EXPECT_GT(loudest(limited), 0.9);
    m_filmEffects = With({}, {"volume/half"}).effects; // works in 16 bits, which cut nothing off here
    const auto half = Play(tracks);
    EXPECT_TRUE(std::ranges::equal(plain, half,
                                   [](float one, float other) { return std::abs(one / 2 - other) < 6e-4F; }));
    // Untouched before it, and some tenths of a second behind it, to the sample.
    EXPECT_TRUE(std::equal(plain.begin(), plain.begin() + 2 * 239000, limited.begin()));
    EXPECT_TRUE(std::equal(plain.begin() + 2 * 312000, plain.end(), limited.begin() + 2 * 312000));
}

// Other speeds keep the pitch and last as long as the film says; what can't be heard is said once.
TEST_F(FilmSoundTest, SpeedKeepsPitchAndLength) {
    const std::string tone = Write("tone.wav", 4 * kRate, Tone), noise = Write("noise.wav", kRate, Noise);
    const auto samples =
        Play({MakeTrack({At({2, 1}, MakeClip(tone, {}, Ms(1500))), Make(Kind::Gap, Ms(500)),
                         At({1, 4}, MakeClip(tone, {}, Ms(1000))), At({-1, 1}, MakeClip(tone, {}, Ms(250))),
                         At({0, 1}, MakeClip(tone, {}, Ms(250))), MakeClip(noise, {}, Ms(1500)),
                         At({2, 1}, MakeTrack({MakeClip(tone, {}, Ms(1000)), Make(Kind::Gap, Ms(2000))}))})});
    ASSERT_EQ(samples.size(), 2u * 384000);
    const auto crossings = [&](int64_t beginMs, int64_t endMs) {
        int64_t count = 0;
        for (int64_t at = 48 * beginMs + 1; at < 48 * endMs; ++at)
            count +=
                samples[static_cast<size_t>(2 * at)] >= 0 && samples[static_cast<size_t>(2 * at - 2)] < 0;
        return count;
    };
    EXPECT_NEAR(static_cast<double>(crossings(100, 1400)), 1300, 8);
    EXPECT_NEAR(static_cast<double>(crossings(2100, 2900)), 800, 8);
    EXPECT_NEAR(static_cast<double>(crossings(5050, 5450)), 400, 5);
    const auto isSilent = [&](int64_t beginMs, int64_t endMs) {
        return std::all_of(samples.begin() + 96 * beginMs, samples.begin() + 96 * endMs,
                           [](float value) { return value == 0; });
    };
    EXPECT_TRUE(isSilent(1500, 2000));
    EXPECT_TRUE(isSilent(3000, 3500));
    EXPECT_EQ(samples[96 * 3500], static_cast<float>(Noise(0, 0)) / 32768);
    EXPECT_TRUE(isSilent(4500, 5000)); // the file has one second
    EXPECT_TRUE(isSilent(5600, 8000));
    const auto clip = "clip of " + tone;
    EXPECT_EQ(m_said, (std::vector<std::string>{clip + " runs backwards; it is silent",
                                                clip + " holds one picture; it is silent",
                                                "clip of " + noise + ": the sound of " + noise +
                                                    " ends before the clip does; silence follows"}));
}

TEST_F(FilmSoundTest, IsTheSameWhereverItBegins) {
    const std::string noise = Write("noise.wav", 25 * kRate, Noise),
                      tone = Write("tone.wav", 25 * kRate, Tone),
                      slow = Write("slow.wav", 25 * 44100, Noise, 44100),
                      flac = Write("noise.flac", 9 * kRate, Noise),
                      alac = Write("alac.m4a", 20 * 44100, Noise, 44100),
                      aac = Write("tone.m4a", 9 * kRate, Tone),
                      matroska = Write("tone.mka", 10 * kRate, Tone);
    const std::string fade = "fade-sound:fader_duration=4000:fader_start_scale=0:fader_end_scale=1";
    FilmItem lossy =
        MakeTrack({With(MakeClip(aac, Ms(3100), Ms(4000)), {fade}), MakeClip(matroska, Ms(6011), Ms(3000)),
                   At({3, 2}, MakeClip(flac, Ms(1000), Ms(4000))), Make(Kind::Gap, Ms(1000)),
                   MakeClip(tone, {}, Ms(11000))});
    lossy.transitions = {{1, Ms(300), Ms(200), {}, "", ""}, {2, Ms(300), Ms(200), {}, "", ""}};
    FilmItem nested = MakeTrack({Make(
        Kind::Stack, Ms(20000), {With(MakeTrack({MakeClip(slow, Ms(333), Ms(23000))}), {"volume/half"})})});
    nested.effects =
        With({}, {fade + ":@from=9", "replace-sound:audio_replace_path=" + noise + ":@mix=30%:@from=2"})
            .effects;
    const std::vector<FilmItem> tracks{lossy, nested, MakeTrack({MakeClip(alac, Ms(1234), Ms(17000))}),
                                       MakeTrack({MakeClip(tone, {}, Ms(23000))})};
    m_filmEffects = With({}, {"volume:audio_volume=0=50;23=90"}).effects;
    const auto expectSame = [&](bool limiter, const std::vector<int64_t>& moments) {
        const Samples whole = Play(tracks, limiter);
        ASSERT_EQ(whole.size(), 2u * 23 * kRate);
        for (const int64_t ms : moments) {
            const Samples part = Play(tracks, limiter, Ms(ms), 1000);
            ASSERT_EQ(part.size(), whole.size() - static_cast<size_t>(96 * ms));
            const auto differs = std::mismatch(part.begin(), part.end(), whole.begin() + 96 * ms).first;
            EXPECT_EQ(differs, part.end()) << "from " << ms << " ms, sample " << (differs - part.begin()) / 2;
        }
    };
    expectSame(false, {1, 3800, 4100, 6501, 7700, 12345});
    expectSame(true, {9999, 10000, 21234}); // a limiter begins to listen at 9 and at 19 s
}

TEST_F(FilmSoundTest, TakesTheShapeOfTheFirstSound) {
    const std::string slow = Write("slow.wav", 1000, Noise, 44100),
                      silent = clips::Make(m_directory / "silent.mkv", "64x48", 25, 0.2, "-c:v ffv1");
    const auto shape = [](std::vector<FilmItem> tracks) {
        const auto look =
            aveffect::LookAtSound({"", Make(Kind::Stack, Ms(100), std::move(tracks))}, clips::kGoOn);
        return look ? std::optional(look->shape) : std::nullopt;
    };
    FilmItem off = MakeTrack({MakeClip(slow, {}, Ms(100))}), pictures = off;
    off.enabled = false;
    pictures.carries = FilmItem::Carries::Pictures;
    EXPECT_FALSE(shape({off, pictures, MakeTrack({MakeClip(silent, {}, Ms(100))})}));
    EXPECT_EQ(shape({off, MakeTrack({MakeClip(silent, {}, Ms(100)), MakeClip(slow, {}, Ms(100))})}),
              (aveffect::SoundShape{44100, "0x3"}));
    EXPECT_EQ(Play({MakeTrack({MakeClip(silent, {}, Ms(100))})}), Samples(2 * 4800));
    EXPECT_EQ(m_said.size(), 1u);
}

} // namespace
