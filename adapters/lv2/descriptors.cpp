// The sound effects for LV2 hosts. What they are is said in the bundle's Turtle.
#include <iterator>

#include "adapters/lv2/lv2_interface.h"
#include "adapters/sound/handle.h"
#include "adapters/sound/short_text.h"

namespace AVBased::lv2 {

namespace {

template <size_t kEffect>
constexpr sound::ShortText kUri = sound::Joined({kUriPrefix, sound::kEffects[kEffect]->name});

template <size_t kEffect>
constexpr Descriptor kDescriptor = {
    .uri = kUri<kEffect>.text,
    .instantiate = [](const Descriptor*, double rate, const char*, const Feature* const*) -> Handle {
        return sound::MakeChannel(kEffect, rate).release();
    },
    .connectPort = sound::ConnectPort<uint32_t, void>,
    .activate = sound::Activate,
    .run = sound::Run<uint32_t>,
    .deactivate = nullptr,
    .cleanup = sound::Cleanup,
    .extensionData = nullptr,
};

constexpr const Descriptor* kDescriptors[] = {&kDescriptor<0>, &kDescriptor<1>};
static_assert(std::size(kDescriptors) == std::size(sound::kEffects));

} // namespace

} // namespace AVBased::lv2

/// Null behind the last plug-in of the bundle.
extern "C" [[gnu::visibility("default")]] const AVBased::lv2::Descriptor* lv2_descriptor(uint32_t index) {
    using AVBased::lv2::kDescriptors;
    return index < std::size(kDescriptors) ? kDescriptors[index] : nullptr;
}
