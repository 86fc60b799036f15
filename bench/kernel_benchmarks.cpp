// Each kernel at each level that this processor has.
#include "aveffect/base_media.h"
#include "bench/copy_time.h"
#include "bench/kernel_calls.h"

namespace bench {

namespace {

void RunKernel(benchmark::State& state, const KernelCall& call, size_t width, size_t height) {
    const size_t pitch = width * call.unitBytes;
    std::vector<Memory> memories;
    std::vector<Plane8> planes;
    for (size_t i = 0; i < call.planes; ++i) {
        memories.push_back(MakeMemory(pitch * height));
        planes.push_back({memories.back().get(), pitch, pitch, height});
    }
    TimeAgainstCopy(state, pitch * height * call.planes, [&] { call.run(planes); });
}

} // namespace

std::vector<KernelCall> KernelCalls(unsigned features) {
    std::vector<KernelCall> calls;
    AddSampleCalls(calls, features);
    AddPlaceCalls(calls, features);
    AddDrawingCalls(calls, features);
    return calls;
}

void RegisterKernelBenchmarks() {
    constexpr struct {
        const char* name;
        unsigned features;
    } kLevels[] = {{"SSE2", AVBased::kCpuSSE2},
                   {"AVX2", AVBased::kCpuAVX2},
                   {"AVX512", AVBased::kCpuAVX512},
                   {"AVX512VBMI", AVBased::kCpuAVX512 | AVBased::kCpuAVX512VBMI}};
    for (const auto& level : kLevels) {
        if ((AVBasedGetCPUFeatures() & level.features) != level.features) continue;
        for (const KernelCall& call : KernelCalls(level.features))
            benchmark::RegisterBenchmark(
                ("kernel " + call.name + ", " + level.name).c_str(),
                [call](benchmark::State& state) { RunKernel(state, call, 1920, 1080); })
                ->UseManualTime();
    }
}

} // namespace bench
