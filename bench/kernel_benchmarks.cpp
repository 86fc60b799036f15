// Each kernel at each level that this processor has, over the list that the tests try.
#include "aveffect/base_media.h"
#include "bench/copy_time.h"
#include "tests/kernels/harness.h"

namespace bench {

namespace {

void RunKernel(benchmark::State& state, const test::KernelCase& kernelCase, size_t width, size_t height) {
    const size_t pitch = width * kernelCase.unitBytes;
    std::vector<Memory> memories;
    std::vector<test::Plane8> planes;
    for (size_t i = 0; i < kernelCase.planes; ++i) {
        memories.push_back(MakeMemory(pitch * height));
        planes.push_back({memories.back().get(), pitch, pitch, height});
    }
    TimeAgainstCopy(state, pitch * height * kernelCase.planes, [&] { kernelCase.kernel(planes); });
}

} // namespace

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
        for (const test::KernelCase& kernelCase : test::KernelCases(level.features))
            benchmark::RegisterBenchmark(
                ("kernel " + kernelCase.name + ", " + level.name).c_str(),
                [kernelCase](benchmark::State& state) { RunKernel(state, kernelCase, 1920, 1080); })
                ->UseManualTime();
    }
}

} // namespace bench
