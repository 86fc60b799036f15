#pragma once
/// What the catalogue says of an effect and of its properties.
///
/// Ranges and neutral values inform people and programs; the plug-in parses and stores any value.
#include <cstddef>
#include <iterator>
#include <limits>
#include <optional>
#include <span>
#include <string_view>

namespace AVBased {

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
    /// What the effect works with until the property is set, where the default text does not say it: empty
    /// where no value of the property does.
    const char* start = nullptr;
    std::span<const PropertyChoice> choices = {};

    /// The text whose value is in force at first; null when no text says it.
    constexpr const char* InForceAtFirst() const {
        if (!start) return defaultText;
        return *start ? start : nullptr;
    }
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
    kNeedsSettings = 1u << 5, ///< changes nothing until properties are set
    kMovesPixels = 1u << 6,   ///< moves pixels across the picture, or brings others in
    kPreparesOnce =
        1u << 7, ///< with kKeepsState: keeps what settings and the first frame's size and format say
};

/// What frames of one size and format have to do with each other, which tells how a host may share them among
/// processors of the same settings.
enum class FrameOrder {
    Any,        ///< nothing: any processor may have any frame
    AfterFirst, ///< processors that have had a frame, whichever, may have any other; the first one after a
                ///< property is set may come out otherwise than later ones
    InOrder,    ///< one processor has them all, one after the other
};

static constexpr FrameOrder OrderOf(const unsigned traits) {
    if (traits & kDrawsRandom) return FrameOrder::InOrder;
    if (!(traits & kKeepsState)) return FrameOrder::Any;
    return traits & kPreparesOnce ? FrameOrder::AfterFirst : FrameOrder::InOrder;
}

/// A property's value among settings that have a name of their own.
struct PresetSetting {
    const char* property = nullptr; ///< null behind the last one
    /// What a number is set to (1 and 0 for a switch, 0xRRGGBB for a colour), or a percentage of the side of
    /// the picture that the property counts pixels of.
    double value = 0;
    bool percentage = false;
};

static constexpr PresetSetting Percent(const char* property, double percentage) {
    return {property, percentage, true};
}

/// Settings of an effect with a name of their own.
struct EffectPreset {
    std::string_view name; ///< lower case, words joined by dashes
    std::string_view help;
    PresetSetting slots[8]; ///< in the order in which they are made

    constexpr std::span<const PresetSetting> Settings() const {
        size_t count = 0;
        while (count < std::size(slots) && slots[count].property) ++count;
        return {slots, count};
    }
};

/// What a property's value has to be for the effect to change nothing: within bounds, both included, or
/// beyond the picture: larger than so many times one of its sides. A text's value is its length.
struct NeutralCondition {
    const char* property = nullptr; ///< null behind the last one
    double least = 0;
    double most = 0;
    PixelAxis beyond = PixelAxis::None;
    double sides = 1;
};

/// The largest numbers below 1 and below 0.
constexpr double kBelowOne = 1 - std::numeric_limits<double>::epsilon() / 2;
constexpr double kBelowZero = -std::numeric_limits<double>::denorm_min();

/// Why effects have no presets.
constexpr std::string_view kOneLook = "It has one look and nothing to set.";
constexpr std::string_view kTimesAlone =
    "It has one look; the pictures and times come from what is rendered.";

/// Settings with which the effect changes nothing when all conditions hold.
struct NeutralSettings {
    NeutralCondition conditions[3];
};

struct EffectInfo {
    const char* name;           ///< by which the factories are asked
    std::string_view shortName; ///< for people: lower case, words joined by dashes; no other effect has it
    EffectKind kind;
    unsigned traits; ///< EffectTraits
    std::string_view title;
    std::string_view help;
    std::span<const PropertyInfo> properties = {};   ///< besides "duration", in the order of registration
    std::span<const std::string_view> synonyms = {}; ///< other words that people look for it by
    std::span<const EffectPreset> presets = {};
    std::string_view noPresets = {};               ///< why there are none
    std::span<const NeutralSettings> neutral = {}; ///< each of them makes it change nothing
    std::string_view note = {};                    ///< what surprises people; empty when nothing does
};

constexpr PropertyInfo kDurationProperty = {
    PROP_NAME_DURATION, "1", kInt32, ValueKind::Number, "Duration", "Length of the effect's span.", "ms", 0,
    2147483647};

/// The property of that name ("duration" included), null when the effect has none.
static constexpr const PropertyInfo* FindProperty(const EffectInfo& effect, std::string_view name) {
    if (name == kDurationProperty.name) return &kDurationProperty;
    for (const PropertyInfo& property : effect.properties)
        if (name == property.name) return &property;
    return nullptr;
}

/// The length of a side in pixels. There is none before a picture is known.
static constexpr double SideLength(PixelAxis axis, unsigned width, unsigned height) {
    if (axis == PixelAxis::Width) return width;
    if (axis == PixelAxis::Height) return height;
    return width < height ? width : height;
}

/// Whether the effect changes nothing with the values that the callable tells: std::optional<double> of a
/// const PropertyInfo&, absent where nothing is known. Of pictures of that size; 0 by 0 when it is not known.
template <typename ValueOf>
constexpr bool ChangesNothing(const EffectInfo& effect, ValueOf valueOf, unsigned width, unsigned height) {
    const auto holds = [&](const NeutralCondition& condition) {
        const std::optional<double> value = valueOf(*FindProperty(effect, condition.property));
        if (!value) return false;
        if (condition.beyond == PixelAxis::None) return *value >= condition.least && *value <= condition.most;
        const double side = SideLength(condition.beyond, width, height);
        return side > 0 && *value > condition.sides * side;
    };
    for (const NeutralSettings& settings : effect.neutral) {
        bool all = true;
        for (const NeutralCondition& condition : settings.conditions)
            all = all && (!condition.property || holds(condition));
        if (all) return true;
    }
    return false;
}

} // namespace AVBased
