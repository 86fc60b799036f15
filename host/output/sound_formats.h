#pragma once
/// What files of a kind hold of sound.
#include <vector>

#include "host/output/output_plan.h"

namespace aveffect {

/// Whether files of that kind are known to hold sound of that codec. WAV could wrap nearly anything, but what
/// is no PCM is played by few programs.
bool HoldsSound(const OutputPlan& plan, AVCodecID codec);

/// What else the container asks of sound.
struct SoundLimits {
    std::vector<int> rates;    ///< in Hz; empty for any
    int fewest = 1, most = 64; ///< channels

    bool Allow(int rate) const;
    bool Allow(const AVChannelLayout& layout) const;
};
SoundLimits LimitsOf(const OutputPlan& plan, AVCodecID codec);

/// Whether the container holds this very sound, so that it can be copied.
bool HoldsAsIs(const OutputPlan& plan, const AVCodecParameters& sound);

/// The encoder for a codec's name, the best where there are several, or by its own name. Null when there is
/// none for sound.
const AVCodec* FindSoundEncoder(const std::string& name);

/// The encoder's name for sound of a file that holds this codec with samples of so many bits (0 where it does
/// not tell): that codec's own where the container holds it, otherwise AAC or what the container usually
/// has. Empty when nothing can be encoded that it holds.
std::string UsualSoundCodec(const OutputPlan& plan, AVCodecID input, int bits = 0);

} // namespace aveffect
