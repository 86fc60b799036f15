#pragma once
/// "audio_volume": one gain for all samples.
#include "AVEffect/CBasedAudioEffect.h"
#include "kernels/sound.h"

namespace AVBased {

class CAudioVolume final : public CBasedAudioEffect {
public:
    CAudioVolume();

    /// Works on signed 16-bit interleaved sound; anything else is the host's mistake.
    void InnerProcFrame(IRawAudioFrame* frame) override;

private:
    const kernels::SoundKernels& m_Kernels;
    unsigned m_nVolume; // percent; a negative value counts as a huge one
};

} // namespace AVBased
