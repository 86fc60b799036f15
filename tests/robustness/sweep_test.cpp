// Every effect of the catalogue on frames between protected pages, with settings as far out as text can say.
// What it asks: no crash, no endless call, no byte touched outside the frame, the copy made from the frame as
// it was, and the same bytes at every level of the processor.
//
// AVEFFECT_SWEEP_CASES says how many cases, AVEFFECT_SWEEP_SEED where they begin.
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <string>

#include "aveffect/base_media.h"
#include "aveffect/catalogue.h"
#include "tests/robustness/guarded_frame.h"
#include "tests/support/effect_cases.h"
#include "tests/support/picture_manager.h"

namespace {

using namespace AVBased;
using test::GuardedFrame;
using test::GuardedFramePtr;
using test::GuardedMemory;

// Random numbers as unsigned ones.
class Random {
public:
    explicit Random(unsigned seed)
        : m_Engine(seed) {}
    unsigned operator()() { return static_cast<unsigned>(m_Engine()); }

private:
    std::mt19937 m_Engine;
};

constexpr unsigned kSecondsPerCall = 20;

// What is under way, for those who must say so when a call does not come back.
std::string underWay;

constexpr int kDeaths[] = {SIGALRM, SIGSEGV, SIGBUS, SIGFPE, SIGABRT};
struct sigaction before[std::size(kDeaths)];

// Says what was under way, and leaves the rest to who would have had the signal: a sanitizer, the system.
void Tell(int signal) {
    const auto write = [](const char* text, size_t size) {
        [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, text, size);
    };
    write(signal == SIGALRM ? "took too long: " : "died: ", signal == SIGALRM ? 15 : 6);
    write(underWay.data(), underWay.size());
    write("\n", 1);
    for (size_t i = 0; i < std::size(kDeaths); ++i)
        if (kDeaths[i] == signal) sigaction(signal, &before[i], nullptr);
    if (signal == SIGALRM || signal == SIGABRT) raise(signal);
}

void ListenForDeaths() {
    static const bool once = [] {
        struct sigaction tell {};
        tell.sa_handler = Tell;
        for (size_t i = 0; i < std::size(kDeaths); ++i) sigaction(kDeaths[i], &tell, &before[i]);
        return true;
    }();
    static_cast<void>(once);
}

template <class T, size_t N>
const T& AnyOf(const T (&choices)[N], Random& random) {
    return choices[random() % N];
}

int Within(int low, int high, Random& random) {
    return low + static_cast<int>(random() % (static_cast<unsigned>(high - low) + 1));
}

// The files that transitions read: small and large, tall and wide, of several formats.
AVBased::IAVManager* Manager() {
    struct Sources {
        std::vector<GuardedFramePtr> pictures;
        test::PictureManager manager;

        Sources() {
            unsigned seed = 0;
            for (const auto& [name, shape] : {std::pair{"first", test::Shape{BGRA, 40, 30}},
                                              {"second", {YUV420P, 17, 50, 3}},
                                              {"dot", {BGRA, 1, 1}},
                                              {"line", {YUV444P, 64, 1}}}) {
                pictures.emplace_back(new GuardedFrame(shape, GuardedMemory::Flush::End, ++seed));
                manager.sources[name] = {pictures.back().get()};
            }
        }
    };
    static Sources sources;
    sources.manager.opened.clear();
    return &sources.manager;
}

// What a property may be set to: far beyond its range, at its ends, inside, or no number at all.
std::string AnyValue(const PropertyInfo& property, Random& random) {
    static const std::string kOdd[] = {"0",
                                       "1",
                                       "-1",
                                       "2",
                                       "-2",
                                       "15",
                                       "255",
                                       "256",
                                       "65535",
                                       "65536",
                                       "-32768",
                                       "2147483647",
                                       "-2147483648",
                                       "4294967295",
                                       "1e308",
                                       "-1e308",
                                       "1e-310",
                                       "0.5",
                                       "nan",
                                       "inf",
                                       "-inf",
                                       "",
                                       "none",
                                       "0x20",
                                       std::string(5000, '9'),
                                       "7" + std::string(5000, 'x')};
    const auto number = [&](double x) {
        return property.type == kDouble ? std::to_string(x) : std::to_string(static_cast<long long>(x));
    };
    static const std::string kPaths[] = {"first", "second", "dot", "line", "missing", "first?vstreamid=1"};
    if (property.kind == ValueKind::Path && random() % 8) return AnyOf(kPaths, random);
    switch (random() % 4) {
    case 0:
        return AnyOf(kOdd, random);
    case 1:
        return number(random() % 2 ? property.minimum : property.maximum);
    case 2: {
        const double share = random() / 4294967295.0;
        return number(property.minimum + share * (property.maximum - property.minimum));
    }
    default: // as large as the pictures are
        return number(Within(-5, 70, random));
    }
}

// What is stated to stop the program, and what has no upper limit on its work but the value's.
std::string Tamed(const PropertyInfo& property, std::string value, bool large, Random& random) {
    const std::string_view name = property.name;
    const bool counts = name == "blur_count" || name == "sharpen_count";
    if (counts) return std::to_string(Within(0, large ? 3 : 300, random));
    if (name == "render_3d_mode" && std::atoi(value.c_str()) < 0) return "2";
    return value;
}

test::Shape AnyShape(Random& random, bool large, bool withAlphaPlane) {
    static const unsigned kFormats[] = {BGRA,     BGRA,     YUV420P,  YUV422P,  YUV410P, YUV411P,
                                        YUVJ420P, YUVJ422P, YUVA420P, YUVA444P, YUV444P, RGB24};
    const auto size = [&] {
        return static_cast<unsigned>(large ? Within(257, 1031, random)
                                           : Within(1, random() % 2 ? 8 : 65, random));
    };
    static const unsigned kPaddings[] = {0, 0, 1, 3, 4, 64};
    const unsigned width = size(), height = size();
    unsigned format = AnyOf(kFormats, random);
    if (!withAlphaPlane && (format == YUVA420P || format == YUVA444P)) format = YUV420P;
    return {format, width, height, AnyOf(kPaddings, random), 0, random() % 2 == 0};
}

// A processor, and one of another level that must do the same.
class Pair {
public:
    Pair(const EffectInfo& effect, unsigned mask)
        : m_Mask(mask)
        , m_Comparable(!(effect.traits & kDrawsRandom))
        , m_Proc(test::CreateVideo(effect.name, Manager())) {
        const test::FeatureMask hidden(m_Mask);
        m_Other.reset(test::CreateVideo(effect.name, Manager()));
    }
    void Set(const char* property, const std::string& value) {
        m_Proc->SetProperty(property, value.c_str());
        m_Other->SetProperty(property, value.c_str());
    }
    void Run(const test::Shape& shape, GuardedMemory::Flush flush, unsigned seed, int time, bool inPlace) {
        const auto make = [&](unsigned from) {
            return GuardedFramePtr(new GuardedFrame(shape, flush, from));
        };
        const GuardedFramePtr frame = make(seed), other = make(seed), original = make(seed);
        ImagePostion position{};
        GuardedFrame *result = frame.get(), *otherResult = other.get();
        alarm(kSecondsPerCall);
        if (inPlace) {
            m_Proc->ProcFrameInPlace(&position, time, frame.get());
        } else {
            result = static_cast<GuardedFrame*>(m_Proc->ProcFrame(&position, time, frame.get()));
            EXPECT_TRUE(frame->Equals(*original)) << "the host's frame was changed: " << underWay;
        }
        {
            const test::FeatureMask hidden(m_Mask);
            if (inPlace)
                m_Other->ProcFrameInPlace(&position, time, other.get());
            else
                otherResult = static_cast<GuardedFrame*>(m_Other->ProcFrame(&position, time, other.get()));
        }
        alarm(0);
        EXPECT_TRUE(frame->WatchedBytesAreWhole()) << "bytes beside the frame were changed: " << underWay;
        if (!result || !otherResult) {
            EXPECT_EQ(result, otherResult) << underWay;
            return;
        }
        EXPECT_TRUE(result->WatchedBytesAreWhole()) << "bytes beside the copy were changed: " << underWay;
        EXPECT_TRUE(!m_Comparable || result->Equals(*otherResult)) << "levels differ: " << underWay;
    }

private:
    unsigned m_Mask;
    bool m_Comparable;
    test::VideoProc m_Proc, m_Other;
};

// One life of a processor: some frames with changing sizes, formats, times and properties.
unsigned Sweep(const EffectInfo& effect, unsigned seed) {
    Random random(seed);
    static const unsigned kMasks[] = {0x7, 0x1FF, 0x3FF, ~0u};
    static const int kTimes[] = {0, 1, -1, 50, 99, 100, 2147483647, std::numeric_limits<int>::min()};
    const unsigned mask = AnyOf(kMasks, random);
    Pair pair(effect, mask);
    const bool large = random() % 64 == 0;
    const bool withAlphaPlane = effect.kind != EffectKind::Stereo; // anaglyphs are stated to stop there
    test::Shape shape = AnyShape(random, large, withAlphaPlane);
    std::string settings;
    const unsigned frames = 2 + random() % 3;
    for (unsigned i = 0; i < frames; ++i) {
        const auto set = [&](const PropertyInfo& property) {
            const std::string value = Tamed(property, AnyValue(property, random), large, random);
            settings += " " + std::string(property.name) + "=" + value.substr(0, 30);
            underWay = std::string(effect.name) + ", seed " + std::to_string(seed) + ", setting" + settings;
            pair.Set(property.name, value);
        };
        if (random() % 2) set(kDurationProperty);
        for (const PropertyInfo& property : effect.properties)
            if (random() % 4 != 0) set(property);
        if (random() % 3 == 0) shape = AnyShape(random, large, withAlphaPlane);
        const auto flush = random() % 2 ? GuardedMemory::Flush::End : GuardedMemory::Flush::Start;
        const bool inPlace = random() % 2;
        underWay = std::string(effect.name) + ", seed " + std::to_string(seed) + ", frame " +
                   std::to_string(i) + (inPlace ? ", in place, " : ", copied, ") + test::Describe(shape) +
                   ", mask " + std::to_string(mask) + ":" + settings;
        pair.Run(shape, flush, random(), AnyOf(kTimes, random), inPlace);
    }
    return frames;
}

unsigned FromEnvironment(const char* name, unsigned otherwise) {
    const char* const text = std::getenv(name);
    return text ? static_cast<unsigned>(std::strtoul(text, nullptr, 10)) : otherwise;
}

class Robustness : public testing::TestWithParam<std::string> {};

TEST_P(Robustness, NothingAHostDoesByAccidentTakesItDown) {
    ListenForDeaths();
    const EffectInfo& effect = *FindEffect(GetParam());
    const unsigned cases = FromEnvironment("AVEFFECT_SWEEP_CASES", 200);
    const unsigned seed = FromEnvironment("AVEFFECT_SWEEP_SEED", 1);
    for (unsigned n = 0; n < cases && !HasFailure(); n += Sweep(effect, seed + n)) {
    }
}

std::vector<std::string> EffectNames() {
    std::vector<std::string> names;
    for (const EffectInfo& effect : kVideoEffects) names.push_back(effect.name);
    return names;
}

INSTANTIATE_TEST_SUITE_P(Every, Robustness, testing::ValuesIn(EffectNames()),
                         [](const auto& test) { return test.param; });

} // namespace
