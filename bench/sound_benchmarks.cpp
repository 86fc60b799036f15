// Sound: one second of 48 kHz stereo through the loaded plug-in, and as many bytes through the queue.
#include <algorithm>

#include "BaseTools/data_buffer.h"
#include "bench/copy_time.h"
#include "tests/support/host_sound.h"
#include "tests/support/plugin.h"
#include "tests/support/sound_plugin.h"

namespace bench {

namespace {

constexpr unsigned kRate = 48000;

void RunEffect(benchmark::State& state, int format, const std::string& name, test::Settings settings,
               int channels = 2) {
    const test::AudioProc proc = test::MakeAudio(name, settings);
    test::HostSound sound({.format = format, .rate = kRate, .channels = channels, .samples = kRate});
    sound.Randomise(1);
    TimeAgainstCopy(state, sound.buffers[0].size(), [&] { proc->ProcFrameInPlace(&sound); });
}

// Every frame takes the same steps: a ramp of one second's length starts again with each.
void RunFader(benchmark::State& state, int format, int channels = 2) {
    RunEffect(state, format, "audio_fader",
              {{"fader_duration", "1000"}, {"fader_start_scale", "0"}, {"fader_end_scale", "1"}}, channels);
}

// One channel in the pieces that sound servers have.
void RunAdapter(benchmark::State& state, test::SoundEffect effect, const std::vector<float>& controls) {
    constexpr size_t kPiece = 1024;
    test::SoundPlugin plugin(effect, kRate, controls);
    std::vector<float> samples(kRate, 0.5f);
    TimeAgainstCopy(state, samples.size() * sizeof samples[0], [&] {
        plugin.Activate();
        for (size_t done = 0; done < samples.size(); done += kPiece)
            plugin.Run(&samples[done], &samples[done], std::min(kPiece, samples.size() - done));
    });
}

// A second's bytes, pushed and popped in blocks of the sizes that readers and frames have.
void RunQueue(benchmark::State& state, size_t pushed, size_t popped) {
    constexpr size_t kBytes = size_t{kRate} * 4;
    const Memory from = MakeMemory(kBytes + pushed), to = MakeMemory(kBytes + popped);
    TimeAgainstCopy(state, kBytes, [&] {
        BaseTool::CDataBuffer2 queue(true);
        size_t done = 0;
        for (size_t sent = 0; sent < kBytes; sent += pushed) {
            queue.Push(from.get() + sent, pushed);
            while (queue.GetDataSize() >= popped && done < kBytes) done += queue.Pop(to.get() + done, popped);
        }
    });
}

template <class Body>
void Register(const char* name, Body body) {
    benchmark::RegisterBenchmark(name, body)->UseManualTime();
}

} // namespace

void RegisterSoundBenchmarks() {
    using benchmark::State;
    Register("audio_volume, signed 16", [](State& state) {
        RunEffect(state, AVBased::sfSigned16, "audio_volume", {{"audio_volume", "77"}});
    });
    Register("audio_volume, signed 16, twofold", [](State& state) {
        RunEffect(state, AVBased::sfSigned16, "audio_volume", {{"audio_volume", "200"}});
    });
    Register("audio_fader, signed 16", [](State& state) { RunFader(state, AVBased::sfSigned16); });
    Register("audio_fader, float", [](State& state) { RunFader(state, AVBased::sfFloat); });
    Register("audio_fader, float, one channel", [](State& state) { RunFader(state, AVBased::sfFloat, 1); });
    Register("audio_fader, LADSPA", [](State& state) {
        RunAdapter(state, test::kFaderEffect, {0, 1000, 0, 1});
    });
    Register("audio_volume, LADSPA", [](State& state) { RunAdapter(state, test::kVolumeEffect, {77}); });
    Register("byte queue, 4096 in, 4096 out", [](State& state) { RunQueue(state, 4096, 4096); });
    Register("byte queue, 4096 in, 7680 out", [](State& state) { RunQueue(state, 4096, 7680); });
    Register("byte queue, 65536 in, 4096 out", [](State& state) { RunQueue(state, 65536, 4096); });
}

} // namespace bench
