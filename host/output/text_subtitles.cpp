#include "host/output/text_subtitles.h"

#include <cstring>
#include <initializer_list>
#include <limits>
#include <string_view>

#include "host/output/stream_copy.h"
#include "host/support/error.h"

namespace aveffect {
namespace {

constexpr int kLargest = 1 << 20; ///< bytes of one subtitle

struct SubtitleOwner {
    AVSubtitle subtitle = {};
    SubtitleOwner() = default;
    SubtitleOwner(const SubtitleOwner&) = delete;
    SubtitleOwner& operator=(const SubtitleOwner&) = delete;
    ~SubtitleOwner() { avsubtitle_free(&subtitle); }
};

bool IsText(AVCodecID codec) {
    for (const AVCodecID text : {AV_CODEC_ID_SUBRIP, AV_CODEC_ID_TEXT, AV_CODEC_ID_WEBVTT,
                                 AV_CODEC_ID_MOV_TEXT, AV_CODEC_ID_ASS, AV_CODEC_ID_SSA})
        if (codec == text) return true;
    return false;
}

[[noreturn]] void Fail(const AVStream& input, AVCodecID codec, int code) {
    ThrowFailure(ErrorKind::Output,
                 std::string("the ") + avcodec_get_name(input.codecpar->codec_id) +
                     " subtitles can't be rewritten as " + avcodec_get_name(codec),
                 code);
}

} // namespace

// MPEG's streams take anything, but nothing reads words from them again.
bool HoldsSubtitles(const OutputPlan& plan, AVCodecID codec) {
    const std::string_view muxer = plan.muxer->name;
    if (muxer == "mpegts")
        return codec == AV_CODEC_ID_DVB_SUBTITLE || codec == AV_CODEC_ID_DVB_TELETEXT ||
               codec == AV_CODEC_ID_HDMV_PGS_SUBTITLE;
    if (muxer == "mpeg" || muxer == "vob" || muxer == "dvd" || muxer == "svcd")
        return codec == AV_CODEC_ID_DVD_SUBTITLE;
    return avformat_query_codec(plan.muxer, codec, FF_COMPLIANCE_NORMAL) == 1;
}

AVCodecID TextCodecFor(const OutputPlan& plan, AVCodecID input) {
    if (!IsText(input) || !avcodec_find_decoder(input)) return AV_CODEC_ID_NONE;
    for (const AVCodecID codec :
         {AV_CODEC_ID_SUBRIP, AV_CODEC_ID_WEBVTT, AV_CODEC_ID_MOV_TEXT, AV_CODEC_ID_ASS})
        if (HoldsSubtitles(plan, codec) && avcodec_find_encoder(codec)) return codec;
    return AV_CODEC_ID_NONE;
}

TextSubtitles::TextSubtitles(const AVStream& input, AVCodecID codec, Container& output)
    : m_base(input.time_base)
    , m_decoder(avcodec_alloc_context3(avcodec_find_decoder(input.codecpar->codec_id)))
    , m_encoder(avcodec_alloc_context3(avcodec_find_encoder(codec)))
    , m_packet(av_packet_alloc())
    , m_output(output)
    , m_stream(nullptr) {
    if (!m_decoder || !m_encoder || !m_packet) throw NoMemory("out of memory");
    int code = avcodec_parameters_to_context(m_decoder.get(), input.codecpar);
    m_decoder->pkt_timebase = m_base;
    if (code >= 0) code = avcodec_open2(m_decoder.get(), nullptr, nullptr);
    if (code < 0) Fail(input, codec, code);
    m_encoder->time_base = kMilliseconds;
    // The styles, which every decoder of words gives; libavcodec frees the copy with the context.
    if (m_decoder->subtitle_header) {
        const auto size = static_cast<size_t>(m_decoder->subtitle_header_size);
        m_encoder->subtitle_header = static_cast<uint8_t*>(av_mallocz(size + 1));
        if (!m_encoder->subtitle_header) throw NoMemory("out of memory");
        std::memcpy(m_encoder->subtitle_header, m_decoder->subtitle_header, size);
        m_encoder->subtitle_header_size = m_decoder->subtitle_header_size;
    }
    code = avcodec_open2(m_encoder.get(), nullptr, nullptr);
    if (code < 0) Fail(input, codec, code);
    m_stream = m_output.AddStream(*m_encoder);
    m_stream->disposition = input.disposition;
    CopyTags(&m_stream->metadata, input.metadata);
}

bool TextSubtitles::Write(const AVPacket& packet) {
    SubtitleOwner shown;
    AVSubtitle& subtitle = shown.subtitle;
    int found = 0;
    const mediabridge::AVPacketPtr input(av_packet_clone(&packet));
    if (!input) throw NoMemory("out of memory");
    if (packet.pts == AV_NOPTS_VALUE) return false;
    const int code = avcodec_decode_subtitle2(m_decoder.get(), &subtitle, &found, input.get());
    RequireMemory(code, "out of memory");
    if (code < 0) return false;
    if (!found || subtitle.num_rects == 0) return true;
    int64_t duration = av_rescale_q(packet.duration, m_base, kMilliseconds);
    if (duration <= 0 && subtitle.end_display_time < std::numeric_limits<int32_t>::max())
        duration = subtitle.end_display_time;
    subtitle.pts = av_rescale_q(packet.pts, m_base, kMicroseconds);
    subtitle.start_display_time = 0;
    subtitle.end_display_time = static_cast<uint32_t>(duration);
    av_packet_unref(m_packet.get());
    if (av_new_packet(m_packet.get(), kLargest) < 0) throw NoMemory("out of memory");
    const int size = avcodec_encode_subtitle(m_encoder.get(), m_packet->data, kLargest, &subtitle);
    RequireMemory(size, "out of memory");
    if (size < 0) return false;
    av_shrink_packet(m_packet.get(), size);
    m_packet->pts = m_packet->dts = packet.pts;
    m_packet->duration = av_rescale_q(duration, kMilliseconds, m_base);
    m_packet->flags |= AV_PKT_FLAG_KEY;
    return m_output.WriteCopied(*m_packet, *m_stream, m_base);
}

} // namespace aveffect
