#include "host/output/encoder.h"

#include <utility>

#include "host/support/error.h"
#include "host/support/log_capture.h"

namespace aveffect {

Encoder::Encoder(const AVCodec& codec)
    : m_codec(codec)
    , m_packet(av_packet_alloc()) {
    if (!m_packet) throw NoMemory("out of memory");
    Reset();
}

void Encoder::Reset() {
    m_context.reset(avcodec_alloc_context3(&m_codec));
    if (!m_context) throw NoMemory("out of memory");
}

int Encoder::Open(const AVOutputFormat* muxer) {
    if (muxer && (muxer->flags & AVFMT_GLOBALHEADER)) m_context->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    return avcodec_open2(m_context.get(), &m_codec, nullptr);
}

void Encoder::Fail(const std::string& doing, int code, std::string detail) const {
    if (detail.empty()) detail = TakeLibraryError();
    const std::string text = std::string("the encoder ") + m_codec.name + " " + doing;
    RequireMemory(code, text);
    throw Error(ErrorKind::Usage, text + ": " + (detail.empty() ? AvText(code) : detail));
}

void Encoder::Encode(AVFrame* frame, const std::function<void(AVPacket&)>& take) {
    int code = avcodec_send_frame(m_context.get(), frame ? Prepare(frame) : nullptr);
    if (code < 0 && code != AVERROR_EOF) Fail("failed", code);
    for (;;) {
        code = avcodec_receive_packet(m_context.get(), m_packet.get());
        if (code == AVERROR(EAGAIN) || code == AVERROR_EOF) return;
        if (code < 0) Fail("failed", code);
        Mend(*m_packet);
        take(*m_packet);
    }
}

} // namespace aveffect
