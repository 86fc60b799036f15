#pragma once
/// Effects as people write them.
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "aveffect/effect_info.h"
#include "host/settings/keyframes.h"

namespace aveffect {

/// What a property is to be set to: one of the three.
struct PropertySetting {
    std::string name;
    std::string value;                     ///< in the plug-in's own text form
    std::optional<double> percentage = {}; ///< of the side of the picture that the catalogue names
    std::optional<Keyframes> keyframes = {};

    bool operator==(const PropertySetting&) const = default;
};

/// What an effect works on.
enum class Medium { Video, Audio };

/// One effect with its settings, in the order in which they are made.
struct EffectSpec {
    std::string name; ///< or short name
    std::vector<PropertySetting> properties;
    std::vector<PropertySetting> reach = {}; ///< when, where and how strongly it works (reach.h)

    bool operator==(const EffectSpec&) const = default;
};

/// Parses "NAME[/PRESET][:property=value[:property=value...]]", the name being a long or a short one.
/// Settings that are written take the place of the preset's. "\:" stands for a colon and "\\" for a backslash
/// in a value; a colon before a digit is the value's, as in times. Values are translated to the plug-in's
/// form by the catalogue: colours from #RRGGBB, 0xRRGGBB or a number, switches from on/off, choices from
/// their names; numbers are checked for form and range, but what a percentage comes to is checked when the
/// pictures' size is known. A value of the form TIME=VALUE[;TIME=VALUE...] moves (keyframes.h); its times are
/// checked when the clip is known. Properties that begin with "@" say when, where and how strongly the effect
/// works (reach.h). Lenient hands every value of the effect's own properties on as it is, percentages and
/// keyframes too. Throws Error (Usage) that names the effect, property and value, and says what would be
/// right (the nearest name, the range), and for an effect of the other medium.
EffectSpec ParseEffect(const std::string& text, bool lenient, Medium medium = Medium::Video);

/// An effect's text taken apart: nothing is checked or translated but for the escapes, which are undone.
struct EffectWording {
    std::string name, preset; ///< without one, empty
    std::vector<std::pair<std::string, std::string>> settings;

    /// What ParseEffect() takes, if it took the text that was taken apart.
    std::string Text() const;
};
EffectWording SplitEffect(const std::string& text);

/// Source URLs of the files that an effect reads: those of its own properties, and its mask.
std::vector<std::string> FilesOf(const EffectSpec& effect);

} // namespace aveffect
