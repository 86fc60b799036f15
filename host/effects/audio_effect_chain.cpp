#include "host/effects/audio_effect_chain.h"

#include <algorithm>
#include <cstring>

#include "aveffect/base_tools.h"
#include "aveffect/catalogue/sounds.h"
#include "host/media/span.h"
#include "host/settings/catalogue_lookup.h"
#include "host/settings/settings_at_time.h"
#include "host/support/error.h"
#include "mediabridge/audio_frame.h"

namespace aveffect {
namespace {

bool Has(const std::vector<EffectSpec>& effects, const AVBased::EffectInfo& wanted) {
    return std::ranges::any_of(effects, [&](const EffectSpec& effect) { return Names(effect.name, wanted); });
}

} // namespace

bool BringsSound(const std::vector<EffectSpec>& effects) {
    return Has(effects, AVBased::catalogue::kReplaceSound);
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

AudioEffectChain::AudioEffectChain(const Plugin& plugin, AVBased::IAVManager* manager,
                                   const std::vector<EffectSpec>& effects, const TimeSpan& clip) {
    for (const EffectSpec& effect : effects) {
        m_procs.push_back(plugin.MakeAudio(manager, RequireEffect(effect.name).name));
        AVBased::IAudioProc& proc = *m_procs.back();
        const SettingsAtTime settings(effect, clip);
        SetDuration(proc, static_cast<uint32_t>(settings.LengthMs().value_or(kUnknownLengthMs)));
        for (const SettingAtTime& setting : settings.Properties())
            SetProperty(proc, setting.Property().name, setting.TextAt(0));
    }
}

void AudioEffectChain::Process(AVFrame& sound, int64_t first) {
    if (m_procs.empty()) return;
    const auto timeMs = static_cast<unsigned>(av_rescale(first, 1000, sound.sample_rate));
    const auto frame = mediabridge::AudioFrame::Copy(&sound, timeMs);
    if (!frame) throw Error(ErrorKind::Effect, "the sound can't be handed to the effects: out of memory");
    for (const AudioProcPtr& proc : m_procs) {
        GetBaseException()->Clear();
        proc->ProcFrameInPlace(frame.get());
        RequireNoRecord(*proc);
    }
    unsigned bytes = 0;
    const unsigned char* const samples = frame->GetBuffer(0, &bytes);
    std::memcpy(sound.data[0], samples, bytes);
}

} // namespace aveffect
