// The modules in this process: names, values, memory at its limits.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <fstream>
#include <limits>
#include <set>
#include <thread>

#include "tests/adapters/frei0r_modules.h"
#include "tests/support/guarded_bytes.h"
#ifdef AVEFFECT_COUNTS_BLOCKS
#include "tests/memory/allocation_count.h"
#endif

namespace {

using namespace test;

using Pixels = std::vector<uint32_t, GuardedAllocator<uint32_t>>;

Pixels MakePixels(size_t count, unsigned seed, Flush flush = Flush::End) {
    Pixels pixels(count, GuardedAllocator<uint32_t>(flush));
    for (size_t i = 0; i < count; ++i) pixels[i] = static_cast<uint32_t>((i + seed) * 2654435761u ^ i << 7);
    return pixels;
}

Pixels Filtered(const Module& module, std::string_view values, unsigned width, unsigned height,
                const Pixels& in) {
    const Effect effect(module, width, height);
    effect.Set(std::string(values));
    Pixels out(in.size());
    effect.Update(in.data(), out.data());
    return out;
}

TEST(Modules, KeepTheirNamesAndTheOrderOfTheirParameters) {
    static const char* const kTypes[] = {"switch", "number", "colour", "position", "text"};
    std::set<std::string> names;
    std::ifstream file(AVEFFECT_TEST_DATA "/frei0r_parameters.txt");
    for (std::string line; std::getline(file, line);) {
        const Module module(line.substr(0, line.find(' ')));
        std::string actual = *names.insert(line.substr(0, line.find(' '))).first;
        actual += module.Mixes() ? " mixer" : " filter";
        for (const auto& parameter : module.parameters)
            actual += std::string(" ") + parameter.name + ":" + kTypes[parameter.type];
        EXPECT_EQ(actual, line);
    }
    for (const auto& effect : AVBased::kVideoEffects)
        EXPECT_EQ(names.count(ModuleName(effect.shortName)), 1u) << effect.shortName;
    EXPECT_EQ(names.size(), AVBased::kVideoEffects.size());
}

// Out of 0..1 counts as its end, no number as the default, and so does a default in as many digits as hosts
// keep; presets stand for what is at its default.
TEST(Modules, HoldValuesToTheirRangesAndKnowTheirDefaults) {
    const Pixels in = MakePixels(64 * 48, 1);
    for (const auto& [name, values, same] : {std::tuple("edge_light", "-5000", "0"),
                                             {"edge_light", "7", "1"},
                                             {"edge_light", "nan", ""},
                                             {"edge_light", "-inf", ""},
                                             {"edge_light", "0.505882", ""},
                                             {"portrait", "#000000|0.185185", ""},
                                             {"tile_reflect", "0.583333|1|0.08", ""},
                                             {"mosaic", "0|0|0|0|0|pixelate", "0|0|1|1|0.133333"},
                                             {"transparency", "0.25|half", "0.25"},
                                             {"brightness_contrast", "0.5|0.5|0.5|punchy", "0.5|0.6|0.3"}}) {
        const Module module(std::string("aveffect_") + name);
        const Pixels out = Filtered(module, values, 64, 48, in);
        EXPECT_EQ(out, Filtered(module, same, 64, 48, in)) << name << " " << values;
        EXPECT_NE(out, in) << name << " " << values;
    }
    EXPECT_EQ(Filtered(Module("aveffect_edge_light"), "0.6|nonsense", 64, 48, in), in) << "no such preset";
}

// Whatever was set before. Defaults are set as GStreamer does: to what an instance of another size says they
// are.
TEST(Modules, FollowTheirPresentSettingsAlone) {
    const Pixels in = MakePixels(64 * 48, 2);
    for (const FilterCase& filter : kFilterCases) {
        if (DrawsRandom(filter.effect)) continue;
        const Module module(ModuleName(filter.effect));
        const Effect effect(module, 64, 48), other(module, 640, 480);
        Pixels first(in.size()), last(in.size());
        effect.Update(in.data(), first.data());
        effect.Set(std::string(filter.values));
        effect.Update(in.data(), last.data());
        EXPECT_NE(last, in) << filter.effect;
        for (int index = 0; index < module.info.num_params; ++index) {
            alignas(double) std::array<char, 16> value{};
            other.GetRaw(index, value.data());
            effect.SetRaw(index, value.data());
        }
        effect.Update(in.data(), last.data());
        EXPECT_EQ(last, first) << filter.effect;
    }
}

// fade-out: A x ((d - p) x 256 / d) / 256; push: the second picture follows the first one out; crossfade: the
// mean, and the first one's alpha.
TEST(Modules, ComeAsFarAsProgressSays) {
    constexpr unsigned kWidth = 64, kHeight = 8;
    const Pixels first = MakePixels(kWidth * kHeight, 3), second = MakePixels(first.size(), 4);
    const Pixels faded = Filtered(Module("aveffect_fade_out"), "0.25", kWidth, kHeight, first);
    Pixels pushed(first.size()), crossed(first.size());
    const auto mixed = [&](const char* name, Pixels& out) {
        const Module module(name);
        const Effect effect(module, kWidth, kHeight);
        effect.Set("0.5");
        effect.Update(first.data(), out.data(), second.data());
    };
    mixed("aveffect_push", pushed);
    mixed("aveffect_crossfade", crossed);
    for (size_t i = 0; i < first.size(); ++i) {
        const size_t x = i % kWidth;
        ASSERT_EQ(faded[i], (first[i] & 0xFFFFFF) | ((first[i] >> 24) * 192 >> 8) << 24);
        ASSERT_EQ(pushed[i], x < 32 ? first[i + 32] : second[i - 32]);
        const auto mean = [&](int shift) {
            return ((first[i] >> shift & 255) + (second[i] >> shift & 255)) / 2 << shift;
        };
        ASSERT_EQ(crossed[i], (first[i] & 0xFF000000) | mean(16) | mean(8) | mean(0));
    }
}

Pixels WithBytesRotated(Pixels pixels) {
    for (uint32_t& pixel : pixels) pixel = pixel << 8 | pixel >> 24;
    return pixels;
}

// Bytes in another order come out in that order where a module says that hosts may choose, and only there.
TEST(Modules, LeaveTheOrderOfBytesToHostsWhereItDoesNotMatter) {
    constexpr unsigned kWidth = 61, kHeight = 47;
    const Pixels first = MakePixels(kWidth * kHeight, 11), second = MakePixels(first.size(), 12);
    for (const auto& row : AVBased::kVideoEffects) {
        if (row.traits & AVBased::kDrawsRandom) continue;
        const Module module(ModuleName(row.shortName));
        std::vector<std::string> settings;
        for (int step = 0; module.Mixes() && step <= 60; ++step)
            settings.push_back(std::to_string(step / 60.0));
        if (!module.Mixes()) {
            settings = {
                std::string(std::ranges::find(kFilterCases, row.shortName, &FilterCase::effect)->values)};
            for (const auto& preset : row.presets) settings.emplace_back(preset.name);
        }
        bool alike = true;
        for (const std::string& values : settings) {
            const Effect effect(module, kWidth, kHeight);
            if (&values != &settings.front() && !module.Mixes())
                effect.Set(module.info.num_params - 1, values);
            else
                effect.Set(values);
            const auto run = [&](const Pixels& one, const Pixels& other) {
                Pixels out(one.size());
                effect.Update(one.data(), out.data(), module.Mixes() ? other.data() : nullptr);
                return out;
            };
            alike = alike && run(WithBytesRotated(first), WithBytesRotated(second)) ==
                                 WithBytesRotated(run(first, second));
        }
        EXPECT_EQ(module.info.color_model, alike ? F0R_COLOR_MODEL_PACKED32 : F0R_COLOR_MODEL_BGRA8888)
            << row.shortName;
    }
}

// Between protected pages, as slices and odd pictures of hosts lie; in place and not; whatever the time.
TEST(Modules, StayWithinPicturesOfAnySize) {
    for (const auto& row : AVBased::kVideoEffects) {
        const Module module(ModuleName(row.shortName));
        const auto* const filter = std::ranges::find(kFilterCases, row.shortName, &FilterCase::effect);
        for (const auto& [width, height] :
             {std::pair(1u, 1u), {2u, 3u}, {7u, 5u}, {33u, 17u}, {1u, 40u}, {122u, 2u}, {0u, 4u}})
            for (const Flush flush : {Flush::Start, Flush::End}) {
                const size_t count = size_t{width} * height;
                const Pixels first = MakePixels(count, 5, flush), second = MakePixels(count, 6, flush);
                const uint32_t* const other = module.Mixes() ? second.data() : nullptr;
                const Effect effect(module, width, height);
                effect.Set(module.Mixes() ? "0.4" : std::string(filter->values));
                Pixels out(count, GuardedAllocator<uint32_t>(flush)), overFirst = first, overSecond = second;
                effect.Update(first.data(), out.data(), other, std::numeric_limits<double>::quiet_NaN());
                const std::string where =
                    std::string(row.shortName) + " " + std::to_string(width) + "x" + std::to_string(height);
                EXPECT_EQ(first, MakePixels(count, 5)) << where << " changes the host's picture";
                if (row.traits & AVBased::kDrawsRandom) continue;
                effect.Update(overFirst.data(), overFirst.data(), other, 1e30);
                EXPECT_EQ(overFirst, out) << where;
                if (!module.Mixes()) continue;
                effect.Update(first.data(), overSecond.data(), overSecond.data(), 7);
                EXPECT_EQ(overSecond, out) << where;
            }
    }
    const Module module("aveffect_gray");
    EXPECT_FALSE(Effect(module, 1u << 31, 1u << 31).Works());
}

// This program runs under the thread sanitizer too.
TEST(Modules, WorkOnManyThreadsAtOnce) {
    constexpr unsigned kWidth = 48, kHeight = 32;
    const Pixels in = MakePixels(kWidth * kHeight, 7);
    const auto run = [&](const FilterCase& filter) {
        return Filtered(Module(ModuleName(filter.effect)), filter.values, kWidth, kHeight, in);
    };
    std::vector<std::jthread> threads;
    for (size_t thread = 0; thread < 4; ++thread)
        threads.emplace_back([&, thread] {
            for (size_t n = 0; n < std::size(kFilterCases); ++n) {
                const FilterCase& filter = kFilterCases[(n + thread / 2 * 19) % std::size(kFilterCases)];
                const Pixels once = run(filter);
                EXPECT_TRUE(DrawsRandom(filter.effect) || once == run(filter)) << filter.effect;
            }
        });
}

#ifdef AVEFFECT_COUNTS_BLOCKS
// When the n-th block of memory can't be had, for every n, the picture is passed on or is what it should be.
TEST(Modules, PassPicturesOnWithoutMemory) {
    const Pixels first = MakePixels(32 * 24, 8), second = MakePixels(first.size(), 9);
    for (const auto& [name, values] :
         {std::pair("spherize", "0|0|0|0.5|bulge"), {"anaglyph", "0.5"}, {"push", "0.5"}}) {
        const Module module(std::string("aveffect_") + name);
        const uint32_t* const other = module.Mixes() ? second.data() : nullptr;
        const auto live = [&, values = values](Pixels& out) {
            const Effect effect(module, 32, 24);
            if (!effect.Works()) return false;
            effect.Set(values);
            effect.Update(first.data(), out.data(), other);
            return true;
        };
        Pixels expected(first.size());
        ASSERT_TRUE(live(expected) && expected != first) << name;
        bool failed = true;
        for (size_t blocks = 0; failed; ++blocks) {
            Pixels out = first;
            FailAllocationAfter(blocks);
            const bool made = live(out);
            failed = AllocationFailed();
            FailAllocationAfter(kNoLimit);
            EXPECT_TRUE(!made || out == first || out == expected) << name << ", block " << blocks;
        }
    }
}
#endif

} // namespace
