#pragma once
/// What plain computations of remapping effects are written with.
#include <algorithm>

#include "aveffect/pixel_format.h"
#include "tests/support/host_frame.h"

namespace test {

/// A frame before an effect, and as it becomes, in pixels or luma samples.
struct Picture {
    HostFrame& now;
    HostFrame old;
    bool packed;
    unsigned width, height;
    Layout layout;

    explicit Picture(HostFrame& frame)
        : now(frame)
        , old(frame)
        , packed(frame.GetPixelFormat() == AVBased::BGRA)
        , width(frame.planes[0].width / (packed ? 4 : 1))
        , height(frame.planes[0].rows)
        , layout(LayoutOf(frame.GetPixelFormat())) {}

    /// Pixel (x, y), or luma and chroma, becomes (sx, sy) of the old picture. Chroma that a plane lacks is
    /// left out; where it comes from is limited to the plane.
    void Copy(unsigned x, unsigned y, unsigned sx, unsigned sy) {
        const unsigned unit = packed ? 4 : 1;
        for (unsigned i = 0; i < unit; ++i)
            now.planes[0].At(x * unit + i, y) = old.planes[0].At(sx * unit + i, sy);
        ForChroma(x, y, [&](HostFrame::Plane& plane, HostFrame::Plane& from, unsigned cx, unsigned cy) {
            plane.At(cx, cy) = from.At(std::min(sx >> layout.hShift, plane.width - 1),
                                       std::min(sy >> layout.vShift, plane.rows - 1));
        });
    }
    /// White in limited range.
    void Fill(unsigned x, unsigned y) {
        for (unsigned i = 0; packed && i < 4; ++i) now.planes[0].At(4 * x + i, y) = 255;
        if (!packed) now.planes[0].At(x, y) = 235;
        ForChroma(x, y,
                  [](HostFrame::Plane& plane, auto&, unsigned cx, unsigned cy) { plane.At(cx, cy) = 128; });
    }
    /// Calls visit(plane, old plane, x, y) for the chroma samples of luma sample (x, y).
    template <class Visit>
    void ForChroma(unsigned x, unsigned y, Visit visit) {
        for (size_t p = 1; p < 3 && !packed; ++p) {
            HostFrame::Plane& plane = now.planes[p];
            if (x >> layout.hShift < plane.width && y >> layout.vShift < plane.rows)
                visit(plane, old.planes[p], x >> layout.hShift, y >> layout.vShift);
        }
    }
};

} // namespace test
