#pragma once
/// Colour and filter effects.
#include "AVEffect/CBasedVideoEffect.h"
#include "AVEffect/support/frame_planes.h"
#include "AVEffect/support/scratch.h"
#include "kernels/colour.h"
#include "kernels/filter3x3.h"

namespace AVBased {

/// A 3x3 filter that runs over every plane, alpha included, a number of times ("..._count").
class CFilterEffect : public CBasedVideoImageEffect {
public:
    void InnerProcFrame(ImagePostion* position, int time, IRawVideoFrame* frame) override;

protected:
    using PackedKernel = bool (*)(Plane32 plane, uint8_t* scratch, bool track) noexcept;
    using PlanarKernel = bool (*)(Plane8 plane, uint8_t* scratch, bool track) noexcept;

    /// The effect has one property, the number of passes.
    CFilterEffect(const EffectInfo& effect, PackedKernel packed, PlanarKernel planar);

private:
    bool FilterFrame(IRawVideoFrame* frame, bool track);

    const char* m_strCountName;
    PackedKernel m_pPacked;
    PlanarKernel m_pPlanar;
    Scratch m_Scratch;
    unsigned m_nCount;
};

class CSimpleGaussBlurEffect : public CFilterEffect {
public:
    CSimpleGaussBlurEffect();
};

class CSimpleLaplacianSharpenEffect : public CFilterEffect {
public:
    CSimpleLaplacianSharpenEffect();
};

/// An effect that changes every sample on its own.
class CColourEffect : public CBasedVideoImageEffect {
protected:
    explicit CColourEffect(const EffectInfo& effect);

    const kernels::ColourKernels& m_Kernels;
};

class CGrayEffect : public CColourEffect {
public:
    CGrayEffect();
    void InnerProcFrame(ImagePostion* position, int time, IRawVideoFrame* frame) override;
};

class CFlipColorEffect : public CColourEffect {
public:
    CFlipColorEffect();
    void InnerProcFrame(ImagePostion* position, int time, IRawVideoFrame* frame) override;
};

class CInvertEffect : public CColourEffect {
public:
    CInvertEffect();
    void InnerProcFrame(ImagePostion* position, int time, IRawVideoFrame* frame) override;
};

class CAgedFilmEffect : public CColourEffect {
public:
    CAgedFilmEffect();
    void InnerProcFrame(ImagePostion* position, int time, IRawVideoFrame* frame) override;
};

/// "brightness", "contrast" and "saturation" from -100 to 100.
class CBrightnessContrastEffect : public CColourEffect {
public:
    CBrightnessContrastEffect();
    void OnSetProperty(const std::string& name, PropertyNode& node) override;
    void InnerProcFrame(ImagePostion* position, int time, IRawVideoFrame* frame) override;

private:
    bool Active() const { return m_dBrightness != 0 || m_dContrast != 0; }
    kernels::MiddleGain Map(double brightnessOffset) const;
    void RequireNumbers(bool map, bool saturation) const;
    void ProcPacked(Plane32 plane) const;
    void ProcPlanar(const PlanarView& view) const;

    double m_dSaturation;
    double m_dBrightness;
    double m_dContrast;
};

/// Blurs one plane of bytes in place, once: 1-2-1 by 1-2-1, divided by 16. Throws CBaseException 10021007
/// when memory for two rows is short.
void gauss_blur_component_c(unsigned char* plane, unsigned width, unsigned pitch, unsigned height);

/// Sharpens one plane of bytes in place, once: nine times each sample less its eight neighbours.
void laplacian_sharpen_component_c(unsigned char* plane, unsigned width, unsigned pitch, unsigned height);

} // namespace AVBased
