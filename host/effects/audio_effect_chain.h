#pragma once
/// What chains of audio effects are like.
#include <vector>

#include "host/settings/effect_settings.h"

extern "C" {
#include <libavutil/samplefmt.h>
}

namespace aveffect {

/// Whether a chain brings sound of its own, so that it needs none and has no end.
bool BringsSound(const std::vector<EffectSpec>& effects);

/// Whether anything is heard of the sound that it is given: not where an effect brings another one in its
/// place, all the time and in full strength.
bool HearsClip(const std::vector<EffectSpec>& effects);

/// The sample format, interleaved, that such a chain works in for sound that is decoded to that format:
/// signed 16 bits where an effect takes nothing else, otherwise what loses nothing.
AVSampleFormat SoundFormatFor(const std::vector<EffectSpec>& effects, AVSampleFormat decoded);

} // namespace aveffect
