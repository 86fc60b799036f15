#pragma once
/// Grain from a table.
#include "kernels/planes.h"
#include "kernels/select.h"

namespace AVBased::kernels {

/// One level's kernels: samples become (sample * gain >> 8) + noise, limited to 255. The gain is 0 to 32767;
/// the noise has one byte a sample, row after row without padding.
struct NoiseKernels {
    /// B, G and R; alpha keeps its value, its bytes of noise count for nothing.
    void (*addNoiseRgba32)(Plane32 plane, const uint8_t* noise, uint32_t gain) noexcept;
    void (*addNoiseComponent)(Plane8 plane, const uint8_t* noise, uint32_t gain) noexcept;
};

template <>
const NoiseKernels& SelectKernels<NoiseKernels>(unsigned features) noexcept;

} // namespace AVBased::kernels
