#include "host/media/sound_reader.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "host/support/error.h"

namespace aveffect {

using mediabridge::AVFramePtr;

SoundReader::SoundReader(SoundRequest request, const std::atomic<bool>& cancel)
    : m_request(std::move(request))
    , m_interrupt{&cancel, std::nullopt}
    , m_input(OpenInput(m_request.source, m_interrupt))
    , m_packet(av_packet_alloc())
    , m_resampler(swr_alloc()) {
    const std::string& path = m_request.source.path;
    if (!m_packet || !m_resampler) throw NoMemory(path + ": out of memory");
    const AVStream* pictures = FindPictures(*m_input, m_request.source);
    m_stream = FindSound(*m_input, m_request.source, pictures);
    if (!m_stream) throw Error(ErrorKind::Input, path + " has no sound any more");
    for (unsigned index = 0; index < m_input->nb_streams; ++index)
        if (m_input->streams[index] != m_stream) m_input->streams[index]->discard = AVDISCARD_ALL;
    m_decoder = std::make_unique<Decoder>(m_input, *m_stream, 1);
    SeekNearStart();
}

// Where the library makes up a file's index while it reads, times after a jump would be guesses; not so where
// samples lie plain.
bool CanJump(const AVFormatContext& input, const AVStream& sound) {
    const auto plain = {"wav", "w64", "aiff", "au"};
    return !(input.iformat->flags & (AVFMT_GENERIC_INDEX | AVFMT_NOTIMESTAMPS)) ||
           (std::string_view(avcodec_get_name(sound.codecpar->codec_id)).starts_with("pcm_") &&
            std::ranges::find(plain, std::string_view(input.iformat->name)) != plain.end());
}

// Some time before the start, for decoders need what lies before a moment to give its samples exactly.
void SoundReader::SeekNearStart() {
    constexpr int64_t kLeadMs = 2000;
    const AVRational base = m_stream->time_base;
    const int64_t target = av_rescale_q(m_request.start.ticks, m_request.start.base, base) -
                           av_rescale_q(kLeadMs, kMilliseconds, base);
    const int64_t first = m_stream->start_time == AV_NOPTS_VALUE ? 0 : m_stream->start_time;
    if (target <= first || !CanJump(*m_input, *m_stream)) return;
    av_seek_frame(m_input.get(), m_stream->index, target, AVSEEK_FLAG_BACKWARD);
}

int64_t SoundReader::Samples(const Moment& time) const {
    const AVRational base{1, m_request.shape.rate};
    return av_rescale_q(time.ticks, time.base, base) -
           av_rescale_q(m_request.start.ticks, m_request.start.base, base);
}

DamageReport SoundReader::Damage() const {
    DamageReport report = m_input.get_deleter().damage->Report();
    report.Add(m_decoder->Damage());
    return report;
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
        if (ReadPacket(m_input, *m_packet) < 0) {
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
    const std::string& path = m_request.source.path;
    const SoundShape& shape = m_request.shape;
    if (!converted) throw NoMemory(path + ": out of memory");
    converted->format = m_request.format;
    converted->sample_rate = shape.rate;
    int code = av_channel_layout_from_string(&converted->ch_layout, shape.layout.c_str());
    if (code < 0) ThrowFailure(ErrorKind::Input, path + ": its sound can't be converted", code);
    int64_t time = m_end;
    if (sound) {
        if (sound->ch_layout.order != AV_CHANNEL_ORDER_NATIVE)
            av_channel_layout_default(&sound->ch_layout, sound->ch_layout.nb_channels);
        if (sound->best_effort_timestamp != AV_NOPTS_VALUE) {
            time = Samples({sound->best_effort_timestamp, m_stream->time_base});
            if (swr_is_initialized(m_resampler.get())) time -= swr_get_delay(m_resampler.get(), shape.rate);
        }
    } else if (!swr_is_initialized(m_resampler.get())) {
        return nullptr;
    }
    code = swr_convert_frame(m_resampler.get(), converted.get(), sound);
    if (code == AVERROR_INPUT_CHANGED) {
        swr_close(m_resampler.get());
        code = swr_convert_frame(m_resampler.get(), converted.get(), sound);
    }
    if (code < 0) ThrowFailure(ErrorKind::Input, path + ": its sound can't be converted", code);
    if (converted->nb_samples == 0) return nullptr;
    converted->pts = time;
    m_end = time + converted->nb_samples;
    return converted;
}

} // namespace aveffect
