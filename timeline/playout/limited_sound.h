#pragma once
/// Sound that is turned down for a moment where it would be too loud.
#include <deque>

#include "timeline/playout/made_sound.h"
#include "timeline/playout/sound_filter.h"

namespace aveffect {

/// A limiter remembers how loud it was. So that the sound is the same wherever it is begun, each stretch of
/// the film has a limiter of its own, which begins a while earlier: longer than any of them remembers.
class LimitedSound : public MadeSound {
public:
    /// In the film, where the sound has to begin that goes in, for that from a sample on to come out.
    static int64_t InputFrom(int64_t sample, int rate);

    /// What comes before begins at InputFrom(from), has no end and outlives it. Throws Error (Output).
    LimitedSound(SampleSource& before, int64_t from, const SoundShape& shape);

private:
    struct Limiter {
        SoundFilter filter;
        int64_t at;         ///< in the film, of the next sample that comes out
        int64_t begin, end; ///< of the stretch
    };
    void Make(int64_t missing) override;
    void TakeFrom(Limiter& limiter);

    SampleSource& m_before;
    SoundShape m_shape;
    int64_t m_from, m_at; ///< of what comes out, of what goes in next
    std::deque<Limiter> m_limiters;
};

} // namespace aveffect
