/// What the processor can do, and plain copying.
#include <atomic>
#include <cstring>

#include "aveffect/base_media.h"

namespace {

std::atomic<unsigned> g_mask{~0u};

#if defined(__x86_64__)
/// A feature counts only when the operating system saves its registers too; the compiler's test includes
/// that.
unsigned Detect() {
    __builtin_cpu_init();
    unsigned features = 0;
    const auto add = [&features](bool supported, AVBased::CPUFeature feature) {
        if (supported) features |= feature;
    };
    add(__builtin_cpu_supports("mmx"), AVBased::kCpuMMX);
    add(__builtin_cpu_supports("sse"), AVBased::kCpuSSE);
    add(__builtin_cpu_supports("sse2"), AVBased::kCpuSSE2);
    add(__builtin_cpu_supports("sse3"), AVBased::kCpuSSE3);
    add(__builtin_cpu_supports("ssse3"), AVBased::kCpuSSSE3);
    add(__builtin_cpu_supports("sse4.1"), AVBased::kCpuSSE41);
    add(__builtin_cpu_supports("sse4.2"), AVBased::kCpuSSE42);
    add(__builtin_cpu_supports("avx"), AVBased::kCpuAVX);
    add(__builtin_cpu_supports("avx2"), AVBased::kCpuAVX2);
    add(__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
            __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl"),
        AVBased::kCpuAVX512);
    add(__builtin_cpu_supports("avx512vbmi"), AVBased::kCpuAVX512VBMI);
    return features;
}
#else
/// Some effects choose between formulas by what every x86-64 has, and pictures are to be the same everywhere.
unsigned Detect() { return AVBased::kCpuMMX | AVBased::kCpuSSE | AVBased::kCpuSSE2; }
#endif

} // namespace

void* AVBasedMemCopy(void* dst, const void* src, size_t bytes) {
    return bytes ? std::memcpy(dst, src, bytes) : dst; // null is fine for no bytes
}

unsigned AVBasedGetCPUFeatures() {
    static const unsigned features = Detect();
    return features & g_mask.load(std::memory_order_relaxed);
}

void AVBasedSetCPUFeatureMask(unsigned mask) { g_mask.store(mask, std::memory_order_relaxed); }
