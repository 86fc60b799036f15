#include "host/sound/sample_queue.h"

#include <algorithm>

extern "C" {
#include <libavutil/samplefmt.h>
}

#include "host/support/error.h"

namespace aveffect {

using mediabridge::AVFramePtr;

namespace {

constexpr int kMostAtOnce = 1 << 16;

void Require(bool done) {
    if (!done) throw NoMemory("the sound can't be processed: out of memory");
}

} // namespace

SampleQueue::SampleQueue(AVSampleFormat format, int rate, const std::string& layout)
    : m_format(format)
    , m_rate(rate) {
    Require(av_channel_layout_from_string(&m_layout, layout.c_str()) >= 0);
    m_fifo.reset(av_audio_fifo_alloc(format, m_layout.nb_channels, rate));
    Require(m_fifo != nullptr);
}

SampleQueue::~SampleQueue() { av_channel_layout_uninit(&m_layout); }

void SampleQueue::Push(const AVFrame& sound, int64_t skipped) {
    if (skipped > 0) {
        const AVFramePtr rest = Silence(sound.nb_samples - static_cast<int>(skipped));
        av_samples_copy(rest->extended_data, sound.extended_data, 0, static_cast<int>(skipped),
                        rest->nb_samples, m_layout.nb_channels, m_format);
        return Push(*rest);
    }
    auto* const planes = reinterpret_cast<void**>(sound.extended_data);
    Require(av_audio_fifo_write(m_fifo.get(), planes, sound.nb_samples) == sound.nb_samples);
}

AVFramePtr SampleQueue::Empty() const {
    AVFramePtr sound(av_frame_alloc());
    Require(sound != nullptr);
    sound->format = m_format;
    sound->sample_rate = m_rate;
    Require(av_channel_layout_copy(&sound->ch_layout, &m_layout) >= 0);
    return sound;
}

AVFramePtr SampleQueue::Silence(int samples) const {
    AVFramePtr sound = Empty();
    sound->nb_samples = samples;
    Require(av_frame_get_buffer(sound.get(), 0) >= 0);
    av_samples_set_silence(sound->extended_data, 0, samples, m_layout.nb_channels, m_format);
    return sound;
}

AVFramePtr SampleQueue::Pop(int64_t samples) {
    AVFramePtr sound = Silence(static_cast<int>(samples));
    auto* const planes = reinterpret_cast<void**>(sound->extended_data);
    Require(av_audio_fifo_read(m_fifo.get(), planes, sound->nb_samples) >= 0);
    return sound;
}

void SampleQueue::PushSilence(int64_t samples) {
    for (; samples > 0; samples -= kMostAtOnce)
        Push(*Silence(static_cast<int>(std::min<int64_t>(samples, kMostAtOnce))));
}
} // namespace aveffect
