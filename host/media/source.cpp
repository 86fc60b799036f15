#include "host/media/source.h"

#include <algorithm>
#include <string_view>
#include <utility>

extern "C" {
#include <libavutil/parseutils.h>
}

#include "host/support/error.h"

namespace aveffect {

using mediabridge::AVFramePtr;
using mediabridge::AVPacketPtr;

Source::Source(const SourceRequest& request, Others others, unsigned threads, const std::atomic<bool>& cancel)
    : m_path(request.path)
    , m_packet(av_packet_alloc())
    , m_copiesPictures(others == Others::WithPictures) {
    if (!m_packet) throw NoMemory(m_path + ": out of memory");
    m_interrupt.cancel = &cancel;
    m_input = OpenInput(request, m_interrupt);
    RequireStreams(*m_input, request);
    m_pictures = FindPictures(*m_input, request);
    if (!m_pictures) throw Error(ErrorKind::Input, m_path + " has no picture stream");
    m_decoder = std::make_unique<Decoder>(m_input, *m_pictures, threads);
    ChooseStreams(others, request);
    if (m_copiesPictures) m_input->flags |= AVFMT_FLAG_GENPTS; // AVI has no times of presentation
    m_start = StartOf(*m_input, m_pictures);
    FindEnd();
}

void Source::ChooseStreams(Others others, const SourceRequest& request) {
    for (unsigned index = 0; index < m_input->nb_streams; ++index) {
        AVStream* stream = m_input->streams[index];
        if (stream == m_pictures) continue;
        const AVMediaType type = stream->codecpar->codec_type;
        const bool copied = others != Others::None &&
                            (type == AVMEDIA_TYPE_AUDIO || type == AVMEDIA_TYPE_SUBTITLE ||
                             type == AVMEDIA_TYPE_ATTACHMENT) &&
                            IsWanted(*m_input, request, *stream);
        if (copied)
            m_copied.push_back(stream);
        else
            stream->discard = AVDISCARD_ALL;
    }
}

// The container's start is rounded to microseconds; where the pictures start it, theirs is exact.
Moment StartOf(const AVFormatContext& input, const AVStream* pictures, const AVStream* sound) {
    const int64_t start = input.start_time == AV_NOPTS_VALUE ? 0 : input.start_time;
    const AVStream* const first = pictures ? pictures : sound;
    if (!first || first->start_time == AV_NOPTS_VALUE) return {start, kMicroseconds};
    const int64_t begin = av_rescale_q(first->start_time, first->time_base, kMicroseconds);
    if (input.start_time == AV_NOPTS_VALUE || std::abs(begin - start) <= 1 || !pictures)
        return {first->start_time, first->time_base};
    return {start, kMicroseconds};
}

void Source::FindEnd() {
    const auto fromStart = [this](int64_t ticks, AVRational base) {
        return av_rescale_q(ticks, base, kMilliseconds) - StartIn(kMilliseconds);
    };
    const AVDictionaryEntry* tag =
        av_dict_get(m_pictures->metadata, "DURATION", nullptr, AV_DICT_IGNORE_SUFFIX);
    int64_t tagged = 0;
    if (m_pictures->duration != AV_NOPTS_VALUE && m_pictures->duration > 0) {
        const int64_t start = m_pictures->start_time == AV_NOPTS_VALUE ? StartIn(m_pictures->time_base)
                                                                       : m_pictures->start_time;
        m_endMs = fromStart(start + m_pictures->duration, m_pictures->time_base);
        m_endIsPictures = true;
    } else if (tag && av_parse_time(&tagged, tag->value, 1) >= 0 && tagged > 0) {
        m_endMs = fromStart(
            tagged,
            kMicroseconds); // Matroska's statistics tag: the time stamp at which the last picture ends
        m_endIsPictures = true;
    } else if (m_input->duration != AV_NOPTS_VALUE && m_input->duration > 0) {
        m_endMs = av_rescale_q(m_input->duration, kMicroseconds, kMilliseconds);
    }
}

int64_t Source::StartIn(AVRational base) const { return av_rescale_q(m_start.ticks, m_start.base, base); }

AVRational Source::FrameRate() const noexcept {
    const AVRational rate = av_guess_frame_rate(m_input.get(), m_pictures, nullptr);
    return rate.num > 0 && rate.den > 0 ? rate : AVRational{25, 1};
}

bool Source::IsConstantRate() const noexcept {
    const AVRational average = m_pictures->avg_frame_rate;
    const AVRational base = m_pictures->r_frame_rate;
    return average.num > 0 && base.num > 0 && av_cmp_q(average, base) == 0;
}

std::optional<int64_t> Source::PictureCount() const noexcept {
    if (m_pictures->nb_frames > 0) return m_pictures->nb_frames;
    if (!m_endMs) return std::nullopt;
    const AVRational rate = FrameRate();
    return av_rescale(*m_endMs, rate.num, int64_t{1000} * rate.den);
}

// Containers seek to key pictures by time of decoding, by an index with gaps or by a guess, so what comes out
// is checked and the seek repeated further back.
void Source::SeekBefore(int64_t milliseconds) {
    if (milliseconds <= 0 || (m_input->iformat->flags & AVFMT_NOTIMESTAMPS)) return;
    for (const int64_t back : {0, 2000, 10000, 60000}) {
        if (!SeekAndDecode(std::max<int64_t>(0, milliseconds - back))) return;
        const bool found = !m_stash.empty() && m_stash.back().picture;
        if (found && !(Moment{milliseconds, kMilliseconds} <
                       Moment{m_stash.back().picture->pts, m_pictures->time_base}))
            return;
        if (milliseconds <= back) return;
    }
    SeekAndDecode(0);
}

std::optional<int64_t> Source::SeekToKey(int64_t milliseconds) {
    constexpr int64_t kLeadMs = 2000;
    for (const int64_t back : {0, 2000, 10000, 60000}) {
        const bool sought = SeekPackets(milliseconds - back);
        const std::optional<int64_t> key = LastKeyBefore(milliseconds);
        if (key) SeekPackets(av_rescale_q(*key, m_pictures->time_base, kMilliseconds) - kLeadMs);
        if (key || !sought) return key;
    }
    SeekPackets(0);
    const std::optional<int64_t> key = LastKeyBefore(milliseconds);
    SeekPackets(0);
    return key;
}

// False when the file can't be sought in.
bool Source::SeekPackets(int64_t milliseconds) {
    const AVRational base = m_pictures->time_base;
    const int64_t target =
        av_rescale_q(std::max<int64_t>(0, milliseconds), kMilliseconds, base) + StartIn(base);
    m_draining = false;
    m_readError = 0;
    m_soughtAway = true;
    return av_seek_frame(m_input.get(), m_pictures->index, target, AVSEEK_FLAG_BACKWARD) >= 0;
}

// Reads on until no picture of that time can come any more.
std::optional<int64_t> Source::LastKeyBefore(int64_t milliseconds) {
    const AVRational base = m_pictures->time_base;
    const Moment wanted{milliseconds, kMilliseconds};
    std::optional<int64_t> key;
    while (const std::optional<SourceItem> item = Read()) {
        const AVPacket& packet = *item->packet;
        if (packet.stream_index != m_pictures->index) continue;
        const int64_t time = packet.pts == AV_NOPTS_VALUE ? packet.dts : packet.pts;
        if ((packet.flags & AV_PKT_FLAG_KEY) && !(wanted < Moment{time, base})) key = time;
        if (wanted < Moment{packet.dts == AV_NOPTS_VALUE ? time : packet.dts, base}) break;
    }
    return key;
}

// False when the file can't be sought in; it is then read on from where it is.
bool Source::SeekAndDecode(int64_t milliseconds) {
    const int64_t target =
        av_rescale_q(milliseconds, kMilliseconds, m_pictures->time_base) + StartIn(m_pictures->time_base);
    if (av_seek_frame(m_input.get(), m_pictures->index, target, AVSEEK_FLAG_BACKWARD) < 0) return false;
    m_decoder->Flush();
    m_stash.clear();
    m_lastPts.reset();
    m_draining = false;
    m_readError = 0;
    m_soughtAway = true;
    while (m_stash.empty() || !m_stash.back().picture) {
        std::optional<SourceItem> item = Read();
        if (!item) break;
        m_stash.push_back(std::move(*item));
    }
    // Pictures that are shown before this one but depend on others before it are no damage.
    if (!m_stash.empty() && m_stash.back().picture) {
        m_decoder->ForgetDamageBefore(*m_stash.back().picture);
        m_input.get_deleter().damage->ForgetPackets();
    }
    return true;
}

std::optional<SourceItem> Source::Next() {
    if (m_stash.empty()) return Read();
    SourceItem item = std::move(m_stash.front());
    m_stash.pop_front();
    return item;
}

void Source::RequireRead() const {
    if (m_readError != 0 && m_readError != AVERROR_INVALIDDATA)
        ThrowFailure(ErrorKind::Input, m_path + " can't be read to its end", m_readError);
}

std::optional<SourceItem> Source::Read() {
    for (;;) {
        if (!m_packetsUntil && !m_copiesPictures)
            if (AVFramePtr picture = TakePicture()) return SourceItem{std::move(picture), nullptr};
        if (m_draining) return std::nullopt;
        if (!ReadPacket()) {
            m_draining = true;
            if (m_copiesPictures) return std::nullopt;
            if (!m_packetsUntil) m_decoder->Send(nullptr);
            continue;
        }
        const bool picture = m_packet->stream_index == m_pictures->index;
        if (!picture || (m_copiesPictures && !m_packetsUntil)) {
            if (AVPacketPtr packet = TakePacket()) return SourceItem{nullptr, std::move(packet)};
            continue;
        }
        if (!m_packetsUntil) {
            m_decoder->Send(m_packet.get());
        } else {
            const int64_t dts = m_packet->dts == AV_NOPTS_VALUE ? m_packet->pts : m_packet->dts;
            if (dts != AV_NOPTS_VALUE && Moment{dts, m_pictures->time_base} >= *m_packetsUntil)
                return std::nullopt;
        }
        av_packet_unref(m_packet.get());
    }
}

// Reads into m_packet, times from the clip's start. False at the end and when reading fails for good.
bool Source::ReadPacket() {
    av_packet_unref(m_packet.get());
    const int code = aveffect::ReadPacket(m_input, *m_packet);
    if (m_interrupt.Due()) throw Error(ErrorKind::Interrupted, "interrupted; nothing was written");
    if (code < 0) {
        if (code != AVERROR_EOF) m_readError = code;
        return false;
    }
    const AVRational base = m_input->streams[m_packet->stream_index]->time_base;
    const int64_t start = StartIn(base);
    const bool picture = m_packet->stream_index == m_pictures->index;
    if (picture) ++m_picturePackets;
    if (!picture || m_copiesPictures) { // decoded pictures are moved when they come

        if (m_packet->pts != AV_NOPTS_VALUE) m_packet->pts -= start;
        if (m_packet->dts != AV_NOPTS_VALUE) m_packet->dts -= start;
        if (m_packet->pts != AV_NOPTS_VALUE)
            m_lastRead = std::max(m_lastRead, Moment{m_packet->pts + m_packet->duration, base});
    }
    return true;
}

// A copied stream's packet; null when it isn't wanted, or is cut off in the middle.
AVPacketPtr Source::TakePacket() {
    const bool wanted = (m_copiesPictures && m_packet->stream_index == m_pictures->index) ||
                        std::ranges::any_of(m_copied, [&](const AVStream* stream) {
                            return stream->index == m_packet->stream_index;
                        });
    if (!wanted || (m_packet->flags & AV_PKT_FLAG_CORRUPT)) return nullptr;
    AVPacketPtr packet(av_packet_alloc());
    if (!packet) throw NoMemory(m_path + ": out of memory");
    av_packet_move_ref(packet.get(), m_packet.get());
    return packet;
}

// Gives every picture a time, later than the one before it, whatever the file says.
AVFramePtr Source::TakePicture() {
    AVFramePtr picture = m_decoder->Receive();
    if (!picture) return nullptr;
    int64_t time = picture->best_effort_timestamp;
    if (time == AV_NOPTS_VALUE) {
        const int64_t interval = av_rescale_q(1, av_inv_q(FrameRate()), m_pictures->time_base);
        time = m_lastPts ? *m_lastPts + std::max<int64_t>(1, interval) : 0;
    } else {
        time -= StartIn(m_pictures->time_base);
    }
    if (m_lastPts && time <= *m_lastPts) time = *m_lastPts + 1;
    m_lastPts = time;
    picture->pts = time;
    // The container's word on the pixels' shape overrules the codec's.
    picture->sample_aspect_ratio = av_guess_sample_aspect_ratio(m_input.get(), m_pictures, picture.get());
    return picture;
}

void Source::StopPictures(const Moment& packetsUntil) {
    constexpr int64_t kSlackMs = 5000;
    const int64_t ms = av_rescale_q(packetsUntil.ticks, packetsUntil.base, kMilliseconds);
    const int64_t start = m_copiesPictures ? 0 : StartIn(kMilliseconds); // times as in the packets
    m_packetsUntil = Moment{ms + kSlackMs + start, kMilliseconds};
}

DamageReport Source::Damage(int64_t pictures, const Moment& end, bool readToEnd) const {
    DamageReport report;
    if (readToEnd) {
        const std::string early = EarlyEnd(pictures, end);
        if (!early.empty()) report.Add(m_path, early);
    }
    report.Add(m_input.get_deleter().damage->Report());
    report.Add(m_decoder->Damage());
    return report;
}

std::string Source::EarlyEnd(int64_t pictures, const Moment& end) const {
    if (!m_endMs || m_input->duration_estimation_method == AVFMT_DURATION_FROM_BITRATE) return {};
    // Two pictures of tolerance and the millisecond to which ends are rounded; more where the end is that of
    // the longest stream.
    const AVRational rate = FrameRate();
    const int64_t tolerance = 1 + av_rescale(2000, rate.den, rate.num) + (m_endIsPictures ? 0 : 500);
    const Moment reached = m_endIsPictures ? end : std::max(end, m_lastRead);
    if (Moment{*m_endMs - tolerance, kMilliseconds} < reached) return {};
    if (m_soughtAway)
        return "the clip ends early: at " + SecondsText(av_rescale_q(end.ticks, end.base, kMilliseconds)) +
               " of " + SecondsText(*m_endMs);
    // A long pause after the last picture is no damage when all announced pictures came.
    if (m_pictures->nb_frames > 0 && m_picturePackets + 1 >= m_pictures->nb_frames && !m_readError) return {};
    const int64_t expected = PictureCount().value_or(0);
    return "the clip ends early: " + std::to_string(pictures) + " of about " +
           std::to_string(std::max(expected, pictures)) + " pictures";
}

} // namespace aveffect
