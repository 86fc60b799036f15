#include "timeline/playout/voice_mix.h"

#include <utility>

namespace aveffect {

namespace {

/// Two ranges that are the same add up to 1 at each sample, one rising and one falling.
double RisenAt(const SampleRange& range, int64_t sample) {
    if (sample >= range.end) return 1;
    if (sample < range.begin) return 0;
    return (static_cast<double>(sample - range.begin) + 0.5) / static_cast<double>(range.end - range.begin);
}

bool Overlap(const SampleRange& a, const SampleRange& b) { return a.begin < b.end && b.begin < a.end; }

/// Adds a voice's samples of a range to a sum of them.
void Add(const Voice& voice, const SampleRange& range, const AVFrame& sound, float* sum) {
    const auto* from = reinterpret_cast<const float*>(sound.data[0]);
    const bool rises = Overlap(voice.rise, range), falls = Overlap(voice.fall, range);
    for (int64_t sample = range.begin; sample < range.end; ++sample) {
        double gain = 1;
        if (rises) gain *= RisenAt(voice.rise, sample);
        if (falls) gain *= 1 - RisenAt(voice.fall, sample);
        for (int channel = 0; channel < sound.ch_layout.nb_channels; ++channel, ++from, ++sum)
            *sum += static_cast<float>(*from * gain);
    }
}

} // namespace

VoiceMix::VoiceMix(std::vector<Voice> voices, int64_t from, const SoundShape& shape)
    : MadeSound(shape, kFilmSamples)
    , m_voices(std::move(voices))
    , m_at(from)
    , m_silence(kFilmSamples, shape.rate, shape.layout) {}

void VoiceMix::OpenUntil(int64_t end) {
    for (; m_next < m_voices.size() && m_voices[m_next].heard.begin < end; ++m_next) {
        const Voice& voice = m_voices[m_next];
        if (voice.heard.end > m_at) m_open.push_back({&voice, voice.open(std::max(m_at, voice.heard.begin))});
    }
}

void VoiceMix::Make(int64_t missing) {
    constexpr int64_t kAtOnce = 1 << 13;
    const SampleRange made{m_at, m_at + std::min(missing, kAtOnce)};
    OpenUntil(made.end);
    const auto sum = m_silence.Pop(made.end - made.begin);
    for (const OpenVoice& open : m_open) {
        const SampleRange& heard = open.voice->heard;
        const SampleRange range{std::max(made.begin, heard.begin), std::min(made.end, heard.end)};
        const auto sound = Take(*open.sound, range.end - range.begin);
        const int64_t place = (range.begin - made.begin) * sound->ch_layout.nb_channels;
        Add(*open.voice, range, *sound, reinterpret_cast<float*>(sum->data[0]) + place);
    }
    m_ready.Push(*sum);
    m_at = made.end;
    std::erase_if(m_open, [&](const OpenVoice& open) { return open.voice->heard.end <= m_at; });
}

} // namespace aveffect
