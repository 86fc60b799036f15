#pragma once
/// Conversion between RGB and YUV as its definition has it, in double precision, unrounded.
#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

extern "C" {
#include <libavutil/frame.h>
#include <libavutil/pixdesc.h>
}

namespace test {

/// Samples of a plane.
struct Grid {
    int width = 0, height = 0;
    std::vector<double> samples;

    Grid(int w, int h)
        : width(w)
        , height(h)
        , samples(static_cast<size_t>(w) * static_cast<size_t>(h)) {}
    double& At(int x, int y) {
        return samples[static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)];
    }
};

/// A component of an 8-bit picture.
inline Grid Component(const AVFrame& picture, int component) {
    const AVPixFmtDescriptor& of = *av_pix_fmt_desc_get(static_cast<AVPixelFormat>(picture.format));
    const AVComponentDescriptor& at = of.comp[component];
    const bool chroma = component == 1 || component == 2;
    Grid grid(AV_CEIL_RSHIFT(picture.width, chroma ? of.log2_chroma_w : 0),
              AV_CEIL_RSHIFT(picture.height, chroma ? of.log2_chroma_h : 0));
    for (int y = 0; y < grid.height; ++y)
        for (int x = 0; x < grid.width; ++x)
            grid.At(x, y) = picture.data[at.plane][picture.linesize[at.plane] * y + at.step * x + at.offset];
    return grid;
}

struct ColourModel {
    double red, blue;    ///< what they count in luma
    bool full;           ///< range
    bool cubic;          ///< or straight lines between samples
    double across, down; ///< where halved chroma lies, in luma samples behind the first of its pair

    double Weight(double distance) const {
        const double d = std::abs(distance), c = 0.6;
        if (!cubic) return std::max(0.0, 1 - d);
        if (d <= 1) return (2 - c) * d * d * d - (3 - c) * d * d + 1;
        return d < 2 ? -c * d * d * d + 5 * c * d * d - 8 * c * d + 4 * c : 0;
    }
    /// Sample number `to` of so many, which lies at a place among `count` others.
    template <class Sample>
    double Mixed(double place, double stretch, int count, Sample sample) const {
        double sum = 0, total = 0;
        for (int i = static_cast<int>(std::floor(place)) - 4; i <= place + 5; ++i) {
            const double weight = Weight((i - place) / stretch);
            sum += weight * sample(std::clamp(i, 0, count - 1));
            total += weight;
        }
        return sum / total;
    }
    static double PlaceOf(int to, bool grows, double chroma) {
        return grows ? (to - chroma) / 2 : 2 * to + chroma;
    }
    /// Chroma in another size: the same, half or twice.
    Grid Resized(Grid from, int width, int height) const {
        Grid wide(width, from.height), result(width, height);
        for (int y = 0; y < from.height; ++y)
            for (int x = 0; x < width; ++x)
                wide.At(x, y) = width == from.width ? from.At(x, y)
                                                    : Mixed(PlaceOf(x, width > from.width, across),
                                                            width > from.width ? 1 : 2, from.width,
                                                            [&](int i) { return from.At(i, y); });
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                result.At(x, y) = height == from.height ? wide.At(x, y)
                                                        : Mixed(PlaceOf(y, height > from.height, down),
                                                                height > from.height ? 1 : 2, from.height,
                                                                [&](int i) { return wide.At(x, i); });
        return result;
    }
    double Chroma() const { return full ? 255 : 224; }
    double Luma() const { return full ? 255 : 219; }

    /// R, G and B of a YUV picture.
    std::array<Grid, 3> Rgb(const AVFrame& yuv) const {
        Grid y = Component(yuv, 0);
        const Grid u = Resized(Component(yuv, 1), y.width, y.height),
                   v = Resized(Component(yuv, 2), y.width, y.height);
        std::array<Grid, 3> rgb = {y, y, y};
        for (size_t i = 0; i < y.samples.size(); ++i) {
            const double luma = (y.samples[i] - (full ? 0 : 16)) / Luma();
            const double r = luma + 2 * (1 - red) * (v.samples[i] - 128) / Chroma();
            const double b = luma + 2 * (1 - blue) * (u.samples[i] - 128) / Chroma();
            const double g = (luma - red * r - blue * b) / (1 - red - blue);
            rgb[0].samples[i] = 255 * r;
            rgb[1].samples[i] = 255 * g;
            rgb[2].samples[i] = 255 * b;
        }
        return rgb;
    }
    /// Y, U and V of an RGB picture, chroma in that size.
    std::array<Grid, 3> Yuv(const AVFrame& rgb, int chromaWidth, int chromaHeight) const {
        const Grid r = Component(rgb, 0), g = Component(rgb, 1), b = Component(rgb, 2);
        Grid y = r, u = r, v = r;
        for (size_t i = 0; i < y.samples.size(); ++i) {
            const double luma =
                (red * r.samples[i] + (1 - red - blue) * g.samples[i] + blue * b.samples[i]) / 255;
            y.samples[i] = Luma() * luma + (full ? 0 : 16);
            u.samples[i] = 128 + Chroma() * (b.samples[i] / 255 - luma) / (2 * (1 - blue));
            v.samples[i] = 128 + Chroma() * (r.samples[i] / 255 - luma) / (2 * (1 - red));
        }
        return {y, Resized(u, chromaWidth, chromaHeight), Resized(v, chromaWidth, chromaHeight)};
    }
};

/// How far samples are from what they should be, limited to 0..255.
struct SampleError {
    double mean = 0, largest = 0;

    SampleError(const Grid& found, const Grid& wanted) {
        for (size_t i = 0; i < found.samples.size(); ++i) {
            const double error = std::abs(found.samples[i] - std::clamp(wanted.samples[i], 0.0, 255.0));
            mean += error / static_cast<double>(found.samples.size());
            largest = std::max(largest, error);
        }
    }
};

} // namespace test
