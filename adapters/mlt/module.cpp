// What tells the host's repository of the effects.
#include <algorithm>
#include <exception>
#include <string_view>

#include <framework/mlt.h>

#include "adapters/mlt/audio_filter.h"
#include "adapters/mlt/image_filter.h"
#include "adapters/mlt/metadata.h"
#include "adapters/mlt/the_plugin.h"
#include "adapters/mlt/transition.h"
#include "adapters/support/plugin_place.h"
#include "aveffect/catalogue.h"

namespace aveffect::mlt {

using AVBased::EffectInfo;
using AVBased::EffectKind;

const Plugin& ThePlugin() {
    static const Plugin plugin(adapters::PluginDirectory());
    return plugin;
}

namespace {

const EffectInfo* EffectOf(std::string_view service) {
    const auto isIt = [&](const EffectInfo& effect) { return ServiceName(effect) == service; };
    const auto video = std::ranges::find_if(AVBased::kVideoEffects, isIt);
    if (video != std::end(AVBased::kVideoEffects)) return &*video;
    const auto audio = std::ranges::find_if(AVBased::kAudioEffects, isIt);
    return audio != std::end(AVBased::kAudioEffects) ? &*audio : nullptr;
}

void* Make(mlt_profile /*profile*/, mlt_service_type /*type*/, const char* service,
           const void* /*argument*/) {
    try {
        const EffectInfo* const effect = EffectOf(service);
        if (!effect) return nullptr;
        if (effect->kind == EffectKind::Transition) return MakeTransition(*effect);
        return effect->kind == EffectKind::Audio ? MakeAudioFilter(*effect) : MakeImageFilter(*effect);
    } catch (const std::exception& failure) {
        mlt_log_error(nullptr, "aveffect: %s can't be made: %s\n", service, failure.what());
        return nullptr;
    }
}

mlt_properties Describe(mlt_service_type /*type*/, const char* service, void* /*data*/) {
    try {
        const EffectInfo* const effect = EffectOf(service);
        return effect ? MetadataOf(*effect) : nullptr;
    } catch (const std::exception&) {
        return nullptr;
    }
}

void Register(mlt_repository repository, const EffectInfo& effect) {
    const std::string name = ServiceName(effect);
    MLT_REGISTER(ServiceType(effect), name.c_str(), Make);
    MLT_REGISTER_METADATA(ServiceType(effect), name.c_str(), Describe, nullptr);
}

} // namespace

} // namespace aveffect::mlt

extern "C" __attribute__((visibility("default"))) void aveffect_mlt_register(mlt_repository repository) {
    using namespace aveffect;
    try {
        mlt::ThePlugin();
        for (const AVBased::EffectInfo& effect : AVBased::kVideoEffects) mlt::Register(repository, effect);
        for (const AVBased::EffectInfo& effect : AVBased::kAudioEffects) mlt::Register(repository, effect);
    } catch (const std::exception& failure) {
        mlt_log_error(nullptr, "aveffect: there are no effects: %s\n", failure.what());
    }
}
