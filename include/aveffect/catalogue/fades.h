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
constexpr EffectInfo kFadeIn = {
    .name = effectNameFadeIn,
    .shortName = "fade-in",
    .kind = EffectKind::Fade,
    .traits = kFollowsTime | kChangesAlpha,
    .title = "Fade in",
    .help = "Raises the opacity over the span.",
    .properties = kAlphaFadeProperties,
};

constexpr EffectInfo kFadeOut = {
    .name = effectNameFadeOut,
    .shortName = "fade-out",
    .kind = EffectKind::Fade,
    .traits = kFollowsTime | kChangesAlpha,
    .title = "Fade out",
    .help = "Lowers the opacity over the span.",
    .properties = kAlphaFadeProperties,
};

constexpr PropertyInfo kDirectFadeInProperties[] = {
    {"fadein_min", "0", kInt32, ValueKind::Number, "Lowest level", "The level does not fall below this.",
     "/256", 0, 256},
    {"fadein_color", "0", kInt32, ValueKind::Colour, "Colour", "What the picture is mixed with.", "", 0,
     0xFFFFFF},
    {"fadein_max", "256", kInt32, ValueKind::Number, "Highest level",
     "The level does not rise above this; 256 is the picture alone.", "/256", 0, 256},
};
constexpr EffectInfo kDirectFadeIn = {
    .name = effectNameDirectFadeIn,
    .shortName = "fade-in-color",
    .kind = EffectKind::Fade,
    .traits = kFollowsTime,
    .title = "Fade in from a colour",
    .help = "Mixes every frame of the span alike with a colour: at level 15360 / duration of 256.",
    .properties = kDirectFadeInProperties,
};

constexpr PropertyInfo kDirectFadeOutProperties[] = {
    {"fadeout_min", "0", kInt32, ValueKind::Number, "Lowest level", "The level does not fall below this.",
     "/256", 0, 256},
    {"fadeout_color", "0", kInt32, ValueKind::Colour, "Colour", "What the picture fades to.", "", 0,
     0xFFFFFF},
    {"fadeout_max", "256", kInt32, ValueKind::Number, "Highest level",
     "The level does not rise above this; 256 is the picture alone.", "/256", 0, 256},
};
constexpr EffectInfo kDirectFadeOut = {
    .name = effectNameDirectFadeOut,
    .shortName = "fade-out-color",
    .kind = EffectKind::Fade,
    .traits = kFollowsTime,
    .title = "Fade out to a colour",
    .help = "Mixes the picture with a colour, more and more over the span.",
    .properties = kDirectFadeOutProperties,
};

} // namespace catalogue

} // namespace AVBased
