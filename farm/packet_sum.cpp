#include "farm/packet_sum.h"

#include <algorithm>
#include <array>
#include <new>

#include "host/media/source.h"

namespace aveffect {

void PacketSum::Add(const AVPacket& packet) {
    const std::array<int64_t, 3> numbers = {packet.stream_index, packet.size, packet.pts};
    m_digest.Add(numbers.data(), sizeof numbers);
    m_digest.Add(packet.data, static_cast<size_t>(packet.size));
    ++m_packets;
}

PacketSum::Result PacketSum::Finish() { return {m_packets, m_digest.Text()}; }

PacketSum::Result SumOf(const std::string& path, bool pictures, const std::atomic<bool>& cancel) {
    PacketSum sum;
    if (pictures) {
        Source source({path}, Source::Others::WithPictures, 1, cancel);
        while (const std::optional<SourceItem> item = source.Next())
            if (item->packet->stream_index == source.Pictures().index) sum.Add(*item->packet);
        source.RequireRead();
        return sum.Finish();
    }
    ReadInterrupt interrupt{&cancel, std::nullopt};
    const InputContextPtr input = OpenInput({path}, interrupt);
    const mediabridge::AVPacketPtr packet(av_packet_alloc());
    if (!packet) throw std::bad_alloc();
    for (; NextPacket(input, *packet); av_packet_unref(packet.get())) sum.Add(*packet);
    return sum.Finish();
}

int64_t FirstUs(const std::string& path, const std::atomic<bool>& cancel) {
    // Streams begin close together, and are interleaved.
    constexpr int kPackets = 200;
    ReadInterrupt interrupt{&cancel, std::nullopt};
    const InputContextPtr input = OpenInput({path}, interrupt);
    const mediabridge::AVPacketPtr packet(av_packet_alloc());
    if (!packet) throw std::bad_alloc();
    int64_t first = INT64_MAX;
    for (int index = 0; index < kPackets && NextPacket(input, *packet); ++index) {
        if (packet->pts != AV_NOPTS_VALUE)
            first = std::min(first, av_rescale_q(packet->pts, input->streams[packet->stream_index]->time_base,
                                                 kMicroseconds));
        av_packet_unref(packet.get());
    }
    return first == INT64_MAX ? 0 : first;
}

} // namespace aveffect
