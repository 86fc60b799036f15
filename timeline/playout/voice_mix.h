#pragma once
/// Several sounds, each from one moment to another, added up.
#include <functional>
#include <memory>
#include <vector>

#include "timeline/playout/made_sound.h"

namespace aveffect {

/// Samples from one to before another.
struct SampleRange {
    int64_t begin = 0, end = 0;
};

/// One of them. All times are samples of one clock.
struct Voice {
    SampleRange heard;
    SampleRange rise = {}, fall = {}; ///< evenly from silence, and to it; empty: at once
    /// Opens its sound, which has no end, from a sample on.
    std::function<std::unique_ptr<SampleSource>(int64_t)> open;
};

/// A voice is opened when its turn comes and closed behind it.
class VoiceMix : public MadeSound {
public:
    /// The voices in the order in which they begin. From: of the sound that is made.
    VoiceMix(std::vector<Voice> voices, int64_t from, const SoundShape& shape);

private:
    struct OpenVoice {
        const Voice* voice;
        std::unique_ptr<SampleSource> sound;
    };
    void Make(int64_t missing) override;
    void OpenUntil(int64_t end);

    std::vector<Voice> m_voices;
    size_t m_next = 0; ///< voice that was not opened yet
    std::vector<OpenVoice> m_open;
    int64_t m_at;          ///< sample that is made next
    SampleQueue m_silence; ///< empty, which gives silence
};

} // namespace aveffect
