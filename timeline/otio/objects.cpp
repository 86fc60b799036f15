#include "timeline/otio/objects.h"

#include <utility>

namespace aveffect {

namespace {

OtioJson Named(const char* schema, const std::string& name) {
    return {{"OTIO_SCHEMA", schema}, {"metadata", OtioJson::object()}, {"name", name}};
}

/// What clips, gaps, tracks and stacks have.
OtioJson Item(const char* schema, const std::string& name, OtioJson sourceRange) {
    OtioJson item = Named(schema, name);
    item["source_range"] = std::move(sourceRange);
    item["effects"] = OtioJson::array();
    item["markers"] = OtioJson::array();
    item["enabled"] = true;
    return item;
}

} // namespace

OtioJson RationalTimeObject(int64_t value, AVRational rate) {
    return {{"OTIO_SCHEMA", "RationalTime.1"}, {"rate", av_q2d(rate)}, {"value", static_cast<double>(value)}};
}

OtioJson TimeRangeObject(int64_t start, int64_t duration, AVRational rate) {
    return {{"OTIO_SCHEMA", "TimeRange.1"},
            {"duration", RationalTimeObject(duration, rate)},
            {"start_time", RationalTimeObject(start, rate)}};
}

OtioJson MakeClip(const ClipObject& clip, AVRational rate) {
    OtioJson item = Item("Clip.2", clip.name, TimeRangeObject(clip.start, clip.duration, rate));
    OtioJson reference = Named("ExternalReference.1", clip.name);
    reference["available_range"] = TimeRangeObject(0, clip.available, rate);
    reference["available_image_bounds"] = nullptr;
    reference["target_url"] = clip.url;
    item["media_references"] = {{"DEFAULT_MEDIA", std::move(reference)}};
    item["active_media_reference_key"] = "DEFAULT_MEDIA";
    return item;
}

OtioJson MakeGap(int64_t duration, AVRational rate) {
    return Item("Gap.1", "", TimeRangeObject(0, duration, rate));
}

OtioJson MakeTransition(const std::string& effect, int64_t before, int64_t after, AVRational rate) {
    const bool dissolve = effect == "crossfade";
    OtioJson transition = Named("Transition.1", effect);
    if (!dissolve) transition["metadata"]["aveffect"]["effect"] = effect;
    transition["in_offset"] = RationalTimeObject(before, rate);
    transition["out_offset"] = RationalTimeObject(after, rate);
    transition["transition_type"] = dissolve ? "SMPTE_Dissolve" : "Custom_Transition";
    return transition;
}

OtioJson MakeTrack(const std::string& name, const char* kind, OtioJson children) {
    OtioJson track = Item("Track.1", name, nullptr);
    track["children"] = std::move(children);
    track["kind"] = kind;
    return track;
}

OtioJson MakeEffect(const std::string& shortName, OtioJson words) {
    OtioJson effect = Named("Effect.1", shortName);
    effect["metadata"]["aveffect"] = std::move(words);
    effect["effect_name"] = "aveffect." + shortName;
    effect["enabled"] = true;
    return effect;
}

OtioJson MakeTimeline(const std::string& name, OtioJson tracks, OtioJson words) {
    OtioJson timeline = Named("Timeline.1", name);
    timeline["metadata"]["aveffect"] = std::move(words);
    timeline["global_start_time"] = nullptr;
    timeline["tracks"] = Item("Stack.1", "tracks", nullptr);
    timeline["tracks"]["children"] = std::move(tracks);
    return timeline;
}

} // namespace aveffect
