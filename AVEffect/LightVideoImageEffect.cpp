#include "AVEffect/LightVideoImageEffect.h"

#include <cassert>

#include "AVEffect/support/frame_clone.h"
#include "AVEffect/support/mmx_choice.h"
#include "BaseTools/guarded.h"
#include "aveffect/catalogue/looks.h"
#include "kernels/edge_light.h"

namespace AVBased {

using BaseTool::Raise;

// Spotlight

CSpotlightVideoImageEffect::CSpotlightVideoImageEffect()
    : CBasedVideoImageEffect(catalogue::kSpotlight) {
    Bind("spotlight_x", &m_nX);
    Bind("spotlight_y", &m_nY);
    Bind("spotlight_r", &m_nRadius);
    Bind("spotlight_density", &m_nDensity);
    Bind("spotlight_color", &m_nColor);
    m_Yuv = YuvColour::FromRgb(m_nColor);
    int brightness = 0;
    StartFrom("spotlight_brightness", &brightness);
    SetBrightness(brightness);
}

void CSpotlightVideoImageEffect::OnSetProperty(const std::string& name, PropertyNode& node) {
    CBasedVideoEffect::OnSetProperty(name, node);
    if (name == "spotlight_brightness") SetBrightness(node.value.int32);
    if (name == "spotlight_color") m_Yuv = YuvColour::FromRgb(m_nColor);
}

// A centre left of the picture or above it counts as one far beyond.
bool CSpotlightVideoImageEffect::Reaches(size_t width, size_t height) const {
    if (static_cast<unsigned>(m_nX) > width || static_cast<unsigned>(m_nY) > height) return false;
    if (m_nRadius < 2) Raise(kUnknownException, "spotlight_r must be at least 2; the frame is left as it is");
    return true;
}

kernels::Spot CSpotlightVideoImageEffect::Spot() const {
    return {static_cast<size_t>(m_nX), static_cast<size_t>(m_nY), static_cast<size_t>(m_nRadius),
            int64_t{m_nDensity} * 65536 / 100, m_nBrightness};
}

void CSpotlightVideoImageEffect::SpotlightRgba32Effect(Plane32 plane) {
    if (Reaches(plane.width, plane.rows))
        Kernels<kernels::SpotlightKernels>().spotlightRgba32(
            plane, Spot(), m_nColor, m_Scratch.Require(kernels::SpotScratchBytes(plane.width)));
}

void CSpotlightVideoImageEffect::SpotlightComponentEffect(const PlanarView& view) {
    if (!Reaches(view.y.width, view.y.rows)) return;
    const kernels::SpotPlanes planes = {
        view.y, view.u, view.v, m_Yuv.y, m_Yuv.u, m_Yuv.v, view.horizontalShift, view.verticalShift};
    Kernels<kernels::SpotlightKernels>().spotlightComponent(
        planes, Spot(), m_Scratch.Require(kernels::SpotScratchBytes(view.y.width)));
}

void CSpotlightVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* pFrame) {
    ForPicture(
        pFrame, [this](Plane32 plane) { SpotlightRgba32Effect(plane); },
        [this](const PlanarView& view) { SpotlightComponentEffect(view); });
}

// Edge light

CEdgeLightVideoImageEffect::CEdgeLightVideoImageEffect()
    : CBasedVideoImageEffect(catalogue::kEdgeLight) {
    Bind("edgelight_level", &m_nLevel);
}

void CEdgeLightVideoImageEffect::EdgeLightRgba32Effect(Plane32 plane) const {
    if (plane.Empty()) return;
    assert(plane.data != NULL);
    Kernels<kernels::EdgeLightKernels>().edgeLightRgba32(plane, m_nLevel);
}

void CEdgeLightVideoImageEffect::EdgeLightCompYEffect(Plane8 plane) const {
    if (plane.Empty()) return;
    assert(plane.data != NULL);
    Kernels<kernels::EdgeLightKernels>().edgeLightComponent(plane, m_nLevel, 0);
}

// No slope is no colour.
void CEdgeLightVideoImageEffect::EdgeLightCompUVEffect(Plane8 plane) const {
    if (plane.Empty()) return;
    assert(plane.data != NULL);
    Kernels<kernels::EdgeLightKernels>().edgeLightComponent(plane, m_nLevel, 128);
}

void CEdgeLightVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* pFrame) {
    ForFormat(
        pFrame, [this](Plane32 plane) { EdgeLightRgba32Effect(plane); },
        [this](const PlanarView& view) {
            EdgeLightCompYEffect(view.y);
            EdgeLightCompUVEffect(view.u);
            EdgeLightCompUVEffect(view.v);
        });
}

// Radiate

CRadiateVideoImageEffect::CRadiateVideoImageEffect()
    : CBasedVideoImageEffect(catalogue::kRadiate)
    , m_bUseMMX(ChoosesMmxKernels()) {
    Bind("radiate_x", &m_nX);
    Bind("radiate_y", &m_nY);
    Bind("radiate_level", &m_nLevel);
}

kernels::Rays CRadiateVideoImageEffect::RaysToCentre() const {
    return {static_cast<uint32_t>(m_nX) * 256, static_cast<uint32_t>(m_nY) * 256, m_nLevel};
}

uint8_t* CRadiateVideoImageEffect::RequireFor(size_t width, size_t lumaRows, unsigned horizontalShift) {
    return m_Scratch.Require(kernels::RadiateScratchBytes(width, lumaRows, horizontalShift));
}

void CRadiateVideoImageEffect::RadiateRgba32Effect(Plane32 plane, Plane32 copy) {
    assert(plane.data != NULL && copy.data != NULL);
    Kernels<kernels::RadiateKernels>().radiateRgba32(plane, copy, RaysToCentre(),
                                                     RequireFor(plane.width, plane.rows));
}

void CRadiateVideoImageEffect::RadiateRgba32EffectMMX(Plane32 plane, Plane32 copy) {
    assert(plane.data != NULL && copy.data != NULL);
    Kernels<kernels::RadiateKernels>().radiateRgba32Mmx(plane, copy, RaysToCentre(),
                                                        RequireFor(plane.width, plane.rows));
}

void CRadiateVideoImageEffect::RadiateComponentEffect(const PlanarView& view, const PlanarView& copy) {
    AssertMemory(view);
    AssertMemory(copy);
    const kernels::Rays rays = RaysToCentre();
    const kernels::LumaShape luma = {view.y.width, view.y.rows, view.horizontalShift, view.verticalShift};
    Kernels<kernels::RadiateKernels>().radiateLuma(view.y, copy.y, rays, RequireFor(luma.width, luma.rows));
    for (const auto& [plane, from] : {std::pair{view.u, copy.u}, {view.v, copy.v}})
        Kernels<kernels::RadiateKernels>().radiateChroma(
            plane, from, rays, luma, RequireFor(plane.width, luma.rows, luma.horizontalShift));
}

void CRadiateVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* pFrame) {
    ForPictureAndCopy(
        pFrame,
        [this](Plane32 plane, Plane32 from) {
            m_bUseMMX ? RadiateRgba32EffectMMX(plane, from) : RadiateRgba32Effect(plane, from);
        },
        [this](const PlanarView& view, const PlanarView& from) { RadiateComponentEffect(view, from); });
}

} // namespace AVBased
