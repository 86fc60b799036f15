#include "adapters/support/sound_pieces.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "host/effects/media_check.h"
#include "host/effects/sound_piece.h"

namespace aveffect::adapters {

mediabridge::AVFramePtr Sound::Part(int begin, int end) const {
    mediabridge::AVFramePtr part(av_frame_alloc());
    if (!part) throw std::bad_alloc();
    part->format = format;
    part->sample_rate = rate;
    part->nb_samples = end - begin;
    av_channel_layout_default(&part->ch_layout, channels);
    part->data[0] = samples + static_cast<size_t>(begin) * SampleBytes();
    part->linesize[0] = static_cast<int>(static_cast<size_t>(end - begin) * SampleBytes());
    return part;
}

void SoundPieces::Work(const Plugin& plugin, const std::string& effect, std::optional<int64_t> lengthMs,
                       const Sound& sound, int64_t first) {
    Terms terms{effect, lengthMs, sound.format, sound.rate, sound.channels};
    if (!m_stage || terms != m_terms || (m_stage->NeedsAll() && first != m_next)) {
        const EffectSpec spec = ParseEffect(effect, false, Medium::Audio);
        RequireSounds(m_media, {spec});
        m_stage.emplace(plugin, &m_media, spec, TimeSpan{0, lengthMs}, sound.rate);
        m_terms = std::move(terms);
        if (m_stage->NeedsAll()) Skip(first, sound);
    }
    Hear(sound, first);
    m_next = first + sound.count;
}

// Pieces begin where those of the effect's own time do.
void SoundPieces::Hear(const Sound& sound, int64_t first) {
    for (int begin = 0, end = 0; begin < sound.count; begin = end) {
        const int64_t next = PieceAt(first + begin, sound.rate, m_stage->PiecesASecond()).end;
        end = static_cast<int>(std::min<int64_t>(sound.count, next - first));
        m_stage->Process(*sound.Part(begin, end), first + begin);
    }
}

void SoundPieces::Skip(int64_t samples, const Sound& like) {
    Sound silence = like;
    std::vector<uint8_t> memory(static_cast<size_t>(like.rate) * like.SampleBytes());
    silence.samples = memory.data();
    for (int64_t at = 0; at < samples; at += silence.count) {
        silence.count = static_cast<int>(std::min<int64_t>(like.rate, samples - at));
        Hear(silence, at);
    }
}

} // namespace aveffect::adapters
