#pragma once
/// Relief.
#include "AVEffect/CBasedVideoEffect.h"
#include "AVEffect/frame_planes.h"
#include "AVEffect/kernels/relief.h"
#include "AVEffect/scratch.h"

namespace AVBased {

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

} // namespace AVBased
