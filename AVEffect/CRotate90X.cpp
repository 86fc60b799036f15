#include "AVEffect/CRotate90X.h"

#include <algorithm>
#include <cassert>
#include <string>
#include <string_view>

#include "BaseTools/guarded.h"
#include "aveffect/catalogue/distortions.h"
#include "kernels/reverse.h"

namespace AVBased {

using BaseTool::Guarded;
using BaseTool::Raise;
using kernels::PlaneArea;

namespace {

constexpr uint32_t kOpaqueBlack = 0xFF000000u;
constexpr uint8_t kBlackLuma = 16, kNoColour = 128;

// The turned picture along the frame's longer side.
struct Span {
    size_t start, size;
};

Span SpanOf(size_t shorter, size_t longer, bool even) {
    const size_t unit = even ? 2 : 1;
    const size_t size = (2 * shorter * shorter + unit * longer) / (2 * unit * longer) * unit;
    const size_t atLeastOne = std::max(size, unit);
    return {(longer - atLeastOne) / (2 * unit) * unit, atLeastOne};
}

PlaneArea AreaIn(size_t width, size_t height, bool even) {
    if (width > height) {
        const Span span = SpanOf(height, width, even);
        return {span.start, 0, span.size, height};
    }
    if (height > width) {
        const Span span = SpanOf(width, height, even);
        return {0, span.start, width, span.size};
    }
    return {0, 0, width, height};
}

// The same part of a chroma plane, whatever the host made of odd sizes.
PlaneArea ChromaArea(const PlaneArea& area, const Plane8& luma, const Plane8& chroma) {
    const auto half = [](size_t start, size_t size, size_t whole, size_t chromaSize) {
        if (size == whole) return Span{0, chromaSize};
        const size_t inside = std::min(start / 2, chromaSize);
        return Span{inside, std::min(size / 2, chromaSize - inside)};
    };
    const Span x = half(area.left, area.width, luma.width, chroma.width);
    const Span y = half(area.top, area.height, luma.rows, chroma.rows);
    return {x.start, y.start, x.size, y.size};
}

void RequireServed(unsigned format) {
    if (format != BGRA && format != YUV420P)
        Raise(kUnknownException, "rotate 90 effect only support BGRA/yuv pixfmt, value:" +
                                     std::to_string(static_cast<int>(format)));
}

constexpr bool IsQuarter(unsigned quarters) { return quarters % 2 == 1; }
constexpr bool IsClockwise(unsigned quarters) { return quarters == 1; }

} // namespace

CRotate90X::CRotate90X()
    : CBasedVideoImageEffect(catalogue::kQuarterTurns) {
    AddInterface(EffectInterfaceNameProp, static_cast<IAVBaseProperty*>(this));
    Bind("Rotate90XDerection", &m_nDirection);
}

void CRotate90X::TurnPacked(Plane32 plane, unsigned quarters) {
    if (quarters != 0) RequireMemory(plane);
    m_Area = IsQuarter(quarters) ? AreaIn(plane.width, plane.rows, false)
                                 : PlaneArea{0, 0, plane.width, plane.rows};
    if (quarters == 0 || plane.Empty()) return;
    if (!IsQuarter(quarters)) {
        Kernels<kernels::ReverseKernels>().halfTurnRgba32(plane);
        return;
    }
    uint8_t* scratch = m_Scratch.Require(kernels::TurnScratchBytes(plane.width, m_Area.width, 4));
    Kernels<kernels::TurnKernels>().turnRgba32(plane, m_Area, IsClockwise(quarters), kOpaqueBlack, scratch);
}

void CRotate90X::TurnPart(const Plane8& plane, const PlaneArea& area, unsigned quarters, uint8_t black) {
    if (quarters == 0 || plane.Empty()) return;
    if (!IsQuarter(quarters)) {
        Kernels<kernels::ReverseKernels>().halfTurnComponent(plane);
        return;
    }
    uint8_t* scratch = m_Scratch.Require(kernels::TurnScratchBytes(plane.width, area.width, 1));
    Kernels<kernels::TurnKernels>().turnComponent(plane, area, IsClockwise(quarters), black, scratch);
}

void CRotate90X::TurnPlanar(const PlanarView& view, unsigned quarters) {
    if (quarters != 0) RequireMemory({view.y, view.u, view.v});
    m_Area = IsQuarter(quarters) ? AreaIn(view.y.width, view.y.rows, true)
                                 : PlaneArea{0, 0, view.y.width, view.y.rows};
    TurnPart(view.y, m_Area, quarters, kBlackLuma);
    for (const Plane8& plane : {view.u, view.v})
        TurnPart(plane, ChromaArea(m_Area, view.y, plane), quarters, kNoColour);
}

void CRotate90X::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* pFrame) {
    assert(pFrame);
    RequireServed(pFrame->GetPixelFormat());
    const unsigned quarters = m_nDirection % 4;
    ForFormat(
        pFrame, [&](Plane32 plane) { TurnPacked(plane, quarters); },
        [&](const PlanarView& view) { TurnPlanar(view, quarters); });
}

bool CRotate90X::GetProp(const char* name, int* value) {
    return Guarded(false, [&] {
        if (!name || !value) Raise(kBadPointer, "Bad pointer");
        const struct {
            std::string_view name;
            size_t value;
        } known[] = {{EffectRotate90XOffX, m_Area.left},
                     {EffectRotate90XOffY, m_Area.top},
                     {EffectRotate90XOffW, m_Area.width},
                     {EffectRotate90XOffH, m_Area.height}};
        for (const auto& row : known) {
            if (row.name != name) continue;
            *value = static_cast<int>(row.value);
            return true;
        }
        Raise(kDoesNotExist, std::string("Value with name(") + name + ") does not exist");
    });
}

} // namespace AVBased
