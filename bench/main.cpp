// Prints one table: each benchmark's milliseconds and its ratio to copying the same bytes; for conversions
// also the mean and largest error of Y, U and V, or R, G and B; for modules what they take beside the plain
// effect.
#include <cstdio>

#include "bench/copy_time.h"

namespace {

class Table : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context&) override {
        std::printf("%-64s %9s %7s\n", "", "ms", "ratio");
        return true;
    }
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            std::printf("%-64s %9.3f %7.2f", run.run_name.function_name.c_str(), run.counters.at("ms").value,
                        run.counters.at("ratio").value);
            const bool judged = run.counters.count(bench::kMeanErrors[0]) != 0;
            for (int i = 0; judged && i < 3; ++i)
                std::printf("%s%.3f/%.2f", i ? "  " : "   error ",
                            run.counters.at(bench::kMeanErrors[i]).value,
                            run.counters.at(bench::kLargestErrors[i]).value);
            const auto plain = run.counters.find(bench::kToPlain);
            if (plain != run.counters.end()) std::printf("   %.3f of the plain effect", plain->second.value);
            std::printf("\n");
        }
        std::fflush(stdout);
    }
};

} // namespace

int main(int argc, char** argv) {
    bool json = false;
    for (int i = 1; i < argc; ++i) json = json || std::string_view(argv[i]) == "--benchmark_format=json";
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    bench::RegisterEffectBenchmarks();
    bench::RegisterConversionBenchmarks();
    bench::RegisterMaskBenchmarks();
    bench::RegisterModuleBenchmarks();
#ifdef AVEFFECT_GSTREAMER_PLUGIN
    bench::RegisterGStreamerBenchmarks();
#endif
#ifdef AVEFFECT_MLT_MODULES
    bench::RegisterMltBenchmarks();
#endif
    bench::RegisterSoundBenchmarks();
    bench::RegisterKernelBenchmarks();
    Table table;
    benchmark::RunSpecifiedBenchmarks(json ? nullptr : &table);
}
