#pragma once
/// Fades over the effect's span: by alpha, which leaves the colour to the host's compositing, or towards a
/// colour.
#include <atomic>
#include <optional>

#include "AVEffect/CBasedVideoEffect.h"
#include "AVEffect/support/colour_value.h"
#include "AVEffect/support/frame_planes.h"

namespace AVBased {

/// What all fades share: the level, in 256ths of the picture, from the frame's place in the span.
class CFadeEffect : public CBasedVideoImageEffect {
protected:
    /// From position and duration, both in the unit of the frames' times and position not above duration.
    using RawLevel = unsigned (*)(unsigned position, unsigned duration);

    /// The level's floor and ceiling follow the effect's first and last property.
    CFadeEffect(const EffectInfo& effect, const char* name, RawLevel rawLevel);

    /// Nothing for frames beyond the span. Throws CBaseException 10021008 at the start of an empty span.
    std::optional<unsigned> LevelAt(int time, IRawVideoFrame* frame);

private:
    unsigned m_nMin;
    unsigned m_nMax;
    RawLevel m_pRawLevel;
};

/// Scales alpha in BGRA, YUVA420P and YUVA444P; other pictures have none.
class CAlphaFadeEffect : public CFadeEffect {
public:
    void InnerProcFrame(ImagePostion* position, int time, IRawVideoFrame* pFrame) override;

protected:
    CAlphaFadeEffect(const EffectInfo& effect, RawLevel rawLevel);
};

class CFadeInVideoImageEffect : public CAlphaFadeEffect {
public:
    CFadeInVideoImageEffect();
};

class CFadeOutVideoImageEffect : public CAlphaFadeEffect {
public:
    CFadeOutVideoImageEffect();
};

/// Mixes the picture with a colour; alpha stays.
class CDirectFadeEffect : public CFadeEffect {
public:
    void OnSetProperty(const std::string& name, PropertyNode& node) override;
    void InnerProcFrame(ImagePostion* position, int time, IRawVideoFrame* pFrame) override;

protected:
    /// The colour follows the effect's second property.
    CDirectFadeEffect(const EffectInfo& effect, const char* name, RawLevel rawLevel);

private:
    void MixPlanes(const PlanarView& view, unsigned level) const;

    const char* m_strColourName;
    unsigned m_nColour = 0; // 0xFFRRGGBB once it is set, 0x00RRGGBB before
    YuvColour m_Yuv;
};

class CDirectFadeInEffect : public CDirectFadeEffect {
public:
    CDirectFadeInEffect();
};

class CDirectFadeOutEffect : public CDirectFadeEffect {
public:
    CDirectFadeOutEffect();
};

/// Mixes pixels with a colour, in place: B, G and R become (c * level + k * (256 - level)) >> 8, limited to
/// 0..255, with k the colour's byte (0xRRGGBB); A stays. A null buffer fails an assertion.
void fade_in_out_direct_rgba32_c(unsigned char* pBuffer, unsigned pixels, unsigned pitch, unsigned rows,
                                 unsigned level, unsigned colour);
void fade_in_out_direct_rgba32_mmx(unsigned char* pBuffer, unsigned pixels, unsigned pitch, unsigned rows,
                                   unsigned level, unsigned colour);
/// The same for a plane of bytes and one value.
void fade_in_out_direct_yuva_c(unsigned char* pBuffer, unsigned bytes, unsigned pitch, unsigned rows,
                               unsigned level, unsigned value);
void fade_in_out_direct_yuva_mmx(unsigned char* pBuffer, unsigned bytes, unsigned pitch, unsigned rows,
                                 unsigned level, unsigned value);

/// What direct fades of this process call: the _c kernels until a direct fade is made on a processor that
/// chooses the _mmx ones.
using DirectFadeKernel = void (*)(unsigned char*, unsigned, unsigned, unsigned, unsigned, unsigned);
extern std::atomic<DirectFadeKernel> fade_in_out_direct_rgba32;
extern std::atomic<DirectFadeKernel> fade_in_out_direct_component;

} // namespace AVBased
