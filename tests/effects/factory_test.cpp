#include <gtest/gtest.h>

#include <cstring>
#include <set>

#include "aveffect/catalogue.h"
#include "tests/support/effect_cases.h"
#include "tests/support/host_sound.h"

namespace {

using namespace AVBased;
using namespace test;

TEST(Factory, RefusesWhatIsNotExactlyAName) {
    for (const char* name : {"Gray", "gray ", "", "gra", "EffectNameMkBaseTransition"}) {
        GetBaseException()->Clear();
        EXPECT_EQ(CreateVideo(name), nullptr) << name;
        EXPECT_EQ(Code(), 10021005);
        EXPECT_EQ(Message(), "Effect with the name does not exist");
    }
    EXPECT_EQ(CreateAudio("gray"), nullptr);
    EXPECT_EQ(Code(), 10021005);
    EXPECT_EQ(CreateVideo("audio_volume"), nullptr);
    EXPECT_EQ(CreateVideo(nullptr), nullptr);
    EXPECT_EQ(Code(), 10021003);
    EXPECT_EQ(Message(), "Bad pointer");
    EXPECT_EQ(CreateAudio(nullptr), nullptr);
    const VideoProc proc = MakeVideo("gray");
    EXPECT_EQ(Code(), 10021003) << "a success leaves the older error";
}

void ExpectDescribed(IAVProc& proc, const EffectInfo& effect) {
    // The direct fades share the names of the alpha fades; only the factory tells them apart.
    std::string name = effect.name;
    if (name.starts_with("direct")) name.erase(0, std::strlen("direct"));
    EXPECT_EQ(proc.GetName(), name);
    EXPECT_EQ(proc.GetSubType(), 2u);
    std::set<std::string> expected = {"duration"};
    for (const PropertyInfo& property : effect.properties) {
        expected.insert(property.name);
        int type = -1;
        EXPECT_STREQ(proc.GetProperty(property.name, &type), property.defaultText);
        EXPECT_EQ(type, property.type);
    }
    IStrings* names = proc.GetPropertyNames();
    std::set<std::string> actual;
    for (int i = 0; i < names->GetCount(); ++i) actual.insert(names->GetString(i)->GetStr());
    names->Free();
    EXPECT_EQ(actual, expected) << effect.name;
}

TEST(Factory, MakesEveryCataloguedEffectWithItsProperties) {
    for (const EffectInfo& effect : kVideoEffects) {
        const VideoProc proc = MakeVideo(effect.name);
        EXPECT_EQ(proc->GetType(), 1u);
        EXPECT_EQ(proc->GetInterface("IVideoProc"), static_cast<void*>(proc.get()));
        ExpectDescribed(*proc, effect);
    }
    for (const EffectInfo& effect : kAudioEffects) {
        const AudioProc proc = MakeAudio(effect.name);
        EXPECT_EQ(proc->GetType(), 2u);
        EXPECT_EQ(proc->GetInterface("IAudioProc"), static_cast<void*>(proc.get()));
        ExpectDescribed(*proc, effect);
    }
}

// At the span's begin, inside it and past its end, in a picture larger than the places where effects begin.
TEST(Factory, TheCatalogueSaysWhichEffectsNeedSettings) {
    for (const EffectInfo& effect : kVideoEffects) {
        if (effect.kind == EffectKind::Transition) continue; // the host's pictures are one
        bool changes = false;
        for (const int time : {0, 1, 400, 1500}) {
            const VideoProc proc = MakeVideo(effect.name);
            proc->SetProperty("duration", "1000");
            auto frame = MakeFrame({BGRA, 640, 480}, 7);
            std::memset(frame->planes[0].Data(), 0, 2); // black, and some of it opaque
            std::memset(frame->planes[0].Data() + 2, 0, 1);
            const auto before = frame->planes[0].bytes;
            test::Run(*proc, *frame, time);
            changes = changes || frame->planes[0].bytes != before;
        }
        EXPECT_EQ((effect.traits & kNeedsSettings) == 0, changes) << effect.name;
    }
    for (const EffectInfo& effect : kAudioEffects) {
        const AudioProc proc = MakeAudio(effect.name);
        HostSound sound({.samples = 500});
        sound.Randomise(1);
        const auto before = sound.buffers;
        proc->ProcFrameInPlace(&sound);
        EXPECT_EQ((effect.traits & kNeedsSettings) == 0, sound.buffers != before) << effect.name;
    }
}

TEST(Factory, ObjectsAreIndependent) {
    const VideoProc a = MakeVideo("simple_gauss_blur"), b = MakeVideo("simple_gauss_blur");
    EXPECT_NE(a.get(), b.get());
    a->SetProperty("blur_count", "3");
    EXPECT_STREQ(b->GetProperty("blur_count", nullptr), "1");
}

// A host calls by slot: the same processor through raw vtable access only.
TEST(Factory, ProcessorsAnswerBySlot) {
    VideoProc owner = MakeVideo("gray");
    void* proc = owner.release();
    void** table = *static_cast<void***>(proc);
    const auto setProperty = reinterpret_cast<bool (*)(void*, const char*, const char*)>(table[5]);
    const auto getDuration = reinterpret_cast<unsigned (*)(void*)>(table[9]);
    const auto procInPlace = reinterpret_cast<void (*)(void*, void*, int, void*)>(table[11]);
    const auto free = reinterpret_cast<void (*)(void*)>(table[1]);
    EXPECT_TRUE(setProperty(proc, "duration", "321"));
    EXPECT_EQ(getDuration(proc), 321u);
    auto frame = MakeFrame({BGRA, 1, 1});
    std::memcpy(frame->planes[0].Data(), "\x01\x02\x06\x09", 4);
    ImagePostion position{};
    procInPlace(proc, &position, 0, static_cast<IRawVideoFrame*>(frame.get()));
    EXPECT_EQ(std::memcmp(frame->planes[0].Data(), "\x03\x03\x03\x09", 4), 0);
    free(proc);
}

TEST(Effects, LeaveOtherFormatsAlone) {
    for (const EffectInfo& effect : kVideoEffects)
        for (const unsigned format : {unsigned{RGB24}, unsigned{YUV444P}}) {
            if (effect.kind == EffectKind::Transition) continue; // they serve whatever can be converted
            GetBaseException()->Clear();
            const VideoProc proc = MakeVideo(effect.name);
            auto frame = MakeFrame({format, 20, 10, 3}, 4);
            const HostFrame original = *frame;
            test::Run(*proc, *frame);
            ASSERT_NO_FATAL_FAILURE(ExpectSame(*frame, original, effect.name));
            EXPECT_EQ(Code(), ReportsOtherFormats(effect.name) ? 10021008 : 0);
        }
}

} // namespace
