#include "host/output/stream_mapping.h"

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

void CopyPresentation(AVStream* to, const AVStream& from, bool withRotation, bool withStereo,
                      bool withLight) {
    for (int index = 0; index < from.nb_side_data; ++index) {
        const AVPacketSideData& data = from.side_data[index];
        const bool wanted = (withLight && (data.type == AV_PKT_DATA_MASTERING_DISPLAY_METADATA ||
                                           data.type == AV_PKT_DATA_CONTENT_LIGHT_LEVEL)) ||
                            data.type == AV_PKT_DATA_SPHERICAL ||
                            (withStereo && data.type == AV_PKT_DATA_STEREO3D) ||
                            (withRotation && data.type == AV_PKT_DATA_DISPLAYMATRIX);
        if (!wanted) continue;
        CopySideData(to, data);
    }
}

std::string CantHold(const OutputPlan& plan, const AVStream& stream) {
    return "." + plan.Kind() + " files can't hold " + avcodec_get_name(stream.codecpar->codec_id) + " " +
           av_get_media_type_string(stream.codecpar->codec_type) + "; it is left out";
}

std::string CodecName(const SoundPlan& sound, const OutputPlan& plan, const AVStream* stream) {
    if (!sound.codec.empty()) return sound.codec;
    if (!stream) return UsualSoundCodec(plan, AV_CODEC_ID_NONE);
    const AVCodecParameters& input = *stream->codecpar;
    return UsualSoundCodec(plan, input.codec_id,
                           std::max(input.bits_per_raw_sample, input.bits_per_coded_sample));
}

/// Adds a clip's streams to an output.
class StreamMapper {
public:
    StreamMapper(const ClipMapping& clip, MediaWriter& output, Reporter& reporter)
        : m_clip(clip)
        , m_output(output)
        , m_reporter(reporter) {}

    void MapPictures(const AVFrame* sample);
    void MapOthers();

private:
    void MapSound(const AVStream& stream);
    void MapSubtitles(const AVStream& stream);
    void AddSound(const AVStream* stream);
    bool CopyEdited(const AVStream& stream);

    const ClipMapping& m_clip;
    MediaWriter& m_output;
    Reporter& m_reporter;
    bool m_encodesSound = false;
};

void StreamMapper::MapPictures(const AVFrame* sample) {
    const AVStream& source = m_clip.source.Pictures();
    AVStream* stream = nullptr;
    if (sample) {
        const std::optional<AVRational> asked = m_clip.rate;
        const OutputClock::Rate rate = asked ? OutputClock::Rate{NearestRate(m_clip.plan, *asked), true}
                                             : ClipRate(m_clip.source, m_clip.plan);
        stream = &m_output.AddPictures(*sample, {asked ? av_inv_q(*asked) : source.time_base, rate});
        if (asked || (m_clip.plan.NeedsConstantRate() && m_clip.source.IsConstantRate()))
            SayRate(m_clip.plan, asked.value_or(m_clip.source.FrameRate()), rate.picturesPerSecond,
                    m_reporter);
    } else {
        stream = &m_output.AddCopiedPictures(source);
    }
    stream->disposition = source.disposition;
    CopyTags(&stream->metadata, source.metadata);
    const bool asInput = !m_clip.turned && !m_clip.views;
    const bool mapped =
        sample && IsHighDynamicRange(source.codecpar->color_trc) && !IsHighDynamicRange(*sample);
    CopyPresentation(stream, source, !m_clip.turned, asInput, !mapped);
    if (sample) MarkLight(*stream, *sample);
    if (!asInput) MarkStream(*stream, m_clip.views.value_or(Presentation{}));
}

void StreamMapper::MapOthers() {
    for (const AVStream* stream : m_clip.source.CopiedStreams()) {
        const AVMediaType type = stream->codecpar->codec_type;
        if (type == AVMEDIA_TYPE_AUDIO)
            MapSound(*stream);
        else if (type == AVMEDIA_TYPE_SUBTITLE)
            MapSubtitles(*stream);
        else if (m_clip.plan.Kind() == "mkv")
            m_output.AddCopy(*stream);
        else
            m_reporter.Warn(CantHold(m_clip.plan, *stream));
    }
    if (!m_encodesSound && !m_clip.sound.clip.effects.empty()) AddSound(nullptr);
    const std::string leftOut =
        LeftOutText(m_clip.source.Format(), m_clip.request, &m_clip.source.Pictures());
    if (!leftOut.empty()) m_reporter.Warn(leftOut);
}

void StreamMapper::MapSound(const AVStream& stream) {
    const std::string codec = avcodec_get_name(stream.codecpar->codec_id);
    if (m_clip.sound.changes) return AddSound(&stream);
    if (stream.codecpar->sample_rate <= 0)
        return m_reporter.Warn("the " + codec + " audio does not tell its rate; it is left out");
    if (m_clip.plan.muxer->audio_codec == AV_CODEC_ID_NONE)
        return m_reporter.Warn(CantHold(m_clip.plan, stream));
    const bool held = HoldsAsIs(m_clip.plan, *stream.codecpar);
    if (held && CopyEdited(stream)) return;
    RequireRereadable(m_clip.request.path);
    m_reporter.Note(held ? EditedNote(stream)
                         : "." + m_clip.plan.Kind() + " files can't hold the " + codec + " sound as it is");
    AddSound(&stream);
}

// False when the file leaves out a part of it that can't be left out of a copy.
bool StreamMapper::CopyEdited(const AVStream& stream) {
    const std::optional<SoundEdit> edit = EditOf(m_clip.source.Format(), stream);
    EditedCopy how = EditedCopy::Heard;
    if (edit) {
        // Copied pictures may begin before what is shown of them.
        const Moment &clip = m_clip.source.Start(), &span = *m_clip.sound.clip.start;
        const AVRational base = stream.time_base;
        const int64_t start = av_rescale_q(span.ticks, span.base, base);
        const bool whole = !m_clip.limits.fromMs && start == av_rescale_q(clip.ticks, clip.base, base);
        how = CopyOf(*edit, stream, m_clip.plan, whole ? std::nullopt : std::optional(start));
    }
    if (how == EditedCopy::None) return false;
    m_output.AddCopy(stream, how == EditedCopy::WithLead);
    return true;
}

void StreamMapper::MapSubtitles(const AVStream& stream) {
    const AVCodecID codec = stream.codecpar->codec_id;
    if (HoldsSubtitles(m_clip.plan, codec)) return m_output.AddCopy(stream);
    const AVCodecID other = TextCodecFor(m_clip.plan, codec);
    if (other == AV_CODEC_ID_NONE) return m_reporter.Warn(CantHold(m_clip.plan, stream));
    m_output.AddSubtitles(stream, other);
    m_reporter.Note(std::string("the ") + avcodec_get_name(codec) + " subtitles are rewritten as " +
                    avcodec_get_name(other) + ", which ." + m_clip.plan.Kind() + " files hold");
}

void StreamMapper::AddSound(const AVStream* stream) {
    const ClipSoundSetup& clip = m_clip.sound.clip;
    if (m_clip.plan.muxer->audio_codec == AV_CODEC_ID_NONE)
        throw Error(ErrorKind::Usage, "." + m_clip.plan.Kind() + " files hold no sound");
    if (!stream && !clip.endless)
        throw Error(ErrorKind::Usage,
                    m_clip.request.path + " has no sound for " + clip.effects.front().name + " to work on");
    AddClipSound(m_output, m_clip.sound, m_clip.request, stream, m_reporter);
    m_encodesSound = true;
}

} // namespace

void AddClipSound(MediaWriter& output, const SoundPlan& plan, const SourceRequest& request,
                  const AVStream* stream, Reporter& reporter) {
    const ClipSoundShape shape = ShapeFor(plan.clip, stream);
    SoundFeed feed;
    feed.encoder = std::make_unique<SoundEncoder>(output.Plan(), CodecName(plan, output.Plan(), stream),
                                                  shape.shape, shape.format);
    feed.supply = std::make_unique<ClipSound>(plan.clip, request, stream, shape, feed.encoder->Form());
    const std::string summary = feed.encoder->Summary();
    AVStream& added = output.AddSound(std::move(feed));
    if (stream) {
        added.disposition = stream->disposition;
        CopyTags(&added.metadata, stream->metadata);
    }
    reporter.Note(summary);
}

std::unique_ptr<MediaWriter> OpenOutput(const ClipMapping& clip, const AVFrame* sample, Reporter& reporter,
                                        const std::atomic<bool>& cancel) {
    auto output = std::make_unique<MediaWriter>(clip.plan, clip.source.Path());
    StreamMapper mapper(clip, *output, reporter);
    if (clip.streams != ClipMapping::Streams::Beside) mapper.MapPictures(sample);
    if (clip.streams != ClipMapping::Streams::Pictures) mapper.MapOthers();
    if (output->File().Format().nb_streams == 0) return nullptr;
    Container& file = output->File();
    CopyTags(&file.Format().metadata, clip.source.Format().metadata);
    CopyChapters(file, clip.source.Format(), clip.limits);
    if (const auto plays = PlayCount(clip.source)) file.SetPlayCount(*plays);
    output->Start(clip.overwrite, cancel);
    return output;
}

} // namespace aveffect
