#pragma once
/// Sound in another sample format or at another rate.
#include "timeline/playout/made_sound.h"

namespace aveffect {

/// Between two rates, what comes out follows from where the sound that goes in begins: behind the filter's
/// length, 16 samples of the lower rate, it is the same for all beginnings that lie whole periods apart.
class ConvertedSound : public MadeSound {
public:
    /// What comes before has no end, and outlives it. Throws Error (Output).
    ConvertedSound(SampleSource& before, AVSampleFormat from, int rate, AVSampleFormat to,
                   const SoundShape& shape);

    /// Samples out after which as many whole ones have come in: a period.
    static int64_t Period(int from, int to);

private:
    void Make(int64_t missing) override;

    SampleSource& m_before;
    int m_from, m_to; ///< rates
    mediabridge::SwrContextPtr m_converter;
};

} // namespace aveffect
