#pragma once
/// Looks: effects that make another picture of the picture.
#include "aveffect/effect_info.h"

namespace AVBased {

constexpr char effectNameMosaic[] = "mosaic";
constexpr char effectNamePortrait[] = "portrait";
constexpr char effectNameMirage[] = "mirage";
constexpr char effectNameStroke[] = "stroke";
constexpr char effectNamePopStyle[] = "popstyle";
constexpr char effectNameEdgeLight[] = "edgelight";
constexpr char effectNameVideoWall[] = "videowall";
constexpr char effectNameSpotlight[] = "spotlight";
constexpr char effectNameRadiate[] = "radiate";
constexpr char effectNameOilPainting[] = "oilpainting";

namespace catalogue {

constexpr PropertyInfo kMosaicProperties[] = {
    {"mosaic_x1", "0", kInt32, ValueKind::Number, "X 1", "Column of one corner of the rectangle.", "px", 0,
     65535, kNoNeutral, PixelAxis::Width},
    {"mosaic_y1", "0", kInt32, ValueKind::Number, "Y 1", "Row of that corner.", "px", 0, 65535, kNoNeutral,
     PixelAxis::Height},
    {"mosaic_x2", "0", kInt32, ValueKind::Number, "X 2",
     "Column of the opposite corner; corners outside the picture turn the effect off.", "px", 0, 65535,
     kNoNeutral, PixelAxis::Width},
    {"mosaic_y2", "0", kInt32, ValueKind::Number, "Y 2", "Row of that corner.", "px", 0, 65535, kNoNeutral,
     PixelAxis::Height},
    {"mosaic_step", "0", kInt32, ValueKind::Number, "Block size",
     "Blocks are 2 to this power pixels wide and high; 0 and 1 turn the effect off.", "", 0, 30, 0},
};
constexpr EffectInfo kMosaic = {
    .name = effectNameMosaic,
    .shortName = "mosaic",
    .kind = EffectKind::Look,
    .traits = kNeedsSettings,
    .title = "Mosaic",
    .help = "Covers a rectangle with blocks of one colour.",
    .properties = kMosaicProperties,
};

// The texts registered for portrait and stroke read as 0; neither effect begins with it.
constexpr PropertyInfo kPortraitProperties[] = {
    {"portrait_fillcolor", "0xffffffff", kInt32, ValueKind::Colour, "Colour",
     "Colour of the frame; black, and transparent, until it is set.", "", 0, 0xFFFFFF, kNoNeutral,
     PixelAxis::None, ""},
    {"portrait_width", "0xffffffff", kInt32, ValueKind::Number, "Width",
     "Over how many pixels the frame fades into the picture; a sixteenth of it more is filled. 200 until it "
     "is set.",
     "px", 0, 65535, 0, PixelAxis::Smaller, "200"},
};
constexpr EffectInfo kPortrait = {
    .name = effectNamePortrait,
    .shortName = "portrait",
    .kind = EffectKind::Look,
    .traits = kPlain,
    .title = "Portrait",
    .help = "Frames the picture with a colour that fades into it.",
    .properties = kPortraitProperties,
};

constexpr PropertyInfo kMirageProperties[] = {
    {"mirage_width", "10", kInt32, ValueKind::Number, "Enlargement",
     "Half percents by which the copy is larger than the picture.", "/200", 0, 1000},
    {"mirage_alpha", "10", kInt32, ValueKind::Number, "Share of the copy",
     "From 0, a fifth of the picture, to 100, seven tenths.", "%", 0, 100},
};
constexpr EffectInfo kMirage = {
    .name = effectNameMirage,
    .shortName = "mirage",
    .kind = EffectKind::Look,
    .traits = kMovesPixels,
    .title = "Mirage",
    .help = "Blends the picture with an enlarged copy of itself.",
    .properties = kMirageProperties,
};

constexpr PropertyInfo kStrokeProperties[] = {
    {"stroke_pressure", "0x20", kInt32, ValueKind::Number, "Pressure",
     "How faint an edge may be to be drawn: 100 draws every difference, 50 those of more than 50. 68 until "
     "it "
     "is set.",
     "", -410, 100, kNoNeutral, PixelAxis::None, "68"},
};
constexpr EffectInfo kStroke = {
    .name = effectNameStroke,
    .shortName = "stroke",
    .kind = EffectKind::Look,
    .traits = kPlain,
    .title = "Pencil strokes",
    .help = "Draws the picture's edges in black on white; planar pictures get a warm tint. YUV410P stays as "
            "it is.",
    .properties = kStrokeProperties,
};

constexpr PropertyInfo kPopStyleProperties[] = {
    {"popstyle_threshold", "0", kInt32, ValueKind::Number, "Threshold",
     "What is brighter takes the colour; green counts as brightness. 128 until it is set.", "", 0, 255,
     kNoNeutral, PixelAxis::None, "128"},
    {"popstyle_color", "0", kInt32, ValueKind::Colour, "Colour",
     "What bright parts become; 0xFFAFD1 until it is set.", "", 0, 0xFFFFFF, kNoNeutral, PixelAxis::None,
     "16756689"},
};
constexpr EffectInfo kPopStyle = {
    .name = effectNamePopStyle,
    .shortName = "pop-style",
    .kind = EffectKind::Look,
    .traits = kPlain,
    .title = "Pop style",
    .help = "Makes a poster of one colour and black.",
    .properties = kPopStyleProperties,
};

constexpr PropertyInfo kEdgeLightProperties[] = {
    {"edgelight_level", "3", kInt32, ValueKind::Number, "Gain",
     "What steepness is multiplied by. Behind 255 comes 0 again, and levels below 0 count down from 256. "
     "From "
     "-90 to 90 it costs least.",
     "", -255, 255},
};
constexpr EffectInfo kEdgeLight = {
    .name = effectNameEdgeLight,
    .shortName = "edge-light",
    .kind = EffectKind::Look,
    .traits = kPlain,
    .title = "Edge light",
    .help = "Lights the edges and darkens everything else.",
    .properties = kEdgeLightProperties,
};

constexpr PropertyInfo kVideoWallProperties[] = {
    {"videowall_horiTiles", "3", kDouble, ValueKind::Number, "Columns",
     "Tiles side by side; the last one may be cut.", "", 1, 1000, 1},
    {"videowall_verTiles", "3", kDouble, ValueKind::Number, "Rows",
     "Tiles on top of each other; the last one may be cut.", "", 1, 1000, 1},
};
constexpr EffectInfo kVideoWall = {
    .name = effectNameVideoWall,
    .shortName = "video-wall",
    .kind = EffectKind::Look,
    .traits = kMovesPixels,
    .title = "Video wall",
    .help = "Repeats the picture, made smaller, over a grid of tiles.",
    .properties = kVideoWallProperties,
};

constexpr PropertyInfo kSpotlightProperties[] = {
    {"spotlight_x", "250", kInt32, ValueKind::Number, "X",
     "Column of its centre; one right of the picture turns the effect off.", "px", 0, 65535, kNoNeutral,
     PixelAxis::Width},
    {"spotlight_y", "250", kInt32, ValueKind::Number, "Y",
     "Row of its centre; one below the picture turns the effect off.", "px", 0, 65535, kNoNeutral,
     PixelAxis::Height},
    {"spotlight_r", "250", kInt32, ValueKind::Number, "Radius",
     "Radius of the disc, three quarters of which are its soft rim; 200 as long as it is not set.", "px", 2,
     65535, kNoNeutral, PixelAxis::Smaller, "200"},
    {"spotlight_brightness", "250", kInt32, ValueKind::Number, "Brightness",
     "What is added to the samples, 100 is white; 50 as long as it is not set.", "%", -100, 100, 0,
     PixelAxis::None, "50"},
    {"spotlight_color", "250", kInt32, ValueKind::Colour, "Colour",
     "What the disc is mixed with; white as long as it is not set.", "", 0, 0xFFFFFF, kNoNeutral,
     PixelAxis::None, "16777215"},
    {"spotlight_density", "250", kInt32, ValueKind::Number, "Density",
     "Share of the colour; 40 as long as it is not set. Colours of planar pictures take it several times "
     "over.",
     "%", 0, 100, 0, PixelAxis::None, "40"},
};
constexpr EffectInfo kSpotlight = {
    .name = effectNameSpotlight,
    .shortName = "spotlight",
    .kind = EffectKind::Look,
    .traits = kPlain,
    .title = "Spotlight",
    .help = "Lights a disc with a soft rim.",
    .properties = kSpotlightProperties,
};

constexpr PropertyInfo kRadiateProperties[] = {
    {"radiate_x", "300", kInt32, ValueKind::Number, "X", "Column of the centre.", "px", 0, 65535, kNoNeutral,
     PixelAxis::Width},
    {"radiate_y", "300", kInt32, ValueKind::Number, "Y", "Row of the centre.", "px", 0, 65535, kNoNeutral,
     PixelAxis::Height},
    {"radiate_level", "300", kInt32, ValueKind::Number, "Length",
     "How long the rays are; an eighth of it is added to the samples besides.", "", 0, 2047},
};
constexpr EffectInfo kRadiate = {
    .name = effectNameRadiate,
    .shortName = "radiate",
    .kind = EffectKind::Look,
    .traits = kMovesPixels,
    .title = "Radiate",
    .help = "Draws rays of light from a centre.",
    .properties = kRadiateProperties,
};

constexpr PropertyInfo kOilPaintingProperties[] = {
    {"oilpainting_brushsize", "3", kInt32, ValueKind::Number, "Brush size",
     "Radius of the square that a pixel's colour is found in.", "px", 0, 65535, kNoNeutral,
     PixelAxis::Smaller},
    {"oilpainting_coarseness", "3", kInt32, ValueKind::Number, "Coarseness",
     "Levels of brightness that are told apart: the fewer, the larger the patches. 50 until it is set.", "",
     0, 256, kNoNeutral, PixelAxis::None, "50"},
};
constexpr EffectInfo kOilPainting = {
    .name = effectNameOilPainting,
    .shortName = "oil-painting",
    .kind = EffectKind::Look,
    .traits = kPlain,
    .title = "Oil painting",
    .help = "Gives every pixel the mean colour of the most frequent brightness around it.",
    .properties = kOilPaintingProperties,
};

} // namespace catalogue

} // namespace AVBased
