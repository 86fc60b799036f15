#pragma once
/// The one description of every effect and its properties, for the plug-in and for hosts alike: the factory's
/// order, the registered properties, listings, manuals and adapters come from it.
///
/// Everything here has internal linkage: each source unit that uses a name or a table has its own copy.
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
    double neutral = kNoNeutral; ///< the value with which the property changes nothing
    bool countsPixels = false;   ///< a length or position in the picture
    std::span<const PropertyChoice> choices = {};
};

enum class EffectKind { Filter, Fade, Distortion, Look, Transition, Stereo, Audio };

/// What a host should know before it shares work between threads or skips frames.
enum EffectTraits : unsigned {
    kPlain = 0,
    kFollowsTime = 1u << 0, ///< depends on the frame's time in the span
    kKeepsState = 1u << 1,  ///< a frame can depend on the frames before it
    kDrawsRandom = 1u << 2, ///< uses the C library's random generator
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
        kBrightnessContrastProperties)

#define AVEFFECT_AUDIO_EFFECTS(ROW)

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
