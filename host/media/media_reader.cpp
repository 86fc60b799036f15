#include "host/media/media_reader.h"

#include <algorithm>
#include <climits>
#include <utility>

#include "host/support/error.h"
#include "host/support/error_record.h"
#include "host/support/stages.h"

namespace aveffect {
namespace {

using mediabridge::AVFramePtr;

constexpr unsigned kWantsVideo = 1;
constexpr uint32_t kVideoItem = 1;
constexpr uint32_t kAudioItem = 2;
} // namespace

std::optional<bool> LastPictureWanted(const std::string& url) {
    if (!IsLocalPath(url)) return std::nullopt; // a server's query is its own
    const size_t path = ParseSourceUrl(url).path.size();
    const std::string query = "&" + url.substr(std::min(url.size(), path + 1)) + "&";
    if (query.find("&picture=last&") != std::string::npos) return true;
    if (query.find("&picture=first&") != std::string::npos) return false;
    return std::nullopt;
}

void OpenReaders::Add(const MediaReader& reader) {
    const std::scoped_lock lock(m_mutex);
    m_open.insert(&reader);
}

void OpenReaders::Remove(const MediaReader& reader) noexcept {
    const std::scoped_lock lock(m_mutex);
    try {
        m_found.Add(reader.Damage());
    } catch (const std::bad_alloc&) {
        m_forgotten = true;
    }
    m_open.erase(&reader);
}

DamageReport OpenReaders::Damage() const {
    const std::scoped_lock lock(m_mutex);
    if (m_forgotten) throw NoMemory("out of memory");
    DamageReport all = m_found;
    for (const MediaReader* reader : m_open) all.Add(reader->Damage());
    return all;
}

MediaReader::MediaReader(const std::string& url, const ReaderTerms& terms, const std::atomic<bool>* cancel,
                         std::shared_ptr<OpenReaders> siblings)
    : m_siblings(std::move(siblings))
    , m_canvas(terms.canvas)
    , m_intake(terms.intake)
    , m_colours(terms.canvas.primaries, terms.canvas.transfer)
    , m_interrupt{cancel, std::nullopt}
    , m_packet(av_packet_alloc())
    , m_framer(terms.framing) {
    const SourceRequest request = ParseSourceUrl(url);
    m_path = request.path;
    m_input = OpenInput(request, m_interrupt);
    if (!m_packet) throw NoMemory(m_path + ": out of memory");
    Open(m_video, FindPictures(*m_input, request));
    m_wantsLast = LastPictureWanted(url).value_or(false);
    if (!m_wantsLast) Open(m_audio, FindSound(*m_input, request, nullptr));
    if (!m_video.stream && !m_audio.stream)
        throw Error(ErrorKind::Input, m_path + " has neither pictures nor sound that can be decoded");
    for (unsigned index = 0; index < m_input->nb_streams; ++index) {
        AVStream* stream = m_input->streams[index];
        if (stream != m_video.stream && stream != m_audio.stream) stream->discard = AVDISCARD_ALL;
    }
    m_siblings->Add(*this);
}

void MediaReader::Open(Stream& target, AVStream* stream) {
    target.stream = stream;
    if (stream) target.decoder = std::make_unique<Decoder>(m_input, *stream, 0);
}

DamageReport MediaReader::Damage() const {
    DamageReport report = m_input.get_deleter().damage->Report();
    for (const Stream* each : {&m_video, &m_audio})
        if (each->decoder) report.Add(each->decoder->Damage());
    return report;
}

unsigned MediaReader::Width() const noexcept {
    return m_video.stream ? static_cast<unsigned>(m_video.stream->codecpar->width) : 0;
}

unsigned MediaReader::Height() const noexcept {
    return m_video.stream ? static_cast<unsigned>(m_video.stream->codecpar->height) : 0;
}

bool MediaReader::ReadItem(AVBased::AVItem* item, unsigned flags, unsigned timeout) {
    return Recorded([&] {
        if (!item) throw Error(ErrorKind::Input, m_path + ": no item to read into");
        using std::chrono::steady_clock;
        m_interrupt.deadline.reset();
        if (timeout) m_interrupt.deadline = steady_clock::now() + std::chrono::milliseconds(timeout);
        m_picture.reset();
        m_sound.reset();
        return Read(*item, (flags & kWantsVideo) != 0);
    });
}

bool MediaReader::Read(AVBased::AVItem& item, bool wantsVideo) {
    if (wantsVideo && m_video.stream && std::exchange(m_wantsLast, false)) {
        AVFramePtr picture = LastPicture();
        return picture && FillVideo(item, std::move(picture));
    }
    for (;;) {
        if (wantsVideo && TakeDecoded(item, m_video, true)) return true;
        if (TakeDecoded(item, m_audio, false)) return true;
        if (m_atEnd) return false;
        if (!ReadPacket(wantsVideo)) Drain();
    }
}

// Near the end where the file can be sought in and its end is known; where that gives nothing, by reading
// all.
AVFramePtr MediaReader::LastPicture() {
    const bool timed = !(m_input->iformat->flags & (AVFMT_GENERIC_INDEX | AVFMT_NOTIMESTAMPS)) &&
                       m_input->duration_estimation_method != AVFMT_DURATION_FROM_BITRATE;
    const AVStream& stream = *m_video.stream;
    int64_t end = 0;
    if (stream.duration != AV_NOPTS_VALUE)
        end = av_rescale_q(stream.duration, stream.time_base, kMilliseconds);
    else if (m_input->duration != AV_NOPTS_VALUE)
        end = av_rescale_q(m_input->duration, kMicroseconds, kMilliseconds);
    for (const int64_t back : {2000, 10000, 60000}) {
        if (!timed || end <= back || !SeekBack(end - back)) continue;
        if (AVFramePtr picture = DecodeToEnd()) return picture;
    }
    if (m_atEnd) SeekBack(0);
    return DecodeToEnd();
}

// Decoding begins with a key picture, for pictures that need others before them would come out wrong. False
// when the file can't be sought in.
bool MediaReader::SeekBack(int64_t milliseconds) {
    const AVStream& stream = *m_video.stream;
    const int64_t start = stream.start_time == AV_NOPTS_VALUE ? 0 : stream.start_time;
    const int64_t target = start + av_rescale_q(milliseconds, kMilliseconds, stream.time_base);
    if (av_seek_frame(m_input.get(), stream.index, target, AVSEEK_FLAG_BACKWARD) < 0) return false;
    m_video.decoder->Flush();
    m_awaitsKey = milliseconds > 0;
    m_atEnd = false;
    return true;
}

// The last picture from here on; null when there is none.
AVFramePtr MediaReader::DecodeToEnd() {
    const bool midway = m_awaitsKey;
    for (AVFramePtr last;;) {
        while (AVFramePtr picture = m_video.decoder->Receive()) {
            if (!last && midway) m_video.decoder->ForgetDamageBefore(*picture);
            last = std::move(picture);
        }
        if (m_atEnd) return last;
        if (!ReadPacket(true)) Drain();
    }
}

bool MediaReader::TakeDecoded(AVBased::AVItem& item, Stream& from, bool video) {
    if (!from.decoder) return false;
    while (AVFramePtr frame = from.decoder->Receive())
        if (video ? FillVideo(item, std::move(frame)) : FillAudio(item, std::move(frame))) return true;
    return false;
}

bool MediaReader::ReadPacket(bool wantsVideo) {
    av_packet_unref(m_packet.get());
    const int code = aveffect::ReadPacket(m_input, *m_packet);
    if (code < 0) {
        if (m_interrupt.cancel) CheckCancel(*m_interrupt.cancel);
        if (m_interrupt.Due()) throw Error(ErrorKind::Input, m_path + ": reading took longer than allowed");
        return false;
    }
    if (m_video.stream && m_packet->stream_index == m_video.stream->index) {
        // Pictures that nobody asks for are left undecoded, and those that depend on them would be wrong.
        m_awaitsKey = m_awaitsKey && !(m_packet->flags & AV_PKT_FLAG_KEY);
        if (m_awaitsKey) return true;
        if (wantsVideo)
            m_video.decoder->Send(m_packet.get());
        else if (!m_skippedVideo)
            m_video.decoder->Flush();
        m_skippedVideo = !wantsVideo;
    } else if (m_audio.stream && m_packet->stream_index == m_audio.stream->index) {
        m_audio.decoder->Send(m_packet.get());
    }
    return true;
}

void MediaReader::Drain() {
    m_atEnd = true;
    for (Stream* each : {&m_video, &m_audio})
        if (each->decoder) each->decoder->Send(nullptr);
}

// Fills in time and length. False for items that lie before the last Seek().
bool MediaReader::Locate(AVBased::AVItem& item, const AVFrame& frame, const AVStream& stream,
                         int64_t lengthTicks, AVRational lengthBase) {
    const int64_t start = m_input->start_time == AV_NOPTS_VALUE
                              ? 0
                              : av_rescale_q(m_input->start_time, kMicroseconds, kMilliseconds);
    const int64_t time =
        frame.best_effort_timestamp == AV_NOPTS_VALUE
            ? 0
            : av_rescale_q(frame.best_effort_timestamp, stream.time_base, kMilliseconds) - start;
    const int64_t length = std::max<int64_t>(0, av_rescale_q(lengthTicks, lengthBase, kMilliseconds));
    if (m_skipBeforeMs > 0 && time + std::max<int64_t>(1, length) <= m_skipBeforeMs) return false;
    item.position = std::max<int64_t>(0, time);
    item.length = static_cast<uint32_t>(std::min<int64_t>(length, UINT_MAX));
    item.stream = static_cast<uint32_t>(stream.index);
    return true;
}

// The picture as it is meant to be seen.
AVFramePtr MediaReader::Shown(AVFramePtr picture) {
    // The container's word on the pixels' shape overrules the codec's.
    picture->sample_aspect_ratio = av_guess_sample_aspect_ratio(m_input.get(), m_video.stream, picture.get());
    picture = m_upright.Apply(std::move(picture), *m_video.stream);
    const bool standard = NeedsStandardRange(m_canvas, *picture);
    picture = m_intake.Reduce(m_framer.Apply(m_intake.Map(std::move(picture), standard)));
    const std::pair size(WidthFor(*picture, m_canvas.pixelAspect), picture->height);
    if (!m_scaler || m_scaled != size)
        m_scaler.emplace(AV_PIX_FMT_BGRA, size.first, size.second, mediabridge::ScaleQuality::Bicubic);
    m_scaled = size;
    picture = m_scaler->Convert(picture.get());
    if (!picture) throw Error(ErrorKind::Input, m_path + ": " + m_scaler->Error());
    picture = m_colours.Apply(std::move(picture));
    picture->sample_aspect_ratio = m_canvas.pixelAspect;
    return picture;
}

bool MediaReader::FillVideo(AVBased::AVItem& item, AVFramePtr picture) {
    const AVRational rate = av_guess_frame_rate(m_input.get(), m_video.stream, nullptr);
    const bool timed = picture->pkt_duration > 0 || rate.num <= 0;
    if (!Locate(item, *picture, *m_video.stream, timed ? picture->pkt_duration : 1,
                timed ? m_video.stream->time_base : av_inv_q(rate)))
        return false;
    picture = Shown(std::move(picture));
    const bool writable = av_frame_is_writable(picture.get()) != 0;
    const auto time = static_cast<int>(std::min<int64_t>(item.position, INT_MAX));
    m_picture = mediabridge::VideoFrame::Wrap(picture.get(), time, item.length);
    if (!m_picture) throw std::bad_alloc();
    m_picture->SetCanBeModified(writable);
    item.object = static_cast<AVBased::IRawVideoFrame*>(m_picture.get());
    item.kind = kVideoItem;
    return true;
}

bool MediaReader::FillAudio(AVBased::AVItem& item, AVFramePtr sound) {
    if (!Locate(item, *sound, *m_audio.stream, sound->nb_samples, {1, std::max(1, sound->sample_rate)}))
        return false;
    const auto format = static_cast<AVSampleFormat>(sound->format);
    if (format == AV_SAMPLE_FMT_S64 || format == AV_SAMPLE_FMT_S64P) {
        // The boundary has no code for 64-bit integers.
        AVFramePtr converted(av_frame_alloc());
        if (!m_resampler) m_resampler.reset(swr_alloc());
        if (!converted || !m_resampler) throw std::bad_alloc();
        converted->format = AV_SAMPLE_FMT_DBL;
        converted->sample_rate = sound->sample_rate;
        if (av_channel_layout_copy(&converted->ch_layout, &sound->ch_layout) < 0 ||
            swr_convert_frame(m_resampler.get(), converted.get(), sound.get()) < 0)
            throw Error(ErrorKind::Input, m_path + ": its sound can't be converted");
        sound = std::move(converted);
    }
    m_sound = mediabridge::AudioFrame::Copy(sound.get(), static_cast<unsigned>(item.position));
    if (!m_sound) throw std::bad_alloc();
    item.object = static_cast<AVBased::IRawAudioFrame*>(m_sound.get());
    item.kind = kAudioItem;
    return true;
}

bool MediaReader::Seek(unsigned milliseconds) {
    return Recorded([&] {
        m_picture.reset();
        m_sound.reset();
        m_interrupt.deadline.reset();
        const int64_t start = m_input->start_time == AV_NOPTS_VALUE ? 0 : m_input->start_time;
        const int64_t target = start + av_rescale_q(milliseconds, kMilliseconds, kMicroseconds);
        const int code = av_seek_frame(m_input.get(), -1, target, AVSEEK_FLAG_BACKWARD);
        if (code < 0)
            ThrowFailure(ErrorKind::Input, m_path + ": no seeking to " + SecondsText(milliseconds), code);
        for (Stream* each : {&m_video, &m_audio})
            if (each->decoder) each->decoder->Flush();
        m_skipBeforeMs = milliseconds;
        m_atEnd = false;
        return true;
    });
}

unsigned MediaReader::GetDuration() {
    if (m_input->duration == AV_NOPTS_VALUE || m_input->duration <= 0) return 0;
    return static_cast<unsigned>(
        std::min<int64_t>(av_rescale_q(m_input->duration, kMicroseconds, kMilliseconds), UINT_MAX));
}

void MediaReader::Release() { delete this; }

} // namespace aveffect
