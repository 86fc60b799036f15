#pragma once
/// Effects on sound.
#include "aveffect/effect_info.h"

namespace AVBased {

constexpr char effectNameAudioReplace[] = "audio_replace";
constexpr char effectNameAudioFader[] = "audio_fader";
constexpr char effectNameAudioVolume[] = "audio_volume";

namespace catalogue {

constexpr PropertyInfo kAudioReplaceProperties[] = {
    {"audio_replace_loop", "0", kInt32, ValueKind::Switch, "Loop",
     "Begins again when the file has ended; else silence follows.", "", 0, 1},
    {"audio_replace_path", "", kText, ValueKind::Path, "File",
     "Whose sound is heard; set it before the first frame.", "", 0, 0},
};
constexpr EffectInfo kReplaceSound = {
    .name = effectNameAudioReplace,
    .shortName = "replace-sound",
    .kind = EffectKind::Audio,
    .traits = kKeepsState | kNeedsSettings,
    .title = "Replace sound",
    .help = "Lays another file's sound in place of the clip's.",
    .properties = kAudioReplaceProperties,
};

constexpr PropertyInfo kAudioFaderProperties[] = {
    {"fader_start_time", "0", kInt32, ValueKind::Number, "Start", "When the fade begins.", "ms", 0,
     2147483647},
    {"fader_duration", "-1", kInt32, ValueKind::Number, "Length",
     "How long the fade takes; below 5 the start's gain stays, and -1 is some 50 days.", "ms", -1,
     2147483647},
    {"fader_start_scale", "-1.0", kDouble, ValueKind::Number, "Start gain",
     "Gain at the start, 1 for unchanged; a negative one turns the effect off.", "", -1, 1, -1},
    {"fader_end_scale", "-1.0", kDouble, ValueKind::Number, "End gain",
     "Gain at the end, 1 for unchanged; a negative one turns the effect off.", "", -1, 1, -1},
};
constexpr EffectInfo kFadeSound = {
    .name = effectNameAudioFader,
    .shortName = "fade-sound",
    .kind = EffectKind::Audio,
    .traits = kFollowsTime | kKeepsState | kNeedsSettings,
    .title = "Fade sound",
    .help = "Raises or lowers the gain evenly over a stretch of time, up to 1.",
    .properties = kAudioFaderProperties,
};

constexpr PropertyInfo kAudioVolumeProperties[] = {
    {"audio_volume", "100", kInt32, ValueKind::Number, "Volume", "What every sample is multiplied by.", "%",
     0, 12799, 100},
};
constexpr EffectInfo kVolume = {
    .name = effectNameAudioVolume,
    .shortName = "volume",
    .kind = EffectKind::Audio,
    .traits = kNeedsSettings,
    .title = "Volume",
    .help = "Makes signed 16-bit sound louder or softer.",
    .properties = kAudioVolumeProperties,
};

} // namespace catalogue

} // namespace AVBased
