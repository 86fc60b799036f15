#pragma once
/// Emboss, mosaic, mirage, transparency, colour filter and noise.
#include <atomic>

#include "AVEffect/CBasedVideoEffect.h"
#include "AVEffect/support/colour_value.h"
#include "AVEffect/support/frame_planes.h"
#include "AVEffect/support/noise_table.h"
#include "AVEffect/support/scratch.h"

namespace AVBased {

class CEmbossVideoImageEffect : public CBasedVideoImageEffect {
public:
    CEmbossVideoImageEffect();
    void InnerProcFrame(ImagePostion* position, int time, IRawVideoFrame* pFrame) override;

private:
    int m_nLevel;
};

/// Emboss in place. The kernels differ in what overflows how, see kernels::EmbossKernels. A null buffer fails
/// an assertion.
void emboss_effect_rgba32_c(unsigned char* pBuffer, unsigned pixels, unsigned pitch, unsigned rows,
                            int level);
void emboss_effect_rgba32_mmx(unsigned char* pBuffer, unsigned pixels, unsigned pitch, unsigned rows,
                              int level);
void emboss_effect_component_c(unsigned char* pBuffer, unsigned bytes, unsigned pitch, unsigned rows,
                               int level);
void emboss_effect_component_mmx(unsigned char* pBuffer, unsigned bytes, unsigned pitch, unsigned rows,
                                 int level);

/// What emboss effects of this process call: the _c kernels until one is made on a processor that chooses the
/// _mmx ones.
using EmbossKernel = void (*)(unsigned char*, unsigned, unsigned, unsigned, int);
extern std::atomic<EmbossKernel> emboss_effect_rgba32;
extern std::atomic<EmbossKernel> emboss_effect_component;

class CMosaicVideoImageEffect : public CBasedVideoImageEffect {
public:
    CMosaicVideoImageEffect();
    void InnerProcFrame(ImagePostion* position, int time, IRawVideoFrame* pFrame) override;

private:
    void MosaicRgba32Effect(Plane32 plane) const;
    void MosaicRgba32EffectMMX(Plane32 plane) const;
    void MosaicComponentEffect(const PlanarView& view);
    bool HasBlocks(size_t width, size_t height, unsigned smallestStep) const;

    unsigned m_nX1, m_nY1, m_nX2, m_nY2; // two opposite corners, in pixels
    unsigned m_nStep;                    // blocks are 2^step pixels wide and high
    unsigned m_nUseMMX;
    Scratch m_Scratch;
};

class CMirageVideoImageEffect : public CBasedVideoImageEffect {
public:
    CMirageVideoImageEffect();
    void InnerProcFrame(ImagePostion* position, int time, IRawVideoFrame* pFrame) override;

private:
    bool IsSeen() const;
    void Blend(Plane32 plane, Plane32 copy);
    void Blend(const PlanarView& view, const PlanarView& copy);
    void MirageRgba32Effect(Plane32 plane, Plane32 copy);
    void MirageRgba32EffectMMX(Plane32 plane, Plane32 copy);
    void MirageComponentEffect(const PlanarView& view, const PlanarView& copy);

    unsigned m_nWidth; // 200ths of the picture that it is enlarged by
    unsigned m_nAlpha; // percent, roughly
    unsigned m_nUseMMX;
    Scratch m_Scratch;
};

class CTransparencyAjustEffect : public CBasedVideoImageEffect {
public:
    CTransparencyAjustEffect();
    void OnSetProperty(const std::string& name, PropertyNode& node) override;
    void InnerProcFrame(ImagePostion* position, int time, IRawVideoFrame* pFrame) override;

private:
    unsigned Level() const { return static_cast<unsigned>(m_nScale < 0 ? 0 : m_nScale); } // no alpha below 0
    void Scale(Plane32 plane) const;
    void Scale(Plane8 plane) const;

    int m_nScale; // 256ths
};

class CColorFilterEffect : public CBasedVideoImageEffect {
public:
    CColorFilterEffect();
    void OnSetProperty(const std::string& name, PropertyNode& node) override;
    void InnerProcFrame(ImagePostion* position, int time, IRawVideoFrame* pFrame) override;

private:
    void FilterRGBA32Effect(Plane32 plane) const;
    void FilterComponentEffect(const PlanarView& view);

    int m_nScope; // how far the colour may be missed
    unsigned m_nColor;
    YuvColour m_Yuv;
    Scratch m_Scratch;
};

class CAddNoiseVideoImageEffect : public CBasedVideoImageEffect {
public:
    CAddNoiseVideoImageEffect();
    void OnSetProperty(const std::string& name, PropertyNode& node) override;
    void InnerProcFrame(ImagePostion* position, int time, IRawVideoFrame* pFrame) override;

private:
    // The First ones draw the noise that is missing, then do the same.
    void AddNoise(Plane32 plane);
    void AddNoise(Plane8 plane);
    void AddNoiseRgba32EffectFirst(Plane32 plane);
    void AddNoiseRgba32Effect(Plane32 plane) const;
    void AddNoiseComponentEffectFirst(Plane8 plane);
    void AddNoiseComponentEffect(Plane8 plane) const;
    unsigned Gain() const { return 20 * m_nShift + 40; }

    unsigned m_nShift; // 0 to 31
    NoiseTable m_PixelNoise{NoiseTable::Layout::Pixels};
    NoiseTable m_SampleNoise{NoiseTable::Layout::Samples};
};

} // namespace AVBased
