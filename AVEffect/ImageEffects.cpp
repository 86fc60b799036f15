#include "AVEffect/ImageEffects.h"

#include <algorithm>
#include <cassert>

#include "AVEffect/factory.h"
#include "AVEffect/kernels/arithmetic.h"
#include "AVEffect/kernels/filter3x3.h"
#include "BaseTools/guarded.h"

namespace AVBased {

using BaseTool::Raise;
using kernels::TruncToInt32;

namespace {

// More passes than this would keep the host waiting for hours; no picture of any size needs them.
constexpr unsigned kMostPasses = 65535;

// One pass of a 3x3 filter over every plane of a frame, alpha included. True when a byte changed.
template <class Packed, class Planar>
bool FilterPlanes(IRawVideoFrame* frame, Scratch& scratch, Packed packed, Planar planar) {
    bool changed = false;
    const auto filterPlane = [&](Plane8 plane) {
        if (planar(plane, scratch.Require(kernels::FilterScratchBytes(plane.width)))) changed = true;
    };
    ForFormat(
        frame,
        [&](Plane32 plane) {
            changed = packed(plane, scratch.Require(kernels::FilterScratchBytes(plane.width * 4)));
        },
        [&](const PlanarView& view) {
            filterPlane(view.y);
            filterPlane(view.u);
            filterPlane(view.v);
            if (view.hasAlpha) filterPlane(view.alpha);
        });
    return changed;
}

} // namespace

CFilterEffect::CFilterEffect(const char* name, const char* countName)
    : CBasedVideoImageEffect(name)
    , m_strCountName(countName) {
    Bind(countName, &m_nCount);
}

void CFilterEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    assert(frame);
    if (m_nCount > kMostPasses)
        Raise(kUnknownException,
              std::string(m_strCountName) + " must lie in 0 to 65535; the frame is left as it is");
    // Once a pass changes nothing, no later one does.
    for (unsigned pass = 0; pass < m_nCount; ++pass)
        if (!FilterFrame(frame)) break;
}

CSimpleGaussBlurEffect::CSimpleGaussBlurEffect()
    : CFilterEffect(effectNameSimpleGaussBlur, "blur_count") {}

bool CSimpleGaussBlurEffect::FilterFrame(IRawVideoFrame* frame) {
    return FilterPlanes(frame, m_Scratch, kernels::BlurRgba32, kernels::BlurComponent);
}

CSimpleLaplacianSharpenEffect::CSimpleLaplacianSharpenEffect()
    : CFilterEffect(effectNameSimpleLaplacianSharpen, "sharpen_count") {}

bool CSimpleLaplacianSharpenEffect::FilterFrame(IRawVideoFrame* frame) {
    return FilterPlanes(frame, m_Scratch, kernels::SharpenRgba32, kernels::SharpenComponent);
}

void gauss_blur_component_c(unsigned char* plane, unsigned width, unsigned pitch, unsigned height) {
    Scratch scratch;
    kernels::BlurComponent({plane, width, pitch, height},
                           scratch.Require(kernels::FilterScratchBytes(width)));
}

void laplacian_sharpen_component_c(unsigned char* plane, unsigned width, unsigned pitch, unsigned height) {
    Scratch scratch;
    kernels::SharpenComponent({plane, width, pitch, height},
                              scratch.Require(kernels::FilterScratchBytes(width)));
}

CGrayEffect::CGrayEffect()
    : CBasedVideoImageEffect(effectNameGray) {}

void CGrayEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    assert(frame);
    // 127 and not 128: the middle that this plug-in's colour effects share.
    ForFormat(frame, kernels::GrayRgba32, [](const PlanarView& view) {
        kernels::FillPitch(view.u, 127);
        kernels::FillPitch(view.v, 127);
    });
}

CFlipColorEffect::CFlipColorEffect()
    : CBasedVideoImageEffect(effectNameFlipColor) {}

void CFlipColorEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    assert(frame);
    ForFormat(frame, kernels::FlipColorRgba32,
              [](const PlanarView& view) { kernels::SwapPlanes(view.u, view.v); });
}

CInvertEffect::CInvertEffect()
    : CBasedVideoImageEffect(effectNameInvert) {}

void CInvertEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    assert(frame);
    ForFormat(frame, kernels::InvertRgba32, [](const PlanarView& view) {
        kernels::InvertComponent(view.y);
        kernels::InvertComponent(view.u);
        kernels::InvertComponent(view.v);
    });
}

CAgedFilmEffect::CAgedFilmEffect()
    : CBasedVideoImageEffect(effectNameAgedFilm) {}

void CAgedFilmEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    assert(frame);
    ForFormat(frame, kernels::AgedFilmRgba32, [](const PlanarView& view) {
        kernels::FillPitch(view.u, 117);
        kernels::FillPitch(view.v, 136);
    });
}

CBrightnessContrastEffect::CBrightnessContrastEffect()
    : CBasedVideoImageEffect(effectNameBrightnessContrast) {
    RebuildTable();
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
    RebuildTable();
}

namespace {

int32_t ContrastGain(double contrast) { return TruncToInt32((contrast / 100 + 1) * 256); }

// Twice as steep as it looks: 1 at -50, 0 at -100, 4 at 100.
int32_t SaturationGain(double saturation) { return TruncToInt32((saturation + 100) * 5.12); }

} // namespace

void CBrightnessContrastEffect::RebuildTable() {
    m_bTableActive = m_dBrightness != 0 || m_dContrast != 0;
    const kernels::MiddleGain map = {ContrastGain(m_dContrast),
                                     kernels::WrappingAdd(TruncToInt32(m_dBrightness * 255 / 100), 127)};
    for (int i = 0; i < 256; ++i) m_Table[i] = Apply(map, kernels::TruncToByte(i));
}

void CBrightnessContrastEffect::ProcPacked(Plane32 plane) const {
    if (m_dSaturation != 0)
        kernels::SaturateRgba32(plane, m_Table, SaturationGain(m_dSaturation));
    else if (m_bTableActive)
        kernels::TableRgba32(plane, m_Table);
}

void CBrightnessContrastEffect::ProcPlanar(const PlanarView& view) const {
    // A unit of brightness counts 1.27 here and 2.55 in the packed table.
    if (m_bTableActive)
        kernels::MiddleGainComponent(view.y, {ContrastGain(m_dContrast),
                                              kernels::WrappingAdd(TruncToInt32(m_dBrightness * 1.27), 127)});
    if (m_dSaturation == 0) return;
    const kernels::MiddleGain chroma = {SaturationGain(m_dSaturation), 127};
    kernels::MiddleGainComponent(view.u, chroma);
    kernels::MiddleGainComponent(view.v, chroma);
}

void CBrightnessContrastEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* frame) {
    assert(frame);
    ForFormat(
        frame, [this](Plane32 plane) { ProcPacked(plane); },
        [this](const PlanarView& view) { ProcPlanar(view); });
}

AVEFFECT_CONSTRUCT_VIDEO(CSimpleGaussBlurEffect)
AVEFFECT_CONSTRUCT_VIDEO(CSimpleLaplacianSharpenEffect)
AVEFFECT_CONSTRUCT_VIDEO(CGrayEffect)
AVEFFECT_CONSTRUCT_VIDEO(CFlipColorEffect)
AVEFFECT_CONSTRUCT_VIDEO(CInvertEffect)
AVEFFECT_CONSTRUCT_VIDEO(CAgedFilmEffect)
AVEFFECT_CONSTRUCT_VIDEO(CBrightnessContrastEffect)

} // namespace AVBased

// The factory's table, one row for each of the catalogue's.
#define AVEFFECT_DECLARE_ROW(Class, ...)                                                                     \
    namespace AVBased {                                                                                      \
    class Class;                                                                                             \
    template <>                                                                                              \
    IVideoProc* ConstructVideo<Class>(IAVManager*, const std::string&);                                      \
    }
AVEFFECT_VIDEO_EFFECTS(AVEFFECT_DECLARE_ROW)

namespace {
using namespace AVBased;
#define AVEFFECT_FACTORY_ROW(Class, name, ...) FactoryRow<IVideoProc>{name, &ConstructVideo<Class>},
constexpr FactoryRow<IVideoProc> kRows[] = {AVEFFECT_VIDEO_EFFECTS(AVEFFECT_FACTORY_ROW)};
} // namespace

extern "C" [[gnu::visibility("default")]] IVideoProc* CreateVideoProc(IAVManager* manager, const char* name) {
    return ConstructByName<IVideoProc>(kRows, manager, name);
}
