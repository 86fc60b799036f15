#pragma once
/// Which part of pictures is shown, and at what size.
#include <optional>
#include <string>

#include "host/support/av_owner.h"
#include "mediabridge/scaler.h"

namespace aveffect {

/// A length in pixels, or as a share of the picture's side.
struct Extent {
    double value = 0;
    bool percent = false;
};

/// In pixels.
struct PictureSize {
    int width = 0, height = 0;
    bool operator==(const PictureSize&) const = default;
};

/// What is asked for. Lengths are of pictures as they are seen: upright, of square pixels.
struct Framing {
    enum class Fit {
        Contain, ///< the whole picture, the background around it
        Cover,   ///< no background, the picture's edges cut off
        Stretch, ///< the picture's shape changes
    };
    struct Crop {
        Extent width, height;
        std::optional<Extent> x = {}, y = {}; ///< of its corner; absent: in the middle
    };
    std::optional<Extent> width, height;   ///< one alone: the other by the picture's shape
    std::optional<Fit> fit;                ///< absent: Contain
    std::optional<std::string> background; ///< in libavutil's words; absent: black
    std::optional<Crop> crop;              ///< before the size
    bool afterEffects = false;

    bool Resizes() const { return width || height; }
    /// Whether the size has a shape of its own rather than the pictures'.
    bool SaysShape() const {
        const bool share =
            width && height && width->percent && height->percent && width->value == height->value;
        return width && height && !share;
    }
    bool Empty() const { return !Resizes() && !crop; }
};

/// Throws Error (Usage) for options that say nothing without another one, or a colour that is none.
void CheckFraming(const Framing& framing);

/// The same where one source's pictures are framed, of which two views may be made: throws Error (Usage) for
/// what does not go with that too.
void RequireFraming(const Framing& framing, bool twoViews);

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
