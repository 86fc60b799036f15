#include "AVEffect/PaintVideoImageEffect.h"

#include <algorithm>
#include <cassert>
#include <numbers>

#include "AVEffect/support/elementary.h"
#include "BaseTools/guarded.h"
#include "aveffect/catalogue/filters.h"
#include "aveffect/catalogue/looks.h"
#include "kernels/colour.h"
#include "kernels/stroke.h"

namespace AVBased {

using BaseTool::Raise;

// Stroke

CStrokeVideoImageEffect::CStrokeVideoImageEffect()
    : CBasedVideoImageEffect(catalogue::kStroke) {
    int pressure = 0;
    StartFrom("stroke_pressure", &pressure);
    SetPressure(pressure);
}

void CStrokeVideoImageEffect::OnSetProperty(const std::string& name, PropertyNode& node) {
    CBasedVideoEffect::OnSetProperty(name, node);
    if (name == "stroke_pressure") SetPressure(node.value.int32);
}

void CStrokeVideoImageEffect::StrokeRgba32Effect(Plane32 plane) {
    assert(plane.data != NULL);
    Kernels<kernels::StrokeKernels>().strokeRgba32(
        plane, m_nThreshold, m_Scratch.Require(kernels::StrokeScratchBytes(plane.width)));
}

// A warm tint, whatever there is to draw.
void CStrokeVideoImageEffect::StrokeComponentEffect(const PlanarView& view) const {
    AssertMemory(view);
    kernels::FillPitch(view.u, 117);
    kernels::FillPitch(view.v, 136);
    if (!view.y.Empty()) Kernels<kernels::StrokeKernels>().strokeComponent(view.y, m_nThreshold);
}

void CStrokeVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* pFrame) {
    assert(pFrame);
    if (pFrame->GetPixelFormat() == YUV410P) return; // the one planar format that was never drawn
    ForFormat(
        pFrame,
        [this](Plane32 plane) {
            if (!plane.Empty()) StrokeRgba32Effect(plane);
        },
        [this](const PlanarView& view) { StrokeComponentEffect(view); });
}

// Portrait

CPortraitVideoImageEffect::CPortraitVideoImageEffect()
    : CBasedVideoImageEffect(catalogue::kPortrait) {
    Bind("portrait_width", &m_nWidth);
}

void CPortraitVideoImageEffect::OnSetProperty(const std::string& name, PropertyNode& node) {
    CBasedVideoEffect::OnSetProperty(name, node);
    if (name != "portrait_fillcolor") return;
    m_nColor = static_cast<unsigned>(node.value.int32) | 0xFF000000u;
    m_Yuv = YuvColour::FromRgb(m_nColor);
}

unsigned CPortraitVideoImageEffect::BandWidth() const {
    if (m_nWidth < 0)
        Raise(kUnknownException, "portrait_width must be 0 or more; the frame is left as it is");
    return static_cast<unsigned>(m_nWidth);
}

void CPortraitVideoImageEffect::PortraitRgba32Effect(Plane32 plane) {
    const PortraitGeometry geometry = {BandWidth(), plane.width, plane.rows, 0, 0};
    Kernels<kernels::PortraitKernels>().portraitRgba32(
        plane, m_Mixes.Of(geometry, plane.width, plane.rows, 4, m_nColor));
}

void CPortraitVideoImageEffect::PortraitComponentEffect(const PlanarView& view) {
    const unsigned width = BandWidth();
    const auto mix = [&](Plane8 plane, uint8_t value, unsigned horizontalShift, unsigned verticalShift) {
        // Samples that no luma belongs to stay.
        plane.width = std::min(plane.width, ((view.y.width - 1) >> horizontalShift) + 1);
        plane.rows = std::min(plane.rows, ((view.y.rows - 1) >> verticalShift) + 1);
        if (plane.Empty()) return;
        const PortraitGeometry geometry = {width, view.y.width, view.y.rows, horizontalShift, verticalShift};
        Kernels<kernels::PortraitKernels>().portraitComponent(
            plane, m_Mixes.Of(geometry, plane.width, plane.rows, 1, value));
    };
    mix(view.y, m_Yuv.y, 0, 0);
    mix(view.u, m_Yuv.u, view.horizontalShift, view.verticalShift);
    mix(view.v, m_Yuv.v, view.horizontalShift, view.verticalShift);
}

void CPortraitVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* pFrame) {
    assert(pFrame);
    if (m_nWidth == 0) return; // no band
    ForPicture(
        pFrame, [this](Plane32 plane) { PortraitRgba32Effect(plane); },
        [this](const PlanarView& view) { PortraitComponentEffect(view); });
}

// Relief

namespace {

// In degrees. A neighbour's weight is the cosine of the angle between its direction and the light's way; each
// is truncated by itself, so that opposite ones may differ by one.
kernels::ReliefWeights WeightsOf(int angle) {
    using std::numbers::pi;
    const double x = angle * pi / 180;
    const auto weight = [](double difference) { return static_cast<int16_t>(Cosine(difference) * 256); };
    return {{weight(x + pi / 4), weight(x + pi / 2), weight(x + 3 * pi / 4), weight(x), 256, weight(x + pi),
             weight(x - pi / 4), weight(x - pi / 2), weight(x - 3 * pi / 4)}};
}

} // namespace

CReliefVideoImageEffect::CReliefVideoImageEffect()
    : CBasedVideoImageEffect(catalogue::kRelief) {
    int angle = 0;
    StartFrom("relief_angle", &angle);
    m_Weights = WeightsOf(angle);
}

void CReliefVideoImageEffect::OnSetProperty(const std::string& name, PropertyNode& node) {
    CBasedVideoEffect::OnSetProperty(name, node);
    if (name == "relief_angle") m_Weights = WeightsOf(node.value.int32);
}

void CReliefVideoImageEffect::ReliefRgba32Effect(Plane32 plane) {
    assert(plane.data != NULL);
    Kernels<kernels::ReliefKernels>().reliefRgba32(
        plane, m_Weights, m_Scratch.Require(kernels::ReliefScratchBytes(plane.width * 4)));
}

void CReliefVideoImageEffect::ReliefComponentEffect(Plane8 plane) {
    assert(plane.data != NULL);
    Kernels<kernels::ReliefKernels>().reliefComponent(
        plane, m_Weights, m_Scratch.Require(kernels::ReliefScratchBytes(plane.width)));
}

void CReliefVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* pFrame) {
    ForPlanes(
        pFrame, Planes::Colours, [this](Plane32 plane) { ReliefRgba32Effect(plane); },
        [this](Plane8 plane) { ReliefComponentEffect(plane); });
}

// Oil painting

COilPaintingVideoImageEffect::COilPaintingVideoImageEffect()
    : CBasedVideoImageEffect(catalogue::kOilPainting) {
    Bind("oilpainting_brushsize", &m_nRadius);
    Bind("oilpainting_coarseness", &m_nLevels);
}

// Beyond the picture's size a radius reaches nothing new, and from 256 levels on each brightness has one of
// its own.
kernels::OilBrush COilPaintingVideoImageEffect::BrushFor(size_t width, size_t height) const {
    if (m_nRadius < 0)
        Raise(kUnknownException, "oilpainting_brushsize must be 0 or more; the frame is left as it is");
    if (m_nLevels < 0)
        Raise(kUnknownException, "oilpainting_coarseness must be 0 or more; the frame is left as it is");
    const size_t radius = std::min(static_cast<size_t>(m_nRadius), std::max(width, height));
    if (radius > kernels::OilMemory::kLargestRadius)
        Raise(kUnknownException,
              "oilpainting_brushsize is too large for this picture; the frame is left as it is");
    return {radius, static_cast<uint32_t>(std::min(m_nLevels, 256))};
}

void COilPaintingVideoImageEffect::OilPaintingRgba32Effect(Plane32 plane) {
    const kernels::OilBrush brush = BrushFor(plane.width, plane.rows);
    const size_t memory = kernels::OilMemory(plane.width, plane.rows, brush).total;
    Kernels<kernels::OilKernels>().oilRgba32(plane, brush, m_Scratch.Require(memory));
}

void COilPaintingVideoImageEffect::OilPaintingComponentEffect(const PlanarView& view) {
    const kernels::OilBrush brush = BrushFor(view.y.width, view.y.rows);
    const size_t memory = kernels::OilMemory(view.y.width, view.y.rows, brush).total;
    Kernels<kernels::OilKernels>().oilComponent(view.y, view.u, view.v, view.horizontalShift,
                                                view.verticalShift, brush, m_Scratch.Require(memory));
}

void COilPaintingVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* pFrame) {
    ForPicture(
        pFrame, [this](Plane32 plane) { OilPaintingRgba32Effect(plane); },
        [this](const PlanarView& view) { OilPaintingComponentEffect(view); });
}

} // namespace AVBased
