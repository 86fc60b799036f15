#include "avbase/avbase_srcutils/avbase_crawvideoframe.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <utility>

#include "BaseTools/guarded.h"
#include "aveffect/base_media.h"

namespace AVBased {

using BaseTool::Guarded;
using BaseTool::Raise;

namespace {

void Measure(CRawVideoFrame::FrameBuffer& buffer, const PlaneParameters& plane) {
    buffer.widthBytes = plane.widthBytes;
    buffer.rows = plane.rows;
    buffer.horizontalCode = plane.horizontalCode;
    buffer.verticalDivisor = plane.verticalDivisor;
}

size_t PlaneBytes(const CRawVideoFrame::FrameBuffer& buffer) { return size_t{buffer.rows} * buffer.pitch; }

size_t RoundUpTo16(size_t bytes) { return (bytes + 15) & ~size_t{15}; }

IMVCRawVideoFrame* ViewSide(IRawVideoFrame* frame) {
    return static_cast<IMVCRawVideoFrame*>(frame->GetInterface(kMVCInterface));
}

} // namespace

CRawVideoFrame::CRawVideoFrame(bool selfOwned, unsigned format, unsigned width, unsigned height, bool topDown)
    : m_nFormat(format)
    , m_nWidth(width)
    , m_nHeight(height)
    , m_bTopDown(topDown)
    , m_bSelfOwned(selfOwned) {
    const ImageParameters parameters = GetImageParameters(format, width, height);
    m_bPacked = parameters.packed;
    m_Buffers.resize(parameters.planeCount);
    for (size_t i = 0; i < m_Buffers.size(); ++i) Measure(m_Buffers[i], parameters.planes[i]);
}

CRawVideoFrame::CRawVideoFrame(const CRawVideoFrame& other)
    : IRawVideoFrame(other)
    , IMVCRawVideoFrame(other)
    , m_nFormat(other.m_nFormat)
    , m_nWidth(other.m_nWidth)
    , m_nHeight(other.m_nHeight)
    , m_nTimeStamp(other.m_nTimeStamp)
    , m_bTopDown(other.m_bTopDown)
    , m_bPacked(other.m_bPacked)
    , m_bSelfOwned(false)
    , m_bTopFieldFirst(other.m_bTopFieldFirst)
    , m_bInterlaced(other.m_bInterlaced)
    , m_Buffers(other.m_Buffers)
    , m_dDAR(other.m_dDAR)
    , m_nCropRight(other.m_nCropRight)
    , m_nCropBottom(other.m_nCropBottom)
    , m_nDuration(other.m_nDuration)
    , m_nDuplicatedCount(other.m_nDuplicatedCount)
    , m_nDuplicatedExtra(other.m_nDuplicatedExtra)
    , m_nOwnsPixels(1)
    , m_BorderData(other.m_BorderData)
    , m_bHasBorderData(other.m_bHasBorderData)
    , m_nViewID(other.m_nViewID) {
    CopyPixels();
    if (other.m_pSubsetFrame) m_pSubsetFrame.reset(other.m_pSubsetFrame->Clone());
}

void CRawVideoFrame::CopyPixels() {
    size_t total = 0;
    for (const FrameBuffer& buffer : m_Buffers)
        if (buffer.widthBytes != 0) total += RoundUpTo16(PlaneBytes(buffer));
    auto* place = static_cast<unsigned char*>(m_Pixels.Malloc(total));
    for (FrameBuffer& buffer : m_Buffers) {
        if (buffer.widthBytes == 0) continue;
        if (buffer.data) AVBasedMemCopy(place, buffer.data, PlaneBytes(buffer));
        buffer.data = place;
        place += RoundUpTo16(PlaneBytes(buffer));
    }
}

void CRawVideoFrame::Free() {
    if (m_bSelfOwned) delete this;
}

IRawVideoFrame* CRawVideoFrame::Clone() {
    return Guarded(nullptr, [&]() -> IRawVideoFrame* {
        auto* copy = new CRawVideoFrame(*this);
        copy->m_bSelfOwned = true;
        return copy;
    });
}

void CRawVideoFrame::GetDimension(unsigned* width, unsigned* height) {
    if (width) *width = m_nWidth - m_nCropRight;
    if (height) *height = m_nHeight - m_nCropBottom;
}

unsigned CRawVideoFrame::GetTotalSize() {
    size_t total = 0;
    for (const FrameBuffer& buffer : m_Buffers) total += PlaneBytes(buffer);
    return static_cast<unsigned>(total);
}

unsigned CRawVideoFrame::GetRequireSize() const {
    size_t total = 0;
    for (const FrameBuffer& buffer : m_Buffers) total += size_t{buffer.rows} * buffer.widthBytes;
    return static_cast<unsigned>(total);
}

CRawVideoFrame::FrameBuffer* CRawVideoFrame::GetBuffer(unsigned index) {
    assert(index < m_Buffers.size());
    return &m_Buffers[index];
}

unsigned char* CRawVideoFrame::GetBuffer(unsigned index, unsigned* widthBytes, unsigned* pitch,
                                         unsigned* rows) {
    const FrameBuffer& buffer = *GetBuffer(index);
    const uint32_t unitPixels = buffer.horizontalCode >> 16;
    const uint32_t unitBytes = buffer.horizontalCode & 0xFFFF;
    *widthBytes = buffer.widthBytes - static_cast<uint32_t>(uint64_t{unitBytes} * m_nCropRight / unitPixels);
    *pitch = buffer.pitch;
    // The bottom crop counts rows of every plane alike, without the plane's vertical divisor; a chroma plane
    // that has fewer rows than that is empty.
    const uint32_t hidden = std::min(m_nCropBottom, buffer.rows);
    *rows = buffer.rows - hidden;
    // A bottom-up frame stores its bottom rows first, so those are the ones to skip.
    return m_bTopDown ? buffer.data : buffer.data + size_t{buffer.pitch} * hidden;
}

bool CRawVideoFrame::CropRightAndBottom(unsigned right, unsigned bottom) {
    if (right >= m_nWidth || bottom >= m_nHeight) return false;
    m_nCropRight = right;
    m_nCropBottom = bottom;
    return true;
}

void CRawVideoFrame::SetSize(unsigned width, unsigned height) {
    m_nCropRight = 0;
    if (width == m_nWidth && height == m_nHeight) return;
    m_nWidth = width;
    m_nHeight = height;
    const ImageParameters parameters = GetImageParameters(m_nFormat, width, height);
    const size_t nComp = parameters.planeCount;
    assert(m_Buffers.size() == nComp);
    for (size_t i = 0; i < nComp; ++i) Measure(m_Buffers[i], parameters.planes[i]);
}

unsigned CRawVideoFrame::GetDuplicatedCount(unsigned* extra) {
    if (extra) *extra = m_nDuplicatedExtra;
    return m_nDuplicatedCount;
}

void CRawVideoFrame::SetDuplicatedCount(unsigned count, unsigned extra) {
    m_nDuplicatedCount = count;
    m_nDuplicatedExtra = extra;
}

void CRawVideoFrame::SetBorderData(void* data, int bytes) {
    if (!data) return;
    Guarded([&] {
        const auto* first = static_cast<const unsigned char*>(data);
        // Through a copy, since the data may be the frame's own.
        m_BorderData = std::vector<unsigned char>(first, first + std::max(bytes, 0));
        m_bHasBorderData = true;
    });
}

void CRawVideoFrame::GetBorderData(void** data, int* bytes) {
    *data = m_bHasBorderData ? m_BorderData.data() : nullptr;
    *bytes = static_cast<int>(m_BorderData.size());
}

void* CRawVideoFrame::GetInterface(const char* name) {
    if (!name) return nullptr;
    if (std::strcmp(name, kRawVideoInterface) == 0) return static_cast<IRawVideoFrame*>(this);
    if (std::strcmp(name, kMVCInterface) == 0) return static_cast<IMVCRawVideoFrame*>(this);
    if (std::strcmp(name, kSubsetFrameInterface) == 0) return m_pSubsetFrame.get();
    return nullptr;
}

bool CRawVideoFrame::SetViewID(int view) {
    m_nViewID = view;
    return true;
}

void CRawVideoFrame::CopySubsetFrame(IRawVideoFrame* frame) {
    Guarded([&] {
        FramePtr copy(frame ? frame->Clone() : nullptr);
        if (copy || !frame) m_pSubsetFrame = std::move(copy);
    });
}

bool CopyVideoFrame(IRawVideoFrame* dst, IRawVideoFrame* src) {
    return Guarded(false, [&] {
        if (!dst || !src) Raise(kBadPointer, "Bad pointer");
        if (dst->GetPixelFormat() != src->GetPixelFormat()) assert(0);
        unsigned srcWidth = 0, srcHeight = 0, dstWidth = 0, dstHeight = 0;
        src->GetDimension(&srcWidth, &srcHeight);
        dst->GetDimension(&dstWidth, &dstHeight);
        if (srcWidth != dstWidth || srcHeight != dstHeight) assert(0);

        dst->SetTimeStamp(src->GetTimeStamp());
        dst->SetInterlaced(src->IsInterlaced());
        IMVCRawVideoFrame* srcView = ViewSide(src);
        IMVCRawVideoFrame* dstView = ViewSide(dst);
        if (srcView && dstView) dstView->SetViewID(srcView->GetViewID());
        void* border = nullptr;
        int borderBytes = 0;
        src->GetBorderData(&border, &borderBytes);
        dst->SetBorderData(border, borderBytes);

        for (unsigned i = 0; i < src->GetBufferCount(); ++i) {
            unsigned s_width = 0, s_lss = 0, s_ln = 0, d_width = 0, d_lss = 0, d_ln = 0;
            const unsigned char* from = src->GetBuffer(i, &s_width, &s_lss, &s_ln);
            unsigned char* to = dst->GetBuffer(i, &d_width, &d_lss, &d_ln);
            assert(s_ln == d_ln);
            assert(s_lss == d_lss);
            const size_t bytes = size_t{s_lss} * s_ln;
            // Of a plane without a byte a row a clone has no memory of its own: its pointer is its source's,
            // which may be gone.
            if (s_width == 0 || d_width == 0 || bytes == 0) continue;
            if (!to || !from) Raise(kBadPointer, "Bad pointer");
            AVBasedMemCopy(to, from, bytes);
        }
        return true;
    });
}

void MergeYUVRedBlue(unsigned char y, unsigned char u, unsigned char v, unsigned, unsigned, unsigned,
                     unsigned char* yOut, unsigned char* uOut, unsigned char* vOut) {
    const auto toByte = [](double value) { return std::clamp(static_cast<int>(value), 0, 255); };
    const int r = toByte(y + 1.13983 * v);
    const int g = toByte(y - 0.395 * u + 0.436 * v);
    const int b = toByte(y + 2.032 * u);
    const auto chroma = [](int value) {
        if (value < -127) return static_cast<unsigned char>(0);
        return static_cast<unsigned char>(std::min(value + 128, 255));
    };
    *yOut = static_cast<unsigned char>(std::min((66 * r + 129 * g + 25 * b + 128) >> 8, 239) + 16);
    *uOut = chroma((-38 * r - 74 * g + 112 * b + 128) >> 8);
    *vOut = chroma((112 * r - 94 * g - 18 * b + 128) >> 8);
}

} // namespace AVBased
