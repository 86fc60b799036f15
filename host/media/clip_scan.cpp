#include "host/media/clip_scan.h"

#include <algorithm>

#include "host/support/error.h"

namespace aveffect {
namespace {

/// The end of a packet's picture in the file's times; absent when it says no time.
std::optional<int64_t> PacketEnd(const AVPacket& packet, const AVStream& stream, AVRational rate) {
    const int64_t time = packet.pts == AV_NOPTS_VALUE ? packet.dts : packet.pts;
    if (time == AV_NOPTS_VALUE) return std::nullopt;
    const int64_t usual = std::max<int64_t>(1, av_rescale_q(1, av_inv_q(rate), stream.time_base));
    return time + (packet.duration > 0 ? packet.duration : usual);
}

void ReadThrough(ClipScan& scan, bool endIsKnown, const std::atomic<bool>& cancel) {
    ReadInterrupt interrupt{&cancel, std::nullopt};
    const InputContextPtr input = OpenInput(scan.request, interrupt);
    const AVStream* pictures = FindPictures(*input, scan.request);
    const AVStream* sound = FindSound(*input, scan.request, pictures);
    if (sound && sound->codecpar->sample_rate > 0)
        scan.sound = SoundShape{sound->codecpar->sample_rate, LayoutText(sound->codecpar->ch_layout)};
    if (endIsKnown) return;
    for (unsigned index = 0; index < input->nb_streams; ++index)
        if (input->streams[index] != pictures) input->streams[index]->discard = AVDISCARD_ALL;

    const mediabridge::AVPacketPtr packet(av_packet_alloc());
    if (!packet) throw NoMemory(scan.request.path + ": out of memory");
    int64_t count = 0;
    std::optional<int64_t> end;
    int code = 0;
    for (; (code = ReadPacket(input, *packet)) >= 0; av_packet_unref(packet.get())) {
        // Packets before an edit's start are only there to be decoded.
        if (packet->stream_index != pictures->index || (packet->flags & AV_PKT_FLAG_DISCARD)) continue;
        ++count;
        const std::optional<int64_t> ends = PacketEnd(*packet, *pictures, scan.rate);
        if (ends) end = std::max(end.value_or(*ends), *ends);
    }
    if (interrupt.Due()) throw Error(ErrorKind::Interrupted, "interrupted; nothing was written");
    // What is damaged is told when it is decoded; what could not be read may be there by then.
    if (code != AVERROR_EOF && code != AVERROR_INVALIDDATA)
        ThrowFailure(ErrorKind::Input, scan.request.path + " can't be read to its end", code);
    const AVRational base = pictures->time_base;
    scan.end = end ? Moment{*end - av_rescale_q(scan.start.ticks, scan.start.base, base), base}
                   : Moment{count, av_inv_q(scan.rate)};
    scan.still = count == 1;
}

} // namespace

std::string LayoutText(const AVChannelLayout& layout) {
    AVChannelLayout usual = {};
    const bool known = layout.order == AV_CHANNEL_ORDER_NATIVE;
    if (!known) av_channel_layout_default(&usual, std::max(1, layout.nb_channels));
    if (!known && usual.order != AV_CHANNEL_ORDER_NATIVE) return std::to_string(usual.nb_channels) + "C";
    char text[64] = {};
    std::snprintf(text, sizeof text, "0x%llx",
                  static_cast<unsigned long long>(known ? layout.u.mask : usual.u.mask));
    av_channel_layout_uninit(&usual);
    return text;
}

int64_t ClipScan::PicturesAt(AVRational wanted) const {
    return std::max<int64_t>(1, av_rescale_q(end.ticks, end.base, av_inv_q(wanted)));
}

ClipScan ScanClip(const SourceRequest& request, const std::atomic<bool>& cancel,
                  const std::optional<ClipEnd>& known) {
    ClipScan scan;
    scan.request = request;
    RequireRereadable(scan.request.path);
    {
        Source source(scan.request, Source::Others::None, 1, cancel);
        scan.rate = source.FrameRate();
        scan.start = source.Start();
        const std::optional<SourceItem> first = source.Next();
        if (first) scan.format = static_cast<AVPixelFormat>(first->picture->format);
        if (!first) throw Error(ErrorKind::Input, request.path + " holds no picture that can be decoded");
    }
    if (known) static_cast<ClipEnd&>(scan) = *known;
    ReadThrough(scan, known.has_value(), cancel);
    return scan;
}

} // namespace aveffect
