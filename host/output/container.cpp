#include "host/output/container.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <string_view>

extern "C" {
#include <libavutil/opt.h>
}

#include "host/support/error.h"
#include "host/support/log_capture.h"

namespace aveffect {
namespace {

// A file without a name can't be opened by one: who wants to read what was written gets it from the file.
int OpenWritten(AVFormatContext* output, AVIOContext** io, const char*, int flags, AVDictionary**) {
    if (flags != AVIO_FLAG_READ) return AVERROR(ENOSYS);
    *io = static_cast<OutputFile*>(output->opaque)->OpenReader();
    return *io ? 0 : AVERROR(ENOMEM);
}

int CloseWritten(AVFormatContext*, AVIOContext* io) {
    OutputFile::CloseReader(io);
    return 0;
}

} // namespace

void CopySideData(AVStream* to, const AVPacketSideData& data) {
    uint8_t* const copy = av_stream_new_side_data(to, data.type, data.size);
    if (!copy) throw NoMemory("no memory for what a stream says of itself");
    std::memcpy(copy, data.data, data.size);
}

Container::Container(const OutputPlan& plan)
    : m_target(plan.target)
    , m_hasIndex(plan.HasIndex()) {
    AVFormatContext* output = nullptr;
    avformat_alloc_output_context2(&output, plan.muxer, nullptr, m_target.c_str());
    m_output.reset(output);
    if (!m_output) throw NoMemory("out of memory");
    // FLAC in MP4, for example, which players have learned since it was called so.
    m_output->strict_std_compliance = FF_COMPLIANCE_EXPERIMENTAL;
}

AVStream* Container::AddStream() {
    AVStream* stream = avformat_new_stream(m_output.get(), nullptr);
    if (!stream) throw NoMemory("out of memory");
    return stream;
}

AVStream* Container::AddStream(const AVCodecContext& encoder) {
    AVStream* stream = AddStream();
    if (avcodec_parameters_from_context(stream->codecpar, &encoder) < 0) throw NoMemory("out of memory");
    stream->time_base = encoder.time_base;
    stream->avg_frame_rate = encoder.framerate;
    stream->sample_aspect_ratio = encoder.sample_aspect_ratio;
    for (int index = 0; index < encoder.nb_coded_side_data; ++index) {
        CopySideData(stream, encoder.coded_side_data[index]);
    }
    return stream;
}

// GIF counts how often the pictures begin again, and says nothing where they don't.
void Container::SetPlayCount(int64_t plays) {
    constexpr int64_t kMost = 65535;
    const std::string_view format = m_output->oformat->name;
    if (format == "gif")
        av_opt_set_int(m_output->priv_data, "loop",
                       plays == 0   ? 0
                       : plays == 1 ? -1
                                    : std::min(plays - 1, kMost),
                       0);
    if (format == "apng") av_opt_set_int(m_output->priv_data, "plays", std::min(plays, kMost), 0);
}

void Container::Start(bool overwrite, const std::atomic<bool>& cancel) {
    m_file = std::make_unique<OutputFile>(m_target, overwrite, cancel);
    m_output->pb = m_file->Io();
    m_output->flags |= AVFMT_FLAG_CUSTOM_IO;
    TakeLibraryError();
    AVDictionary* options = nullptr;
    if (m_file->Seekable()) {
        m_output->opaque = m_file.get();
        m_output->io_open = OpenWritten;
        m_output->io_close2 = CloseWritten;
        if (m_hasIndex) RequireMemory(av_dict_set(&options, "movflags", "+faststart", 0), m_target);
    }
    const int code = avformat_write_header(m_output.get(), &options);
    av_dict_free(&options);
    if (code < 0) Fail(code);
}

int Container::Hand(AVPacket& packet, const AVStream& stream, AVRational base) {
    packet.stream_index = stream.index;
    packet.pos = -1;
    av_packet_rescale_ts(&packet, base, stream.time_base);
    const int64_t duration = av_rescale_q(packet.duration, stream.time_base, kMilliseconds);
    m_lastMs = static_cast<int>(std::clamp<int64_t>(duration, 0, INT_MAX));
    if (packet.pts != AV_NOPTS_VALUE)
        m_firstUs = std::min(m_firstUs.value_or(INT64_MAX),
                             av_rescale_q(packet.pts, stream.time_base, kMicroseconds));
    CountPadding(packet, stream);
    return av_interleaved_write_frame(m_output.get(), &packet);
}

// Readers of Matroska take the codec's delay, which it says of Opus, off the times that it holds, and the
// library does not add it.
void Container::CountPadding(AVPacket& packet, const AVStream& stream) const {
    const AVCodecParameters& kind = *stream.codecpar;
    const std::string_view format = m_output->oformat->name;
    if (kind.codec_id != AV_CODEC_ID_OPUS || kind.sample_rate <= 0 || kind.initial_padding <= 0 ||
        (format != "matroska" && format != "webm"))
        return;
    const int64_t padding = av_rescale_q(kind.initial_padding, {1, kind.sample_rate}, stream.time_base);
    if (packet.pts != AV_NOPTS_VALUE) packet.pts += padding;
    if (packet.dts != AV_NOPTS_VALUE) packet.dts += padding;
}

// How long a picture stays is known from the next one, except for the last.
void Container::SetLastDelay() {
    constexpr int kMost = 65535;
    const std::string_view format = m_output->oformat->name;
    if (format == "gif")
        av_opt_set_int(m_output->priv_data, "final_delay", std::min(m_lastMs / 10, kMost), 0);
    if (format == "apng") av_opt_set_q(m_output->priv_data, "final_delay", {m_lastMs, 1000}, 0);
}

void Container::Write(AVPacket& packet, const AVStream& stream, AVRational base) {
    const int code = Hand(packet, stream, base);
    if (code < 0) Fail(code);
}

bool Container::WriteCopied(AVPacket& packet, const AVStream& stream, AVRational base) {
    const int code = Hand(packet, stream, base);
    const bool refused = code == AVERROR(EINVAL) || code == AVERROR_INVALIDDATA;
    if (code < 0 && !refused) Fail(code);
    m_file->Require(0, "can't be written");
    if (refused) TakeLibraryError();
    return !refused;
}

void Container::Finish() {
    if (m_lastMs > 0) SetLastDelay();
    const int code = av_write_trailer(m_output.get());
    if (code < 0) Fail(code);
    m_file->Require(0, "can't be written");
}

// What is no fault of the file itself is the container's word on what it was asked to hold.
void Container::Fail(int code) {
    m_file->Require(0, "can't be written");
    const std::string detail = TakeLibraryError();
    RequireMemory(code, m_target);
    const bool refused = code == AVERROR(EINVAL) || code == AVERROR(ENOSYS) || code == AVERROR(EPERM) ||
                         code == AVERROR_INVALIDDATA || code == AVERROR_PATCHWELCOME ||
                         code == AVERROR_EXPERIMENTAL;
    throw Error(refused ? ErrorKind::Usage : ErrorKind::Output,
                m_target + " can't be written: " + AvText(code) +
                    (detail.empty() ? "" : " (" + detail + ")"));
}

} // namespace aveffect
