#pragma once
/// Relief of each sample against the one above it, in place. The first row stays as it is.
#include "kernels/planes.h"
#include "kernels/select.h"

namespace AVBased::kernels {

/// One level's kernels. The plain and the Mmx ones differ in what overflows how; both are wanted.
struct EmbossKernels {
    /// B, G and R become ((c - above) * level), limited to -128..127, plus 128; A stays.
    void (*embossRgba32)(Plane32 plane, int32_t level) noexcept;
    /// ((c - above) * level + 128) in 32 bits that wrap; what then lies outside 0..254 becomes 255, so that
    /// negative results are white.
    void (*embossComponent)(Plane8 plane, int32_t level) noexcept;
    /// (c * level + 128) - (above * level), both in 16 bits that wrap, the difference limited to 16 bits with
    /// sign and then to 0..255; A stays.
    void (*embossRgba32Mmx)(Plane32 plane, int32_t level) noexcept;
    /// The same for every sample, but the last width mod 4 samples of each row, which are
    /// 2 * (c - above), limited to -128..127, plus 128 whatever the level.
    void (*embossComponentMmx)(Plane8 plane, int32_t level) noexcept;
};

template <>
const EmbossKernels& SelectKernels<EmbossKernels>(unsigned features) noexcept;

} // namespace AVBased::kernels
