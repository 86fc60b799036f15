// What `list` and `describe` print agrees with the catalogue.
#include <cmath>
#include <fstream>

#include <nlohmann/json.hpp>

#include "aveffect/catalogue.h"
#include "cli/catalogue_text.h"
#include "host/effects/effect_chain.h"
#include "host/settings/value_text.h"
#include "tests/cli/program.h"

namespace {

using nlohmann::json;
using test::IsOneMessage;
using test::Outcome;

class CatalogueOutput : public test::ProgramTest {};

std::vector<const AVBased::EffectInfo*> Effects() {
    std::vector<const AVBased::EffectInfo*> effects;
    effects.reserve(AVBased::kVideoEffects.size() + AVBased::kAudioEffects.size());
    for (const auto& effect : AVBased::kVideoEffects) effects.push_back(&effect);
    for (const auto& effect : AVBased::kAudioEffects) effects.push_back(&effect);
    return effects;
}

void ExpectNumber(const json& value, double number) {
    if (std::isfinite(number)) {
        EXPECT_EQ(value.get<double>(), number);
    } else {
        EXPECT_TRUE(value.is_null());
    }
}

void ExpectProperty(const json& property, const AVBased::PropertyInfo& info) {
    SCOPED_TRACE(info.name);
    EXPECT_EQ(property["name"], info.name);
    EXPECT_EQ(property["unit"], info.unit);
    EXPECT_EQ(property["help"], info.help);
    EXPECT_EQ(property["countsPixels"], info.pixels != AVBased::PixelAxis::None);
    EXPECT_EQ(property["percentOf"].is_null(), info.pixels == AVBased::PixelAxis::None);
    EXPECT_EQ(property["choices"].size(), info.choices.size());
    ExpectNumber(property["minimum"], info.minimum);
    ExpectNumber(property["maximum"], info.maximum);
    ExpectNumber(property["neutral"], info.neutral);
    if (info.kind == AVBased::ValueKind::Number) {
        EXPECT_EQ(property["default"].is_null(), info.InForceAtFirst() == nullptr);
        if (info.InForceAtFirst()) {
            EXPECT_EQ(property["default"].get<double>(), std::stod(info.InForceAtFirst()));
        }
    }
}

// What hosts and their users rely on never changes by itself: names, order, types, default texts and traits
// stand in a file, each of whose values must be there.
void ExpectHolds(const json& actual, const json& pinned, const std::string& where) {
    if (pinned.is_array()) {
        ASSERT_EQ(actual.size(), pinned.size()) << where;
        for (size_t i = 0; i < pinned.size(); ++i) ExpectHolds(actual[i], pinned[i], where);
    } else if (pinned.is_object()) {
        const std::string inside = where + " " + pinned.value("name", "");
        for (const auto& [key, value] : pinned.items()) {
            ASSERT_TRUE(actual.contains(key)) << inside << " " << key;
            ExpectHolds(actual[key], value, inside);
        }
    } else {
        EXPECT_EQ(actual, pinned) << where;
    }
}

TEST_F(CatalogueOutput, JsonKeepsTheContract) {
    std::ifstream file(AVEFFECT_TEST_DATA "/effects/catalogue.json");
    const json pinned = json::parse(file);
    ASSERT_EQ(pinned["effects"].size(), Effects().size());
    ExpectHolds(json::parse(Aveffect({"list", "--json"}).output), pinned, "");
}

TEST_F(CatalogueOutput, JsonHoldsEveryEffectAndProperty) {
    const Outcome outcome = Aveffect({"list", "--json"});
    ASSERT_EQ(outcome.exitCode, 0);
    const json list = json::parse(outcome.output)["effects"];
    ASSERT_EQ(list.size(), Effects().size());
    for (size_t index = 0; index < list.size(); ++index) {
        const auto& info = *Effects()[index];
        SCOPED_TRACE(info.name);
        EXPECT_EQ(list[index]["name"], info.name);
        const json& properties = list[index]["properties"];
        ASSERT_EQ(properties.size(), info.properties.size() + 1);
        for (size_t place = 0; place < info.properties.size(); ++place)
            ExpectProperty(properties[place], info.properties[place]);
        ExpectProperty(properties.back(), AVBased::kDurationProperty);
    }
    const json one = json::parse(Aveffect({"describe", list.back()["name"], "--json"}).output);
    EXPECT_EQ(one, list.back());
}

TEST_F(CatalogueOutput, TextNamesEveryEffectOnceAndEveryProperty) {
    const Outcome outcome = Aveffect({"list"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.messages, "");
    for (const auto* effect : Effects()) {
        const std::string line = "\n  " + std::string(effect->shortName) + " ";
        const size_t place = outcome.output.find(line);
        ASSERT_NE(place, std::string::npos) << effect->name;
        EXPECT_EQ(outcome.output.find(line, place + 1), std::string::npos) << effect->name;
        EXPECT_NE(outcome.output.find(std::string(" ") + effect->name + " ", place), std::string::npos);
        const std::string description = aveffect::DescribeText(*effect);
        for (const auto& property : effect->properties)
            EXPECT_NE(description.find(std::string("\n  ") + property.name + " "), std::string::npos);
    }
    const Outcome described = Aveffect({"describe", "simple_gauss_blur"});
    for (const char* part :
         {"blur_count", "whole number from 0 to 65535", "default 1", "neutral 0", "duration", "ms"})
        EXPECT_NE(described.output.find(part), std::string::npos) << part;
    const std::string mosaic = Aveffect({"describe", "mosaic", "--json"}).output;
    EXPECT_EQ(json::parse(mosaic)["properties"][1]["percentOf"], "height");
}

TEST_F(CatalogueOutput, ExamplesDefaultsAndPresetsAreTakenAsTheyAreShown) {
    for (const auto* effect : Effects()) {
        const std::string example = aveffect::ExampleSetting(*effect);
        const auto medium =
            effect->kind == AVBased::EffectKind::Audio ? aveffect::Medium::Audio : aveffect::Medium::Video;
        EXPECT_NO_THROW(aveffect::ParseEffect(example, false, medium)) << example;
        const std::string description = aveffect::DescribeText(*effect), name(effect->shortName);
        EXPECT_NE(description.find(" " + example), std::string::npos);
        for (const auto& preset : effect->presets) {
            const std::string settings = aveffect::SettingsText(*effect, preset);
            EXPECT_NE(description.find(" " + settings + "\n"), std::string::npos) << settings;
            EXPECT_EQ(aveffect::ParseEffect(name + ":" + settings, false, medium).properties,
                      aveffect::ParseEffect(aveffect::PresetName(*effect, preset), false, medium).properties);
        }
        for (const auto& property : effect->properties) {
            const char* const start = property.InForceAtFirst();
            if (!start || !*start) continue;
            const std::string shown = aveffect::SpokenValue(property, start);
            EXPECT_EQ(aveffect::DefaultText(property).substr(0, shown.size()), shown);
            EXPECT_NO_THROW(aveffect::TranslateValue(*effect, property, shown)) << property.name;
        }
    }
}

TEST_F(CatalogueOutput, HelpAndVersionAreAnswered) {
    EXPECT_EQ(Aveffect({"--version"}).exitCode, 0);
    for (const char* command : {"list", "describe", "render", "frame", "transition", "join", "sheet"}) {
        const Outcome outcome = Aveffect({command, "--help"});
        EXPECT_EQ(outcome.exitCode, 0);
        EXPECT_NE(outcome.output.find("Exit codes:"), std::string::npos) << command;
        EXPECT_NE(outcome.output.find(std::string("aveffect ") + command), std::string::npos) << command;
    }
}

TEST_F(CatalogueOutput, UnknownNameIsAUsageError) {
    const Outcome outcome = Aveffect({"describe", "grey"});
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_EQ(outcome.output, "");
    EXPECT_TRUE(IsOneMessage(outcome.messages));
    EXPECT_NE(outcome.messages.find("'gray'"), std::string::npos);
}

} // namespace
