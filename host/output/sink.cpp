#include "host/output/sink.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "host/media/animation.h"
#include "host/media/left_out.h"
#include "host/output/edited_sound.h"
#include "host/output/sound_formats.h"
#include "host/output/stream_copy.h"
#include "host/picture/light_metadata.h"
#include "host/picture/orientation.h"
#include "host/support/error.h"

namespace aveffect {
namespace {

using mediabridge::AVFramePtr;
using mediabridge::AVPacketPtr;

// In a container of constant rate the ticks of a variable-rate clip are those that all its times fall on, if
// few enough.
OutputClock::Rate ClipRate(const Source& source, const OutputPlan& plan) {
    OutputClock::Rate rate{source.FrameRate(), source.IsConstantRate()};
    const AVRational common = source.Pictures().r_frame_rate;
    if (!plan.NeedsConstantRate()) return rate;
    if (!rate.constant && common.num > 0 && av_q2d(common) <= 240 &&
        av_cmp_q(common, rate.picturesPerSecond) > 0)
        rate.picturesPerSecond = common;
    rate.picturesPerSecond = NearestRate(plan, rate.picturesPerSecond);
    return rate;
}

OutputClock MakeClock(const Sink::Setup& setup) {
    return {setup.source.Pictures().time_base, ClipRate(setup.source, setup.plan),
            setup.plan.NeedsConstantRate(), setup.plan.LargestDenominator()};
}

void CopySideData(AVStream* to, const AVStream& from, bool withRotation, bool withStereo, bool withLight) {
    for (int index = 0; index < from.nb_side_data; ++index) {
        const AVPacketSideData& data = from.side_data[index];
        const bool wanted = (withLight && (data.type == AV_PKT_DATA_MASTERING_DISPLAY_METADATA ||
                                           data.type == AV_PKT_DATA_CONTENT_LIGHT_LEVEL)) ||
                            data.type == AV_PKT_DATA_SPHERICAL ||
                            (withStereo && data.type == AV_PKT_DATA_STEREO3D) ||
                            (withRotation && data.type == AV_PKT_DATA_DISPLAYMATRIX);
        if (!wanted) continue;
        if (uint8_t* copy = av_stream_new_side_data(to, data.type, data.size))
            std::memcpy(copy, data.data, data.size);
    }
}

std::string CantHold(const OutputPlan& plan, const AVStream& stream) {
    return "." + plan.Kind() + " files can't hold " + avcodec_get_name(stream.codecpar->codec_id) + " " +
           av_get_media_type_string(stream.codecpar->codec_type) + "; it is left out";
}

} // namespace

Sink::Sink(const Setup& setup, const AVFrame* sample, Reporter& reporter, const std::atomic<bool>& cancel)
    : m_source(setup.source)
    , m_soundEnd(setup.sound.end)
    , m_soundEndsWithPictures(setup.limits.frameLimit || setup.sound.endless)
    , m_output(setup.plan) {
    if (sample) {
        m_clock = MakeClock(setup);
        m_countsPictures = setup.plan.CountsPictures();
        const AVRational rate = ClipRate(setup.source, setup.plan).picturesPerSecond;
        m_encoder = std::make_unique<PictureEncoder>(setup.plan, *sample,
                                                     PictureEncoder::Timing{m_clock->Base(), rate});
        if (setup.plan.NeedsConstantRate() && setup.source.IsConstantRate())
            SayRate(setup.plan, setup.source.FrameRate(), rate, reporter);
    }
    AddPictureStream(setup, sample);
    MapStreams(setup, reporter);
    CopyTags(&m_output.Format().metadata, m_source.Format().metadata);
    CopyChapters(m_output, m_source.Format(), setup.limits);
    if (const auto plays = PlayCount(m_source)) m_output.SetPlayCount(*plays);
    m_output.Start(setup.overwrite, cancel);
}

void Sink::AddPictureStream(const Setup& setup, const AVFrame* sample) {
    const AVStream& source = m_source.Pictures();
    m_pictureStream =
        m_encoder ? m_output.AddStream(m_encoder->Context()) : AddCopiedPictures(m_output, source);
    m_pictureStream->disposition = source.disposition;
    CopyTags(&m_pictureStream->metadata, source.metadata);
    const bool asInput = !setup.turned && !setup.views;
    const bool mapped =
        sample && IsHighDynamicRange(source.codecpar->color_trc) && !IsHighDynamicRange(*sample);
    CopySideData(m_pictureStream, source, !setup.turned, asInput, !mapped);
    if (sample) MarkLight(*m_pictureStream, *sample);
    if (!asInput) MarkStream(*m_pictureStream, setup.views.value_or(Presentation{}));
}

void Sink::MapStreams(const Setup& setup, Reporter& reporter) {
    m_copies.resize(m_source.Format().nb_streams);
    const AVStream& pictures = m_source.Pictures();
    if (!m_encoder) m_copies[static_cast<size_t>(pictures.index)] = {m_pictureStream, pictures.time_base};
    for (const AVStream* stream : m_source.CopiedStreams()) {
        const AVMediaType type = stream->codecpar->codec_type;
        if (type == AVMEDIA_TYPE_AUDIO)
            MapSound(setup, *stream, reporter);
        else if (type == AVMEDIA_TYPE_SUBTITLE)
            MapSubtitles(setup, *stream, reporter);
        else if (setup.plan.Kind() == "mkv")
            AddCopy(*stream);
        else
            reporter.Warn(CantHold(setup.plan, *stream));
    }
    if (m_lanes.empty() && !setup.sound.effects.empty()) AddLane(setup, nullptr, reporter);
    const std::string leftOut = LeftOutText(m_source.Format(), &pictures);
    if (!leftOut.empty()) reporter.Warn(leftOut);
}

void Sink::AddCopy(const AVStream& stream) {
    m_copies[static_cast<size_t>(stream.index)] = {AddCopiedStream(m_output, stream), stream.time_base};
}

void Sink::MapSound(const Setup& setup, const AVStream& stream, Reporter& reporter) {
    const std::string codec = avcodec_get_name(stream.codecpar->codec_id);
    if (setup.sound.changes) return AddLane(setup, &stream, reporter);
    if (stream.codecpar->sample_rate <= 0)
        return reporter.Warn("the " + codec + " audio does not tell its rate; it is left out");
    if (setup.plan.muxer->audio_codec == AV_CODEC_ID_NONE) return reporter.Warn(CantHold(setup.plan, stream));
    const bool held = HoldsAsIs(setup.plan, *stream.codecpar);
    if (held && CopyEdited(setup, stream)) return;
    RequireRereadable(setup.request.path);
    reporter.Note(held ? EditedNote(stream)
                       : "." + setup.plan.Kind() + " files can't hold the " + codec + " sound as it is");
    AddLane(setup, &stream, reporter);
}

// False when the file leaves out a part of it that can't be left out of a copy.
bool Sink::CopyEdited(const Setup& setup, const AVStream& stream) {
    const std::optional<SoundEdit> edit = EditOf(m_source.Format(), stream);
    EditedCopy how = EditedCopy::Heard;
    if (edit) {
        // Copied pictures may begin before what is shown of them.
        const Moment &clip = m_source.Start(), &span = *setup.sound.start;
        const AVRational base = stream.time_base;
        const int64_t start = av_rescale_q(span.ticks, span.base, base);
        const bool whole = !setup.limits.fromMs && start == av_rescale_q(clip.ticks, clip.base, base);
        how = CopyOf(*edit, stream, setup.plan, whole ? std::nullopt : std::optional(start));
    }
    if (how == EditedCopy::None) return false;
    AddCopy(stream);
    m_copies[static_cast<size_t>(stream.index)].withLead = how == EditedCopy::WithLead;
    return true;
}

void Sink::MapSubtitles(const Setup& setup, const AVStream& stream, Reporter& reporter) {
    const AVCodecID codec = stream.codecpar->codec_id;
    if (HoldsSubtitles(setup.plan, codec)) return AddCopy(stream);
    const AVCodecID other = TextCodecFor(setup.plan, codec);
    if (other == AV_CODEC_ID_NONE) return reporter.Warn(CantHold(setup.plan, stream));
    Copy& copy = m_copies[static_cast<size_t>(stream.index)];
    copy.rewritten = std::make_unique<TextSubtitles>(stream, other, m_output);
    reporter.Note(std::string("the ") + avcodec_get_name(codec) + " subtitles are rewritten as " +
                  avcodec_get_name(other) + ", which ." + setup.plan.Kind() + " files hold");
}

void Sink::AddLane(const Setup& setup, const AVStream* stream, Reporter& reporter) {
    if (setup.plan.muxer->audio_codec == AV_CODEC_ID_NONE)
        throw Error(ErrorKind::Usage, "." + setup.plan.Kind() + " files hold no sound");
    if (!stream && !setup.sound.endless)
        throw Error(ErrorKind::Usage, setup.request.path + " has no sound for " +
                                          setup.sound.effects.front().name + " to work on");
    m_lanes.push_back(std::make_unique<SoundLane>(setup.sound, setup.plan, setup.request, stream, m_output));
    reporter.Note(m_lanes.back()->Summary());
}

void Sink::WritePicture(AVFramePtr picture) {
    const int64_t clipTime = picture->pts;
    m_end = {clipTime + picture->pkt_duration, m_source.Pictures().time_base};
    for (const auto& lane : m_lanes) lane->WriteUntil(m_end);
    ++m_pictures;
    if (m_countsPictures && m_clock->ComesLate(clipTime)) return;
    picture->pts = m_clock->Convert(clipTime);
    picture->pkt_duration = m_clock->ConvertDuration(clipTime, picture->pkt_duration);
    if (m_countsPictures) FillUntil(picture->pts);
    m_durations[picture->pts] = m_countsPictures ? 1 : picture->pkt_duration;
    m_fillUntil = picture->pts + picture->pkt_duration;
    if (m_countsPictures) m_shown.reset(av_frame_clone(picture.get()));
    Encode(picture.get());
}

// What counts pictures has one at every tick: the one that is shown stands again where the next is not due.
void Sink::FillUntil(int64_t tick) {
    if (!m_shown) return;
    while (m_shown->pts + 1 < tick) {
        const AVFramePtr again(av_frame_clone(m_shown.get()));
        if (!again) throw Error(ErrorKind::Output, "no memory for a picture");
        again->pts = ++m_shown->pts;
        m_durations[again->pts] = 1;
        Encode(again.get());
    }
}

// Not all encoders hand a picture's duration on to its packet, and the last one's would be lost.
void Sink::Encode(AVFrame* picture) {
    m_encoder->Encode(picture, [this](AVPacket& packet) {
        if (const auto duration = m_durations.find(packet.pts); duration != m_durations.end()) {
            packet.duration = duration->second;
            m_durations.erase(duration);
        }
        packet.stream_index = m_pictureStream->index;
        av_packet_rescale_ts(&packet, m_clock->Base(), m_pictureStream->time_base);
        m_output.Write(&packet);
    });
}

void Sink::WritePacket(AVPacketPtr packet) {
    Copy& copy = m_copies[static_cast<size_t>(packet->stream_index)];
    const bool heard = !(packet->flags & AV_PKT_FLAG_DISCARD);
    copy.withLead = copy.withLead && !heard;
    if (!heard && !copy.withLead) return;
    if (copy.rewritten) {
        if (!copy.rewritten->Write(*packet)) ++m_refused;
        return;
    }
    if (!copy.target) return;
    const bool firstPicture = copy.target == m_pictureStream && m_pictures == 0;
    if (copy.target == m_pictureStream) FollowPictures(*packet);
    packet->stream_index = copy.target->index;
    packet->pos = -1;
    av_packet_rescale_ts(packet.get(), copy.base, copy.target->time_base);
    if (firstPicture) // a container that refuses this one refuses them all
        m_output.Write(packet.get());
    else if (!m_output.WriteCopied(packet.get()))
        ++m_refused;
}

void Sink::FollowPictures(const AVPacket& packet) {
    m_end = std::max(m_end, Moment{packet.pts + packet.duration, m_source.Pictures().time_base});
    for (const auto& lane : m_lanes) lane->WriteUntil(m_end);
    ++m_pictures;
}

void Sink::Complete() {
    if (m_encoder) {
        FillUntil(m_fillUntil);
        Encode(nullptr);
    }
    for (const auto& lane : m_lanes) lane->Complete(m_soundEndsWithPictures ? m_end : m_soundEnd);
    m_output.Finish();
}

DamageReport Sink::Damage() const {
    DamageReport report = CopyDamage(m_source.Path(), m_refused);
    for (const auto& lane : m_lanes) report.Add(lane->Damage());
    return report;
}

void WriteStill(const OutputPlan& plan, AVFramePtr picture, bool overwrite, const std::atomic<bool>& cancel) {
    picture->pts = 0;
    PictureEncoder encoder(plan, *picture, {{1, 25}, {25, 1}});
    AVPacketPtr packet;
    const auto keepFirst = [&](AVPacket& given) {
        if (!packet) packet.reset(av_packet_clone(&given));
    };
    encoder.Encode(picture.get(), keepFirst);
    if (!packet) encoder.Encode(nullptr, keepFirst);
    if (!packet) throw Error(ErrorKind::Output, plan.target + ": the encoder gave nothing out");
    if (cancel.load()) throw Error(ErrorKind::Interrupted, "interrupted; nothing was written");
    OutputFile file(plan.target, overwrite, cancel);
    avio_write(file.Io(), packet->data, packet->size);
    file.Publish();
}

} // namespace aveffect
