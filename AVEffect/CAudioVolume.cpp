#include "AVEffect/CAudioVolume.h"

#include <cassert>
#include <climits>

#include "aveffect/catalogue/sounds.h"

namespace AVBased {

namespace {

constexpr unsigned kUnchanged = 100; // percent

/// The gain in 256ths: cut to 32 bits, where a number that does not fit becomes the lowest one as the
/// processor converts it, of which the low 16 bits count. 12799 is the last volume whose gain is what it
/// says; from 12800 % on the sign changes, and numbers that do not fit give silence.
int16_t GainOf(unsigned volume) {
    constexpr double kAboveInt = 2147483648.0;
    const double gain = volume / 100.0 * 256.0;
    return static_cast<int16_t>(gain < kAboveInt ? static_cast<int>(gain) : INT_MIN);
}

} // namespace

CAudioVolume::CAudioVolume()
    : CBasedAudioEffect(catalogue::kVolume)
    , m_Kernels(Kernels<kernels::SoundKernels>()) {
    Bind("audio_volume", &m_nVolume);
}

void CAudioVolume::InnerProcFrame(IRawAudioFrame* frame) {
    const bool bOK = frame->IsInterleaved();
    assert(bOK);
    const int sf = frame->GetSampleFormat();
    assert(sf == sfSigned16);
    unsigned nSize = 0;
    unsigned char* const pSamples = frame->GetBuffer(0, &nSize);
    if (!pSamples) return;
    assert(pSamples != NULL && nSize != 0);
    if (m_nVolume == kUnchanged) return;
    m_Kernels.amplify16(pSamples, nSize / sizeof(int16_t), GainOf(m_nVolume));
}

} // namespace AVBased
