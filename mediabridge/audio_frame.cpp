#include "mediabridge/audio_frame.h"

#include <cstddef>
#include <cstring>
#include <new>

#include "mediabridge/record_error.h"

namespace mediabridge {
namespace {

/// The boundary's code for decoded samples, 0 when it has none.
int FormatCode(AVSampleFormat packed) {
    switch (packed) {
    case AV_SAMPLE_FMT_U8:
        return AVBased::sfUnsigned8;
    case AV_SAMPLE_FMT_S16:
        return AVBased::sfSigned16;
    case AV_SAMPLE_FMT_S32:
        return AVBased::sfSigned32;
    case AV_SAMPLE_FMT_FLT:
        return AVBased::sfFloat;
    case AV_SAMPLE_FMT_DBL:
        return AVBased::sfDouble;
    default:
        return 0;
    }
}

/// Speaker mask of a native layout that fits the boundary's 32 bits, else 0.
unsigned SpeakerMask(const AVChannelLayout& layout) {
    if (layout.order != AV_CHANNEL_ORDER_NATIVE || layout.u.mask > 0xFFFFFFFFu) return 0;
    return static_cast<unsigned>(layout.u.mask);
}

unsigned char Silence(int format) { return format == AVBased::sfUnsigned8 ? 0x80 : 0; }

/// Unsigned samples are silent in the middle of their range: the top bit alone.
void SilenceWideUnsigned(std::vector<unsigned char>& buffer, const AudioFrame::Shape& shape) {
    const unsigned size = SampleBytes(shape.format);
    const unsigned topByte = shape.littleEndian ? size - 1 : 0;
    for (std::size_t sample = 0; sample < buffer.size(); sample += size) buffer[sample + topByte] = 0x80;
}

} // namespace

unsigned SampleBytes(int format) {
    switch (format) {
    case AVBased::sfSigned8:
    case AVBased::sfUnsigned8:
        return 1;
    case AVBased::sfSigned16:
    case AVBased::sfUnsigned16:
        return 2;
    case AVBased::sfSigned32:
    case AVBased::sfUnsigned32:
    case AVBased::sfFloat:
        return 4;
    case AVBased::sfDouble:
        return 8;
    default:
        return 0;
    }
}

AudioFrame::Ptr AudioFrame::Allocate(const Shape& shape, unsigned timeStampMs) try {
    const unsigned size = SampleBytes(shape.format);
    if (size == 0 || shape.channels < 1) return nullptr;
    Ptr frame(new AudioFrame);
    frame->m_shape = shape;
    frame->m_timeStamp = timeStampMs;
    const auto channels = static_cast<std::size_t>(shape.channels);
    const std::size_t bytes = std::size_t{shape.samples} * size * (shape.interleaved ? channels : 1);
    frame->m_buffers.assign(shape.interleaved ? 1 : channels,
                            std::vector<unsigned char>(bytes, Silence(shape.format)));
    if (shape.format == AVBased::sfUnsigned16 || shape.format == AVBased::sfUnsigned32)
        for (auto& buffer : frame->m_buffers) SilenceWideUnsigned(buffer, shape);
    return frame;
} catch (const std::bad_alloc&) {
    return nullptr;
}

AudioFrame::Ptr AudioFrame::Copy(const AVFrame* sound, unsigned timeStampMs) {
    const auto format = static_cast<AVSampleFormat>(sound->format);
    Shape shape;
    shape.format = FormatCode(av_get_packed_sample_fmt(format));
    shape.rate = static_cast<unsigned>(sound->sample_rate);
    shape.channels = sound->ch_layout.nb_channels;
    shape.channelLayout = SpeakerMask(sound->ch_layout);
    shape.interleaved = !av_sample_fmt_is_planar(format);
    shape.samples = static_cast<unsigned>(sound->nb_samples);
    Ptr frame = Allocate(shape, timeStampMs);
    if (!frame) return nullptr;
    for (std::size_t index = 0; index < frame->m_buffers.size(); ++index) {
        auto& buffer = frame->m_buffers[index];
        if (!buffer.empty()) std::memcpy(buffer.data(), sound->extended_data[index], buffer.size());
    }
    return frame;
}

int AudioFrame::GetSampleFormat() { return m_shape.format; }
unsigned AudioFrame::GetSampleRate() { return m_shape.rate; }
int AudioFrame::GetChannels() { return m_shape.channels; }
unsigned AudioFrame::GetChannelLayout() { return m_shape.channelLayout; }
bool AudioFrame::IsInterleaved() { return m_shape.interleaved; }
bool AudioFrame::IsLittleEndian() { return m_shape.littleEndian; }
unsigned AudioFrame::GetSampleCount() { return m_shape.samples; }

unsigned char* AudioFrame::GetBuffer(int index, unsigned* size) {
    const bool exists = index >= 0 && static_cast<std::size_t>(index) < m_buffers.size();
    auto* buffer = exists ? &m_buffers[static_cast<std::size_t>(index)] : nullptr;
    if (size) *size = buffer ? static_cast<unsigned>(buffer->size()) : 0;
    return buffer ? buffer->data() : nullptr;
}

unsigned AudioFrame::GetTimeStamp() { return m_timeStamp; }
void AudioFrame::SetTimeStamp(unsigned milliseconds) { m_timeStamp = milliseconds; }
void AudioFrame::Release() { delete this; }

AVBased::IRawAudioFrame* AudioFrame::Clone() try {
    return new AudioFrame(*this);
} catch (const std::bad_alloc&) {
    RecordNoMemory();
    return nullptr;
}

} // namespace mediabridge
