#include "host/sound_reader.h"

#include <utility>

#include "host/error.h"

namespace aveffect {

using mediabridge::AVFramePtr;

SoundReader::SoundReader(const ClipScan& scan, SoundShape shape, const std::atomic<bool>& cancel)
    : m_path(scan.request.path)
    , m_shape(std::move(shape))
    , m_start(scan.start)
    , m_interrupt{&cancel, std::nullopt}
    , m_input(OpenInput(m_path, m_interrupt))
    , m_packet(av_packet_alloc())
    , m_resampler(swr_alloc()) {
    if (!m_packet || !m_resampler) throw Error(ErrorKind::Input, m_path + ": out of memory");
    const AVStream* pictures = FindPictures(*m_input, scan.request);
    m_stream = FindSound(*m_input, scan.request, pictures);
    if (!m_stream) throw Error(ErrorKind::Input, m_path + " has no sound any more");
    for (unsigned index = 0; index < m_input->nb_streams; ++index)
        if (m_input->streams[index] != m_stream) m_input->streams[index]->discard = AVDISCARD_ALL;
    m_decoder = std::make_unique<Decoder>(*m_stream, 1, m_path);
}

AVFramePtr SoundReader::Next() {
    while (AVFramePtr sound = Decode())
        if (AVFramePtr converted = Convert(sound.get())) return converted;
    return std::exchange(m_flushed, true) ? nullptr : Convert(nullptr);
}

AVFramePtr SoundReader::Decode() {
    for (;;) {
        if (AVFramePtr sound = m_decoder->Receive()) return sound;
        if (m_draining) return nullptr;
        av_packet_unref(m_packet.get());
        if (av_read_frame(m_input.get(), m_packet.get()) < 0) {
            if (m_interrupt.Due()) throw Error(ErrorKind::Interrupted, "interrupted; nothing was written");
            m_draining = true;
            m_decoder->Send(nullptr);
        } else if (m_packet->stream_index == m_stream->index) {
            m_decoder->Send(m_packet.get());
        }
    }
}

// Null in, at the end: what the resampler still holds. Null out when nothing came.
AVFramePtr SoundReader::Convert(AVFrame* sound) {
    AVFramePtr converted(av_frame_alloc());
    if (!converted) throw Error(ErrorKind::Input, m_path + ": out of memory");
    converted->format = AV_SAMPLE_FMT_FLTP;
    converted->sample_rate = m_shape.rate;
    if (av_channel_layout_from_string(&converted->ch_layout, m_shape.layout.c_str()) < 0)
        throw Error(ErrorKind::Input, m_path + ": its sound can't be converted");
    int64_t time = m_end;
    if (sound) {
        if (sound->ch_layout.order != AV_CHANNEL_ORDER_NATIVE)
            av_channel_layout_default(&sound->ch_layout, sound->ch_layout.nb_channels);
        if (sound->best_effort_timestamp != AV_NOPTS_VALUE) {
            const AVRational base{1, m_shape.rate};
            time = av_rescale_q(sound->best_effort_timestamp, m_stream->time_base, base) -
                   av_rescale_q(m_start.ticks, m_start.base, base);
            if (swr_is_initialized(m_resampler.get())) time -= swr_get_delay(m_resampler.get(), m_shape.rate);
        }
    } else if (!swr_is_initialized(m_resampler.get())) {
        return nullptr;
    }
    int code = swr_convert_frame(m_resampler.get(), converted.get(), sound);
    if (code == AVERROR_INPUT_CHANGED) {
        swr_close(m_resampler.get());
        code = swr_convert_frame(m_resampler.get(), converted.get(), sound);
    }
    if (code < 0) throw Error(ErrorKind::Input, m_path + ": its sound can't be converted: " + AvText(code));
    if (converted->nb_samples == 0) return nullptr;
    converted->pts = time;
    m_end = time + converted->nb_samples;
    return converted;
}

} // namespace aveffect
