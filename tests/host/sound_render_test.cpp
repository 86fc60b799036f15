// Renders that change sound: decoded, through audio effects, encoded again, against plain arithmetic on what
// the ffmpeg program decodes.
#include <cmath>
#include <cstring>

#include <gtest/gtest.h>

#include "tests/host/clips.h"
#include "tests/support/plain_sound.h"

namespace {

using aveffect::ErrorKind;
using clips::Bytes;

using Samples = std::vector<int16_t>;

Samples Decode(const std::string& path, const std::string& form = "-f s16le -ac 2 -ar 48000") {
    const Bytes bytes = clips::DecodeSound(path, form);
    Samples samples(bytes.size() / 2);
    std::memcpy(samples.data(), bytes.data(), bytes.size());
    return samples;
}

Samples Half(Samples samples) {
    for (int16_t& sample : samples) sample = static_cast<int16_t>(sample * 128 >> 8);
    return samples;
}

Samples Part(const Samples& samples, double from, double to) {
    const auto at = [&](double seconds) { return samples.begin() + 2 * std::llround(seconds * 48000); };
    return {at(from), at(to)};
}

double Loudness(const Samples& samples) {
    double sum = 0;
    for (const double sample : samples) sum += sample * sample;
    return std::sqrt(sum / static_cast<double>(samples.size()));
}

class SoundRender : public testing::Test {
protected:
    /// Half a second of pictures, sound of 0.7 s beside them.
    std::string MakeClip(const std::string& name, const std::string& options) {
        return clips::MakeSound(m_directory / name,
                                "-f lavfi -i testsrc2=s=64x48:r=25:d=0.52 -c:v ffv1 " + options);
    }
    aveffect::RenderResult Render(const std::string& input, const std::string& output,
                                  const std::vector<std::string>& effects) {
        m_options.input = input;
        m_options.output = output;
        m_options.audioEffects.clear();
        for (const std::string& effect : effects)
            m_options.audioEffects.push_back(aveffect::ParseEffect(effect, false, aveffect::Medium::Audio));
        return clips::Render(m_options, m_cancel);
    }

    clips::TemporaryDirectory m_directory;
    aveffect::RenderOptions m_options;
    std::atomic<bool> m_cancel{false};
};

constexpr char kHalf[] = "audio_volume:audio_volume=50";

TEST_F(SoundRender, EverySampleGoesThroughTheEffect) {
    struct Case {
        const char *input, *options, *output, *codec, *becomes;
    };
    const Case cases[] = {
        {"a.mkv", "-f lavfi -i testsrc2=s=64x48:r=25:d=0.5 -c:v ffv1 -c:a pcm_s16le", "a2.mkv", "",
         "pcm_s16le"},
        {"b.wav", "", "b.flac", "", "flac"},
        {"c.flac", "-sample_fmt s16", "c.wav", "", "pcm_s16le"},
        {"d.wav", "-c:a pcm_s24le", "d2.wav", "", "pcm_s24le"},
        {"e.wav", "-c:a pcm_f32le", "e.mp4", "alac", "alac"},
        {"f.wav", "-ac 6 -ar 11025", "f.mka", "", "pcm_s16le"},
        {"g.ogg", "-c:a libvorbis", "g.mkv", "flac", "flac"},
    };
    for (const auto& [input, options, output, codec, becomes] : cases) {
        SCOPED_TRACE(input);
        const std::string from = clips::MakeSound(m_directory / input, options), to = m_directory / output;
        m_options.audioCodec = codec;
        EXPECT_FALSE(Render(from, to, {kHalf}).inputDamage);
        const Samples before = Decode(from, "-f s16le"), after = Decode(to, "-f s16le");
        ASSERT_GT(before.size(), 30000u);
        EXPECT_EQ(after, Half(before));
        EXPECT_EQ(clips::RunText("ffprobe -v error -select_streams a -show_entries stream=codec_name -of "
                                 "default=nw=1:nk=1 " +
                                 to),
                  becomes);
    }
}

TEST_F(SoundRender, LossyFormatsComeOutAsLoudAndAsLong) {
    const std::string from = clips::MakeSound(m_directory / "in.wav", "");
    const Samples expected = Half(Decode(from));
    for (const char* name : {"a.mp3", "b.opus", "c.m4a", "d.ogg", "e.aac", "f.ts"}) {
        Render(from, m_directory / name, {kHalf});
        const Samples samples = Decode(m_directory / name);
        EXPECT_NEAR(static_cast<double>(samples.size()), static_cast<double>(expected.size()), 2 * 2400)
            << name;
        EXPECT_NEAR(Loudness(samples) / Loudness(expected), 1, 0.04) << name;
    }
}

// In full width where no effect needs less, each in its order, with times that count from the start.
TEST_F(SoundRender, ChainsKeepTheWidthOfTheSound) {
    const std::string from = clips::MakeSound(m_directory / "in.wav", "-c:a pcm_s32le -ar 44100"),
                      to = m_directory / "out.wav";
    Render(from, to,
           {"audio_fader:fader_start_time=100:fader_duration=200:fader_start_scale=0:fader_end_scale=1",
            "audio_fader:fader_start_time=300:fader_duration=50:fader_start_scale=0.5:fader_end_scale=0.5"});
    Bytes expected = clips::DecodeSound(from, "-f s32le");
    const size_t frames = expected.size() / 8;
    for (size_t piece = 0; 882 * piece < frames;
         ++piece) { // 20 ms: three steps of 5 ms and one of 222 samples
        const size_t ms = 20 * piece;
        for (size_t at = 0; at < 882 && 882 * piece + at < frames; ++at) {
            const size_t step = std::min<size_t>(at / 220, 3);
            // Its last step is at full gain; then the ramp begins again for what is still inside.
            const size_t steps = (ms - 100) / 5 + step;
            const double ramp = static_cast<double>(steps) * (1.0 / 200 * 5);
            const double first =
                ms >= 100 && ms <= 300 ? (ms == 300 ? 0.025 * static_cast<double>(step) : ramp) : 1;
            for (size_t channel = 0; channel < 2; ++channel) {
                uint8_t* const sample = &expected[8 * (882 * piece + at) + 4 * channel];
                if (first != 1) test::PlainScaleAs<int32_t>(sample, false, first);
                if (ms >= 300 && ms <= 350) test::PlainScaleAs<int32_t>(sample, false, 0.5);
            }
        }
    }
    const Bytes actual = clips::DecodeSound(to, "-f s32le");
    ASSERT_EQ(actual.size(), expected.size());
    size_t wrong = 0;
    for (size_t at = 0; at < actual.size(); at += 4) {
        int32_t a = 0, e = 0;
        std::memcpy(&a, &actual[at], 4);
        std::memcpy(&e, &expected[at], 4);
        wrong += std::abs(int64_t{a} - e) > 1; // sums of steps round otherwise than products
    }
    EXPECT_EQ(wrong, 0u);
}

TEST_F(SoundRender, AnotherFilesSoundLiesUnderThePictures) {
    const std::string music = clips::MakeSound(m_directory / "music.wav", "-c:a pcm_s16le");
    const std::string slow = clips::MakeSound(m_directory / "slow.flac", "-ar 44100 -ac 1 -sample_fmt s16");
    const std::string with = MakeClip("with.mkv", "-c:a pcm_s16le"), without = MakeClip("no.mkv", "-an");
    const std::string longer = clips::Make(m_directory / "long.mkv", "64x48", 25, 1.6, "-c:v ffv1");
    const std::string replace = "audio_replace:audio_replace_path=";
    const Samples heard = Decode(music);
    m_options.audioCodec = "pcm_s16le";

    Render(with, m_directory / "cut.mkv", {replace + music});
    EXPECT_EQ(Decode(m_directory / "cut.mkv"), Part(heard, 0, 0.52));
    m_options.videoCodec = "ffv1";
    Render(without, m_directory / "under.mkv", {replace + music, kHalf});
    EXPECT_EQ(Decode(m_directory / "under.mkv"), Half(Part(heard, 0, 0.52)));
    EXPECT_EQ(clips::Decode(m_directory / "under.mkv"), clips::Decode(without));

    Render(longer, m_directory / "silent.mkv", {replace + music});
    Samples padded = heard;
    padded.resize(2 * 76800); // 1.6 s
    EXPECT_EQ(Decode(m_directory / "silent.mkv"), padded);
    Render(longer, m_directory / "loop.mkv", {replace + music + ":audio_replace_loop=on"});
    for (size_t at = 0; at < padded.size(); ++at) padded[at] = heard[at % heard.size()];
    EXPECT_EQ(Decode(m_directory / "loop.mkv"), padded);

    // The clip's rate and channels are kept; what a change of rate holds back at the end is not heard.
    Render(longer, m_directory / "own.mkv", {replace + slow});
    EXPECT_EQ(Decode(m_directory / "own.mkv", "-f s16le").size(), 70560u); // 1.6 s in the file's own form
    Render(with, m_directory / "resampled.mkv", {replace + slow});
    EXPECT_EQ(Decode(m_directory / "resampled.mkv"), Part(Decode(slow), 0, 0.52));

    // Under the clip's own sound, from a moment on.
    Render(with, m_directory / "voice.mkv", {replace + music + ":@mix=25%:@from=0.1"});
    Samples mixed = Part(Decode(with), 0, 0.52);
    for (size_t at = 9600; at < mixed.size(); ++at)
        mixed[at] = static_cast<int16_t>(std::lround(mixed[at] + 0.25 * (heard[at - 9600] - mixed[at])));
    EXPECT_EQ(Decode(m_directory / "voice.mkv"), mixed);

    m_options.frameLimit = 5;
    Render(with, m_directory / "five.mkv", {replace + music});
    EXPECT_EQ(Decode(m_directory / "five.mkv"), Part(heard, 0, 0.2));
}

// A steady tone of 0.7 s, so that every sample says what its gain is.
TEST_F(SoundRender, GainsMoveBySample) {
    const std::string tone =
        clips::MakeSound(m_directory / "tone.wav", "-af 'aeval=0.5|-0.25' -c:a pcm_s16le");
    const struct {
        std::string effect;
        double (*expected)(int before, int sample);
        double tolerance; ///< the fader cuts fractions off
    } cases[] = {
        {"volume:audio_volume=0=0;0.5=100",
         [](int before, int sample) {
             const double percent = std::min(100.0, sample / 240.0), below = std::floor(percent);
             const auto at = [&](double whole) { return before * static_cast<int>(whole / 100 * 256) >> 8; };
             return at(below) + (at(below + 1) - at(below)) * (percent - below);
         },
         0.5001},
        {"fade-sound:fader_start_scale=0=0;0.5=1:fader_end_scale=0=0;0.5=1",
         [](int before, int sample) { return before * std::min(1.0, sample / 24000.0); }, 1.5},
        // Its steps of 5 ms count from its own begin.
        {"fade-sound:@from=0.107:@to=0.207:fader_duration=200:fader_start_scale=0:fader_end_scale=1",
         [](int before, int sample) {
             const int own = sample - 5136, step = own / 240;
             return own < 0 || own >= 4800 ? before : before * step / 40.0;
         },
         1},
    };
    m_options.overwrite = true;
    for (const auto& [effect, expected, tolerance] : cases) {
        Render(tone, m_directory / "out.wav", {effect});
        const Samples before = Decode(tone), after = Decode(m_directory / "out.wav");
        ASSERT_EQ(after.size(), before.size());
        double worst = 0;
        for (size_t at = 0; at < after.size(); ++at)
            worst = std::max(worst, std::abs(after[at] - expected(before[at], static_cast<int>(at / 2))));
        EXPECT_LE(worst, tolerance) << effect;
    }
}

// Silence in every width, mixed into a steady tone.
TEST_F(SoundRender, PartsAndStrengthsAreExactToTheSample) {
    using Gain = double (*)(int sample);
    const struct {
        std::string reach;
        Gain gain; ///< that is left
    } cases[] = {
        {"@from=0.105:@to=0.4", [](int sample) { return sample >= 5040 && sample < 19200 ? 0.0 : 1.0; }},
        {"@mix=30%", [](int) { return 0.7; }},
        {"@mix=0=0;50%=100", [](int sample) { return std::max(0.0, 1 - sample / 16800.0); }},
        {"@fade-in=0.1:@fade-out=0.2",
         [](int sample) {
             return 1 - std::min({1.0, sample / 4800.0, (33600 - sample) / 9600.0});
         }},
    };
    m_options.overwrite = true;
    for (const auto& [codec, effect] : {std::pair("pcm_s16le", "volume/mute"),
                                        {"pcm_s32le", "fade-sound:fader_start_scale=0:fader_end_scale=0"},
                                        {"pcm_f32le", "fade-sound:fader_start_scale=0:fader_end_scale=0"}}) {
        const std::string tone =
            clips::MakeSound(m_directory / "tone.wav", std::string("-af 'aeval=0.5|-0.25' -c:a ") + codec);
        for (const auto& [reach, gain] : cases) {
            Render(tone, m_directory / "out.wav", {std::string(effect) + ":" + reach});
            const Bytes bytes = clips::DecodeSound(m_directory / "out.wav", "-f f64le");
            std::vector<double> after(bytes.size() / sizeof(double));
            std::memcpy(after.data(), bytes.data(), bytes.size());
            ASSERT_EQ(after.size(), 67200u);
            double worst = 0;
            for (int sample = 0; sample < 33600; ++sample)
                for (const size_t channel : {size_t{0}, size_t{1}})
                    worst = std::max(worst, std::abs(after[2 * static_cast<size_t>(sample) + channel] -
                                                     (channel ? -0.25 : 0.5) * gain(sample)));
            EXPECT_LE(worst, std::string(codec) == "pcm_s16le" ? 0.5001 / 32768 : 1e-7) << codec << reach;
        }
    }
}

TEST_F(SoundRender, CutsAreWhatTheWholeHasThere) {
    const std::string pictures = "-c:v libx264 -g 5 -sc_threshold 0 -bf 0 -pix_fmt yuv420p -c:a pcm_s16le";
    const std::string clip = MakeClip("clip.mkv", pictures),
                      sound = clips::MakeSound(m_directory / "a.wav", "");
    const std::string music = clips::MakeSound(m_directory / "music.flac", "-af areverse -ar 44100");
    const std::vector<std::string> effects = {
        "volume:audio_volume=0=50;80%=200", "replace-sound:@from=0.0333:@mix=60%:audio_replace_path=" + music,
        "fade-sound:@from=0.0707:fader_duration=300:fader_start_scale=0:fader_end_scale=1"};
    m_options.overwrite = true;
    for (const char* codec : {"", "copy", "alone"}) {
        SCOPED_TRACE(codec);
        const std::string from = codec == std::string("alone") ? sound : clip;
        m_options.videoCodec = codec == std::string("copy") ? codec : "";
        m_options.fromMs = m_options.toMs = std::nullopt;
        Render(from, m_directory / "whole.mkv", effects);
        const Samples whole = Decode(m_directory / "whole.mkv");
        m_options.fromMs = 200; // a key picture, and in no effect's piece the beginning
        m_options.toMs = 400;
        Render(from, m_directory / "part.mkv", effects);
        const Samples part = Decode(m_directory / "part.mkv");
        EXPECT_GE(part.size(), 19200u);
        ASSERT_LE(19200 + part.size(), whole.size());
        EXPECT_TRUE(std::equal(part.begin(), part.end(), whole.begin() + 19200));

        // Begun anew, as if there had never been more.
        clips::Run("ffmpeg -v error -y -i " + from + " -af asetpts=N,atrim=0.2:0.4 -vn " +
                   m_directory / "cut.wav");
        m_options.restart = true;
        m_options.videoCodec = "";
        Render(from, m_directory / "part.wav", effects);
        m_options.restart = false;
        m_options.fromMs = m_options.toMs = std::nullopt;
        Render(m_directory / "cut.wav", m_directory / "all.wav", effects);
        EXPECT_EQ(Decode(m_directory / "part.wav"), Decode(m_directory / "all.wav"));
    }
}

TEST_F(SoundRender, SpansAreCutToTheSample) {
    const std::string clip = MakeClip("in.mkv", "-c:a pcm_s16le"), aac = MakeClip("in.mov", "-c:a aac");
    const std::string music = clips::MakeSound(m_directory / "in.flac", "-sample_fmt s16");
    const Samples whole = Decode(music);
    m_options.fromMs = 120;
    m_options.toMs = 330;
    m_options.audioCodec = "pcm_s16le";
    Render(clip, m_directory / "clip.mkv", {kHalf});
    EXPECT_EQ(Decode(m_directory / "clip.mkv"), Half(Part(whole, 0.12, 0.33)));
    Render(aac, m_directory / "clip.mov", {kHalf});
    EXPECT_EQ(Decode(m_directory / "clip.mov"), Half(Part(Decode(aac), 0.12, 0.33)));
    m_options.audioCodec.clear();
    Render(music, m_directory / "music.flac", {}); // without loss, so without an effect too
    EXPECT_EQ(Decode(m_directory / "music.flac"), Part(whole, 0.12, 0.33));
    m_options.toMs.reset();
    Render(clip, m_directory / "rest.mkv", {kHalf}); // to the end of the sound, beyond the pictures
    EXPECT_EQ(Decode(m_directory / "rest.mkv"), Half(Part(whole, 0.12, 0.7)));
}

TEST_F(SoundRender, WithoutEffectsSoundIsCopied) {
    const std::string pairs[][2] = {{"a.wav", "b.wav"}, {"a.mp3", "b.mp3"},  {"a.opus", "b.opus"},
                                    {"a.m4a", "b.m4a"}, {"a.flac", "b.mkv"}, {"clip.mkv", "c.flac"}};
    for (const auto& [input, output] : pairs) {
        const std::string from = input == "clip.mkv"
                                     ? MakeClip(input, "-c:a flac -metadata title=Tones")
                                     : clips::MakeSound(m_directory / input, "-metadata title=Tones");
        const std::string to = m_directory / output;
        EXPECT_FALSE(Render(from, to, {}).inputDamage) << input;
        EXPECT_EQ(clips::PacketSum(to, "a"), clips::PacketSum(from, "a")) << input;
        EXPECT_EQ(clips::RunText("ffprobe -v error -show_entries format_tags=title:stream_tags=title -of "
                                 "default=nw=1:nk=1 " +
                                 to),
                  "Tones")
            << input;
    }
}

TEST_F(SoundRender, PicturesStayWhereOnlySoundIsChanged) {
    const std::string h264 = "-c:v libx264 -bf 2 -g 5 -pix_fmt yuv420p ", ffv1 = "-c:a pcm_s16le";
    const struct {
        std::string input, options, output, codec;
        bool stays;
    } cases[] = {
        {"a.mp4", h264 + "-c:a aac", "a2.mp4", "", true},
        {"a.mp4", "", "b.mkv", "opus", true},
        {"a.mp4", "", "c.ts", "", true},
        {"a.mp4", "", "d.avi", "", false},
        {"a.mp4", "", "e.webm", "", false},
        {"f.mkv", ffv1, "f2.mkv", "", true},
        {"f.mkv", "", "g.mp4", "", false},
        {"h.mov", h264 + "-c:a pcm_s16le", "h.mp4", "", true},
        {"i.avi", "-c:v mpeg4 -bf 2 -c:a mp3", "i.mkv", "", true},
    };
    for (const auto& [input, options, output, codec, stays] : cases) {
        SCOPED_TRACE(input + " " + output);
        const std::string from = options.empty() ? m_directory / input : MakeClip(input, options),
                          to = m_directory / output;
        m_options.audioCodec = codec;
        EXPECT_FALSE(
            Render(from, to, codec.empty() ? std::vector<std::string>{kHalf} : std::vector<std::string>{})
                .inputDamage);
        EXPECT_EQ(clips::Decode(to) == clips::Decode(from), stays);
        EXPECT_NEAR(static_cast<double>(Decode(to).size()), static_cast<double>(Decode(from).size()),
                    2 * 4800);
    }
}

// At 25 pictures a second, every fifth a key picture.
TEST_F(SoundRender, CopiedPicturesAreCutAtKeyPictures) {
    const std::string clip = MakeClip("in.mkv", "-c:v libx264 -bf 2 -g 5 -sc_threshold 0 -pix_fmt yuv420p "
                                                "-x264-params open-gop=0 -c:a pcm_s16le"),
                      to = m_directory / "out.mkv";
    const Bytes whole = clips::Decode(clip);
    const Samples sound = Decode(clip);
    m_options.videoCodec = "copy";
    m_options.fromMs = 300;
    m_options.toMs = 360;
    for (const std::vector<std::string>& effects : {std::vector<std::string>{}, {kHalf}}) {
        m_options.overwrite = true;
        EXPECT_FALSE(Render(clip, to, effects).inputDamage);
        const Bytes part = clips::Decode(to);
        const size_t picture = 64 * 48 * 3 / 2, count = part.size() / picture;
        EXPECT_GE(count, 4u); // 0.2 to 0.36 s; those after it that one of them refers to
        EXPECT_LE(count, 5u);
        EXPECT_TRUE(std::equal(part.begin(), part.end(), whole.begin() + static_cast<long>(5 * picture)));
        const Samples heard = Decode(to);
        if (effects.empty())
            EXPECT_NEAR(static_cast<double>(heard.size()), 2 * 0.16 * 48000, 2 * 2048); // whole packets
        else
            EXPECT_EQ(heard, Half(Part(sound, 0.2, 0.36)));
    }
    m_options.fromMs.reset();
    m_options.toMs.reset();
    for (const char* name : {"all.mkv", "all.mp4", "all.flv", "all.ts"}) {
        Render(clip, m_directory / name, {});
        EXPECT_EQ(clips::Decode(m_directory / name), whole) << name;
    }
    const auto refused = [&](const char* output, const char* text) {
        clips::ExpectFailure(clips::FailureOf([&] { Render(clip, m_directory / output, {}); }),
                             ErrorKind::Usage, text);
    };
    for (const char* output : {"no.webm", "no.mpg", "no.png", "no.wav"}) refused(output, "");
    m_options.effects = {aveffect::ParseEffect("gray", false)};
    refused("no.mkv", "--codec copy leaves the pictures as they are, which does not go with the effect gray");
}

TEST_F(SoundRender, SaysWhatIsWrong) {
    const std::string music = clips::MakeSound(m_directory / "in.wav", ""), clip = MakeClip("no.mkv", "-an");
    const std::string out = m_directory / "out.flac";
    const auto expect = [&](const std::string& input, const std::string& output,
                            const std::vector<std::string>& effects, ErrorKind kind,
                            const std::string& text) {
        clips::ExpectFailure(clips::FailureOf([&] { Render(input, m_directory / output, effects); }), kind,
                             text);
    };
    const std::string replace = "audio_replace:audio_replace_path=";
    expect(clip, "out.mkv", {kHalf}, ErrorKind::Usage, "no sound");
    expect(clip, "out.wav", {kHalf}, ErrorKind::Input, clip + " has no sound");
    expect(music, "out.gif", {kHalf}, ErrorKind::Usage, ".gif files hold no sound");
    expect(clip, "out.png", {kHalf}, ErrorKind::Usage, ".png files hold no sound");
    expect(music, "out.wav", {"audio_replace"}, ErrorKind::Usage, "audio_replace_path");
    expect(music, "out.wav", {replace + clip}, ErrorKind::Input,
           clip + " holds no sound that can be decoded");
    expect(music, "out.wav", {replace + "none.wav:audio_replace_path=" + music}, ErrorKind::Input,
           "none.wav");
    m_options.effects = {aveffect::ParseEffect("gray", false)};
    expect(music, "out.wav", {}, ErrorKind::Usage,
           m_directory / "out.wav" + " takes no pictures for the effect gray");
    EXPECT_EQ(m_directory.Entries(), (std::vector<std::string>{"in.wav", "no.mkv"}));
    m_options.effects.clear();

    // A file that ends before its time: what there is, and a word.
    const std::string cut = clips::MakeSound(m_directory / "cut.flac", "-sample_fmt s16");
    const Samples whole = Decode(cut);
    std::filesystem::resize_file(cut, std::filesystem::file_size(cut) * 3 / 4);
    const auto damage = Render(cut, out, {kHalf}).inputDamage;
    ASSERT_TRUE(damage);
    EXPECT_NE(damage->find("cut.flac: the clip ends early: at 0."), std::string::npos) << *damage;
    const Samples left = Decode(out);
    EXPECT_GT(left.size(), 4000u);
    EXPECT_EQ(left, Half(Part(whole, 0, static_cast<double>(left.size()) / 96000)));
}

} // namespace
