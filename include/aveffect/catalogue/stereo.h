#pragma once
/// Effects on two views of a scene.
#include "aveffect/effect_info.h"

namespace AVBased {

inline constexpr const char* effectName3DRenderEffect = "EffectName3DRenderEffect";

namespace catalogue {

constexpr PropertyChoice k3DModes[] = {
    {0, "left", "The left view alone."},
    {1, "red-cyan", "An anaglyph made of one picture: its red is moved."},
    {2, "green-magenta", "An anaglyph made of one picture: its red and blue are moved."},
    {3, "side-by-side", "Both views halved in width, the left one in the left half."},
    {4, "top-and-bottom", "Both views halved in height, the left one in the upper half."},
};
constexpr PropertyInfo k3DRenderProperties[] = {
    {"render_3d_depth", "80", kInt32, ValueKind::Number, "Depth",
     "How far an anaglyph's colours move: by half of the width divided by 120 less this, in steps of 10. "
     "Drawing two views replaces it by a quarter of the width.",
     "", 20, 100},
    {"render_3d_mode", "3", kInt32, ValueKind::Choice, "Presentation", "How the scene is shown.", "", 0, 4,
     kNoNeutral, PixelAxis::None, nullptr, k3DModes},
    {"render_3d_swtich", "0", kInt32, ValueKind::Switch, "Exchange views",
     "Exchanges left and right. Once on, it stays on.", "", 0, 1},
};
constexpr std::string_view k3DRenderSynonyms[] = {"3d",           "stereo", "stereoscopic", "red-cyan",
                                                  "side-by-side", "sbs",    "red-blue"};
constexpr EffectPreset k3DRenderPresets[] = {
    {"red-cyan", "For red and cyan glasses.", {{"render_3d_mode", 1}, {"render_3d_depth", 80}}},
    {"green-magenta", "For green and magenta glasses.", {{"render_3d_mode", 2}, {"render_3d_depth", 80}}},
    {"side-by-side", "Both views beside each other, for 3D screens.", {{"render_3d_mode", 3}}},
    {"top-and-bottom", "Both views above each other, for 3D screens.", {{"render_3d_mode", 4}}},
};
constexpr EffectInfo k3DRender = {
    .name = effectName3DRenderEffect,
    .shortName = "anaglyph",
    .kind = EffectKind::Stereo,
    .traits = kKeepsState | kPreparesOnce | kMovesPixels,
    .title = "3D",
    .help = "Shows two views of a scene, made of one picture unless the frame has a second one, as one "
            "picture; or makes one picture an anaglyph.",
    .properties = k3DRenderProperties,
    .synonyms = k3DRenderSynonyms,
    .presets = k3DRenderPresets,
};

} // namespace catalogue

} // namespace AVBased
