#include "companions/basemedia/source_picture.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/pixdesc.h>
}

#include "aveffect/pixel_format.h"
#include "companions/basemedia/failure.h"
#include "mediabridge/picture_pool.h"
#include "mediabridge/pixel_formats.h"

namespace basemedia {
namespace {

using mediabridge::PlaneSize;

/// A plane as the frame hands it out, its rows in top-down order.
struct SourcePlane {
    const std::uint8_t* top = nullptr;
    std::ptrdiff_t step = 0; ///< bytes from a row to the one below it
    std::size_t bytes = 0;   ///< readable bytes a row
    std::size_t rows = 0;
};

/// The copy's plane: what the libraries expect to find there.
struct TargetPlane {
    std::uint8_t* data = nullptr;
    std::ptrdiff_t pitch = 0;
    std::size_t bytes = 0;
    std::size_t rows = 0;
    std::size_t unit = 1; ///< bytes after which the same component comes again
    bool chroma = false;
    std::array<std::uint8_t, 2> neutral{128, 128}; ///< for chroma of which the frame has nothing
};

bool IsTenBit(unsigned format) { return format == AVBased::YUV420P10LE || format == AVBased::YUV422P10LE; }
bool IsBitmap(unsigned format) { return format == AVBased::MONOWHITE || format == AVBased::MONOBLACK; }

TargetPlane DescribeTarget(unsigned format, const AVFrame* picture, unsigned index) {
    const auto libraryFormat = static_cast<AVPixelFormat>(picture->format);
    const AVPixFmtDescriptor* descriptor = av_pix_fmt_desc_get(libraryFormat);
    TargetPlane plane;
    plane.data = picture->data[index];
    plane.pitch = picture->linesize[index];
    plane.bytes = static_cast<std::size_t>(
        av_image_get_linesize(libraryFormat, picture->width, static_cast<int>(index)));
    plane.chroma = index == 1 || index == 2;
    const int rowShift = plane.chroma ? descriptor->log2_chroma_h : 0;
    plane.rows = static_cast<std::size_t>(AV_CEIL_RSHIFT(picture->height, rowShift));
    if (!IsBitmap(format)) {
        std::array<int, 4> largestStep{};
        av_image_fill_max_pixsteps(largestStep.data(), nullptr, descriptor);
        plane.unit = static_cast<std::size_t>(largestStep[index]);
    }
    if (IsTenBit(format)) plane.neutral = {0, 2}; // 512
    return plane;
}

/// Readable bytes a row. The table's count falls short of the picture for some formats; their rows end within
/// the pitch.
std::size_t ReadableBytes(unsigned format, const TargetPlane& target, std::size_t reported,
                          std::size_t pitch) {
    if (reported >= target.bytes) return target.bytes;
    std::size_t real = reported;
    if (IsTenBit(format)) real = std::min(target.bytes, 2 * reported);
    if (IsBitmap(format)) real = target.bytes;
    return real <= pitch ? real : reported;
}

std::string DescribePlane(unsigned index, const SourcePlane& plane, unsigned format, const AVFrame* picture) {
    return "Plane " + std::to_string(index) + " has " + std::to_string(plane.rows) + " rows of " +
           std::to_string(plane.bytes) + " bytes, too few for " + mediabridge::FrameFormatName(format) +
           " of " + std::to_string(picture->width) + "x" + std::to_string(picture->height);
}

SourcePlane DescribeSource(AVBased::IRawVideoFrame* source, unsigned format, const AVFrame* picture,
                           unsigned index, const TargetPlane& target) {
    unsigned bytes = 0;
    unsigned pitch = 0;
    unsigned rows = 0;
    SourcePlane plane;
    plane.top = source->GetBuffer(index, &bytes, &pitch, &rows);
    plane.step = static_cast<std::ptrdiff_t>(pitch);
    plane.bytes = ReadableBytes(format, target, bytes, pitch);
    plane.rows = std::min<std::size_t>(rows, INT_MAX);
    // Whole planes have all their samples; only the second half of a pair of pixels may be missing.
    const bool mayBeShort = target.chroma || target.unit > 1;
    const PlaneSize table = mediabridge::TablePlaneSize(format, index, static_cast<unsigned>(picture->width),
                                                        static_cast<unsigned>(picture->height));
    const std::size_t leastBytes = mayBeShort ? table.widthBytes : target.bytes;
    if (!target.chroma && (plane.bytes < leastBytes || plane.rows < target.rows))
        throw Failure(AVBased::kUnknownException, DescribePlane(index, plane, format, picture));
    if (IsTenBit(format) && plane.bytes == bytes && bytes < target.bytes && bytes)
        throw Failure(AVBased::kUnknownException, "Plane " + std::to_string(index) + " has a pitch of " +
                                                      std::to_string(pitch) + " bytes, " +
                                                      mediabridge::FrameFormatName(format) + " needs " +
                                                      std::to_string(target.bytes));
    if (plane.bytes && plane.rows) RequirePointer(plane.top);
    if (!source->IsTopDown() && plane.rows) {
        plane.top += plane.step * static_cast<std::ptrdiff_t>(plane.rows - 1);
        plane.step = -plane.step;
    }
    return plane;
}

/// Completes a row of which so many bytes are there.
void RepeatLastUnit(std::uint8_t* row, std::size_t present, const TargetPlane& plane) {
    for (std::size_t at = present; at < plane.bytes; ++at)
        row[at] = at >= plane.unit ? row[at - plane.unit] : plane.neutral[at % plane.neutral.size()];
}

void CopyPlane(const SourcePlane& source, const TargetPlane& target) {
    const std::size_t rows = std::min(source.rows, target.rows);
    const std::size_t bytes = std::min(source.bytes, target.bytes);
    for (std::size_t y = 0; y < target.rows; ++y) {
        std::uint8_t* row = target.data + target.pitch * static_cast<std::ptrdiff_t>(y);
        if (y >= rows && y > 0) {
            std::memcpy(row, row - target.pitch, target.bytes);
            continue;
        }
        const std::size_t present = rows ? bytes : 0;
        if (present) std::memcpy(row, source.top + source.step * static_cast<std::ptrdiff_t>(y), present);
        RepeatLastUnit(row, present, target);
    }
}

AVRational PixelAspect(double displayAspect, int width, int height) {
    if (!(displayAspect > 0)) return {0, 1};
    return av_d2q(displayAspect * height / width, INT_MAX);
}

/// Format, size and properties of a frame's picture, all but its planes; returns the frame's own format.
unsigned Describe(AVBased::IRawVideoFrame* source, AVFrame* picture) {
    const unsigned format = source->GetPixelFormat();
    const AVPixelFormat libraryFormat = mediabridge::LibraryFormat(format);
    if (libraryFormat == AV_PIX_FMT_NONE)
        throw Failure(AVBased::kUnknownException,
                      "Pixel format " + std::to_string(format) + " is not served");
    unsigned width = 0;
    unsigned height = 0;
    source->GetDimension(&width, &height);
    if (av_image_check_size(width, height, mediabridge::kSilent, nullptr) < 0)
        throw Failure(AVBased::kUnknownException, "A picture of " + std::to_string(width) + "x" +
                                                      std::to_string(height) + " pixels can't be read");
    const unsigned planes = mediabridge::TablePlaneCount(format);
    if (source->GetBufferCount() < planes)
        throw Failure(AVBased::kUnknownException, "A frame of " + mediabridge::FrameFormatName(format) +
                                                      " has " + std::to_string(source->GetBufferCount()) +
                                                      " planes, not " + std::to_string(planes));
    picture->format = libraryFormat;
    picture->width = static_cast<int>(width);
    picture->height = static_cast<int>(height);
    picture->color_range = mediabridge::UsualRange(libraryFormat);
    picture->interlaced_frame = source->IsInterlaced();
    picture->top_field_first = source->IsTopFieldFirst();
    picture->sample_aspect_ratio = PixelAspect(source->GetDAR(), picture->width, picture->height);
    return format;
}

} // namespace

mediabridge::AVFramePtr ViewPicture(AVBased::IRawVideoFrame* source) {
    mediabridge::AVFramePtr picture(av_frame_alloc());
    if (!picture) throw std::bad_alloc();
    const unsigned format = Describe(source, picture.get());
    for (unsigned index = 0; index < mediabridge::TablePlaneCount(format); ++index) {
        const TargetPlane target = DescribeTarget(format, picture.get(), index);
        const SourcePlane plane = DescribeSource(source, format, picture.get(), index, target);
        // The libraries end the process where rows overlap.
        const bool apart = plane.step >= static_cast<std::ptrdiff_t>(target.bytes) && plane.step <= INT_MAX;
        if (plane.bytes < target.bytes || plane.rows < target.rows || !apart) return nullptr;
        picture->data[index] = const_cast<std::uint8_t*>(plane.top);
        picture->linesize[index] = static_cast<int>(plane.step);
    }
    return picture;
}

mediabridge::AVFramePtr ReadPicture(AVBased::IRawVideoFrame* source) {
    mediabridge::AVFramePtr about(av_frame_alloc());
    if (!about) throw std::bad_alloc();
    const unsigned format = Describe(source, about.get());
    mediabridge::AVFramePtr picture =
        mediabridge::AllocatePicture(static_cast<AVPixelFormat>(about->format), about->width, about->height);
    if (!picture || av_frame_copy_props(picture.get(), about.get()) < 0) throw std::bad_alloc();
    for (unsigned index = 0; index < mediabridge::TablePlaneCount(format); ++index) {
        const TargetPlane target = DescribeTarget(format, picture.get(), index);
        CopyPlane(DescribeSource(source, format, picture.get(), index, target), target);
    }
    return picture;
}

mediabridge::VideoFrame::Ptr MakeFrame(const AVFrame* picture, AVBased::IRawVideoFrame* source) {
    auto frame = mediabridge::VideoFrame::Wrap(picture, source->GetTimeStamp(), source->GetDuration());
    if (!frame) throw std::bad_alloc();
    auto* views = static_cast<AVBased::IMVCRawVideoFrame*>(source->GetInterface(AVBased::kMVCInterface));
    if (views) frame->SetViewID(views->GetViewID());
    return frame;
}

} // namespace basemedia
