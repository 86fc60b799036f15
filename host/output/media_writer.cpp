#include "host/output/media_writer.h"

#include <algorithm>
#include <utility>

#include "host/output/stream_copy.h"

namespace aveffect {

using mediabridge::AVFramePtr;

MediaWriter::MediaWriter(const OutputPlan& plan, std::string copiedFrom)
    : m_plan(plan)
    , m_copiedFrom(std::move(copiedFrom))
    , m_file(plan) {}

AVStream& MediaWriter::AddPictures(const AVFrame& sample, const PictureTimes& times) {
    m_pictureBase = times.base;
    return m_pictureStream.emplace(m_plan, sample, times, m_file).Stream();
}

AVStream& MediaWriter::AddSound(SoundFeed feed) {
    return m_sounds.emplace_back(std::make_unique<SoundStream>(std::move(feed), m_file))->Stream();
}

MediaWriter::Copy& MediaWriter::CopyFor(const AVStream& stream) {
    const auto index = static_cast<size_t>(stream.index);
    if (index >= m_copies.size()) m_copies.resize(index + 1);
    m_copies[index].base = stream.time_base;
    return m_copies[index];
}

void MediaWriter::AddCopy(const AVStream& stream, bool withLead) {
    Copy& copy = CopyFor(stream);
    copy.target = AddCopiedStream(m_file, stream);
    copy.withLead = withLead;
}

AVStream& MediaWriter::AddCopiedPictures(const AVStream& stream) {
    m_copiedPictures = aveffect::AddCopiedPictures(m_file, stream);
    CopyFor(stream).target = m_copiedPictures;
    return *m_copiedPictures;
}

void MediaWriter::AddSubtitles(const AVStream& stream, AVCodecID codec) {
    CopyFor(stream).rewritten = std::make_unique<TextSubtitles>(stream, codec, m_file);
}

void MediaWriter::Start(bool overwrite, const std::atomic<bool>& cancel) { m_file.Start(overwrite, cancel); }

void MediaWriter::WriteSound(const Moment& until) {
    for (const auto& sound : m_sounds) sound->WriteUntil(until);
}

// Sound first, so that no part of the file waits long for its neighbour.
void MediaWriter::WritePicture(AVFramePtr picture) {
    m_picturesEnd = {picture->pts + picture->pkt_duration, m_pictureBase};
    WriteSound(m_picturesEnd);
    ++m_pictures;
    m_pictureStream->Write(std::move(picture));
}

bool MediaWriter::WritePacket(AVPacket& packet) {
    const auto index = static_cast<size_t>(packet.stream_index);
    if (index >= m_copies.size()) return false;
    Copy& copy = m_copies[index];
    const bool heard = !(packet.flags & AV_PKT_FLAG_DISCARD);
    copy.withLead = copy.withLead && !heard;
    if (!heard && !copy.withLead) return false;
    if (copy.rewritten) {
        if (!copy.rewritten->Write(packet)) ++m_refused;
        return true;
    }
    if (!copy.target) return false;
    const bool firstPicture = copy.target == m_copiedPictures && m_pictures == 0;
    if (copy.target == m_copiedPictures) FollowPictures(packet, copy.base);
    if (firstPicture) // a container that refuses this one refuses them all
        m_file.Write(packet, *copy.target, copy.base);
    else if (!m_file.WriteCopied(packet, *copy.target, copy.base))
        ++m_refused;
    return true;
}

void MediaWriter::FollowPictures(const AVPacket& packet, AVRational base) {
    m_picturesEnd = std::max(m_picturesEnd, Moment{packet.pts + packet.duration, base});
    WriteSound(m_picturesEnd);
    ++m_pictures;
}

void MediaWriter::EndStreams(const std::optional<Moment>& soundEnd) {
    if (m_pictureStream) m_pictureStream->Complete();
    for (const auto& sound : m_sounds) sound->Complete(soundEnd);
}

Moment MediaWriter::SoundReached() const {
    Moment latest;
    for (const auto& sound : m_sounds) latest = std::max(latest, sound->Supply().Reached());
    return latest;
}

DamageReport MediaWriter::Damage() const {
    DamageReport report = CopyDamage(m_copiedFrom, m_refused);
    for (const auto& sound : m_sounds) report.Add(sound->Supply().Damage());
    return report;
}

} // namespace aveffect
