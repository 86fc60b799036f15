#pragma once
/// The light effects on a plane or a picture, computed plainly from their definitions.
#include <algorithm>
#include <cmath>
#include <vector>

#include "kernels/planes.h"

namespace test {

using AVBased::kernels::Plane8;

/// Every byte of a plane, from the first row's start to the last row's end.
inline std::vector<uint8_t> BytesOf(const Plane8& plane) {
    if (plane.Empty()) return {};
    return {plane.data, plane.Row(plane.rows - 1) + plane.width};
}

inline uint8_t EdgeLightOf(int square, int level) {
    return static_cast<uint8_t>(static_cast<int64_t>(std::sqrt(static_cast<double>(square)) * level));
}

/// Unit is 4 for pixels, whose last column stays, and 1 for samples.
inline void PlainEdgeLight(const Plane8& plane, size_t unit, int level, uint8_t flip) {
    const auto old = BytesOf(plane);
    for (size_t y = 0; y + 1 < plane.rows; ++y)
        for (size_t x = 0; x + (unit == 4 ? 4 : 0) < plane.width; ++x) {
            if (unit == 4 && x % 4 == 3) continue;
            const uint8_t* at = &old[y * plane.pitch + x];
            const int dx = at[0] - at[unit], dy = at[0] - at[plane.pitch];
            plane.Row(y)[x] = static_cast<uint8_t>(EdgeLightOf(dx * dx + dy * dy, level) ^ flip);
        }
}

struct PlainSpotlight {
    int64_t x, y, radius;
    int64_t brightness; ///< added, not in percent
    int64_t density;    ///< percent
    std::vector<int> colours;
    unsigned hShift = 0, vShift = 0;

    /// One plane of pixels, or luma and two of chroma.
    void operator()(const std::vector<Plane8>& planes) const {
        const size_t unit = planes.size() == 1 ? 4 : 1;
        const auto width = static_cast<int64_t>(planes[0].width / unit),
                   height = static_cast<int64_t>(planes[0].rows);
        if (y > height || x > width) return;
        const int64_t inner = 3 * radius >> 2, fullShare = density * 65536 / 100;
        for (int64_t py = std::max(y - radius, int64_t{0}); py < std::min(y + radius, height); ++py)
            for (int64_t px = std::max(x - radius, int64_t{0}); px < std::min(x + radius, width); ++px) {
                const int64_t squares = (px - x) * (px - x) + (py - y) * (py - y);
                if (squares > radius * radius) continue;
                int64_t share = fullShare, added = brightness;
                if (squares > (radius - inner) * (radius - inner)) {
                    const int64_t t = radius - static_cast<int64_t>(std::sqrt(static_cast<double>(squares)));
                    share = t * (fullShare / inner);
                    added = (t * (brightness * 256 / inner)) >> 8;
                }
                const auto mix = [&](const Plane8& plane, size_t cx, size_t cy, size_t i, int64_t more) {
                    if (cx >= plane.width || cy >= plane.rows) return;
                    uint8_t& q = plane.Row(cy)[cx];
                    const int64_t mixed = (q * (65536 - share) + colours[i] * share) >> 16;
                    q = static_cast<uint8_t>(std::clamp<int64_t>(mixed + more, 0, 255));
                };
                const auto column = static_cast<size_t>(px), row = static_cast<size_t>(py);
                for (size_t i = 0; i < (unit == 4 ? 3 : 1); ++i)
                    mix(planes[0], column * unit + i, row, i, added);
                for (size_t i = 1; i < planes.size(); ++i)
                    mix(planes[i], column >> hShift, row >> vShift, i, 0);
            }
    }
};

struct PlainRays {
    int x, y, level;

    // In 32 bits that wrap.
    static int Start(int centre, size_t position) {
        return static_cast<int>((static_cast<int64_t>(position) - centre) * 256);
    }
    static int Advance(int s, int level) {
        return static_cast<int>(int64_t{s} - (static_cast<int>(int64_t{s >> 4} * level) >> 10));
    }
    static size_t Place(int centre, int s, size_t size) {
        const int place = static_cast<int>(int64_t{centre} * 256 + 256 + s) >> 8;
        return static_cast<size_t>(std::clamp(place, 0, static_cast<int>(size) - 1));
    }

    /// A plane of a picture of that size; tone(sum) is the new sample.
    template <class Tone>
    void Radiate(const Plane8& plane, size_t unit, size_t width, size_t height, unsigned hShift,
                 unsigned vShift, Tone tone) const {
        const auto old = BytesOf(plane);
        const size_t columns = plane.width / unit;
        for (size_t py = 0; py < height; ++py)
            for (size_t px = 0; px < width; ++px) {
                if (px >> hShift >= columns || py >> vShift >= plane.rows) continue;
                uint8_t* const at = plane.Row(py >> vShift) + (px >> hShift) * unit;
                int sums[3] = {at[0], unit == 4 ? at[1] : 0, unit == 4 ? at[2] : 0};
                int sx = Start(x, px), sy = Start(y, py);
                for (int i = 0; i < 16; ++i) {
                    sx = Advance(sx, level);
                    sy = Advance(sy, level);
                    const size_t column = std::min(Place(x, sx, width) >> hShift, columns - 1);
                    const size_t row = std::min(Place(y, sy, height) >> vShift, plane.rows - 1);
                    for (size_t c = 0; c < (unit == 4 ? 3 : 1); ++c)
                        sums[c] += old[row * plane.pitch + column * unit + c];
                }
                for (size_t c = 0; c < (unit == 4 ? 3 : 1); ++c) at[c] = tone(sums[c]);
            }
    }
    auto PlainTone() const {
        return [*this](int sum) { return static_cast<uint8_t>(std::min((sum >> 4) + (level >> 3), 255)); };
    }
    auto MmxTone() const {
        return [*this](int sum) {
            return static_cast<uint8_t>(std::min(ChromaTone(sum) + ((level >> 3) & 255), 255));
        };
    }
    static uint8_t ChromaTone(int sum) { return static_cast<uint8_t>(std::min(sum >> 4, 255)); }
};

} // namespace test
