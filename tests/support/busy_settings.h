#pragma once
/// Settings with which every effect has something to do.
#include <string_view>
#include <utility>

#include "aveffect/catalogue.h"
#include "aveffect/plugin.h"

namespace test {

/// What makes effects work that do nothing with their defaults.
inline constexpr std::pair<std::string_view, const char*> kBusyValues[] = {
    {"duration", "100"},
    {"brightness", "10"},
    {"saturation", "20"},
    {"mosaic_x2", "90"},
    {"mosaic_y2", "60"},
    {"mosaic_step", "3"},
    {"emboss_level", "2"},
    {"transparency_scale", "50"},
    {"filter_scope", "60"},
    {"spherize_r", "20"},
    {"spherize_x", "40"},
    {"spherize_y", "30"},
    {"spherize_scale", "0.7"},
    {"rotate_r", "20"},
    {"rotate_x", "40"},
    {"rotate_y", "30"},
    {"rotate_scale", "3"},
    {"magnifier_r", "20"},
    {"magnifier_x", "40"},
    {"magnifier_y", "30"},
    {"magnifier_scale", "2.7"},
    {"tensile_vertical", "1"},
    {"tensile_vertical_y1", "20"},
    {"tensile_vertical_y2", "50"},
    {"tensile_vertical_scale", "1.3"},
    {"tensile_horizontal", "1"},
    {"tensile_horizontal_x1", "20"},
    {"tensile_horizontal_x2", "50"},
    {"tensile_horizontal_scale", "1.3"},
    {"atomize_ishorizontal", "1"},
    {"atomize_isvertical", "1"},
    {"atomize_level", "9"},
    {"tilereflect_size", "20"},
    {"spotlight_x", "40"},
    {"spotlight_y", "30"},
    {"spotlight_r", "25"},
    {"radiate_x", "40"},
    {"radiate_y", "30"},
    {"EffectPropSourceDur", "100"},
    {"EffectPropVFPath1", "first"},
    {"EffectPropVFPath2", "second"},
    {"mirror", "1"},
    {"vertical", "1"},
    {"Rotate90XDerection", "1"},
    {"audio_volume", "50"},
    {"fader_duration", "20"},
    {"fader_start_scale", "0"},
    {"fader_end_scale", "1"},
    {"audio_replace_path", "sound"},
    {"audio_replace_loop", "1"}};

/// What a processor may refuse for want of memory is left out.
inline void SetBusy(AVBased::IAVProc& proc, const AVBased::EffectInfo& effect) {
    proc.SetProperty("duration", "100");
    for (const AVBased::PropertyInfo& property : effect.properties)
        for (const auto& [name, value] : kBusyValues)
            if (name == property.name) proc.SetProperty(property.name, value);
}

} // namespace test
