#pragma once
/// Kernels of the transitions that do more than copy.
#include "AVEffect/kernels/planes.h"

namespace AVBased::kernels {

/// One level's kernels. All planes of a call have one width and as many rows.
struct TransitionKernels {
    /// B, G and R become first * (1 - progress) + second * progress in double precision, each product and the
    /// sum rounded, the sum cut to a whole number and limited to 0..255; A stays. Any progress that is a
    /// number.
    void (*crossFadeRgba32)(Plane32 out, Plane32 first, Plane32 second, double progress) noexcept;
    /// B, G and R of a row's i-th pixel become those of the picture's pixel that is i-th from the row's end,
    /// times gains[i] in double precision, cut to whole numbers and limited to 255; A stays. Gains of 0 to
    /// 8000000.
    void (*mirrorRgba32)(Plane32 out, Plane32 picture, const double* gains) noexcept;
};

/// The fastest kernels for a feature word (see AVBased::CPUFeature); those of the baseline for 0.
const TransitionKernels& SelectTransitionKernels(unsigned features) noexcept;

} // namespace AVBased::kernels
