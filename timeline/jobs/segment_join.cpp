#include "timeline/jobs/segment_join.h"

#include <algorithm>
#include <cstring>

#include "host/media/left_out.h"
#include "host/media/source.h"
#include "host/output/media_writer.h"
#include "host/output/stream_copy.h"
#include "host/support/stages.h"

namespace aveffect {

namespace {

using mediabridge::AVPacketPtr;

Source Open(const std::string& path, const std::atomic<bool>& cancel) {
    return {{path}, Source::Others::WithPictures, 1, cancel};
}

bool IsAlike(const AVCodecParameters& a, const AVCodecParameters& b) {
    return a.codec_id == b.codec_id && a.width == b.width && a.height == b.height && a.format == b.format &&
           a.extradata_size == b.extradata_size &&
           (a.extradata_size == 0 ||
            std::memcmp(a.extradata, b.extradata, static_cast<size_t>(a.extradata_size)) == 0);
}

/// The next packet of the pictures; null at the end.
AVPacketPtr NextOf(Source& source) {
    while (std::optional<SourceItem> item = source.Next())
        if (item->packet->stream_index == source.Pictures().index) return std::move(item->packet);
    source.RequireRead();
    return nullptr;
}

/// Streams that lie beside the pictures, packet by packet.
class Beside {
public:
    Beside(const std::string& path, int64_t shiftUs, const std::atomic<bool>& cancel)
        : m_interrupt{&cancel, std::nullopt}
        , m_input(OpenInput({path}, m_interrupt))
        , m_shiftUs(shiftUs)
        , m_packet(av_packet_alloc()) {
        if (!m_packet) throw std::bad_alloc();
    }

    /// Behind the streams of the output that have numbers of other files.
    void AddTo(MediaWriter& file, int before) {
        m_before = before;
        for (unsigned index = 0; index < m_input->nb_streams; ++index) {
            AVStream& stream = *m_input->streams[index];
            if (IsChapters(*m_input, stream)) {
                stream.discard = AVDISCARD_ALL; // the writer makes its own
                continue;
            }
            const int own = stream.index;
            stream.index += before;
            file.AddCopy(stream, true);
            stream.index = own;
        }
        Read();
    }

    /// Writes what begins before that moment.
    void WriteUntil(MediaWriter& file, const std::optional<Moment>& until) {
        for (; !m_ended; Read()) {
            const AVRational base = m_input->streams[m_packet->stream_index]->time_base;
            if (until && m_packet->dts != AV_NOPTS_VALUE && Moment{m_packet->dts, base} >= *until) return;
            m_packet->stream_index += m_before;
            file.WritePacket(*m_packet);
        }
    }

    DamageReport Damage() const { return m_input.get_deleter().damage->Report(); }

private:
    void Read() {
        do {
            av_packet_unref(m_packet.get());
            m_ended = !NextPacket(m_input, *m_packet);
            if (m_ended) return;
        } while (m_input->streams[m_packet->stream_index]->discard == AVDISCARD_ALL);
        const int64_t shift =
            av_rescale_q(m_shiftUs, kMicroseconds, m_input->streams[m_packet->stream_index]->time_base);
        if (m_packet->pts != AV_NOPTS_VALUE) m_packet->pts -= shift;
        if (m_packet->dts != AV_NOPTS_VALUE) m_packet->dts -= shift;
    }

    ReadInterrupt m_interrupt;
    InputContextPtr m_input;
    const int64_t m_shiftUs;
    const AVPacketPtr m_packet;
    int m_before = 0;
    bool m_ended = false;
};

/// Gives packets their times in the film. Containers round times, so at a constant rate they are counted
/// anew.
class PacketTimes {
public:
    PacketTimes(const SegmentRow& row, AVRational base, int64_t delay)
        : m_interval(av_inv_q(row.rate))
        , m_base(base)
        , m_delay(delay)
        , m_first(av_rescale_q(row.first.ticks, row.first.base, base)) {}

    void Set(AVPacket& packet, const Segment& segment, AVRational own) {
        if (segment.start) return SetAsTheyAre(packet, *segment.start, own);
        const int64_t shown =
            packet.pts == AV_NOPTS_VALUE ? m_number : m_begin + av_rescale_q(packet.pts, own, m_interval);
        packet.pts = m_first + av_rescale_q(shown, m_interval, m_base);
        packet.dts = m_first + av_rescale_q(m_number++ - m_delay, m_interval, m_base);
        packet.duration = m_first + av_rescale_q(shown + 1, m_interval, m_base) - packet.pts;
    }

    void End(const Segment& segment) { m_begin += segment.pictures; }

    /// Of all pictures.
    Moment End() const { return m_end.base.den > 0 && m_end.ticks > 0 ? m_end : Moment{m_begin, m_interval}; }

private:
    void SetAsTheyAre(AVPacket& packet, const Moment& start, AVRational own) {
        const int64_t begin = av_rescale_q(start.ticks, start.base, m_base);
        packet.pts = begin + av_rescale_q(packet.pts, own, m_base);
        packet.dts = begin + av_rescale_q(packet.dts, own, m_base);
        if (m_lastDts != INT64_MIN) packet.dts = std::min(packet.pts, std::max(packet.dts, m_lastDts + 1));
        m_lastDts = packet.dts;
        packet.duration = av_rescale_q(packet.duration, own, m_base);
        m_end = std::max(m_end, Moment{packet.pts + packet.duration, m_base});
    }

    AVRational m_interval, m_base;
    int64_t m_delay, m_first;
    int64_t m_begin = 0, m_number = 0;
    int64_t m_lastDts = INT64_MIN;
    Moment m_end;
};

} // namespace

int64_t DelayOf(const std::string& path, AVRational rate, const std::atomic<bool>& cancel) {
    Source source = Open(path, cancel);
    const AVRational base = source.Pictures().time_base;
    int64_t delay = 0;
    for (int64_t number = 0; const AVPacketPtr packet = NextOf(source); ++number)
        if (packet->pts != AV_NOPTS_VALUE)
            delay = std::max(delay, number - av_rescale_q(packet->pts, base, av_inv_q(rate)));
    return delay;
}

DamageReport JoinSegments(const SegmentRow& row, const OutputPlan& plan, bool overwrite,
                          std::optional<SoundFeed> sound, const std::atomic<bool>& cancel) {
    const std::vector<Segment>& segments = row.segments;
    int64_t delay = 0;
    for (const Segment& segment : segments)
        delay = std::max(delay, segment.delay ? *segment.delay : DelayOf(segment.path, row.rate, cancel));

    const Source first = Open(segments.front().path, cancel);
    const AVRational base = first.Pictures().time_base;
    MediaWriter file(plan);
    AVStream& stream = file.AddCopiedPictures(first.Pictures());
    stream.avg_frame_rate = stream.r_frame_rate = row.rate;
    CopyTags(&stream.metadata, first.Pictures().metadata);
    CopyTags(&file.File().Format().metadata, first.Format().metadata);
    CopyChapters(file.File(), first.Format(), {});
    if (sound) file.AddSound(std::move(*sound));
    std::optional<Beside> beside;
    if (!row.beside.empty()) {
        beside.emplace(row.beside, row.besideShiftUs, cancel);
        beside->AddTo(file, static_cast<int>(first.Format().nb_streams));
    }
    file.Start(overwrite, cancel);
    PacketTimes times(row, base, delay);
    for (size_t index = 0; index < segments.size(); ++index) {
        const Segment& segment = segments[index];
        Source source = Open(segment.path, cancel);
        if (!IsAlike(*first.Pictures().codecpar, *source.Pictures().codecpar))
            throw Error(ErrorKind::Output, "the pieces " + segments.front().path + " and " + segment.path +
                                               " are not encoded alike; render the whole in one");
        const AVRational own = source.Pictures().time_base;
        while (const AVPacketPtr packet = NextOf(source)) {
            CheckCancel(cancel);
            if (row.check) row.check(index, packet.get());
            times.Set(*packet, segment, own);
            packet->stream_index = first.Pictures().index;
            if (beside) beside->WriteUntil(file, Moment{packet->dts, base});
            file.WritePacket(*packet);
        }
        if (row.check) row.check(index, nullptr);
        times.End(segment);
    }
    if (beside) beside->WriteUntil(file, std::nullopt);
    file.EndStreams(times.End());
    file.Finish();
    CheckCancel(cancel);
    DamageReport damage = file.Damage();
    if (beside) damage.Add(beside->Damage());
    file.Publish();
    return damage;
}

} // namespace aveffect
