#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "AVEffect/CBasedAudioEffect.h"
#include "AVEffect/CBasedVideoEffect.h"
#include "BaseTools/guarded.h"
#include "aveffect/base_tools.h"
#include "tests/support/host_frame.h"
#include "tests/support/record.h"

namespace {

using namespace AVBased;
using namespace test;

// One property of each type, bound to a member of each kind; processing throws what the test asks for.
class ProbeEffect final : public CBasedVideoImageEffect {
public:
    ProbeEffect()
        : CBasedVideoImageEffect("probe") {
        const auto add = [this](const char* name, const char* first, PropertyType type, Member member) {
            AddProperty({name, first, type, ValueKind::Number, "", "", "", 0, 0});
            Bind(name, member);
        };
        add("Text", "first", kText, &text);
        add("double", "1.5", kDouble, &number);
        add("int64", "-3", kInt64, &int64);
        add("int", "7", kInt32, &int32);
        add("short", "2", kInt16, &int16);
    }

    void OnSetProperty(const std::string& name, PropertyNode& node) override {
        if (parses) CBasedVideoImageEffect::OnSetProperty(name, node);
    }
    void InnerProcFrame(ImagePostion*, int time, IRawVideoFrame* frame) override {
        frame->SetTimeStamp(time);
        if (onFrame) onFrame();
    }
    PropertyNode* Node(const std::string& name) { return GetProperty(name); }
    void AddAgain() { AddProperty(kDurationProperty); }
    void AddInterfaceAgain() { AddInterface("IVideoProc", this); }
    void AddNull() { AddInterface("other", nullptr); }
    using CBaseAVProc::GetProperty;

    std::function<void()> onFrame;
    bool parses = true;
    std::string text;
    double number = 0;
    long long int64 = 0;
    int int32 = 0;
    short int16 = 0;
};

class Processor : public testing::Test {
protected:
    void SetUp() override { GetBaseException()->Clear(); }
    ~Processor() override { proc->Free(); }

    std::string Text(const char* name, int* type = nullptr) { return video->GetProperty(name, type); }

    ProbeEffect* proc = new ProbeEffect;
    IVideoProc* video = proc;
    ImagePostion position{};
};

TEST_F(Processor, StartsWithItsDefaults) {
    EXPECT_EQ(video->GetType(), 1u);
    EXPECT_EQ(video->GetSubType(), 2u);
    EXPECT_STREQ(video->GetName(), "probe");
    EXPECT_EQ(video->GetDuration(), 1u);
    EXPECT_TRUE(video->Seek(99));
    int type = -1;
    EXPECT_EQ(Text("duration", &type), "1");
    EXPECT_EQ(type, 3);
    EXPECT_EQ(Text("Text", &type), "first");
    EXPECT_EQ(type, 0);
    EXPECT_EQ(proc->Node("double")->value.number, 1.5);
    EXPECT_EQ(proc->Node("int64")->value.int64, -3);
    EXPECT_EQ(proc->Node("short")->value.int16, 2);
    EXPECT_STREQ(proc->Node("Text")->value.text, "first");
    EXPECT_EQ(video->GetInterface("IVideoProc"), static_cast<void*>(video));
}

TEST_F(Processor, ParsesByTypeCode) {
    struct Case {
        const char *name, *value;
    };
    for (const auto& [name, value] : {Case{"double", "2.5e1x"},
                                      {"int64", "-9000000000"},
                                      {"int", " 42abc"},
                                      {"short", "-5"},
                                      {"Text", "any text"},
                                      {"duration", "250"}}) {
        EXPECT_TRUE(video->SetProperty(name, value));
        EXPECT_EQ(Text(name), value);
    }
    EXPECT_EQ(proc->number, 25);
    EXPECT_EQ(proc->int64, -9000000000LL);
    EXPECT_EQ(proc->int32, 42);
    EXPECT_EQ(proc->int16, -5);
    EXPECT_EQ(proc->text, "any text");
    EXPECT_EQ(video->GetDuration(), 250u);
    EXPECT_EQ(proc->Node("Text")->value.text, proc->Node("Text")->text.c_str());
    proc->parses = false; // as transitions and the stereo effect do
    EXPECT_TRUE(video->SetProperty("Text", std::string(100, 'x').c_str()));
    EXPECT_EQ(proc->Node("Text")->value.text, proc->Node("Text")->text.c_str());
}

TEST_F(Processor, TextThatIsNoNumberIsZeroForIntegersAndNothingForDoubles) {
    video->SetProperty("double", "2.5");
    EXPECT_TRUE(video->SetProperty("double", "x"));
    EXPECT_EQ(proc->number, 2.5);
    EXPECT_EQ(Text("double"), "x");
    for (const char* name : {"int64", "int", "short", "duration"})
        EXPECT_TRUE(video->SetProperty(name, "abc"));
    EXPECT_EQ(proc->int64, 0);
    EXPECT_EQ(proc->int32, 0);
    EXPECT_EQ(proc->int16, 0);
    EXPECT_EQ(video->GetDuration(), 0u);
    EXPECT_EQ(Text("duration"), "abc");
}

TEST_F(Processor, UnknownNames) {
    EXPECT_FALSE(video->SetProperty("Duration", "1"));
    EXPECT_EQ(Code(), 10021005);
    EXPECT_EQ(Message(), "Property with name(Duration) does not exist");
    EXPECT_EQ(video->GetInterface("IAudioProc"), nullptr);
    EXPECT_EQ(Code(), 10021009);
    EXPECT_EQ(Message(), "IAudioProc");
    EXPECT_EQ(proc->Node("none"), nullptr);
}

TEST_F(Processor, ListsPropertyNamesByteWise) {
    IStrings* names = video->GetPropertyNames();
    std::vector<std::string> listed;
    for (int i = 0; i < names->GetCount(); ++i) listed.emplace_back(names->GetString(i)->GetStr());
    names->Free();
    EXPECT_EQ(listed, (std::vector<std::string>{"Text", "double", "duration", "int", "int64", "short"}));
}

TEST_F(Processor, ProcFrameWorksOnACopyThatTheNextCallReleases) {
    int freed = 0;
    auto frame = MakeFrame({BGRA, 4, 4});
    frame->freed = nullptr;
    frame->SetTimeStamp(5);
    frame->onClone = [&](HostFrame& original) {
        auto* copy = new HostFrame(original);
        copy->freed = &freed;
        return copy;
    };
    IRawVideoFrame* first = video->ProcFrame(&position, 7, frame.get());
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first->GetTimeStamp(), 7);
    EXPECT_EQ(frame->GetTimeStamp(), 5);
    IRawVideoFrame* second = video->ProcFrame(&position, 8, frame.get());
    EXPECT_NE(second, nullptr);
    EXPECT_EQ(freed, 1);
    EXPECT_EQ(Code(), 0);

    frame->onClone = [](HostFrame&) -> IRawVideoFrame* { throw 1; };
    EXPECT_EQ(video->ProcFrame(&position, 9, frame.get()), nullptr);
    EXPECT_EQ(Code(), 10021008);
    EXPECT_EQ(freed, 2);
    video->Free();
    EXPECT_EQ(freed, 2) << "nothing is freed twice";
    proc = new ProbeEffect;
}

TEST_F(Processor, FreesItsCopyWithItself) {
    int freed = 0;
    auto frame = MakeFrame({BGRA, 4, 4});
    frame->onClone = [&](HostFrame& original) {
        auto* copy = new HostFrame(original);
        copy->freed = &freed;
        return copy;
    };
    video->ProcFrame(&position, 0, frame.get());
    proc->Free();
    EXPECT_EQ(freed, 1);
    proc = new ProbeEffect;
}

TEST_F(Processor, ErrorsOfAFrameAreRecorded) {
    auto frame = MakeFrame({BGRA, 4, 4});
    EXPECT_EQ(video->ProcFrame(nullptr, 0, frame.get()), nullptr);
    EXPECT_EQ(Code(), 10021003);
    EXPECT_EQ(Message(), "Bad pointer");
    GetBaseException()->Clear();
    EXPECT_EQ(video->ProcFrame(&position, 0, nullptr), nullptr);
    EXPECT_EQ(Code(), 10021003);
    GetBaseException()->Clear();
    video->ProcFrameInPlace(&position, 0, nullptr);
    EXPECT_EQ(Code(), 10021003);
    proc->onFrame = [] { throw std::runtime_error("no luck"); };
    video->ProcFrameInPlace(&position, 0, frame.get());
    EXPECT_EQ(Code(), 10021015);
    EXPECT_EQ(Message(), "no luck");
    proc->onFrame = nullptr;
    EXPECT_NE(video->ProcFrame(&position, 0, frame.get()), nullptr);
    EXPECT_EQ(Code(), 10021015) << "a success leaves the older error";
}

TEST_F(Processor, CallersMistakesEndTheProcess) {
    auto frame = MakeFrame({BGRA, 4, 4});
    frame->onClone = [](HostFrame&) -> IRawVideoFrame* { return nullptr; };
    EXPECT_DEATH(ProbeEffect::CBaseAVProc(nullptr, 1, 2), "name");
    EXPECT_DEATH(video->SetProperty(nullptr, "1"), "name && value");
    EXPECT_DEATH(video->SetProperty("int", nullptr), "name && value");
    EXPECT_DEATH(video->GetProperty("none", nullptr), "false");
    EXPECT_DEATH(video->GetProperty(nullptr, nullptr), "name");
    EXPECT_DEATH(video->GetInterface(nullptr), "name");
    EXPECT_DEATH(proc->AddAgain(), "m_Properties.find\\(propName\\) == m_Properties.end\\(\\)");
    EXPECT_DEATH(proc->AddInterfaceAgain(),
                 "m_InterfaceMap.find\\(interfaceName\\) == m_InterfaceMap.end\\(\\)");
    EXPECT_DEATH(proc->AddNull(), "pInterface");
    EXPECT_DEATH(video->ProcFrame(&position, 0, frame.get()), "m_pCurFrame");
}

class Blender final : public CBasedVideoBlender {
public:
    Blender()
        : CBasedVideoBlender("blender") {}
};
class Sizing final : public CBasedVideoMotionSizingEffect {
public:
    Sizing()
        : CBasedVideoMotionSizingEffect("sizing") {}
};
class Motion final : public CBasedVideoMotionXYEffect {
public:
    Motion()
        : CBasedVideoMotionXYEffect("motion") {}
    int calls = 0;

protected:
    void InnerProcFrameInPlace(ImagePostion*, int, IRawVideoFrame*) override { ++calls; }
};

TEST_F(Processor, OtherBases) {
    auto frame = MakeFrame({BGRA, 4, 4});
    Blender blender;
    EXPECT_EQ(blender.GetSubType(), 8u);
    EXPECT_DEATH(blender.BlendFrame(&position, 0, frame.get(), frame.get()), "false");
    Sizing sizing;
    EXPECT_EQ(sizing.GetSubType(), 4u);
    EXPECT_DEATH(sizing.ProcFrame(&position, 0, frame.get()), "false");
    Motion motion;
    EXPECT_EQ(motion.GetSubType(), 1u);
    motion.ProcFrameInPlace(&position, 0, nullptr);
    EXPECT_EQ(motion.calls, 0);
    EXPECT_EQ(Code(), 10021003);
    motion.ProcFrameInPlace(&position, 0, frame.get());
    EXPECT_EQ(motion.calls, 1);
    EXPECT_EQ(motion.ProcFrame(&position, 0, frame.get()), nullptr);
}

// Sound is only counted and marked by its time stamp here.
class ProbeSound final : public IRawAudioFrame {
public:
    int GetSampleFormat() override { return 3; }
    unsigned GetSampleRate() override { return 48000; }
    int GetChannels() override { return 2; }
    unsigned GetChannelLayout() override { return 3; }
    bool IsInterleaved() override { return true; }
    bool IsLittleEndian() override { return true; }
    unsigned GetSampleCount() override { return 0; }
    unsigned char* GetBuffer(int, unsigned*) override { return nullptr; }
    unsigned GetTimeStamp() override { return time; }
    void SetTimeStamp(unsigned t) override { time = t; }
    void Release() override { ++released; }
    IRawAudioFrame* Clone() override { return clone; }

    unsigned time = 0;
    int released = 0;
    ProbeSound* clone = nullptr;
};

class ProbeAudioEffect final : public CBasedAudioEffect {
public:
    ProbeAudioEffect()
        : CBasedAudioEffect("probe_audio") {}
    void InnerProcFrame(IRawAudioFrame* frame) override {
        if (fails) BaseTool::Raise(10021000, "Bad index");
        frame->SetTimeStamp(frame->GetTimeStamp() + 1);
    }
    bool fails = false;
};

TEST(AudioProcessor, WorksOnACopyAndLeavesTheLastOneToTheHost) {
    GetBaseException()->Clear();
    auto* proc = new ProbeAudioEffect;
    IAudioProc* audio = proc;
    EXPECT_EQ(audio->GetType(), 2u);
    EXPECT_EQ(audio->GetSubType(), 2u);
    EXPECT_EQ(audio->GetInterface("IAudioProc"), static_cast<void*>(audio));
    EXPECT_EQ(audio->GetDuration(), 1);
    EXPECT_TRUE(audio->SetProperty("duration", "-250"));
    EXPECT_EQ(audio->GetDuration(), -250);
    EXPECT_TRUE(audio->Seek(-1));

    EXPECT_EQ(audio->ProcFrame(nullptr), nullptr);
    EXPECT_EQ(Code(), 10021003);
    EXPECT_EQ(Message(), "Bad pointer");
    GetBaseException()->Clear();
    audio->ProcFrameInPlace(nullptr);
    EXPECT_EQ(Code(), 10021003);

    ProbeSound copies[2], sound;
    sound.clone = &copies[0];
    EXPECT_EQ(audio->ProcFrame(&sound), &copies[0]);
    sound.clone = &copies[1];
    EXPECT_EQ(audio->ProcFrame(&sound), &copies[1]);
    EXPECT_EQ(copies[0].released, 1);
    EXPECT_EQ(copies[1].time, 1u);
    EXPECT_EQ(sound.time, 0u);
    audio->ProcFrameInPlace(&sound);
    EXPECT_EQ(sound.time, 1u);
    ProbeSound lost;
    sound.clone = &lost;
    proc->fails = true;
    EXPECT_EQ(audio->ProcFrame(&sound), nullptr);
    EXPECT_EQ(lost.released, 0) << "kept until the next call, though the work failed";
    proc->fails = false;
    copies[1].released = 0;
    sound.clone = &copies[1];
    EXPECT_EQ(audio->ProcFrame(&sound), &copies[1]);
    EXPECT_EQ(lost.released, 1);
    sound.clone = nullptr;
    EXPECT_DEATH(audio->ProcFrame(&sound), "m_pCurFrame");
    audio->Free();
    EXPECT_EQ(copies[1].released, 0);

    proc = new ProbeAudioEffect;
    proc->fails = true;
    sound.clone = &lost;
    EXPECT_EQ(proc->ProcFrame(&sound), nullptr);
    static_cast<IAudioProc*>(proc)->Free();
    EXPECT_EQ(lost.released, 2) << "nobody has it";
}

} // namespace
