// What tells GStreamer of the effects.
#include <exception>

#include "adapters/gstreamer/audio_filter.h"
#include "adapters/gstreamer/image_filter.h"
#include "adapters/gstreamer/the_plugin.h"
#include "adapters/gstreamer/transition.h"
#include "adapters/support/plugin_place.h"
#include "aveffect/catalogue.h"

namespace aveffect::gst {

const Plugin& ThePlugin() {
    static const Plugin plugin(adapters::OwnDirectory());
    return plugin;
}

} // namespace aveffect::gst

extern "C" __attribute__((visibility("default"))) void aveffect_gst_register(GstPlugin* plugin) {
    using namespace aveffect;
    try {
        gst::ThePlugin();
        for (const AVBased::EffectInfo& effect : AVBased::kVideoEffects) {
            if (effect.kind == AVBased::EffectKind::Transition)
                gst::RegisterTransition(plugin, effect);
            else
                gst::RegisterImageFilter(plugin, effect);
        }
        for (const AVBased::EffectInfo& effect : AVBased::kAudioEffects)
            gst::RegisterAudioFilter(plugin, effect);
    } catch (const std::exception& failure) {
        g_message("aveffect: there are no effects: %s", failure.what());
    }
}
