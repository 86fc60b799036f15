#include "host/sound/staged_sound.h"

#include <algorithm>
#include <utility>

#include "host/effects/sound_piece.h"

namespace aveffect {

using mediabridge::AVFramePtr;

namespace {

constexpr int kPassingPieces = 50; // a second, where the effect does not last

} // namespace

StagedSound::StagedSound(SampleSource& before, AudioStage stage, int64_t start, const SoundShape& shape,
                         AVSampleFormat format)
    : m_before(before)
    , m_stage(std::move(stage))
    , m_rate(shape.rate)
    , m_at(start)
    , m_silence(format, shape.rate, shape.layout)
    , m_ready(format, shape.rate, shape.layout) {}

int64_t StagedSound::Available(int64_t wanted) {
    while (m_ready.Size() < wanted && Advance()) {
    }
    return m_ready.Size();
}

// One piece more; false at the end. Where the effect does not last, sound passes.
bool StagedSound::Advance() {
    const int64_t sample = m_at, origin = m_stage.Origin();
    if (sample < m_stage.Begin() || sample >= m_stage.End()) {
        const int64_t end = PieceAt(sample, m_rate, kPassingPieces).end;
        const AVFramePtr sound = Take((sample < origin ? std::min(end, origin) : end) - sample);
        if (sound) m_ready.Push(*sound);
        return sound != nullptr;
    }
    const PieceOfSound piece = PieceAt(sample - origin, m_rate, m_stage.PiecesASecond());
    AVFramePtr sound = Take(std::min(origin + piece.end, m_stage.End()) - sample);
    if (!sound) return false;
    if (!std::exchange(m_begun, true)) CatchUp(piece.begin);
    const int64_t missing = sample - origin - piece.begin; // of a piece that began before the sound did
    if (missing > 0) sound = Behind(missing, *sound);
    m_stage.Process(*sound, piece.begin);
    m_ready.Push(*sound, missing);
    return true;
}

// So many samples, fewer at the end; null behind it.
AVFramePtr StagedSound::Take(int64_t wanted) {
    const int64_t samples = std::min(wanted, m_before.Available(wanted));
    if (samples <= 0) return nullptr;
    m_at += samples;
    return m_before.Pop(samples);
}

AVFramePtr StagedSound::Behind(int64_t silence, const AVFrame& sound) {
    m_silence.PushSilence(silence);
    m_silence.Push(sound);
    return m_silence.Pop(m_silence.Size());
}

// The effect's pieces up to that sample of its own.
void StagedSound::CatchUp(int64_t until) {
    if (!m_stage.NeedsAll()) return;
    for (int64_t at = 0; at < until;) {
        const int64_t end = PieceAt(at, m_rate, m_stage.PiecesASecond()).end;
        m_stage.Process(*m_silence.Pop(end - at), at);
        at = end;
    }
}

} // namespace aveffect
