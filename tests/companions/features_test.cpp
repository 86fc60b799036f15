/// The processor's features.
#include <fstream>
#include <set>
#include <sstream>
#include <string>

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
    const std::set<std::string> flags = SystemFlags();
    if (flags.empty()) GTEST_SKIP() << "the system does not list the processor's features";
    const auto has = [&flags](const char* name) { return flags.count(name) != 0; };
    const std::pair<unsigned, bool> expected[] = {
        {kCpuMMX, has("mmx")},
        {kCpuSSE, has("sse")},
        {kCpuSSE2, has("sse2")},
        {kCpuSSE3, has("pni")},
        {kCpuSSSE3, has("ssse3")},
        {kCpuSSE41, has("sse4_1")},
        {kCpuSSE42, has("sse4_2")},
        {kCpuAVX, has("avx")},
        {kCpuAVX2, has("avx2")},
        {kCpuAVX512, has("avx512f") && has("avx512bw") && has("avx512dq") && has("avx512vl")},
        {kCpuAVX512VBMI, has("avx512vbmi")},
    };
    unsigned all = 0;
    for (const auto& [bit, present] : expected)
        if (present) all |= bit;
    EXPECT_EQ(AVBasedGetCPUFeatures(), all);

    AVBasedSetCPUFeatureMask(kCpuMMX | kCpuSSE2);
    EXPECT_EQ(AVBasedGetCPUFeatures(), all & 5u);
    AVBasedSetCPUFeatureMask(0);
    EXPECT_EQ(AVBasedGetCPUFeatures(), 0u);
    AVBasedSetCPUFeatureMask(~0u);
    EXPECT_EQ(AVBasedGetCPUFeatures(), all);
}

TEST(MemCopy, CopiesAndReturnsTheTarget) {
    const std::string from = "some bytes";
    std::string to(from.size(), '.');
    EXPECT_EQ(AVBasedMemCopy(to.data(), from.data(), 4), to.data());
    EXPECT_EQ(to, "some......");
    EXPECT_EQ(AVBasedMemCopy(nullptr, nullptr, 0), nullptr);
}

} // namespace
