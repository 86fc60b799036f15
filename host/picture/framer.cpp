#include "host/picture/framer.h"

#include <algorithm>
#include <cmath>
#include <utility>

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/parseutils.h>
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}

#include "host/picture/orientation.h"
#include "host/support/error.h"
#include "mediabridge/picture_pool.h"

namespace aveffect {

using mediabridge::AVFramePtr;

namespace {

constexpr int kLargest = 16384;
constexpr char kBlack[] = "black";

double PixelsOf(const Extent& extent, double side) {
    return extent.percent ? side * extent.value / 100 : extent.value;
}

std::string SizeText(double width, double height) {
    return std::to_string(std::lround(width)) + "x" + std::to_string(std::lround(height));
}

/// One in which each sample has bytes of its own.
AVPixelFormat ScalableFormat(const AVFrame& picture) {
    const auto format = static_cast<AVPixelFormat>(picture.format);
    const AVPixFmtDescriptor* about = av_pix_fmt_desc_get(format);
    const bool odd = (about->flags & (AV_PIX_FMT_FLAG_PAL | AV_PIX_FMT_FLAG_BITSTREAM)) != 0;
    return odd || !sws_isSupportedOutput(format) ? AV_PIX_FMT_BGRA : format;
}

void SetSquare(AVFrame& picture) { picture.sample_aspect_ratio = {1, 1}; }

/// Leaves a part of the picture, without copying it.
void KeepPart(AVFrame& picture, int left, int top, int width, int height) {
    picture.crop_left = static_cast<size_t>(left);
    picture.crop_top = static_cast<size_t>(top);
    picture.crop_right = static_cast<size_t>(picture.width - left - width);
    picture.crop_bottom = static_cast<size_t>(picture.height - top - height);
    const int code = av_frame_apply_cropping(&picture, AV_FRAME_CROP_UNALIGNED);
    if (code < 0) ThrowFailure(ErrorKind::Output, "a picture can't be cropped", code);
}

} // namespace

Framer::Part Framer::PartOf(PictureSize own, double pixelAspect) const {
    if (!m_framing.crop) return {0, 0, own.width, own.height};
    const Framing::Crop& crop = *m_framing.crop;
    const double wide = own.width * pixelAspect, high = own.height;
    const double width = PixelsOf(crop.width, wide), height = PixelsOf(crop.height, high);
    const double x = crop.x ? PixelsOf(*crop.x, wide) : (wide - width) / 2;
    const double y = crop.y ? PixelsOf(*crop.y, high) : (high - height) / 2;
    constexpr double kRounding = 0.5;
    if (width < 1 || height < 1 || x < 0 || y < 0 || x + width > wide + kRounding ||
        y + height > high + kRounding)
        throw Error(ErrorKind::Usage, "--crop asks for " + SizeText(width, height) + " at " +
                                          std::to_string(std::lround(x)) + ":" +
                                          std::to_string(std::lround(y)) + ", but the pictures are " +
                                          SizeText(wide, high));
    const auto columns = [pixelAspect](double length) {
        return static_cast<int>(std::floor(length / pixelAspect + 0.5));
    };
    const int left = std::min(columns(x), own.width - 1);
    const int top = std::min(static_cast<int>(std::floor(y)), own.height - 1);
    return {left, top, std::clamp(columns(width), 1, own.width - left),
            std::clamp(static_cast<int>(std::lround(height)), 1, own.height - top)};
}

PictureSize Framer::SizeFor(PictureSize own, double pixelAspect) const {
    const Part part = PartOf(own, pixelAspect);
    const double wide = part.width * pixelAspect, high = part.height;
    double width = m_framing.width ? PixelsOf(*m_framing.width, wide) : 0;
    double height = m_framing.height ? PixelsOf(*m_framing.height, high) : 0;
    if (!m_framing.height) height = m_framing.width ? width * high / wide : high;
    if (!m_framing.width) width = height * wide / high;
    width = std::max(1.0, std::round(width));
    height = std::max(1.0, std::round(height));
    if (m_framing.Resizes() && (width > kLargest || height > kLargest))
        throw Error(ErrorKind::Usage, "--size comes to " + SizeText(width, height) +
                                          "; pictures have up to 16384 pixels a side");
    return {static_cast<int>(width), static_cast<int>(height)};
}

// Of the shape that it is going to have.
void Framer::CutToShape(AVFrame& picture, PictureSize size) const {
    const double pixel = PixelAspect(picture);
    const double shape = static_cast<double>(size.width) / size.height;
    const int width =
        std::clamp(static_cast<int>(std::lround(picture.height * shape / pixel)), 1, picture.width);
    const int height =
        std::clamp(static_cast<int>(std::lround(picture.width * pixel / shape)), 1, picture.height);
    KeepPart(picture, (picture.width - width) / 2, (picture.height - height) / 2, width, height);
}

// In whole samples of chroma where there is background beside them.
PictureSize Framer::Contained(const AVFrame& picture, PictureSize size) const {
    const double shape = picture.width * PixelAspect(picture) / picture.height;
    const AVPixFmtDescriptor* about = av_pix_fmt_desc_get(m_format);
    const auto fitted = [](double length, int shift, int most) {
        const int step = 1 << shift;
        return std::clamp(static_cast<int>(std::lround(length / step)) * step, std::min(step, most), most);
    };
    return {fitted(size.height * shape, about->log2_chroma_w, size.width),
            fitted(size.width / shape, about->log2_chroma_h, size.height)};
}

AVFramePtr Framer::Background(const AVFrame& like, PictureSize size) const {
    uint8_t colour[4] = {};
    av_parse_color(colour, m_framing.background.value_or(kBlack).c_str(), -1, nullptr);
    AVFramePtr plain = mediabridge::AllocatePicture(AV_PIX_FMT_RGBA, size.width, size.height);
    if (!plain) throw NoMemory("no memory for a picture");
    for (int row = 0; row < size.height; ++row)
        for (int column = 0; column < size.width; ++column)
            std::copy_n(colour, 4,
                        plain->data[0] + ptrdiff_t{row} * plain->linesize[0] + ptrdiff_t{column} * 4);
    mediabridge::Scaler scaler(m_format, size.width, size.height, mediabridge::ScaleQuality::Bicubic,
                               like.color_range, like.colorspace);
    AVFramePtr made = scaler.Convert(plain.get());
    if (!made) throw Error(ErrorKind::Output, "no background can be made: " + scaler.Error());
    return made;
}

AVFramePtr Framer::OnBackground(const AVFrame& picture, PictureSize size) {
    if (!m_background || m_background->width != size.width || m_background->height != size.height)
        m_background = Background(picture, size);
    AVFramePtr whole = mediabridge::CopyPicture(m_background.get());
    if (!whole || av_frame_copy_props(whole.get(), &picture) < 0) throw NoMemory("no memory for a picture");
    const AVPixFmtDescriptor* about = av_pix_fmt_desc_get(m_format);
    const auto middle = [](int outer, int inner, int shift) { return (outer - inner) / 2 >> shift << shift; };
    const AVFramePtr place(av_frame_clone(whole.get()));
    if (!place) throw NoMemory("no memory for a picture");
    KeepPart(*place, middle(size.width, picture.width, about->log2_chroma_w),
             middle(size.height, picture.height, about->log2_chroma_h), picture.width, picture.height);
    const uint8_t* from[4] = {picture.data[0], picture.data[1], picture.data[2], picture.data[3]};
    av_image_copy(place->data, place->linesize, from, picture.linesize, m_format, picture.width,
                  picture.height);
    return whole;
}

AVFramePtr Framer::Apply(AVFramePtr picture) {
    if (m_framing.Empty()) return picture;
    const PictureSize own{picture->width, picture->height};
    const double pixel = PixelAspect(*picture);
    if (!m_framing.crop && pixel == 1 && SizeFor(own, pixel) == own) return picture;
    if (m_format != ScalableFormat(*picture)) {
        m_format = ScalableFormat(*picture);
        m_scaler.reset();
        m_background.reset();
    }
    AVFramePtr part(av_frame_clone(picture.get()));
    if (!part) throw NoMemory("no memory for a picture");
    // Planes of palettes and bits can't be cut everywhere.
    if (m_format != picture->format) {
        mediabridge::Scaler plain(m_format, 0, 0, mediabridge::ScaleQuality::Bicubic);
        part = plain.Convert(picture.get());
        if (!part) throw Error(ErrorKind::Output, "a picture can't be converted: " + plain.Error());
    }
    const Part kept = PartOf(own, pixel);
    KeepPart(*part, kept.left, kept.top, kept.width, kept.height);
    PictureSize target{kept.width, kept.height};
    const PictureSize wanted = m_framing.Resizes() ? SizeFor(own, pixel) : target;
    const Framing::Fit fit = m_framing.fit.value_or(Framing::Fit::Contain);
    if (m_framing.Resizes()) {
        if (fit == Framing::Fit::Cover) CutToShape(*part, wanted);
        target = fit == Framing::Fit::Contain ? Contained(*part, wanted) : wanted;
    }
    if (!m_scaler || m_scaled != target)
        m_scaler.emplace(m_format, target.width, target.height, mediabridge::ScaleQuality::Lanczos);
    m_scaled = target;
    part->interlaced_frame = 0; // its fields mix, or change places
    AVFramePtr framed = m_scaler->Convert(part.get());
    if (!framed) throw Error(ErrorKind::Output, "a picture can't be scaled: " + m_scaler->Error());
    if (m_framing.Resizes()) SetSquare(*framed);
    if (Reshapes()) av_frame_remove_side_data(framed.get(), AV_FRAME_DATA_STEREO3D);
    return target == wanted ? std::move(framed) : OnBackground(*framed, wanted);
}

} // namespace aveffect
