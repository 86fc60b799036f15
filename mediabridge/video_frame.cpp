#include "mediabridge/video_frame.h"

#include <cassert>
#include <cstring>
#include <new>
#include <utility>

#include "mediabridge/picture_pool.h"
#include "mediabridge/pixel_formats.h"
#include "mediabridge/record_error.h"

namespace mediabridge {
namespace {

bool HasBottomUpPlane(const AVFrame* picture) {
    for (const int lineSize : picture->linesize)
        if (lineSize < 0) return true;
    return false;
}

} // namespace

VideoFrame::VideoFrame(AVFramePtr picture, unsigned format)
    : m_picture(std::move(picture))
    , m_format(format) {}

VideoFrame::Ptr VideoFrame::Own(AVFramePtr picture, unsigned format) {
    if (!picture) return nullptr;
    return Ptr(new (std::nothrow) VideoFrame(std::move(picture), format));
}

VideoFrame::Ptr VideoFrame::Wrap(const AVFrame* picture, int timeStampMs, unsigned durationMs) {
    const auto format = FrameFormat(static_cast<AVPixelFormat>(picture->format), picture->color_range);
    if (!format) return nullptr;
    AVFramePtr reference =
        HasBottomUpPlane(picture) ? CopyPicture(picture) : AVFramePtr(av_frame_clone(picture));
    Ptr frame = Own(std::move(reference), *format);
    if (!frame) return nullptr;
    frame->m_timeStamp = timeStampMs;
    frame->m_duration = durationMs;
    return frame;
}

VideoFrame::Ptr VideoFrame::Allocate(unsigned format, unsigned width, unsigned height) {
    const AVPixelFormat libraryFormat = LibraryFormat(format);
    if (libraryFormat == AV_PIX_FMT_NONE) return nullptr;
    AVFramePtr picture = AllocatePicture(libraryFormat, static_cast<int>(width), static_cast<int>(height));
    if (picture) picture->color_range = UsualRange(libraryFormat);
    return Own(std::move(picture), format);
}

unsigned VideoFrame::GetPixelFormat() { return m_format; }

void VideoFrame::GetDimension(unsigned* width, unsigned* height) {
    if (width) *width = static_cast<unsigned>(m_picture->width) - m_cropRight;
    if (height) *height = static_cast<unsigned>(m_picture->height) - m_cropBottom;
}

int VideoFrame::GetTimeStamp() { return m_timeStamp; }
void VideoFrame::SetTimeStamp(int timeStamp) { m_timeStamp = timeStamp; }
bool VideoFrame::IsTopDown() { return true; }
bool VideoFrame::IsPacked() { return TableIsPacked(m_format); }
unsigned VideoFrame::GetBufferCount() { return TablePlaneCount(m_format); }

PlaneSize VideoFrame::UncroppedPlane(unsigned index) const {
    return PicturePlaneSize(m_format, index, static_cast<unsigned>(m_picture->width),
                            static_cast<unsigned>(m_picture->height));
}

unsigned VideoFrame::GetTotalSize() {
    unsigned total = 0;
    for (unsigned index = 0; index < GetBufferCount(); ++index)
        total += UncroppedPlane(index).rows * static_cast<unsigned>(m_picture->linesize[index]);
    return total;
}

unsigned char* VideoFrame::GetBuffer(unsigned index, unsigned* widthBytes, unsigned* pitch, unsigned* rows) {
    assert(index < GetBufferCount());
    const PlaneSize plane = UncroppedPlane(index);
    const auto less = [](unsigned whole, unsigned hidden) { return whole > hidden ? whole - hidden : 0; };
    if (widthBytes) *widthBytes = less(plane.widthBytes, TableCropBytes(m_format, index, m_cropRight));
    if (pitch) *pitch = static_cast<unsigned>(m_picture->linesize[index]);
    if (rows) *rows = less(plane.rows, m_cropBottom); // from every plane alike, subsampled or not
    return m_picture->data[index];
}

double VideoFrame::GetDAR() {
    const AVRational pixel = m_picture->sample_aspect_ratio;
    if (pixel.num <= 0 || pixel.den <= 0) return 0;
    return av_q2d(pixel) * m_picture->width / m_picture->height;
}

bool VideoFrame::CropRightAndBottom(unsigned right, unsigned bottom) {
    if (right >= static_cast<unsigned>(m_picture->width) ||
        bottom >= static_cast<unsigned>(m_picture->height))
        return false;
    m_cropRight = right;
    m_cropBottom = bottom;
    return true;
}

void VideoFrame::Free() { delete this; }
unsigned VideoFrame::GetDuration() { return m_duration; }
void VideoFrame::SetDuration(unsigned duration) { m_duration = duration; }

unsigned VideoFrame::GetDuplicatedCount(unsigned* extra) {
    if (extra) *extra = m_duplicatedExtra;
    return m_duplicatedCount;
}

void VideoFrame::SetDuplicatedCount(unsigned count, unsigned extra) {
    m_duplicatedCount = count;
    m_duplicatedExtra = extra;
}

VideoFrame::Ptr VideoFrame::Copy() const {
    Ptr copy = Own(CopyPicture(m_picture.get()), m_format);
    if (!copy) return nullptr;
    copy->m_borderData = m_borderData;
    copy->m_timeStamp = m_timeStamp;
    copy->m_viewId = m_viewId;
    copy->m_duration = m_duration;
    copy->m_cropRight = m_cropRight;
    copy->m_cropBottom = m_cropBottom;
    copy->m_duplicatedCount = m_duplicatedCount;
    copy->m_duplicatedExtra = m_duplicatedExtra;
    if (m_subset) {
        copy->m_subset = m_subset->Copy();
        if (!copy->m_subset) return nullptr;
    }
    return copy;
}

AVBased::IRawVideoFrame* VideoFrame::Clone() try {
    Ptr copy = Copy();
    if (!copy) RecordNoMemory();
    return copy.release();
} catch (const std::bad_alloc&) {
    RecordNoMemory();
    return nullptr;
}

bool VideoFrame::CanBeModified() { return m_canBeModified; }
void VideoFrame::SetCanBeModified(bool modifiable) { m_canBeModified = modifiable; }
bool VideoFrame::IsInterlaced() { return m_picture->interlaced_frame != 0; }
void VideoFrame::SetInterlaced(bool interlaced) { m_picture->interlaced_frame = interlaced; }
bool VideoFrame::IsTopFieldFirst() { return m_picture->top_field_first != 0; }
void VideoFrame::SetTopFieldFirst(bool topFieldFirst) { m_picture->top_field_first = topFieldFirst; }

void VideoFrame::SetBorderData(void* data, int bytes) try {
    if (!data) return;
    const auto* first = static_cast<const unsigned char*>(data);
    m_borderData.assign(first, first + (bytes > 0 ? bytes : 0));
} catch (const std::bad_alloc&) {
    RecordNoMemory();
}

void VideoFrame::GetBorderData(void** data, int* bytes) {
    if (data) *data = m_borderData.empty() ? nullptr : m_borderData.data();
    if (bytes) *bytes = static_cast<int>(m_borderData.size());
}

void* VideoFrame::GetInterface(const char* name) {
    if (!name) return nullptr;
    if (std::strcmp(name, AVBased::kRawVideoInterface) == 0) return static_cast<IRawVideoFrame*>(this);
    if (std::strcmp(name, AVBased::kMVCInterface) == 0) return static_cast<IMVCRawVideoFrame*>(this);
    if (std::strcmp(name, AVBased::kSubsetFrameInterface) == 0)
        return static_cast<IRawVideoFrame*>(m_subset.get());
    return nullptr;
}

bool VideoFrame::SetViewID(int view) {
    m_viewId = view;
    return true;
}

int VideoFrame::GetViewID() { return m_viewId; }

} // namespace mediabridge
