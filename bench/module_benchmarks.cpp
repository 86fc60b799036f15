// The frei0r modules beside the plain effect with the copy that hosts ask for, at 1080p.
#include <cstring>

#include "aveffect/memory_frame.h"
#include "aveffect/pixel_format.h"
#include "bench/copy_time.h"
#include "tests/adapters/frei0r_modules.h"
#include "tests/support/host_manager.h"
#include "tests/support/plugin.h"

namespace bench {
namespace {

struct Pictures {
    static constexpr unsigned kWidth = 1920, kHeight = 1080;
    static constexpr size_t kBytes = size_t{kWidth} * kHeight * 4;

    Memory in = Filled(1), second = Filled(7), out = Filled(0);

    static Memory Filled(unsigned char step) {
        Memory memory = MakeMemory(kBytes);
        for (size_t i = 0; i < kBytes; ++i) memory.get()[i] = static_cast<unsigned char>(i * step ^ i >> 11);
        return memory;
    }
    static uint32_t* Pixels(const Memory& memory) { return reinterpret_cast<uint32_t*>(memory.get()); }
};

AVBased::MemoryFrame FrameOf(const Memory& memory) {
    return {AVBased::BGRA,
            Pictures::kWidth,
            Pictures::kHeight,
            {{memory.get(), Pictures::kWidth * 4, Pictures::kWidth * 4, Pictures::kHeight}}};
}

// A module and the effect that it stands for, with the settings of the one and of the other.
struct Pair {
    const char *module, *values, *effect;
    test::Settings settings;
};

template <class Body>
std::function<void()> Timed(std::vector<double>& seconds, Body body) {
    return [&seconds, body] { seconds.push_back(Seconds(body)); };
}

// In turn, so that what else the machine does befalls both. The plain transition has its pictures loaded:
// that a module's has other ones each time is a part of its cost.
void RunBoth(benchmark::State& state, const Pair& pair) {
    const test::Module module(pair.module);
    const test::Effect effect(module, Pictures::kWidth, Pictures::kHeight);
    effect.Set(pair.values);
    const Pictures pictures;
    const uint32_t* const second = module.Mixes() ? Pictures::Pixels(pictures.second) : nullptr;
    AVBased::MemoryFrame firstFrame = FrameOf(pictures.in), secondFrame = FrameOf(pictures.second),
                         out = FrameOf(pictures.out);
    test::HostManager manager;
    manager.sources["first"].picture = &firstFrame;
    manager.sources["second"].picture = &secondFrame;
    const test::VideoProc proc = test::MakeVideo(pair.effect, pair.settings, &manager);
    std::vector<double> withModule, plainly;
    TimeAgainstCopy(
        state, Pictures::kBytes,
        Timed(withModule,
              [&] { effect.Update(Pictures::Pixels(pictures.in), Pictures::Pixels(pictures.out), second); }),
        Timed(plainly, [&] {
            std::memcpy(pictures.out.get(), pictures.in.get(), Pictures::kBytes);
            test::Run(*proc, out, 50);
        }));
    state.counters[kToPlain] = Median(withModule) / Median(plainly);
}

} // namespace

void RegisterModuleBenchmarks() {
    static const test::Settings transition = {
        {"EffectPropSourceDur", "100"}, {"EffectPropVFPath1", "first"}, {"EffectPropVFPath2", "second"}};
    static const Pair kPairs[] = {
        {"aveffect_gray", "", "gray", {}},
        {"aveffect_edge_light", "0.6", "edgelight", {{"edgelight_level", "51"}}},
        {"aveffect_brightness_contrast",
         "0.6|0.55|0.2",
         "brightness_contrast",
         {{"brightness", "20"}, {"contrast", "10"}, {"saturation", "-60"}}},
        {"aveffect_spherize",
         "0.45|0.5|0.5|0.55",
         "spherize",
         {{"spherize_r", "486"}, {"spherize_x", "960"}, {"spherize_y", "540"}, {"spherize_scale", "1"}}},
        {"aveffect_crossfade", "0.5", "EffectNameMkFade", transition},
        {"aveffect_push", "0.5", "EffectNameMkLeftRightMove", transition},
    };
    for (const Pair& pair : kPairs)
        benchmark::RegisterBenchmark((std::string(pair.module) + ", frei0r").c_str(),
                                     [&pair](benchmark::State& state) { RunBoth(state, pair); })
            ->UseManualTime();
}

} // namespace bench
