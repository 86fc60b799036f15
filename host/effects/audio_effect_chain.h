#pragma once
/// Chains of audio processors.
#include <vector>

#include "host/effects/effect_chain.h"
#include "mediabridge/av_ptr.h"

namespace aveffect {

/// Whether a chain brings sound of its own, so that it needs none and has no end.
bool BringsSound(const std::vector<EffectSpec>& effects);

/// The sample format, interleaved, that such a chain works in for sound that is decoded to that format:
/// signed 16 bits where an effect takes nothing else, otherwise what loses nothing.
AVSampleFormat SoundFormatFor(const std::vector<EffectSpec>& effects, AVSampleFormat decoded);

/// Audio processors that sound passes in order. Used by one thread at a time.
class AudioEffectChain {
public:
    /// Makes the processors, sets "duration" of each to what it lasts of the clip, and then its own
    /// properties. Files that they name have been checked (RequireSounds). Throws Error (Effect or Usage).
    AudioEffectChain(const Plugin& plugin, AVBased::IAVManager* manager,
                     const std::vector<EffectSpec>& effects, const TimeSpan& clip);

    /// Changes interleaved samples of the chain's format in place; first is the first one's number in the
    /// clip. Throws Error (Effect) with the record's text when a processor records an error.
    void Process(AVFrame& sound, int64_t first);

private:
    std::vector<AudioProcPtr> m_procs;
};

} // namespace aveffect
