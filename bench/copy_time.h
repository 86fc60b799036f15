#pragma once
/// The yardstick: what is timed is reported as a ratio to copying the same bytes.
#include <benchmark/benchmark.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

namespace bench {

/// Page-aligned memory whose pages are in place.
using Memory = std::unique_ptr<unsigned char, void (*)(void*)>;
Memory MakeMemory(size_t bytes);

/// That the call takes.
double Seconds(const std::function<void()>& body);

/// Of one value or more.
double Median(std::vector<double> values);

/// Seconds that memcpy takes for so many bytes between two warm buffers on this thread: the median of many.
double CopySeconds(size_t bytes);

/// Runs body once an iteration, timed by itself. Reports the median as "ms" and, as "ratio", what it is to
/// copying so many bytes, measured in the same call right before and after.
/// What prepare does before each is not timed.
void TimeAgainstCopy(benchmark::State& state, size_t bytes, const std::function<void()>& body,
                     const std::function<void()>& prepare = {});

/// Further counters of rows that tell how right they are: of each plane or colour, in sample values.
inline constexpr const char* kMeanErrors[] = {"mean error 1", "mean error 2", "mean error 3"};
inline constexpr const char* kLargestErrors[] = {"largest error 1", "largest error 2", "largest error 3"};

/// Of rows that are timed in turn with the plain effect: how long they take beside it.
inline constexpr char kToPlain[] = "to plain";

void RegisterConversionBenchmarks();
void RegisterKernelBenchmarks();
void RegisterMaskBenchmarks();
void RegisterEffectBenchmarks();
void RegisterModuleBenchmarks();
void RegisterGStreamerBenchmarks(); ///< where GStreamer's headers are
void RegisterMltBenchmarks();       ///< where MLT's are
void RegisterSoundBenchmarks();

} // namespace bench
