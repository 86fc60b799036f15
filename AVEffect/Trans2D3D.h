#pragma once
/// Makes two-colour anaglyphs of single pictures: the picture is widened a little, and some of its colours
/// are taken from further to the right.
#include <memory>
#include <vector>

#include "BaseTools/res_keeper.h"
#include "avbase/avbase_srcutils/avbase_crawvideoframe.h"
#include "avbase/avbase_srcutils/holders.h"
#include "aveffect/plugin.h"

namespace AVBased {

/// Everything but the setters throws CBaseException: 10021003 "Bad pointer" where a converter can't be made
/// or does not convert, 10021008 where a picture can't be served. What is made for one size serves until a
/// picture has another.
class CTrans2D3D {
public:
    CTrans2D3D() = default;
    CTrans2D3D(const CTrans2D3D&) = delete;
    CTrans2D3D& operator=(const CTrans2D3D&) = delete;

    /// Limited to 20 to 100 and rounded down to a multiple of 10. True always.
    bool SetDepth(int d);
    /// 1 moves red (red/cyan), 2 moves red and blue (green/magenta); with any other processing fails an
    /// assertion.
    void Set3DType(unsigned t) { m_nType = static_cast<int>(t); }
    /// Both; returns the depth as it is kept.
    int SetProperty(unsigned type, int depth);
    /// How many pixels a depth moves colours by. False with an error recorded when there is no such depth.
    bool GetParamByIndex(unsigned d, unsigned* shift);

    /// Makes the converters and the working frame for a size. True, or it throws.
    bool Init(int width, int height);
    void CleanUp();

    /// The picture's anaglyph as BGRA or YUV420P, valid until the next one; stays this object's.
    IRawVideoFrame* ProcessBGRA(IRawVideoFrame* frame);
    IRawVideoFrame* ProcessYV(IRawVideoFrame* frame);

    /// Draws a frame's anaglyph into it, by way of BGRA where it has another format than those. The way back
    /// is one converter for the whole process, which keeps the format and size of the first such frame;
    /// frames that it does not fit are left as they are. Frames of neither one nor three planes fail an
    /// assertion.
    void InnerProcFrame(ImagePostion* position, int time, IRawVideoFrame* pFrame);

private:
    IRawVideoFrame* Process(IRawVideoFrame* frame, const ConverterPtr& back);
    IRawVideoFrame* Anaglyph(IRawVideoFrame* frame, FramePtr& own);
    FramePtr ProcessOther(IRawVideoFrame* frame);
    void Draw(IRawVideoFrame* widened);

    std::vector<ConverterPtr> m_Wideners; // for the depths 20, 30, ..., 100
    int m_nDepth = 40;
    int m_nWidth = 0; // 0 while nothing is made
    int m_nHeight = 0;
    int m_nType = 0;
    ConverterPtr m_pToBGRA, m_pToYUV;
    BaseTool::AlignedMallocAllocator m_RgbPixels{64};
    std::unique_ptr<CRawVideoFrame> m_pRgb; // RGB24, the anaglyph
    FramePtr m_pOutput;
};

} // namespace AVBased
