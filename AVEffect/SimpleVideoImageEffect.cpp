#include "AVEffect/SimpleVideoImageEffect.h"

#include <algorithm>
#include <cassert>
#include <cstdlib>
#include <ctime>

#include "AVEffect/support/frame_clone.h"
#include "AVEffect/support/mmx_choice.h"
#include "BaseTools/guarded.h"
#include "aveffect/catalogue/filters.h"
#include "aveffect/catalogue/looks.h"
#include "kernels/emboss.h"
#include "kernels/fade.h"
#include "kernels/key.h"
#include "kernels/mirage.h"
#include "kernels/mosaic.h"
#include "kernels/noise.h"

namespace AVBased {

using BaseTool::Raise;

// Emboss

void emboss_effect_rgba32_c(unsigned char* pBuffer, unsigned pixels, unsigned pitch, unsigned rows,
                            int level) {
    assert(pBuffer != NULL);
    Kernels<kernels::EmbossKernels>().embossRgba32({pBuffer, pixels, pitch, rows}, level);
}

void emboss_effect_rgba32_mmx(unsigned char* pBuffer, unsigned pixels, unsigned pitch, unsigned rows,
                              int level) {
    assert(pBuffer != NULL);
    Kernels<kernels::EmbossKernels>().embossRgba32Mmx({pBuffer, pixels, pitch, rows}, level);
}

void emboss_effect_component_c(unsigned char* pBuffer, unsigned bytes, unsigned pitch, unsigned rows,
                               int level) {
    assert(pBuffer != NULL);
    Kernels<kernels::EmbossKernels>().embossComponent({pBuffer, bytes, pitch, rows}, level);
}

void emboss_effect_component_mmx(unsigned char* pBuffer, unsigned bytes, unsigned pitch, unsigned rows,
                                 int level) {
    assert(pBuffer != NULL);
    Kernels<kernels::EmbossKernels>().embossComponentMmx({pBuffer, bytes, pitch, rows}, level);
}

std::atomic<EmbossKernel> emboss_effect_rgba32 = emboss_effect_rgba32_c;
std::atomic<EmbossKernel> emboss_effect_component = emboss_effect_component_c;

CEmbossVideoImageEffect::CEmbossVideoImageEffect()
    : CBasedVideoImageEffect(catalogue::kEmboss) {
    Bind("emboss_level", &m_nLevel);
    if (ChoosesMmxKernels()) {
        emboss_effect_rgba32 = emboss_effect_rgba32_mmx;
        emboss_effect_component = emboss_effect_component_mmx;
    }
}

void CEmbossVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* pFrame) {
    DrawPlanes(pFrame, Planes::Colours, emboss_effect_rgba32.load(), emboss_effect_component.load(),
               m_nLevel);
}

// Mosaic

CMosaicVideoImageEffect::CMosaicVideoImageEffect()
    : CBasedVideoImageEffect(catalogue::kMosaic)
    , m_nUseMMX(ChoosesMmxKernels()) {
    Bind("mosaic_x1", &m_nX1);
    Bind("mosaic_y1", &m_nY1);
    Bind("mosaic_x2", &m_nX2);
    Bind("mosaic_y2", &m_nY2);
    Bind("mosaic_step", &m_nStep);
}

namespace {

constexpr unsigned kLargestMosaicStep = 30;

kernels::MosaicArea AreaBetween(unsigned x1, unsigned y1, unsigned x2, unsigned y2, unsigned step) {
    const unsigned wholeBlocks = ~((1u << step) - 1);
    return {std::min(x1, x2), std::min(y1, y2), std::max(x1, x2) & wholeBlocks,
            std::max(y1, y2) & wholeBlocks, step};
}

} // namespace

bool CMosaicVideoImageEffect::HasBlocks(size_t width, size_t height, unsigned smallestStep) const {
    return m_nStep >= smallestStep && m_nStep <= kLargestMosaicStep && std::max(m_nX1, m_nX2) <= width &&
           std::max(m_nY1, m_nY2) <= height;
}

void CMosaicVideoImageEffect::MosaicRgba32Effect(Plane32 plane) const {
    if (HasBlocks(plane.width, plane.rows, 1))
        Kernels<kernels::MosaicKernels>().mosaicRgba32(plane,
                                                       AreaBetween(m_nX1, m_nY1, m_nX2, m_nY2, m_nStep));
}

// Two pixels at a time took blocks of four and more.
void CMosaicVideoImageEffect::MosaicRgba32EffectMMX(Plane32 plane) const {
    if (m_nStep >= 2) MosaicRgba32Effect(plane);
}

void CMosaicVideoImageEffect::MosaicComponentEffect(const PlanarView& view) {
    if (!HasBlocks(view.y.width, view.y.rows, 2)) return;
    const kernels::MosaicArea area = AreaBetween(m_nX1, m_nY1, m_nX2, m_nY2, m_nStep);
    const kernels::MosaicKernels& mosaic = Kernels<kernels::MosaicKernels>();
    mosaic.mosaicLuma(view.y, area);
    for (const Plane8& plane : {view.u, view.v})
        mosaic.mosaicChroma(plane, area, view.y.width, view.horizontalShift, view.verticalShift,
                            m_Scratch.Require(plane.width));
}

void CMosaicVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* pFrame) {
    ForPicture(
        pFrame,
        [this](Plane32 plane) { m_nUseMMX ? MosaicRgba32EffectMMX(plane) : MosaicRgba32Effect(plane); },
        [this](const PlanarView& view) { MosaicComponentEffect(view); });
}

// Mirage

CMirageVideoImageEffect::CMirageVideoImageEffect()
    : CBasedVideoImageEffect(catalogue::kMirage)
    , m_nUseMMX(ChoosesMmxKernels()) {
    Bind("mirage_width", &m_nWidth);
    Bind("mirage_alpha", &m_nAlpha);
}

namespace {

// In 32 bits that wrap, 16.16 fixed point: the picture, 1 + width / 200 times as large, about its middle.
kernels::Mirage MirageOf(unsigned enlargement, unsigned alpha, size_t width, size_t height) {
    const unsigned scale = 200 + enlargement;
    const unsigned step = (200u << 16) / scale;
    const unsigned zoom = (scale << 16) / 200;
    const auto offset = [&](size_t size) {
        const auto pixels = static_cast<unsigned>(size);
        return (((zoom * pixels) >> 16) - pixels) * step >> 1;
    };
    return {offset(width), offset(height), step, ((alpha << 7) + 5120) / 100, width, height, 0, 0};
}

} // namespace

void CMirageVideoImageEffect::MirageRgba32Effect(Plane32 plane, Plane32 copy) {
    assert(plane.data != NULL);
    Kernels<kernels::MirageKernels>().mirageRgba32(
        plane, copy, MirageOf(m_nWidth, m_nAlpha, plane.width, plane.rows),
        m_Scratch.Require(kernels::MirageScratchBytes(plane.width)));
}

void CMirageVideoImageEffect::MirageRgba32EffectMMX(Plane32 plane, Plane32 copy) {
    assert(plane.data != NULL);
    Kernels<kernels::MirageKernels>().mirageRgba32Mmx(
        plane, copy, MirageOf(m_nWidth, m_nAlpha, plane.width, plane.rows),
        m_Scratch.Require(kernels::MirageScratchBytes(plane.width)));
}

void CMirageVideoImageEffect::MirageComponentEffect(const PlanarView& view, const PlanarView& copy) {
    AssertMemory(view);
    AssertMemory(copy);
    kernels::Mirage mirage = MirageOf(m_nWidth, m_nAlpha, view.y.width, view.y.rows);
    const auto blend = [&](const Plane8& plane, const Plane8& from) {
        Kernels<kernels::MirageKernels>().mirageComponent(
            plane, from, mirage, m_Scratch.Require(kernels::MirageScratchBytes(plane.width)));
    };
    blend(view.y, copy.y);
    mirage.horizontalShift = view.horizontalShift;
    mirage.verticalShift = view.verticalShift;
    blend(view.u, copy.u);
    blend(view.v, copy.v);
}

void CMirageVideoImageEffect::Blend(Plane32 plane, Plane32 copy) {
    m_nUseMMX ? MirageRgba32EffectMMX(plane, copy) : MirageRgba32Effect(plane, copy);
}

void CMirageVideoImageEffect::Blend(const PlanarView& view, const PlanarView& copy) {
    MirageComponentEffect(view, copy);
}

// Throws where the picture would have no size.
bool CMirageVideoImageEffect::IsSeen() const {
    if (m_nAlpha > 100) return false;
    if (200 + m_nWidth == 0)
        Raise(kUnknownException, "mirage_width must not be -200; the frame is left as it is");
    return true;
}

void CMirageVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* pFrame) {
    const FrameClone copy = CloneFrame(pFrame); // cloned whatever follows
    const auto blend = [this](const auto&... views) { Blend(views...); };
    if (IsSeen()) ForFormat(pFrame, copy.get(), blend, blend);
}

// Transparency

CTransparencyAjustEffect::CTransparencyAjustEffect()
    : CBasedVideoImageEffect(catalogue::kTransparency) {
    Bind("transparency_scale", &m_nScale);
}

void CTransparencyAjustEffect::OnSetProperty(const std::string& name, PropertyNode& node) {
    CBasedVideoEffect::OnSetProperty(name, node);
    // From percent to 256ths, whatever was set: another property set later takes it for percent again.
    m_nScale = (m_nScale << 8) / 100;
}

void CTransparencyAjustEffect::Scale(Plane32 plane) const {
    assert(plane.data != NULL);
    Kernels<kernels::FadeKernels>().scaleAlphaRgba32(plane, Level());
}

void CTransparencyAjustEffect::Scale(Plane8 plane) const {
    assert(plane.data != NULL);
    Kernels<kernels::FadeKernels>().scaleComponent(plane, Level());
}

void CTransparencyAjustEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* pFrame) {
    assert(pFrame);
    const auto scale = [this](const auto& plane) { Scale(plane); };
    if (m_nScale != 0) ForPlanes(pFrame, Planes::Alpha, scale, scale);
}

// Colour filter

CColorFilterEffect::CColorFilterEffect()
    : CBasedVideoImageEffect(catalogue::kColorFilter) {
    Bind("filter_scope", &m_nScope);
    Bind("filter_color", &m_nColor);
    m_Yuv = YuvColour::FromRgb(m_nColor);
}

void CColorFilterEffect::OnSetProperty(const std::string& name, PropertyNode& node) {
    CBasedVideoEffect::OnSetProperty(name, node);
    if (name == "filter_color") m_Yuv = YuvColour::FromRgb(m_nColor);
}

// The scope counts in each byte, but the comparison is of all 24 bits as one number.
void CColorFilterEffect::FilterRGBA32Effect(Plane32 plane) const {
    if (plane.Empty()) return;
    AssertMemory(plane);
    constexpr int64_t kWhite = 0xFFFFFF;
    const int64_t colour = m_nColor & kWhite, scope = int64_t{m_nScope} * 0x010101;
    const int64_t low = std::max<int64_t>(colour - scope, 0), high = std::min(colour + scope, kWhite);
    Kernels<kernels::KeyKernels>().keyRgba32(plane, static_cast<uint32_t>(low), static_cast<uint32_t>(high));
}

void CColorFilterEffect::FilterComponentEffect(const PlanarView& view) {
    if (!view.hasAlpha || view.y.Empty() || view.alpha.Empty()) return;
    AssertMemory(view);
    assert(view.alpha.data != NULL);
    const auto around = [this](int sample) {
        const int64_t scope = m_nScope;
        return kernels::KeyRange{static_cast<uint8_t>(std::max<int64_t>(sample - scope, 0)),
                                 static_cast<uint8_t>(std::min<int64_t>(sample + scope, 255))};
    };
    const kernels::PlanarKey key = {around(m_Yuv.y), around(m_Yuv.u), around(m_Yuv.v), view.horizontalShift,
                                    view.verticalShift};
    Kernels<kernels::KeyKernels>().keyComponent(view.y, view.u, view.v, view.alpha, key,
                                                m_Scratch.Require(kernels::KeyScratchBytes(view.y.width)));
}

void CColorFilterEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* pFrame) {
    assert(pFrame);
    const auto packed = [this](Plane32 plane) { FilterRGBA32Effect(plane); };
    const auto planar = [this](const PlanarView& view) { FilterComponentEffect(view); };
    if (m_nScope >= 0) ForFormat(pFrame, packed, planar); // below, nothing lies in the range
}

// Noise

namespace {

unsigned ShiftOf(int level) { return static_cast<unsigned>(std::clamp<int64_t>(int64_t{12} - level, 0, 31)); }

} // namespace

CAddNoiseVideoImageEffect::CAddNoiseVideoImageEffect()
    : CBasedVideoImageEffect(catalogue::kAddNoise) {
    int level = 0;
    StartFrom("addnoise_level", &level);
    m_nShift = ShiftOf(level);
}

void CAddNoiseVideoImageEffect::OnSetProperty(const std::string& name, PropertyNode& node) {
    CBasedVideoEffect::OnSetProperty(name, node);
    if (name != "addnoise_level") return;
    const unsigned shift = ShiftOf(node.value.int32);
    if (shift != m_nShift) {
        m_PixelNoise.Clear();
        m_SampleNoise.Clear();
        std::srand(static_cast<unsigned>(std::time(nullptr)));
    }
    m_nShift = shift;
}

void CAddNoiseVideoImageEffect::AddNoiseRgba32EffectFirst(Plane32 plane) {
    m_PixelNoise.Extend(plane.width * plane.rows, m_nShift);
    AddNoiseRgba32Effect(plane);
}

void CAddNoiseVideoImageEffect::AddNoiseRgba32Effect(Plane32 plane) const {
    assert(plane.data != NULL);
    Kernels<kernels::NoiseKernels>().addNoiseRgba32(plane, m_PixelNoise.Data(), Gain());
}

void CAddNoiseVideoImageEffect::AddNoiseComponentEffectFirst(Plane8 plane) {
    m_SampleNoise.Extend(plane.width * plane.rows, m_nShift);
    AddNoiseComponentEffect(plane);
}

void CAddNoiseVideoImageEffect::AddNoiseComponentEffect(Plane8 plane) const {
    assert(plane.data != NULL);
    Kernels<kernels::NoiseKernels>().addNoiseComponent(plane, m_SampleNoise.Data(), Gain());
}

void CAddNoiseVideoImageEffect::AddNoise(Plane32 plane) {
    m_PixelNoise.Has(plane.width * plane.rows) ? AddNoiseRgba32Effect(plane)
                                               : AddNoiseRgba32EffectFirst(plane);
}

void CAddNoiseVideoImageEffect::AddNoise(Plane8 plane) {
    m_SampleNoise.Has(plane.width * plane.rows) ? AddNoiseComponentEffect(plane)
                                                : AddNoiseComponentEffectFirst(plane);
}

void CAddNoiseVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* pFrame) {
    const auto addNoise = [this](const auto& plane) { AddNoise(plane); };
    ForPlanes(pFrame, Planes::Luma, addNoise, addNoise);
}

} // namespace AVBased
