// Every effect of the catalogue in lives that random bytes decide: pictures of every format and sounds of
// every kind between protected pages, with settings as far out as text can say.
//
// AVEFFECT_SWEEP_CASES says how many lives for each effect, AVEFFECT_SWEEP_SEED where they begin.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <random>
#include <semaphore>

#include "AVEffect/CBasedVideoEffect.h"
#include "tests/robustness/any_life.h"

extern "C" {
#include <libavutil/log.h>
}

namespace {

using namespace AVBased;
using namespace test;

unsigned FromEnvironment(const char* name, unsigned otherwise) {
    const char* const text = std::getenv(name);
    return text ? static_cast<unsigned>(std::strtoul(text, nullptr, 10)) : otherwise;
}

template <class Media>
void Sweep(const EffectInfo& effect) {
    const unsigned lives = FromEnvironment("AVEFFECT_SWEEP_CASES", 200);
    const unsigned seed = FromEnvironment("AVEFFECT_SWEEP_SEED", 1);
    const auto make = [](IAVManager* manager, const char* name) {
        return Kind<Media>::Create(name, manager);
    };
    for (unsigned n = 0; n < lives && !testing::Test::HasFailure(); ++n) {
        std::mt19937 random(seed + n);
        std::vector<uint8_t> bytes(2000);
        std::ranges::generate(bytes, [&] { return static_cast<uint8_t>(random()); });
        std::string finding;
        const std::string left = LeftBehind([&] {
            InputBytes input(bytes.data(), bytes.size());
            finding = Live<Media>(effect, input, make);
        });
        EXPECT_EQ(finding + left, "") << underWay << ", seed " << seed + n;
    }
}

class Robustness : public testing::TestWithParam<std::string> {};

TEST_P(Robustness, NothingAHostDoesByAccidentTakesItDown) {
    ListenForDeaths();
    Sources();
    av_log_set_level(AV_LOG_ERROR);
    const EffectInfo& effect = *FindEffect(GetParam());
    if (effect.kind == EffectKind::Audio)
        Sweep<HostSound>(effect);
    else
        Sweep<HostFrame>(effect);
}

std::vector<std::string> EffectNames() {
    std::vector<std::string> names;
    for (const EffectInfo& effect : kVideoEffects) names.push_back(effect.name);
    for (const EffectInfo& effect : kAudioEffects) names.push_back(effect.name);
    return names;
}

INSTANTIATE_TEST_SUITE_P(Every, Robustness, testing::ValuesIn(EffectNames()),
                         [](const auto& test) { return test.param; });

// An effect with a mistake, to see the sweep find it.
class Faulty final : public CBasedVideoImageEffect {
public:
    using Mistake = void (*)(IRawVideoFrame& frame);
    explicit Faulty(Mistake mistake)
        : CBasedVideoImageEffect("faulty")
        , m_Mistake(mistake) {}
    void InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) override { m_Mistake(*frame); }

private:
    Mistake m_Mistake;
};

// Processors get copies of the frame, which are guarded at the other end.
std::string Try(Faulty::Mistake mistake, Flush flush = Flush::End) {
    ListenForDeaths();
    const unsigned patience = std::exchange(secondsPerCall, 1);
    underWay = "a mistake";
    std::string finding;
    const std::string left = LeftBehind([&] {
        Trial<HostFrame> trial([&] { return new Faulty(mistake); }, 0x7);
        finding = trial.Run(*MakeFrame({.width = 5, .height = 3, .flush = flush}), 0, true, true);
    });
    secondsPerCall = patience;
    return finding + left;
}

void WriteBehindRows(IRawVideoFrame& frame) {
    unsigned width = 0, pitch = 0, rows = 0;
    unsigned char* const data = frame.GetBuffer(0, &width, &pitch, &rows);
    for (unsigned y = 0; y < rows; ++y) data[y * pitch + width] ^= 1;
}

void DivideByFormat(IRawVideoFrame& frame) {
    volatile unsigned none = frame.GetPixelFormat() - BGRA;
    frame.SetDuration(7 / none);
}

TEST(SweepDeathTest, FindsMistakes) {
    EXPECT_EQ(Try([](IRawVideoFrame&) {}), "");
    EXPECT_DEATH(Try(WriteBehindRows), "bytes beside guarded ones were changed\ndied: a mistake");
    EXPECT_DEATH(Try(WriteBehindRows, Flush::Start), "died: a mistake");
    EXPECT_DEATH(Try(DivideByFormat), "died: a mistake|division by zero");
    static std::vector<std::unique_ptr<IRawVideoFrame, FrameFree>> forgotten; // so long, no longer
    EXPECT_EQ(Try([](IRawVideoFrame& frame) { forgotten.emplace_back(frame.Clone()); }),
              "frames are left behind");
    forgotten.clear();
    EXPECT_EQ(Try([](IRawVideoFrame& frame) {
                  static unsigned char calls = 0;
                  unsigned ignored = 0;
                  *frame.GetBuffer(0, &ignored, &ignored, &ignored) = ++calls;
              }),
              "levels differ");
    EXPECT_DEATH(Try([](IRawVideoFrame&) {
                     static std::binary_semaphore lock(1);
                     lock.acquire(); // and never released
                 }),
                 "took too long: a mistake");
}

} // namespace
