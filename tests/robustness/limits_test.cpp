// Sizes that nobody can address, and rows farther apart than 32 bits count.
#include <gtest/gtest.h>

#include <climits>
#include <sys/wait.h>

#include "aveffect/catalogue.h"
#include "tests/robustness/trial.h"
#include "tests/support/busy_settings.h"
#include "tests/support/record.h"

namespace {

using namespace AVBased;
using namespace test;

constexpr unsigned kSizes[][2] = {{INT_MAX, INT_MAX},   {INT_MAX, 1},          {1, INT_MAX},
                                  {0x40000000, 4},      {0x80000000, 1},       {1, 0x80000000},
                                  {UINT_MAX, UINT_MAX}, {UINT_MAX / 4 + 1, 2}, {65536, 65536}};

bool IsRefusal(int code) { return code == kNoMemory || code == kUnknownException; }

TEST(Limits, TheCompanionsRefuseWhatCantBeAddressed) {
    TakeCode();
    const Shape shape = {BGRA, 4, 4};
    HostFrame small(shape);
    for (const auto& [width, height] : kSizes) {
        const std::string what = std::to_string(width) + "x" + std::to_string(height);
        MemoryFrame claims(BGRA, width, height, {{nullptr, width * 4, width * 4, height}});
        for (const unsigned format : {BGRA, YUV420P}) {
            for (IRawVideoFrame* const source : std::initializer_list<IRawVideoFrame*>{&small, &claims}) {
                const bool toSize = source == &small;
                IImageConverter* const converter =
                    CreateImageConverterEx(format, toSize ? width : 0, toSize ? height : 0, 4);
                if (converter) {
                    EXPECT_EQ(converter->Convert(source), nullptr) << what;
                    converter->Release();
                }
                EXPECT_TRUE(IsRefusal(TakeCode())) << what;
            }
        }
        IRawVideoFrameCropPan* const margins = CreateRawVideoFrameCropPan();
        margins->SetLeft(width);
        margins->SetBottom(height);
        EXPECT_EQ(margins->Process(&small), nullptr) << what;
        EXPECT_TRUE(IsRefusal(TakeCode())) << what;
        margins->Release();
    }
    IAudioResampler* const resampler = CreateAudioResampler(sfFloat, 48000, 2, 0, true, 0, 0);
    for (const unsigned samples : {UINT_MAX, unsigned{INT_MAX}, 0x40000000u}) {
        HostSound claims({.samples = samples}, 16, 0);
        EXPECT_EQ(resampler->Convert(&claims), nullptr) << samples;
        EXPECT_TRUE(IsRefusal(TakeCode())) << samples;
    }
    resampler->Destroy();
}

// The code that an effect records for a frame of that shape, in the middle of its work.
int CodeFor(const EffectInfo& effect, const char* mode, unsigned width, unsigned height,
            const MemoryFrame::Plane& plane) {
    underWay = std::string(effect.name) + ", mode " + mode + ", " + std::to_string(width) + "x" +
               std::to_string(height);
    const VideoProc proc = MakeVideo(effect.name, {}, Sources());
    SetBusy(*proc, effect);
    proc->SetProperty("render_3d_mode", mode); // if it has one
    MemoryFrame frame(BGRA, width, height, {plane});
    TakeCode();
    test::Run(*proc, frame, 50);
    return TakeCode();
}

// Frames that are smaller than they claim.
TEST(Limits, EffectsRefuseWhatCantBeAddressed) {
    ListenForDeaths();
    unsigned char pixels[4 * 4 * 4] = {};
    for (const EffectInfo& effect : kVideoEffects)
        for (const char* mode : {"3", "1"})
            for (const auto& [width, height] : kSizes) {
                const int code = CodeFor(effect, mode, width, height, {pixels, 16, 16, 4});
                const bool refused =
                    IsRefusal(code) ||
                    (code == kBadPointer && (*mode == '1' || effect.kind == EffectKind::Transition));
                EXPECT_TRUE(refused || code == kNoError) << underWay << ": " << code;
            }
}

// A frame that says nothing of where its pixels are is refused, or stops the program where that is stated.
TEST(LimitsDeathTest, PlanesWithoutMemoryAreNeverTouched) {
    const auto endsWell = [](int status) {
        return (WIFEXITED(status) && WEXITSTATUS(status) == 0) ||
               (WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT);
    };
    for (const EffectInfo& effect : kVideoEffects)
        for (const char* mode : {"3", "1"}) {
            if (*mode == '1' && effect.kind != EffectKind::Stereo) continue;
            const auto run = [&] {
                const int code = CodeFor(effect, mode, 96, 64, {nullptr, 384, 384, 64});
                std::_Exit(IsRefusal(code) || code == kBadPointer ? 0 : 1);
            };
            EXPECT_EXIT(run(), endsWell, "") << effect.name << ", mode " << mode;
        }
    // Of a planar frame, any one plane: chroma ends as luma does, where both are drawn on.
    for (const EffectInfo& effect : kVideoEffects) {
        int ends[3] = {};
        for (size_t missing = 0; missing < 3; ++missing) {
            const auto run = [&] {
                std::vector<unsigned char> pixels(96 * 64 * 2);
                std::vector<MemoryFrame::Plane> planes = {{pixels.data(), 96, 96, 64},
                                                          {pixels.data() + 96 * 64, 48, 48, 32},
                                                          {pixels.data() + 96 * 80, 48, 48, 32}};
                planes[missing].data = nullptr;
                MemoryFrame frame(YUV420P, 96, 64, planes);
                const VideoProc proc = MakeVideo(effect.name, {}, Sources());
                SetBusy(*proc, effect);
                test::Run(*proc, frame, 50);
                std::_Exit(0);
            };
            const auto keepsHow = [&](int status) {
                ends[missing] = status;
                return endsWell(status);
            };
            EXPECT_EXIT(run(), keepsHow, "") << effect.name << ", plane " << missing;
        }
        const bool lumaAlone = effect.name == std::string_view(effectNameAddNoise);
        EXPECT_EQ(ends[1], lumaAlone ? 0 : ends[0]) << effect.name;
        EXPECT_EQ(ends[2], ends[1]) << effect.name;
    }
    const EffectInfo& fade = *FindEffect(effectNameFadeIn);
    EXPECT_DEATH(CodeFor(fade, "", 96, 64, {nullptr, 384, 384, 64}), "fade_in_out_rgba32.*`pBuffer != NULL'");
}

// A picture whose rows are pages apart, with nothing between that could be touched.
class LongFrame final : public MemoryFrame {
public:
    static constexpr unsigned kPitch = 0xC0000010, kRows = 3, kWidth = 7;

    explicit LongFrame(HostFrame& from)
        : LongFrame(from,
                    static_cast<unsigned char*>(mmap(nullptr, kBytes, PROT_NONE,
                                                     MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0))) {}
    ~LongFrame() override { munmap(m_Memory, kBytes); }
    bool Equals(HostFrame& frame) const {
        for (unsigned y = 0; y < kRows; ++y)
            if (!std::equal(Row(y), Row(y) + kWidth * 4, &frame.planes[0].At(0, y))) return false;
        return true;
    }

private:
    static constexpr size_t kPage = 4096, kBytes = size_t{kPitch} * kRows + 2 * kPage;

    LongFrame(HostFrame& from, unsigned char* memory)
        : MemoryFrame(BGRA, kWidth, kRows, {{memory + kPage, kWidth * 4, kPitch, kRows}})
        , m_Memory(memory) {
        if (memory == MAP_FAILED) throw std::bad_alloc();
        for (unsigned y = 0; y < kRows; ++y) {
            const size_t begin = static_cast<size_t>(Row(y) - memory) / kPage * kPage;
            EXPECT_EQ(mprotect(memory + begin, 2 * kPage, PROT_READ | PROT_WRITE), 0);
            std::copy_n(&from.planes[0].At(0, y), kWidth * 4, Row(y));
        }
    }
    unsigned char* Row(size_t y) const { return m_Memory + kPage + y * kPitch; }
    IRawVideoFrame* Clone() override {
        auto* copy = new HostFrame({BGRA, kWidth, kRows});
        for (unsigned y = 0; y < kRows; ++y) std::copy_n(Row(y), kWidth * 4, &copy->planes[0].At(0, y));
        return copy;
    }

    unsigned char* m_Memory;
};

TEST(Limits, RowsMayLieFartherApartThan32BitsCount) {
    ListenForDeaths();
    for (const EffectInfo& effect : kVideoEffects) {
        // Random ones can't be compared, views need clones alike, and the others fill the gaps too.
        if (effect.traits & kDrawsRandom || effect.kind == EffectKind::Stereo ||
            effect.kind == EffectKind::Transition || effect.name == std::string_view(effectNameVideoWall))
            continue;
        underWay = effect.name;
        const test::FramePtr plain = MakeFrame({BGRA, LongFrame::kWidth, LongFrame::kRows, 4});
        LongFrame frame(*plain);
        for (IRawVideoFrame* const each : std::initializer_list<IRawVideoFrame*>{&frame, plain.get()}) {
            const VideoProc proc = MakeVideo(effect.name, {}, Sources());
            SetBusy(*proc, effect);
            for (const char* small : {"_x", "_y", "_r", "size"}) // within so small a picture
                for (const PropertyInfo& property : effect.properties)
                    if (std::string_view(property.name).ends_with(small))
                        proc->SetProperty(property.name, "3");
            TakeCode();
            test::Run(*proc, *each, 50);
            EXPECT_EQ(TakeCode(), 0) << effect.name;
        }
        EXPECT_TRUE(frame.Equals(*plain)) << effect.name;
    }
}

} // namespace
