// The sound effects for LADSPA hosts, described by the catalogue.
#include <array>
#include <iterator>

#include "adapters/ladspa/ladspa_interface.h"
#include "adapters/sound/handle.h"
#include "adapters/sound/short_text.h"

namespace AVBased::ladspa {

namespace {

/// From the range for experiments, until some are assigned.
constexpr unsigned long kNumbers[] = {746, 747};
static_assert(std::size(kNumbers) == std::size(sound::kEffects));

/// "Length (ms)": the interface has no other place for the unit.
constexpr sound::ShortText NameOf(const PropertyInfo& property) {
    if (property.unit.empty()) return sound::Joined({property.title});
    return sound::Joined({property.title, " (", property.unit, ")"});
}

/// Defaults are few numbers, or an end of the range.
constexpr int DefaultHint(const sound::ControlRange& range) {
    if (range.first == 0) return kDefault0;
    if (range.first == 1) return kDefault1;
    if (range.first == 100) return kDefault100;
    if (range.first == range.least) return kDefaultMinimum;
    if (range.first == range.most) return kDefaultMaximum;
    throw "a default that no hint says";
}

constexpr RangeHint HintOf(const sound::ControlRange& range) {
    return {kBoundedBelow | kBoundedAbove | (range.whole ? kInteger : 0) | DefaultHint(range),
            static_cast<float>(range.least), static_cast<float>(range.most)};
}

template <const EffectInfo& kInfo>
struct Ports {
    static constexpr size_t kCount = sound::kFirstControl + kInfo.properties.size();

    static constexpr auto kNames = [] {
        std::array<sound::ShortText, kCount> names;
        names[sound::kInput] = sound::Joined({"Input"});
        names[sound::kOutput] = sound::Joined({"Output"});
        for (size_t i = sound::kFirstControl; i < kCount; ++i)
            names[i] = NameOf(kInfo.properties[i - sound::kFirstControl]);
        return names;
    }();
    static constexpr auto kTexts = [] {
        std::array<const char*, kCount> texts;
        for (size_t i = 0; i < kCount; ++i) texts[i] = kNames[i].text;
        return texts;
    }();
    static constexpr auto kKinds = [] {
        std::array<int, kCount> kinds;
        kinds.fill(kInput | kControl);
        kinds[sound::kInput] = kInput | kAudio;
        kinds[sound::kOutput] = kOutput | kAudio;
        return kinds;
    }();
    static constexpr auto kHints = [] {
        std::array<RangeHint, kCount> hints{};
        for (size_t i = sound::kFirstControl; i < kCount; ++i)
            hints[i] = HintOf(sound::RangeOf(kInfo.properties[i - sound::kFirstControl]));
        return hints;
    }();
};

template <size_t kEffect>
constexpr Descriptor kDescriptor = {
    .number = kNumbers[kEffect],
    .label = sound::kEffects[kEffect]->name,
    .properties = kHardRealTime,
    .name = sound::kEffects[kEffect]->title.data(), // a literal's
    .maker = "The AVEffect developers",
    .copyright = "MIT",
    .portCount = Ports<*sound::kEffects[kEffect]>::kCount,
    .portKinds = Ports<*sound::kEffects[kEffect]>::kKinds.data(),
    .portNames = Ports<*sound::kEffects[kEffect]>::kTexts.data(),
    .rangeHints = Ports<*sound::kEffects[kEffect]>::kHints.data(),
    .own = nullptr,
    .instantiate = [](const Descriptor*, unsigned long rate) -> Handle {
        return sound::MakeChannel(kEffect, static_cast<double>(rate)).release();
    },
    .connectPort = sound::ConnectPort<unsigned long, float>,
    .activate = sound::Activate,
    .run = sound::Run<unsigned long>,
    .runAdding = nullptr,
    .setRunAddingGain = nullptr,
    .deactivate = nullptr,
    .cleanup = sound::Cleanup,
};

constexpr const Descriptor* kDescriptors[] = {&kDescriptor<0>, &kDescriptor<1>};
static_assert(std::size(kDescriptors) == std::size(sound::kEffects));

} // namespace

} // namespace AVBased::ladspa

/// Null behind the last plug-in of the file.
extern "C" [[gnu::visibility("default")]] const AVBased::ladspa::Descriptor*
ladspa_descriptor(unsigned long index) {
    using AVBased::ladspa::kDescriptors;
    return index < std::size(kDescriptors) ? kDescriptors[index] : nullptr;
}
