#pragma once
/// Filters: effects that change every sample by itself or with its neighbours.
#include "aveffect/effect_info.h"

namespace AVBased {

constexpr char effectNameSimpleGaussBlur[] = "simple_gauss_blur";
constexpr char effectNameSimpleLaplacianSharpen[] = "simple_laplacian_sharpen";
constexpr char effectNameGray[] = "gray";
constexpr char effectNameFlipColor[] = "flip_color";
constexpr char effectNameInvert[] = "invert";
constexpr char effectNameAgedFilm[] = "aged_film";
constexpr char effectNameBrightnessContrast[] = "brightness_contrast";
constexpr char effectNameEmboss[] = "emboss";
constexpr char effectNameTransparency[] = "transparency";
constexpr char effectNameColorFilter[] = "colorfilter";
constexpr char effectNameDilate[] = "dilate";
constexpr char effectNameErode[] = "erode";
constexpr char effectNameRelief[] = "relief";
constexpr char effectNameAddNoise[] = "addnoise";

namespace catalogue {

constexpr PropertyInfo kBlurProperties[] = {
    {"blur_count", "1", kInt32, ValueKind::Number, "Passes",
     "How often the picture is blurred; each pass spreads it further.", "", 0, 65535, 0},
};
constexpr EffectInfo kGaussBlur = {
    .name = effectNameSimpleGaussBlur,
    .shortName = "blur",
    .kind = EffectKind::Filter,
    .traits = kPlain,
    .title = "Gauss blur",
    .help = "Softens the picture with a 1-2-1 kernel, alpha included.",
    .properties = kBlurProperties,
};

constexpr PropertyInfo kSharpenProperties[] = {
    {"sharpen_count", "1", kInt32, ValueKind::Number, "Passes", "How often the picture is sharpened.", "", 0,
     65535, 0},
};
constexpr EffectInfo kLaplacianSharpen = {
    .name = effectNameSimpleLaplacianSharpen,
    .shortName = "sharpen",
    .kind = EffectKind::Filter,
    .traits = kPlain,
    .title = "Laplacian sharpen",
    .help = "Brings out edges: nine times each sample less its eight neighbours.",
    .properties = kSharpenProperties,
};

constexpr EffectInfo kGray = {
    .name = effectNameGray,
    .shortName = "gray",
    .kind = EffectKind::Filter,
    .traits = kPlain,
    .title = "Gray",
    .help = "Takes the colours away.",
};

constexpr EffectInfo kFlipColor = {
    .name = effectNameFlipColor,
    .shortName = "flip-color",
    .kind = EffectKind::Filter,
    .traits = kPlain,
    .title = "Flip colour",
    .help = "Swaps blue with red, or the two chroma planes.",
};

constexpr EffectInfo kInvert = {
    .name = effectNameInvert,
    .shortName = "invert",
    .kind = EffectKind::Filter,
    .traits = kPlain,
    .title = "Invert",
    .help = "Turns the picture into its negative.",
};

constexpr EffectInfo kAgedFilm = {
    .name = effectNameAgedFilm,
    .shortName = "aged-film",
    .kind = EffectKind::Filter,
    .traits = kPlain,
    .title = "Aged film",
    .help = "Tints the picture like old film.",
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
constexpr EffectInfo kBrightnessContrast = {
    .name = effectNameBrightnessContrast,
    .shortName = "brightness-contrast",
    .kind = EffectKind::Filter,
    .traits = kNeedsSettings,
    .title = "Brightness and contrast",
    .help = "Adjusts brightness, contrast and saturation.",
    .properties = kBrightnessContrastProperties,
};

constexpr PropertyInfo kEmbossProperties[] = {
    {"emboss_level", "0", kInt32, ValueKind::Number, "Strength",
     "Gain of the difference to the sample above; 0 is flat grey.", "", -255, 255},
};
constexpr EffectInfo kEmboss = {
    .name = effectNameEmboss,
    .shortName = "emboss",
    .kind = EffectKind::Filter,
    .traits = kPlain,
    .title = "Emboss",
    .help = "Grey relief of each sample against the one above.",
    .properties = kEmbossProperties,
};

constexpr PropertyInfo kTransparencyProperties[] = {
    {"transparency_scale", "0", kInt32, ValueKind::Number, "Opacity",
     "Share of the opacity that stays; 0 leaves the picture alone. Set it last: whatever is set after it "
     "scales it anew.",
     "%", 0, 100, 0},
};
constexpr EffectInfo kTransparency = {
    .name = effectNameTransparency,
    .shortName = "transparency",
    .kind = EffectKind::Filter,
    .traits = kChangesAlpha | kNeedsSettings,
    .title = "Transparency",
    .help = "Scales the opacity.",
    .properties = kTransparencyProperties,
};

constexpr PropertyInfo kColorFilterProperties[] = {
    {"filter_scope", "0", kInt32, ValueKind::Number, "Scope",
     "How far a sample may lie from the colour's. Packed colours are compared as one number 0xRRGGBB, so red "
     "counts most.",
     "", 0, 255},
    {"filter_color", "0", kInt32, ValueKind::Colour, "Colour", "What becomes transparent.", "", 0, 0xFFFFFF},
};
constexpr EffectInfo kColorFilter = {
    .name = effectNameColorFilter,
    .shortName = "color-filter",
    .kind = EffectKind::Filter,
    .traits = kChangesAlpha,
    .title = "Colour filter",
    .help = "Makes a colour transparent.",
    .properties = kColorFilterProperties,
};

constexpr EffectInfo kDilate = {
    .name = effectNameDilate,
    .shortName = "dilate",
    .kind = EffectKind::Filter,
    .traits = kPlain,
    .title = "Dilate",
    .help = "Spreads what is bright by two samples to the right and downwards.",
};

constexpr EffectInfo kErode = {
    .name = effectNameErode,
    .shortName = "erode",
    .kind = EffectKind::Filter,
    .traits = kPlain,
    .title = "Erode",
    .help = "Spreads what is dark by two samples to the left and upwards.",
};

constexpr PropertyInfo kReliefProperties[] = {
    {"relief_angle", "40", kInt32, ValueKind::Number, "Light",
     "Where the light comes from: 0 the right, 90 above, 180 the left.", "degrees", -360, 360},
};
constexpr EffectInfo kRelief = {
    .name = effectNameRelief,
    .shortName = "relief",
    .kind = EffectKind::Filter,
    .traits = kPlain,
    .title = "Relief",
    .help = "Lights the picture from a side, so that it looks raised.",
    .properties = kReliefProperties,
};

constexpr PropertyInfo kAddNoiseProperties[] = {
    {"addnoise_level", "2", kInt32, ValueKind::Number, "Level",
     "Grain is a 31-bit random number shifted right by 12 less the level. Only levels of -8 and below give "
     "visible grain; above, nearly every sample turns white.",
     "", -19, 12, kNoNeutral, PixelAxis::None, "4"},
};
constexpr EffectInfo kAddNoise = {
    .name = effectNameAddNoise,
    .shortName = "noise",
    .kind = EffectKind::Filter,
    .traits = kKeepsState | kDrawsRandom,
    .title = "Noise",
    .help = "Adds grain that is the same on every frame, with a gain of its own.",
    .properties = kAddNoiseProperties,
};

} // namespace catalogue

} // namespace AVBased
