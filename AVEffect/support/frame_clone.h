#pragma once
/// A frame's untouched copy for effects that take their samples from elsewhere in the picture.
#include <cassert>

#include "AVEffect/support/frame_planes.h"
#include "BaseTools/guarded.h"
#include "avbase/avbase_srcutils/holders.h"
#include "aveffect/errors.h"

namespace AVBased {

/// Frees the copy when it goes.
using FrameClone = FramePtr;

/// The host's own clone of its frame. Throws CBaseException 10021008 when the host has none; a null frame
/// fails an assertion.
inline FrameClone CloneFrame(IRawVideoFrame* pFrame) {
    assert(pFrame);
    FrameClone copy(pFrame->Clone());
    if (!copy) BaseTool::Raise(kUnknownException, "the frame can't be cloned; it is left as it is");
    return copy;
}

/// Calls packed(Plane32, its copy) or planar(PlanarView, its copy) by the frame's format, and nothing for
/// formats that are not served or pictures without a sample. Throws CBaseException 10021008 when the copy is
/// of another shape.
template <class Packed, class Planar>
void ForFormat(IRawVideoFrame* frame, IRawVideoFrame* copy, Packed&& packed, Planar&& planar) {
    const auto expectSame = [](const auto&... sizes) {
        if (!(sizes && ...))
            BaseTool::Raise(kUnknownException,
                            "the frame's clone differs in shape; the frame is left as it is");
    };
    const auto same = [](const auto& a, const auto& b) {
        return a.width == b.width && a.rows == b.rows && (b.data || !a.data || a.Empty());
    };
    expectSame(frame->GetPixelFormat() == copy->GetPixelFormat());
    ForFormat(
        frame,
        [&](Plane32 plane) {
            const Plane32 from = PixelPlane(copy);
            expectSame(same(plane, from));
            if (!plane.Empty()) packed(plane, from);
        },
        [&](const PlanarView& view) {
            ForFormat(
                copy, [](Plane32) {},
                [&](const PlanarView& from) {
                    expectSame(same(view.y, from.y), same(view.u, from.u), same(view.v, from.v));
                    if (!view.y.Empty()) planar(view, from);
                });
        });
}

/// The same with a copy made for the purpose, whatever the frame's format.
template <class Packed, class Planar>
void ForPictureAndCopy(IRawVideoFrame* pFrame, Packed&& packed, Planar&& planar) {
    const FrameClone copy = CloneFrame(pFrame);
    ForFormat(pFrame, copy.get(), packed, planar);
}

} // namespace AVBased
