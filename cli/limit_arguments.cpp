#include "cli/limit_arguments.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <memory>
#include <sys/resource.h>

#include <CLI/CLI.hpp>

#include "cli/interruption.h"
#include "cli/machine_memory.h"
#include "cli/option_values.h"
#include "host/media/limits.h"

namespace aveffect {

namespace {

constexpr uint64_t kPage = 4096; // as /proc counts

/// Bytes of data that the process has by now: under sanitizers it is born with terabytes.
uint64_t DataSize() {
    struct Close {
        void operator()(FILE* file) const noexcept { std::fclose(file); }
    };
    const std::unique_ptr<FILE, Close> file(std::fopen("/proc/self/statm", "re"));
    uint64_t data = 0; // the sixth number
    if (!file || std::fscanf(file.get(), "%*u %*u %*u %*u %*u %" SCNu64, &data) != 1) return 0;
    return data * kPage;
}

// The kernel refuses what would be more, wherever it is asked for, and everybody who asks has an answer to
// that.
void LimitMemory(uint64_t bytes) {
    rlimit limit = {};
    if (getrlimit(RLIMIT_DATA, &limit) != 0) return;
    limit.rlim_cur = std::min<rlim_t>(limit.rlim_cur, DataSize() + bytes); // unlimited is the largest
    setrlimit(RLIMIT_DATA, &limit);
}

} // namespace

void AddLimitOptions(CLI::App& app, LimitArguments& limits) {
    app.add_option("--max-pixels", limits.pixels,
                   "Refuse pictures of more pixels than this; 268435456 if not given")
        ->type_name("N");
    app.add_option("--max-memory", limits.memory,
                   "Bytes that the program may take in all, such as 4G; half of the machine's if not given")
        ->type_name("BYTES");
    app.add_option("--timeout", limits.timeout, "Give up when the run has taken this long: seconds, mm:ss")
        ->type_name("TIME");
    app.add_flag("--no-sandbox", limits.noSandbox,
                 "Let the media libraries reach all that the user may: every file, the network, programs");
}

void ApplyLimits(const LimitArguments& limits) {
    if (limits.pixels) g_mostPixels = WholeOption("--max-pixels", *limits.pixels, 1);
    LimitMemory(limits.memory ? BytesOption("--max-memory", *limits.memory) : MachineMemory() / 2);
    if (!limits.timeout) return;
    const int64_t milliseconds = TimeOption("--timeout", *limits.timeout);
    if (milliseconds == 0) Refuse("--timeout", "a time above 0", *limits.timeout);
    InterruptAfter(milliseconds);
}

} // namespace aveffect
