#pragma once
/// Settings as the host has them, written as people write effects.
#include <cstdint>
#include <string>

#include <framework/mlt.h>

#include "aveffect/effect_info.h"

namespace aveffect::mlt {

inline constexpr char kPreset[] = "preset";

/// What lengths in pixels of the film are multiplied by, where pictures are drawn in another size: editors
/// show small ones.
struct Scale {
    double across = 1, down = 1;
};

/// "NAME[/PRESET][:property=value...]" of an effect's properties that are set, those that move as they are at
/// a position of so many. What is wrong in it is found by who reads it.
std::string EffectText(const AVBased::EffectInfo& effect, mlt_properties properties, int position, int length,
                       const Scale& scale = {});

/// The same for a picture's sound, which begins and ends at these milliseconds of the filter: what moves goes
/// evenly from what it is at the picture to what it is at the next one.
std::string SoundText(const AVBased::EffectInfo& effect, mlt_properties properties, int position, int length,
                      int64_t beginMs, int64_t endMs);

} // namespace aveffect::mlt
