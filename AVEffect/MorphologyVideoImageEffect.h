#pragma once
/// Dilate and erode: each sample becomes the largest or the smallest of a 3x3 block.
#include "AVEffect/CBasedVideoEffect.h"
#include "AVEffect/support/frame_planes.h"
#include "AVEffect/support/scratch.h"

namespace AVBased {

/// Filters pixels, or the planes of luma and chroma each by itself; alpha stays.
class CMorphologyEffect : public CBasedVideoImageEffect {
public:
    void InnerProcFrame(ImagePostion* position, int time, IRawVideoFrame* pFrame) override;

protected:
    using PackedKernel = void (*)(Plane32 plane, uint8_t* scratch) noexcept;
    using PlanarKernel = void (*)(Plane8 plane, uint8_t* scratch) noexcept;

    CMorphologyEffect(const EffectInfo& effect, PackedKernel packed, PlanarKernel planar);

private:
    PackedKernel m_pPacked;
    PlanarKernel m_pPlanar;
    Scratch m_Scratch;
};

class CDilateVideoImageEffect : public CMorphologyEffect {
public:
    CDilateVideoImageEffect();
};

class CErodeVideoImageEffect : public CMorphologyEffect {
public:
    CErodeVideoImageEffect();
};

} // namespace AVBased
