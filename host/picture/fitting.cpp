#include "host/picture/fitting.h"

#include <algorithm>
#include <cstring>

extern "C" {
#include <libavutil/imgutils.h>
}

#include "host/picture/orientation.h"
#include "host/support/error.h"
#include "mediabridge/picture_pool.h"
#include "mediabridge/pixel_formats.h"

namespace aveffect {

using mediabridge::AVFramePtr;

namespace {

// Of RGB, the one that it came from.
AVColorSpace MatrixOf(const AVFrame& picture) {
    return picture.colorspace != AVCOL_SPC_RGB ? picture.colorspace : AVCOL_SPC_UNSPECIFIED;
}

/// A picture or canvas that does not tell its matrix counts as having the other's: most files don't, and
/// guessing would give parts of one clip other colours.
bool SharesMatrix(const Canvas& canvas, const AVFrame& picture) {
    const AVColorSpace own = MatrixOf(picture);
    return canvas.hasMatrix &&
           (own == AVCOL_SPC_UNSPECIFIED || canvas.matrix == AVCOL_SPC_UNSPECIFIED || own == canvas.matrix);
}

} // namespace

Canvas CanvasOf(const AVFrame& picture) {
    Canvas canvas{picture.width, picture.height};
    if (PixelAspect(picture) != 1) canvas.pixelAspect = picture.sample_aspect_ratio;
    canvas.hasMatrix = mediabridge::HasColourRange(static_cast<AVPixelFormat>(picture.format));
    canvas.matrix = MatrixOf(picture);
    canvas.primaries = picture.color_primaries;
    canvas.transfer = picture.color_trc;
    return canvas;
}

void MarkAs(const Canvas& canvas, AVFrame& picture) {
    picture.sample_aspect_ratio = canvas.pixelAspect;
    picture.colorspace = canvas.matrix;
    picture.color_primaries = canvas.primaries;
    picture.color_trc = canvas.transfer;
}

bool NeedsStandardRange(const Canvas& canvas, const AVFrame& picture) {
    return canvas.width > 0 && IsHighDynamicRange(picture) && !IsHighDynamicRange(canvas.transfer);
}

bool Fitter::Fits(const AVFrame& picture) const {
    if (NeedsStandardRange(m_canvas, picture)) return false;
    constexpr double kSame = 1e-3;
    const bool sameShape = picture.width == m_canvas.width && picture.height == m_canvas.height &&
                           std::abs(PixelAspect(picture) - av_q2d(m_canvas.pixelAspect)) < kSame;
    const bool yuv = mediabridge::HasColourRange(static_cast<AVPixelFormat>(picture.format));
    return sameShape && (SharesMatrix(m_canvas, picture) || !yuv) && !m_colours.Changes(picture);
}

std::pair<int, int> Fitter::FittedSize(const AVFrame& picture) const {
    const double target = static_cast<double>(m_canvas.width) / m_canvas.height;
    const double pixels = PixelAspect(picture) / av_q2d(m_canvas.pixelAspect);
    const double wide = picture.width * pixels; // in the canvas's pixels
    const double source = wide / picture.height;
    const bool narrower = target >= source;
    const int width = narrower ? static_cast<int>(source * m_canvas.height) : m_canvas.width;
    const int height =
        narrower ? m_canvas.height : static_cast<int>(m_canvas.width * (picture.height / wide));
    return {std::max(1, width), std::max(1, height)};
}

AVFramePtr Fitter::Fit(const AVFrame& picture) {
    AVFramePtr read(av_frame_clone(&picture));
    if (!read) throw NoMemory("no memory for a picture");
    read = m_intake.Map(std::move(read), NeedsStandardRange(m_canvas, picture));
    const auto size = Fits(*read) ? std::pair(m_canvas.width, m_canvas.height) : FittedSize(*read);
    if (!m_scaler || m_scaled != size)
        m_scaler.emplace(AV_PIX_FMT_BGRA, size.first, size.second, mediabridge::ScaleQuality::Bicubic);
    m_scaled = size;
    if (SharesMatrix(m_canvas, *read)) read->colorspace = m_canvas.matrix;
    read = m_intake.Reduce(std::move(read));
    AVFramePtr fitted = m_scaler->Convert(read.get());
    if (!fitted) throw Error(ErrorKind::Output, "a picture can't be converted: " + m_scaler->Error());
    fitted = m_colours.Apply(std::move(fitted));

    if (size != std::pair(m_canvas.width, m_canvas.height)) {
        AVFramePtr whole = mediabridge::AllocatePicture(AV_PIX_FMT_BGRA, m_canvas.width, m_canvas.height);
        if (!whole || av_frame_copy_props(whole.get(), fitted.get()) < 0)
            throw NoMemory("no memory for a picture");
        const ptrdiff_t pitches[4] = {whole->linesize[0]};
        av_image_fill_black(whole->data, pitches, AV_PIX_FMT_BGRA, AVCOL_RANGE_JPEG, whole->width,
                            whole->height);
        if (m_around == Around::Nothing)
            std::memset(whole->data[0], 0,
                        static_cast<size_t>(whole->height) * static_cast<size_t>(whole->linesize[0]));
        const int left = (m_canvas.width - size.first) / 2, top = (m_canvas.height - size.second) / 2;
        av_image_copy_plane(whole->data[0] + ptrdiff_t{top} * whole->linesize[0] + ptrdiff_t{left} * 4,
                            whole->linesize[0], fitted->data[0], fitted->linesize[0], size.first * 4,
                            size.second);
        fitted = std::move(whole);
    }
    MarkAs(m_canvas, *fitted);
    return fitted;
}

} // namespace aveffect
