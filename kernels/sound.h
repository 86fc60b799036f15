#pragma once
/// Kernels on sound: ranges of samples at any address, in place.
#include <cstddef>
#include <cstdint>

#include "kernels/select.h"

namespace AVBased::kernels {

/// Sample formats are numbered up to this, see AVBased::SampleFormat.
constexpr int kLastSampleFormat = 10;

/// Every sample s becomes v = s * scale, computed in double and limited to the format's range (floating
/// point: -1 to 1). Integers are truncated towards zero, v without a value (NaN) giving 0; float is rounded
/// to nearest. sfUnsigned32 is read as signed, so that the upper half of its range becomes 0.
using ScaleSamples = void (*)(uint8_t* samples, size_t count, double scale) noexcept;

/// One level's kernels.
struct SoundKernels {
    /// Signed 16 bits: s becomes s * gain >> 8, the shift rounding down, limited to -32768..32767.
    void (*amplify16)(uint8_t* samples, size_t count, int16_t gain) noexcept;

    /// By sample format; null where the number stands for none. The second list is for samples whose bytes
    /// stand in the other order than the machine's, before and after.
    ScaleSamples scale[kLastSampleFormat + 1];
    ScaleSamples scaleSwapped[kLastSampleFormat + 1];
};

template <>
const SoundKernels& SelectKernels<SoundKernels>(unsigned features) noexcept;

} // namespace AVBased::kernels
