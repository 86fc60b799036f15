#pragma once
/// Mixing what a sound was with what it became.
#include <span>

extern "C" {
#include <libavutil/samplefmt.h>
}

namespace aveffect {

/// first + (second - first) * weight for each sample of all channels, in place of the first; one weight, 0 to
/// 1, a sample. Interleaved signed 16 or 32 bits, rounded to nearest, or floating point.
void MixSamples(AVSampleFormat format, int channels, void* first, const void* second,
                std::span<const double> weights);

} // namespace aveffect
