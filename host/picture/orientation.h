#pragma once
/// Pictures as they are meant to be seen: turned upright as a clip's display matrix says, of square pixels.
#include <cstdint>
#include <optional>
#include <string>

#include "host/picture/picture_filter.h"
#include "host/support/av_owner.h"

namespace aveffect {

/// The display matrix of a stream, null when it has none or the pictures are upright as they are stored.
const int32_t* DisplayMatrix(const AVStream& stream);

/// libavfilter's words for what a display matrix asks for; absent when it is no multiple of a quarter turn.
std::optional<std::string> TurnFilter(const int32_t matrix[9]);

/// Turns pictures upright, as far as that takes quarter turns and mirrors. Used by one thread at a time.
class Upright {
public:
    /// The stream's word counts; where it says nothing, each picture's own (photos say it so). A picture that
    /// is turned says nothing about it any more, nor about two views in it. Throws Error (Output).
    mediabridge::AVFramePtr Apply(mediabridge::AVFramePtr picture, const AVStream& stream);

    /// Whether the last picture was turned.
    bool Turned() const noexcept { return m_turned; }

private:
    std::string m_words; ///< the filter's
    std::optional<PictureFilter> m_filter;
    bool m_turned = false;
};

/// The shape of a picture's pixels, width to height; 1 when it is not said, or is no shape that a screen has.
double PixelAspect(const AVFrame& picture);

/// Columns of a picture that shows the same with pixels of that shape, at the same height.
int WidthFor(const AVFrame& picture, AVRational pixelAspect);

} // namespace aveffect
