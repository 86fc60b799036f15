// Every effect when the n-th block of memory can't be had, for every n: no crash, no leak, and either the
// picture that there should be or a word about it.
#include <gtest/gtest.h>

#include "aveffect/base_tools.h"
#include "tests/memory/allocation_count.h"
#include "tests/memory/busy_effects.h"

namespace {

using namespace AVBased;

struct Outcome {
    bool made = false, copied = false;
    bool failed = false; // for want of a block
    int code = 0;        // of the error recorded
};

// One life of a processor that gets so many blocks before one is refused.
Outcome Live(const EffectInfo& effect, test::Picture& picture, size_t blocks) {
    Outcome outcome;
    ImagePostion position{};
    IAVManager* const manager = test::Manager();
    ReleaseBaseException();
    test::FailAllocationAfter(blocks);
    if (IVideoProc* const proc = test::CreateVideo(effect.name, manager)) {
        outcome.made = true;
        test::SetBusy(*proc, effect);
        proc->ProcFrameInPlace(&position, 50, &picture.Frame());
        outcome.copied = proc->ProcFrame(&position, 50, &picture.Frame()) != nullptr;
        proc->Free();
    }
    outcome.failed = test::AllocationFailed();
    test::FailAllocationAfter(test::kNoLimit);
    outcome.code = GetBaseException()->GetExceptionCode();
    ReleaseBaseException();
    return outcome;
}

TEST(ShortMemory, AnyBlockMayBeRefused) {
    test::Picture first(BGRA); // loads what is loaded once, to raise an error among it
    for (const size_t blocks : {test::kNoLimit, size_t{0}, size_t{9}}) Live(kVideoEffects[0], first, blocks);
    for (const EffectInfo& effect : kVideoEffects) {
        // A converter that can't be made ends the program by contract.
        if (effect.kind == EffectKind::Transition || effect.kind == EffectKind::Stereo) continue;
        for (const unsigned format : {BGRA, YUV420P}) {
            test::Picture picture(format);
            for (size_t blocks = 0;; ++blocks) {
                picture.Fill();
                const size_t before = test::LiveBlocks();
                const Outcome outcome = Live(effect, picture, blocks);
                const size_t after = test::LiveBlocks();
                const std::string what = effect.name + (", format " + std::to_string(format)) + ", block " +
                                         std::to_string(blocks);
                ASSERT_EQ(after, before) << what;
                if (!outcome.failed) {
                    ASSERT_TRUE(outcome.made && outcome.copied) << what;
                    break;
                }
                ASSERT_NE(outcome.code, 0) << what;
            }
        }
    }
}

} // namespace
