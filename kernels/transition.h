#pragma once
/// Kernels of the transitions that do more than copy.
#include "kernels/planes.h"
#include "kernels/select.h"

namespace AVBased::kernels {

/// Bytes of a row that come from another picture.
struct Run {
    size_t begin, end; ///< in the row that is drawn; an end not beyond the begin means none
    size_t from;       ///< in the other picture's row; may lie in a later row
};

/// How much brighter the pixels of each column become. Every number stands in both halves of its word, so
/// that one register of words serves all bytes of as many pixels.
struct ColumnGains {
    const uint32_t* whole;    ///< below 128
    const uint32_t* fraction; ///< 65536ths
};

/// One level's kernels. All planes of a call have as many rows, and those of pixels one width; those that are
/// read do not overlap the one that is drawn.
struct TransitionKernels {
    /// Every row becomes that of the plane below, in its width, with the runs over it. They follow each other
    /// from the left without overlapping, and may go beyond that width.
    void (*overlayRuns)(Plane8 out, Plane8 under, Plane8 over, const Run* runs, size_t count) noexcept;
    /// The same with every other stretch of so many bytes, above 0, from begin to the end of the other
    /// plane's width, which is not above that of the plane below.
    void (*overlayStripes)(Plane8 out, Plane8 under, Plane8 over, size_t begin, size_t bytes) noexcept;
    /// B, G and R become first * (1 - progress) + second * progress in double precision, each product and the
    /// sum rounded, the sum cut to a whole number and limited to 0..255; A stays. Any finite progress.
    void (*crossFadeRgba32)(Plane32 out, Plane32 first, Plane32 second, double progress) noexcept;
    /// B, G and R of a row's i-th pixel become c * whole + (c * fraction >> 16), limited to 255, of the i-th
    /// pixel from the end of the picture's row; A stays.
    void (*mirrorRgba32)(Plane32 out, Plane32 picture, ColumnGains gains) noexcept;
};

template <>
const TransitionKernels& SelectKernels<TransitionKernels>(unsigned features) noexcept;

} // namespace AVBased::kernels
