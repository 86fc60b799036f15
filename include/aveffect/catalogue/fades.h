#pragma once
/// Fades over the effect's span.
#include "aveffect/effect_info.h"

namespace AVBased {

constexpr char effectNameFadeIn[] = "fadein";
constexpr char effectNameFadeOut[] = "fadeout";
constexpr char effectNameDirectFadeIn[] = "directfadein";
constexpr char effectNameDirectFadeOut[] = "directfadeout";

namespace catalogue {

constexpr PropertyInfo kAlphaFadeProperties[] = {
    {"FadeMin", "0", kInt32, ValueKind::Number, "Lowest level", "No frame's level falls below this.", "/256",
     0, 256},
    {"FadeMax", "255", kInt32, ValueKind::Number, "Highest level",
     "No frame's level rises above this; 256 is fully opaque.", "/256", 0, 256},
};
constexpr std::string_view kFadeInSynonyms[] = {"fade-from-transparent", "appear", "fade"};
constexpr EffectPreset kFadeInPresets[] = {
    {"whole", "From nothing to the very opaque.", {{"FadeMax", 256}}},
    {"from-half", "Begins half transparent.", {{"FadeMin", 128}, {"FadeMax", 256}}},
    {"to-half", "Stays half transparent from the middle on.", {{"FadeMax", 128}}},
};
constexpr NeutralSettings kFadeInNeutral[] = {
    {{{"FadeMin", 256, 256}, {"FadeMax", 256, 256}}},
};
constexpr EffectInfo kFadeIn = {
    .name = effectNameFadeIn,
    .shortName = "fade-in",
    .kind = EffectKind::Fade,
    .traits = kFollowsTime | kChangesAlpha,
    .title = "Fade in",
    .help = "Raises the opacity over the span.",
    .properties = kAlphaFadeProperties,
    .synonyms = kFadeInSynonyms,
    .presets = kFadeInPresets,
    .neutral = kFadeInNeutral,
    .note =
        "The highest level is 255 of 256 unless it is set, so that the picture never becomes quite opaque.",
};

constexpr std::string_view kFadeOutSynonyms[] = {"fade-to-transparent", "disappear", "vanish", "fade"};
constexpr EffectPreset kFadeOutPresets[] = {
    {"whole", "From the very opaque to nothing.", {{"FadeMax", 256}}},
    {"to-half", "Ends half transparent.", {{"FadeMin", 128}, {"FadeMax", 256}}},
    {"from-half", "Stays half transparent up to the middle.", {{"FadeMax", 128}}},
};
constexpr NeutralSettings kFadeOutNeutral[] = {
    {{{"FadeMin", 256, 256}, {"FadeMax", 256, 256}}},
};
constexpr EffectInfo kFadeOut = {
    .name = effectNameFadeOut,
    .shortName = "fade-out",
    .kind = EffectKind::Fade,
    .traits = kFollowsTime | kChangesAlpha,
    .title = "Fade out",
    .help = "Lowers the opacity over the span.",
    .properties = kAlphaFadeProperties,
    .synonyms = kFadeOutSynonyms,
    .presets = kFadeOutPresets,
    .neutral = kFadeOutNeutral,
    .note = "The highest level is 255 of 256 unless it is set, so that the picture never is quite opaque.",
};

constexpr PropertyInfo kDirectFadeInProperties[] = {
    {"fadein_min", "0", kInt32, ValueKind::Number, "Lowest level", "The level does not fall below this.",
     "/256", 0, 256},
    {"fadein_color", "0", kInt32, ValueKind::Colour, "Colour", "What the picture is mixed with.", "", 0,
     0xFFFFFF},
    {"fadein_max", "256", kInt32, ValueKind::Number, "Highest level",
     "The level does not rise above this; 256 is the picture alone.", "/256", 0, 256},
};
constexpr std::string_view kDirectFadeInSynonyms[] = {"fade-from-black", "fade-from-white", "veil", "tint",
                                                      "colorize"};
constexpr EffectPreset kDirectFadeInPresets[] = {
    {"dimmed", "The picture at half of its brightness.", {{"fadein_min", 128}, {"fadein_max", 128}}},
    {"fog",
     "A white veil over the picture.",
     {{"fadein_min", 140}, {"fadein_color", 0xFFFFFF}, {"fadein_max", 140}}},
    {"amber", "A warm tint.", {{"fadein_min", 190}, {"fadein_color", 0xFF9020}, {"fadein_max", 190}}},
    {"moonlight",
     "A cold and dark tint.",
     {{"fadein_min", 150}, {"fadein_color", 0x102040}, {"fadein_max", 150}}},
};
constexpr NeutralSettings kDirectFadeInNeutral[] = {
    {{{"fadein_min", 256, 256}, {"fadein_max", 256, 256}}},
};
constexpr EffectInfo kDirectFadeIn = {
    .name = effectNameDirectFadeIn,
    .shortName = "fade-in-color",
    .kind = EffectKind::Fade,
    .traits = kFollowsTime,
    .title = "Fade in from a colour",
    .help = "Mixes every frame of the span alike with a colour: at level 15360 / duration of 256.",
    .properties = kDirectFadeInProperties,
    .synonyms = kDirectFadeInSynonyms,
    .presets = kDirectFadeInPresets,
    .neutral = kDirectFadeInNeutral,
    .note = "It mixes every frame alike and does not fade: the level follows from the length of the span "
            "alone, and a span of a second or more shows hardly anything but the colour. fade-in raises the "
            "opacity over time.",
};

constexpr PropertyInfo kDirectFadeOutProperties[] = {
    {"fadeout_min", "0", kInt32, ValueKind::Number, "Lowest level", "The level does not fall below this.",
     "/256", 0, 256},
    {"fadeout_color", "0", kInt32, ValueKind::Colour, "Colour", "What the picture fades to.", "", 0,
     0xFFFFFF},
    {"fadeout_max", "256", kInt32, ValueKind::Number, "Highest level",
     "The level does not rise above this; 256 is the picture alone.", "/256", 0, 256},
};
constexpr std::string_view kDirectFadeOutSynonyms[] = {"fade-to-black", "fade-to-white", "dip-to-black",
                                                       "fade"};
constexpr EffectPreset kDirectFadeOutPresets[] = {
    {"to-black", "Becomes black.", {{"fadeout_color", 0x000000}}},
    {"to-white", "Becomes white.", {{"fadeout_color", 0xFFFFFF}}},
    {"to-dusk", "Becomes a dark blue.", {{"fadeout_color", 0x101830}}},
    {"dimmed", "Ends at half of its brightness.", {{"fadeout_min", 128}}},
};
constexpr NeutralSettings kDirectFadeOutNeutral[] = {
    {{{"fadeout_min", 256, 256}, {"fadeout_max", 256, 256}}},
};
constexpr EffectInfo kDirectFadeOut = {
    .name = effectNameDirectFadeOut,
    .shortName = "fade-out-color",
    .kind = EffectKind::Fade,
    .traits = kFollowsTime,
    .title = "Fade out to a colour",
    .help = "Mixes the picture with a colour, more and more over the span.",
    .properties = kDirectFadeOutProperties,
    .synonyms = kDirectFadeOutSynonyms,
    .presets = kDirectFadeOutPresets,
    .neutral = kDirectFadeOutNeutral,
};

} // namespace catalogue

} // namespace AVBased
