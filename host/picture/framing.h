#pragma once
/// Which part of pictures is to be shown, and at what size.
#include <optional>
#include <string>

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

} // namespace aveffect
