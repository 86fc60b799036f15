#include "bench/copy_time.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>

namespace bench {

double Seconds(const std::function<void()>& body) {
    using Clock = std::chrono::steady_clock;
    const Clock::time_point start = Clock::now();
    body();
    return std::chrono::duration<double>(Clock::now() - start).count();
}

double Median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

Memory MakeMemory(size_t bytes) {
    constexpr size_t kPage = 4096;
    Memory memory(static_cast<unsigned char*>(std::aligned_alloc(kPage, (bytes + kPage) / kPage * kPage)),
                  std::free);
    std::mt19937 random(1);
    for (size_t i = 0; i < bytes; ++i) memory.get()[i] = static_cast<unsigned char>(random());
    return memory;
}

double CopySeconds(size_t bytes) {
    const Memory from = MakeMemory(bytes), to = MakeMemory(bytes);
    const auto copy = [&] {
        std::memcpy(to.get(), from.get(), bytes);
        benchmark::ClobberMemory();
    };
    for (int i = 0; i < 5; ++i) copy();
    std::vector<double> times(31);
    for (double& time : times) time = Seconds(copy);
    return Median(times);
}

void TimeAgainstCopy(benchmark::State& state, size_t bytes, const std::function<void()>& body,
                     const std::function<void()>& prepare) {
    const double before = CopySeconds(bytes);
    body(); // scratch and caches are those of later frames
    std::vector<double> times;
    for ([[maybe_unused]] auto _ : state) {
        if (prepare) prepare();
        times.push_back(Seconds(body));
        state.SetIterationTime(times.back());
    }
    const double copy = std::min(before, CopySeconds(bytes));
    state.counters["ms"] = Median(times) * 1e3;
    state.counters["ratio"] = Median(times) / copy;
}

} // namespace bench
