#include "AVEffect/PaintVideoImageEffect.h"

#include <cassert>
#include <cmath>
#include <numbers>

#include "AVEffect/factory.h"
#include "aveffect/base_media.h"

namespace AVBased {

// Relief

namespace {

constexpr int kInitialAngle = 40;

// In degrees. A neighbour's weight is the cosine of the angle between its direction and the light's way; each
// is truncated by itself, so that opposite ones may differ by one.
kernels::ReliefWeights WeightsOf(int angle) {
    using std::numbers::pi;
    const double x = angle * pi / 180;
    const auto weight = [](double difference) { return static_cast<int16_t>(std::cos(difference) * 256); };
    return {{weight(x + pi / 4), weight(x + pi / 2), weight(x + 3 * pi / 4), weight(x), 256, weight(x + pi),
             weight(x - pi / 4), weight(x - pi / 2), weight(x - 3 * pi / 4)}};
}

const kernels::ReliefKernels& ReliefKernels() {
    return kernels::SelectReliefKernels(AVBasedGetCPUFeatures());
}

} // namespace

CReliefVideoImageEffect::CReliefVideoImageEffect()
    : CBasedVideoImageEffect(effectNameRelief)
    , m_Weights(WeightsOf(kInitialAngle)) {}

void CReliefVideoImageEffect::OnSetProperty(const std::string& name, PropertyNode& node) {
    CBasedVideoEffect::OnSetProperty(name, node);
    if (name == "relief_angle") m_Weights = WeightsOf(node.value.int32);
}

void CReliefVideoImageEffect::ReliefRgba32Effect(Plane32 plane) {
    assert(plane.data != NULL);
    ReliefKernels().reliefRgba32(plane, m_Weights,
                                 m_Scratch.Require(kernels::ReliefScratchBytes(plane.width * 4)));
}

void CReliefVideoImageEffect::ReliefComponentEffect(Plane8 plane) {
    assert(plane.data != NULL);
    ReliefKernels().reliefComponent(plane, m_Weights,
                                    m_Scratch.Require(kernels::ReliefScratchBytes(plane.width)));
}

void CReliefVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* pFrame) {
    assert(pFrame);
    ForFormat(
        pFrame,
        [this](Plane32 plane) {
            if (!plane.Empty()) ReliefRgba32Effect(plane);
        },
        [this](const PlanarView& view) {
            for (const Plane8& plane : {view.y, view.u, view.v})
                if (!plane.Empty()) ReliefComponentEffect(plane);
        });
}

AVEFFECT_CONSTRUCT_VIDEO(CReliefVideoImageEffect)

} // namespace AVBased
