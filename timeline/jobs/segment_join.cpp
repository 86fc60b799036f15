#include "timeline/jobs/segment_join.h"

#include <algorithm>
#include <cstring>

#include "host/media/source.h"
#include "host/output/media_writer.h"
#include "host/support/stages.h"

namespace aveffect {

namespace {

using mediabridge::AVPacketPtr;

Source Open(const Segment& segment, const std::atomic<bool>& cancel) {
    return {{segment.path}, Source::Others::WithPictures, 1, cancel};
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
    return nullptr;
}

/// Packets come as they are decoded, which may be before they are shown: by how many pictures at the most.
int64_t DelayOf(const Segment& segment, AVRational rate, const std::atomic<bool>& cancel) {
    Source source = Open(segment, cancel);
    const AVRational base = source.Pictures().time_base;
    int64_t delay = 0;
    for (int64_t number = 0; const AVPacketPtr packet = NextOf(source); ++number)
        if (packet->pts != AV_NOPTS_VALUE)
            delay = std::max(delay, number - av_rescale_q(packet->pts, base, av_inv_q(rate)));
    return delay;
}

} // namespace

// Containers round times, so they are counted anew.
DamageReport JoinSegments(const std::vector<Segment>& segments, AVRational rate, const OutputPlan& plan,
                          bool overwrite, std::optional<SoundFeed> sound, const std::atomic<bool>& cancel) {
    const AVRational interval = av_inv_q(rate);
    int64_t delay = 0;
    for (const Segment& segment : segments) delay = std::max(delay, DelayOf(segment, rate, cancel));

    const Source first = Open(segments.front(), cancel);
    const AVRational base = first.Pictures().time_base;
    MediaWriter file(plan);
    AVStream& stream = file.AddCopiedPictures(first.Pictures());
    stream.avg_frame_rate = stream.r_frame_rate = rate;
    if (sound) file.AddSound(std::move(*sound));
    file.Start(overwrite, cancel);
    int64_t begin = 0, number = 0;
    for (const Segment& segment : segments) {
        Source source = Open(segment, cancel);
        if (!IsAlike(*first.Pictures().codecpar, *source.Pictures().codecpar))
            throw Error(ErrorKind::Output, "the pieces " + segments.front().path + " and " + segment.path +
                                               " are not encoded alike; render without --work");
        const AVRational own = source.Pictures().time_base;
        while (const AVPacketPtr packet = NextOf(source)) {
            CheckCancel(cancel);
            const int64_t shown =
                packet->pts == AV_NOPTS_VALUE ? number : begin + av_rescale_q(packet->pts, own, interval);
            packet->pts = av_rescale_q(shown, interval, base);
            packet->dts = av_rescale_q(number++ - delay, interval, base);
            packet->duration = av_rescale_q(shown + 1, interval, base) - packet->pts;
            packet->stream_index = first.Pictures().index;
            file.WritePacket(*packet);
        }
        begin += segment.pictures;
    }
    file.EndStreams(Moment{begin, interval});
    file.Finish();
    CheckCancel(cancel);
    file.Publish();
    return file.Damage();
}

} // namespace aveffect
