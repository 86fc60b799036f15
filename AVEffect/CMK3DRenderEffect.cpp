#include "AVEffect/CMK3DRenderEffect.h"

#include <algorithm>
#include <cassert>
#include <numeric>
#include <utility>

#include "AVEffect/support/frame_clone.h"
#include "AVEffect/support/places.h"
#include "AVEffect/support/plane_copy.h"
#include "aveffect/base_media.h"
#include "aveffect/catalogue/stereo.h"
#include "kernels/pick.h"

namespace AVBased {

namespace {

// What is not picked from elsewhere but follows the frame all the same.
void FollowFrame(IRawVideoFrame* view, IRawVideoFrame* frame) {
    view->SetTimeStamp(frame->GetTimeStamp());
    view->SetInterlaced(frame->IsInterlaced());
    view->SetTopFieldFirst(frame->IsTopFieldFirst());
    auto* viewSide = static_cast<IMVCRawVideoFrame*>(view->GetInterface(kMVCInterface));
    auto* frameSide = static_cast<IMVCRawVideoFrame*>(frame->GetInterface(kMVCInterface));
    if (viewSide && frameSide) viewSide->SetViewID(frameSide->GetViewID());
    void* border = nullptr;
    int borderBytes = 0;
    frame->GetBorderData(&border, &borderBytes);
    unsigned char none = 0; // a null address would leave the view's old data
    view->SetBorderData(border ? border : &none, border ? borderBytes : 0);
}

} // namespace

CMK3DRenderEffect::CMK3DRenderEffect()
    : CBasedVideoImageEffect(catalogue::k3DRender) {
    StartFrom("render_3d_depth", &m_nDepth);
    StartFrom("render_3d_mode", &m_nMode);
    StartFrom("render_3d_swtich", &m_nSwap);
}

void CMK3DRenderEffect::OnSetProperty(const std::string& name, PropertyNode& node) {
    if (name == "render_3d_depth") m_nDepth = node.value.int32;
    if (name == "render_3d_mode") m_nMode = node.value.int32;
    if (name == "render_3d_swtich" && node.value.int32 != 0) m_nSwap = 1; // 0 does not undo it
    m_Converter.SetProperty(static_cast<unsigned>(m_nMode), m_nDepth);
}

void CMK3DRenderEffect::RenderViews(IRawVideoFrame* frame) {
    m_Renderer.SetDepth(m_nDepth);
    m_Renderer.SetRenderMode(static_cast<Render3DMode>(m_nMode));
    unsigned width = 0;
    frame->GetDimension(&width, nullptr);
    // The depth is the last frame's quarter from now on, not the property's, until that is set again.
    const unsigned quarter = width / 4;
    m_nDepth = static_cast<int>(quarter);
    if (width == 0) return;
    m_dRatio = static_cast<double>(width - quarter) / width;

    auto* right = static_cast<IRawVideoFrame*>(frame->GetInterface(kSubsetFrameInterface));
    IRawVideoFrame* left = right ? frame : PrepareLV(frame);
    if (!right) right = PrepareRV(frame);
    if (m_nSwap != 0) std::swap(left, right);
    m_Renderer.Render(left, right, frame);
}

void CMK3DRenderEffect::InnerProcFrame(ImagePostion* position, int time, IRawVideoFrame* pFrame) {
    assert(pFrame);
    const bool anaglyph = m_nMode == 1 || m_nMode == 2;
    anaglyph ? m_Converter.InnerProcFrame(position, time, pFrame) : RenderViews(pFrame);
}

IRawVideoFrame* CMK3DRenderEffect::PrepareLV(IRawVideoFrame* frame) {
    return Prepare(m_pLeftView, frame, Side::Left);
}

IRawVideoFrame* CMK3DRenderEffect::PrepareRV(IRawVideoFrame* frame) {
    return Prepare(m_pRightView, frame, Side::Right);
}

// Views are clones of a frame of the same layout; a host whose clones have another one can't be served.
IRawVideoFrame* CMK3DRenderEffect::Prepare(FramePtr& view, IRawVideoFrame* frame, Side side) {
    if (view && !SameLayout(view.get(), frame)) view.reset();
    if (!view) view = CloneFrame(frame);
    FollowFrame(view.get(), frame);
    unsigned width = 0;
    frame->GetDimension(&width, nullptr);
    const size_t offset = side == Side::Right ? width / 4 : 0;
    const bool halvesOffset = frame->GetPixelFormat() != YUVA444P; // whatever chroma's width is
    const auto packed = [&](Plane32 to, Plane32 from) { StretchPixels(to, RequireMemory(from), offset); };
    const auto planar = [&](const PlanarView& to, const PlanarView& from) {
        RequireMemory({from.y, from.u, from.v, from.alpha});
        StretchSamples(to.y, from.y, offset);
        StretchSamples(to.u, from.u, halvesOffset ? offset / 2 : offset);
        StretchSamples(to.v, from.v, halvesOffset ? offset / 2 : offset);
        if (to.hasAlpha) CopyRows(to.alpha, from.alpha);
    };
    if (!SameLayout(view.get(), frame))
        BaseTool::Raise(kUnknownException, "the frame's clone differs in layout; the frame is left as it is");
    ForFormat(view.get(), frame, packed, planar);
    return view.get();
}

// Where the samples of a view's rows come from; returns scratch for as many columns.
uint8_t* CMK3DRenderEffect::FindPlaces(size_t columns, size_t columnLimit, size_t rows, size_t offset) {
    m_Columns.resize(columns);
    for (size_t x = 0; x < columns; ++x)
        m_Columns[x] = static_cast<uint32_t>(
            std::min(offset + static_cast<size_t>(static_cast<double>(x) * m_dRatio), columnLimit - 1));
    m_Rows.resize(rows);
    std::iota(m_Rows.begin(), m_Rows.end(), 0u);
    return m_Scratch.Require(kernels::ColumnScratchBytes(columns));
}

void CMK3DRenderEffect::StretchPixels(const Plane32& to, const Plane32& from, size_t offset) {
    if (to.Empty()) return;
    uint8_t* scratch = FindPlaces(to.width, from.width, to.rows, offset);
    Kernels<kernels::PickKernels>().pickRgba32(to, from, PlacesOf(m_Columns), PlacesOf(m_Rows), scratch);
}

void CMK3DRenderEffect::StretchSamples(const Plane8& to, const Plane8& from, size_t offset) {
    if (to.Empty()) return;
    uint8_t* scratch = FindPlaces(to.width, from.width, to.rows, offset);
    Kernels<kernels::PickKernels>().pickComponent(to, from, PlacesOf(m_Columns), PlacesOf(m_Rows), scratch);
}

} // namespace AVBased
