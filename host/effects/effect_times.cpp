#include "host/effects/effect_times.h"

#include <algorithm>
#include <climits>

namespace aveffect {

TimeSpan ClipTimes(const Source& source, std::optional<int64_t> toMs, std::optional<AVRational> wanted) {
    const AVRational own = source.FrameRate(), rate = wanted.value_or(own);
    TimeSpan clip{0, source.EndMs(), rate.num, rate.den};
    if (!clip.endMs) clip.endMs = toMs;
    // A picture in a file lasts as long as its one packet says.
    if (!clip.endMs && source.Format().duration == AV_NOPTS_VALUE && source.Pictures().nb_frames <= 1 &&
        (avcodec_descriptor_get(source.Pictures().codecpar->codec_id)->props & AV_CODEC_PROP_INTRA_ONLY))
        clip.endMs = av_rescale(1000, own.den, own.num);
    if (clip.endMs) clip.endMs = std::clamp<int64_t>(*clip.endMs, 0, INT_MAX);
    return clip;
}

TimeSpan SoundTimes(const AVFormatContext& input, const AVStream& sound, std::optional<int64_t> toMs) {
    if (sound.duration != AV_NOPTS_VALUE && sound.duration > 0)
        return {0, av_rescale_q(sound.duration, sound.time_base, kMilliseconds)};
    if (input.duration != AV_NOPTS_VALUE && input.duration > 0)
        return {0, av_rescale_q(input.duration, kMicroseconds, kMilliseconds)};
    return {0, toMs};
}

} // namespace aveffect
