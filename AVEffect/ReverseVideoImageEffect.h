#pragma once
/// Mirrors the picture, flips it, or both.
#include "AVEffect/CBasedVideoEffect.h"

namespace AVBased {

class CReverseVideoImageEffect : public CBasedVideoImageEffect {
public:
    CReverseVideoImageEffect();
    void InnerProcFrame(ImagePostion* position, int time, IRawVideoFrame* pFrame) override;

private:
    // Each is on with 1 alone.
    int m_nMirror;
    int m_nVertical;
};

/// Exchange the halves of a plane of pixels or bytes in place, the middle of odd sizes left out: left and
/// right, top and bottom, or each quarter and the opposite one (nothing then of a single row or column). A
/// null buffer fails an assertion.
void mirror_rgba32_c(unsigned char* pBuffer, unsigned pixels, unsigned pitch, unsigned rows);
void mirror_component_c(unsigned char* pBuffer, unsigned bytes, unsigned pitch, unsigned rows);
void vertical_reverse_rgba32_c(unsigned char* pBuffer, unsigned pixels, unsigned pitch, unsigned rows);
void vertical_reverse_component_c(unsigned char* pBuffer, unsigned bytes, unsigned pitch, unsigned rows);
void mirror_vertical_reverse_rgba32_c(unsigned char* pBuffer, unsigned pixels, unsigned pitch, unsigned rows);
void mirror_vertical_reverse_component_c(unsigned char* pBuffer, unsigned bytes, unsigned pitch,
                                         unsigned rows);

} // namespace AVBased
