#include "AVEffect/FadeVideoImageEffect.h"

#include <algorithm>
#include <cassert>

#include "AVEffect/support/mmx_choice.h"
#include "BaseTools/guarded.h"
#include "aveffect/catalogue/fades.h"
#include "kernels/fade.h"

namespace AVBased {

namespace {

// Positions are shifted in 32 bits, so spans beyond 2^24 wrap.
unsigned Rising(unsigned position, unsigned duration) { return (position << 8) / duration; }
unsigned Falling(unsigned position, unsigned duration) { return ((duration - position) << 8) / duration; }
// One level for the whole span: the direct fade-in does not look at the position.
unsigned Constant(unsigned, unsigned duration) { return 15360 / duration; }

void fade_in_out_rgba32(unsigned char* pBuffer, size_t pixels, size_t pitch, size_t rows, unsigned level) {
    assert(pBuffer != NULL);
    Kernels<kernels::FadeKernels>().scaleAlphaRgba32({pBuffer, pixels, pitch, rows}, level);
}

void fade_in_out_yuva_Graphic(unsigned char* pBuffer, size_t bytes, size_t pitch, size_t rows,
                              unsigned level) {
    assert(pBuffer != NULL);
    Kernels<kernels::FadeKernels>().scaleComponent({pBuffer, bytes, pitch, rows}, level);
}

} // namespace

CFadeEffect::CFadeEffect(const EffectInfo& effect, const char* name, RawLevel rawLevel)
    : CBasedVideoImageEffect(effect, name)
    , m_pRawLevel(rawLevel) {
    Bind(effect.properties.front().name, &m_nMin);
    Bind(effect.properties.back().name, &m_nMax);
}

std::optional<unsigned> CFadeEffect::LevelAt(int time, IRawVideoFrame* frame) {
    // Unsigned, so times before the span's start lie beyond its end.
    const auto position = static_cast<unsigned>(time == kTimeFromFrame ? frame->GetTimeStamp() : time);
    const unsigned duration = GetDuration();
    if (position > duration) return std::nullopt;
    if (duration == 0)
        BaseTool::Raise(kUnknownException, "duration must be 1 or more; the frame is left as it is");
    const unsigned level = m_pRawLevel(position, duration);
    return level < m_nMin ? m_nMin : std::min(level, m_nMax);
}

CAlphaFadeEffect::CAlphaFadeEffect(const EffectInfo& effect, RawLevel rawLevel)
    : CFadeEffect(effect, effect.name, rawLevel) {}

void CAlphaFadeEffect::InnerProcFrame(ImagePostion*, int time, IRawVideoFrame* pFrame) {
    assert(pFrame);
    if (const std::optional<unsigned> level = LevelAt(time, pFrame))
        DrawPlanes(pFrame, Planes::Alpha, fade_in_out_rgba32, fade_in_out_yuva_Graphic, *level);
}

CFadeInVideoImageEffect::CFadeInVideoImageEffect()
    : CAlphaFadeEffect(catalogue::kFadeIn, Rising) {}

CFadeOutVideoImageEffect::CFadeOutVideoImageEffect()
    : CAlphaFadeEffect(catalogue::kFadeOut, Falling) {}

CDirectFadeEffect::CDirectFadeEffect(const EffectInfo& effect, const char* name, RawLevel rawLevel)
    : CFadeEffect(effect, name, rawLevel)
    , m_strColourName(effect.properties[1].name) {
    StartFrom(m_strColourName, &m_nColour); // transparent, as no colour is that was set
    m_Yuv = YuvColour::FromRgb(m_nColour);
    if (ChoosesMmxKernels()) {
        fade_in_out_direct_rgba32 = fade_in_out_direct_rgba32_mmx;
        fade_in_out_direct_component = fade_in_out_direct_yuva_mmx;
    }
}

void CDirectFadeEffect::OnSetProperty(const std::string& name, PropertyNode& node) {
    CBasedVideoEffect::OnSetProperty(name, node);
    if (name != m_strColourName) return;
    const auto colour = static_cast<unsigned>(node.value.int32);
    m_nColour = colour | 0xFF000000u;
    m_Yuv = YuvColour::FromRgb(colour);
}

namespace {

void Mix(DirectFadeKernel kernel, const auto& plane, unsigned level, unsigned colour) {
    if (!plane.Empty())
        kernel(plane.data, static_cast<unsigned>(plane.width), static_cast<unsigned>(plane.pitch),
               static_cast<unsigned>(plane.rows), level, colour);
}

} // namespace

void CDirectFadeEffect::MixPlanes(const PlanarView& view, unsigned level) const {
    Mix(fade_in_out_direct_component, view.y, level, m_Yuv.y);
    Mix(fade_in_out_direct_component, view.u, level, m_Yuv.u);
    Mix(fade_in_out_direct_component, view.v, level, m_Yuv.v);
}

void CDirectFadeEffect::InnerProcFrame(ImagePostion*, int time, IRawVideoFrame* pFrame) {
    assert(pFrame);
    if (const std::optional<unsigned> level = LevelAt(time, pFrame))
        ForFormat(
            pFrame, [&](Plane32 plane) { Mix(fade_in_out_direct_rgba32, plane, *level, m_nColour); },
            [&](const PlanarView& view) { MixPlanes(view, *level); });
}

// Direct fades give the base the names of the alpha fades. Only the factory tells them apart.
CDirectFadeInEffect::CDirectFadeInEffect()
    : CDirectFadeEffect(catalogue::kDirectFadeIn, effectNameFadeIn, Constant) {}

CDirectFadeOutEffect::CDirectFadeOutEffect()
    : CDirectFadeEffect(catalogue::kDirectFadeOut, effectNameFadeOut, Falling) {}

// The two variants of a kernel compute the same, and inside both choose the fastest way.
void fade_in_out_direct_rgba32_c(unsigned char* pBuffer, unsigned pixels, unsigned pitch, unsigned rows,
                                 unsigned level, unsigned colour) {
    assert(pBuffer != NULL);
    Kernels<kernels::FadeKernels>().mixRgba32({pBuffer, pixels, pitch, rows}, level, colour);
}

void fade_in_out_direct_rgba32_mmx(unsigned char* pBuffer, unsigned pixels, unsigned pitch, unsigned rows,
                                   unsigned level, unsigned colour) {
    assert(pBuffer != NULL);
    Kernels<kernels::FadeKernels>().mixRgba32({pBuffer, pixels, pitch, rows}, level, colour);
}

void fade_in_out_direct_yuva_c(unsigned char* pBuffer, unsigned bytes, unsigned pitch, unsigned rows,
                               unsigned level, unsigned value) {
    assert(pBuffer != NULL);
    Kernels<kernels::FadeKernels>().mixComponent({pBuffer, bytes, pitch, rows}, level,
                                                 static_cast<uint8_t>(value));
}

void fade_in_out_direct_yuva_mmx(unsigned char* pBuffer, unsigned bytes, unsigned pitch, unsigned rows,
                                 unsigned level, unsigned value) {
    assert(pBuffer != NULL);
    Kernels<kernels::FadeKernels>().mixComponent({pBuffer, bytes, pitch, rows}, level,
                                                 static_cast<uint8_t>(value));
}

std::atomic<DirectFadeKernel> fade_in_out_direct_rgba32 = fade_in_out_direct_rgba32_c;
std::atomic<DirectFadeKernel> fade_in_out_direct_component = fade_in_out_direct_yuva_c;

} // namespace AVBased
