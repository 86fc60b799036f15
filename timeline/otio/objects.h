#pragma once
/// Objects of the interchange format, to be written.
#include <string>

#include "timeline/film/film_time.h"
#include "timeline/otio/document.h"

namespace aveffect {

/// In ticks of the rate, a second.
OtioJson RationalTimeObject(int64_t value, AVRational rate);
OtioJson TimeRangeObject(int64_t start, int64_t duration, AVRational rate);

/// A clip of a medium that has so many ticks.
struct ClipObject {
    std::string name, url;
    int64_t available, start, duration;
};
OtioJson MakeClip(const ClipObject& clip, AVRational rate);
OtioJson MakeGap(int64_t duration, AVRational rate);
/// Effect is a short name, "crossfade" for the format's own dissolve.
OtioJson MakeTransition(const std::string& effect, int64_t before, int64_t after, AVRational rate);
/// Kind: "Video" or "Audio".
OtioJson MakeTrack(const std::string& name, const char* kind, OtioJson children);
/// One of ours; words are its metadata.aveffect.
OtioJson MakeEffect(const std::string& shortName, OtioJson words);
OtioJson MakeTimeline(const std::string& name, OtioJson tracks, OtioJson words);

} // namespace aveffect
