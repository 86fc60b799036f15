// Every effect of the catalogue while something outside the plug-in goes wrong: the host's media access, its
// frames, the companions' converters. The frame is what it should be or was, or a word is recorded; nothing
// is left behind; and the processor works once the trouble is over.
#include <gtest/gtest.h>

#include "aveffect/catalogue.h"
#include "tests/robustness/trial.h"
#include "tests/support/busy_settings.h"
#include "tests/support/record.h"

namespace {

using namespace AVBased;
using namespace test;

template <class Function>
Function* TheCompanions(const char* name) {
    static void* const library = dlopen(AVEFFECT_BIN_DIR "/libAVBaseMedia.so", RTLD_NOW | RTLD_LOCAL);
    return reinterpret_cast<Function*>(dlsym(library, name));
}

class Converter final : public IImageConverter {
public:
    explicit Converter(IImageConverter* real)
        : m_Real(real) {}
    IRawVideoFrame* Convert(IRawVideoFrame* source) override {
        return trouble.At(Place::Convert) ? nullptr : m_Real->Convert(source);
    }
    void Release() override {
        m_Real->Release();
        delete this;
        trouble.At(Place::ReleaseConverter);
    }

private:
    IImageConverter* m_Real;
};

class CropPan final : public IRawVideoFrameCropPan {
public:
    void SetLeft(unsigned pixels) override { m_Real->SetLeft(pixels); }
    void SetTop(unsigned pixels) override { m_Real->SetTop(pixels); }
    void SetRight(unsigned pixels) override { m_Real->SetRight(pixels); }
    void SetBottom(unsigned pixels) override { m_Real->SetBottom(pixels); }
    IRawVideoFrame* Process(IRawVideoFrame* source) override {
        return trouble.At(Place::Pad) ? nullptr : m_Real->Process(source);
    }
    void Release() override {
        m_Real->Release();
        delete this;
        trouble.At(Place::ReleaseCropPan);
    }

private:
    IRawVideoFrameCropPan* m_Real =
        TheCompanions<decltype(CreateRawVideoFrameCropPan)>("CreateRawVideoFrameCropPan")();
};

class Resampler final : public IAudioResampler {
public:
    explicit Resampler(IAudioResampler* real)
        : m_Real(real) {}
    IRawAudioFrame* Convert(IRawAudioFrame* source) override {
        return trouble.At(Place::Resample) ? nullptr : m_Real->Convert(source);
    }
    void Destroy() override {
        m_Real->Destroy();
        delete this;
        trouble.At(Place::DestroyResampler);
    }

private:
    IAudioResampler* m_Real;
};

} // namespace

IImageConverter* CreateImageConverterEx(unsigned format, unsigned width, unsigned height, unsigned quality) {
    if (trouble.At(Place::MakeConverter)) return nullptr;
    const auto make = TheCompanions<decltype(CreateImageConverterEx)>("CreateImageConverterEx");
    return new Converter(make(format, width, height, quality));
}

IRawVideoFrameCropPan* CreateRawVideoFrameCropPan() {
    return trouble.At(Place::MakeCropPan) ? nullptr : new CropPan;
}

IAudioResampler* CreateAudioResampler(int format, unsigned rate, int channels, int, bool interleaved, int,
                                      int) {
    if (trouble.At(Place::MakeResampler)) {
        GetBaseException()->SetException(kUnknownException, "no resampler", __LINE__, __FILE__);
        return nullptr;
    }
    const auto make = TheCompanions<decltype(CreateAudioResampler)>("CreateAudioResampler");
    return new Resampler(make(format, rate, channels, 0, interleaved, 0, 0));
}

namespace {

// An effect with its settings and the frame that it gets.
template <class Media>
struct Subject {
    const EffectInfo& effect;
    const Media& original;
    const char* mode = nullptr;

    typename Kind<Media>::Proc* Make() const { return Kind<Media>::Create(effect.name); }
    void Set(Held<Media>& proc) const {
        SetBusy(*proc.operator->(), effect);
        if (mode) proc->SetProperty("render_3d_mode", mode);
    }
};

// A copy of what the processor made of a frame, null when it failed, and the code that it recorded.
template <class Media>
std::pair<std::unique_ptr<Media>, int> Process(Held<Media>& proc, const Media& original, bool inPlace) {
    const auto frame = std::make_unique<Media>(original);
    ReleaseBaseException();
    const Media* const result = proc.Process(*frame, 50, inPlace);
    const int code = GetBaseException()->GetExceptionCode();
    EXPECT_TRUE(inPlace || *frame == original) << "the host's frame was changed: " << underWay;
    return {result ? std::make_unique<Media>(*result) : nullptr, code};
}

// Assertions are part of the contract.
template <class Media>
bool IsStatedToStop(const Subject<Media>& subject, bool inPlace) {
    const std::string_view name = subject.effect.name;
    if (trouble.how != How::Nothing) return false;
    return (trouble.place == Place::Clone && !inPlace) ||
           (trouble.place == Place::MakeConverter && subject.effect.kind == EffectKind::Transition) ||
           (trouble.place == Place::Open && name == effectNameAudioReplace) ||
           (trouble.place == Place::Buffer &&
            (name == effectNameAudioFader || subject.effect.kind != EffectKind::Audio));
}

void Silence(HostFrame&) {}
void Silence(HostSound& sound) {
    for (auto& buffer : sound.buffers) std::ranges::fill(buffer, uint8_t{0});
}

// The life of a processor under the trouble that there is, which is over in its middle or with its end.
template <class Media>
void Suffer(const Subject<Media>& subject, bool lasting) {
    const auto during = trouble;
    trouble = {};
    std::vector<std::unique_ptr<Media>> wanted;
    {
        Held<Media> healthy(subject.Make());
        subject.Set(healthy);
        for (const bool inPlace : {true, false})
            wanted.push_back(Process(healthy, subject.original, inPlace).first);
        wanted.push_back(std::make_unique<Media>(subject.original));
        if (subject.effect.kind == EffectKind::Audio) { // what a file that ends gives
            wanted.push_back(std::make_unique<Media>(subject.original));
            Silence(*wanted.back());
        }
    }
    trouble = during;
    auto proc = std::make_unique<Held<Media>>(subject.Make());
    if (!*proc) {
        EXPECT_NE(GetBaseException()->GetExceptionCode(), 0) << underWay;
        trouble = {};
        proc = std::make_unique<Held<Media>>(subject.Make());
        trouble = during;
    }
    subject.Set(*proc);
    for (const bool inPlace : {true, false}) {
        if (IsStatedToStop(subject, inPlace)) continue;
        const auto [result, code] = Process(*proc, subject.original, inPlace);
        bool good = result && subject.effect.traits & kDrawsRandom;
        for (const auto& media : wanted) good = good || (result && *media == *result);
        EXPECT_TRUE(good || code != 0) << "another frame and no word about it: " << underWay;
    }
    if (!lasting) {
        trouble = {};
        subject.Set(*proc);
        for (const bool inPlace : {false, true}) {
            const auto [result, code] = Process(*proc, subject.original, inPlace);
            EXPECT_TRUE(result && code == 0) << "not usable afterwards: " << underWay;
        }
    }
    proc.reset();
    trouble = {};
}

template <class Media>
void SufferAll(const Subject<Media>& subject) {
    for (int place = 1; place < static_cast<int>(Place::End); ++place)
        for (const How how : {How::Nothing, How::Exception, How::Oddity})
            for (const bool lasting : {false, true}) {
                const Trouble now = {static_cast<Place>(place), how};
                underWay = std::string(subject.effect.name) + ", place " + std::to_string(place) + ", how " +
                           std::to_string(static_cast<int>(how)) + (lasting ? ", to the end" : "") +
                           (subject.mode ? subject.mode : "");
                trouble = now;
                const bool stops = IsStatedToStop(subject, true);
                trouble = {};
                if (stops) continue;
                const std::string left = LeftBehind([&] {
                    trouble = now;
                    Suffer(subject, lasting);
                });
                EXPECT_EQ(left, "") << underWay;
            }
}

TEST(Outside, NothingThatGoesWrongThereTakesAnEffectDown) {
    ListenForDeaths();
    Sources();
    for (const unsigned format : {BGRA, YUV420P}) {
        const Shape shape = {format, 64, 48};
        const test::FramePtr made = MakeFrame(shape), second = MakeFrame({YUV422P, 64, 48}, 2);
        const HostFrame& frame = *made;
        HostFrame both(frame);
        both.subset = second.get();
        for (const EffectInfo& effect : kVideoEffects) {
            SufferAll<HostFrame>({effect, frame});
            if (effect.kind != EffectKind::Stereo) continue;
            SufferAll<HostFrame>({effect, frame, "1"});
            SufferAll<HostFrame>({effect, both, "4"});
        }
    }
    const HostSound sound = MakeSound({.samples = 500});
    for (const EffectInfo& effect : kAudioEffects) SufferAll<HostSound>({effect, sound});
}

TEST(Outside, ACopyThatNobodyGetsMayThrowWhenItGoes) {
    HostSound hollow({.samples = 500});
    hollow.hasBuffers = false;
    Held<HostSound> proc(CreateAudio(effectNameAudioReplace, Sources()));
    trouble = {Place::Free, How::Exception};
    const auto [result, code] = Process(proc, hollow, false);
    trouble = {};
    EXPECT_EQ(result, nullptr);
    // The analyser takes what Free() would have freed for lost; the leak sanitizer sees that nothing is.
    // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDeleteLeaks)
    EXPECT_EQ(code, kUnknownException) << "the effect's own word";
}

// A processor as a program has it that dies of it.
template <class Media>
void Die(const Subject<Media>& subject, Place place) {
    Held<Media> proc(subject.Make());
    subject.Set(proc);
    trouble.place = place;
    Process(proc, subject.original, place != Place::Clone);
}

TEST(OutsideDeathTest, StopsWhereThatIsStated) {
    const HostFrame frame({BGRA, 8, 8});
    const HostSound sound({.samples = 8});
    for (const EffectInfo& effect : kVideoEffects) {
        const Subject<HostFrame> subject = {effect, frame};
        EXPECT_DEATH(Die(subject, Place::Clone), "Assertion `m_pCurFrame' failed") << effect.name;
        if (effect.kind == EffectKind::Transition) {
            EXPECT_DEATH(Die(subject, Place::MakeConverter), "Assertion `0' failed") << effect.name;
        }
    }
    for (const EffectInfo& effect : kAudioEffects)
        EXPECT_DEATH(Die(Subject<HostSound>{effect, sound}, Place::Clone), "Assertion `m_pCurFrame' failed")
            << effect.name;
}

} // namespace
