#pragma once
/// Settings with which every effect has something to do.
#include <cstring>
#include <string_view>

#include "aveffect/catalogue.h"
#include "aveffect/plugin.h"

namespace test {

/// What makes effects work that do nothing with their defaults: properties of all of them. Texts that need no
/// memory, for those who count it.
inline constexpr char kBusyValues[] =
    "duration=100\0brightness=10\0saturation=20\0mosaic_x2=90\0mosaic_y2=60\0mosaic_step=3\0"
    "emboss_level=2\0transparency_scale=50\0filter_scope=60\0spherize_r=20\0spherize_x=40\0"
    "spherize_y=30\0spherize_scale=0.7\0rotate_r=20\0rotate_x=40\0rotate_y=30\0rotate_scale=3\0"
    "magnifier_r=20\0magnifier_x=40\0magnifier_y=30\0magnifier_scale=2.7\0tensile_vertical=1\0"
    "tensile_vertical_y1=20\0tensile_vertical_y2=50\0tensile_vertical_scale=1.3\0tensile_horizontal=1\0"
    "tensile_horizontal_x1=20\0tensile_horizontal_x2=50\0tensile_horizontal_scale=1.3\0"
    "atomize_ishorizontal=1\0atomize_isvertical=1\0atomize_level=9\0tilereflect_size=20\0"
    "spotlight_x=40\0spotlight_y=30\0spotlight_r=25\0radiate_x=40\0radiate_y=30\0"
    "EffectPropSourceDur=100\0EffectPropVFPath1=first\0EffectPropVFPath2=second\0mirror=1\0vertical=1\0"
    "Rotate90XDerection=1\0audio_volume=50\0fader_duration=20\0fader_start_scale=0\0fader_end_scale=1\0"
    "audio_replace_path=sound\0audio_replace_loop=1\0";

/// What a processor may refuse for want of memory is left out.
inline void SetBusy(AVBased::IAVProc& proc, const AVBased::EffectInfo& effect) {
    proc.SetProperty("duration", "100");
    for (const char* at = kBusyValues; *at; at += std::strlen(at) + 1) {
        const char* const equals = std::strchr(at, '=');
        for (const AVBased::PropertyInfo& property : effect.properties)
            if (std::string_view(at, equals) == property.name) proc.SetProperty(property.name, equals + 1);
    }
}

} // namespace test
