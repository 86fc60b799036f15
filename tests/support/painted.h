#pragma once
/// Strokes, portrait frames and oil paint, computed plainly from their definitions.
#include <algorithm>
#include <array>
#include <cstdlib>
#include <vector>

#include "kernels/planes.h"

namespace test {

using Plane = AVBased::kernels::Plane8;

/// One byte of each pixel, or a plane of luma or chroma, addressed by pixels or luma samples.
struct Channel {
    Plane plane;
    size_t unit = 1, place = 0; ///< bytes of a pixel, and which of them
    unsigned horizontalShift = 0, verticalShift = 0;

    size_t Width() const { return plane.width / unit; }
    bool Has(size_t x, size_t y) const {
        return x >> horizontalShift < Width() && y >> verticalShift < plane.rows;
    }
    uint8_t& At(size_t x, size_t y) const {
        return plane.Row(y >> verticalShift)[(x >> horizontalShift) * unit + place];
    }
    /// What it lacks, it has at its last column or row; an empty one has nothing but 0.
    uint8_t Near(size_t x, size_t y) const {
        if (plane.Empty()) return 0;
        return At(std::min(x, (Width() << horizontalShift) - 1),
                  std::min(y, (plane.rows << verticalShift) - 1));
    }
};

inline void StrokedPixels(const Plane& plane, uint32_t threshold) {
    std::vector<int> greys;
    const size_t width = plane.width / 4;
    for (size_t y = 0; y < plane.rows; ++y)
        for (const uint8_t* p = plane.Row(y); p < plane.Row(y) + 4 * width; p += 4)
            greys.push_back((p[2] + p[1] + (p[0] || p[1] || p[2] || p[3] ? 1 : 0)) / 3);
    for (size_t y = 1; y + 1 < plane.rows; ++y)
        for (size_t x = 1; x + 1 < width; ++x) {
            const int* const g = &greys[y * width + x];
            std::array<int, 4> s = {g[-1], g[1], greys[(y - 1) * width + x], greys[(y + 1) * width + x]};
            std::sort(s.begin(), s.end());
            const auto contrast = static_cast<uint32_t>((s[2] - s[1]) + 2 * (s[3] - s[0]));
            std::fill_n(plane.Row(y) + 4 * x, 3, contrast > threshold ? 0 : 255);
            plane.Row(y)[4 * x + 3] = 0;
        }
}

inline void StrokedSamples(const Plane& plane, uint32_t threshold) {
    for (size_t y = plane.rows; y-- > 2;)
        for (size_t x = 0; x < plane.width; ++x) {
            const int difference = std::abs(plane.Row(y)[x] - plane.Row(y - 1)[x]);
            plane.Row(y)[x] = static_cast<uint32_t>(difference * 4) > threshold ? 0 : 255;
        }
}

/// A channel of a picture of that size. What is mixed into alpha makes it 255.
inline void Portrait(const Channel& channel, size_t pictureWidth, size_t pictureHeight, long band,
                     uint8_t value, bool alpha = false) {
    const long width = static_cast<long>(pictureWidth), height = static_cast<long>(pictureHeight);
    const long solid = band >> 4;
    const long xEnd = std::min(band + solid, width), yEnd = std::min(band + solid, height);
    const auto mix = [&](long column, long row, long weight) {
        const auto x = static_cast<size_t>(column), y = static_cast<size_t>(row);
        if (!channel.Has(x, y)) return;
        uint8_t& c = channel.At(x, y);
        c = alpha ? uint8_t{255} : static_cast<uint8_t>((c * (256 - weight) + value * weight) / 256);
    };
    const auto fill = [&](long x, long y) {
        const auto column = static_cast<size_t>(x), row = static_cast<size_t>(y);
        if (channel.Has(column, row)) channel.At(column, row) = value;
    };
    for (long y = 0; y < std::min(solid, height); ++y)
        for (long x = 0; x < width; ++x) fill(x, y);
    for (long y = solid; y < yEnd; ++y)
        for (long x = 0; x < width; ++x) mix(x, y, (yEnd - y) * 256 / band);
    for (long y = height - yEnd; y < height - solid; ++y)
        for (long x = 0; x < width; ++x) mix(x, y, 256 - (height - solid - y) * 256 / band);
    for (long y = std::max(height - solid, 0L); y < height; ++y)
        for (long x = 0; x < width; ++x) fill(x, y);
    for (long y = 0; y < height; ++y) {
        for (long x = 0; x < std::min(solid, width); ++x) fill(x, y);
        for (long k = 0; k < xEnd - solid; ++k) {
            const long weight = (xEnd - solid - k) * 256 / band;
            mix(solid + k, y, weight);
            mix(width - xEnd + k, y, 256 - weight);
        }
        for (long x = std::max(width - solid, 0L); x < width; ++x) fill(x, y);
    }
}

/// The channel of that number, of a whole picture's, is the brightness.
inline void Oil(const std::array<Channel, 3>& channels, size_t brightness, size_t radius, size_t levels) {
    const size_t width = channels[brightness].Width(), height = channels[brightness].plane.rows;
    // Beyond 256 levels every brightness has a bin of its own, in the same order.
    levels = std::min<size_t>(levels, 256);
    std::vector<std::array<uint8_t, 3>> old;
    for (size_t y = 0; y < height; ++y)
        for (size_t x = 0; x < width; ++x)
            old.push_back({channels[0].Near(x, y), channels[1].Near(x, y), channels[2].Near(x, y)});
    std::vector<std::array<size_t, 4>> bins;
    for (size_t y = 0; y < height; ++y)
        for (size_t x = 0; x < width; ++x) {
            bins.assign(levels + 1, {});
            for (size_t v = y - std::min(y, radius); v < std::min(y + radius + 1, height); ++v)
                for (size_t u = x - std::min(x, radius); u < std::min(x + radius + 1, width); ++u) {
                    const auto& samples = old[v * width + u];
                    auto& bin = bins[samples[brightness] * levels / 256];
                    for (size_t i = 0; i < 3; ++i) bin[i] += samples[i];
                    ++bin[3];
                }
            const auto& best = *std::max_element(bins.begin(), bins.end(),
                                                 [](const auto& a, const auto& b) { return a[3] < b[3]; });
            for (size_t i = 0; i < 3; ++i)
                if (channels[i].Has(x, y)) channels[i].At(x, y) = static_cast<uint8_t>(best[i] / best[3]);
        }
}

} // namespace test
