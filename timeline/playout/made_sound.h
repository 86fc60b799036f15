#pragma once
/// Sound that is made on demand.
#include <algorithm>

#include "host/media/clip_scan.h"
#include "host/sound/sample_queue.h"
#include "host/sound/sample_source.h"

namespace aveffect {

/// All sound of a film is summed as floating-point numbers, the channels of a sample side by side.
inline constexpr AVSampleFormat kFilmSamples = AV_SAMPLE_FMT_FLT;

/// Sound that waits in a queue to be taken; it has no end.
class MadeSound : public SampleSource {
public:
    MadeSound(const SoundShape& shape, AVSampleFormat format)
        : m_ready(format, shape.rate, shape.layout) {}

    int64_t Available(int64_t wanted) override {
        while (m_ready.Size() < wanted) Make(wanted - m_ready.Size());
        return m_ready.Size();
    }
    mediabridge::AVFramePtr Pop(int64_t samples) override { return m_ready.Pop(samples); }

protected:
    /// Adds samples to those that are ready, as many as are missing or fewer, or more. May add none at first.
    virtual void Make(int64_t missing) = 0;

    SampleQueue m_ready;
};

/// The next samples of sound that has no end; what is missing is silence.
inline mediabridge::AVFramePtr Take(SampleSource& sound, int64_t samples) {
    sound.Available(samples);
    return sound.Pop(samples);
}

inline void Skip(SampleSource& sound, int64_t samples) {
    constexpr int64_t kAtOnce = 1 << 14;
    for (; samples > 0; samples -= kAtOnce) Take(sound, std::min(samples, kAtOnce));
}

} // namespace aveffect
