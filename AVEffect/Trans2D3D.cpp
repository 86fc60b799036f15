#include "AVEffect/Trans2D3D.h"

#include <algorithm>
#include <cassert>
#include <mutex>
#include <utility>

#include "AVEffect/support/frame_planes.h"
#include "AVEffect/support/plane_copy.h"
#include "BaseTools/guarded.h"
#include "aveffect/base_media.h"
#include "kernels/stereo.h"

namespace AVBased {

using BaseTool::Guarded;
using BaseTool::Raise;

namespace {

constexpr int kLeastDepth = 20, kMostDepth = 100, kDepthStep = 10;
constexpr unsigned kBicubic = 4;

// By how many pixels the picture is widened; colours move by half of that.
int WideningFor(int width, int depth) { return width / (120 - depth); }

ConverterPtr MakeConverter(unsigned format, unsigned width, unsigned height) {
    ConverterPtr converter(CreateImageConverterEx(format, width, height, kBicubic));
    if (!converter) Raise(kBadPointer, "Bad pointer");
    return converter;
}

FramePtr Convert(const ConverterPtr& converter, IRawVideoFrame* frame) {
    FramePtr converted(converter->Convert(frame));
    if (!converted) Raise(kBadPointer, "Bad pointer");
    return converted;
}

// The way back to other formats. Processors of several threads share it.
class BackConverter {
public:
    // Once for all formats and sizes.
    void Make(unsigned format, unsigned width, unsigned height) {
        const std::scoped_lock lock(m_Mutex);
        if (!m_pConverter) m_pConverter = MakeConverter(format, width, height);
    }
    FramePtr Back(IRawVideoFrame* frame) {
        const std::scoped_lock lock(m_Mutex);
        return Convert(m_pConverter, frame);
    }

private:
    std::mutex m_Mutex;
    ConverterPtr m_pConverter;
};

BackConverter& TheBackConverter() {
    static BackConverter back;
    return back;
}

std::pair<unsigned, unsigned> SizeOf(IRawVideoFrame* frame) {
    std::pair<unsigned, unsigned> size;
    frame->GetDimension(&size.first, &size.second);
    return size;
}

} // namespace

bool CTrans2D3D::SetDepth(int d) {
    m_nDepth = std::clamp(d, kLeastDepth, kMostDepth) / kDepthStep * kDepthStep;
    return true;
}

int CTrans2D3D::SetProperty(unsigned type, int depth) {
    Set3DType(type);
    SetDepth(depth);
    return m_nDepth;
}

bool CTrans2D3D::GetParamByIndex(unsigned d, unsigned* shift) {
    return Guarded(false, [&] {
        if (!shift) Raise(kBadPointer, "Bad pointer");
        const int divisor = static_cast<int>(120u - d);
        if (divisor == 0) Raise(kUnknownException, "no colours move with a depth of 120");
        *shift = static_cast<unsigned>(m_nWidth / divisor / 2);
        return true;
    });
}

bool CTrans2D3D::Init(int width, int height) {
    if (width < 1 || height < 1) Raise(kUnknownException, "invalid param");
    const auto w = static_cast<unsigned>(width), h = static_cast<unsigned>(height);
    m_nWidth = 0; // for as long as not all is there
    m_nHeight = height;
    m_pToBGRA = MakeConverter(BGRA, w, h);
    m_pToYUV = MakeConverter(YUV420P, w, h);
    auto rgb = std::make_unique<CRawVideoFrame>(false, RGB24, w, h, true);
    CRawVideoFrame::FrameBuffer& pixels = *rgb->GetBuffer(0);
    pixels.pitch = 3 * w;
    pixels.data = static_cast<unsigned char*>(m_RgbPixels.Malloc(size_t{pixels.pitch} * h));
    m_pRgb = std::move(rgb);
    m_Wideners.clear();
    for (int depth = kLeastDepth; depth <= kMostDepth; depth += kDepthStep)
        m_Wideners.push_back(MakeConverter(RGB24, w + static_cast<unsigned>(WideningFor(width, depth)), h));
    m_nWidth = width;
    return true;
}

void CTrans2D3D::CleanUp() {
    m_Wideners.clear();
    m_pToBGRA.reset();
    m_pToYUV.reset();
    m_pRgb.reset();
    BaseTool::AlignedMallocAllocator(64).Swap(m_RgbPixels);
}

void CTrans2D3D::Draw(IRawVideoFrame* widened) {
    const unsigned buf_cnt = widened->GetBufferCount();
    assert(buf_cnt == 1);
    const Plane8 to = FilledPlane(m_pRgb.get(), 0), from = FilledPlane(widened, 0);
    const auto shift = 3 * static_cast<size_t>(WideningFor(m_nWidth, m_nDepth) / 2);
    if (from.width < to.width + shift || from.rows < to.rows)
        Raise(kUnknownException, "the widened picture is too small; the frame is left as it is");
    const kernels::StereoKernels& kernels = Kernels<kernels::StereoKernels>();
    switch (m_nType) {
    case 1:
        kernels.shiftRedRgb24(to, from, shift);
        break;
    case 2:
        kernels.shiftRedAndBlueRgb24(to, from, shift);
        break;
    default:
        assert(0);
    }
}

// The converter's place; the converter itself may only be made here.
IRawVideoFrame* CTrans2D3D::Process(IRawVideoFrame* frame, const ConverterPtr& back) {
    const auto [width, height] = SizeOf(frame);
    if (m_nWidth == 0 || static_cast<int>(width) != m_nWidth || static_cast<int>(height) != m_nHeight) {
        CleanUp();
        if (!Init(static_cast<int>(width), static_cast<int>(height)))
            Raise(kUnknownException, "can not init 2d-3d translate molular");
    }
    if (!m_pToBGRA) Raise(kBadPointer, "Bad pointer");
    Draw(Convert(m_Wideners[static_cast<size_t>((m_nDepth - kLeastDepth) / kDepthStep)], frame).get());
    m_pOutput.reset();
    m_pOutput = Convert(back, m_pRgb.get());
    return m_pOutput.get();
}

IRawVideoFrame* CTrans2D3D::ProcessBGRA(IRawVideoFrame* frame) { return Process(frame, m_pToBGRA); }
IRawVideoFrame* CTrans2D3D::ProcessYV(IRawVideoFrame* frame) { return Process(frame, m_pToYUV); }

FramePtr CTrans2D3D::ProcessOther(IRawVideoFrame* frame) {
    const auto [width, height] = SizeOf(frame);
    if (!m_pToBGRA) Init(static_cast<int>(width), static_cast<int>(height));
    TheBackConverter().Make(frame->GetPixelFormat(), width, height);
    const FramePtr bgra = Convert(m_pToBGRA, frame);
    ProcessBGRA(bgra.get());
    const FramePtr anaglyph = std::move(m_pOutput);
    return TheBackConverter().Back(anaglyph.get());
}

// The anaglyph in the frame's format; what it is kept in besides m_pOutput is the caller's.
IRawVideoFrame* CTrans2D3D::Anaglyph(IRawVideoFrame* frame, FramePtr& own) {
    switch (frame->GetPixelFormat()) {
    case BGRA:
        return ProcessBGRA(frame);
    case YUV420P:
        return ProcessYV(frame);
    default:
        own = ProcessOther(frame);
        return own.get();
    }
}

void CTrans2D3D::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* pFrame) {
    FramePtr own;
    IRawVideoFrame* const anaglyph = Anaglyph(pFrame, own);
    if (!anaglyph) Raise(kBadPointer, "Bad pointer");
    assert(pFrame->GetBufferCount() == 3 || pFrame->GetBufferCount() == 1);
    assert(anaglyph->GetBufferCount() == 3 || anaglyph->GetBufferCount() == 1);
    if (anaglyph->GetPixelFormat() != pFrame->GetPixelFormat() || SizeOf(anaglyph) != SizeOf(pFrame))
        Raise(kUnknownException,
              "the anaglyph has another format or size than the frame, which is left as it is");
    for (unsigned i = 0; i < pFrame->GetBufferCount(); ++i)
        CopyPicture(FilledPlane(pFrame, i), FilledPlane(anaglyph, i));
}

} // namespace AVBased
