#include <gtest/gtest.h>

#include <cstring>
#include <set>

#include "aveffect/catalogue.h"
#include "tests/support/effect_cases.h"

namespace {

using namespace AVBased;

int Code() { return GetBaseException()->GetExceptionCode(); }
std::string Message() { return GetBaseException()->GetExceptionMsg(); }

TEST(Factory, RefusesWhatIsNotExactlyAName) {
    for (const char* name : {"Gray", "gray ", "", "gra", "EffectNameMkBaseTransition"}) {
        GetBaseException()->Clear();
        EXPECT_EQ(test::CreateVideo(name), nullptr) << name;
        EXPECT_EQ(Code(), 10021005);
        EXPECT_EQ(Message(), "Effect with the name does not exist");
    }
    EXPECT_EQ(test::CreateAudio("gray"), nullptr);
    EXPECT_EQ(Code(), 10021005);
    EXPECT_EQ(test::CreateVideo("audio_volume"), nullptr);
    EXPECT_EQ(test::CreateVideo(nullptr), nullptr);
    EXPECT_EQ(Code(), 10021003);
    EXPECT_EQ(Message(), "Bad pointer");
    EXPECT_EQ(test::CreateAudio(nullptr), nullptr);
    const test::VideoProc proc = test::MakeVideo("gray");
    EXPECT_EQ(Code(), 10021003) << "a success leaves the older error";
}

TEST(Factory, MakesEveryCataloguedEffectWithItsProperties) {
    for (const EffectInfo& effect : kVideoEffects) {
        const test::VideoProc proc = test::MakeVideo(effect.name);
        // The direct fades share the names of the alpha fades; only the factory tells them apart.
        std::string name = effect.name;
        if (name.starts_with("direct")) name.erase(0, std::strlen("direct"));
        EXPECT_EQ(proc->GetName(), name);
        EXPECT_EQ(proc->GetType(), 1u);
        EXPECT_EQ(proc->GetSubType(), 2u);
        EXPECT_EQ(proc->GetInterface("IVideoProc"), static_cast<void*>(proc.get()));
        std::set<std::string> expected = {"duration"};
        for (const PropertyInfo& property : effect.properties) {
            expected.insert(property.name);
            int type = -1;
            EXPECT_STREQ(proc->GetProperty(property.name, &type), property.defaultText);
            EXPECT_EQ(type, property.type);
        }
        IStrings* names = proc->GetPropertyNames();
        std::set<std::string> actual;
        for (int i = 0; i < names->GetCount(); ++i) actual.insert(names->GetString(i)->GetStr());
        names->Free();
        EXPECT_EQ(actual, expected) << effect.name;
    }
}

TEST(Factory, TheCatalogueIsWhatTheContractLists) {
    struct Property {
        const char *effect, *name, *text;
        int type;
    };
    for (const Property& p : {Property{"simple_gauss_blur", "blur_count", "1", 3},
                              {"simple_laplacian_sharpen", "sharpen_count", "1", 3},
                              {"brightness_contrast", "brightness", "0", 1},
                              {"brightness_contrast", "contrast", "0", 1},
                              {"brightness_contrast", "saturation", "0", 1},
                              {"gray", "duration", "1", 3},
                              {"fadein", "FadeMin", "0", 3},
                              {"fadein", "FadeMax", "255", 3},
                              {"fadeout", "FadeMin", "0", 3},
                              {"fadeout", "FadeMax", "255", 3},
                              {"directfadein", "fadein_min", "0", 3},
                              {"directfadein", "fadein_color", "0", 3},
                              {"directfadein", "fadein_max", "256", 3},
                              {"directfadeout", "fadeout_min", "0", 3},
                              {"directfadeout", "fadeout_color", "0", 3},
                              {"directfadeout", "fadeout_max", "256", 3},
                              {"reverse", "mirror", "0", 3},
                              {"reverse", "vertical", "0", 3},
                              {"emboss", "emboss_level", "0", 3},
                              {"mosaic", "mosaic_x1", "0", 3},
                              {"mosaic", "mosaic_y1", "0", 3},
                              {"mosaic", "mosaic_x2", "0", 3},
                              {"mosaic", "mosaic_y2", "0", 3},
                              {"mosaic", "mosaic_step", "0", 3},
                              {"portrait", "portrait_fillcolor", "0xffffffff", 3},
                              {"portrait", "portrait_width", "0xffffffff", 3},
                              {"mirage", "mirage_width", "10", 3},
                              {"mirage", "mirage_alpha", "10", 3},
                              {"stroke", "stroke_pressure", "0x20", 3},
                              {"transparency", "transparency_scale", "0", 3},
                              {"colorfilter", "filter_scope", "0", 3},
                              {"colorfilter", "filter_color", "0", 3},
                              {"relief", "relief_angle", "40", 3},
                              {"addnoise", "addnoise_level", "2", 3},
                              {"EffectNameMkClock", "EffectPropSourceDur", "0", 3},
                              {"EffectNameMkFade", "EffectPropVFPath1", "", 0},
                              {"EffectNameMkRoll", "EffectPropVFPath2", "", 0},
                              {"EffectNameMkTurn", "EffectPropStartTime", "", 3},
                              {"popstyle", "popstyle_threshold", "0", 3},
                              {"popstyle", "popstyle_color", "0", 3},
                              {"videowall", "videowall_horiTiles", "3", 1},
                              {"videowall", "videowall_verTiles", "3", 1},
                              {"tilereflect", "tilereflect_angle", "30", 3},
                              {"tilereflect", "tilereflect_size", "30", 3},
                              {"tilereflect", "tilereflect_curvature", "30", 3},
                              {"mirrorinvert", "mirrorinvert_amount", "100", 3},
                              {"oilpainting", "oilpainting_brushsize", "3", 3},
                              {"oilpainting", "oilpainting_coarseness", "3", 3},
                              {"EffectName3DRenderEffect", "render_3d_depth", "80", 3},
                              {"EffectName3DRenderEffect", "render_3d_mode", "3", 3},
                              {"EffectName3DRenderEffect", "render_3d_swtich", "0", 3},
                              {"EffectNameRotate90X", "Rotate90XDerection", "0", 3}}) {
        int type = -1;
        EXPECT_STREQ(test::MakeVideo(p.effect)->GetProperty(p.name, &type), p.text);
        EXPECT_EQ(type, p.type);
    }
    for (const char* name : {"flip_color", "invert", "aged_film"}) {
        IStrings* names = test::MakeVideo(name)->GetPropertyNames();
        EXPECT_EQ(names->GetCount(), 1) << name;
        names->Free();
    }
}

TEST(Factory, MakesTheSoundEffectsWithTheirProperties) {
    struct Property {
        const char *effect, *name, *text;
        int type;
    };
    for (const Property& p : {Property{"audio_replace", "audio_replace_loop", "0", 3},
                              {"audio_replace", "audio_replace_path", "", 0},
                              {"audio_fader", "fader_start_time", "0", 3},
                              {"audio_fader", "fader_duration", "-1", 3},
                              {"audio_fader", "fader_start_scale", "-1.0", 1},
                              {"audio_fader", "fader_end_scale", "-1.0", 1},
                              {"audio_volume", "audio_volume", "100", 3},
                              {"audio_volume", "duration", "1", 3}}) {
        const test::AudioProc proc = test::MakeAudio(p.effect);
        int type = -1;
        EXPECT_STREQ(proc->GetProperty(p.name, &type), p.text);
        EXPECT_EQ(type, p.type);
        EXPECT_STREQ(proc->GetName(), p.effect);
        EXPECT_EQ(proc->GetType(), 2u);
        EXPECT_EQ(proc->GetInterface("IAudioProc"), static_cast<void*>(proc.get()));
        IStrings* names = proc->GetPropertyNames();
        EXPECT_EQ(static_cast<size_t>(names->GetCount()), FindEffect(p.effect)->properties.size() + 1);
        names->Free();
    }
}

TEST(Factory, ObjectsAreIndependent) {
    const test::VideoProc a = test::MakeVideo("simple_gauss_blur"), b = test::MakeVideo("simple_gauss_blur");
    EXPECT_NE(a.get(), b.get());
    a->SetProperty("blur_count", "3");
    EXPECT_STREQ(b->GetProperty("blur_count", nullptr), "1");
}

// A host calls by slot: the same processor through raw vtable access only.
TEST(Factory, ProcessorsAnswerBySlot) {
    test::VideoProc owner = test::MakeVideo("gray");
    void* proc = owner.release();
    void** table = *static_cast<void***>(proc);
    const auto setProperty = reinterpret_cast<bool (*)(void*, const char*, const char*)>(table[5]);
    const auto getDuration = reinterpret_cast<unsigned (*)(void*)>(table[9]);
    const auto procInPlace = reinterpret_cast<void (*)(void*, void*, int, void*)>(table[11]);
    const auto free = reinterpret_cast<void (*)(void*)>(table[1]);
    EXPECT_TRUE(setProperty(proc, "duration", "321"));
    EXPECT_EQ(getDuration(proc), 321u);
    auto frame = test::MakeFrame({BGRA, 1, 1});
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
            const test::VideoProc proc = test::MakeVideo(effect.name);
            auto frame = test::MakeFrame({format, 20, 10, 3}, 4);
            const test::HostFrame original = *frame;
            test::Run(*proc, *frame);
            ASSERT_NO_FATAL_FAILURE(test::ExpectSame(*frame, original, effect.name));
            EXPECT_EQ(Code(), test::ReportsOtherFormats(effect.name) ? 10021008 : 0);
        }
}

} // namespace
