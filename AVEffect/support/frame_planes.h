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

/// What a served format looks like.
struct FormatLayout {
    unsigned id;
    bool packed;
    bool hasAlphaPlane;
    unsigned char horizontalShift;
    unsigned char verticalShift;
};

/// One row for each of kEffectFormats, in that order.
inline constexpr std::array<FormatLayout, kEffectFormats.size()> kServedFormats = {{
    {BGRA, true, false, 0, 0},
    {YUV420P, false, false, 1, 1},
    {YUV422P, false, false, 1, 0},
    {YUV410P, false, false, 2, 2},
    {YUV411P, false, false, 2, 0},
    {YUVJ420P, false, false, 1, 1},
    {YUVJ422P, false, false, 1, 0},
    {YUVA420P, false, true, 1, 1},
    {YUVA444P, false, true, 0, 0},
}};

constexpr const FormatLayout* FindLayout(unsigned format) {
    for (const FormatLayout& layout : kServedFormats)
        if (layout.id == format) return &layout;
    return nullptr;
}

static_assert(
    [] {
        for (size_t i = 0; i < kServedFormats.size(); ++i)
            if (kServedFormats[i].id != kEffectFormats[i]) return false;
        return true;
    }(),
    "the layouts stand in the order of the formats");

/// Calls packed(Plane32) for BGRA, planar(PlanarView) for the planar formats, and nothing for any other.
template <class Packed, class Planar>
void ForFormat(IRawVideoFrame* frame, Packed&& packed, Planar&& planar) {
    const FormatLayout* layout = FindLayout(frame->GetPixelFormat());
    if (!layout) return;
    if (layout->packed) {
        packed(PixelPlane(frame));
        return;
    }
    planar(PlanarView{BytePlane(frame, 0), BytePlane(frame, 1), BytePlane(frame, 2),
                      layout->hasAlphaPlane ? BytePlane(frame, 3) : Plane8{}, layout->hasAlphaPlane,
                      layout->horizontalShift, layout->verticalShift});
}

/// The kernels' assertion, for chroma as for luma: planes that they draw on have memory.
inline void AssertMemory(const PlanarView& view) {
    for (const Plane8& plane : {view.y, view.u, view.v})
        if (!plane.Empty()) assert(plane.data != NULL);
}

} // namespace AVBased
