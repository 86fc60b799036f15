#pragma once
/// The catalogue for people: what `list` and `describe` print.
#include <string>
#include <string_view>

#include "aveffect/effect_info.h"

namespace aveffect {

/// In the order in which listings show them.
inline constexpr AVBased::EffectKind kEffectKinds[] = {
    AVBased::EffectKind::Filter, AVBased::EffectKind::Fade,       AVBased::EffectKind::Distortion,
    AVBased::EffectKind::Look,   AVBased::EffectKind::Transition, AVBased::EffectKind::Stereo,
    AVBased::EffectKind::Audio};

/// Names of the catalogue's codes, in lower case, as texts and JSON show them.
std::string_view KindName(AVBased::EffectKind kind);
std::string_view ValueKindName(AVBased::ValueKind kind);
std::string_view TypeName(AVBased::PropertyType type);

/// "Filters".
std::string_view KindHeading(AVBased::EffectKind kind);

/// What the traits mean, as the rest of a sentence that begins with "The effect".
std::string TraitsText(unsigned traits);

/// "a number from -10 to 10; default 0; neutral 0; type double"
std::string PropertyDetails(const AVBased::PropertyInfo& property);

/// Whether the effect is one of the video effects.
bool IsVideoEffect(const AVBased::EffectInfo& effect);

/// All effects by kind, a line each.
std::string ListText();

/// One effect with its properties and an example of its use.
std::string DescribeText(const AVBased::EffectInfo& effect);

/// The effect with some settings, as the option -e takes it.
std::string ExampleSetting(const AVBased::EffectInfo& effect);

/// A command that applies it.
std::string ExampleCommand(const AVBased::EffectInfo& effect);

} // namespace aveffect
