#include "AVEffect/ImageEffects.h"

#include <cassert>
#include <cmath>

#include "BaseTools/guarded.h"
#include "aveffect/catalogue/filters.h"

namespace AVBased {

using BaseTool::Raise;

namespace {

// More passes than this would keep the host waiting for hours; no picture of any size needs them.
constexpr unsigned kMostPasses = 65535;

} // namespace

CFilterEffect::CFilterEffect(const EffectInfo& effect, PackedKernel packed, PlanarKernel planar)
    : CBasedVideoImageEffect(effect)
    , m_strCountName(effect.properties.front().name)
    , m_pPacked(packed)
    , m_pPlanar(planar) {
    Bind(m_strCountName, &m_nCount);
}

namespace {

// Planes with fewer than three samples or rows are not touched.
void RequireMemoryOf(IRawVideoFrame* frame) {
    const auto require = [](const auto& plane) {
        if (plane.width >= 3 && plane.rows >= 3) RequireMemory(plane);
    };
    ForFormat(frame, require, [&](const PlanarView& view) {
        for (const Plane8& plane : {view.y, view.u, view.v, view.alpha}) require(plane);
    });
}

} // namespace

// One pass over every plane, alpha included. False when no byte changed, which only track finds out.
bool CFilterEffect::FilterFrame(IRawVideoFrame* frame, bool track) {
    bool changed = false;
    const auto filterPlane = [&](Plane8 plane) {
        changed |= m_pPlanar(plane, m_Scratch.Require(kernels::FilterScratchBytes(plane.width)), track);
    };
    ForFormat(
        frame,
        [&](Plane32 plane) {
            changed =
                m_pPacked(plane, m_Scratch.Require(kernels::FilterScratchBytes(plane.width * 4)), track);
        },
        [&](const PlanarView& view) {
            filterPlane(view.y);
            filterPlane(view.u);
            filterPlane(view.v);
            if (view.hasAlpha) filterPlane(view.alpha);
        });
    return changed;
}

void CFilterEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    assert(frame);
    if (m_nCount > kMostPasses)
        Raise(kUnknownException,
              std::string(m_strCountName) + " must lie in 0 to 65535; the frame is left as it is");
    if (m_nCount == 0) return;
    RequireMemoryOf(frame);
    // Once a pass changes nothing, no later one does.
    for (unsigned pass = 0; pass < m_nCount; ++pass)
        if (!FilterFrame(frame, pass + 1 < m_nCount)) break;
}

CSimpleGaussBlurEffect::CSimpleGaussBlurEffect()
    : CFilterEffect(catalogue::kGaussBlur, Kernels<kernels::Filter3x3Kernels>().blurRgba32,
                    Kernels<kernels::Filter3x3Kernels>().blurComponent) {}

CSimpleLaplacianSharpenEffect::CSimpleLaplacianSharpenEffect()
    : CFilterEffect(catalogue::kLaplacianSharpen, Kernels<kernels::Filter3x3Kernels>().sharpenRgba32,
                    Kernels<kernels::Filter3x3Kernels>().sharpenComponent) {}

void gauss_blur_component_c(unsigned char* plane, unsigned width, unsigned pitch, unsigned height) {
    Scratch scratch;
    Kernels<kernels::Filter3x3Kernels>().blurComponent(
        {plane, width, pitch, height}, scratch.Require(kernels::FilterScratchBytes(width)), false);
}

void laplacian_sharpen_component_c(unsigned char* plane, unsigned width, unsigned pitch, unsigned height) {
    Scratch scratch;
    Kernels<kernels::Filter3x3Kernels>().sharpenComponent(
        {plane, width, pitch, height}, scratch.Require(kernels::FilterScratchBytes(width)), false);
}

CColourEffect::CColourEffect(const EffectInfo& effect)
    : CBasedVideoImageEffect(effect)
    , m_Kernels(Kernels<kernels::ColourKernels>()) {}

namespace {

void FillChroma(const PlanarView& view, uint8_t u, uint8_t v) {
    RequireMemory({view.u, view.v});
    kernels::FillPitch(view.u, u);
    kernels::FillPitch(view.v, v);
}

} // namespace

CGrayEffect::CGrayEffect()
    : CColourEffect(catalogue::kGray) {}

void CGrayEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    // 127 and not 128: the middle that this plug-in's colour effects share.
    ForFormat(
        frame, [this](Plane32 plane) { m_Kernels.grayRgba32(RequireMemory(plane)); },
        [](const PlanarView& view) { FillChroma(view, 127, 127); });
}

CFlipColorEffect::CFlipColorEffect()
    : CColourEffect(catalogue::kFlipColor) {}

void CFlipColorEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    ForFormat(
        frame, [this](Plane32 plane) { m_Kernels.flipColorRgba32(RequireMemory(plane)); },
        [this](const PlanarView& view) {
            RequireMemory({view.u, view.v});
            m_Kernels.swapPlanes(view.u, view.v);
        });
}

CInvertEffect::CInvertEffect()
    : CColourEffect(catalogue::kInvert) {}

void CInvertEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    ForFormat(
        frame, [this](Plane32 plane) { m_Kernels.invertRgba32(RequireMemory(plane)); },
        [this](const PlanarView& view) {
            RequireMemory({view.y, view.u, view.v});
            for (const Plane8& plane : {view.y, view.u, view.v}) m_Kernels.invertComponent(plane);
        });
}

CAgedFilmEffect::CAgedFilmEffect()
    : CColourEffect(catalogue::kAgedFilm) {}

void CAgedFilmEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    ForFormat(
        frame, [this](Plane32 plane) { m_Kernels.agedFilmRgba32(RequireMemory(plane)); },
        [](const PlanarView& view) { FillChroma(view, 117, 136); });
}

CBrightnessContrastEffect::CBrightnessContrastEffect()
    : CColourEffect(catalogue::kBrightnessContrast) {
    StartFrom("brightness", &m_dBrightness);
    StartFrom("contrast", &m_dContrast);
    StartFrom("saturation", &m_dSaturation);
}

void CBrightnessContrastEffect::OnSetProperty(const std::string& name, PropertyNode& node) {
    CBasedVideoEffect::OnSetProperty(name, node);
    // All floating-point properties of this effect have one range, so the name need not be looked at. The
    // clamped number is what the registry keeps; NaN passes.
    if (node.type == kDouble) {
        if (node.value.number < -100) node.value.number = -100;
        if (node.value.number > 100) node.value.number = 100;
    }
    m_dBrightness = GetProperty(std::string("brightness"))->value.number;
    m_dContrast = GetProperty(std::string("contrast"))->value.number;
    m_dSaturation = GetProperty(std::string("saturation"))->value.number;
}

namespace {

// Twice as steep as it looks: 1 at -50, 0 at -100, 4 at 100.
int32_t SaturationGain(double saturation) { return static_cast<int32_t>((saturation + 100) * 5.12); }

} // namespace

kernels::MiddleGain CBrightnessContrastEffect::Map(double brightnessOffset) const {
    return {static_cast<int32_t>((m_dContrast / 100 + 1) * 256),
            static_cast<int32_t>(brightnessOffset) + 127};
}

// Of NaN no byte can be made; where it isn't asked for, it does no harm.
void CBrightnessContrastEffect::RequireNumbers(bool map, bool saturation) const {
    if ((map && (std::isnan(m_dBrightness) || std::isnan(m_dContrast))) ||
        (saturation && std::isnan(m_dSaturation)))
        Raise(kUnknownException,
              "brightness, contrast and saturation must lie in -100 to 100; the frame is left as it is");
}

// With brightness and contrast 0 the gain is the identity.
void CBrightnessContrastEffect::ProcPacked(Plane32 plane) const {
    const bool saturates = m_dSaturation != 0;
    if (plane.Empty() || !(saturates || Active())) return;
    RequireNumbers(true, saturates);
    RequireMemory(plane);
    const kernels::MiddleGain map = Map(m_dBrightness * 255 / 100);
    if (saturates)
        m_Kernels.saturateRgba32(plane, map, SaturationGain(m_dSaturation));
    else
        m_Kernels.middleGainRgba32(plane, map);
}

void CBrightnessContrastEffect::ProcPlanar(const PlanarView& view) const {
    const bool changesLuma = Active() && !view.y.Empty();
    const bool saturates = m_dSaturation != 0 && !(view.u.Empty() && view.v.Empty());
    RequireNumbers(changesLuma, saturates);
    if (changesLuma) RequireMemory(view.y);
    if (saturates) RequireMemory({view.u, view.v});
    // A unit of brightness counts 1.27 here and 2.55 in packed pictures.
    if (changesLuma) m_Kernels.middleGainComponent(view.y, Map(m_dBrightness * 1.27));
    if (!saturates) return;
    const kernels::MiddleGain chroma = {SaturationGain(m_dSaturation), 127};
    m_Kernels.middleGainComponent(view.u, chroma);
    m_Kernels.middleGainComponent(view.v, chroma);
}

void CBrightnessContrastEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    ForFormat(
        frame, [this](Plane32 plane) { ProcPacked(plane); },
        [this](const PlanarView& view) { ProcPlanar(view); });
}

} // namespace AVBased
