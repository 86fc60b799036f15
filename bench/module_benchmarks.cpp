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

constexpr unsigned kWidth = 1920, kHeight = 1080;
constexpr size_t kBytes = size_t{kWidth} * kHeight * 4;

struct Pictures {
    Memory in = Filled(1), second = Filled(7), out = Filled(0);

    static Memory Filled(unsigned char step) {
        Memory memory = MakeMemory(kBytes);
        for (size_t i = 0; i < kBytes; ++i) memory.get()[i] = static_cast<unsigned char>(i * step ^ i >> 11);
        return memory;
    }
    static uint32_t* Pixels(const Memory& memory) { return reinterpret_cast<uint32_t*>(memory.get()); }
};

AVBased::MemoryFrame FrameOf(const Memory& memory) {
    return {AVBased::BGRA, kWidth, kHeight, {{memory.get(), kWidth * 4, kWidth * 4, kHeight}}};
}

void RunModule(benchmark::State& state, const char* name, const char* values) {
    const test::Module module(name);
    const test::Effect effect(module, kWidth, kHeight);
    effect.Set(values);
    const Pictures pictures;
    const uint32_t* const second = module.Mixes() ? Pictures::Pixels(pictures.second) : nullptr;
    TimeAgainstCopy(state, kBytes, [&] {
        effect.Update(Pictures::Pixels(pictures.in), Pictures::Pixels(pictures.out), second);
    });
}

void RunPlainly(benchmark::State& state, const char* name, test::Settings settings) {
    const test::VideoProc proc = test::MakeVideo(name, settings);
    const Pictures pictures;
    AVBased::MemoryFrame frame = FrameOf(pictures.out);
    TimeAgainstCopy(state, kBytes, [&] {
        std::memcpy(pictures.out.get(), pictures.in.get(), kBytes);
        test::Run(*proc, frame);
    });
}

// With its pictures loaded: that a module's transition has other ones for each picture is a part of its cost.
void RunPlainTransition(benchmark::State& state, const char* name) {
    const Pictures pictures;
    AVBased::MemoryFrame first = FrameOf(pictures.in), second = FrameOf(pictures.second),
                         out = FrameOf(pictures.out);
    test::HostManager manager;
    manager.sources["first"].picture = &first;
    manager.sources["second"].picture = &second;
    const test::VideoProc proc = test::MakeVideo(
        name,
        {{"EffectPropSourceDur", "100"}, {"EffectPropVFPath1", "first"}, {"EffectPropVFPath2", "second"}},
        &manager);
    TimeAgainstCopy(state, kBytes, [&] {
        std::memcpy(pictures.out.get(), pictures.in.get(), kBytes);
        test::Run(*proc, out, 50);
    });
}

struct Pair {
    const char *module, *values, *effect;
    test::Settings settings;
};

} // namespace

void RegisterModuleBenchmarks() {
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
        {"aveffect_crossfade", "0.5", "EffectNameMkFade", {}},
        {"aveffect_push", "0.5", "EffectNameMkLeftRightMove", {}},
    };
    for (const Pair& pair : kPairs) {
        const std::string name(pair.module);
        benchmark::RegisterBenchmark((name + ", frei0r").c_str(), [&pair](benchmark::State& state) {
            RunModule(state, pair.module, pair.values);
        })->UseManualTime();
        benchmark::RegisterBenchmark((name + ", copied and in place").c_str(), [&pair](
                                                                                   benchmark::State& state) {
            if (std::string_view(pair.effect).starts_with("EffectNameMk"))
                RunPlainTransition(state, pair.effect);
            else
                RunPlainly(state, pair.effect, pair.settings);
        })->UseManualTime();
    }
}

} // namespace bench
