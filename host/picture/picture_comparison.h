#pragma once
/// How far two pictures of one size differ.
#include <optional>

#include "host/picture/filter_graph.h"

namespace aveffect {

/// Of one pair of pictures.
struct PictureDifference {
    double meanSquare = 0; ///< error over all samples, in steps of the samples' depth; 0: nothing differs
    double peak = 255;     ///< the largest sample
    double similarity = 1; ///< structural, SSIM; alpha does not count in it
};

/// The ratio of signal to noise in decibels: 10 log10(peak^2 / meanSquare); infinite without noise.
double PeakSignalToNoise(double meanSquare, double peak);

/// Compares pictures pair by pair, by libavfilter's measures. Used by one thread at a time.
class PictureComparison {
public:
    /// The second picture is compared in the first one's format, or the nearest that can be measured. Throws
    /// Error (Usage) when the sizes differ, (Output) when the pictures can't be compared.
    PictureDifference Compare(const AVFrame& first, const AVFrame& second);

    /// |first - second| in each of red, green and blue, brightened as much as goes without clipping. Sets the
    /// factor. Throws Error (Output).
    static mediabridge::AVFramePtr Draw(const AVFrame& first, const AVFrame& second, int& factor);

private:
    struct Shapes {
        int width, height, first, second;
        bool operator==(const Shapes&) const = default;
    };

    std::optional<FilterGraph> m_graph;
    Shapes m_shapes{};
    double m_peak = 0;
    int64_t m_pairs = 0;
};

} // namespace aveffect
