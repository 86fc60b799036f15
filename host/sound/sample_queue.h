#pragma once
/// Samples waiting in a row.
#include <cstdint>
#include <memory>

#include "host/support/av_owner.h"

extern "C" {
#include <libavutil/audio_fifo.h>
}

namespace aveffect {

/// Samples of one format, rate and layout, taken in portions of any size. Grows as needed. Used by one thread
/// at a time. Everything throws Error (Effect) when memory is short.
class SampleQueue {
public:
    /// The layout is one that libavutil knows.
    SampleQueue(AVSampleFormat format, int rate, const std::string& layout);
    ~SampleQueue();
    SampleQueue(const SampleQueue&) = delete;
    SampleQueue& operator=(const SampleQueue&) = delete;

    /// Samples a channel.
    int64_t Size() const noexcept { return av_audio_fifo_size(m_fifo.get()); }
    /// Takes the sound, which has the queue's form, but for its first samples.
    void Push(const AVFrame& sound, int64_t skipped = 0);
    /// Sound without samples in the queue's form, to be filled by a conversion.
    mediabridge::AVFramePtr Empty() const;
    /// Gives so many samples out, silence for those that are missing.
    mediabridge::AVFramePtr Pop(int64_t samples);
    void PushSilence(int64_t samples);

private:
    struct FifoDeleter {
        void operator()(AVAudioFifo* fifo) const noexcept { av_audio_fifo_free(fifo); }
    };
    mediabridge::AVFramePtr Silence(int samples) const;

    AVSampleFormat m_format;
    int m_rate;
    AVChannelLayout m_layout = {};
    std::unique_ptr<AVAudioFifo, FifoDeleter> m_fifo;
};

} // namespace aveffect
