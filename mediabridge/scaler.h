#pragma once
/// Pixel format and size conversion: on our own kernels where they serve, else on libswscale.
#include <memory>
#include <optional>
#include <string>

#include "mediabridge/av_ptr.h"
#include "mediabridge/pixel_conversion.h"

namespace mediabridge {

/// Converts pictures to one format and size, honouring each picture's colour range and matrix, dithering when
/// depth is lost; a picture that already has the format, size and range is copied byte for byte. Keeps its
/// context between pictures of the same shape. Converts in ways alone of which libswscale logs nothing. Used
/// by one thread at a time.
///
/// The matrix is the picture's own (AVFrame::colorspace) on the way to RGB and back; a picture that has none,
/// or says RGB, counts as BT.601 whatever its size. A converted picture keeps the matrix tag on RGB too, so
/// that the way back uses it; a matrix that is asked for takes its place.
///
/// Chroma lies where the picture says, else at the left column of its pair and half way between its rows.
class Scaler {
public:
    /// Width or height 0 keep each source's own. A range of AVCOL_RANGE_UNSPECIFIED keeps the source's where
    /// both formats are YUV or grey, else takes the usual range of the target format; J formats are always
    /// full range. A matrix of AVCOL_SPC_UNSPECIFIED keeps the source's.
    Scaler(AVPixelFormat format, int width, int height, ScaleQuality quality,
           AVColorRange range = AVCOL_RANGE_UNSPECIFIED, AVColorSpace matrix = AVCOL_SPC_UNSPECIFIED);

    /// Converts into a new picture from recycled memory, with the source's properties (time, display aspect
    /// ratio, field flags, colour description) and the range that it really has. Null when libswscale can't;
    /// Error() then says why. Throws std::bad_alloc when memory is short.
    AVFramePtr Convert(const AVFrame* source);

    /// Whether conversion of this picture reads nothing but its pixels; libswscale reads what lies around
    /// them.
    bool ReadsPixelsAlone(const AVFrame* source) const;

    const std::string& Error() const noexcept { return m_error; }

private:
    struct Shape {
        PictureSide source;
        PictureSide target;
        bool operator==(const Shape&) const = default;
    };

    Shape ShapeFor(const AVFrame* source) const;
    AVColorRange TargetRange(const PictureSide& source) const;
    int FlagsFor(const Shape& shape) const;
    bool Prepare(const Shape& shape);
    bool PrepareContext(const Shape& shape);
    AVFramePtr ConvertToEvenRows(const AVFrame* source);
    AVFramePtr Fail(const std::string& reason);

    AVPixelFormat m_format;
    int m_width;
    int m_height;
    ScaleQuality m_quality;
    AVColorRange m_range;
    AVColorSpace m_matrix;
    Shape m_shape; ///< of the last conversion, by one of the next two
    std::optional<PixelConversion> m_conversion;
    SwsContextPtr m_context;
    std::unique_ptr<Scaler> m_toPixels, m_toRows; ///< where one step won't do
    std::string m_error;
};

/// Whether pictures that say this matrix are read with BT.601's, as those are that say nothing.
bool Is601(AVColorSpace matrix);

} // namespace mediabridge
