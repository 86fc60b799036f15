#include "host/media/span.h"

#include <algorithm>
#include <utility>

#include "host/support/error.h"

namespace aveffect {

using mediabridge::AVFramePtr;
using mediabridge::AVPacketPtr;

SpanReader::SpanReader(Source& source, const SpanLimits& limits)
    : m_source(source)
    , m_limits(limits) {
    CheckLimits();
    std::optional<int64_t> end = source.EndMs();
    if (limits.toMs) end = end ? std::min(*end, *limits.toMs) : *limits.toMs;
    if (end) m_lengthMs = *end - limits.fromMs.value_or(0);
    if (limits.fromMs && source.CopiesPictures()) {
        m_start = source.SeekToKey(*limits.fromMs);
        if (!m_start) throw Error(ErrorKind::Input, source.Path() + " has no key picture to begin with");
        if (m_lengthMs) *m_lengthMs += *limits.fromMs - av_rescale_q(*m_start, Base(), kMilliseconds);
    } else if (limits.fromMs) {
        source.SeekBefore(*limits.fromMs);
    } else if (!source.CopiesPictures()) {
        m_start = 0;
    }
    for (const AVStream* stream : source.CopiedStreams())
        if (stream->codecpar->codec_type == AVMEDIA_TYPE_AUDIO) m_soundBeforeEnd.push_back(stream->index);
}

void SpanReader::CheckLimits() {
    const int64_t from = m_limits.fromMs.value_or(0);
    if (from < 0) throw Error(ErrorKind::Usage, "the start of the span is negative");
    if (m_limits.toMs && *m_limits.toMs <= from)
        throw Error(ErrorKind::Usage, "the span ends at " + SecondsText(*m_limits.toMs) +
                                          ", which is not after its start at " + SecondsText(from));
    if (m_limits.frameLimit && *m_limits.frameLimit < 1)
        throw Error(ErrorKind::Usage, "the number of frames is " + std::to_string(*m_limits.frameLimit) +
                                          "; it must be at least 1");
    if (from > 0 && m_source.EndMs() && from >= *m_source.EndMs())
        throw Error(ErrorKind::Usage, "the span starts at " + SecondsText(from) + ", but " + m_source.Path() +
                                          " lasts only " + SecondsText(*m_source.EndMs()));
}

std::optional<SpanItem> SpanReader::Next() {
    while (m_ready.empty() && !m_finished) {
        std::optional<SourceItem> item = m_source.Next();
        if (!item)
            EndOfClip();
        else if (item->picture)
            TakePicture(std::move(item->picture));
        else
            TakePacket(std::move(item->packet));
    }
    if (m_ready.empty()) return std::nullopt;
    SpanItem item = std::move(m_ready.front());
    m_ready.pop_front();
    if (item.picture) ++m_emitted;
    return item;
}

void SpanReader::TakePicture(AVFramePtr picture) {
    if (m_end) return;
    const Moment time{picture->pts, Base()};
    // What damaged files show before their own start no file can hold.
    if (time < Moment{m_limits.fromMs.value_or(0), kMilliseconds}) return;
    const bool past = m_limits.toMs && time >= Moment{*m_limits.toMs, kMilliseconds};
    if (!m_start && !past) m_start = picture->pts;
    if (m_pending) EmitPending(picture->pts - m_pending->pts);
    if (past) {
        EndPictures({*m_limits.toMs, kMilliseconds});
    } else if (m_limits.frameLimit && m_taken == *m_limits.frameLimit) {
        EndPictures(time);
    } else {
        ++m_taken;
        m_pending = std::move(picture);
        ReleaseHeld(false);
    }
}

void SpanReader::EmitPending(int64_t duration) {
    m_lastInterval = duration;
    m_lastEnd = {m_pending->pts + duration, Base()};
    if (m_limits.toMs) {
        const int64_t to = av_rescale_q_rnd(*m_limits.toMs, kMilliseconds, Base(), AV_ROUND_UP);
        duration = std::min(duration, to - m_pending->pts);
    }
    m_pending->pts -= *m_start;
    m_pending->pkt_duration = duration;
    m_ready.push_back({std::move(m_pending), nullptr});
}

// The pictures are complete; the sound that lies beside them may come later in the file.
void SpanReader::EndPictures(const Moment& end) {
    m_end = end;
    ReleaseHeld(true);
    m_source.StopPictures(end);
    m_finished = m_soundBeforeEnd.empty() || !m_start;
}

// Without a start the clip begins with its first picture, even where it says that it would not be shown: what
// is shown needs it. A picture past the end that comes before one that is shown may be what that one refers
// to; what then lies between is kept too, so that no gap is seen.
void SpanReader::TakeCopiedPicture(AVPacketPtr packet) {
    const int64_t time = packet->pts == AV_NOPTS_VALUE ? packet->dts : packet->pts;
    if (m_end || time == AV_NOPTS_VALUE) return;
    packet->flags &= ~AV_PKT_FLAG_DISCARD;
    if (!m_start) {
        m_start = std::min<int64_t>(0, time);
        ReleaseHeld(false);
    }
    const auto past = [&](int64_t moment) {
        return m_limits.toMs && Moment{moment, Base()} >= Moment{*m_limits.toMs, kMilliseconds};
    };
    const bool over = past(packet->dts == AV_NOPTS_VALUE ? time : packet->dts);
    if (time < *m_start) {
        return; // belongs to what comes before the key picture
    } else if (past(time) && !(m_lastCopied && time < *m_lastCopied)) {
        m_late.push_back(std::move(packet));
    } else {
        for (AVPacketPtr& late : std::exchange(m_late, {})) {
            const int64_t lateTime = late->pts;
            EmitCopied(std::move(late), lateTime);
        }
        EmitCopied(std::move(packet), time);
    }
    if (over) EndPictures(std::max(Moment{*m_limits.toMs, kMilliseconds}, m_lastEnd));
}

void SpanReader::EmitCopied(AVPacketPtr packet, int64_t time) {
    const int64_t duration = packet->duration > 0 ? packet->duration : UsualDuration();
    m_lastCopied = std::max(m_lastCopied.value_or(time), time);
    m_lastEnd = std::max(m_lastEnd, Moment{time + duration, Base()});
    ++m_emitted;
    packet->pts = time - *m_start;
    if (packet->dts != AV_NOPTS_VALUE) packet->dts -= *m_start;
    packet->duration = duration;
    m_ready.push_back({nullptr, std::move(packet)});
}

// Where only the number of pictures is known, packets wait until these have come as far: subtitles until they
// end, so that they can be cut, and what is behind them in their stream with them.
bool SpanReader::IsTooEarly(const AVPacket& packet) const {
    if (!m_limits.frameLimit || m_end || packet.pts == AV_NOPTS_VALUE) return false;
    const AVStream& stream = *m_source.Format().streams[packet.stream_index];
    const bool subtitle = stream.codecpar->codec_type == AVMEDIA_TYPE_SUBTITLE;
    const auto isBefore = [&packet](const AVPacketPtr& held) {
        return held->stream_index == packet.stream_index;
    };
    const Moment needed{packet.pts + (subtitle ? packet.duration : 0), stream.time_base};
    return !m_pending || needed >= Moment{m_pending->pts, Base()} || std::ranges::any_of(m_held, isBefore);
}

void SpanReader::TakePacket(AVPacketPtr packet) {
    if (packet->stream_index == m_source.Pictures().index) return TakeCopiedPicture(std::move(packet));
    const AVRational base = m_source.Format().streams[packet->stream_index]->time_base;
    if (!m_start || IsTooEarly(*packet)) {
        m_held.push_back(std::move(packet));
        return;
    }
    const int stream = packet->stream_index;
    if (m_end && packet->pts != AV_NOPTS_VALUE && Moment{packet->pts, base} >= *m_end) {
        std::erase(m_soundBeforeEnd, stream);
        m_finished = m_soundBeforeEnd.empty();
    }
    PassPacket(std::move(packet));
}

// Hands the packet out when it starts inside the span; a subtitle that is being shown when the span starts
// stays too.
void SpanReader::PassPacket(AVPacketPtr packet) {
    const AVRational base = m_source.Format().streams[packet->stream_index]->time_base;
    CutSubtitle(*packet);
    const int64_t time = packet->pts == AV_NOPTS_VALUE ? packet->dts : packet->pts;
    if (time != AV_NOPTS_VALUE) {
        const Moment moment{time, base};
        if (m_limits.fromMs && moment < Moment{*m_start, Base()}) return;
        if (m_limits.toMs && moment >= Moment{*m_limits.toMs, kMilliseconds}) return;
        if (m_end && moment >= *m_end) return;
    }
    const int64_t shift = av_rescale_q(*m_start, Base(), base);
    if (packet->pts != AV_NOPTS_VALUE) packet->pts -= shift;
    if (packet->dts != AV_NOPTS_VALUE) packet->dts -= shift;
    m_ready.push_back({nullptr, std::move(packet)});
}

// To the part of its time that lies in the span; what lies outside altogether stays as it is.
void SpanReader::CutSubtitle(AVPacket& packet) const {
    const AVStream& stream = *m_source.Format().streams[packet.stream_index];
    if (stream.codecpar->codec_type != AVMEDIA_TYPE_SUBTITLE || packet.pts == AV_NOPTS_VALUE) return;
    const int64_t start = av_rescale_q(*m_start, Base(), stream.time_base);
    if (m_limits.fromMs && packet.pts < start && packet.pts + packet.duration > start) {
        packet.duration -= start - packet.pts;
        packet.pts = packet.dts = start;
    }
    std::optional<Moment> end = m_end;
    if (m_limits.toMs) end = Moment{*m_limits.toMs, kMilliseconds};
    if (!end) return;
    const int64_t left = av_rescale_q(end->ticks, end->base, stream.time_base) - packet.pts;
    if (left > 0) packet.duration = std::min(packet.duration, left);
}

// Packets held back are decided on again, now that more is known.
void SpanReader::ReleaseHeld(bool all) {
    std::deque<AVPacketPtr> held = std::exchange(m_held, {});
    if (!m_start) return;
    for (AVPacketPtr& packet : held) {
        if (all)
            PassPacket(std::move(packet));
        else
            TakePacket(std::move(packet));
    }
}

void SpanReader::EndOfClip() {
    m_finished = true;
    m_readToEnd = !m_end;
    if (m_pending) EmitPending(LastDuration());
    ReleaseHeld(true);
}

// The last picture has no successor: its packet's duration, else what the container's end leaves, else the
// last interval.
int64_t SpanReader::LastDuration() const {
    if (m_pending->pkt_duration > 0) return m_pending->pkt_duration;
    if (m_source.EndMs()) {
        const int64_t rest = av_rescale_q(*m_source.EndMs(), kMilliseconds, Base()) - m_pending->pts;
        const int64_t tenSeconds = av_rescale_q(10000, kMilliseconds, Base());
        if (rest > 0 && rest <= tenSeconds) return rest;
    }
    return m_lastInterval > 0 ? m_lastInterval : UsualDuration();
}

int64_t SpanReader::UsualDuration() const {
    return std::max<int64_t>(1, av_rescale_q(1, av_inv_q(m_source.FrameRate()), Base()));
}

std::optional<int64_t> SpanReader::ExpectedPictures() const {
    std::optional<int64_t> count = m_source.PictureCount();
    if ((m_limits.fromMs || m_limits.toMs) && m_lengthMs) {
        const AVRational rate = m_source.FrameRate();
        const int64_t inSpan = av_rescale(*m_lengthMs, rate.num, int64_t{1000} * rate.den);
        count = count ? std::min(*count, inSpan) : inSpan;
    }
    if (m_limits.frameLimit) count = count ? std::min(*count, *m_limits.frameLimit) : *m_limits.frameLimit;
    return count;
}

} // namespace aveffect
