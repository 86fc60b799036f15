#include "host/output/sound_stream.h"

#include <utility>

namespace aveffect {

using mediabridge::AVFramePtr;

SoundStream::SoundStream(SoundFeed feed, Container& output)
    : m_feed(std::move(feed))
    , m_output(output)
    , m_stream(output.AddStream(m_feed.encoder->Context())) {}

void SoundStream::WriteUntil(const Moment& moment) {
    while (const AVFramePtr sound = m_feed.supply->Next(moment)) Encode(sound.get());
}

void SoundStream::Complete(const std::optional<Moment>& end) {
    m_feed.supply->EndAt(end);
    WriteUntil({});
    Encode(nullptr);
}

void SoundStream::Encode(AVFrame* sound) {
    const AVRational base = m_feed.encoder->Context().time_base;
    m_feed.encoder->Encode(sound, [&](AVPacket& packet) {
        // FLAC's last packet holds no sound, only what its header should say; not every container takes it.
        if (packet.size > 0)
            m_output.Write(packet, *m_stream, base);
        else
            m_output.WriteCopied(packet, *m_stream, base);
    });
}

} // namespace aveffect
