#pragma once
/// How transitions draw: rows put together from the rows of two pictures.
#include <cstddef>
#include <span>

#include "AVEffect/support/frame_planes.h"
#include "AVEffect/support/plane_copy.h"
#include "kernels/transition.h"

namespace AVBased {

/// Three BGRA frames, their rows as bytes. Each holds at least the output's picture.
struct Canvas {
    Plane8 out, first, second;
    size_t width, height; ///< of the output, in pixels

    bool Empty() const { return width == 0 || height == 0; }
    size_t RowBytes() const { return width * 4; }
};

/// Throws CBaseException 10021003 when one is null, and 10021008 when the pictures are not of the output's
/// size. An output of another format fails an assertion.
Canvas MakeCanvas(IRawVideoFrame* out, IRawVideoFrame* first, IRawVideoFrame* second);

using kernels::Run;

/// Rows of one picture with runs of another over them. Each byte is written once.
class Layers {
public:
    Layers(const Canvas& canvas, const Plane8& under, const Plane8& over);

    /// So many bytes of the other picture, or as many of them as lie in both rows: up to the pitch when it is
    /// that of the output, else in the picture.
    Run Within(size_t begin, size_t from, size_t bytes) const;

    /// Rows as in the picture below.
    void Plain(size_t beginRow, size_t endRow) const;
    /// Runs follow each other from the left without overlapping; empty ones do no harm.
    void Draw(size_t beginRow, size_t endRow, std::span<const Run> runs) const;
    void Draw(size_t row, const Run& run) const { Draw(row, row + 1, {&run, 1}); }
    /// Every other stretch of that many bytes from the other picture, from begin to the end of the picture.
    void DrawStripes(size_t beginRow, size_t endRow, size_t begin, size_t bytes) const;
    /// All rows from that one on as in the picture below, also those that a frame holds beyond its size.
    void Rest(size_t beginRow) const { Plain(beginRow, m_nRows); }

private:
    Plane8 m_Out;
    Plane8 m_Under, m_Over; // their width: the pitch when it is the output's, else the picture
    size_t m_nPictureBytes;
    size_t m_nRows;
    const kernels::TransitionKernels& m_Kernels;
};

} // namespace AVBased
