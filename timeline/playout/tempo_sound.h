#pragma once
/// Sound that plays faster or slower.
#include "timeline/playout/made_sound.h"
#include "timeline/playout/sound_filter.h"

namespace aveffect {

/// Keeps the pitch. What comes out depends on where the sound that goes in begins.
class TempoSound : public MadeSound {
public:
    /// What comes before has no end, and outlives it. Speed: above 0. Throws Error (Output).
    TempoSound(SampleSource& before, AVRational speed, const SoundShape& shape);

private:
    void Make(int64_t missing) override;

    SampleSource& m_before;
    SoundFilter m_filter;
    int64_t m_taken = 0;
};

} // namespace aveffect
