// Every effect of the catalogue, after its first frame.
#include <gtest/gtest.h>

#include "avbase/avbase_srcutils/avbase_crawvideoframe.h"
#include "aveffect/base_media.h"
#include "aveffect/catalogue.h"
#include "tests/memory/allocation_count.h"
#include "tests/memory/busy_effects.h"
#include "tests/support/host_sound.h"

namespace {

using namespace AVBased;
using namespace test;

TEST(SteadyState, NothingIsAllocatedAfterTheFirstFrame) {
    for (const EffectInfo& effect : kVideoEffects)
        for (const unsigned format : {BGRA, YUV420P, YUVA444P}) {
            if (format == YUVA444P && ReportsOtherFormats(effect.name)) continue;
            if (format != BGRA && effect.kind == EffectKind::Transition) continue; // see below
            const VideoProc proc = MakeBusy(effect);
            Picture picture(format);
            ImagePostion position{};
            const auto frame = [&] {
                proc->ProcFrameInPlace(&position, 50, &picture.Frame());
                EXPECT_NE(proc->ProcFrame(&position, 50, &picture.Frame()), nullptr);
            };
            frame();
            const size_t before = Allocations();
            for (int i = 0; i < 3; ++i) frame();
            EXPECT_EQ(Allocations(), before) << effect.name << ", format " << format;
        }
}

TEST(SteadyState, TransitionsInOtherFormatsAllocateConversionsAlone) {
    for (const unsigned format : {YUV420P, YUVA444P}) {
        Picture picture(format);
        const auto allocationsOf = [](const auto& frame) {
            frame();
            const size_t before = Allocations();
            for (int i = 0; i < 3; ++i) frame();
            return Allocations() - before;
        };
        IImageConverter* there = CreateImageConverterEx(BGRA, 0, 0, 4);
        IImageConverter* back = CreateImageConverterEx(format, 0, 0, 4);
        IRawVideoFrame* working = there->Convert(&picture.Frame());
        const size_t conversions = allocationsOf([&] {
            // Frames without alpha are drawn anew; what was there does not count.
            if (format == YUVA444P) there->Convert(&picture.Frame())->Free();
            back->Convert(working)->Free();
        });
        working->Free();
        there->Release();
        back->Release();
        for (const EffectInfo& effect : kVideoEffects) {
            if (effect.kind != EffectKind::Transition) continue;
            const VideoProc proc = MakeBusy(effect);
            EXPECT_EQ(allocationsOf([&] { test::Run(*proc, picture.Frame(), 50); }), conversions)
                << effect.name;
        }
    }
}

TEST(SteadyState, SoundIsChangedWithoutAllocating) {
    for (const char* name : {"audio_volume", "audio_fader"}) {
        const AudioProc proc = MakeAudio(name);
        SetBusy(*proc, *FindEffect(name));
        HostSound sound({.samples = 1000}, 10);
        const size_t before = Allocations();
        for (int i = 0; i < 4; ++i) proc->ProcFrameInPlace(&sound); // the ramp ends and starts again
        EXPECT_EQ(Allocations(), before) << name;
    }
}

// Views, converters and working frames that are made anew for every format and size.
TEST(SteadyState, StereoDoesNotGrow) {
    for (const char* mode : {"0", "1", "2", "3", "4"}) {
        const VideoProc proc = MakeVideo("EffectName3DRenderEffect", {{"render_3d_mode", mode}});
        Picture bgra(BGRA), yuv(YUV420P), second(YUV420P), other(YUV422P);
        bgra.Frame().CropRightAndBottom(16, 0);
        other.Frame().CopySubsetFrame(&second.Frame()); // converted
        const auto frames = [&](int count) {
            for (int i = 0; i < count; ++i)
                for (Picture* picture : {&bgra, &yuv, &other}) test::Run(*proc, picture->Frame());
        };
        frames(4);
        const size_t before = LiveBlocks();
        frames(1000 / 3);
        EXPECT_LE(LiveBlocks(), before) << mode;
    }
}

} // namespace
