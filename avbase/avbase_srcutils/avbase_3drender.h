#pragma once
/// Presents a left and a right view of a scene as one frame.
#include "avbase/avbase_srcutils/holders.h"

namespace AVBased {

enum Render3DMode : int {
    kRenderLeftOnly = 0,
    kRenderRedCyan = 1,      ///< red of the left view, green and blue of the right one
    kRenderReserved = 2,     ///< not drawn
    kRenderSideBySide = 3,   ///< both halved in width, the left one in the left half
    kRenderTopAndBottom = 4, ///< both halved in height, the left one in the upper half
};

/// Draws BGRA and the planar formats that effects serve; an alpha plane is left as it is, but for the left
/// view alone. The output may be one of the views or both, which are read as they were before. Views smaller
/// than the output leave the rest of it as it was.
class CAVBase3DRender {
public:
    CAVBase3DRender() = default;
    CAVBase3DRender(const CAVBase3DRender&) = delete;
    CAVBase3DRender& operator=(const CAVBase3DRender&) = delete;
    virtual ~CAVBase3DRender() = default;

    /// Disparity in pixels of the two mapping operations. Numbers below 1 are not taken; true all the same.
    bool SetDepth(int depth);
    /// Numbers above 4 are not taken, negative ones are; true always. Rendering in mode 2 or a negative one
    /// fails an assertion.
    bool SetRenderMode(Render3DMode mode);

    /// Draws into out, or, when that is null, into a frame that the renderer keeps: a clone of the first left
    /// view that was given without an output. Returns the frame that was drawn into; that stays the
    /// renderer's. A right view of another format is converted to the left one's, by a converter that is made
    /// for the first format needed and kept. What converter or kept frame can't serve leaves the output as it
    /// is, with an error recorded. Formats that are not served leave it too. Null views fail an assertion.
    IRawVideoFrame* Render(IRawVideoFrame* L, IRawVideoFrame* R, IRawVideoFrame* out);

    /// Draw frames of one format. In modes 3 and 4 views are taken to lie in memory as the output does: its
    /// row length, pitch and rows count for them too, unless they have fewer bytes a row or fewer rows.
    bool ProcessBGRA(IRawVideoFrame* L, IRawVideoFrame* R, IRawVideoFrame* out);
    bool ProcessYUV(IRawVideoFrame* L, IRawVideoFrame* R, IRawVideoFrame* out);
    /// Draw the anaglyph. In YUV, chroma is taken as half as wide and high whatever the format says, and
    /// colours out of range wrap. False with an error recorded when something throws.
    bool ProcessRGBRedBlue(IRawVideoFrame* L, IRawVideoFrame* R, IRawVideoFrame* out);
    bool ProcessYUVRedBlue(IRawVideoFrame* L, IRawVideoFrame* R, IRawVideoFrame* out);

    /// Column x of a picture of that width in the left view, which is narrower by the depth, and in the right
    /// view, which begins that much further to the right. True always.
    bool MapResultVFFromLeft(int x, int y, int width, int& outX, int& outY);
    bool MapResultVFFromRight(int x, int y, int width, int& outX, int y2);

    /// Limited-range ITU-R BT.601 in integers, not clamped. True always.
    bool ConvertRGB2YUV(int r, int g, int b, int& y, int& u, int& v);
    /// Red is that of BT.601; green and blue take luma as it is, without gain or rounding.
    bool ConvertYUV2RGB(int y, int u, int v, int& r, int& g, int& b);

private:
    IRawVideoFrame* OutputLike(IRawVideoFrame* L);
    FramePtr Converted(IRawVideoFrame* view, unsigned format);
    void Draw(IRawVideoFrame* L, IRawVideoFrame* R, IRawVideoFrame* out);

    int m_nDepth = 0;
    Render3DMode m_eMode = kRenderLeftOnly;
    ConverterPtr m_pConverter;
    FramePtr m_pOutput;
};

} // namespace AVBased
