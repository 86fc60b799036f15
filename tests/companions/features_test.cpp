/// The processor's features.
#include <algorithm>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "aveffect/base_media.h"

namespace {

using namespace AVBased;

/// What the system says about the processor.
std::set<std::string> SystemFlags() {
    std::ifstream info("/proc/cpuinfo");
    std::set<std::string> flags;
    for (std::string line; std::getline(info, line);) {
        if (line.rfind("flags", 0) != 0) continue;
        std::istringstream words(line.substr(line.find(':') + 1));
        for (std::string word; words >> word;) flags.insert(word);
        break;
    }
    return flags;
}

TEST(CPUFeatures, AreTheSystemsLessTheMask) {
    std::set<std::string> flags = SystemFlags();
#ifndef __x86_64__
    flags = {"mmx", "sse", "sse2"}; // formulas are chosen by these, and pictures are the same everywhere
#endif
    if (flags.empty()) GTEST_SKIP() << "the system does not list the processor's features";
    // The bits in order; the tenth wants four of the system's flags.
    const std::vector<std::string> wanted[] = {
        {"mmx"},       {"sse"},    {"sse2"}, {"pni"},  {"ssse3"},
        {"sse4_1"},    {"sse4_2"}, {"avx"},  {"avx2"}, {"avx512f", "avx512bw", "avx512dq", "avx512vl"},
        {"avx512vbmi"}};
    unsigned all = 0, bit = 1;
    for (const auto& names : wanted) {
        if (std::ranges::all_of(names, [&](const std::string& name) { return flags.count(name) != 0; }))
            all |= bit;
        bit *= 2;
    }
    EXPECT_EQ(AVBasedGetCPUFeatures(), all);

    AVBasedSetCPUFeatureMask(kCpuMMX | kCpuSSE2);
    EXPECT_EQ(AVBasedGetCPUFeatures(), all & 5u);
    AVBasedSetCPUFeatureMask(0);
    EXPECT_EQ(AVBasedGetCPUFeatures(), 0u);
    AVBasedSetCPUFeatureMask(~0u);
    EXPECT_EQ(AVBasedGetCPUFeatures(), all);
}

} // namespace
