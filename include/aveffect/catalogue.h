#pragma once
/// The one description of every effect and its properties, for the plug-in and for hosts alike: the factory's
/// order, the registered properties, listings, manuals and adapters come from it.
///
/// Everything here but the names of quarter turns and transitions has internal linkage: each source unit that
/// uses a name or a table has its own copy.
///
/// Ranges and neutral values inform people and programs; the plug-in parses and stores any value.
#include <array>
#include <limits>
#include <span>
#include <string_view>

namespace AVBased {

// Effect names, by which the factories are asked.
constexpr char effectNameSimpleGaussBlur[] = "simple_gauss_blur";
constexpr char effectNameSimpleLaplacianSharpen[] = "simple_laplacian_sharpen";
constexpr char effectNameGray[] = "gray";
constexpr char effectNameFlipColor[] = "flip_color";
constexpr char effectNameInvert[] = "invert";
constexpr char effectNameAgedFilm[] = "aged_film";
constexpr char effectNameBrightnessContrast[] = "brightness_contrast";
constexpr char effectNameFadeIn[] = "fadein";
constexpr char effectNameFadeOut[] = "fadeout";
constexpr char effectNameDirectFadeIn[] = "directfadein";
constexpr char effectNameDirectFadeOut[] = "directfadeout";
constexpr char effectNameReverse[] = "reverse";
constexpr char effectNameSpherize[] = "spherize";
constexpr char effectNameMagnifier[] = "magnifier";
constexpr char effectNameRotate[] = "rotate";
constexpr char effectNameTensile[] = "tensile";
constexpr char effectNameEmboss[] = "emboss";
constexpr char effectNameMosaic[] = "mosaic";
constexpr char effectNamePortrait[] = "portrait";
constexpr char effectNameMirage[] = "mirage";
constexpr char effectNameStroke[] = "stroke";
constexpr char effectNameTransparency[] = "transparency";
constexpr char effectNameColorFilter[] = "colorfilter";
constexpr char effectNameAtomize[] = "atomize";
constexpr char effectNamePopStyle[] = "popstyle";
constexpr char effectNameDilate[] = "dilate";
constexpr char effectNameErode[] = "erode";
constexpr char effectNameEdgeLight[] = "edgelight";
constexpr char effectNameRelief[] = "relief";
constexpr char effectNameVideoWall[] = "videowall";
constexpr char effectNameAddNoise[] = "addnoise";
constexpr char effectNameSpotlight[] = "spotlight";
constexpr char effectNameRadiate[] = "radiate";
constexpr char effectNameTileReflect[] = "tilereflect";
constexpr char effectNameMirrorInvert[] = "mirrorinvert";
constexpr char effectNameOilPainting[] = "oilpainting";
constexpr char effectNameAudioReplace[] = "audio_replace";
constexpr char effectNameAudioFader[] = "audio_fader";
constexpr char effectNameAudioVolume[] = "audio_volume";
// Global pointers, unlike the others.
inline constexpr const char* effectNameMkClock = "EffectNameMkClock";
inline constexpr const char* effectNameMkTurn = "EffectNameMkTurn";
inline constexpr const char* effectNameMkFade = "EffectNameMkFade";
inline constexpr const char* effectNameMkCloseDoor = "EffectNameMkCloseDoor";
inline constexpr const char* effectNameMkRoll = "EffectNameMkRoll";
inline constexpr const char* effectNameMkBrokenBox = "EffectNameMkBrokenBox";
inline constexpr const char* effectNameMkShutter = "EffectNameMkShutter";
inline constexpr const char* effectNameMkLeftRightMove = "EffectNameMkLeftRightMove";
inline constexpr const char* effectName3DRenderEffect = "EffectName3DRenderEffect";
inline constexpr const char* effectNameRotate90X = "EffectNameRotate90X";
// What all transitions share; no factory makes it.
inline constexpr const char* effectNameMkBaseTransition = "EffectNameMkBaseTransition";

/// The property that every processor has: the length of the effect's span, in the unit of the frames' times.
constexpr char PROP_NAME_DURATION[] = "duration";

/// Interface names that processors answer.
constexpr char IVideoProcName[] = "IVideoProc";
constexpr char IAudioProcName[] = "IAudioProc";

/// Type codes of properties, as IAVProc::GetProperty reports them.
enum PropertyType : int { kText = 0, kDouble = 1, kInt64 = 2, kInt32 = 3, kInt16 = 4 };

/// How people write a property's value.
enum class ValueKind {
    Number, ///< a number in the property's range
    Switch, ///< on or off, stored as 1 or 0
    Choice, ///< one of the listed choices
    Colour, ///< 0xRRGGBB, stored as a decimal number
    Path,   ///< a media file
    Text,
};

/// The side of the picture that a length or position counted in pixels is a share of: hosts that let people
/// give it in percent work the pixels out with it once they know the picture's size.
enum class PixelAxis {
    None,    ///< the property does not count pixels
    Width,   ///< a horizontal length or position
    Height,  ///< a vertical length or position
    Smaller, ///< a radius or other length without direction: the smaller of width and height
};

/// One of the values that a property of kind Choice can have.
struct PropertyChoice {
    int value;
    std::string_view name;
    std::string_view help;
};

/// No neutral value: nothing makes this property do nothing.
constexpr double kNoNeutral = std::numeric_limits<double>::quiet_NaN();

struct PropertyInfo {
    const char* name;
    const char* defaultText; ///< the text registered at first
    PropertyType type;
    ValueKind kind;
    std::string_view title;
    std::string_view help;
    std::string_view unit; ///< empty for a plain number
    double minimum;        ///< meaningful range, both ends included
    double maximum;
    double neutral = kNoNeutral;        ///< the value with which the property changes nothing
    PixelAxis pixels = PixelAxis::None; ///< whether it counts pixels, and of what a percentage is taken
    std::span<const PropertyChoice> choices = {};
};

enum class EffectKind { Filter, Fade, Distortion, Look, Transition, Stereo, Audio };

/// What a host should know before it shares work between threads or skips frames.
enum EffectTraits : unsigned {
    kPlain = 0,
    kFollowsTime = 1u << 0,  ///< depends on the frame's time in the span
    kKeepsState = 1u << 1,   ///< a frame can depend on the frames before it
    kDrawsRandom = 1u << 2,  ///< uses the C library's random generator
    kChangesAlpha = 1u << 3, ///< changes alpha alone: pictures without it, or shown without it, stay the same
    kFewFormats = 1u << 4,   ///< serves BGRA and YUV420P only
};

struct EffectInfo {
    const char* name;
    EffectKind kind;
    unsigned traits; ///< EffectTraits
    std::string_view title;
    std::string_view help;
    std::span<const PropertyInfo> properties; ///< besides "duration", in the order of registration
};

constexpr PropertyInfo kDurationProperty = {
    PROP_NAME_DURATION, "1", kInt32, ValueKind::Number, "Duration", "Length of the effect's span.", "ms", 0,
    2147483647};

constexpr PropertyInfo kBlurProperties[] = {
    {"blur_count", "1", kInt32, ValueKind::Number, "Passes",
     "How often the picture is blurred; each pass spreads it further.", "", 0, 65535, 0},
};
constexpr PropertyInfo kSharpenProperties[] = {
    {"sharpen_count", "1", kInt32, ValueKind::Number, "Passes", "How often the picture is sharpened.", "", 0,
     65535, 0},
};
constexpr PropertyInfo kBrightnessContrastProperties[] = {
    {"brightness", "0", kDouble, ValueKind::Number, "Brightness", "Added to every sample.", "%", -100, 100,
     0},
    {"contrast", "0", kDouble, ValueKind::Number, "Contrast", "Spreads the samples about the middle grey.",
     "%", -100, 100, 0},
    {"saturation", "0", kDouble, ValueKind::Number, "Saturation",
     "Gain of the colours: -100 none, -50 as they are, 100 fourfold. Exactly 0 leaves them alone.", "%", -100,
     100, 0},
};

constexpr PropertyInfo kAlphaFadeProperties[] = {
    {"FadeMin", "0", kInt32, ValueKind::Number, "Lowest level", "No frame's level falls below this.", "/256",
     0, 256},
    {"FadeMax", "255", kInt32, ValueKind::Number, "Highest level",
     "No frame's level rises above this; 256 is fully opaque.", "/256", 0, 256},
};
constexpr PropertyInfo kDirectFadeInProperties[] = {
    {"fadein_min", "0", kInt32, ValueKind::Number, "Lowest level", "The level does not fall below this.",
     "/256", 0, 256},
    {"fadein_color", "0", kInt32, ValueKind::Colour, "Colour", "What the picture is mixed with.", "", 0,
     0xFFFFFF},
    {"fadein_max", "256", kInt32, ValueKind::Number, "Highest level",
     "The level does not rise above this; 256 is the picture alone.", "/256", 0, 256},
};
constexpr PropertyInfo kDirectFadeOutProperties[] = {
    {"fadeout_min", "0", kInt32, ValueKind::Number, "Lowest level", "The level does not fall below this.",
     "/256", 0, 256},
    {"fadeout_color", "0", kInt32, ValueKind::Colour, "Colour", "What the picture fades to.", "", 0,
     0xFFFFFF},
    {"fadeout_max", "256", kInt32, ValueKind::Number, "Highest level",
     "The level does not rise above this; 256 is the picture alone.", "/256", 0, 256},
};

constexpr PropertyInfo kReverseProperties[] = {
    {"mirror", "0", kInt32, ValueKind::Switch, "Mirror", "Exchanges left and right.", "", 0, 1, 0},
    {"vertical", "0", kInt32, ValueKind::Switch, "Flip", "Exchanges top and bottom.", "", 0, 1, 0},
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
constexpr PropertyInfo kAtomizeProperties[] = {
    {"atomize_ishorizontal", "0", kInt32, ValueKind::Switch, "Horizontal", "Scatters along the rows.", "", 0,
     1, 0},
    {"atomize_isvertical", "0", kInt32, ValueKind::Switch, "Vertical", "Scatters along the columns.", "", 0,
     1, 0},
    {"atomize_level", "0", kInt32, ValueKind::Number, "Distance",
     "Samples come from less than this far; 0 and 1 change nothing.", "px", 0, 65535, 0, PixelAxis::Smaller},
};
constexpr PropertyInfo kEmbossProperties[] = {
    {"emboss_level", "0", kInt32, ValueKind::Number, "Strength",
     "Gain of the difference to the sample above; 0 is flat grey.", "", -255, 255},
};
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
constexpr PropertyInfo kMirageProperties[] = {
    {"mirage_width", "10", kInt32, ValueKind::Number, "Enlargement",
     "Half percents by which the copy is larger than the picture.", "/200", 0, 1000},
    {"mirage_alpha", "10", kInt32, ValueKind::Number, "Share of the copy",
     "From 0, a fifth of the picture, to 100, seven tenths.", "%", 0, 100},
};
constexpr PropertyInfo kTransparencyProperties[] = {
    {"transparency_scale", "0", kInt32, ValueKind::Number, "Opacity",
     "Share of the opacity that stays; 0 leaves the picture alone. Set it last: whatever is set after it "
     "scales it anew.",
     "%", 0, 100, 0},
};
constexpr PropertyInfo kColorFilterProperties[] = {
    {"filter_scope", "0", kInt32, ValueKind::Number, "Scope",
     "How far a sample may lie from the colour's. Packed colours are compared as one number 0xRRGGBB, so red "
     "counts most.",
     "", 0, 255},
    {"filter_color", "0", kInt32, ValueKind::Colour, "Colour", "What becomes transparent.", "", 0, 0xFFFFFF},
};
constexpr PropertyInfo kReliefProperties[] = {
    {"relief_angle", "40", kInt32, ValueKind::Number, "Light",
     "Where the light comes from: 0 the right, 90 above, 180 the left.", "degrees", -360, 360},
};
constexpr PropertyInfo kAddNoiseProperties[] = {
    {"addnoise_level", "2", kInt32, ValueKind::Number, "Level",
     "Grain is a 31-bit random number shifted right by 12 less the level. Only levels of -8 and below give "
     "visible grain; above, nearly every sample turns white.",
     "", -19, 12},
};

constexpr PropertyInfo kPopStyleProperties[] = {
    {"popstyle_threshold", "0", kInt32, ValueKind::Number, "Threshold",
     "What is brighter takes the colour; green counts as brightness. 128 until it is set.", "", 0, 255},
    {"popstyle_color", "0", kInt32, ValueKind::Colour, "Colour",
     "What bright parts become; 0xFFAFD1 until it is set.", "", 0, 0xFFFFFF},
};
constexpr PropertyInfo kVideoWallProperties[] = {
    {"videowall_horiTiles", "3", kDouble, ValueKind::Number, "Columns",
     "Tiles side by side; the last one may be cut.", "", 1, 1000, 1},
    {"videowall_verTiles", "3", kDouble, ValueKind::Number, "Rows",
     "Tiles on top of each other; the last one may be cut.", "", 1, 1000, 1},
};
constexpr PropertyInfo kTileReflectProperties[] = {
    {"tilereflect_angle", "30", kInt32, ValueKind::Number, "Angle",
     "Direction of the grid of tiles; a direction of its own until it is set.", "degrees", -180, 180},
    {"tilereflect_size", "30", kInt32, ValueKind::Number, "Tile size",
     "Width and height of a tile; larger than every picture until it is set.", "px", 1, 46080, kNoNeutral,
     PixelAxis::Smaller},
    {"tilereflect_curvature", "30", kInt32, ValueKind::Number, "Curvature",
     "How strongly a tile bends the picture, growing with the square; 8 until it is set.", "", 0, 100},
};
constexpr PropertyInfo kMirrorInvertProperties[] = {
    {"mirrorinvert_amount", "100", kInt32, ValueKind::Number, "Amount",
     "Area of the circle that stays in place, of the largest one in the picture.", "%", -1000, 1000},
};
constexpr PropertyInfo kEdgeLightProperties[] = {
    {"edgelight_level", "3", kInt32, ValueKind::Number, "Gain",
     "What steepness is multiplied by. Behind 255 comes 0 again, and levels below 0 count down from 256. "
     "From "
     "-90 to 90 it costs least.",
     "", -255, 255},
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
     65535, kNoNeutral, PixelAxis::Smaller},
    {"spotlight_brightness", "250", kInt32, ValueKind::Number, "Brightness",
     "What is added to the samples, 100 is white; 50 as long as it is not set.", "%", -100, 100, 0},
    {"spotlight_color", "250", kInt32, ValueKind::Colour, "Colour",
     "What the disc is mixed with; white as long as it is not set.", "", 0, 0xFFFFFF},
    {"spotlight_density", "250", kInt32, ValueKind::Number, "Density",
     "Share of the colour; 40 as long as it is not set. Colours of planar pictures take it several times "
     "over.",
     "%", 0, 100, 0},
};
constexpr PropertyInfo kRadiateProperties[] = {
    {"radiate_x", "300", kInt32, ValueKind::Number, "X", "Column of the centre.", "px", 0, 65535, kNoNeutral,
     PixelAxis::Width},
    {"radiate_y", "300", kInt32, ValueKind::Number, "Y", "Row of the centre.", "px", 0, 65535, kNoNeutral,
     PixelAxis::Height},
    {"radiate_level", "300", kInt32, ValueKind::Number, "Length",
     "How long the rays are; an eighth of it is added to the samples besides.", "", 0, 2047},
};
// The texts registered for portrait and stroke read as 0; neither effect begins with it.
constexpr PropertyInfo kPortraitProperties[] = {
    {"portrait_fillcolor", "0xffffffff", kInt32, ValueKind::Colour, "Colour",
     "Colour of the frame; black, and transparent, until it is set.", "", 0, 0xFFFFFF},
    {"portrait_width", "0xffffffff", kInt32, ValueKind::Number, "Width",
     "Over how many pixels the frame fades into the picture; a sixteenth of it more is filled. 200 until it "
     "is set.",
     "px", 0, 65535, 0, PixelAxis::Smaller},
};
constexpr PropertyInfo kStrokeProperties[] = {
    {"stroke_pressure", "0x20", kInt32, ValueKind::Number, "Pressure",
     "How faint an edge may be to be drawn: 100 draws every difference, 50 those of more than 50. 68 until "
     "it "
     "is set.",
     "", -410, 100},
};
constexpr PropertyInfo kOilPaintingProperties[] = {
    {"oilpainting_brushsize", "3", kInt32, ValueKind::Number, "Brush size",
     "Radius of the square that a pixel's colour is found in.", "px", 0, 65535, kNoNeutral,
     PixelAxis::Smaller},
    {"oilpainting_coarseness", "3", kInt32, ValueKind::Number, "Coarseness",
     "Levels of brightness that are told apart: the fewer, the larger the patches. 50 until it is set.", "",
     0, 256},
};
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
     kNoNeutral, PixelAxis::None, k3DModes},
    {"render_3d_swtich", "0", kInt32, ValueKind::Switch, "Exchange views",
     "Exchanges left and right. Once on, it stays on.", "", 0, 1},
};
constexpr PropertyInfo kAudioReplaceProperties[] = {
    {"audio_replace_loop", "0", kInt32, ValueKind::Switch, "Loop",
     "Begins again when the file has ended; else silence follows.", "", 0, 1},
    {"audio_replace_path", "", kText, ValueKind::Path, "File",
     "Whose sound is heard; set it before the first frame.", "", 0, 0},
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
constexpr PropertyInfo kAudioVolumeProperties[] = {
    {"audio_volume", "100", kInt32, ValueKind::Number, "Volume", "What every sample is multiplied by.", "%",
     0, 12799, 100},
};
constexpr PropertyChoice kQuarterTurns[] = {
    {0, "none", "The picture stays as it is."},
    {1, "clockwise", "A quarter turn clockwise."},
    {2, "half", "A half turn, which fills the frame."},
    {3, "anticlockwise", "A quarter turn anticlockwise."},
};
constexpr PropertyInfo kRotate90XProperties[] = {
    {"Rotate90XDerection", "0", kInt32, ValueKind::Choice, "Direction",
     "Quarter turns clockwise; other numbers count modulo 4.", "", 0, 3, 0, PixelAxis::None, kQuarterTurns},
};

constexpr PropertyInfo kTransitionProperties[] = {
    {"EffectPropSourceDur", "0", kInt32, ValueKind::Number, "End", "Time at which the transition ends.", "ms",
     0, 2147483647},
    {"EffectPropVFPath1", "", kText, ValueKind::Path, "From",
     "File of the picture that goes, read once. The path may end in ?vstreamid=N, which selects a stream.",
     "", 0, 0},
    {"EffectPropVFPath2", "", kText, ValueKind::Path, "To", "File of the picture that comes, read once.", "",
     0, 0},
    {"EffectPropStartTime", "", kInt32, ValueKind::Number, "Begin",
     "Time at which the transition begins; empty is 0.", "ms", 0, 2147483647},
};

// One row an effect, in the order in which the factory tests the names: the class that is made, then the
// fields of EffectInfo. A new effect adds its row here; its source unit says AVEFFECT_CONSTRUCT_VIDEO or
// AVEFFECT_CONSTRUCT_AUDIO.
#define AVEFFECT_VIDEO_EFFECTS(ROW)                                                                          \
    ROW(CSimpleGaussBlurEffect, effectNameSimpleGaussBlur, EffectKind::Filter, kPlain, "Gauss blur",         \
        "Softens the picture with a 1-2-1 kernel, alpha included.", kBlurProperties)                         \
    ROW(CSimpleLaplacianSharpenEffect, effectNameSimpleLaplacianSharpen, EffectKind::Filter, kPlain,         \
        "Laplacian sharpen", "Brings out edges: nine times each sample less its eight neighbours.",          \
        kSharpenProperties)                                                                                  \
    ROW(CGrayEffect, effectNameGray, EffectKind::Filter, kPlain, "Gray", "Takes the colours away.", {})      \
    ROW(CFlipColorEffect, effectNameFlipColor, EffectKind::Filter, kPlain, "Flip colour",                    \
        "Swaps blue with red, or the two chroma planes.", {})                                                \
    ROW(CInvertEffect, effectNameInvert, EffectKind::Filter, kPlain, "Invert",                               \
        "Turns the picture into its negative.", {})                                                          \
    ROW(CAgedFilmEffect, effectNameAgedFilm, EffectKind::Filter, kPlain, "Aged film",                        \
        "Tints the picture like old film.", {})                                                              \
    ROW(CBrightnessContrastEffect, effectNameBrightnessContrast, EffectKind::Filter, kPlain,                 \
        "Brightness and contrast", "Adjusts brightness, contrast and saturation.",                           \
        kBrightnessContrastProperties)                                                                       \
    ROW(CFadeInVideoImageEffect, effectNameFadeIn, EffectKind::Fade, kFollowsTime | kChangesAlpha,           \
        "Fade in", "Raises the opacity over the span.", kAlphaFadeProperties)                                \
    ROW(CFadeOutVideoImageEffect, effectNameFadeOut, EffectKind::Fade, kFollowsTime | kChangesAlpha,         \
        "Fade out", "Lowers the opacity over the span.", kAlphaFadeProperties)                               \
    ROW(CDirectFadeInEffect, effectNameDirectFadeIn, EffectKind::Fade, kFollowsTime,                         \
        "Fade in from a colour",                                                                             \
        "Mixes every frame of the span alike with a colour: at level 15360 / duration of 256.",              \
        kDirectFadeInProperties)                                                                             \
    ROW(CDirectFadeOutEffect, effectNameDirectFadeOut, EffectKind::Fade, kFollowsTime,                       \
        "Fade out to a colour", "Mixes the picture with a colour, more and more over the span.",             \
        kDirectFadeOutProperties)                                                                            \
    ROW(CReverseVideoImageEffect, effectNameReverse, EffectKind::Distortion, kPlain, "Reverse",              \
        "Mirrors the picture, flips it, or both; both leave the middle row and column of odd sizes alone.",  \
        kReverseProperties)                                                                                  \
    ROW(CSpherizeVideoImageEffect, effectNameSpherize, EffectKind::Distortion, kKeepsState, "Spherize",      \
        "Pulls the pixels of a circle in or out.", kSpherizeProperties)                                      \
    ROW(CMagnifierVideoImageEffect, effectNameMagnifier, EffectKind::Distortion, kPlain, "Magnifier",        \
        "Lays a magnifying glass on the picture.", kMagnifierProperties)                                     \
    ROW(CRotateVideoImageEffect, effectNameRotate, EffectKind::Distortion, kKeepsState, "Rotate",            \
        "Twists a circle of the picture.", kRotateProperties)                                                \
    ROW(CTensileVideoImageEffect, effectNameTensile, EffectKind::Distortion, kPlain, "Tensile",              \
        "Stretches a band of rows or columns and squeezes the rest.", kTensileProperties)                    \
    ROW(CEmbossVideoImageEffect, effectNameEmboss, EffectKind::Filter, kPlain, "Emboss",                     \
        "Grey relief of each sample against the one above.", kEmbossProperties)                              \
    ROW(CMosaicVideoImageEffect, effectNameMosaic, EffectKind::Look, kPlain, "Mosaic",                       \
        "Covers a rectangle with blocks of one colour.", kMosaicProperties)                                  \
    ROW(CPortraitVideoImageEffect, effectNamePortrait, EffectKind::Look, kPlain, "Portrait",                 \
        "Frames the picture with a colour that fades into it.", kPortraitProperties)                         \
    ROW(CMirageVideoImageEffect, effectNameMirage, EffectKind::Look, kPlain, "Mirage",                       \
        "Blends the picture with an enlarged copy of itself.", kMirageProperties)                            \
    ROW(CStrokeVideoImageEffect, effectNameStroke, EffectKind::Look, kPlain, "Pencil strokes",               \
        "Draws the picture's edges in black on white; planar pictures get a warm tint. YUV410P stays as it " \
        "is.",                                                                                               \
        kStrokeProperties)                                                                                   \
    ROW(CTransparencyAjustEffect, effectNameTransparency, EffectKind::Filter, kChangesAlpha, "Transparency", \
        "Scales the opacity.", kTransparencyProperties)                                                      \
    ROW(CColorFilterEffect, effectNameColorFilter, EffectKind::Filter, kChangesAlpha, "Colour filter",       \
        "Makes a colour transparent.", kColorFilterProperties)                                               \
    ROW(CAtomizeVideoImageEffect, effectNameAtomize, EffectKind::Distortion, kKeepsState | kDrawsRandom,     \
        "Atomize", "Scatters samples to the right and downwards.", kAtomizeProperties)                       \
    ROW(CPopStyleVideoImageEffect, effectNamePopStyle, EffectKind::Look, kPlain, "Pop style",                \
        "Makes a poster of one colour and black.", kPopStyleProperties)                                      \
    ROW(CDilateVideoImageEffect, effectNameDilate, EffectKind::Filter, kPlain, "Dilate",                     \
        "Spreads what is bright by two samples to the right and downwards.", {})                             \
    ROW(CErodeVideoImageEffect, effectNameErode, EffectKind::Filter, kPlain, "Erode",                        \
        "Spreads what is dark by two samples to the left and upwards.", {})                                  \
    ROW(CEdgeLightVideoImageEffect, effectNameEdgeLight, EffectKind::Look, kPlain, "Edge light",             \
        "Lights the edges and darkens everything else.", kEdgeLightProperties)                               \
    ROW(CReliefVideoImageEffect, effectNameRelief, EffectKind::Filter, kPlain, "Relief",                     \
        "Lights the picture from a side, so that it looks raised.", kReliefProperties)                       \
    ROW(CWallVideoImageEffect, effectNameVideoWall, EffectKind::Look, kPlain, "Video wall",                  \
        "Repeats the picture, made smaller, over a grid of tiles.", kVideoWallProperties)                    \
    ROW(CAddNoiseVideoImageEffect, effectNameAddNoise, EffectKind::Filter, kKeepsState | kDrawsRandom,       \
        "Noise", "Adds grain that is the same on every frame, with a gain of its own.", kAddNoiseProperties) \
    ROW(CSpotlightVideoImageEffect, effectNameSpotlight, EffectKind::Look, kPlain, "Spotlight",              \
        "Lights a disc with a soft rim.", kSpotlightProperties)                                              \
    ROW(CRadiateVideoImageEffect, effectNameRadiate, EffectKind::Look, kPlain, "Radiate",                    \
        "Draws rays of light from a centre.", kRadiateProperties)                                            \
    ROW(CTileReflectVideoImageEffect, effectNameTileReflect, EffectKind::Distortion, kKeepsState,            \
        "Tile reflection", "Shows the picture through a turned grid of lenses.", kTileReflectProperties)     \
    ROW(CMirrorInvertVideoImageEffect, effectNameMirrorInvert, EffectKind::Distortion, kKeepsState,          \
        "Mirror inversion", "Exchanges the inside of a circle about the middle with its outside.",           \
        kMirrorInvertProperties)                                                                             \
    ROW(COilPaintingVideoImageEffect, effectNameOilPainting, EffectKind::Look, kPlain, "Oil painting",       \
        "Gives every pixel the mean colour of the most frequent brightness around it.",                      \
        kOilPaintingProperties)                                                                              \
    ROW(CMkClockEffect, effectNameMkClock, EffectKind::Transition, kFollowsTime | kKeepsState, "Clock",      \
        "A clock's hand sweeps the second picture in, from twelve to twelve.", kTransitionProperties)        \
    ROW(CMkTurnEffect, effectNameMkTurn, EffectKind::Transition, kFollowsTime | kKeepsState, "Turn over",    \
        "The picture turns over about its middle row and shows the second one.", kTransitionProperties)      \
    ROW(CMkFadeEffect, effectNameMkFade, EffectKind::Transition, kFollowsTime | kKeepsState, "Cross-fade",   \
        "The second picture shows through the first more and more. Alpha stays the frame's.",                \
        kTransitionProperties)                                                                               \
    ROW(CMkCloseDoorEffect, effectNameMkCloseDoor, EffectKind::Transition, kFollowsTime | kKeepsState,       \
        "Close door", "The second picture closes in from both sides.", kTransitionProperties)                \
    ROW(CMkRollEffect, effectNameMkRoll, EffectKind::Transition, kFollowsTime | kKeepsState, "Roll",         \
        "The first picture is rolled up from the left and leaves a bright roll at the right.",               \
        kTransitionProperties)                                                                               \
    ROW(CMkBrokenBoxEffect, effectNameMkBrokenBox, EffectKind::Transition, kFollowsTime | kKeepsState,       \
        "Broken boxes", "Staggered boxes of the second picture shrink until it shows whole.",                \
        kTransitionProperties)                                                                               \
    ROW(CMkShutterEffect, effectNameMkShutter, EffectKind::Transition, kFollowsTime | kKeepsState,           \
        "Shutter", "Upright slats of the second picture close over the first.", kTransitionProperties)       \
    ROW(CMkLeftRightMoveEffect, effectNameMkLeftRightMove, EffectKind::Transition,                           \
        kFollowsTime | kKeepsState, "Push", "The second picture pushes the first one out to the left.",      \
        kTransitionProperties)                                                                               \
    ROW(CMK3DRenderEffect, effectName3DRenderEffect, EffectKind::Stereo, kKeepsState, "3D",                  \
        "Shows two views of a scene, made of one picture unless the frame has a second one, as one "         \
        "picture; "                                                                                          \
        "or makes one picture an anaglyph.",                                                                 \
        k3DRenderProperties)                                                                                 \
    ROW(CRotate90X, effectNameRotate90X, EffectKind::Distortion, kFewFormats, "Quarter turns",               \
        "Turns the picture; quarter turns are made smaller to fit the frame, with black around them. BGRA "  \
        "and YUV420P only.",                                                                                 \
        kRotate90XProperties)

#define AVEFFECT_AUDIO_EFFECTS(ROW)                                                                          \
    ROW(CAudioReplace, effectNameAudioReplace, EffectKind::Audio, kKeepsState, "Replace sound",              \
        "Lays another file's sound in place of the clip's.", kAudioReplaceProperties)                        \
    ROW(CAudioFaderEffect, effectNameAudioFader, EffectKind::Audio, kFollowsTime | kKeepsState,              \
        "Fade sound", "Raises or lowers the gain evenly over a stretch of time, up to 1.",                   \
        kAudioFaderProperties)                                                                               \
    ROW(CAudioVolume, effectNameAudioVolume, EffectKind::Audio, kPlain, "Volume",                            \
        "Makes signed 16-bit sound louder or softer.", kAudioVolumeProperties)

#define AVEFFECT_COUNT_ROW(...) +1
#define AVEFFECT_INFO_ROW(Class, ...) EffectInfo{__VA_ARGS__},

/// Every video effect, in the factory's order.
constexpr std::array<EffectInfo, 0 AVEFFECT_VIDEO_EFFECTS(AVEFFECT_COUNT_ROW)> kVideoEffects = {
    {AVEFFECT_VIDEO_EFFECTS(AVEFFECT_INFO_ROW)}};

/// Every audio effect, in the factory's order.
constexpr std::array<EffectInfo, 0 AVEFFECT_AUDIO_EFFECTS(AVEFFECT_COUNT_ROW)> kAudioEffects = {
    AVEFFECT_AUDIO_EFFECTS(AVEFFECT_INFO_ROW)};

#undef AVEFFECT_COUNT_ROW
#undef AVEFFECT_INFO_ROW

/// The effect of that name, null when there is none.
static constexpr const EffectInfo* FindEffect(std::string_view name) {
    for (const EffectInfo& effect : kVideoEffects)
        if (name == effect.name) return &effect;
    for (const EffectInfo& effect : kAudioEffects)
        if (name == effect.name) return &effect;
    return nullptr;
}

/// The property of that name ("duration" included), null when the effect has none.
static constexpr const PropertyInfo* FindProperty(const EffectInfo& effect, std::string_view name) {
    if (name == kDurationProperty.name) return &kDurationProperty;
    for (const PropertyInfo& property : effect.properties)
        if (name == property.name) return &property;
    return nullptr;
}

} // namespace AVBased
