#include "AVEffect/transition_canvas.h"

#include <algorithm>
#include <cassert>

#include "BaseTools/guarded.h"
#include "aveffect/base_media.h"

namespace AVBased {

using BaseTool::Raise;

namespace {

void Copy(uint8_t* to, const uint8_t* from, size_t bytes) {
    if (bytes) AVBasedMemCopy(to, from, bytes); // planes without bytes may have no address
}

// Bytes of a row that are copied.
size_t SharedBytes(const Plane8& to, const Plane8& from) {
    return to.pitch == from.pitch ? to.pitch : std::min(to.width, from.width);
}

bool Holds(const Plane8& plane, size_t rowBytes, size_t rows) {
    return plane.data && plane.width >= rowBytes && plane.pitch >= rowBytes && plane.rows >= rows;
}

} // namespace

Canvas MakeCanvas(IRawVideoFrame* out, IRawVideoFrame* first, IRawVideoFrame* second) {
    if (!first || !second || !out) Raise(kBadPointer, "Bad pointer");
    if (out->GetPixelFormat() != BGRA) assert(0);
    unsigned width = 0, height = 0;
    out->GetDimension(&width, &height);
    const Canvas canvas = {BytePlane(out, 0), BytePlane(first, 0), BytePlane(second, 0), width, height};
    if (canvas.Empty()) return canvas;
    for (const Plane8& plane : {canvas.out, canvas.first, canvas.second})
        if (!Holds(plane, canvas.RowBytes(), height))
            Raise(kUnknownException, "a picture is smaller than the frame; the frame is left as it is");
    if (first->GetPixelFormat() != BGRA || second->GetPixelFormat() != BGRA)
        Raise(kUnknownException, "a picture has another format than the frame; the frame is left as it is");
    return canvas;
}

void CopyRows(const Plane8& to, const Plane8& from) {
    const size_t bytes = std::min(to.width, from.width);
    for (size_t y = 0; y < std::min(to.rows, from.rows); ++y) Copy(to.Row(y), from.Row(y), bytes);
}

void CopyPicture(const Plane8& to, const Plane8& from) {
    if (to.pitch == from.pitch)
        Copy(to.data, from.data, std::min(to.rows, from.rows) * to.pitch);
    else
        CopyRows(to, from);
}

Layers::Layers(const Canvas& canvas, const Plane8& under, const Plane8& over)
    : m_Out(canvas.out)
    , m_Under(under)
    , m_Over(over)
    , m_nUnderBytes(SharedBytes(m_Out, under))
    , m_nOverBytes(SharedBytes(m_Out, over))
    , m_nPictureBytes(canvas.RowBytes())
    , m_nRows(std::min(m_Out.rows, under.rows)) {}

void Layers::Plain(size_t beginRow, size_t endRow) const {
    if (beginRow >= endRow) return;
    const auto part = [&](Plane8 plane) {
        return Plane8{plane.Row(beginRow), plane.width, plane.pitch, endRow - beginRow};
    };
    CopyPicture(part(m_Out), part(m_Under));
}

Run Layers::Within(size_t begin, size_t from, size_t bytes) const {
    const size_t place = std::max(begin, from);
    const size_t room = m_nOverBytes - std::min(place, m_nOverBytes);
    return {begin, begin + std::min(bytes, room), from};
}

void Layers::Row(size_t y, std::span<const Run> runs) const {
    uint8_t* const out = m_Out.Row(y);
    const uint8_t *const under = m_Under.Row(y), *const over = m_Over.Row(y);
    size_t at = 0;
    for (const Run& run : runs) {
        if (run.begin >= run.end) continue;
        const size_t gapEnd = std::min(run.begin, m_nUnderBytes);
        if (at < gapEnd) Copy(out + at, under + at, gapEnd - at);
        Copy(out + run.begin, over + run.from, run.end - run.begin);
        at = run.end;
    }
    if (at < m_nUnderBytes) Copy(out + at, under + at, m_nUnderBytes - at);
}

void Layers::Stripes(size_t y, size_t begin, size_t bytes) const {
    uint8_t* const out = m_Out.Row(y);
    const uint8_t *const under = m_Under.Row(y), *const over = m_Over.Row(y);
    size_t at = 0;
    for (size_t x = begin; x < m_nPictureBytes; x += 2 * bytes) {
        const size_t end = std::min(x + bytes, m_nPictureBytes);
        Copy(out + at, under + at, x - at);
        Copy(out + x, over + x, end - x);
        at = end;
    }
    Copy(out + at, under + at, m_nUnderBytes - at);
}

} // namespace AVBased
