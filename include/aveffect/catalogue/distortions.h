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
constexpr EffectInfo kReverse = {
    .name = effectNameReverse,
    .shortName = "reverse",
    .kind = EffectKind::Distortion,
    .traits = kNeedsSettings | kMovesPixels,
    .title = "Reverse",
    .help =
        "Mirrors the picture, flips it, or both; both leave the middle row and column of odd sizes alone.",
    .properties = kReverseProperties,
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
constexpr EffectInfo kSpherize = {
    .name = effectNameSpherize,
    .shortName = "spherize",
    .kind = EffectKind::Distortion,
    .traits = kKeepsState | kNeedsSettings | kMovesPixels,
    .title = "Spherize",
    .help = "Pulls the pixels of a circle in or out.",
    .properties = kSpherizeProperties,
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
constexpr EffectInfo kMagnifier = {
    .name = effectNameMagnifier,
    .shortName = "magnifier",
    .kind = EffectKind::Distortion,
    .traits = kNeedsSettings | kMovesPixels,
    .title = "Magnifier",
    .help = "Lays a magnifying glass on the picture.",
    .properties = kMagnifierProperties,
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
constexpr EffectInfo kRotate = {
    .name = effectNameRotate,
    .shortName = "rotate",
    .kind = EffectKind::Distortion,
    .traits = kKeepsState | kNeedsSettings | kMovesPixels,
    .title = "Rotate",
    .help = "Twists a circle of the picture.",
    .properties = kRotateProperties,
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
constexpr EffectInfo kTensile = {
    .name = effectNameTensile,
    .shortName = "tensile",
    .kind = EffectKind::Distortion,
    .traits = kNeedsSettings | kMovesPixels,
    .title = "Tensile",
    .help = "Stretches a band of rows or columns and squeezes the rest.",
    .properties = kTensileProperties,
};

constexpr PropertyInfo kAtomizeProperties[] = {
    {"atomize_ishorizontal", "0", kInt32, ValueKind::Switch, "Horizontal", "Scatters along the rows.", "", 0,
     1, 0},
    {"atomize_isvertical", "0", kInt32, ValueKind::Switch, "Vertical", "Scatters along the columns.", "", 0,
     1, 0},
    {"atomize_level", "0", kInt32, ValueKind::Number, "Distance",
     "Samples come from less than this far; 0 and 1 change nothing.", "px", 0, 65535, 0, PixelAxis::Smaller},
};
constexpr EffectInfo kAtomize = {
    .name = effectNameAtomize,
    .shortName = "atomize",
    .kind = EffectKind::Distortion,
    .traits = kKeepsState | kDrawsRandom | kNeedsSettings | kMovesPixels,
    .title = "Atomize",
    .help = "Scatters samples to the right and downwards.",
    .properties = kAtomizeProperties,
};

constexpr PropertyInfo kTileReflectProperties[] = {
    {"tilereflect_angle", "30", kInt32, ValueKind::Number, "Angle",
     "Direction of the grid of tiles; a direction of its own until it is set.", "degrees", -180, 180,
     kNoNeutral, PixelAxis::None, ""},
    {"tilereflect_size", "30", kInt32, ValueKind::Number, "Tile size",
     "Width and height of a tile; larger than every picture until it is set.", "px", 1, 46080, kNoNeutral,
     PixelAxis::Smaller, "46080"},
    {"tilereflect_curvature", "30", kInt32, ValueKind::Number, "Curvature",
     "How strongly a tile bends the picture, growing with the square; 8 until it is set.", "", 0, 100,
     kNoNeutral, PixelAxis::None, "8"},
};
constexpr EffectInfo kTileReflect = {
    .name = effectNameTileReflect,
    .shortName = "tile-reflect",
    .kind = EffectKind::Distortion,
    .traits = kKeepsState | kMovesPixels,
    .title = "Tile reflection",
    .help = "Shows the picture through a turned grid of lenses.",
    .properties = kTileReflectProperties,
};

constexpr PropertyInfo kMirrorInvertProperties[] = {
    {"mirrorinvert_amount", "100", kInt32, ValueKind::Number, "Amount",
     "Area of the circle that stays in place, of the largest one in the picture.", "%", -1000, 1000},
};
constexpr EffectInfo kMirrorInvert = {
    .name = effectNameMirrorInvert,
    .shortName = "mirror-invert",
    .kind = EffectKind::Distortion,
    .traits = kKeepsState | kMovesPixels,
    .title = "Mirror inversion",
    .help = "Exchanges the inside of a circle about the middle with its outside.",
    .properties = kMirrorInvertProperties,
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
constexpr EffectInfo kQuarterTurns = {
    .name = effectNameRotate90X,
    .shortName = "quarter-turns",
    .kind = EffectKind::Distortion,
    .traits = kFewFormats | kNeedsSettings | kMovesPixels,
    .title = "Quarter turns",
    .help = "Turns the picture; quarter turns are made smaller to fit the frame, with black around them. "
            "BGRA and YUV420P only.",
    .properties = kRotate90XProperties,
};

} // namespace catalogue

} // namespace AVBased
