// Every effect of the catalogue on pictures of every format and sounds of every kind between protected pages,
// with settings as far out as text can say. What it asks: no crash, no endless call, no byte touched outside
// the frame, the copy made from the frame as it was, the same bytes at every level of the processor, and
// nothing left behind.
//
// AVEFFECT_SWEEP_CASES says how many cases for each effect, AVEFFECT_SWEEP_SEED where they begin.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <limits>
#include <semaphore>
#include <sstream>

#include "AVEffect/CBasedVideoEffect.h"
#include "aveffect/catalogue.h"
#include "tests/robustness/trial.h"
#include "tests/support/contract_stops.h"

extern "C" {
#include <libavutil/log.h>
}

namespace {

using namespace AVBased;
using test::Flush;
using test::GuardedFrame;
using test::GuardedSound;
using test::Trial;
using test::underWay;

// Random numbers as unsigned ones.
class Random {
public:
    explicit Random(unsigned seed)
        : m_Engine(seed) {}
    unsigned operator()() { return static_cast<unsigned>(m_Engine()); }
    bool OneIn(unsigned n) { return (*this)() % n == 0; }
    int Within(int low, int high) {
        return low + static_cast<int>((*this)() % (static_cast<unsigned>(high - low) + 1));
    }
    template <class Choices>
    auto& AnyOf(const Choices& choices) {
        return choices[(*this)() % std::size(choices)];
    }

private:
    std::mt19937 m_Engine;
};

// What a property may be set to: far beyond its range, at its ends, inside, or no number at all.
std::string AnyValue(const PropertyInfo& property, Random& random) {
    static const std::vector<std::string> odd = [] {
        std::istringstream words(
            "0 1 -1 2 -2 15 255 256 32767 -32768 65535 65536 2147483647 -2147483648 4294967295 "
            "9223372036854775807 -9223372036854775808 1.7976931348623157e308 -1.7976931348623157e308 5e-324 "
            "-0.0 0.5 nan inf -inf none 0x20");
        std::vector<std::string> all = {"", {"7\0 9", 4}};
        for (std::string word; words >> word;) all.push_back(word);
        return all;
    }();
    static const std::string kPaths[] = {"first",   "second", "dot",     "line",
                                         "missing", "sound",  "silence", "first?vstreamid=1"};
    static const std::string kSounds[] = {"sound", "odd", "tick", "silence"};
    const auto number = [&](double x) {
        return property.type == kDouble ? std::to_string(x) : std::to_string(static_cast<long long>(x));
    };
    // A file without an end, or none at all, is stated to stop the program.
    if (property.name == std::string_view("audio_replace_path")) return random.AnyOf(kSounds);
    if (property.kind == ValueKind::Path && !random.OneIn(8)) return random.AnyOf(kPaths);
    if (random.OneIn(64)) return (random() % 2 ? "9" : "7x") + std::string(70000, '9');
    switch (random() % 4) {
    case 0:
        return random.AnyOf(odd);
    case 1:
        return number(random() % 2 ? property.minimum : property.maximum);
    case 2: {
        const double share = random() / 4294967295.0;
        return number(property.minimum + share * (property.maximum - property.minimum));
    }
    default: // as large as the pictures are
        return number(random.Within(-5, 70));
    }
}

// What is stated to stop the program, and what has no upper limit on its work but the value's.
std::string Tamed(const PropertyInfo& property, std::string value, bool large, Random& random) {
    const std::string_view name = property.name;
    if (name == "blur_count" || name == "sharpen_count")
        return std::to_string(random.Within(0, large ? 3 : 300));
    if (name == "render_3d_mode" && std::atoi(value.c_str()) < 0) return "2";
    return value;
}

// All of the frame table's ids, those of effects more often, and two that nobody knows.
const std::vector<unsigned>& Formats() {
    static const std::vector<unsigned> formats = [] {
        std::vector<unsigned> all(kEffectFormats.begin(), kEffectFormats.end());
        for (unsigned id = 0; id < 256; ++id)
            if (mediabridge::TablePlaneCount(id)) all.push_back(id);
        all.insert(all.end(), {BGRA, 17, 4000000000u});
        return all;
    }();
    return formats;
}

// All of the smallest sizes, then a spread.
const std::vector<std::pair<unsigned, unsigned>>& Sizes() {
    static const std::vector<std::pair<unsigned, unsigned>> sizes = [] {
        std::vector<std::pair<unsigned, unsigned>> all;
        for (unsigned width = 1; width <= 6; ++width)
            for (unsigned height = 1; height <= 6; ++height) all.emplace_back(width, height);
        for (const unsigned width : {7u, 8u, 15u, 16u, 17u, 31u, 32u, 33u, 47u, 63u, 64u, 65u})
            for (const unsigned height : {1u, 2u, 7u, 16u, 65u}) all.emplace_back(width, height);
        return all;
    }();
    return sizes;
}

struct Case {
    unsigned number; // each of so many in a row has another format and size
    bool large;
    Flush flush;
    Random& random;
};

GuardedFrame* MakeMedia(GuardedFrame*, const Case& of) {
    static const unsigned kPaddings[] = {0, 0, 1, 3, 4, 64, GuardedFrame::kOverlapping};
    const size_t count = Formats().size() * Sizes().size();
    const size_t place = size_t{of.number} * 1009 % count; // a prime that does not divide it
    const auto large = [&] { return static_cast<unsigned>(of.random.Within(257, 1031)); };
    const auto [width, height] = of.large ? std::pair{large(), large()} : Sizes()[place % Sizes().size()];
    return new GuardedFrame({Formats()[place / Sizes().size()], width, height, of.random.AnyOf(kPaddings), 0,
                             of.random() % 2 == 0},
                            of.flush, of.random());
}

GuardedSound* MakeMedia(GuardedSound*, const Case& of) {
    static const unsigned kRates[] = {0,     1,     199,    200,       201,         8000,       44100,
                                      48000, 96000, 768000, 858993460, 2147483647u, 4294967295u};
    static const int kChannels[] = {1, 2, 2, 3, 6, 8, 0, -1, 65};
    static const int kShort[] = {0, 0, 0, 0, 1, -1, -3, -1000};
    const bool plain = of.random() % 2; // as "audio_volume" wants it
    Random& random = of.random;
    const test::SoundShape shape = {plain ? int{sfSigned16} : static_cast<int>(of.number % 13) - 1,
                                    random.AnyOf(kRates),
                                    random.AnyOf(kChannels),
                                    plain || random() % 2,
                                    random() % 2 == 0,
                                    random() % (of.large          ? 100000u
                                                : random.OneIn(2) ? 10u
                                                                  : 2000u)};
    const auto full = static_cast<long long>(GuardedSound::BytesOf(
        {shape.format, shape.rate, std::max(shape.channels, 1), shape.interleaved, true, shape.samples}));
    const long long bytes = std::max(0LL, full + random.AnyOf(kShort));
    auto* sound = new GuardedSound(shape, static_cast<size_t>(bytes), of.flush, random());
    sound->hasBuffers = !random.OneIn(16);
    sound->time = random() % 2 ? random() % 200 : random();
    return sound;
}

std::string Describe(const GuardedFrame& frame) {
    return test::Describe(frame.shape) + (frame.subset ? ", of two views" : "");
}
std::string Describe(const GuardedSound& sound) {
    const test::SoundShape& shape = sound.shape;
    return "format " + std::to_string(shape.format) + ", " + std::to_string(shape.samples) + " samples at " +
           std::to_string(shape.rate) + " Hz, " + std::to_string(shape.channels) + " channels in " +
           std::to_string(sound.Count()) + " buffers" + (sound.hasBuffers ? "" : " that are missing") +
           (sound.Count() ? " of " + std::to_string(sound.Bytes(0)) + " bytes" : "") + ", at " +
           std::to_string(sound.time);
}

void AddSecondView(GuardedFrame& frame, GuardedFrame* second) { frame.subset = second; }
void AddSecondView(GuardedSound&, GuardedSound*) {}

struct Life {
    unsigned frames = 0;
    std::string finding;
};

// One life of a processor: some frames with changing sizes, formats, times and properties.
template <class Media>
Life Live(const EffectInfo& effect, unsigned number) {
    Random random(number);
    static const unsigned kMasks[] = {0x6, 0x7, 0x1FF, 0x3FF, ~0u};
    static const int kTimes[] = {0, 1, -1, 50, 99, 100, 2147483647, std::numeric_limits<int>::min()};
    const unsigned mask = random.AnyOf(kMasks);
    Trial<Media> trial([&] { return test::Kind<Media>::Create(effect.name, test::Sources()); }, mask);
    const bool large = random.OneIn(64);
    std::string settings;
    Life life;
    const auto make = [&](bool another) {
        const unsigned at = number + (another ? ++life.frames : life.frames);
        return std::unique_ptr<Media>(MakeMedia(
            static_cast<Media*>(nullptr), {at, large, random() % 2 ? Flush::End : Flush::Start, random}));
    };
    while (life.frames < 3 && life.finding.empty()) {
        const auto set = [&](const PropertyInfo& property) {
            const std::string value = Tamed(property, AnyValue(property, random), large, random);
            settings += " " + std::string(property.name) + "=" + value.substr(0, 30);
            underWay = std::string(effect.name) + ", seed " + std::to_string(number) + ", setting" + settings;
            trial.Set(property.name, value);
        };
        if (random() % 2) set(kDurationProperty);
        for (const PropertyInfo& property : effect.properties)
            if (!random.OneIn(4)) set(property);
        const auto media = make(true), second = make(random() % 2);
        if (random.OneIn(4)) AddSecondView(*media, second.get());
        const bool inPlace = random() % 2;
        underWay = std::string(effect.name) + ", seed " + std::to_string(number) +
                   (inPlace ? ", in place, " : ", copied, ") + Describe(*media) + ", mask " +
                   std::to_string(mask) + ":" + settings;
        if (test::StopsByContract(effect, trial.Proc(), *media)) continue;
        // Where there is no MMX, some effects have other results by definition.
        const bool comparable = !(effect.traits & kDrawsRandom) && mask & kCpuMMX;
        life.finding = trial.Run(*media, random.AnyOf(kTimes), inPlace, comparable);
    }
    return life;
}

unsigned FromEnvironment(const char* name, unsigned otherwise) {
    const char* const text = std::getenv(name);
    return text ? static_cast<unsigned>(std::strtoul(text, nullptr, 10)) : otherwise;
}

size_t casesRun = 0;

class TellCases final : public testing::Environment {
    void TearDown() override { std::printf("%zu cases swept\n", casesRun); }
};
[[maybe_unused]] auto* const tellCases = testing::AddGlobalTestEnvironment(new TellCases);

template <class Media>
void Sweep(const EffectInfo& effect) {
    const unsigned cases = FromEnvironment("AVEFFECT_SWEEP_CASES", 200);
    const unsigned seed = FromEnvironment("AVEFFECT_SWEEP_SEED", 1);
    for (unsigned n = 0; n < cases && !testing::Test::HasFailure();) {
        Life life;
        const std::string left = test::LeftBehind([&] { life = Live<Media>(effect, seed + n); });
        EXPECT_EQ(life.finding + left, "") << underWay;
        n += life.frames;
        casesRun += life.frames;
    }
}

class Robustness : public testing::TestWithParam<std::string> {};

TEST_P(Robustness, NothingAHostDoesByAccidentTakesItDown) {
    test::ListenForDeaths();
    test::Sources();
    av_log_set_level(AV_LOG_ERROR);
    const EffectInfo& effect = *FindEffect(GetParam());
    if (effect.kind == EffectKind::Audio)
        Sweep<GuardedSound>(effect);
    else
        Sweep<GuardedFrame>(effect);
}

std::vector<std::string> EffectNames() {
    std::vector<std::string> names;
    for (const EffectInfo& effect : kVideoEffects) names.push_back(effect.name);
    for (const EffectInfo& effect : kAudioEffects) names.push_back(effect.name);
    return names;
}

INSTANTIATE_TEST_SUITE_P(Every, Robustness, testing::ValuesIn(EffectNames()),
                         [](const auto& test) { return test.param; });

struct Freer {
    void operator()(IRawVideoFrame* frame) const { frame->Free(); }
};

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

std::string Try(Faulty::Mistake mistake, Flush flush = Flush::Start) {
    test::ListenForDeaths();
    const unsigned patience = std::exchange(test::secondsPerCall, 1);
    underWay = "a mistake";
    std::string finding;
    const std::string left = test::LeftBehind([&] {
        Trial<GuardedFrame> trial([&] { return new Faulty(mistake); }, 0x7);
        finding = trial.Run({{BGRA, 5, 3}, flush, 1}, 0, true, true);
    });
    test::secondsPerCall = patience;
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
    EXPECT_EQ(Try(WriteBehindRows), "bytes beside the frame were changed");
    EXPECT_DEATH(Try(WriteBehindRows, Flush::End), "died: a mistake");
    EXPECT_DEATH(Try(DivideByFormat), "died: a mistake|division by zero");
    static std::vector<std::unique_ptr<IRawVideoFrame, Freer>>
        forgotten; // for the rest of the test, no longer
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
