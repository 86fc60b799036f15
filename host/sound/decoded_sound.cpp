#include "host/sound/decoded_sound.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace aveffect {

DecodedSound::DecodedSound(const SoundShape& shape, AVSampleFormat format)
    : m_rate(shape.rate)
    , m_endless(true)
    , m_decoded(format, shape.rate, shape.layout) {}

DecodedSound::DecodedSound(SoundRequest request, bool fromFirst, bool endless,
                           const std::atomic<bool>& cancel)
    : m_rate(request.shape.rate)
    , m_endless(endless)
    , m_fromFirst(fromFirst)
    , m_decoded(request.format, m_rate, request.shape.layout) {
    m_reader = std::make_unique<SoundReader>(std::move(request), cancel);
}

// Decodes until so many samples are there. What is missing of endless sound is silence when it is taken.
int64_t DecodedSound::Available(int64_t wanted) {
    while (m_reader && m_decoded.Size() < wanted && (m_waiting || Decode())) {
        const int64_t silence = std::clamp<int64_t>(m_gap, 0, wanted - m_decoded.Size());
        m_decoded.PushSilence(silence);
        m_gap -= silence;
        if (m_gap > 0) continue;
        const int64_t skipped = std::min<int64_t>(-m_gap, m_waiting->nb_samples);
        if (skipped < m_waiting->nb_samples) m_decoded.Push(*m_waiting, skipped);
        m_waiting.reset();
    }
    return m_endless ? std::max(wanted, m_decoded.Size()) : m_decoded.Size();
}

// The next sound, and how far it lies from what came before it. Time stamps are no finer than their
// containers say, and some are wrong altogether, so samples are counted from the first one on and only a jump
// counts.
bool DecodedSound::Decode() {
    m_waiting = m_reader->Next();
    if (!m_waiting) return false;
    const int64_t hour = 3600 * int64_t{m_rate}, jump = m_rate / 10;
    if (!m_time && m_fromFirst) m_origin = m_waiting->pts;
    const int64_t time = m_waiting->pts - m_origin, distance = std::abs(time - m_time.value_or(0));
    if (!m_time) m_time = distance < hour ? time : 0;
    if (distance > jump && distance < hour) m_time = time;
    m_gap = *m_time - m_placed;
    *m_time += m_waiting->nb_samples;
    m_placed = std::max(m_placed, *m_time);
    return true;
}

} // namespace aveffect
