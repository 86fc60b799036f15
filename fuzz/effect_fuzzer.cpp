// Any effect: a line with its name, then the bytes that decide its life.
#include <cstdio>
#include <cstdlib>

#include "tests/robustness/any_life.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace AVBased;
    test::secondsPerCall = 0; // the fuzzer's own alarm counts
    test::InputBytes input(data, size);
    const EffectInfo* const effect = FindEffect(input.TakeLine());
    if (!effect) return -1; // nothing to keep for the corpus
    const std::string finding = effect->kind == EffectKind::Audio
                                    ? test::Live<test::HostSound>(*effect, input, CreateAudioProc)
                                    : test::Live<test::HostFrame>(*effect, input, CreateVideoProc);
    if (finding.empty()) return 0;
    std::fprintf(stderr, "%s: %s\n", finding.c_str(), test::underWay.c_str());
    std::abort();
}
