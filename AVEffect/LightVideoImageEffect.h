#pragma once
/// A spotlight, glowing edges, and rays of light.
#include "AVEffect/CBasedVideoEffect.h"
#include "AVEffect/support/colour_value.h"
#include "AVEffect/support/frame_planes.h"
#include "AVEffect/support/scratch.h"
#include "kernels/radiate.h"
#include "kernels/spotlight.h"

namespace AVBased {

/// Mixes a disc of the picture with a colour and brightens it, less and less towards the rim, which is three
/// quarters of the radius wide.
class CSpotlightVideoImageEffect : public CBasedVideoImageEffect {
public:
    CSpotlightVideoImageEffect();
    void OnSetProperty(const std::string& name, PropertyNode& node) override;
    void InnerProcFrame(ImagePostion* position, int time, IRawVideoFrame* pFrame) override;

private:
    void SpotlightRgba32Effect(Plane32 plane);
    void SpotlightComponentEffect(const PlanarView& view);
    bool Reaches(size_t width, size_t height) const;
    kernels::Spot Spot() const;

    void SetBrightness(int percent) { m_nBrightness = int64_t{percent} * 256 / 100; }

    int m_nX, m_nY; // the centre
    int m_nRadius;
    int64_t m_nBrightness; // added, in 255ths; any percentage fits
    unsigned m_nColor;
    int m_nDensity; // percent
    YuvColour m_Yuv;
    Scratch m_Scratch;
};

/// Turns the picture into the steepness of its samples.
class CEdgeLightVideoImageEffect : public CBasedVideoImageEffect {
public:
    CEdgeLightVideoImageEffect();
    void InnerProcFrame(ImagePostion* position, int time, IRawVideoFrame* pFrame) override;

private:
    void EdgeLightRgba32Effect(Plane32 plane) const;
    void EdgeLightCompYEffect(Plane8 plane) const;
    void EdgeLightCompUVEffect(Plane8 plane) const;

    int m_nLevel;
};

/// Blurs the picture along the rays from a centre, and brightens it.
class CRadiateVideoImageEffect : public CBasedVideoImageEffect {
public:
    CRadiateVideoImageEffect();
    void InnerProcFrame(ImagePostion* position, int time, IRawVideoFrame* pFrame) override;

private:
    void RadiateRgba32Effect(Plane32 plane, Plane32 copy);
    void RadiateRgba32EffectMMX(Plane32 plane, Plane32 copy);
    void RadiateComponentEffect(const PlanarView& view, const PlanarView& copy);
    kernels::Rays RaysToCentre() const;
    uint8_t* RequireFor(size_t width, size_t lumaRows, unsigned horizontalShift = 0);

    int m_nX, m_nY; // the centre
    int m_nLevel;   // 16384ths of its distance that a sample goes on at a time
    bool m_bUseMMX;
    Scratch m_Scratch;
};

} // namespace AVBased
