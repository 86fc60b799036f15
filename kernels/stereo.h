#pragma once
/// Two views of a scene drawn as one picture, and pictures made three-dimensional by moving some colours.
///
/// The picture that is drawn into may be one of the views: it is read as it was before. It can't be both,
/// except in the anaglyphs. Sizes of views count alone for what can be read from them; where a view has
/// nothing, the picture stays as it is.
#include "kernels/planes.h"
#include "kernels/select.h"

namespace AVBased::kernels {

/// The planes of a view that colours are computed from. Chroma sample (x / 2, y / 2) belongs to luma sample
/// (x, y) whatever the planes' sizes; beyond a plane's last column or row, that one counts. None is empty,
/// but those of a picture that is drawn into may be: then there is nothing to draw.
struct YuvPlanes {
    Plane8 y, u, v;
};

/// One level's kernels.
struct StereoKernels {
    /// Blue and green of the right view, red of the left one, and the picture's own alpha, for the pixels
    /// that all three have.
    void (*anaglyphRgba32)(Plane32 out, Plane32 left, Plane32 right) noexcept;

    /// The same for the luma samples that all three have. With Y, U and V less 16, 128 and 128, and shifts
    /// that round down:
    ///   R = (298 Y + 409 V + 128) >> 8 of the left view,
    ///   G = (298 Y - 100 U - 208 V + 128) >> 8 and B = (298 Y + 516 U + 128) >> 8 of the right view,
    ///   Y = ((66 R + 129 G + 25 B + 128) >> 8) + 16,
    ///   U = ((-38 R - 74 G + 112 B + 128) >> 8) + 128, V = ((112 R - 94 G - 18 B + 128) >> 8) + 128,
    /// the low byte of each; U and V where row and column are even. The left view's U is not looked at.
    void (*anaglyphYuv)(const YuvPlanes& out, const YuvPlanes& left, const YuvPlanes& right) noexcept;

    /// Each row becomes samples 0, 2, 4, ... of the left view's row, then those of the right view's. Of an
    /// odd row the right view's last one is dropped. Columns count in samples of the output.
    void (*sideBySideRgba32)(Plane32 out, Plane32 left, Plane32 right) noexcept;
    void (*sideBySideComponent)(Plane8 out, Plane8 left, Plane8 right) noexcept;

    /// The upper half becomes rows 0, 2, 4, ... of the left view, the rest those of the right view. The upper
    /// half of an odd height is the smaller one.
    void (*topAndBottomComponent)(Plane8 out, Plane8 left, Plane8 right) noexcept;

    /// Of rows of bytes R, G, B: each pixel with its red, or red and blue, from so many bytes further to the
    /// right. Rows of the wide plane go on for that long, and the planes share nothing.
    void (*shiftRedRgb24)(Plane8 out, Plane8 wide, size_t shift) noexcept;
    void (*shiftRedAndBlueRgb24)(Plane8 out, Plane8 wide, size_t shift) noexcept;
};

template <>
const StereoKernels& SelectKernels<StereoKernels>(unsigned features) noexcept;

} // namespace AVBased::kernels
