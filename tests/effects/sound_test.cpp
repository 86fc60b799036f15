// Volume and fader through the loaded plug-in, against plain computations.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <limits>

#include "aveffect/base_media.h"
#include "tests/ledger/confirm.h"
#include "tests/support/effect_cases.h"
#include "tests/support/host_sound.h"
#include "tests/support/plain_sound.h"

namespace {

using namespace AVBased;
using namespace test;

constexpr int kFormats[] = {1, 2, 3, 4, 7, 8, 9, 10};

HostSound Stereo16(const std::vector<int16_t>& samples) {
    HostSound sound({.samples = static_cast<unsigned>(samples.size() / 2)});
    sound.buffers[0].resize(samples.size() * 2);
    std::memcpy(sound.buffers[0].data(), samples.data(), samples.size() * 2);
    return sound;
}

TEST(Volume, GainsInFixedPointRoundingDown) {
    const std::vector<int16_t> values = {1001, -1001, 20000, -20000, 32767, -32768, 1, -1, 0, 12345};
    const auto at = [&](const char* volume) {
        HostSound sound = Stereo16(values);
        MakeAudio("audio_volume", {{"audio_volume", volume}})->ProcFrameInPlace(&sound);
        std::vector<int16_t> results(values.size());
        std::memcpy(results.data(), sound.buffers[0].data(), values.size() * 2);
        return results;
    };
    using Samples = std::vector<int16_t>;
    EXPECT_EQ(at("100"), values);
    EXPECT_EQ(at("50"), (Samples{500, -501, 10000, -10000, 16383, -16384, 0, -1, 0, 6172}));
    EXPECT_EQ(at("200"), (Samples{2002, -2002, 32767, -32768, 32767, -32768, 2, -2, 0, 24690}));
    // 12799 % is 32765 / 256; 12800 % turns into -128.
    EXPECT_EQ(at("12799"), (Samples{32767, -32768, 32767, -32768, 32767, -32768, 127, -128, 0, 32767}));
    EXPECT_EQ(at("12800"), (Samples{-32768, 32767, -32768, 32767, -32768, 32767, -128, 128, 0, -32768}));
    // 99 % is 253 / 256. Huge numbers, negative ones among them, give silence.
    EXPECT_EQ(at("99")[5], -32384);
    for (const char* volume : {"0", "-1", "-2147483648", "2147483647"})
        EXPECT_EQ(at(volume), Samples(values.size())) << volume;
}

// On every number of samples, at every level.
TEST(Volume, GainsAllSamplesAlike) {
    ForLevels([] {
        for (const int volume : {50, 100, 150, 200, 1172, 12799, 12800, 7, -50})
            for (unsigned samples = 1; samples < 200; samples += samples < 70 ? 1 : 17) {
                HostSound sound({.channels = 1, .samples = samples});
                sound.Randomise(samples);
                const int16_t gain = volume < 0 ? int16_t{0} : static_cast<int16_t>(volume * 256 / 100);
                std::vector<int16_t> expected(samples), actual(samples);
                std::memcpy(expected.data(), sound.buffers[0].data(), samples * 2);
                for (int16_t& sample : expected)
                    sample = static_cast<int16_t>(std::clamp((sample * gain) >> 8, -32768, 32767));
                MakeAudio("audio_volume", {{"audio_volume", std::to_string(volume).c_str()}})
                    ->ProcFrameInPlace(&sound);
                std::memcpy(actual.data(), sound.buffers[0].data(), samples * 2);
                ASSERT_EQ(actual, expected) << volume << ", " << samples;
            }
    });
}

TEST(Volume, WorksOnACopyAndOnWhateverBytesThereAre) {
    const AudioProc proc = MakeAudio("audio_volume", {{"audio_volume", "0"}});
    EXPECT_TRUE(proc->Seek(12345));
    HostSound sound = Stereo16({5, 6, 7, 8});
    const auto original = sound.buffers;
    auto* copy = static_cast<HostSound*>(proc->ProcFrame(&sound));
    EXPECT_EQ(sound.buffers, original);
    EXPECT_EQ(copy->buffers[0], GuardedBytes(8));
    copy->Release();
    sound.buffers[0] = {1, 2, 3};
    proc->ProcFrameInPlace(&sound);
    EXPECT_EQ(sound.buffers[0], (GuardedBytes{0, 0, 3}));
    sound.hasBuffers = false;
    proc->ProcFrameInPlace(&sound);

    sound.hasBuffers = true;
    sound.buffers[0].clear();
    sound.buffers[0].reserve(1);
    EXPECT_DEATH(proc->ProcFrameInPlace(&sound), "Assertion .pSamples != NULL && nSize != 0. failed");
    sound.shape.format = sfUnsigned16;
    EXPECT_DEATH(proc->ProcFrameInPlace(&sound), "Assertion .sf == sfSigned16. failed");
    sound.shape.interleaved = false;
    EXPECT_DEATH(proc->ProcFrameInPlace(&sound), "Assertion .bOK. failed");
}

// The ramp, sample by sample.
struct PlainFader {
    double start, end;
    unsigned duration;
    double scale = start;
    unsigned elapsed = 0;

    void Step(HostSound& sound, unsigned first, unsigned count, unsigned milliseconds) {
        const SoundShape& shape = sound.shape;
        const size_t unit = SampleBytesOf(shape.format);
        const auto each = static_cast<size_t>(shape.interleaved ? shape.channels : 1);
        for (auto& buffer : sound.buffers)
            for (size_t i = first * each; i < (first + count) * each; ++i)
                PlainScale(shape.format, &buffer[i * unit], !shape.interleaved && !shape.littleEndian, scale);
        if (elapsed < duration && duration >= 5) scale += (end - start) / duration * 5.0;
        elapsed += milliseconds;
        scale = std::clamp(scale, 0.0, 1.0);
    }
    void Fade(HostSound& sound) {
        const unsigned samples = sound.shape.samples, chunk = sound.shape.rate * 5 / 1000;
        unsigned done = 0;
        // A rest of less than half a chunk belongs to the last whole one.
        while (samples - done >= chunk) {
            const unsigned rest = samples - done - chunk;
            if (rest != 0 && rest < chunk && rest < sound.shape.rate * 5 / 2000) break;
            Step(sound, done, chunk, 5);
            done += chunk;
        }
        if (done != samples) Step(sound, done, samples - done, (samples - done) * 1000 / sound.shape.rate);
        if (elapsed < duration) return;
        scale = start;
        elapsed = 0;
    }
};

std::string Exact(double value) {
    char text[40];
    std::snprintf(text, sizeof text, "%.17g", value);
    return text;
}

void ExpectFades(const SoundShape& shape, PlainFader plain, std::initializer_list<unsigned> sizes) {
    const AudioProc proc =
        MakeAudio("audio_fader", {{"fader_start_time", "100"},
                                  {"fader_duration", std::to_string(plain.duration).c_str()},
                                  {"fader_start_scale", Exact(plain.start).c_str()},
                                  {"fader_end_scale", Exact(plain.end).c_str()}});
    IRawAudioFrame* last = nullptr;
    unsigned frame = 0;
    for (const unsigned size : sizes) {
        SoundShape framed = shape;
        framed.samples = size;
        HostSound sound(framed, 100 + frame % 2 * plain.duration); // both ends of the stretch
        sound.Randomise(++frame);
        HostSound expected = sound, original = sound;
        plain.Fade(expected);
        if (frame % 3 == 0) {
            last = proc->ProcFrame(&sound);
            ASSERT_NE(last, nullptr);
            ASSERT_EQ(sound.buffers, original.buffers);
            ASSERT_EQ(static_cast<HostSound*>(last)->buffers, expected.buffers);
        } else {
            proc->ProcFrameInPlace(&sound);
            ASSERT_EQ(sound.buffers, expected.buffers) << "frame " << frame << " of " << size << " samples";
        }
    }
    if (last) last->Release();
}

TEST(Sound, IsAsInTheLedger) {
    ledger::ExpectSoundInLedger("audio_volume", [](const auto& of, std::vector<HostSound>& pieces) {
        const auto gain = static_cast<int16_t>(of.Int("audio_volume") * 256 / 100);
        for (HostSound& piece : pieces)
            for (size_t i = 0; i < piece.buffers[0].size(); i += 2) {
                int16_t sample;
                std::memcpy(&sample, &piece.buffers[0][i], 2);
                sample = static_cast<int16_t>(std::clamp((sample * gain) >> 8, -32768, 32767));
                std::memcpy(&piece.buffers[0][i], &sample, 2);
            }
    });
    ledger::ExpectSoundInLedger("audio_fader", [](const auto& of, std::vector<HostSound>& pieces) {
        if (of.Number("fader_start_scale") < 0) return;
        const auto duration = static_cast<unsigned>(of.Int("fader_duration"));
        PlainFader plain{of.Number("fader_start_scale"), of.Number("fader_end_scale"), duration};
        for (HostSound& piece : pieces)
            if (piece.time <= duration) plain.Fade(piece);
    });
    // As much of it as there is, again and again.
    ledger::ExpectSoundInLedger("audio_replace", [](const auto& of, std::vector<HostSound>& pieces) {
        for (unsigned i = 0; i < pieces.size(); ++i) pieces[i].buffers = ledger::Input(of, 7 + i % 2).buffers;
    });
}

TEST(Fader, ScalesEveryFormatLayoutAndByteOrder) {
    ForLevels([] {
        for (const int format : kFormats)
            for (const bool interleaved : {false, true})
                for (const bool little : {false, true})
                    for (const int channels : {1, 2, 5}) {
                        SCOPED_TRACE("format " + std::to_string(format) +
                                     (interleaved ? ", interleaved" : ", per channel") +
                                     (little ? ", little-endian, " : ", big-endian, ") +
                                     std::to_string(channels) + " channels");
                        const SoundShape shape = {format, 8000, channels, interleaved, little};
                        ASSERT_NO_FATAL_FAILURE(ExpectFades(shape, {1.75, 0.25, 40}, {100, 97, 210}));
                        // Gains that no step changes, products just below whole numbers among them.
                        for (const double gain : {0.9999999999999999, 0.005 * 67, 1.0 / 3, 65537.0, 70000.5,
                                                  3e9, std::numeric_limits<double>::infinity()})
                            ASSERT_NO_FATAL_FAILURE(ExpectFades(shape, {gain, gain, 4}, {39}));
                    }
    });
}

TEST(Fader, CutsFramesIntoStepsAndStartsAgain) {
    // Whole chunks, tails of half a chunk and more, shorter ones, and fewer samples than half a chunk alone.
    ExpectFades({.rate = 44100}, {0, 0.5, 60}, {1024, 880, 900, 989, 990, 50, 150, 0, 1, 5000, 1024});
    ExpectFades({.rate = 48000}, {1, 0, 35}, {1000, 1000, 240, 239, 119, 120, 360, 359, 480, 1});
    ExpectFades({.rate = 200}, {0.5, 1, 50}, {1, 2, 3, 20});
    ExpectFades({.rate = 401}, {2, 0.5, 100}, {1, 2, 3, 5, 20});
    ExpectFades({.rate = 8000}, {0.625, 0, 4}, {400, 17}); // too short for a step: the start's gain
}

TEST(Fader, WorksInItsStretchOnceBothGainsAreSet) {
    const AudioProc proc = MakeAudio("audio_fader", {{"fader_start_scale", "0.5"}});
    const auto sampleAt = [&](unsigned time, unsigned samples = 2) {
        HostSound sound = Stereo16(std::vector<int16_t>(samples * 2, 1000));
        sound.time = time;
        proc->ProcFrameInPlace(&sound);
        int16_t last;
        std::memcpy(&last, &sound.buffers[0].back() - 1, 2);
        return last;
    };
    EXPECT_EQ(sampleAt(0), 1000) << "one gain is not set";
    proc->SetProperty("fader_end_scale", "0.5");
    EXPECT_EQ(sampleAt(4000000000u), 500) << "a duration of -1 never ends";
    proc->SetProperty("fader_start_time", "10");
    EXPECT_EQ(sampleAt(10), 1000) << "but with another start it has no moment at all";
    proc->SetProperty("fader_duration", "20");
    EXPECT_EQ(sampleAt(9), 1000);
    EXPECT_EQ(sampleAt(10), 500);
    EXPECT_EQ(sampleAt(30), 500);
    EXPECT_EQ(sampleAt(31), 1000);
    // From 0.5 by 0.125 a step: the same value again keeps the ramp, another one starts it anew.
    proc->SetProperty("fader_end_scale", "1");
    EXPECT_EQ(sampleAt(20, 240), 500);
    EXPECT_EQ(sampleAt(20, 240), 625);
    proc->SetProperty("fader_end_scale", "1.0");
    proc->SetProperty("duration", "7");
    EXPECT_EQ(sampleAt(20, 240), 750);
    proc->SetProperty("fader_duration", "40");
    EXPECT_EQ(sampleAt(20, 480), 562);
    // A gain taken back leaves the ramp that there is.
    proc->SetProperty("fader_start_scale", "-1");
    EXPECT_EQ(sampleAt(20, 240), 625);
    EXPECT_TRUE(proc->Seek(1));
    EXPECT_EQ(sampleAt(20, 240), 687);
}

TEST(Fader, LeavesWhatItCannotServe) {
    const AudioProc proc =
        MakeAudio("audio_fader", {{"fader_start_scale", "0.5"}, {"fader_end_scale", "inf"}});
    const auto unchanged = [&](HostSound& sound) {
        sound.Randomise(3);
        const auto original = sound.buffers;
        GetBaseException()->Clear();
        proc->ProcFrameInPlace(&sound);
        return sound.buffers == original;
    };
    for (const int format : {0, 5, 6, 11, -1}) {
        HostSound sound({.samples = 100});
        sound.shape.format = format;
        EXPECT_TRUE(unchanged(sound)) << format;
        EXPECT_EQ(Code(), 0);
    }
    for (const unsigned rate : {0u, 1u, 199u}) {
        HostSound sound({.rate = rate, .samples = 100});
        EXPECT_TRUE(unchanged(sound)) << rate;
        EXPECT_EQ(Code(), 10021008);
        EXPECT_EQ(proc->ProcFrame(&sound), nullptr);
    }
    proc->ProcFrameInPlace(nullptr);
    EXPECT_EQ(Code(), 10021003);
}

TEST(FaderDeathTest, AnOffsetBeyondAnInterleavedBufferNamesTheType) {
    const std::pair<int, const char*> types[] = {{1, "int8_t"},   {2, "uint8_t"}, {3, "int16_t"},
                                                 {4, "uint16_t"}, {7, "int32_t"}, {9, "float"},
                                                 {10, "double"}};
    for (const auto& [format, type] : types) {
        const AudioProc proc =
            MakeAudio("audio_fader", {{"fader_start_scale", "0.5"}, {"fader_end_scale", "1"}});
        HostSound sound({.format = format, .samples = 480});
        sound.buffers[0].resize(240 * 2 * SampleBytesOf(format)); // the second step begins at its end
        EXPECT_DEATH(proc->ProcFrameInPlace(&sound),
                     std::string("Assertion .sampleOffset\\*nChannels\\*sizeof\\(") + type +
                         "\\) < nSize. failed");
    }
}

} // namespace
