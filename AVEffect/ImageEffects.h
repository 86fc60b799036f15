#pragma once
/// Colour and filter effects, and the factory of all video effects.
#include "AVEffect/CBasedVideoEffect.h"
#include "AVEffect/frame_planes.h"
#include "AVEffect/kernels/colour.h"
#include "AVEffect/scratch.h"

namespace AVBased {

/// A 3x3 filter that runs over every plane, alpha included, a number of times ("..._count").
class CFilterEffect : public CBasedVideoImageEffect {
public:
    /// Runs one pass over the frame's planes; true when a byte changed.
    void InnerProcFrame(ImagePostion* position, int time, IRawVideoFrame* frame) override;

protected:
    CFilterEffect(const char* name, const char* countName);
    virtual bool FilterFrame(IRawVideoFrame* frame) = 0;

    Scratch m_Scratch;

private:
    const char* m_strCountName;
    unsigned m_nCount = 1;
};

class CSimpleGaussBlurEffect : public CFilterEffect {
public:
    CSimpleGaussBlurEffect();

protected:
    bool FilterFrame(IRawVideoFrame* frame) override;
};

class CSimpleLaplacianSharpenEffect : public CFilterEffect {
public:
    CSimpleLaplacianSharpenEffect();

protected:
    bool FilterFrame(IRawVideoFrame* frame) override;
};

class CGrayEffect : public CBasedVideoImageEffect {
public:
    CGrayEffect();
    void InnerProcFrame(ImagePostion* position, int time, IRawVideoFrame* frame) override;
};

class CFlipColorEffect : public CBasedVideoImageEffect {
public:
    CFlipColorEffect();
    void InnerProcFrame(ImagePostion* position, int time, IRawVideoFrame* frame) override;
};

class CInvertEffect : public CBasedVideoImageEffect {
public:
    CInvertEffect();
    void InnerProcFrame(ImagePostion* position, int time, IRawVideoFrame* frame) override;
};

class CAgedFilmEffect : public CBasedVideoImageEffect {
public:
    CAgedFilmEffect();
    void InnerProcFrame(ImagePostion* position, int time, IRawVideoFrame* frame) override;
};

/// "brightness", "contrast" and "saturation" from -100 to 100.
class CBrightnessContrastEffect : public CBasedVideoImageEffect {
public:
    CBrightnessContrastEffect();
    void OnSetProperty(const std::string& name, PropertyNode& node) override;
    void InnerProcFrame(ImagePostion* position, int time, IRawVideoFrame* frame) override;

private:
    void RebuildTable();
    void ProcPacked(Plane32 plane) const;
    void ProcPlanar(const PlanarView& view) const;

    kernels::ByteTable m_Table; // packed samples through brightness and contrast
    bool m_bTableActive = false;
    double m_dSaturation = 0;
    double m_dBrightness = 0;
    double m_dContrast = 0;
};

/// Blurs one plane of bytes in place, once: 1-2-1 by 1-2-1, divided by 16. Throws CBaseException 10021007
/// when memory for two rows is short.
void gauss_blur_component_c(unsigned char* plane, unsigned width, unsigned pitch, unsigned height);

/// Sharpens one plane of bytes in place, once: nine times each sample less its eight neighbours.
void laplacian_sharpen_component_c(unsigned char* plane, unsigned width, unsigned pitch, unsigned height);

} // namespace AVBased
