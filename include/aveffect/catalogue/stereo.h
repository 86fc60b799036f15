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
constexpr EffectInfo k3DRender = {
    .name = effectName3DRenderEffect,
    .shortName = "anaglyph",
    .kind = EffectKind::Stereo,
    .traits = kKeepsState | kMovesPixels,
    .title = "3D",
    .help = "Shows two views of a scene, made of one picture unless the frame has a second one, as one "
            "picture; or makes one picture an anaglyph.",
    .properties = k3DRenderProperties,
};

} // namespace catalogue

} // namespace AVBased
