#pragma once
/// A clip's sound as it was decoded, without gaps.
#include <memory>
#include <optional>

#include "host/media/sound_reader.h"
#include "host/sound/sample_queue.h"
#include "host/sound/sample_source.h"

namespace aveffect {

class DecodedSound : public SampleSource {
public:
    /// Silence alone, without an end.
    DecodedSound(const SoundShape& shape, AVSampleFormat format);
    /// Sound of the request's shape. It begins at the request's start or, from the first one on, with the
    /// first sample whatever its time. Endless sound goes on in silence. Throws Error.
    DecodedSound(SoundRequest request, bool fromFirst, bool endless, const std::atomic<bool>& cancel);

    int64_t Available(int64_t wanted) override;
    mediabridge::AVFramePtr Pop(int64_t samples) override { return m_decoded.Pop(samples); }
    DamageReport Damage() const { return m_reader ? m_reader->Damage() : DamageReport(); }

private:
    bool Decode();

    int m_rate;
    bool m_endless;
    bool m_fromFirst = false;
    std::unique_ptr<SoundReader> m_reader; ///< null: silence
    SampleQueue m_decoded;
    std::optional<int64_t> m_time;     ///< in samples, of what is decoded next; absent before the first sound
    int64_t m_origin = 0;              ///< time of the start as the reader counts
    int64_t m_placed = 0;              ///< samples that were or will be queued of what was decoded
    mediabridge::AVFramePtr m_waiting; ///< decoded, for the gap before it to be filled
    int64_t m_gap = 0;                 ///< negative: samples of it that are not wanted
};

} // namespace aveffect
