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
constexpr std::string_view kReplaceSoundSynonyms[] = {
    "dub", "music", "soundtrack", "background-music", "replace", "voice-over"};
constexpr NeutralSettings kReplaceSoundNeutral[] = {
    {{{"audio_replace_path", 0, 0}}},
};
constexpr EffectInfo kReplaceSound = {
    .name = effectNameAudioReplace,
    .shortName = "replace-sound",
    .kind = EffectKind::Audio,
    .traits = kKeepsState | kNeedsSettings,
    .title = "Replace sound",
    .help = "Lays another file's sound in place of the clip's.",
    .properties = kAudioReplaceProperties,
    .synonyms = kReplaceSoundSynonyms,
    .noPresets = "It has no presets, for its file has to be named.",
    .neutral = kReplaceSoundNeutral,
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
constexpr std::string_view kFadeSoundSynonyms[] = {"audio-fade", "fade", "ramp", "duck", "ducking", "afade"};
constexpr EffectPreset kFadeSoundPresets[] = {
    {"fade-in",
     "From silence to full in the first two seconds.",
     {{"fader_start_time", 0}, {"fader_duration", 2000}, {"fader_start_scale", 0}, {"fader_end_scale", 1}}},
    {"slow-fade-in",
     "From silence to full in the first five seconds.",
     {{"fader_start_time", 0}, {"fader_duration", 5000}, {"fader_start_scale", 0}, {"fader_end_scale", 1}}},
    {"duck",
     "The first five seconds at three tenths, as beneath a voice.",
     {{"fader_start_time", 0},
      {"fader_duration", 5000},
      {"fader_start_scale", 0.3},
      {"fader_end_scale", 0.3}}},
};
constexpr NeutralSettings kFadeSoundNeutral[] = {
    {{{"fader_start_scale", -1, kBelowZero}}},
    {{{"fader_end_scale", -1, kBelowZero}}},
    {{{"fader_start_scale", 1, 1}, {"fader_end_scale", 1, 1}}},
};
constexpr EffectInfo kFadeSound = {
    .name = effectNameAudioFader,
    .shortName = "fade-sound",
    .kind = EffectKind::Audio,
    .traits = kFollowsTime | kKeepsState | kNeedsSettings,
    .title = "Fade sound",
    .help = "Raises or lowers the gain evenly over a stretch of time, up to 1.",
    .properties = kAudioFaderProperties,
    .synonyms = kFadeSoundSynonyms,
    .presets = kFadeSoundPresets,
    .neutral = kFadeSoundNeutral,
    .note = "Behind its stretch the sound returns to full level, also after a fade to silence: let a "
            "fade-out end where the sound does. The gain never rises above 1.",
};

constexpr PropertyInfo kAudioVolumeProperties[] = {
    {"audio_volume", "100", kInt32, ValueKind::Number, "Volume", "What every sample is multiplied by.", "%",
     0, 12799, 100},
};
constexpr std::string_view kVolumeSynonyms[] = {"gain",    "loudness", "amplify", "louder",
                                                "quieter", "mute",     "level"};
constexpr EffectPreset kVolumePresets[] = {
    {"half", "Half as loud.", {{"audio_volume", 50}}},
    {"whisper", "A fifth as loud.", {{"audio_volume", 20}}},
    {"double", "Twice as loud.", {{"audio_volume", 200}}},
    {"mute", "Silence.", {{"audio_volume", 0}}},
};
constexpr NeutralSettings kVolumeNeutral[] = {
    {{{"audio_volume", 100, 100}}},
};
constexpr EffectInfo kVolume = {
    .name = effectNameAudioVolume,
    .shortName = "volume",
    .kind = EffectKind::Audio,
    .traits = kNeedsSettings,
    .title = "Volume",
    .help = "Makes sound louder or softer.",
    .properties = kAudioVolumeProperties,
    .synonyms = kVolumeSynonyms,
    .presets = kVolumePresets,
    .neutral = kVolumeNeutral,
    .note = "What becomes louder than the samples can say is cut off, which is heard as distortion.",
};

} // namespace catalogue

} // namespace AVBased
