#pragma once
/// Shows two views of a scene as one picture, or makes one picture an anaglyph.
#include <vector>

#include "AVEffect/CBasedVideoEffect.h"
#include "AVEffect/Trans2D3D.h"
#include "AVEffect/support/scratch.h"
#include "avbase/avbase_srcutils/avbase_3drender.h"
#include "kernels/planes.h"

namespace AVBased {

/// The right view is the frame's subset frame. A frame without one gives both views itself: the left one
/// shows the left three quarters of the picture, the right one the right three quarters, each over the full
/// width.
class CMK3DRenderEffect : public CBasedVideoImageEffect {
public:
    CMK3DRenderEffect();

    /// Does not call the base's, so "duration" changes nothing but its text.
    void OnSetProperty(const std::string& name, PropertyNode& node) override;
    void InnerProcFrame(ImagePostion* position, int time, IRawVideoFrame* pFrame) override;

    /// The views of a picture, which stay this object's. They use the shape of the last frame processed.
    IRawVideoFrame* PrepareLV(IRawVideoFrame* frame);
    IRawVideoFrame* PrepareRV(IRawVideoFrame* frame);

private:
    /// Whether a view begins at the picture's left, or at a quarter of it.
    enum class Side { Left, Right };

    void RenderViews(IRawVideoFrame* frame);
    IRawVideoFrame* Prepare(FramePtr& view, IRawVideoFrame* frame, Side side);
    void StretchPixels(const kernels::Plane32& to, const kernels::Plane32& from, size_t offset);
    void StretchSamples(const kernels::Plane8& to, const kernels::Plane8& from, size_t offset);
    uint8_t* FindPlaces(size_t columns, size_t columnLimit, size_t rows, size_t offset);

    CAVBase3DRender m_Renderer;
    CTrans2D3D m_Converter;
    int m_nMode;
    int m_nDepth; ///< a quarter of the last frame's width once views have been rendered
    int m_nSwap = 0;
    double m_dRatio = 0; ///< share of the picture's width that a view shows
    FramePtr m_pLeftView, m_pRightView;
    std::vector<uint32_t> m_Columns, m_Rows;
    Scratch m_Scratch;
};

} // namespace AVBased
