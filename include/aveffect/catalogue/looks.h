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
constexpr std::string_view kMosaicSynonyms[] = {"pixelate", "pixelize", "pixellate",
                                                "pixel",    "blocks",   "censor"};
constexpr EffectPreset kMosaicPresets[] = {
    {"pixelate",
     "The whole picture in blocks of 16 pixels.",
     {{"mosaic_x1", 0},
      {"mosaic_y1", 0},
      Percent("mosaic_x2", 100),
      Percent("mosaic_y2", 100),
      {"mosaic_step", 4}}},
    {"coarse",
     "The whole picture in blocks of 32 pixels.",
     {{"mosaic_x1", 0},
      {"mosaic_y1", 0},
      Percent("mosaic_x2", 100),
      Percent("mosaic_y2", 100),
      {"mosaic_step", 5}}},
    {"censor",
     "The middle in blocks of 16 pixels.",
     {Percent("mosaic_x1", 30),
      Percent("mosaic_y1", 30),
      Percent("mosaic_x2", 70),
      Percent("mosaic_y2", 70),
      {"mosaic_step", 4}}},
};
constexpr NeutralSettings kMosaicNeutral[] = {
    {{{"mosaic_step", 0, 1}}},
    {{{"mosaic_x1", 0, 0}, {"mosaic_x2", 0, 0}}},
    {{{"mosaic_y1", 0, 0}, {"mosaic_y2", 0, 0}}},
    {{{"mosaic_x1", 0, 0, PixelAxis::Width}}},
    {{{"mosaic_x2", 0, 0, PixelAxis::Width}}},
    {{{"mosaic_y1", 0, 0, PixelAxis::Height}}},
    {{{"mosaic_y2", 0, 0, PixelAxis::Height}}},
};
constexpr EffectInfo kMosaic = {
    .name = effectNameMosaic,
    .shortName = "mosaic",
    .kind = EffectKind::Look,
    .traits = kNeedsSettings,
    .title = "Mosaic",
    .help = "Covers a rectangle with blocks of one colour.",
    .properties = kMosaicProperties,
    .synonyms = kMosaicSynonyms,
    .presets = kMosaicPresets,
    .neutral = kMosaicNeutral,
    .note =
        "Blocks are powers of two: a step of 4 makes blocks of 16 pixels, whatever the size of the picture.",
};

// The texts registered for portrait and stroke read as 0; neither effect begins with it.
constexpr PropertyInfo kPortraitProperties[] = {
    {"portrait_fillcolor", "0xffffffff", kInt32, ValueKind::Colour, "Colour",
     "Colour of the frame; transparent black as long as it is not set.", "", 0, 0xFFFFFF, kNoNeutral,
     PixelAxis::None, ""},
    {"portrait_width", "0xffffffff", kInt32, ValueKind::Number, "Width",
     "Over how many pixels the frame fades into the picture; a sixteenth of it more is filled.", "px", 0,
     65535, 0, PixelAxis::Smaller, "200"},
};
constexpr std::string_view kPortraitSynonyms[] = {"vignette", "frame", "border", "passe-partout", "mat"};
constexpr EffectPreset kPortraitPresets[] = {
    {"vignette",
     "The picture sinks into black at its rim.",
     {{"portrait_fillcolor", 0x000000}, Percent("portrait_width", 30)}},
    {"white-frame",
     "A white frame with a soft rim.",
     {{"portrait_fillcolor", 0xFFFFFF}, Percent("portrait_width", 16)}},
    {"sepia-frame",
     "A brown one, as around an old photo.",
     {{"portrait_fillcolor", 0x5A3A1E}, Percent("portrait_width", 24)}},
};
constexpr NeutralSettings kPortraitNeutral[] = {
    {{{"portrait_width", 0, 0}}},
};
constexpr EffectInfo kPortrait = {
    .name = effectNamePortrait,
    .shortName = "portrait",
    .kind = EffectKind::Look,
    .traits = kPlain,
    .title = "Portrait",
    .help = "Frames the picture with a colour that fades into it.",
    .properties = kPortraitProperties,
    .synonyms = kPortraitSynonyms,
    .presets = kPortraitPresets,
    .neutral = kPortraitNeutral,
};

constexpr PropertyInfo kMirageProperties[] = {
    {"mirage_width", "10", kInt32, ValueKind::Number, "Enlargement",
     "Half percents by which the copy is larger than the picture.", "/200", 0, 1000, 0},
    {"mirage_alpha", "10", kInt32, ValueKind::Number, "Share of the copy",
     "From 0, a fifth of the picture, to 100, seven tenths.", "%", 0, 100},
};
constexpr std::string_view kMirageSynonyms[] = {"double-vision", "double-exposure", "dream", "dreamy",
                                                "ghosting"};
constexpr EffectPreset kMiragePresets[] = {
    {"shimmer", "A faint copy, hardly larger.", {{"mirage_width", 16}, {"mirage_alpha", 60}}},
    {"double-vision", "A copy as strong as the picture.", {{"mirage_width", 40}, {"mirage_alpha", 60}}},
    {"apparition", "A far larger copy over the picture.", {{"mirage_width", 200}, {"mirage_alpha", 70}}},
};
constexpr NeutralSettings kMirageNeutral[] = {
    {{{"mirage_width", 0, 0}}},
};
constexpr EffectInfo kMirage = {
    .name = effectNameMirage,
    .shortName = "mirage",
    .kind = EffectKind::Look,
    .traits = kMovesPixels,
    .title = "Mirage",
    .help = "Blends the picture with an enlarged copy of itself.",
    .properties = kMirageProperties,
    .synonyms = kMirageSynonyms,
    .presets = kMiragePresets,
    .neutral = kMirageNeutral,
};

constexpr PropertyInfo kStrokeProperties[] = {
    {"stroke_pressure", "0x20", kInt32, ValueKind::Number, "Pressure",
     "How faint an edge may be to be drawn: 100 draws every difference, 50 those of more than 50.", "", -410,
     100, kNoNeutral, PixelAxis::None, "68"},
};
constexpr std::string_view kStrokeSynonyms[] = {"sketch", "pencil", "drawing", "line-art", "outline", "ink"};
constexpr EffectPreset kStrokePresets[] = {
    {"pencil", "Clear edges in fine lines.", {{"stroke_pressure", 68}}},
    {"charcoal", "Every faint edge in heavy strokes.", {{"stroke_pressure", 90}}},
    {"outline", "The strongest edges alone.", {{"stroke_pressure", 0}}},
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
    .synonyms = kStrokeSynonyms,
    .presets = kStrokePresets,
};

constexpr PropertyInfo kPopStyleProperties[] = {
    {"popstyle_threshold", "0", kInt32, ValueKind::Number, "Threshold",
     "What is brighter takes the colour; green counts as brightness.", "", 0, 255, kNoNeutral,
     PixelAxis::None, "128"},
    {"popstyle_color", "0", kInt32, ValueKind::Colour, "Colour", "What bright parts become.", "", 0, 0xFFFFFF,
     kNoNeutral, PixelAxis::None, "16756689"},
};
constexpr std::string_view kPopStyleSynonyms[] = {"pop-art",  "poster", "posterize", "threshold",
                                                  "two-tone", "warhol", "stencil"};
constexpr EffectPreset kPopStylePresets[] = {
    {"pink", "Pink and black.", {{"popstyle_threshold", 128}, {"popstyle_color", 0xFFAFD1}}},
    {"lemon", "Yellow and black.", {{"popstyle_threshold", 100}, {"popstyle_color", 0xFFE02E}}},
    {"ice", "Light blue and black.", {{"popstyle_threshold", 80}, {"popstyle_color", 0x8FE3FF}}},
    {"stencil", "White and black.", {{"popstyle_threshold", 110}, {"popstyle_color", 0xFFFFFF}}},
};
constexpr EffectInfo kPopStyle = {
    .name = effectNamePopStyle,
    .shortName = "pop-style",
    .kind = EffectKind::Look,
    .traits = kPlain,
    .title = "Pop style",
    .help = "Makes a poster of one colour and black.",
    .properties = kPopStyleProperties,
    .synonyms = kPopStyleSynonyms,
    .presets = kPopStylePresets,
};

constexpr PropertyInfo kEdgeLightProperties[] = {
    {"edgelight_level", "3", kInt32, ValueKind::Number, "Gain",
     "What steepness is multiplied by. Behind 255 comes 0 again, and levels below 0 count down from 256. "
     "From "
     "-90 to 90 it costs least.",
     "", -255, 255},
};
constexpr std::string_view kEdgeLightSynonyms[] = {"edge-detection", "edges", "find-edges", "neon",
                                                   "sobel",          "glow",  "contour"};
constexpr EffectPreset kEdgeLightPresets[] = {
    {"fine", "Thin and dark lines.", {{"edgelight_level", 2}}},
    {"neon", "Bright lines.", {{"edgelight_level", 4}}},
    {"electric", "Glaring lines that break into colours.", {{"edgelight_level", 8}}},
};
constexpr EffectInfo kEdgeLight = {
    .name = effectNameEdgeLight,
    .shortName = "edge-light",
    .kind = EffectKind::Look,
    .traits = kPlain,
    .title = "Edge light",
    .help = "Lights the edges and darkens everything else.",
    .properties = kEdgeLightProperties,
    .synonyms = kEdgeLightSynonyms,
    .presets = kEdgeLightPresets,
    .note = "What grows beyond 255 begins again at 0, so that strong edges turn dark within.",
};

constexpr PropertyInfo kVideoWallProperties[] = {
    {"videowall_horiTiles", "3", kDouble, ValueKind::Number, "Columns",
     "Tiles side by side; the last one may be cut.", "", 1, 1000, 1},
    {"videowall_verTiles", "3", kDouble, ValueKind::Number, "Rows",
     "Tiles on top of each other; the last one may be cut.", "", 1, 1000, 1},
};
constexpr std::string_view kVideoWallSynonyms[] = {"tile",        "tiles",  "grid",    "split-screen",
                                                   "multi-image", "repeat", "multiply"};
constexpr EffectPreset kVideoWallPresets[] = {
    {"two-by-two", "Four pictures.", {{"videowall_horiTiles", 2}, {"videowall_verTiles", 2}}},
    {"four-by-four", "Sixteen pictures.", {{"videowall_horiTiles", 4}, {"videowall_verTiles", 4}}},
    {"strip", "Three side by side.", {{"videowall_horiTiles", 3}, {"videowall_verTiles", 1}}},
};
constexpr NeutralSettings kVideoWallNeutral[] = {
    {{{"videowall_horiTiles", 1, 1}, {"videowall_verTiles", 1, 1}}},
};
constexpr EffectInfo kVideoWall = {
    .name = effectNameVideoWall,
    .shortName = "video-wall",
    .kind = EffectKind::Look,
    .traits = kMovesPixels,
    .title = "Video wall",
    .help = "Repeats the picture, made smaller, over a grid of tiles.",
    .properties = kVideoWallProperties,
    .synonyms = kVideoWallSynonyms,
    .presets = kVideoWallPresets,
    .neutral = kVideoWallNeutral,
};

constexpr PropertyInfo kSpotlightProperties[] = {
    {"spotlight_x", "250", kInt32, ValueKind::Number, "X",
     "Column of its centre; one right of the picture turns the effect off.", "px", 0, 65535, kNoNeutral,
     PixelAxis::Width},
    {"spotlight_y", "250", kInt32, ValueKind::Number, "Y",
     "Row of its centre; one below the picture turns the effect off.", "px", 0, 65535, kNoNeutral,
     PixelAxis::Height},
    {"spotlight_r", "250", kInt32, ValueKind::Number, "Radius",
     "Radius of the disc, three quarters of which are its soft rim.", "px", 2, 65535, kNoNeutral,
     PixelAxis::Smaller, "200"},
    {"spotlight_brightness", "250", kInt32, ValueKind::Number, "Brightness",
     "What is added to the samples, 100 is white.", "%", -100, 100, 0, PixelAxis::None, "50"},
    {"spotlight_color", "250", kInt32, ValueKind::Colour, "Colour", "What the disc is mixed with.", "", 0,
     0xFFFFFF, kNoNeutral, PixelAxis::None, "16777215"},
    {"spotlight_density", "250", kInt32, ValueKind::Number, "Density",
     "Share of the colour. Colours of planar pictures take it several times "
     "over.",
     "%", 0, 100, 0, PixelAxis::None, "40"},
};
constexpr std::string_view kSpotlightSynonyms[] = {"spot", "light", "lamp", "highlight", "flashlight"};
constexpr EffectPreset kSpotlightPresets[] = {
    {"stage",
     "A white light on the middle.",
     {Percent("spotlight_x", 50),
      Percent("spotlight_y", 50),
      Percent("spotlight_r", 45),
      {"spotlight_brightness", 25},
      {"spotlight_color", 0xFFFFFF},
      {"spotlight_density", 15}}},
    {"amber",
     "A warm lamp.",
     {Percent("spotlight_x", 50),
      Percent("spotlight_y", 50),
      Percent("spotlight_r", 45),
      {"spotlight_brightness", 15},
      {"spotlight_color", 0xFFB040},
      {"spotlight_density", 30}}},
    {"moon",
     "A cold and faint light.",
     {Percent("spotlight_x", 50),
      Percent("spotlight_y", 50),
      Percent("spotlight_r", 50),
      {"spotlight_brightness", 8},
      {"spotlight_color", 0x9FC8FF},
      {"spotlight_density", 30}}},
    {"shade",
     "A dark disc.",
     {Percent("spotlight_x", 50),
      Percent("spotlight_y", 50),
      Percent("spotlight_r", 40),
      {"spotlight_brightness", -30},
      {"spotlight_color", 0x000000},
      {"spotlight_density", 30}}},
};
constexpr NeutralSettings kSpotlightNeutral[] = {
    {{{"spotlight_brightness", 0, 0}, {"spotlight_density", 0, 0}}},
    {{{"spotlight_x", 0, 0, PixelAxis::Width}}},
    {{{"spotlight_y", 0, 0, PixelAxis::Height}}},
};
constexpr EffectInfo kSpotlight = {
    .name = effectNameSpotlight,
    .shortName = "spotlight",
    .kind = EffectKind::Look,
    .traits = kPlain,
    .title = "Spotlight",
    .help = "Lights a disc with a soft rim.",
    .properties = kSpotlightProperties,
    .synonyms = kSpotlightSynonyms,
    .presets = kSpotlightPresets,
    .neutral = kSpotlightNeutral,
    .note = "It lights a disc and leaves the rest as it is: put brightness-contrast:brightness=-30% in front "
            "of it for darkness around it.",
};

constexpr PropertyInfo kRadiateProperties[] = {
    {"radiate_x", "300", kInt32, ValueKind::Number, "X", "Column of the centre.", "px", 0, 65535, kNoNeutral,
     PixelAxis::Width},
    {"radiate_y", "300", kInt32, ValueKind::Number, "Y", "Row of the centre.", "px", 0, 65535, kNoNeutral,
     PixelAxis::Height},
    {"radiate_level", "300", kInt32, ValueKind::Number, "Length",
     "How long the rays are; an eighth of it is added to the samples besides.", "", 0, 2047},
};
constexpr std::string_view kRadiateSynonyms[] = {"zoom-blur",  "radial-blur", "god-rays",
                                                 "light-rays", "sunburst",    "speed"};
constexpr EffectPreset kRadiatePresets[] = {
    {"zoom",
     "The look of zooming in while the shutter is open.",
     {Percent("radiate_x", 50), Percent("radiate_y", 50), {"radiate_level", 120}}},
    {"rays",
     "Rays of light from the middle.",
     {Percent("radiate_x", 50), Percent("radiate_y", 50), {"radiate_level", 300}}},
    {"burst",
     "A burst of light.",
     {Percent("radiate_x", 50), Percent("radiate_y", 50), {"radiate_level", 600}}},
    {"sun",
     "Rays of light from above.",
     {Percent("radiate_x", 50), Percent("radiate_y", 0), {"radiate_level", 300}}},
};
constexpr EffectInfo kRadiate = {
    .name = effectNameRadiate,
    .shortName = "radiate",
    .kind = EffectKind::Look,
    .traits = kMovesPixels,
    .title = "Radiate",
    .help = "Draws rays of light from a centre.",
    .properties = kRadiateProperties,
    .synonyms = kRadiateSynonyms,
    .presets = kRadiatePresets,
    .note = "The picture becomes brighter by a sixteenth and an eighth of the length, so that long rays turn "
            "white.",
};

constexpr PropertyInfo kOilPaintingProperties[] = {
    {"oilpainting_brushsize", "3", kInt32, ValueKind::Number, "Brush size",
     "Radius of the square that a pixel's colour is found in.", "px", 0, 65535, kNoNeutral,
     PixelAxis::Smaller},
    {"oilpainting_coarseness", "3", kInt32, ValueKind::Number, "Coarseness",
     "Levels of brightness that are told apart: the fewer, the larger the patches.", "", 0, 256, kNoNeutral,
     PixelAxis::None, "50"},
};
constexpr std::string_view kOilPaintingSynonyms[] = {"oil",        "painting",    "paint",
                                                     "watercolor", "watercolour", "artistic"};
constexpr EffectPreset kOilPaintingPresets[] = {
    {"fine-brush", "A fine brush.", {Percent("oilpainting_brushsize", 0.6), {"oilpainting_coarseness", 30}}},
    {"broad-brush",
     "A broad brush.",
     {Percent("oilpainting_brushsize", 1.2), {"oilpainting_coarseness", 20}}},
    {"flat",
     "Few colours in large patches.",
     {Percent("oilpainting_brushsize", 1.2), {"oilpainting_coarseness", 8}}},
};
constexpr EffectInfo kOilPainting = {
    .name = effectNameOilPainting,
    .shortName = "oil-painting",
    .kind = EffectKind::Look,
    .traits = kPlain,
    .title = "Oil painting",
    .help = "Gives every pixel the mean colour of the most frequent brightness around it.",
    .properties = kOilPaintingProperties,
    .synonyms = kOilPaintingSynonyms,
    .presets = kOilPaintingPresets,
    .note = "The time it takes grows with the square of the brush. Packed pictures (bgra) become transparent "
            "where the output can be.",
};

} // namespace catalogue

} // namespace AVBased
