#include "timeline/playout/limited_sound.h"

#include "host/effects/sound_piece.h"

namespace aveffect {

namespace {

constexpr int kStretch = 10, kLead = 1; // seconds
constexpr char kLimiter[] = "alimiter=level=0:latency=1";

int64_t StretchOf(int64_t sample, int rate) { return sample / (int64_t{kStretch} * rate); }

} // namespace

int64_t LimitedSound::InputFrom(int64_t sample, int rate) {
    return std::max<int64_t>(0, (StretchOf(sample, rate) * kStretch - kLead) * rate);
}

LimitedSound::LimitedSound(SampleSource& before, int64_t from, const SoundShape& shape)
    : MadeSound(shape, kFilmSamples)
    , m_before(before)
    , m_shape(shape)
    , m_from(from)
    , m_at(InputFrom(from, shape.rate)) {}

// A second of sound at most goes in at once, so that none goes beyond where the next limiter begins.
void LimitedSound::Make(int64_t) {
    const int64_t rate = m_shape.rate, at = m_at;
    const int64_t next = StretchOf(at + kLead * rate, m_shape.rate);
    if (const int64_t begin = next * kStretch * rate;
        InputFrom(begin, m_shape.rate) == at && begin + kStretch * rate > m_from)
        m_limiters.push_back({SoundFilter(kLimiter, "limited", m_shape), at, begin, begin + kStretch * rate});
    const PieceOfSound piece = PieceAt(at, m_shape.rate, 1);
    const auto sound = Take(m_before, std::min(piece.end - at, rate / 10));
    m_at += sound->nb_samples;
    for (Limiter& limiter : m_limiters) {
        sound->pts = at;
        limiter.filter.Give(*sound);
        TakeFrom(limiter);
    }
    if (!m_limiters.empty() && m_limiters.front().at >= m_limiters.front().end) m_limiters.pop_front();
}

void LimitedSound::TakeFrom(Limiter& limiter) {
    while (const auto sound = limiter.filter.Take()) {
        const int64_t begin = limiter.at, end = begin + sound->nb_samples;
        limiter.at = end;
        const int64_t skipped = std::max<int64_t>(0, std::max(limiter.begin, m_from) - begin);
        sound->nb_samples = static_cast<int>(std::min(end, limiter.end) - begin);
        if (sound->nb_samples > skipped) m_ready.Push(*sound, skipped);
    }
}

} // namespace aveffect
