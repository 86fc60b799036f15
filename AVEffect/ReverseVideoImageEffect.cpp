#include "AVEffect/ReverseVideoImageEffect.h"

#include <cassert>

#include "AVEffect/support/frame_planes.h"
#include "aveffect/catalogue/distortions.h"
#include "kernels/reverse.h"

namespace AVBased {

void mirror_rgba32_c(unsigned char* pBuffer, unsigned pixels, unsigned pitch, unsigned rows) {
    assert(pBuffer != NULL);
    Kernels<kernels::ReverseKernels>().mirrorRgba32({pBuffer, pixels, pitch, rows});
}

void mirror_component_c(unsigned char* pBuffer, unsigned bytes, unsigned pitch, unsigned rows) {
    assert(pBuffer != NULL);
    Kernels<kernels::ReverseKernels>().mirrorComponent({pBuffer, bytes, pitch, rows});
}

void vertical_reverse_rgba32_c(unsigned char* pBuffer, unsigned pixels, unsigned pitch, unsigned rows) {
    assert(pBuffer != NULL);
    Kernels<kernels::ReverseKernels>().flipComponent(Plane32{pBuffer, pixels, pitch, rows}.Bytes());
}

void vertical_reverse_component_c(unsigned char* pBuffer, unsigned bytes, unsigned pitch, unsigned rows) {
    assert(pBuffer != NULL);
    Kernels<kernels::ReverseKernels>().flipComponent({pBuffer, bytes, pitch, rows});
}

void mirror_vertical_reverse_rgba32_c(unsigned char* pBuffer, unsigned pixels, unsigned pitch,
                                      unsigned rows) {
    assert(pBuffer != NULL);
    Kernels<kernels::ReverseKernels>().oppositeRgba32({pBuffer, pixels, pitch, rows});
}

void mirror_vertical_reverse_component_c(unsigned char* pBuffer, unsigned bytes, unsigned pitch,
                                         unsigned rows) {
    assert(pBuffer != NULL);
    Kernels<kernels::ReverseKernels>().oppositeComponent({pBuffer, bytes, pitch, rows});
}

CReverseVideoImageEffect::CReverseVideoImageEffect()
    : CBasedVideoImageEffect(catalogue::kReverse) {
    Bind("mirror", &m_nMirror);
    Bind("vertical", &m_nVertical);
}

namespace {

// The kernels by m_nMirror and m_nVertical.
using ReverseKernel = decltype(&mirror_component_c);
constexpr struct {
    ReverseKernel packed, planar;
} kWays[2][2] = {{{}, {vertical_reverse_rgba32_c, vertical_reverse_component_c}},
                 {{mirror_rgba32_c, mirror_component_c},
                  {mirror_vertical_reverse_rgba32_c, mirror_vertical_reverse_component_c}}};

} // namespace

void CReverseVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* pFrame) {
    assert(pFrame);
    const auto& way = kWays[m_nMirror == 1][m_nVertical == 1];
    if (way.packed) DrawPlanes(pFrame, Planes::All, way.packed, way.planar);
}

} // namespace AVBased
