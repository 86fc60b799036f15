#pragma once
/// Which pixel formats the effects serve and how: the one place that turns a frame into plane views.
#include <array>
#include <cassert>

#include "avbase/avbase_srcutils/plane_views.h"
#include "aveffect/pixel_format.h"

namespace AVBased {

/// A planar frame. Chroma sample (x >> horizontalShift, y >> verticalShift) belongs to luma sample (x, y).
struct PlanarView {
    Plane8 y, u, v;
    Plane8 alpha; ///< only when hasAlpha
    bool hasAlpha;
    unsigned horizontalShift;
    unsigned verticalShift;
};

/// Calls packed(Plane32) for BGRA, planar(PlanarView) for the planar formats, and nothing for any other.
template <class Packed, class Planar>
void ForFormat(IRawVideoFrame* frame, Packed&& packed, Planar&& planar) {
    const unsigned format = frame->GetPixelFormat();
    if (!IsEffectFormat(format)) return;
    const FormatLayout* const layout = FindPixelFormat(format);
    if (layout->packed) {
        packed(PixelPlane(frame));
        return;
    }
    planar(PlanarView{BytePlane(frame, 0), BytePlane(frame, 1), BytePlane(frame, 2),
                      layout->HasAlphaPlane() ? BytePlane(frame, 3) : Plane8{}, layout->HasAlphaPlane(),
                      layout->horizontalShift, layout->verticalShift});
}

/// The kernels' assertion, for chroma as for luma: planes that they draw on have memory.
inline void AssertMemory(const PlanarView& view) {
    for (const Plane8& plane : {view.y, view.u, view.v})
        if (!plane.Empty()) assert(plane.data != NULL);
}

} // namespace AVBased
