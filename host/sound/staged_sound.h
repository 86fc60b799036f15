#pragma once
/// Sound that passes one effect.
#include "host/effects/audio_stage.h"
#include "host/media/clip_scan.h"
#include "host/sound/sample_queue.h"
#include "host/sound/sample_source.h"

namespace aveffect {

/// Cuts what comes before the effect into the pieces that it counts on, which are its own: they begin with
/// it, wherever the sound does and whatever other effects count on. So it reads up to a piece ahead. An
/// effect whose pieces depend on each other has all of those that lie before the sound's begin, in silence,
/// so that a part of a clip sounds as it does in the whole.
class StagedSound : public SampleSource {
public:
    /// Start: of the sound in the clip, in samples. What comes before outlives it. Throws as AudioStage.
    StagedSound(SampleSource& before, AudioStage stage, int64_t start, const SoundShape& shape,
                AVSampleFormat format);

    int64_t Available(int64_t wanted) override;
    mediabridge::AVFramePtr Pop(int64_t samples) override { return m_ready.Pop(samples); }

private:
    bool Advance();
    mediabridge::AVFramePtr Take(int64_t wanted);
    mediabridge::AVFramePtr Behind(int64_t silence, const AVFrame& sound);
    void CatchUp(int64_t until);

    SampleSource& m_before;
    AudioStage m_stage;
    int m_rate;
    int64_t m_at;          ///< in the clip, of the next sample that is taken
    SampleQueue m_silence; ///< empty, which gives silence; for the begin
    SampleQueue m_ready;
    bool m_begun = false;
};

} // namespace aveffect
