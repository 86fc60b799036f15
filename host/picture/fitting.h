#pragma once
/// Bringing pictures of any shape to the output's.
#include <optional>
#include <utility>

#include "host/picture/colour_match.h"
#include "host/picture/picture_intake.h"
#include "mediabridge/scaler.h"

namespace aveffect {

/// The shape that all pictures of an output have, and how its colours are stored.
struct Canvas {
    int width = 0, height = 0;
    AVRational pixelAspect{1, 1};
    bool hasMatrix = false; ///< its pictures are YUV rather than RGB
    AVColorSpace matrix = AVCOL_SPC_UNSPECIFIED;
    AVColorPrimaries primaries = AVCOL_PRI_UNSPECIFIED;
    AVColorTransferCharacteristic transfer = AVCOL_TRC_UNSPECIFIED;
};

/// A canvas on which this picture lies as it is.
Canvas CanvasOf(const AVFrame& picture);

/// Makes the picture say the canvas's shape of pixels and colours.
void MarkAs(const Canvas& canvas, AVFrame& picture);

/// Whether the picture is PQ or HLG, and what lies on the canvas is neither.
bool NeedsStandardRange(const Canvas& canvas, const AVFrame& picture);

/// Fits upright pictures of one source onto a canvas: as large as it holds them whole, in the middle, black
/// or nothing around (an odd row or column of it goes to the bottom or right). Used by one thread at a time.
class Fitter {
public:
    enum class Around { Black, Nothing };

    /// Terms as for PictureIntake.
    explicit Fitter(const Canvas& canvas = {}, IntakeTerms* terms = nullptr, Around around = Around::Black)
        : m_canvas(canvas)
        , m_around(around)
        , m_intake(terms)
        , m_colours(canvas.primaries, canvas.transfer) {}

    /// Whether the picture lies on the canvas as it is, whatever its pixel format.
    bool Fits(const AVFrame& picture) const;

    /// Whether nothing of the canvas is left free of it.
    bool Fills(const AVFrame& picture) const {
        return Fits(picture) || FittedSize(picture) == std::pair(m_canvas.width, m_canvas.height);
    }

    /// A new picture in BGRA, of 8 bits with dithering. Throws Error (Output).
    mediabridge::AVFramePtr Fit(const AVFrame& picture);

private:
    std::pair<int, int> FittedSize(const AVFrame& picture) const;

    Canvas m_canvas;
    Around m_around;
    PictureIntake m_intake;
    ColourMatch m_colours;
    std::optional<mediabridge::Scaler> m_scaler;
    std::pair<int, int> m_scaled; ///< size that the scaler makes
};

} // namespace aveffect
