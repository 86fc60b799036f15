#pragma once
/// When, where and how strongly an effect works: settings that every effect has.
#include <span>

#include "aveffect/effect_info.h"

namespace aveffect {

namespace reach {

inline constexpr char kFrom[] = "@from";
inline constexpr char kTo[] = "@to";
inline constexpr char kFadeIn[] = "@fade-in";
inline constexpr char kFadeOut[] = "@fade-out";
inline constexpr char kMix[] = "@mix";
inline constexpr char kMask[] = "@mask";
inline constexpr char kMaskInvert[] = "@mask-invert";
inline constexpr char kMaskFeather[] = "@mask-feather";
inline constexpr char kArea[] = "@area";

} // namespace reach

/// In the form of properties. Those of sound are the first ones.
std::span<const AVBased::PropertyInfo> ReachProperties(bool sound);

} // namespace aveffect
