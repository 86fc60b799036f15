#include "AVEffect/MorphologyVideoImageEffect.h"

#include <cassert>

#include "aveffect/catalogue/filters.h"
#include "kernels/morphology.h"

namespace AVBased {

CMorphologyEffect::CMorphologyEffect(const EffectInfo& effect, PackedKernel packed, PlanarKernel planar)
    : CBasedVideoImageEffect(effect)
    , m_pPacked(packed)
    , m_pPlanar(planar) {}

void CMorphologyEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* pFrame) {
    const auto filter = [this](auto kernel, const auto& plane, size_t widthBytes) {
        assert(plane.data != NULL);
        kernel(plane, m_Scratch.Require(kernels::MorphologyScratchBytes(widthBytes)));
    };
    ForPlanes(
        pFrame, Planes::Colours, [&](Plane32 plane) { filter(m_pPacked, plane, plane.width * 4); },
        [&](Plane8 plane) { filter(m_pPlanar, plane, plane.width); });
}

CDilateVideoImageEffect::CDilateVideoImageEffect()
    : CMorphologyEffect(catalogue::kDilate, Kernels<kernels::MorphologyKernels>().dilateRgba32,
                        Kernels<kernels::MorphologyKernels>().dilateComponent) {}

CErodeVideoImageEffect::CErodeVideoImageEffect()
    : CMorphologyEffect(catalogue::kErode, Kernels<kernels::MorphologyKernels>().erodeRgba32,
                        Kernels<kernels::MorphologyKernels>().erodeComponent) {}

} // namespace AVBased
