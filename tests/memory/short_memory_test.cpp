// Every effect when the n-th block of memory can't be had, for every n: no crash, no leak, and either the
// frame that there should be or a word about it.
#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>

#include "BaseTools/StringImpl.h"
#include "BaseTools/sysutils.h"
#include "aveffect/base_media.h"
#include "aveffect/base_tools.h"
#include "tests/memory/allocation_count.h"
#include "tests/memory/busy_effects.h"
#include "tests/support/host_sound.h"

// A converter that can't be made ends the program by contract where transitions ask for it: there is memory
// for that.
AVBased::IImageConverter* CreateImageConverterEx(unsigned format, unsigned width, unsigned height,
                                                 unsigned quality) {
    const test::WithoutLimit enough;
    static void* const library = dlopen(AVEFFECT_BIN_DIR "/libAVBaseMedia.so", RTLD_NOW | RTLD_LOCAL);
    return reinterpret_cast<decltype(&CreateImageConverterEx)>(dlsym(library, "CreateImageConverterEx"))(
        format, width, height, quality);
}

namespace {

using namespace AVBased;

using test::Picture;
using Bytes = test::GuardedBytes;

struct Outcome {
    Bytes made;          // none when something did not come about
    bool failed = false; // for want of a block
    int code = 0;        // of the error recorded
};

// One life of a processor that gets so many blocks before one is refused.
template <class Live>
Outcome With(size_t blocks, const Live& live) {
    Outcome outcome;
    ReleaseBaseException();
    test::FailAllocationAfter(blocks);
    outcome.made = live();
    outcome.failed = test::AllocationFailed();
    test::FailAllocationAfter(test::kNoLimit);
    outcome.code = GetBaseException()->GetExceptionCode();
    ReleaseBaseException();
    return outcome;
}

// A life that is repeated with one block more each time, until none is missing. What is kept for later users,
// as pictures' blocks are, is kept once.
template <class Live>
void ExpectBearsShortMemory(const std::string& what, const Live& live) {
    const Bytes wanted =
        With(test::kNoLimit, live).made; // loads what is loaded once, to raise errors among it
    for (const size_t blocks : {size_t{0}, size_t{9}}) With(blocks, live);
    ASSERT_FALSE(wanted.empty()) << what;
    for (size_t blocks = 0;; ++blocks) {
        const std::string which = what + ", block " + std::to_string(blocks);
        Outcome outcome;
        size_t grown = 0;
        do {
            const size_t before = test::LiveBlocks();
            outcome = With(blocks, live);
            if (test::LiveBlocks() <= before) break;
        } while (++grown < 3);
        ASSERT_LT(grown, 3u) << "memory is left behind: " << which;
        if (!outcome.failed) break;
        ASSERT_TRUE(outcome.code != 0 || outcome.made == wanted) << which;
        ASSERT_NE(outcome.code, kStandardException) << "short memory has a code of its own: " << which;
    }
}

// The code that is left by what can't have its first block.
template <class Body>
int CodeWithoutMemory(const Body& body) {
    return With(0,
                [&] {
                    body();
                    return Bytes();
                })
        .code;
}

TEST(ShortMemory, TextsListsAndFramesKeepWhatTheyHave) {
    const std::string text(1000, 'x');
    const auto bytes = static_cast<unsigned>(text.size());
    CStringImpl string("old");
    CStringsImpl list;
    Picture picture(BGRA), second(BGRA);
    CRawVideoFrame& frame = picture.Frame();
    char border[] = "old";
    frame.SetBorderData(border, 3);
    const std::pair<const char*, std::function<void()>> operations[] = {
        {"SetStr", [&] { string.SetStr(text.c_str()); }},
        {"SetData", [&] { string.SetData(text.data(), bytes); }},
        {"Concat", [&] { string.Concat(text.c_str()); }},
        {"Append", [&] { string.Append(text.data(), bytes); }},
        {"AddString", [&] { EXPECT_EQ(list.AddString(text.c_str()), -1); }},
        {"Add", [&] { EXPECT_EQ(list.Add(&string), -1); }},
        {"SetBorderData", [&] { frame.SetBorderData(const_cast<char*>(text.data()), 1000); }},
        {"Clone", [&] { EXPECT_EQ(frame.CRawVideoFrame::Clone(), nullptr); }}};
    for (const auto& [name, operation] : operations)
        EXPECT_EQ(CodeWithoutMemory(operation), 10021007) << name;
    EXPECT_STREQ(string.GetStr(), "old");
    EXPECT_EQ(list.GetCount(), 0);
    void* kept = nullptr;
    int size = 0;
    frame.GetBorderData(&kept, &size);
    EXPECT_EQ(std::string(static_cast<char*>(kept), static_cast<size_t>(size)), "old");
}

TEST(ShortMemory, AProcessThatCouldNotStartStartsLater) {
    for (size_t blocks = 0;; ++blocks) {
        BaseTool::CBaseToolProcess process("true");
        bool started = false;
        const bool failed = With(blocks, [&] {
                                started = process.Run(false);
                                return Bytes();
                            }).failed;
        if (failed) {
            EXPECT_FALSE(started);
            EXPECT_EQ(process.GetProcesspId(), 0) << "nothing is half started";
            EXPECT_TRUE(process.Run(false));
        }
        EXPECT_EQ(process.Wait(BaseTool::kWaitForever), 1);
        if (!failed) break;
    }
}

// Both keep what they make on their first frame, and rotate's first frame looks unlike the later ones.
TEST(ShortMemory, WhatTheFirstFrameCouldNotMakeTheNextMakes) {
    Picture picture(YUV420P);
    ImagePostion position{};
    const auto draw = [&](IVideoProc& proc) {
        picture.Fill();
        std::srand(5);
        proc.ProcFrameInPlace(&position, 0, &picture.Frame());
        const test::WithoutLimit enough;
        return picture.Pixels();
    };
    for (const char* name : {effectNameAtomize, effectNameRotate}) {
        const EffectInfo& effect = *FindEffect(name);
        const Bytes wanted = draw(*test::MakeBusy(effect));
        for (size_t blocks = 0;; ++blocks) {
            const test::VideoProc proc = test::MakeBusy(effect);
            if (!With(blocks, [&] { return draw(*proc); }).failed) break;
            EXPECT_EQ(draw(*proc), wanted) << name << ", block " << blocks;
        }
    }
}

TEST(ShortMemory, AnyBlockMayBeRefused) {
    IAVManager* const manager = test::Manager();
    for (const EffectInfo& effect : kVideoEffects)
        for (const unsigned format : {BGRA, YUV420P})
            for (const char* mode : {"3", "1"}) {
                if (effect.kind != EffectKind::Stereo && *mode == '1') continue;
                test::Picture picture(format);
                ASSERT_NO_FATAL_FAILURE(
                    ExpectBearsShortMemory(effect.name + (", format " + std::to_string(format)), [&] {
                        picture.Fill();
                        const test::VideoProc proc(test::CreateVideo(effect.name, manager));
                        if (!proc) return Bytes();
                        test::SetBusy(*proc, effect);
                        proc->SetProperty("render_3d_mode", mode); // if it has one
                        for (const PropertyInfo& property : effect.properties)
                            EXPECT_TRUE(proc->GetProperty(property.name, nullptr));
                        ImagePostion position{};
                        proc->ProcFrameInPlace(&position, 50, &picture.Frame());
                        const bool copied = proc->ProcFrame(&position, 50, &picture.Frame());
                        const test::WithoutLimit enough;
                        return copied ? picture.Pixels() : Bytes();
                    }));
            }
    for (const EffectInfo& effect : kAudioEffects) {
        // At another rate than the file's: libswresample doesn't notice when a block is missing for
        // converting formats alone.
        test::HostSound sound({.rate = 32000, .samples = 400});
        ASSERT_NO_FATAL_FAILURE(ExpectBearsShortMemory(effect.name, [&] {
            sound.Randomise(1);
            const test::AudioProc proc(test::CreateAudio(effect.name, test::Sources()));
            if (!proc) return Bytes();
            test::SetBusy(*proc, effect);
            proc->ProcFrameInPlace(&sound);
            IRawAudioFrame* const copy = proc->ProcFrame(&sound);
            if (copy) copy->Release();
            const test::WithoutLimit enough;
            return copy ? Bytes(sound.buffers[0].begin(), sound.buffers[0].end()) : Bytes();
        }));
    }
}

} // namespace
