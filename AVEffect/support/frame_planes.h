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

/// Calls packed(Plane32) for BGRA, planar(PlanarView) for the planar formats, and nothing for any other. A
/// null frame fails an assertion. Planes may be without samples, or without memory.
template <class Packed, class Planar>
void ForFormat(IRawVideoFrame* pFrame, Packed&& packed, Planar&& planar) {
    assert(pFrame);
    const unsigned format = pFrame->GetPixelFormat();
    if (!IsEffectFormat(format)) return;
    const FormatLayout* const layout = FindPixelFormat(format);
    if (layout->packed) {
        packed(PixelPlane(pFrame));
        return;
    }
    planar(PlanarView{BytePlane(pFrame, 0), BytePlane(pFrame, 1), BytePlane(pFrame, 2),
                      layout->HasAlphaPlane() ? BytePlane(pFrame, 3) : Plane8{}, layout->HasAlphaPlane(),
                      layout->horizontalShift, layout->verticalShift});
}

/// The kernels' assertion: planes that they draw on have memory.
inline void AssertMemory(const Plane32& plane) {
    if (!plane.Empty()) assert(plane.data != NULL);
}
inline void AssertMemory(const PlanarView& view) {
    for (const Plane8& plane : {view.y, view.u, view.v})
        if (!plane.Empty()) assert(plane.data != NULL);
}

/// ForFormat for effects that draw the picture as a whole: nothing for pictures without a luma sample, and
/// the kernels' assertion, for chroma as for luma.
template <class Packed, class Planar>
void ForPicture(IRawVideoFrame* pFrame, Packed&& packed, Planar&& planar) {
    ForFormat(
        pFrame,
        [&](Plane32 plane) {
            if (plane.Empty()) return;
            AssertMemory(plane);
            packed(plane);
        },
        [&](const PlanarView& view) {
            if (view.y.Empty()) return;
            AssertMemory(view);
            planar(view);
        });
}

/// Planes of a planar frame that an effect draws on.
enum class Planes { Luma, Colours, Alpha, All };

/// ForFormat for effects that draw each plane by itself: planar(Plane8) for those of the planes that have
/// samples. Packed pixels are one plane whichever is asked for.
template <class Packed, class Planar>
void ForPlanes(IRawVideoFrame* pFrame, Planes planes, Packed&& packed, Planar&& planar) {
    const auto draw = [](auto&& kernel, const auto& plane) {
        if (!plane.Empty()) kernel(plane);
    };
    const bool luma = planes != Planes::Alpha, chroma = luma && planes != Planes::Luma;
    const bool alpha = planes == Planes::Alpha || planes == Planes::All;
    ForFormat(
        pFrame, [&](Plane32 plane) { draw(packed, plane); },
        [&](const PlanarView& view) {
            if (luma) draw(planar, view.y);
            if (chroma) draw(planar, view.u);
            if (chroma) draw(planar, view.v);
            if (alpha) draw(planar, view.alpha); // without samples where there is none
        });
}

/// ForPlanes for kernels of the form (first sample, pixels or bytes of a row, pitch, rows, arguments).
template <class Packed, class Planar, class... Arguments>
void DrawPlanes(IRawVideoFrame* pFrame, Planes planes, Packed packed, Planar planar, Arguments... arguments) {
    const auto draw = [&](auto kernel, const auto& plane) {
        kernel(plane.data, static_cast<unsigned>(plane.width), static_cast<unsigned>(plane.pitch),
               static_cast<unsigned>(plane.rows), arguments...);
    };
    ForPlanes(
        pFrame, planes, [&](Plane32 plane) { draw(packed, plane); },
        [&](Plane8 plane) { draw(planar, plane); });
}

/// Whether what holds for the places of one plane holds for the other.
inline bool SameShape(const Plane8& a, const Plane8& b) noexcept {
    return a.width == b.width && a.pitch == b.pitch && a.rows == b.rows;
}

} // namespace AVBased
