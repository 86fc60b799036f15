#include "avbase/avbase_srcutils/avbase_3drender.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstdint>
#include <limits>

#include "BaseTools/guarded.h"
#include "avbase/avbase_srcutils/avbase_crawvideoframe.h"
#include "avbase/avbase_srcutils/plane_views.h"
#include "aveffect/base_media.h"
#include "kernels/stereo.h"

namespace AVBased {

using BaseTool::Guarded;
using BaseTool::Raise;

namespace {

// The planes that are drawn of planar frames; alpha comes behind them.
constexpr unsigned kColourPlanes = 3;

bool IsPlanarServed(unsigned format) { return format != BGRA && IsEffectFormat(format); }

bool SharesPixels(IRawVideoFrame* a, IRawVideoFrame* b) {
    return BytePlane(a, 0).data == BytePlane(b, 0).data;
}

// A view's plane as modes 3 and 4 read it: laid out like the output's, as far as its own memory goes. A
// smaller one can't be, and has its own layout.
Plane8 LaidOutLike(const Plane8& out, const Plane8& view) {
    if (out.Empty() || out.pitch == 0 || view.width < out.width || view.rows < out.rows) return view;
    const size_t bytes = (view.rows - 1) * view.pitch + view.width;
    return {view.data, out.width, out.pitch, std::min(out.rows, (bytes - out.width) / out.pitch + 1)};
}

void SideBySide(const Plane8& out, const Plane8& left, const Plane8& right) {
    Kernels<kernels::StereoKernels>().sideBySideComponent(out, LaidOutLike(out, left),
                                                          LaidOutLike(out, right));
}

void SideBySidePixels(const Plane8& out, const Plane8& left, const Plane8& right) {
    Kernels<kernels::StereoKernels>().sideBySideRgba32(AsPixels(out), AsPixels(LaidOutLike(out, left)),
                                                       AsPixels(LaidOutLike(out, right)));
}

void TopAndBottom(const Plane8& out, const Plane8& left, const Plane8& right) {
    Kernels<kernels::StereoKernels>().topAndBottomComponent(out, LaidOutLike(out, left),
                                                            LaidOutLike(out, right));
}

// A view without chroma, as the smallest can be, is grey.
Plane8 OrGrey(const Plane8& chroma) {
    static uint8_t grey = 128;
    return chroma.Empty() ? Plane8{&grey, 1, 0, 1} : chroma;
}

kernels::YuvPlanes YuvPlanesOf(IRawVideoFrame* frame) {
    return {FilledPlane(frame, 0), FilledPlane(frame, 1), FilledPlane(frame, 2)};
}

// Of a picture as large as the frame says.
template <class Plane>
void LimitTo(Plane& plane, IRawVideoFrame* frame) {
    unsigned width = 0, height = 0;
    frame->GetDimension(&width, &height);
    plane.width = std::min<size_t>(plane.width, width);
    plane.rows = std::min<size_t>(plane.rows, height);
}

// Any number; what an int can't hold becomes the nearest it can.
int TruncToInt(double number) {
    if (std::isnan(number)) return 0;
    constexpr double kLowest = std::numeric_limits<int>::min(), kHighest = std::numeric_limits<int>::max();
    return static_cast<int>(std::clamp(std::trunc(number), kLowest, kHighest));
}

double Narrowed(double x, double width, int depth) { return x * (width - depth) / width; }

// Sums of integer products wrap at 32 bits; the shift is arithmetic.
int ShiftedBy8(uint32_t sum) { return static_cast<int>(sum) >> 8; }

} // namespace

bool CAVBase3DRender::SetDepth(int depth) {
    if (depth > 0) m_nDepth = depth;
    return true;
}

bool CAVBase3DRender::SetRenderMode(Render3DMode mode) {
    if (mode <= kRenderTopAndBottom) m_eMode = mode;
    return true;
}

IRawVideoFrame* CAVBase3DRender::OutputLike(IRawVideoFrame* L) {
    if (!m_pOutput) m_pOutput.reset(L->Clone());
    if (!m_pOutput) Raise(kUnknownException, "the left view can't be cloned; nothing is drawn");
    m_pOutput->SetTimeStamp(L->GetTimeStamp());
    return m_pOutput.get();
}

// Null with the converter's error recorded.
FramePtr CAVBase3DRender::Converted(IRawVideoFrame* view, unsigned format) {
    if (!m_pConverter) m_pConverter.reset(CreateImageConverterEx(format, 0, 0, 0));
    FramePtr converted(m_pConverter ? m_pConverter->Convert(view) : nullptr);
    if (converted && converted->GetPixelFormat() != format)
        Raise(
            kUnknownException,
            "the right view's converter was made for another format than the left view's; nothing is drawn");
    return converted;
}

IRawVideoFrame* CAVBase3DRender::Render(IRawVideoFrame* L, IRawVideoFrame* R, IRawVideoFrame* out) {
    assert(L != NULL);
    assert(R != NULL);
    Guarded([&] {
        const bool intoOwn = !out;
        if (intoOwn) out = OutputLike(L);
        const unsigned format = L->GetPixelFormat();
        // Between frames of the host's, a copy of the left view checks for itself.
        const bool copies = m_eMode == kRenderLeftOnly;
        if (copies ? intoOwn && !SameLayout(L, out) : out->GetPixelFormat() != format)
            Raise(kUnknownException, "the output frame is not like the left view; nothing is drawn");
        FramePtr ownRight;
        if (R->GetPixelFormat() != format) {
            ownRight = Converted(R, format);
            if (!ownRight) return;
        } else if (SharesPixels(L, out) && SharesPixels(R, out)) {
            ownRight.reset(R->Clone());
            if (!ownRight) Raise(kUnknownException, "the right view can't be cloned; nothing is drawn");
        }
        Draw(L, ownRight ? ownRight.get() : R, out);
    });
    return out;
}

void CAVBase3DRender::Draw(IRawVideoFrame* L, IRawVideoFrame* R, IRawVideoFrame* out) {
    const unsigned format = L->GetPixelFormat();
    if (format == BGRA)
        ProcessBGRA(L, R, out);
    else if (IsPlanarServed(format))
        ProcessYUV(L, R, out);
}

bool CAVBase3DRender::ProcessBGRA(IRawVideoFrame* L, IRawVideoFrame* R, IRawVideoFrame* out) {
    const auto draw = [&](auto drawPlane) {
        drawPlane(FilledPlane(out, 0), FilledPlane(L, 0), FilledPlane(R, 0));
        return true;
    };
    switch (m_eMode) {
    case kRenderLeftOnly:
        return L == out || CopyVideoFrame(out, L);
    case kRenderRedCyan:
        return ProcessRGBRedBlue(L, R, out);
    case kRenderSideBySide:
        return draw(SideBySidePixels);
    case kRenderTopAndBottom:
        return draw(TopAndBottom);
    default:
        assert(0);
    }
    return false;
}

bool CAVBase3DRender::ProcessYUV(IRawVideoFrame* L, IRawVideoFrame* R, IRawVideoFrame* out) {
    const auto draw = [&](auto drawPlane) {
        for (unsigned i = 0; i < kColourPlanes; ++i)
            drawPlane(FilledPlane(out, i), FilledPlane(L, i), FilledPlane(R, i));
        return true;
    };
    switch (m_eMode) {
    case kRenderLeftOnly:
        return L == out || CopyVideoFrame(out, L);
    case kRenderRedCyan:
        return ProcessYUVRedBlue(L, R, out);
    case kRenderSideBySide:
        return draw(SideBySide);
    case kRenderTopAndBottom:
        return draw(TopAndBottom);
    default:
        assert(0);
    }
    return false;
}

bool CAVBase3DRender::ProcessRGBRedBlue(IRawVideoFrame* L, IRawVideoFrame* R, IRawVideoFrame* out) {
    return Guarded(false, [&] {
        Plane32 left = AsPixels(FilledPlane(L, 0));
        LimitTo(left, L);
        Kernels<kernels::StereoKernels>().anaglyphRgba32(AsPixels(FilledPlane(out, 0)), left,
                                                         AsPixels(FilledPlane(R, 0)));
        return true;
    });
}

bool CAVBase3DRender::ProcessYUVRedBlue(IRawVideoFrame* L, IRawVideoFrame* R, IRawVideoFrame* out) {
    return Guarded(false, [&] {
        kernels::YuvPlanes left = YuvPlanesOf(L), right = YuvPlanesOf(R);
        LimitTo(left.y, L);
        left.v = OrGrey(left.v);
        right.u = OrGrey(right.u);
        right.v = OrGrey(right.v);
        Kernels<kernels::StereoKernels>().anaglyphYuv(YuvPlanesOf(out), left, right);
        return true;
    });
}

bool CAVBase3DRender::MapResultVFFromLeft(int x, int y, int width, int& outX, int& outY) {
    outX = TruncToInt(Narrowed(x, width, m_nDepth));
    outY = y;
    return true;
}

bool CAVBase3DRender::MapResultVFFromRight(int x, int, int width, int& outX, int) {
    outX = TruncToInt(std::trunc(Narrowed(x, width, m_nDepth)) + m_nDepth);
    return true;
}

bool CAVBase3DRender::ConvertRGB2YUV(int r, int g, int b, int& y, int& u, int& v) {
    const auto red = static_cast<uint32_t>(r), green = static_cast<uint32_t>(g),
               blue = static_cast<uint32_t>(b);
    y = ShiftedBy8(66 * red + 129 * green + 25 * blue + 128) + 16;
    u = ShiftedBy8(112 * blue - 38 * red - 74 * green + 128) + 128;
    v = ShiftedBy8(112 * red - 94 * green - 18 * blue + 128) + 128;
    return true;
}

bool CAVBase3DRender::ConvertYUV2RGB(int y, int u, int v, int& r, int& g, int& b) {
    const uint32_t luma = static_cast<uint32_t>(y) - 16;
    const uint32_t cb = static_cast<uint32_t>(u) - 128, cr = static_cast<uint32_t>(v) - 128;
    r = ShiftedBy8(298 * luma + 409 * cr + 128);
    g = ShiftedBy8(luma - 100 * cb - 208 * cr);
    b = ShiftedBy8(luma + 516 * cb);
    return true;
}

} // namespace AVBased
