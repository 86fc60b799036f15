#pragma once
/// Where what is rendered stands in the clip that effects' times refer to.
#include "host/media/span.h"
#include "host/settings/setting_time.h"

namespace aveffect {

struct EffectTimes {
    TimeSpan clip; ///< its times count from its own begin, 0
    Moment start;  ///< of what is rendered, in the clip; its own times count from there
};

/// The clip's end by its own word, else where it is cut; its pictures' rate, or that which is asked for. A
/// still picture lasts as long as its packet says.
TimeSpan ClipTimes(const Source& source, std::optional<int64_t> toMs, std::optional<AVRational> rate);

/// Of sound alone: its end by its own word or its file's, else where it is cut.
TimeSpan SoundTimes(const AVFormatContext& input, const AVStream& sound, std::optional<int64_t> toMs);

} // namespace aveffect
