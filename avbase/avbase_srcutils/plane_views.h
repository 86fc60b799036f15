#pragma once
/// A frame's planes as kernels see them.
#include <initializer_list>

#include "BaseTools/CBaseException.h"
#include "aveffect/errors.h"
#include "aveffect/video_frame.h"
#include "kernels/planes.h"

namespace AVBased {

using kernels::Plane32;
using kernels::Plane8;

/// One plane of a frame as bytes; it may have no memory. Throws CBaseException 10021008 for one with less of
/// it than kernels count on.
inline Plane8 BytePlane(IRawVideoFrame* frame, unsigned index) {
    unsigned width = 0, pitch = 0, rows = 0;
    unsigned char* data = frame->GetBuffer(index, &width, &pitch, &rows);
    if (width != 0 && rows > 1 && pitch < width)
        BaseTool::Raise(kUnknownException, "the rows of a plane overlap; the frame is left as it is");
    return {data, width, pitch, rows};
}

/// The plane, for those who don't assert that it has memory. Throws CBaseException 10021008 when it has none.
template <class Plane>
Plane RequireMemory(const Plane& plane) {
    if (!plane.Empty() && !plane.data)
        BaseTool::Raise(kUnknownException, "a plane has no memory; the frame is left as it is");
    return plane;
}

/// The same for all that an effect is about to touch.
inline void RequireMemory(std::initializer_list<Plane8> planes) {
    for (const Plane8& plane : planes) RequireMemory(plane);
}

inline Plane8 FilledPlane(IRawVideoFrame* frame, unsigned index) {
    return RequireMemory(BytePlane(frame, index));
}

/// A plane of bytes as the whole pixels in it. A trailing part of a pixel does not count.
constexpr Plane32 AsPixels(const Plane8& bytes) {
    return {bytes.data, bytes.width / 4, bytes.pitch, bytes.rows};
}

/// The plane of a BGRA frame.
inline Plane32 PixelPlane(IRawVideoFrame* frame) { return AsPixels(BytePlane(frame, 0)); }

/// Whether two frames are of one format and size and their planes lie in memory alike.
inline bool SameLayout(IRawVideoFrame* a, IRawVideoFrame* b) {
    if (a->GetPixelFormat() != b->GetPixelFormat() || a->GetBufferCount() != b->GetBufferCount())
        return false;
    unsigned widthA = 0, heightA = 0, widthB = 0, heightB = 0;
    a->GetDimension(&widthA, &heightA);
    b->GetDimension(&widthB, &heightB);
    if (widthA != widthB || heightA != heightB) return false;
    for (unsigned i = 0; i < a->GetBufferCount(); ++i) {
        const Plane8 planeA = BytePlane(a, i), planeB = BytePlane(b, i);
        if (planeA.width != planeB.width || planeA.pitch != planeB.pitch || planeA.rows != planeB.rows)
            return false;
    }
    return true;
}

} // namespace AVBased
