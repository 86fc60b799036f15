#pragma once
/// Whether pictures are really transparent, and formats whose pixels are so or not.
#include "host/picture/picture_filter.h"
#include "host/support/av_owner.h"
#include "host/support/reporter.h"

namespace aveffect {

/// Whether no pixel lets anything through: pictures without alpha, those whose alpha is full everywhere, and
/// those that use no transparent colour of their palette.
bool IsOpaque(const AVFrame& picture);

/// Says that pictures become opaque: once, at the first that is not so already.
class AlphaLoss {
public:
    /// Pictures like this one go on in the next format. Why: what keeps no transparency.
    void Watch(const AVFrame& picture, AVPixelFormat next, const std::string& why, Reporter& reporter);

private:
    bool m_said = false;
};

/// Brings BGRA pictures to PAL8, each to the palette that suits it best. What is less than half opaque
/// becomes transparent, the rest opaque. Used by one thread at a time.
class PaletteMaker {
public:
    /// Throws Error (Output).
    mediabridge::AVFramePtr Apply(mediabridge::AVFramePtr picture) {
        return m_filter.Apply(std::move(picture));
    }

private:
    PictureFilter m_filter{"split[seen][counted];"
                           "[counted]palettegen=stats_mode=single:reserve_transparent=1[palette];"
                           "[seen][palette]paletteuse=new=1:alpha_threshold=128",
                           "brought to a palette"};
};

} // namespace aveffect
