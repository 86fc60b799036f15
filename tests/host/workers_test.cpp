/// Pictures that several threads make: the bytes are those that one makes.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <set>

#include <gtest/gtest.h>

#include "aveffect/catalogue.h"
#include "host/jobs/transition.h"
#include "host/settings/value_text.h"
#include "tests/host/clips.h"
#include "tests/support/busy_settings.h"

namespace {

using AVBased::EffectInfo;
using clips::Bytes;

using clips::kGoOn;
constexpr ptrdiff_t kYuvBytes = 96 * 64 * 3 / 2;
constexpr unsigned kWorkers[] = {2, 3, 8};

Bytes ReadAll(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// What every render here starts from: two clips, and the same random numbers.
class Workers : public testing::Test {
protected:
    /// Settings with which the effect has something to do on these clips.
    aveffect::EffectSpec Busy(const EffectInfo& effect) const {
        if (effect.kind == AVBased::EffectKind::Transition)
            return {effect.name,
                    {{"EffectPropVFPath1", m_first},
                     {"EffectPropVFPath2", m_second},
                     {"EffectPropSourceDur", "500"}}};
        aveffect::EffectSpec spec{effect.name, {}};
        for (const char* at = test::kBusyValues; *at; at += std::strlen(at) + 1) {
            const char* const equals = std::strchr(at, '=');
            const std::string name(at, equals);
            for (const auto& property : effect.properties)
                if (name == property.name) spec.properties.push_back({name, equals + 1});
        }
        return spec;
    }

    /// The same settings on the move, on a part, blended.
    aveffect::EffectSpec Moving(const EffectInfo& effect) const {
        std::string text(effect.shortName);
        for (const aveffect::PropertySetting& busy : Busy(effect).properties) {
            const AVBased::PropertyInfo& property = *AVBased::FindProperty(effect, busy.name);
            std::string value = busy.value;
            if (property.kind == AVBased::ValueKind::Number) {
                const double half = std::max(property.minimum, std::floor(std::stod(value)) / 2);
                const std::string other =
                    aveffect::NumberText(property.type == AVBased::kDouble ? half : std::ceil(half));
                value = "0=" + value + ";0.2|=" + other + ";100%=" + value;
            }
            text += ":" + busy.name + "=" + value;
        }
        return aveffect::ParseEffect(
            text + ":@from=0.08:@to=-0.08:@mix=0=100;50%|=70;0.36=100:"
                   "@area=0.2=ellipse,0,0,80,80;100%=ellipse,20,20,80,80:@mask-feather=0=0;100%=20%",
            false);
    }

    aveffect::RenderOptions Options(std::vector<aveffect::EffectSpec> effects) const {
        aveffect::RenderOptions options;
        options.input = m_first;
        options.effects = std::move(effects);
        SetOutput(options);
        return options;
    }

    void SetOutput(aveffect::OutputOptions& options) const {
        options.output = m_directory / "out.yuv";
        options.format = "rawvideo";
        options.overwrite = true;
    }

    /// The call renders with as many threads as it is told.
    template <typename Call>
    Bytes Made(const Call& call, unsigned threads) const {
        std::srand(1);
        call(threads);
        return ReadAll(m_directory / "out.yuv");
    }

    template <typename Call>
    void ExpectSameOnAll(const Call& call, const std::string& what) const {
        const Bytes one = Made(call, 1);
        ASSERT_FALSE(one.empty()) << what;
        for (const unsigned workers : kWorkers) EXPECT_TRUE(Made(call, workers) == one) << what << workers;
    }

    void ExpectSameRender(aveffect::RenderOptions options, const std::string& what) const {
        const auto render = [&](unsigned threads) {
            options.threads = threads;
            clips::Render(options, kGoOn);
        };
        ExpectSameOnAll(render, what);
    }

    clips::TemporaryDirectory m_directory;
    std::string m_first =
        clips::Make(m_directory / "first.nut", "96x64", 25, 0.6, "-c:v rawvideo -pix_fmt yuv420p");
    std::string m_second = clips::Make(m_directory / "second.nut", "96x64", 25, 0.6,
                                       "-vf negate -c:v rawvideo -pix_fmt yuv420p");
};

TEST_F(Workers, MakeTheSameOfEveryEffect) {
    for (const EffectInfo& effect : AVBased::kVideoEffects)
        for (const char* const format : {"yuv420p", "bgra"}) {
            auto options = Options({Busy(effect)});
            options.pixelFormat = format;
            ExpectSameRender(options, std::string(effect.shortName) + " " + format + " ");
        }
}

// Several threads, a part of the clip, a single picture: each comes out as in a whole render on one thread.
TEST_F(Workers, MakeTheSameOfSettingsThatMove) {
    for (const EffectInfo& effect : AVBased::kVideoEffects) {
        auto options = Options({Moving(effect)});
        options.pixelFormat = "yuv420p";
        const auto render = [&](unsigned threads) {
            options.threads = threads;
            clips::Render(options, kGoOn);
        };
        const Bytes whole = Made(render, 1);
        EXPECT_TRUE(Made(render, 3) == whole) << effect.shortName;
        options.fromMs = 200;
        options.toMs = 400;
        const auto part = whole.begin() + 5 * kYuvBytes;
        EXPECT_TRUE(Made(render, 2) == Bytes(part, part + 5 * kYuvBytes)) << effect.shortName << ", cut";
        options.fromMs.reset();
        options.toMs.reset();
        options.output = m_directory / "all%02d.bmp";
        options.format.clear();
        render(2);
        for (const int picture : {0, 2, 7, 13}) {
            aveffect::FrameOptions frame;
            frame.input = options.input;
            frame.effects = options.effects;
            frame.pixelFormat = options.pixelFormat;
            frame.atMs = picture * 40;
            frame.output = m_directory / "one.bmp";
            frame.overwrite = true;
            aveffect::RenderFrame(clips::ThePlugin(), frame, {}, kGoOn);
            const std::string number = std::to_string(picture + 101).substr(1);
            EXPECT_TRUE(ReadAll(frame.output) == ReadAll(m_directory / ("all" + number + ".bmp")))
                << effect.shortName << " picture " << picture;
        }
    }
}

// A moving area, and a mask from a file, let through what is before the effect elsewhere.
TEST_F(Workers, KeepToTheirPlace) {
    const std::string mask = clips::Make(
        m_directory / "mask.nut", "48x32", 1, 1,
        "-vf lutyuv=y=16:u=128:v=128,drawbox=x=24:w=24:h=32:c=white:t=fill -c:v rawvideo -pix_fmt gray");
    const auto made = [this](const std::string& effect) {
        auto options = Options({aveffect::ParseEffect(effect, false)});
        options.pixelFormat = "bgra";
        options.outputFormat = "bgra";
        return Made([&](unsigned) { clips::Render(options, kGoOn); }, 2);
    };
    const Bytes plain = made("invert:@mix=0"), inverted = made("invert");
    ASSERT_EQ(plain.size(), inverted.size());
    const Bytes masked = made("invert:@mask=" + mask), half = made("invert:@area=rectangle,50,0,50,100"),
                away = made("invert:@area=0|=rectangle,50,0,50,100;0.2=rectangle,100,0,0,0");
    constexpr size_t kRow = 96 * 4, kPicture = kRow * 64;
    for (size_t at = 0; at < plain.size(); ++at) {
        const size_t column = at % kRow / 4;
        const bool right = column >= 48;
        ASSERT_EQ(half[at], right ? inverted[at] : plain[at]) << at;
        const bool edge = column >= 44 && column < 52; // of the mask, which is stretched
        ASSERT_TRUE(edge || masked[at] == (right ? inverted[at] : plain[at])) << at;
        ASSERT_EQ(away[at], right && at < 5 * kPicture ? inverted[at] : plain[at]) << at;
    }
}

// Random effects among others, which all come to the same numbers; percentages; two views; other sizes.
TEST_F(Workers, MakeTheSameOfMixedChains) {
    using namespace AVBased::catalogue;
    const auto busy = [this](auto... effect) { return std::vector{Busy(effect)...}; };
    ExpectSameRender(Options(busy(kAddNoise, kRotate, kAtomize, kOilPainting, kAddNoise, kSpherize)),
                     "random ");
    ExpectSameRender(Options({aveffect::ParseEffect("rotate/twirl", false), Busy(kAddNoise),
                              aveffect::ParseEffect("spherize/pinch", false)}),
                     "percentages ");
    auto views = Options(busy(kAddNoise, kRotate, k3DRender, kGaussBlur));
    views.stereo.layout = aveffect::StereoLayout::SideBySide;
    ExpectSameRender(views, "halves ");
    views.stereo = {m_second, {}};
    ExpectSameRender(views, "two clips ");
    auto framed = Options(busy(kTileReflect, kFadeIn));
    framed.framing.width = aveffect::Extent{120, false};
    framed.framing.height = aveffect::Extent{120, false};
    framed.memory = 1; // one picture at a time
    ExpectSameRender(framed, "framed ");
}

TEST_F(Workers, BeginAnewWithThePartWhereThatIsAsked) {
    auto options = Options({aveffect::ParseEffect("invert:@from=0.08:@to=50%", false)});
    options.fromMs = 200;
    options.restart = true;
    const Bytes part = Made([&](unsigned) { clips::Render(options, kGoOn); }, 1);
    ASSERT_EQ(part.size(), 10u * kYuvBytes);
    options.effects = {aveffect::ParseEffect("invert:@mix=0:@from=0", false)};
    const Bytes plain = Made([&](unsigned) { clips::Render(options, kGoOn); }, 1);
    for (int picture = 0; picture < 10; ++picture) // the part lasts 400 ms
        EXPECT_EQ(std::equal(part.begin() + picture * kYuvBytes, part.begin() + (picture + 1) * kYuvBytes,
                             plain.begin() + picture * kYuvBytes),
                  picture < 2 || picture >= 5)
            << picture;
}

TEST_F(Workers, MakeTheSameOfEveryTransition) {
    for (const EffectInfo& effect : AVBased::kVideoEffects) {
        if (effect.kind != AVBased::EffectKind::Transition) continue;
        aveffect::TransitionOptions transition{{}, effect.name, m_first, m_second, 400, 40, 80, 80};
        SetOutput(transition.film);
        for (const bool live : {false, true}) {
            transition.live = live;
            ExpectSameOnAll(
                [&](unsigned threads) {
                    transition.film.threads = threads;
                    aveffect::RenderTransition(clips::ThePlugin(), transition, {}, kGoOn);
                },
                effect.name + std::string(live ? " live " : " still "));
        }
    }
}

TEST_F(Workers, MakeTheSameFilmAndSheet) {
    aveffect::JoinOptions join{{}, {{m_first}, {m_second}, {m_first, 120}}, {{"crossfade", 80}}};
    SetOutput(join.film);
    ExpectSameOnAll(
        [&](unsigned threads) {
            join.film.threads = threads;
            aveffect::RenderJoin(clips::ThePlugin(), join, {}, kGoOn);
        },
        "join ");
    aveffect::SheetOptions sheet{m_first, m_second, m_directory / "sheet.bmp", {}, 0, true};
    const auto draw = [&](unsigned threads) {
        sheet.threads = threads;
        aveffect::RenderSheet(clips::ThePlugin(), sheet, {}, kGoOn);
        return ReadAll(sheet.output);
    };
    const Bytes one = draw(1);
    for (const unsigned workers : kWorkers) EXPECT_TRUE(draw(workers) == one) << workers;
}

// Every picture is see-through, and every worker finds that it can't stay so.
TEST_F(Workers, SayOnceWhatAllOfThemFind) {
    std::multiset<std::string> said;
    aveffect::RenderObserver observer;
    observer.note = observer.warning = [&](const std::string& text) { said.insert(text); };
    auto options = Options({Busy(AVBased::catalogue::kOilPainting)});
    options.input = clips::Make(m_directory / "clear.nut", "96x64", 25, 0.6,
                                "-vf format=rgba,colorchannelmixer=aa=0.5 -c:v rawvideo -pix_fmt bgra");
    options.outputFormat = "yuv420p";
    options.threads = 3;
    aveffect::Render(clips::ThePlugin(), options, observer, kGoOn);
    EXPECT_EQ(std::ranges::count_if(said, [](const auto& text) { return text.ends_with("become opaque"); }),
              1);
    for (const std::string& text : said) EXPECT_EQ(said.count(text), 1) << text;
}

} // namespace
