#include "AVEffect/support/transition_canvas.h"

#include <algorithm>
#include <cassert>

#include "BaseTools/guarded.h"
#include "aveffect/base_media.h"

namespace AVBased {

using BaseTool::Raise;

namespace {

bool Holds(const Plane8& plane, size_t rowBytes, size_t rows) {
    return plane.data && plane.width >= rowBytes && plane.pitch >= rowBytes && plane.rows >= rows;
}

} // namespace

Canvas MakeCanvas(IRawVideoFrame* out, IRawVideoFrame* first, IRawVideoFrame* second) {
    if (!first || !second || !out) Raise(kBadPointer, "Bad pointer");
    if (out->GetPixelFormat() != BGRA) assert(0);
    unsigned width = 0, height = 0;
    out->GetDimension(&width, &height);
    const Canvas canvas = {FilledPlane(out, 0), FilledPlane(first, 0), FilledPlane(second, 0), width, height};
    if (canvas.Empty()) return canvas;
    for (const Plane8& plane : {canvas.out, canvas.first, canvas.second})
        if (!Holds(plane, canvas.RowBytes(), height))
            Raise(kUnknownException, "a picture is smaller than the frame; the frame is left as it is");
    if (first->GetPixelFormat() != BGRA || second->GetPixelFormat() != BGRA)
        Raise(kUnknownException, "a picture has another format than the frame; the frame is left as it is");
    return canvas;
}

namespace {

Plane8 Shared(const Canvas& canvas, const Plane8& plane) {
    const size_t width =
        plane.pitch == canvas.out.pitch ? plane.pitch : std::min(plane.width, canvas.out.width);
    return {plane.data, width, plane.pitch, plane.rows};
}

Plane8 Rows(const Plane8& plane, size_t begin, size_t end) {
    return {plane.Row(begin), plane.width, plane.pitch, end - begin};
}

} // namespace

Layers::Layers(const Canvas& canvas, const Plane8& under, const Plane8& over)
    : m_Out(canvas.out)
    , m_Under(Shared(canvas, under))
    , m_Over(Shared(canvas, over))
    , m_nPictureBytes(canvas.RowBytes())
    , m_nRows(std::min(canvas.out.rows, under.rows))
    , m_Kernels(Kernels<kernels::TransitionKernels>()) {}

Run Layers::Within(size_t begin, size_t from, size_t bytes) const {
    const size_t place = std::max(begin, from);
    const size_t room = m_Over.width - std::min(place, m_Over.width);
    return {begin, begin + std::min(bytes, room), from};
}

void Layers::Plain(size_t beginRow, size_t endRow) const {
    if (beginRow < endRow) CopyPicture(Rows(m_Out, beginRow, endRow), Rows(m_Under, beginRow, endRow));
}

void Layers::Draw(size_t beginRow, size_t endRow, std::span<const Run> runs) const {
    m_Kernels.overlayRuns(Rows(m_Out, beginRow, endRow), Rows(m_Under, beginRow, endRow),
                          Rows(m_Over, beginRow, endRow), runs.data(), runs.size());
}

void Layers::DrawStripes(size_t beginRow, size_t endRow, size_t begin, size_t bytes) const {
    Plane8 over = Rows(m_Over, beginRow, endRow);
    over.width = m_nPictureBytes;
    m_Kernels.overlayStripes(Rows(m_Out, beginRow, endRow), Rows(m_Under, beginRow, endRow), over, begin,
                             bytes);
}

} // namespace AVBased
