#pragma once
/// What an effect's settings are at each moment of a clip. Whoever feeds a processor asks for them and sets
/// what has changed; processors know nothing of it.
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/settings/effect_settings.h"

namespace aveffect {

/// One setting at times.
class SettingAtTime {
public:
    /// Keyframes' times refer to the span. Effect and property outlive it. Throws Error (Usage) as MomentsOf.
    SettingAtTime(const AVBased::EffectInfo& effect, const AVBased::PropertyInfo& property,
                  const PropertySetting& setting, const TimeSpan& span);

    const AVBased::PropertyInfo& Property() const { return *m_property; }
    bool Moves() const { return !m_moments.empty(); }
    bool NeedsPictureSize() const;

    /// Works percentages out. Throws Error (Usage) as PixelsOfPercentage.
    void FitTo(unsigned width, unsigned height);

    /// Of numbers, those counted in percent of the picture once it is known.
    double NumberAt(double ms) const;
    /// The plug-in's text: whole numbers are rounded to nearest, colours moved in linear light.
    std::string TextAt(double ms) const;

private:
    struct Value {
        std::string text;
        std::optional<double> percentage;
    };

    void MakeCurves();
    std::string ColourAt(double ms) const;

    const AVBased::EffectInfo* m_effect;
    const AVBased::PropertyInfo* m_property;
    std::vector<Value> m_values; ///< one for each keyframe, or the only one
    std::vector<int64_t> m_moments;
    std::optional<Keyframes> m_keyframes;
    double m_number = 0;         ///< of one that does not move
    std::vector<Curve> m_curves; ///< of a number one, of a colour three: red, green, blue
};

/// A shape in percent of the picture; places may lie outside of it.
struct AreaShape {
    enum class Kind { Rectangle, Ellipse } kind = Kind::Rectangle;
    double left = 0, top = 0, width = 0, height = 0; ///< of its bounding box

    bool operator==(const AreaShape&) const = default;
};

/// "rectangle,x,y,w,h" or "ellipse,x,y,w,h", or keyframes of such.
class AreaAtTime {
public:
    /// Throws Error (Usage) as MomentsOf.
    AreaAtTime(const PropertySetting& setting, const TimeSpan& span);
    AreaShape At(double ms) const;
    bool Moves() const { return !m_curves.empty(); }

private:
    AreaShape m_first;
    std::vector<Curve> m_curves; ///< left, top, width, height
};

/// Throws Error (Usage) for a shape of wrong form. For keyframes, of each of them.
void CheckArea(const AVBased::EffectInfo& effect, const PropertySetting& setting);

/// All settings of one effect. Moments are milliseconds in the clip.
class SettingsAtTime {
public:
    /// Throws Error (Usage) for times that don't fit the clip or each other.
    SettingsAtTime(const EffectSpec& effect, const TimeSpan& clip);

    /// The part of the clip that the effect lasts, on which its own time and "duration" are based.
    const TimeSpan& Span() const { return m_span; }
    /// How long that is; absent when the clip does not tell its length.
    std::optional<int64_t> LengthMs() const;

    /// Whether any property moves.
    bool Move() const;
    bool NeedPictureSize() const;
    /// Works percentages out; before anything else is asked for where that is needed. Throws Error (Usage).
    void FitTo(unsigned width, unsigned height);

    /// Whether the effect lasts at that moment. Without @from and @to it does before and behind the clip,
    /// too.
    bool Cover(double ms) const;
    /// Whether it lasts from its span's begin on, and to its span's end, by its own word.
    bool Begins() const { return m_begins; }
    bool Ends() const { return m_ends; }
    /// How strongly it works, 0 to 1: its mix, and its rise and fall. 0 where it does not last.
    double StrengthAt(double ms) const;
    /// Whether the strength can be other than 1 while it lasts.
    bool StrengthMatters() const;

    /// The effect's own properties, in the order in which they are to be set.
    const std::vector<SettingAtTime>& Properties() const { return m_properties; }

    const std::optional<AreaAtTime>& Area() const { return m_area; }
    /// Empty where there is none.
    const std::string& Mask() const { return m_mask; }
    bool MaskInverted() const { return m_maskInverted; }
    /// In pixels.
    double FeatherAt(double ms) const { return m_feather ? m_feather->NumberAt(ms) : 0; }

private:
    void TakeSpan(const AVBased::EffectInfo& info, const EffectSpec& effect, const TimeSpan& clip);
    void TakeReach(const AVBased::EffectInfo& info, const EffectSpec& effect);

    TimeSpan m_span;
    bool m_begins = false, m_ends = false; ///< by its own word
    int64_t m_fadeInMs = 0, m_fadeOutMs = 0;
    std::vector<SettingAtTime> m_properties;
    std::optional<SettingAtTime> m_mix, m_feather;
    std::optional<AreaAtTime> m_area;
    std::string m_mask;
    bool m_maskInverted = false;
};

} // namespace aveffect
