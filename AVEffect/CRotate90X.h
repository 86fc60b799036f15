#pragma once
/// Turns by quarters, which fit the picture into the frame it has.
///
/// A half turn fills the frame. A quarter turn makes the picture as large as the frame allows: along the
/// frame's shorter side, of a pixels, it has a pixels; along the longer one, of b, it has a * a / b, rounded
/// to the nearest whole number, halves upwards, at least 1. It stands in the middle, rounded towards the left
/// or the top; what is around it is black. In a square frame nothing is left around it.
///
/// In YUV420P the size and the position along the longer side are even instead: the size is the nearest even
/// number, at least 2, the position is rounded down to one. Chroma has half of both, and all of its plane
/// along the shorter side.
///
/// How the picture is reduced stands in kernels/turn.h.
#include "AVEffect/CBasedVideoEffect.h"
#include "AVEffect/support/frame_planes.h"
#include "AVEffect/support/scratch.h"
#include "aveffect/base_property.h"
#include "kernels/turn.h"

namespace AVBased {

class CRotate90X : public CBasedVideoImageEffect, public IAVBaseProperty {
public:
    CRotate90X();
    void InnerProcFrame(ImagePostion* position, int time, IRawVideoFrame* pFrame) override;
    bool GetProp(const char* name, int* value) override;

private:
    void TurnPacked(Plane32 plane, unsigned quarters);
    void TurnPlanar(const PlanarView& view, unsigned quarters);
    void TurnPart(const Plane8& plane, const kernels::PlaneArea& area, unsigned quarters, uint8_t black);

    unsigned m_nDirection;       // quarter turns clockwise, modulo 4
    kernels::PlaneArea m_Area{}; // the last frame's picture, in pixels
    Scratch m_Scratch;
};

} // namespace AVBased
