// Volume and fader as LADSPA plug-ins (LV2's are the same code), against the loaded plug-in and plain
// computations.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <thread>

#include "tests/support/guarded_bytes.h"
#include "tests/support/host_sound.h"
#include "tests/support/plugin.h"
#include "tests/support/sound_plugin.h"

#ifdef AVEFFECT_COUNTS_BLOCKS
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>

#include "tests/memory/allocation_count.h"
#endif

namespace {

using namespace test;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

using Samples = std::vector<float, GuardedAllocator<float>>;

/// Beyond full scale, and among them what is no ordinary number.
Samples Noise(size_t count, unsigned seed) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> level(-1.5f, 1.5f);
    constexpr float kOdd[] = {0, -0.0f, 1, -1, 1e-40f, -1e-45f, 1.2e-38f, kInfinity, -kInfinity, kNaN, 3e38f};
    Samples samples(count);
    for (float& sample : samples) sample = random() % 8 ? level(random) : kOdd[random() % std::size(kOdd)];
    return samples;
}

/// Bit for bit.
bool Same(const Samples& a, const Samples& b) {
    return a.size() == b.size() &&
           (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof a[0]) == 0);
}

/// All samples in runs of awkward lengths, none among them, every other one in place.
Samples Play(SoundPlugin& plugin, const Samples& from, unsigned seed = 1) {
    std::mt19937 random(seed);
    Samples to;
    for (size_t done = 0, turn = 0; done < from.size() || turn < 3; ++turn) {
        constexpr size_t kLengths[] = {0, 1, 2, 7, 64, 239, 240, 241, 1024, 5000};
        const size_t count = std::min(kLengths[random() % std::size(kLengths)], from.size() - done);
        const auto begin = from.begin() + static_cast<std::ptrdiff_t>(done);
        Samples piece(begin, begin + static_cast<std::ptrdiff_t>(count)), other(count, 7.0f);
        plugin.Run(piece.data(), turn % 2 ? piece.data() : other.data(), count);
        const Samples& out = turn % 2 ? piece : other;
        to.insert(to.end(), out.begin(), out.end());
        done += count;
    }
    return to;
}

Samples Volume(float percent, const Samples& from) {
    SoundPlugin plugin(kVolumeEffect, 48000, {percent});
    return Play(plugin, from);
}
Samples Fade(unsigned rate, std::vector<float> controls, const Samples& from, unsigned seed = 1) {
    SoundPlugin plugin(kFaderEffect, rate, std::move(controls));
    return Play(plugin, from, seed);
}

TEST(SoundPlugins, VolumeIsThePlugInsOnEvery16BitSample) {
    constexpr unsigned kValues = 65536;
    HostSound all({.channels = 1, .samples = kValues});
    Samples floats(kValues);
    for (unsigned i = 0; i < kValues; ++i) {
        const auto value = static_cast<int16_t>(i);
        std::memcpy(&all.buffers[0][i * 2], &value, 2);
        floats[i] = static_cast<float>(value) / 32768;
    }
    for (const int percent : {0, 1, 50, 99, 100, 101, 200, 1172, 12799}) {
        HostSound expected = all;
        MakeAudio("audio_volume", {{"audio_volume", std::to_string(percent).c_str()}})
            ->ProcFrameInPlace(&expected);
        const Samples actual = Volume(static_cast<float>(percent), floats);
        for (unsigned i = 0; i < kValues; ++i) {
            int16_t value;
            std::memcpy(&value, &expected.buffers[0][i * 2], 2);
            // What is rounded there is between two values here, and full scale one step higher.
            ASSERT_EQ(std::min(std::floor(actual[i] * 32768), 32767.0f), value) << percent << " %, " << i;
            const double plain = floats[i] * (std::floor(percent * 2.56) / 256);
            ASSERT_EQ(actual[i], static_cast<float>(std::clamp(plain, -1.0, 1.0))) << percent << " %, " << i;
        }
    }
}

TEST(SoundPlugins, VolumeTakesWhateverAControlSays) {
    const Samples noise = Noise(3000, 1);
    EXPECT_TRUE(Same(Volume(100, noise), noise)) << "samples beyond full scale stay, too";
    EXPECT_TRUE(Same(Volume(kNaN, noise), noise)) << "the default";
    EXPECT_TRUE(Same(Volume(99.6f, noise), noise)) << "whole percents";
    EXPECT_TRUE(Same(Volume(-5, noise), Volume(0, noise)));
    EXPECT_TRUE(Same(Volume(kInfinity, noise), Volume(12799, noise)));
    EXPECT_TRUE(Same(Volume(1e9f, noise), Volume(12799, noise)));
    Samples scaled = noise;
    for (float& sample : scaled) sample = static_cast<float>(std::clamp(double{sample} / 2, -1.0, 1.0));
    EXPECT_TRUE(Same(Volume(50, noise), scaled)) << "smallest numbers are numbers like others";

    SoundPlugin plugin(kVolumeEffect, 48000, {50});
    float in = 0.5f, out = 3;
    plugin.Connect(kFirstControlPort, nullptr);
    plugin.Connect(9, &out);
    plugin.Run(&in, nullptr, 1);
    plugin.Run(nullptr, &out, 1);
    EXPECT_EQ(out, 3);
    plugin.Run(&in, &out, 1);
    EXPECT_EQ(out, in) << "a control that is not connected";
}

struct Ramp {
    unsigned rate, start, length; // milliseconds
    float from, to;
};

/// The stretch as one frame of the plug-in; the plain sum beside it.
Samples Faded(const Ramp& ramp, Samples samples) {
    const size_t first = size_t{ramp.start} * ramp.rate / 1000;
    const size_t count = size_t{ramp.length} * ramp.rate / 1000, step = ramp.rate * 5 / 1000;
    HostSound stretch({.format = AVBased::sfFloat,
                       .rate = ramp.rate,
                       .channels = 1,
                       .samples = static_cast<unsigned>(count)},
                      ramp.start);
    if (count) std::memcpy(stretch.buffers[0].data(), &samples[first], count * sizeof(float));
    double gain = double{ramp.from};
    for (size_t done = 0, here = 0, elapsed = 0; done < count; done += here, elapsed += 5) {
        const size_t left = count - done;
        here = left != step && left < step + ramp.rate * 5 / 2000 ? left : step;
        for (float* at = &samples[first + done]; at != samples.data() + first + done + here; ++at)
            *at = static_cast<float>(std::clamp(double{*at} * gain, -1.0, 1.0));
        if (elapsed < ramp.length && ramp.length >= 5)
            gain += (double{ramp.to} - double{ramp.from}) / ramp.length * 5.0;
        gain = std::clamp(gain, 0.0, 1.0);
    }
    if (count)
        MakeAudio("audio_fader", {{"fader_start_time", std::to_string(ramp.start).c_str()},
                                  {"fader_duration", std::to_string(ramp.length).c_str()},
                                  {"fader_start_scale", std::to_string(double{ramp.from}).c_str()},
                                  {"fader_end_scale", std::to_string(double{ramp.to}).c_str()}})
            ->ProcFrameInPlace(&stretch);
    EXPECT_TRUE(!count || std::memcmp(stretch.buffers[0].data(), &samples[first], count * sizeof(float)) == 0)
        << "the plug-in's stretch is not the plain sum's";
    return samples;
}

// Gains are such that their six digits are all of them.
TEST(SoundPlugins, FaderIsThePlugInsWhereverARunEnds) {
    unsigned seed = 0;
    for (const Ramp& ramp :
         {Ramp{48000, 0, 100, 0, 1}, Ramp{48000, 7, 100, 1, 0}, Ramp{44100, 13, 333, 0.25f, 0.75f},
          Ramp{44100, 0, 20, 1, 0.5f}, Ramp{22050, 1, 49, 0.5f, 0.5f}, Ramp{8000, 10, 83, 1, 1},
          Ramp{200, 100, 903, 0, 1}, Ramp{192000, 3, 61, 0.875f, 0.125f}, Ramp{48000, 5, 0, 0, 0},
          Ramp{48000, 5, 4, 0.5f, 1}, Ramp{48000, 5, 7, 0.5f, 1}, Ramp{48000, 5, 5, 0, 1},
          Ramp{401, 30, 43, 0, 1}})
        for (const size_t milliseconds : {1u, 50u, 1200u}) { // some end before the stretch does, or begins
            SCOPED_TRACE(std::to_string(ramp.rate) + " Hz, " + std::to_string(ramp.start) + " ms and " +
                         std::to_string(ramp.length) + ", played for " + std::to_string(milliseconds));
            const Samples whole = Noise(ramp.rate * 12 / 10, ++seed), faded = Faded(ramp, whole);
            const auto end = static_cast<std::ptrdiff_t>(ramp.rate * milliseconds / 1000);
            const Samples heard =
                Fade(ramp.rate,
                     {static_cast<float>(ramp.start), static_cast<float>(ramp.length), ramp.from, ramp.to},
                     Samples(whole.begin(), whole.begin() + end), seed);
            ASSERT_TRUE(Same(heard, Samples(faded.begin(), faded.begin() + end)));
        }
}

TEST(SoundPlugins, FaderTakesWhateverControlsSay) {
    const Samples noise = Noise(9600, 3), ones(9600, 1.0f);
    constexpr float kOff[][4] = {
        {0, -1, -1, 1}, {0, -1, 1, -0.001f},          {0, 0, 0, 0},     {0, kNaN, kNaN, 0}, {0, -0.4f, 0, 0},
        {1, -1, 0, 0},  {kInfinity, kInfinity, 0, 0}, {200, 1e9f, 0, 0}}; // 200 ms are all there are
    for (const auto& controls : kOff) {
        const std::vector<float> off(controls, controls + 4);
        EXPECT_TRUE(Same(Fade(48000, off, noise), noise)) << ::testing::PrintToString(off);
    }
    // A length that never ends, gains and times beyond their ranges.
    EXPECT_TRUE(Same(Fade(48000, {0, -1, 0.5f, 0.5f}, ones), Samples(9600, 0.5f)));
    EXPECT_TRUE(Same(Fade(48000, {-9, 1e20f, 0.5f, 0.5f}, ones), Samples(9600, 0.5f)));
    EXPECT_TRUE(Same(Fade(48000, {0, 100, kInfinity, 0}, noise), Fade(48000, {0, 100, 1, 0}, noise)));
}

// The ramp is that of the new settings, where it is by then.
TEST(SoundPlugins, FaderFollowsControlsWhileItRuns) {
    SoundPlugin plugin(kFaderEffect, 48000, {0, 1000, 0, 1});
    Samples ones(4800, 1.0f);
    const auto next = [&](std::vector<float> controls) {
        std::ranges::copy(controls, plugin.controls.begin());
        return Play(plugin, ones);
    };
    EXPECT_NEAR(next({0, 1000, 0, 1}).back(), 0.095, 1e-6);
    EXPECT_NEAR(next({0, 1000, 1, 0}).front(), 0.9, 1e-6) << "100 ms";
    EXPECT_EQ(next({0, 1000, -1, 0}).front(), 1) << "off";
    EXPECT_NEAR(next({0, 400, 0.5f, 1}).front(), 0.5 + 0.5 * 3 / 4, 1e-6) << "300 ms";
    EXPECT_EQ(next({0, 400, 0.5f, 1}), ones) << "behind it";
    plugin.Activate();
    EXPECT_EQ(next({0, 400, 0.5f, 1}).front(), 0.5f) << "from the beginning again";
}

TEST(SoundPlugins, RefusesRatesWithoutSteps) {
    for (const SoundEffect effect : {kVolumeEffect, kFaderEffect}) {
        for (const unsigned rate : {0u, 199u, 10000001u}) EXPECT_FALSE(SoundPlugin(effect, rate, {})) << rate;
        EXPECT_TRUE(SoundPlugin(effect, 200, {}));
    }
    EXPECT_EQ(SoundDescriptor(2), nullptr);
}

TEST(SoundPlugins, ChannelsKnowNothingOfEachOther) {
    const Samples noise = Noise(20000, 5);
    const std::vector<float> fade = {20, 300, 0, 1};
    const Samples softer = Volume(50, noise), faded = Fade(48000, fade, noise);
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < 6; ++i)
        threads.emplace_back([&, i] {
            for (unsigned round = 0; round < 3; ++round)
                EXPECT_TRUE(i % 2 ? Same(Volume(50, noise), softer)
                                  : Same(Fade(48000, fade, noise, i), faded));
        });
    for (std::thread& thread : threads) thread.join();
}

#ifdef AVEFFECT_COUNTS_BLOCKS
/// What every run may do: a child whose every system call but its exit ends it runs them all.
TEST(SoundPlugins, RunsWithoutMemoryAndSystemCalls) {
    for (const SoundEffect effect : {kVolumeEffect, kFaderEffect}) {
        SoundPlugin plugin(effect, 48000, {50, 100, 0, 1});
        Samples samples = Noise(9600, 7);
        const auto runAll = [&] {
            for (const float length : {100.0f, 50.0f, -1.0f}) {
                plugin.controls[1] = length;
                for (const size_t count : {0u, 1u, 480u, 4800u})
                    plugin.Run(samples.data(), samples.data(), count);
            }
            plugin.Activate();
        };
        const size_t before = Allocations();
        runAll();
        EXPECT_EQ(Allocations(), before);

        const pid_t child = fork();
        if (child == 0) {
            if (prctl(PR_SET_SECCOMP, SECCOMP_MODE_STRICT) != 0) syscall(SYS_exit, 2);
            runAll();
            syscall(SYS_exit, 0);
        }
        int status = -1;
        waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
    }
}
#endif

} // namespace
