#pragma once
/// Strokes, portrait frames and oil paint, computed plainly from their definitions.
#include <algorithm>
#include <array>
#include <cstdlib>
#include <vector>

#include "AVEffect/kernels/planes.h"

namespace test {

/// A plane with a copy of its old bytes.
struct OldAndNew {
    AVBased::kernels::Plane8 now;
    std::vector<uint8_t> bytes;

    explicit OldAndNew(const AVBased::kernels::Plane8& plane)
        : now(plane)
        , bytes(plane.width * plane.rows) {
        for (size_t y = 0; y < plane.rows; ++y)
            std::copy_n(plane.Row(y), plane.width, bytes.data() + y * plane.width);
    }
    int At(size_t x, size_t y) const { return bytes[y * now.width + x]; }
};

inline void StrokedPixels(const AVBased::kernels::Plane8& plane, uint32_t threshold) {
    const OldAndNew picture(plane);
    const auto grey = [&](size_t x, size_t y) {
        int any = 0;
        for (size_t i = 0; i < 4; ++i) any |= picture.At(4 * x + i, y);
        return (picture.At(4 * x + 2, y) + picture.At(4 * x + 1, y) + (any != 0 ? 1 : 0)) / 3;
    };
    for (size_t y = 1; y + 1 < plane.rows; ++y)
        for (size_t x = 1; x + 1 < plane.width / 4; ++x) {
            std::array<int, 4> s = {grey(x, y - 1), grey(x - 1, y), grey(x, y + 1), grey(x + 1, y)};
            std::sort(s.begin(), s.end());
            const auto contrast = static_cast<uint32_t>((s[2] - s[1]) + 2 * (s[3] - s[0]));
            uint8_t* const pixel = plane.Row(y) + 4 * x;
            std::fill_n(pixel, 3, contrast > threshold ? 0 : 255);
            pixel[3] = 0;
        }
}

inline void StrokedSamples(const AVBased::kernels::Plane8& plane, uint32_t threshold) {
    for (size_t y = plane.rows; y-- > 2;)
        for (size_t x = 0; x < plane.width; ++x) {
            const int difference = std::abs(plane.Row(y)[x] - plane.Row(y - 1)[x]);
            plane.Row(y)[x] = static_cast<uint32_t>(difference * 4) > threshold ? 0 : 255;
        }
}

/// Calls fill(x, y) and mix(x, y, the colour's weight) for the pixels of a portrait's frame, one by one in
/// their order. Sizes and band are counts of pixels.
template <class Fill, class Mix>
void ForPortrait(long width, long height, long band, Fill fill, Mix mix) {
    const long solid = band >> 4;
    const long xEnd = std::min(band + solid, width), yEnd = std::min(band + solid, height);
    const auto forRows = [&](long begin, long end, auto&& visit) {
        for (long y = std::max(begin, 0L); y < std::min(end, height); ++y)
            for (long x = 0; x < width; ++x) visit(x, y);
    };
    forRows(0, solid, fill);
    forRows(solid, yEnd, [&](long x, long y) { mix(x, y, (yEnd - y) * 256 / band); });
    forRows(height - yEnd, height - solid,
            [&](long x, long y) { mix(x, y, 256 - (height - solid - y) * 256 / band); });
    forRows(height - solid, height, fill);
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

inline void Mix(uint8_t& sample, long value, long weight) {
    sample = static_cast<uint8_t>((sample * (256 - weight) + value * weight) / 256);
}

/// The colour is 0xAARRGGBB.
inline void PortraitPixels(const AVBased::kernels::Plane8& plane, long band, uint32_t colour) {
    const auto at = [&](long x, long y) { return plane.Row(static_cast<size_t>(y)) + 4 * x; };
    ForPortrait(
        static_cast<long>(plane.width / 4), static_cast<long>(plane.rows), band,
        [&](long x, long y) {
            for (int i = 0; i < 4; ++i) at(x, y)[i] = static_cast<uint8_t>(colour >> (8 * i));
        },
        [&](long x, long y, long weight) {
            for (int i = 0; i < 3; ++i) Mix(at(x, y)[i], (colour >> (8 * i)) & 255, weight);
            at(x, y)[3] = 255;
        });
}

/// A plane of luma or chroma of a picture of that size.
inline void PortraitSamples(const AVBased::kernels::Plane8& plane, size_t width, size_t height,
                            unsigned horizontalShift, unsigned verticalShift, long band, uint8_t value) {
    uint8_t outside = 0; // what a plane lacks
    const auto at = [&](long x, long y) -> uint8_t& {
        const size_t column = static_cast<size_t>(x) >> horizontalShift,
                     row = static_cast<size_t>(y) >> verticalShift;
        return column < plane.width && row < plane.rows ? plane.Row(row)[column] : outside;
    };
    ForPortrait(
        static_cast<long>(width), static_cast<long>(height), band, [&](long x, long y) { at(x, y) = value; },
        [&](long x, long y, long weight) { Mix(at(x, y), value, weight); });
}

/// Calls put(x, y, means) for every pixel: the means of three channels, sample(channel, x, y), over its
/// neighbours in the most frequent bin of brightness(x, y).
template <class Brightness, class Sample, class Put>
void ForOil(long width, long height, long radius, long levels, Brightness brightness, Sample sample,
            Put put) {
    std::vector<std::array<long, 4>> bins;
    for (long y = 0; y < height; ++y)
        for (long x = 0; x < width; ++x) {
            bins.assign(static_cast<size_t>(std::min(levels, 256L)) + 1, {});
            for (long v = std::max(y - radius, 0L); v < std::min(y + radius + 1, height); ++v)
                for (long u = std::max(x - radius, 0L); u < std::min(x + radius + 1, width); ++u) {
                    // Beyond 256 levels every brightness has a bin of its own, in the same order.
                    auto& bin = bins[static_cast<size_t>(brightness(u, v) * std::min(levels, 256L) / 256)];
                    for (size_t i = 0; i < 3; ++i) bin[i] += sample(i, u, v);
                    ++bin[3];
                }
            const auto& best = *std::max_element(bins.begin(), bins.end(),
                                                 [](const auto& a, const auto& b) { return a[3] < b[3]; });
            put(x, y, std::array{best[0] / best[3], best[1] / best[3], best[2] / best[3]});
        }
}

inline void OilPixels(const AVBased::kernels::Plane8& plane, long radius, long levels) {
    const OldAndNew picture(plane);
    const auto sample = [&](size_t i, long x, long y) -> long {
        return picture.At(4 * static_cast<size_t>(x) + i, static_cast<size_t>(y));
    };
    ForOil(
        static_cast<long>(plane.width / 4), static_cast<long>(plane.rows), radius, levels,
        [&](long x, long y) { return sample(1, x, y); }, sample,
        [&](long x, long y, const auto& means) {
            uint8_t* const pixel = plane.Row(static_cast<size_t>(y)) + 4 * x;
            for (size_t i = 0; i < 3; ++i) pixel[i] = static_cast<uint8_t>(means[i]);
            pixel[3] = 0;
        });
}

/// Chroma that a plane lacks is read at its last column or row, and not written; planes may be empty.
inline void OilPlanes(const AVBased::kernels::Plane8& y, const AVBased::kernels::Plane8& u,
                      const AVBased::kernels::Plane8& v, unsigned horizontalShift, unsigned verticalShift,
                      long radius, long levels) {
    const OldAndNew planes[3] = {OldAndNew(y), OldAndNew(u), OldAndNew(v)};
    const auto column = [&](size_t i, long x) { return static_cast<size_t>(x) >> (i ? horizontalShift : 0); };
    const auto row = [&](size_t i, long line) {
        return static_cast<size_t>(line) >> (i ? verticalShift : 0);
    };
    const auto sample = [&](size_t i, long x, long line) -> long {
        const auto& plane = planes[i].now;
        if (plane.Empty()) return 0;
        return planes[i].At(std::min(column(i, x), plane.width - 1), std::min(row(i, line), plane.rows - 1));
    };
    ForOil(
        static_cast<long>(y.width), static_cast<long>(y.rows), radius, levels,
        [&](long x, long line) { return sample(0, x, line); }, sample,
        [&](long x, long line, const auto& means) {
            for (size_t i = 0; i < 3; ++i)
                if (column(i, x) < planes[i].now.width && row(i, line) < planes[i].now.rows)
                    planes[i].now.Row(row(i, line))[column(i, x)] = static_cast<uint8_t>(means[i]);
        });
}

} // namespace test
