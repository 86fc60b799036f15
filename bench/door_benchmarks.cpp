#include "bench/door_benchmarks.h"

#include "aveffect/memory_frame.h"
#include "aveffect/pixel_format.h"

namespace bench {

constexpr std::array<DoorKind, 2> kDoorKinds = {
    {{"packed", AVBased::BGRA, size_t{kDoorWidth} * kDoorHeight * 4},
     {"4:2:0", AVBased::YUV420P, size_t{kDoorWidth} * kDoorHeight * 3 / 2}}};

namespace {

AVBased::MemoryFrame FrameOf(const DoorKind& kind, unsigned char* data) {
    if (kind.format == AVBased::BGRA)
        return {kind.format, kDoorWidth, kDoorHeight, {{data, kDoorWidth * 4, kDoorWidth * 4, kDoorHeight}}};
    unsigned char* const chroma = data + size_t{kDoorWidth} * kDoorHeight;
    constexpr unsigned kHalfWidth = kDoorWidth / 2, kHalfHeight = kDoorHeight / 2;
    return {kind.format,
            kDoorWidth,
            kDoorHeight,
            {{data, kDoorWidth, kDoorWidth, kDoorHeight},
             {chroma, kHalfWidth, kHalfWidth, kHalfHeight},
             {chroma + size_t{kHalfWidth} * kHalfHeight, kHalfWidth, kHalfWidth, kHalfHeight}}};
}

// In turn, so that what else the machine does befalls both.
void RunBoth(benchmark::State& state, const DoorPair& pair, const DoorKind& kind, MakePush make) {
    const Memory pushed = MakeMemory(kind.bytes), memory = MakeMemory(kind.bytes);
    const Push push = make(pair, kind, pushed.get());
    AVBased::MemoryFrame frame = FrameOf(kind, memory.get());
    const test::VideoProc proc = test::MakeVideo(pair.effect, pair.settings);
    push();
    test::Run(*proc, frame, 50);
    std::vector<double> withDoor, plainly;
    TimeAgainstCopy(
        state, kind.bytes, [&] { withDoor.push_back(Seconds(push)); },
        [&] { plainly.push_back(Seconds([&] { test::Run(*proc, frame, 50); })); });
    state.counters[kToPlain] = Median(withDoor) / Median(plainly);
}

} // namespace

void RegisterDoorBenchmarks(const char* program, MakePush make) {
    static const DoorPair kPairs[] = {
        {"gray", "gray", {}},
        {"edgelight", "edge-light", {{"edgelight_level", "51"}}},
        {"brightness_contrast",
         "brightness-contrast",
         {{"brightness", "20"}, {"contrast", "10"}, {"saturation", "-60"}}},
        {"spherize",
         "spherize",
         {{"spherize_r", "486"}, {"spherize_x", "960"}, {"spherize_y", "540"}, {"spherize_scale", "1"}}},
    };
    for (const DoorPair& pair : kPairs)
        for (const DoorKind& kind : kDoorKinds)
            benchmark::RegisterBenchmark(
                (std::string(pair.shortName) + ", " + kind.name + ", " + program).c_str(),
                [&pair, &kind, make](benchmark::State& state) { RunBoth(state, pair, kind, make); })
                ->UseManualTime();
}

} // namespace bench
