#include "host/effects/audio_effect_chain.h"

#include <algorithm>

#include "aveffect/catalogue/sounds.h"
#include "host/settings/catalogue_lookup.h"

namespace aveffect {
namespace {

bool Has(const std::vector<EffectSpec>& effects, const AVBased::EffectInfo& wanted) {
    return std::ranges::any_of(effects, [&](const EffectSpec& effect) { return Names(effect.name, wanted); });
}

} // namespace

bool BringsSound(const std::vector<EffectSpec>& effects) {
    return Has(effects, AVBased::catalogue::kReplaceSound);
}

bool HearsClip(const std::vector<EffectSpec>& effects) {
    return std::ranges::none_of(effects, [](const EffectSpec& effect) {
        return Names(effect.name, AVBased::catalogue::kReplaceSound) && effect.reach.empty();
    });
}

AVSampleFormat SoundFormatFor(const std::vector<EffectSpec>& effects, AVSampleFormat decoded) {
    if (Has(effects, AVBased::catalogue::kVolume)) return AV_SAMPLE_FMT_S16;
    switch (av_get_packed_sample_fmt(decoded)) {
    case AV_SAMPLE_FMT_U8: // silence is zero in the others
    case AV_SAMPLE_FMT_S16:
        return AV_SAMPLE_FMT_S16;
    case AV_SAMPLE_FMT_S32:
        return AV_SAMPLE_FMT_S32;
    case AV_SAMPLE_FMT_S64: // the boundary has no code for it
    case AV_SAMPLE_FMT_DBL:
        return AV_SAMPLE_FMT_DBL;
    default:
        return AV_SAMPLE_FMT_FLT;
    }
}

} // namespace aveffect
