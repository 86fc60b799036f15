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
constexpr std::string_view kGaussBlurSynonyms[] = {"gaussian", "soften", "smooth", "defocus", "unsharp"};
constexpr EffectPreset kGaussBlurPresets[] = {
    {"soft", "A little softer, as through a silk.", {{"blur_count", 4}}},
    {"strong", "Details are gone, shapes stay.", {{"blur_count", 16}}},
    {"veiled", "Far out of focus, and darker.", {{"blur_count", 60}}},
};
constexpr NeutralSettings kGaussBlurNeutral[] = {
    {{{"blur_count", 0, 0}}},
};
constexpr EffectInfo kGaussBlur = {
    .name = effectNameSimpleGaussBlur,
    .shortName = "blur",
    .kind = EffectKind::Filter,
    .traits = kPlain,
    .title = "Gauss blur",
    .help = "Softens the picture with a 1-2-1 kernel, alpha included.",
    .properties = kBlurProperties,
    .synonyms = kGaussBlurSynonyms,
    .presets = kGaussBlurPresets,
    .neutral = kGaussBlurNeutral,
    .note =
        "Every pass cuts off fractions, so that many of them darken the picture: by about half a level each.",
};

constexpr PropertyInfo kSharpenProperties[] = {
    {"sharpen_count", "1", kInt32, ValueKind::Number, "Passes", "How often the picture is sharpened.", "", 0,
     65535, 0},
};
constexpr std::string_view kLaplacianSharpenSynonyms[] = {"clarity", "crisp", "sharpness", "unsharp-mask"};
constexpr EffectPreset kLaplacianSharpenPresets[] = {
    {"crisp", "Edges and grain stand out.", {{"sharpen_count", 1}}},
    {"etched", "Edges turn black and white, as if cut in metal.", {{"sharpen_count", 2}}},
};
constexpr NeutralSettings kLaplacianSharpenNeutral[] = {
    {{{"sharpen_count", 0, 0}}},
};
constexpr EffectInfo kLaplacianSharpen = {
    .name = effectNameSimpleLaplacianSharpen,
    .shortName = "sharpen",
    .kind = EffectKind::Filter,
    .traits = kPlain,
    .title = "Laplacian sharpen",
    .help = "Brings out edges: nine times each sample less its eight neighbours.",
    .properties = kSharpenProperties,
    .synonyms = kLaplacianSharpenSynonyms,
    .presets = kLaplacianSharpenPresets,
    .neutral = kLaplacianSharpenNeutral,
    .note = "One pass is strong already: it shows the noise and the blocks of a compressed clip.",
};

constexpr std::string_view kGraySynonyms[] = {"grayscale",       "greyscale",  "grey",
                                              "black-and-white", "monochrome", "desaturate"};
constexpr EffectInfo kGray = {
    .name = effectNameGray,
    .shortName = "gray",
    .kind = EffectKind::Filter,
    .traits = kPlain,
    .title = "Gray",
    .help = "Takes the colours away.",
    .synonyms = kGraySynonyms,
    .noPresets = kOneLook,
};

constexpr std::string_view kFlipColorSynonyms[] = {"swap-colors", "swap-channels", "channel-swap",
                                                   "false-color"};
constexpr EffectInfo kFlipColor = {
    .name = effectNameFlipColor,
    .shortName = "flip-color",
    .kind = EffectKind::Filter,
    .traits = kPlain,
    .title = "Flip colour",
    .help = "Swaps blue with red, or the two chroma planes.",
    .synonyms = kFlipColorSynonyms,
    .noPresets = kOneLook,
};

constexpr std::string_view kInvertSynonyms[] = {"negative", "inverse", "negate"};
constexpr EffectInfo kInvert = {
    .name = effectNameInvert,
    .shortName = "invert",
    .kind = EffectKind::Filter,
    .traits = kPlain,
    .title = "Invert",
    .help = "Turns the picture into its negative.",
    .synonyms = kInvertSynonyms,
    .noPresets = kOneLook,
};

constexpr std::string_view kAgedFilmSynonyms[] = {"sepia",     "vintage",   "old-film",
                                                  "old-photo", "nostalgia", "retro"};
constexpr EffectInfo kAgedFilm = {
    .name = effectNameAgedFilm,
    .shortName = "aged-film",
    .kind = EffectKind::Filter,
    .traits = kPlain,
    .title = "Aged film",
    .help = "Tints the picture like old film.",
    .synonyms = kAgedFilmSynonyms,
    .noPresets = kOneLook,
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
constexpr std::string_view kBrightnessContrastSynonyms[] = {
    "brightness", "contrast", "saturation", "vibrance", "exposure", "levels", "color-correction", "eq"};
constexpr EffectPreset kBrightnessContrastPresets[] = {
    {"punchy", "More contrast and stronger colours.", {{"contrast", 20}, {"saturation", -40}}},
    {"vivid", "Much stronger colours.", {{"contrast", 5}, {"saturation", -30}}},
    {"faded",
     "Little contrast and pale colours, as of an old print.",
     {{"brightness", 8}, {"contrast", -30}, {"saturation", -70}}},
    {"moody",
     "Darker, with more contrast and less colour.",
     {{"brightness", -12}, {"contrast", 15}, {"saturation", -65}}},
};
constexpr NeutralSettings kBrightnessContrastNeutral[] = {
    {{{"brightness", 0, 0}, {"contrast", 0, 0}, {"saturation", 0, 0}}},
};
constexpr EffectInfo kBrightnessContrast = {
    .name = effectNameBrightnessContrast,
    .shortName = "brightness-contrast",
    .kind = EffectKind::Filter,
    .traits = kNeedsSettings,
    .title = "Brightness and contrast",
    .help = "Adjusts brightness, contrast and saturation.",
    .properties = kBrightnessContrastProperties,
    .synonyms = kBrightnessContrastSynonyms,
    .presets = kBrightnessContrastPresets,
    .neutral = kBrightnessContrastNeutral,
    .note = "Saturation has a scale of its own: the colours are multiplied by (saturation + 100) / 50, so "
            "-50 keeps them, -100 takes them away and 100 makes them fourfold; only exactly 0 leaves them "
            "alone, and what is next to it doubles them.",
};

constexpr PropertyInfo kEmbossProperties[] = {
    {"emboss_level", "0", kInt32, ValueKind::Number, "Strength",
     "Gain of the difference to the sample above; 0 is flat grey.", "", -255, 255},
};
constexpr std::string_view kEmbossSynonyms[] = {"bas-relief", "metal", "bump"};
constexpr EffectPreset kEmbossPresets[] = {
    {"soft", "A shallow relief in grey.", {{"emboss_level", 1}}},
    {"deep", "A deep relief in grey.", {{"emboss_level", 3}}},
    {"engraved", "Carved in instead of raised.", {{"emboss_level", -2}}},
};
constexpr EffectInfo kEmboss = {
    .name = effectNameEmboss,
    .shortName = "emboss",
    .kind = EffectKind::Filter,
    .traits = kPlain,
    .title = "Emboss",
    .help = "Grey relief of each sample against the one above.",
    .properties = kEmbossProperties,
    .synonyms = kEmbossSynonyms,
    .presets = kEmbossPresets,
    .note = "Without a level everything but the first row becomes flat grey.",
};

constexpr PropertyInfo kTransparencyProperties[] = {
    {"transparency_scale", "0", kInt32, ValueKind::Number, "Opacity",
     "Share of the opacity that stays; 0 leaves the picture alone. Set it last: whatever is set after it "
     "scales it anew.",
     "%", 0, 100, 0},
};
constexpr std::string_view kTransparencySynonyms[] = {"opacity", "alpha", "translucent"};
constexpr EffectPreset kTransparencyPresets[] = {
    {"light", "A quarter of the opacity goes.", {{"transparency_scale", 75}}},
    {"half", "Half of the opacity goes.", {{"transparency_scale", 50}}},
    {"ghost", "Only a quarter of the opacity stays.", {{"transparency_scale", 25}}},
};
constexpr NeutralSettings kTransparencyNeutral[] = {
    {{{"transparency_scale", 0, 0}}},
    {{{"transparency_scale", 100, 100}}},
};
constexpr EffectInfo kTransparency = {
    .name = effectNameTransparency,
    .shortName = "transparency",
    .kind = EffectKind::Filter,
    .traits = kChangesAlpha | kNeedsSettings,
    .title = "Transparency",
    .help = "Scales the opacity.",
    .properties = kTransparencyProperties,
    .synonyms = kTransparencySynonyms,
    .presets = kTransparencyPresets,
    .neutral = kTransparencyNeutral,
    .note = "0 does not make the picture invisible: it turns the effect off.",
};

constexpr PropertyInfo kColorFilterProperties[] = {
    {"filter_scope", "0", kInt32, ValueKind::Number, "Scope",
     "How far a sample may lie from the colour's. Packed colours are compared as one number 0xRRGGBB, so red "
     "counts most.",
     "", 0, 255},
    {"filter_color", "0", kInt32, ValueKind::Colour, "Colour", "What becomes transparent.", "", 0, 0xFFFFFF},
};
constexpr std::string_view kColorFilterSynonyms[] = {"chroma-key",  "chromakey",    "colorkey",
                                                     "color-key",   "green-screen", "greenscreen",
                                                     "blue-screen", "keying"};
constexpr EffectPreset kColorFilterPresets[] = {
    {"green-screen",
     "The green of a studio wall becomes transparent.",
     {{"filter_color", 0x00B140}, {"filter_scope", 48}}},
    {"blue-screen",
     "The blue of a studio wall becomes transparent.",
     {{"filter_color", 0x0047BB}, {"filter_scope", 48}}},
    {"black",
     "What is nearly black becomes transparent.",
     {{"filter_color", 0x000000}, {"filter_scope", 48}}},
    {"white",
     "What is nearly white becomes transparent.",
     {{"filter_color", 0xFFFFFF}, {"filter_scope", 48}}},
};
constexpr EffectInfo kColorFilter = {
    .name = effectNameColorFilter,
    .shortName = "color-filter",
    .kind = EffectKind::Filter,
    .traits = kChangesAlpha,
    .title = "Colour filter",
    .help = "Makes a colour transparent.",
    .properties = kColorFilterProperties,
    .synonyms = kColorFilterSynonyms,
    .presets = kColorFilterPresets,
    .note = "Packed pictures (bgra) are compared as one number in which red counts most; yuva420p and "
            "yuva444p compare brightness and both colours each, which suits screens better.",
};

constexpr std::string_view kDilateSynonyms[] = {"expand", "maximum", "grow"};
constexpr EffectInfo kDilate = {
    .name = effectNameDilate,
    .shortName = "dilate",
    .kind = EffectKind::Filter,
    .traits = kPlain,
    .title = "Dilate",
    .help = "Spreads what is bright by two samples to the right and downwards.",
    .synonyms = kDilateSynonyms,
    .noPresets = kOneLook,
};

constexpr std::string_view kErodeSynonyms[] = {"shrink", "minimum", "thin"};
constexpr EffectInfo kErode = {
    .name = effectNameErode,
    .shortName = "erode",
    .kind = EffectKind::Filter,
    .traits = kPlain,
    .title = "Erode",
    .help = "Spreads what is dark by two samples to the left and upwards.",
    .synonyms = kErodeSynonyms,
    .noPresets = kOneLook,
};

constexpr PropertyInfo kReliefProperties[] = {
    {"relief_angle", "40", kInt32, ValueKind::Number, "Light",
     "Where the light comes from: 0 the right, 90 above, 180 the left.", "degrees", -360, 360},
};
constexpr std::string_view kReliefSynonyms[] = {"bump-map", "sculpt", "lighting"};
constexpr EffectPreset kReliefPresets[] = {
    {"light-from-right", "Lit from the right.", {{"relief_angle", 0}}},
    {"light-from-above", "Lit from above.", {{"relief_angle", 90}}},
    {"light-from-left", "Lit from the left.", {{"relief_angle", 180}}},
    {"light-from-below", "Lit from below.", {{"relief_angle", -90}}},
};
constexpr EffectInfo kRelief = {
    .name = effectNameRelief,
    .shortName = "relief",
    .kind = EffectKind::Filter,
    .traits = kPlain,
    .title = "Relief",
    .help = "Lights the picture from a side, so that it looks raised.",
    .properties = kReliefProperties,
    .synonyms = kReliefSynonyms,
    .presets = kReliefPresets,
};

constexpr PropertyInfo kAddNoiseProperties[] = {
    {"addnoise_level", "2", kInt32, ValueKind::Number, "Level",
     "Grain is a 31-bit random number shifted right by 12 less the level. Only levels of -8 and below give "
     "visible grain; above, nearly every sample turns white.",
     "", -19, 12, kNoNeutral, PixelAxis::None, "4"},
};
constexpr std::string_view kAddNoiseSynonyms[] = {"grain", "film-grain", "noise", "static", "snow"};
constexpr EffectPreset kAddNoisePresets[] = {
    {"fine", "Fine grain on a very bright picture.", {{"addnoise_level", -14}}},
    {"coarse", "Coarse grain on a very bright picture.", {{"addnoise_level", -12}}},
    {"snow", "The picture is nearly lost in snow.", {{"addnoise_level", -11}}},
};
constexpr EffectInfo kAddNoise = {
    .name = effectNameAddNoise,
    .shortName = "noise",
    .kind = EffectKind::Filter,
    .traits = kKeepsState | kDrawsRandom,
    .title = "Noise",
    .help = "Adds grain that is the same on every frame, with a gain of its own.",
    .properties = kAddNoiseProperties,
    .synonyms = kAddNoiseSynonyms,
    .presets = kAddNoisePresets,
    .note = "Samples are multiplied by 1.7 to 2.7 besides, the more the lower the level: put "
            "brightness-contrast:brightness=-25% in front of it to keep the brightness.",
};

} // namespace catalogue

} // namespace AVBased
