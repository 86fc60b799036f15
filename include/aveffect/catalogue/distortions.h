#pragma once
/// Distortions: effects that take samples from elsewhere in the picture.
#include "aveffect/effect_info.h"

namespace AVBased {

constexpr char effectNameReverse[] = "reverse";
constexpr char effectNameSpherize[] = "spherize";
constexpr char effectNameMagnifier[] = "magnifier";
constexpr char effectNameRotate[] = "rotate";
constexpr char effectNameTensile[] = "tensile";
constexpr char effectNameAtomize[] = "atomize";
constexpr char effectNameTileReflect[] = "tilereflect";
constexpr char effectNameMirrorInvert[] = "mirrorinvert";
inline constexpr const char* effectNameRotate90X = "EffectNameRotate90X";

namespace catalogue {

constexpr PropertyInfo kReverseProperties[] = {
    {"mirror", "0", kInt32, ValueKind::Switch, "Mirror", "Exchanges left and right.", "", 0, 1, 0},
    {"vertical", "0", kInt32, ValueKind::Switch, "Flip", "Exchanges top and bottom.", "", 0, 1, 0},
};
constexpr std::string_view kReverseSynonyms[] = {"mirror", "flip", "hflip", "vflip", "upside-down", "flop"};
constexpr EffectPreset kReversePresets[] = {
    {"mirror", "Left and right exchanged.", {{"mirror", 1}}},
    {"flip", "Top and bottom exchanged.", {{"vertical", 1}}},
    {"half-turn", "Both exchanged: turned by 180 degrees.", {{"mirror", 1}, {"vertical", 1}}},
};
constexpr NeutralSettings kReverseNeutral[] = {
    {{{"mirror", 0, 0}, {"vertical", 0, 0}}},
};
constexpr EffectInfo kReverse = {
    .name = effectNameReverse,
    .shortName = "reverse",
    .kind = EffectKind::Distortion,
    .traits = kNeedsSettings | kMovesPixels,
    .title = "Reverse",
    .help =
        "Mirrors the picture, flips it, or both; both leave the middle row and column of odd sizes alone.",
    .properties = kReverseProperties,
    .synonyms = kReverseSynonyms,
    .presets = kReversePresets,
    .neutral = kReverseNeutral,
};

constexpr PropertyInfo kSpherizeProperties[] = {
    {"spherize_r", "0", kInt32, ValueKind::Number, "Radius", "Radius of the circle.", "px", 0, 65535, 0,
     PixelAxis::Smaller},
    {"spherize_x", "0", kInt32, ValueKind::Number, "X", "Column of its centre.", "px", 0, 65535, kNoNeutral,
     PixelAxis::Width},
    {"spherize_y", "0", kInt32, ValueKind::Number, "Y", "Row of its centre.", "px", 0, 65535, kNoNeutral,
     PixelAxis::Height},
    {"spherize_scale", "0", kDouble, ValueKind::Number, "Exponent",
     "Above 0 the middle grows, below it shrinks; 0 changes nothing.", "", -10, 10, 0},
};
constexpr std::string_view kSpherizeSynonyms[] = {"bulge",  "pinch", "fisheye", "fish-eye",
                                                  "sphere", "lens",  "barrel"};
constexpr EffectPreset kSpherizePresets[] = {
    {"bulge",
     "The middle swells.",
     {Percent("spherize_r", 45),
      Percent("spherize_x", 50),
      Percent("spherize_y", 50),
      {"spherize_scale", 1}}},
    {"pinch",
     "The middle is drawn in.",
     {Percent("spherize_r", 45),
      Percent("spherize_x", 50),
      Percent("spherize_y", 50),
      {"spherize_scale", -0.5}}},
    {"fisheye",
     "Nearly the whole picture swells, as in a very wide lens.",
     {Percent("spherize_r", 75),
      Percent("spherize_x", 50),
      Percent("spherize_y", 50),
      {"spherize_scale", 0.6}}},
};
constexpr NeutralSettings kSpherizeNeutral[] = {
    {{{"spherize_r", 0, 0}}},
    {{{"spherize_scale", 0, 0}}},
    {{{"spherize_x", 0, 0, PixelAxis::Width}}},
    {{{"spherize_y", 0, 0, PixelAxis::Height}}},
};
constexpr EffectInfo kSpherize = {
    .name = effectNameSpherize,
    .shortName = "spherize",
    .kind = EffectKind::Distortion,
    .traits = kKeepsState | kPreparesOnce | kNeedsSettings | kMovesPixels,
    .title = "Spherize",
    .help = "Pulls the pixels of a circle in or out.",
    .properties = kSpherizeProperties,
    .synonyms = kSpherizeSynonyms,
    .presets = kSpherizePresets,
    .neutral = kSpherizeNeutral,
};

constexpr PropertyInfo kMagnifierProperties[] = {
    {"magnifier_r", "0", kInt32, ValueKind::Number, "Radius", "Radius of the circle.", "px", 0, 65535, 0,
     PixelAxis::Smaller},
    {"magnifier_x", "0", kInt32, ValueKind::Number, "X", "Column of its centre.", "px", 0, 65535, kNoNeutral,
     PixelAxis::Width},
    {"magnifier_y", "0", kInt32, ValueKind::Number, "Y", "Row of its centre.", "px", 0, 65535, kNoNeutral,
     PixelAxis::Height},
    {"magnifier_scale", "0", kDouble, ValueKind::Number, "Factor",
     "How many times the circle is enlarged; 1 and less change nothing.", "", 0, 100, 1},
};
constexpr std::string_view kMagnifierSynonyms[] = {"loupe", "magnifying-glass", "zoom", "enlarge"};
constexpr EffectPreset kMagnifierPresets[] = {
    {"glass",
     "A magnifying glass in the middle.",
     {Percent("magnifier_r", 30),
      Percent("magnifier_x", 50),
      Percent("magnifier_y", 50),
      {"magnifier_scale", 2}}},
    {"loupe",
     "A small and strong one.",
     {Percent("magnifier_r", 24),
      Percent("magnifier_x", 50),
      Percent("magnifier_y", 50),
      {"magnifier_scale", 4}}},
    {"close-up",
     "A large and weak one.",
     {Percent("magnifier_r", 48),
      Percent("magnifier_x", 50),
      Percent("magnifier_y", 50),
      {"magnifier_scale", 1.5}}},
};
constexpr NeutralSettings kMagnifierNeutral[] = {
    {{{"magnifier_r", 0, 0}}},
    {{{"magnifier_scale", 0, 1}}},
    {{{"magnifier_r", 0, 0, PixelAxis::Smaller, 0.5}}},
    {{{"magnifier_x", 0, 0, PixelAxis::Width}}},
    {{{"magnifier_y", 0, 0, PixelAxis::Height}}},
};
constexpr EffectInfo kMagnifier = {
    .name = effectNameMagnifier,
    .shortName = "magnifier",
    .kind = EffectKind::Distortion,
    .traits = kNeedsSettings | kMovesPixels,
    .title = "Magnifier",
    .help = "Lays a magnifying glass on the picture.",
    .properties = kMagnifierProperties,
    .synonyms = kMagnifierSynonyms,
    .presets = kMagnifierPresets,
    .neutral = kMagnifierNeutral,
};

constexpr PropertyInfo kRotateProperties[] = {
    {"rotate_r", "0", kInt32, ValueKind::Number, "Radius", "Radius of the circle.", "px", 0, 65535, 0,
     PixelAxis::Smaller},
    {"rotate_x", "0", kInt32, ValueKind::Number, "X", "Column of its centre.", "px", 0, 65535, kNoNeutral,
     PixelAxis::Width},
    {"rotate_y", "0", kInt32, ValueKind::Number, "Y", "Row of its centre.", "px", 0, 65535, kNoNeutral,
     PixelAxis::Height},
    {"rotate_scale", "0", kDouble, ValueKind::Number, "Twist",
     "How far the circle is twisted, growing with the distance from its rim; 0 changes nothing.", "", -100,
     100, 0},
};
constexpr std::string_view kRotateSynonyms[] = {"twirl", "swirl", "twist", "vortex", "whirl"};
constexpr EffectPreset kRotatePresets[] = {
    {"twirl",
     "The middle is twisted.",
     {Percent("rotate_r", 45), Percent("rotate_x", 50), Percent("rotate_y", 50), {"rotate_scale", 1}}},
    {"whirlpool",
     "Twisted several times.",
     {Percent("rotate_r", 48), Percent("rotate_x", 50), Percent("rotate_y", 50), {"rotate_scale", 3}}},
    {"counter-twirl",
     "Twisted the other way.",
     {Percent("rotate_r", 45), Percent("rotate_x", 50), Percent("rotate_y", 50), {"rotate_scale", -1}}},
};
constexpr NeutralSettings kRotateNeutral[] = {
    {{{"rotate_r", 0, 0}}},
    {{{"rotate_scale", 0, 0}}},
    {{{"rotate_x", 0, 0, PixelAxis::Width}}},
    {{{"rotate_y", 0, 0, PixelAxis::Height}}},
};
constexpr EffectInfo kRotate = {
    .name = effectNameRotate,
    .shortName = "rotate",
    .kind = EffectKind::Distortion,
    .traits = kKeepsState | kPreparesOnce | kNeedsSettings | kMovesPixels,
    .title = "Rotate",
    .help = "Twists a circle of the picture.",
    .properties = kRotateProperties,
    .synonyms = kRotateSynonyms,
    .presets = kRotatePresets,
    .neutral = kRotateNeutral,
    .note = "It twists a circle; quarter-turns turns the whole picture. The twist changes its direction at "
            "70 % of the radius, and what comes from outside the picture is white.",
};

constexpr PropertyInfo kTensileProperties[] = {
    {"tensile_vertical", "0", kInt32, ValueKind::Switch, "Vertical", "Stretches a band of rows.", "", 0, 1,
     0},
    {"tensile_vertical_y1", "0", kInt32, ValueKind::Number, "Vertical begin", "Row where the band begins.",
     "px", 0, 65535, kNoNeutral, PixelAxis::Height},
    {"tensile_vertical_y2", "0", kInt32, ValueKind::Number, "Vertical end", "Row behind the band's last one.",
     "px", 0, 65535, kNoNeutral, PixelAxis::Height},
    {"tensile_vertical_scale", "0", kDouble, ValueKind::Number, "Vertical factor",
     "How far the band is stretched; below 1 the effect does nothing.", "", 0, 1000},
    {"tensile_horizontal", "0", kInt32, ValueKind::Switch, "Horizontal", "Stretches a band of columns.", "",
     0, 1, 0},
    {"tensile_horizontal_x1", "0", kInt32, ValueKind::Number, "Horizontal begin",
     "Column where the band begins.", "px", 0, 65535, kNoNeutral, PixelAxis::Width},
    {"tensile_horizontal_x2", "0", kInt32, ValueKind::Number, "Horizontal end",
     "Column behind the band's last one.", "px", 0, 65535, kNoNeutral, PixelAxis::Width},
    {"tensile_horizontal_scale", "0", kDouble, ValueKind::Number, "Horizontal factor",
     "How far the band is stretched; below 1 the effect does nothing.", "", 0, 1000},
};
constexpr std::string_view kTensileSynonyms[] = {"stretch", "squeeze", "elongate", "widen", "slim"};
constexpr EffectPreset kTensilePresets[] = {
    {"squeeze",
     "The middle is twice as wide, the sides are squeezed.",
     {{"tensile_horizontal", 1},
      Percent("tensile_horizontal_x1", 35),
      Percent("tensile_horizontal_x2", 65),
      {"tensile_horizontal_scale", 2}}},
    {"long-legs",
     "The lower half grows, the upper one is squeezed.",
     {{"tensile_vertical", 1},
      Percent("tensile_vertical_y1", 50),
      Percent("tensile_vertical_y2", 100),
      {"tensile_vertical_scale", 1.5}}},
    {"swell",
     "The middle grows both ways.",
     {{"tensile_vertical", 1},
      Percent("tensile_vertical_y1", 30),
      Percent("tensile_vertical_y2", 100),
      {"tensile_vertical_scale", 1.3},
      {"tensile_horizontal", 1},
      Percent("tensile_horizontal_x1", 30),
      Percent("tensile_horizontal_x2", 70),
      {"tensile_horizontal_scale", 1.5}}},
};
constexpr NeutralSettings kTensileNeutral[] = {
    {{{"tensile_vertical", 0, 0}, {"tensile_horizontal", 0, 0}}},
    {{{"tensile_vertical", 1, 1}, {"tensile_vertical_scale", 0, kBelowOne}}},
    {{{"tensile_horizontal", 1, 1}, {"tensile_horizontal_scale", 0, kBelowOne}}},
    {{{"tensile_vertical", 1, 1}, {"tensile_vertical_y2", 0, 0}}},
    {{{"tensile_horizontal", 1, 1}, {"tensile_horizontal_x2", 0, 0}}},
    {{{"tensile_vertical", 1, 1}, {"tensile_vertical_y2", 0, 0, PixelAxis::Height}}},
    {{{"tensile_horizontal", 1, 1}, {"tensile_horizontal_x2", 0, 0, PixelAxis::Width}}},
};
constexpr EffectInfo kTensile = {
    .name = effectNameTensile,
    .shortName = "tensile",
    .kind = EffectKind::Distortion,
    .traits = kNeedsSettings | kMovesPixels,
    .title = "Tensile",
    .help = "Stretches a band of rows or columns and squeezes the rest.",
    .properties = kTensileProperties,
    .synonyms = kTensileSynonyms,
    .presets = kTensilePresets,
    .neutral = kTensileNeutral,
};

constexpr PropertyInfo kAtomizeProperties[] = {
    {"atomize_ishorizontal", "0", kInt32, ValueKind::Switch, "Horizontal", "Scatters along the rows.", "", 0,
     1, 0},
    {"atomize_isvertical", "0", kInt32, ValueKind::Switch, "Vertical", "Scatters along the columns.", "", 0,
     1, 0},
    {"atomize_level", "0", kInt32, ValueKind::Number, "Distance",
     "Samples come from less than this far; 0 and 1 change nothing.", "px", 0, 65535, 0, PixelAxis::Smaller},
};
constexpr std::string_view kAtomizeSynonyms[] = {"scatter", "frosted-glass", "diffuse",
                                                 "spread",  "disperse",      "shatter"};
constexpr EffectPreset kAtomizePresets[] = {
    {"frosted",
     "As through frosted glass.",
     {{"atomize_ishorizontal", 1}, {"atomize_isvertical", 1}, Percent("atomize_level", 3)}},
    {"brushed", "Streaks along the rows.", {{"atomize_ishorizontal", 1}, Percent("atomize_level", 8)}},
    {"rain", "Streaks along the columns.", {{"atomize_isvertical", 1}, Percent("atomize_level", 8)}},
};
constexpr NeutralSettings kAtomizeNeutral[] = {
    {{{"atomize_level", 0, 1}}},
    {{{"atomize_ishorizontal", 0, 0}, {"atomize_isvertical", 0, 0}}},
};
constexpr EffectInfo kAtomize = {
    .name = effectNameAtomize,
    .shortName = "atomize",
    .kind = EffectKind::Distortion,
    .traits = kKeepsState | kDrawsRandom | kNeedsSettings | kMovesPixels,
    .title = "Atomize",
    .help = "Scatters samples to the right and downwards.",
    .properties = kAtomizeProperties,
    .synonyms = kAtomizeSynonyms,
    .presets = kAtomizePresets,
    .neutral = kAtomizeNeutral,
    .note = "The pattern is drawn anew for every render and stays the same from frame to frame.",
};

constexpr PropertyInfo kTileReflectProperties[] = {
    {"tilereflect_angle", "30", kInt32, ValueKind::Number, "Angle", "Direction of the grid of tiles.",
     "degrees", -180, 180, kNoNeutral, PixelAxis::None, ""},
    {"tilereflect_size", "30", kInt32, ValueKind::Number, "Tile size", "Width and height of a tile.", "px", 1,
     46080, kNoNeutral, PixelAxis::Smaller, "46080"},
    {"tilereflect_curvature", "30", kInt32, ValueKind::Number, "Curvature",
     "How strongly a tile bends the picture, growing with the square.", "", 0, 100, kNoNeutral,
     PixelAxis::None, "8"},
};
constexpr std::string_view kTileReflectSynonyms[] = {"glass-tiles", "glass-blocks", "kaleidoscope", "lenses",
                                                     "ripple"};
constexpr EffectPreset kTileReflectPresets[] = {
    {"glass-blocks",
     "Upright blocks of thick glass.",
     {{"tilereflect_angle", 0}, Percent("tilereflect_size", 12), {"tilereflect_curvature", 5}}},
    {"diamonds",
     "Slanted blocks.",
     {{"tilereflect_angle", -45}, Percent("tilereflect_size", 15), {"tilereflect_curvature", 6}}},
    {"mosaic-glass",
     "Small blocks that bend much.",
     {{"tilereflect_angle", -30}, Percent("tilereflect_size", 6), {"tilereflect_curvature", 5}}},
};
constexpr EffectInfo kTileReflect = {
    .name = effectNameTileReflect,
    .shortName = "tile-reflect",
    .kind = EffectKind::Distortion,
    .traits = kKeepsState | kPreparesOnce | kMovesPixels,
    .title = "Tile reflection",
    .help = "Shows the picture through a turned grid of lenses.",
    .properties = kTileReflectProperties,
    .synonyms = kTileReflectSynonyms,
    .presets = kTileReflectPresets,
    .note = "It has settings of its own until they are set, which show the picture in one huge tile. Angles "
            "from 1 to 90 mirror the picture besides.",
};

constexpr PropertyInfo kMirrorInvertProperties[] = {
    {"mirrorinvert_amount", "100", kInt32, ValueKind::Number, "Amount",
     "Area of the circle that stays in place, of the largest one in the picture.", "%", -1000, 1000},
};
constexpr std::string_view kMirrorInvertSynonyms[] = {"inversion", "inside-out", "sphere", "crystal-ball"};
constexpr EffectPreset kMirrorInvertPresets[] = {
    {"inside-out",
     "The inside of the largest circle and its outside exchanged.",
     {{"mirrorinvert_amount", 100}}},
    {"small-ball", "About a smaller circle.", {{"mirrorinvert_amount", 25}}},
    {"large-ball", "About a circle larger than the picture.", {{"mirrorinvert_amount", 200}}},
};
constexpr EffectInfo kMirrorInvert = {
    .name = effectNameMirrorInvert,
    .shortName = "mirror-invert",
    .kind = EffectKind::Distortion,
    .traits = kKeepsState | kPreparesOnce | kMovesPixels,
    .title = "Mirror inversion",
    .help = "Exchanges the inside of a circle about the middle with its outside.",
    .properties = kMirrorInvertProperties,
    .synonyms = kMirrorInvertSynonyms,
    .presets = kMirrorInvertPresets,
};

constexpr PropertyChoice kQuarterTurnChoices[] = {
    {0, "none", "The picture stays as it is."},
    {1, "clockwise", "A quarter turn clockwise."},
    {2, "half", "A half turn, which fills the frame."},
    {3, "anticlockwise", "A quarter turn anticlockwise."},
};
constexpr PropertyInfo kRotate90XProperties[] = {
    {"Rotate90XDerection", "0", kInt32, ValueKind::Choice, "Direction",
     "Quarter turns clockwise; other numbers count modulo 4.", "", 0, 3, 0, PixelAxis::None, nullptr,
     kQuarterTurnChoices},
};
constexpr std::string_view kQuarterTurnsSynonyms[] = {"rotate-90", "turn", "transpose", "rotate90",
                                                      "portrait-mode"};
constexpr EffectPreset kQuarterTurnsPresets[] = {
    {"clockwise", "A quarter turn clockwise.", {{"Rotate90XDerection", 1}}},
    {"half", "Upside down.", {{"Rotate90XDerection", 2}}},
    {"anticlockwise", "A quarter turn anticlockwise.", {{"Rotate90XDerection", 3}}},
};
constexpr NeutralSettings kQuarterTurnsNeutral[] = {
    {{{"Rotate90XDerection", 0, 0}}},
};
constexpr EffectInfo kQuarterTurns = {
    .name = effectNameRotate90X,
    .shortName = "quarter-turns",
    .kind = EffectKind::Distortion,
    .traits = kFewFormats | kNeedsSettings | kMovesPixels,
    .title = "Quarter turns",
    .help = "Turns the picture; quarter turns are made smaller to fit the frame, with black around them. "
            "BGRA and YUV420P only.",
    .properties = kRotate90XProperties,
    .synonyms = kQuarterTurnsSynonyms,
    .presets = kQuarterTurnsPresets,
    .neutral = kQuarterTurnsNeutral,
    .note = "The frame keeps its shape: a quarter turn makes the picture smaller, with black beside it.",
};

} // namespace catalogue

} // namespace AVBased
