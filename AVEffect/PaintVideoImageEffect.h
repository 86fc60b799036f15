#pragma once
/// Pencil strokes, a soft border of one colour, relief, oil paint.
#include "AVEffect/CBasedVideoEffect.h"
#include "AVEffect/support/colour_value.h"
#include "AVEffect/support/frame_planes.h"
#include "AVEffect/support/portrait_mixes.h"
#include "AVEffect/support/scratch.h"
#include "kernels/oil.h"
#include "kernels/relief.h"

namespace AVBased {

class CStrokeVideoImageEffect : public CBasedVideoImageEffect {
public:
    CStrokeVideoImageEffect();
    void OnSetProperty(const std::string& name, PropertyNode& node) override;
    void InnerProcFrame(ImagePostion* position, int time, IRawVideoFrame* pFrame) override;

private:
    void SetPressure(int pressure) { m_nThreshold = 100 - static_cast<unsigned>(pressure); }
    void StrokeRgba32Effect(Plane32 plane);
    void StrokeComponentEffect(const PlanarView& view) const;

    unsigned m_nThreshold; // of contrast; pressures above 100 make it so large that all is white
    Scratch m_Scratch;
};

class CPortraitVideoImageEffect : public CBasedVideoImageEffect {
public:
    CPortraitVideoImageEffect();
    void OnSetProperty(const std::string& name, PropertyNode& node) override;
    void InnerProcFrame(ImagePostion* position, int time, IRawVideoFrame* pFrame) override;

private:
    void PortraitRgba32Effect(Plane32 plane);
    void PortraitComponentEffect(const PlanarView& view);
    unsigned BandWidth() const; // throws CBaseException 10021008 when it is negative

    int m_nWidth;          // of the bands, in pixels
    unsigned m_nColor = 0; // 0xAARRGGBB; only colours that were set are opaque
    YuvColour m_Yuv;
    PortraitMixes m_Mixes;
};

/// Lights the picture from a side: each sample loses to its neighbours there and gains from those opposite.
class CReliefVideoImageEffect : public CBasedVideoImageEffect {
public:
    CReliefVideoImageEffect();
    void OnSetProperty(const std::string& name, PropertyNode& node) override;
    void InnerProcFrame(ImagePostion* position, int time, IRawVideoFrame* pFrame) override;

private:
    void ReliefRgba32Effect(Plane32 plane);
    void ReliefComponentEffect(Plane8 plane);

    kernels::ReliefWeights m_Weights;
    Scratch m_Scratch;
};

class COilPaintingVideoImageEffect : public CBasedVideoImageEffect {
public:
    COilPaintingVideoImageEffect();
    void InnerProcFrame(ImagePostion* position, int time, IRawVideoFrame* pFrame) override;

private:
    void OilPaintingRgba32Effect(Plane32 plane);
    void OilPaintingComponentEffect(const PlanarView& view);
    /// Throws CBaseException 10021008 for what no neighbourhood or number of bins can be.
    kernels::OilBrush BrushFor(size_t width, size_t height) const;

    int m_nRadius; // of the neighbourhood, in pixels
    int m_nLevels; // of brightness
    Scratch m_Scratch;
};

} // namespace AVBased
