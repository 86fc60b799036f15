#pragma once
/// Cuts and scales pictures.
#include <optional>
#include <utility>

#include "host/picture/framing.h"
#include "mediabridge/scaler.h"

namespace aveffect {

/// Cuts and scales pictures of one source by a framing. With a size the pixels become square. Used by one
/// thread at a time.
class Framer {
public:
    explicit Framer(Framing framing = {})
        : m_framing(std::move(framing)) {}

    /// The picture of an upright one, in its pixel format where that can be scaled. Throws Error: Usage for a
    /// crop that reaches beyond the picture or a size that no picture has, Output.
    mediabridge::AVFramePtr Apply(mediabridge::AVFramePtr picture);

    /// What pictures of that size and shape of pixels become, in square pixels. Throws Error (Usage) as
    /// Apply().
    PictureSize SizeFor(PictureSize own, double pixelAspect) const;

    /// Whether pictures lost edges or got some, so that what is said of places in them no longer holds.
    bool Reshapes() const {
        return m_framing.crop || (m_framing.SaysShape() && m_framing.fit != Framing::Fit::Stretch);
    }

private:
    /// In a picture's own pixels.
    struct Part {
        int left = 0, top = 0, width = 0, height = 0;
    };
    Part PartOf(PictureSize own, double pixelAspect) const;
    void CutToShape(AVFrame& picture, PictureSize size) const;
    PictureSize Contained(const AVFrame& picture, PictureSize size) const;
    mediabridge::AVFramePtr OnBackground(const AVFrame& picture, PictureSize size);
    mediabridge::AVFramePtr Background(const AVFrame& like, PictureSize size) const;

    Framing m_framing;
    std::optional<mediabridge::Scaler> m_scaler;
    PictureSize m_scaled; ///< that the scaler makes
    AVPixelFormat m_format = AV_PIX_FMT_NONE;
    mediabridge::AVFramePtr m_background;
};

} // namespace aveffect
