#include "AVEffect/kernels/colour.h"

#include <algorithm>
#include <cstring>

#include "AVEffect/kernels/arithmetic.h"

namespace AVBased::kernels {

namespace {

// A pixel as the kernels change it; alpha stays where it is.
struct Bgr {
    int b, g, r;
};

constexpr int Mean(Bgr p) { return (p.b + p.g + p.r) / 3; }

template <class Change>
void ForPixels(Plane32 plane, Change change) noexcept {
    for (size_t y = 0; y < plane.rows; ++y) {
        uint8_t* row = plane.Row(y);
        for (size_t x = 0; x < plane.width; ++x) {
            uint8_t* p = row + 4 * x;
            const Bgr result = change(Bgr{p[0], p[1], p[2]});
            p[0] = TruncToByte(result.b);
            p[1] = TruncToByte(result.g);
            p[2] = TruncToByte(result.r);
        }
    }
}

template <class Change>
void ForSamples(Plane8 plane, Change change) noexcept {
    for (size_t y = 0; y < plane.rows; ++y) {
        uint8_t* row = plane.Row(y);
        for (size_t x = 0; x < plane.width; ++x) row[x] = change(row[x]);
    }
}

} // namespace

uint8_t Apply(MiddleGain map, uint8_t x) noexcept {
    return ClampToByte(WrappingAdd(WrappingMultiply(x - 127, map.gain) >> 8, map.offset));
}

void GrayRgba32(Plane32 plane) noexcept {
    ForPixels(plane, [](Bgr p) {
        const int mean = Mean(p);
        return Bgr{mean, mean, mean};
    });
}

void FlipColorRgba32(Plane32 plane) noexcept {
    ForPixels(plane, [](Bgr p) { return Bgr{p.r, p.g, p.b}; });
}

void InvertRgba32(Plane32 plane) noexcept {
    for (size_t y = 0; y < plane.rows; ++y) {
        uint8_t* row = plane.Row(y);
        for (size_t x = 0; x < plane.width; ++x) {
            uint32_t pixel;
            std::memcpy(&pixel, row + 4 * x, sizeof pixel);
            pixel ^= 0xFFFFFFu;
            std::memcpy(row + 4 * x, &pixel, sizeof pixel);
        }
    }
}

void AgedFilmRgba32(Plane32 plane) noexcept {
    ForPixels(plane, [](Bgr p) {
        // Dark pixels are lifted so that B does not fall below 0.
        const int mean = std::max(Mean(p), 35);
        return Bgr{mean - 35, mean - 15, mean};
    });
}

void TableRgba32(Plane32 plane, const ByteTable& table) noexcept {
    ForPixels(plane, [&](Bgr p) { return Bgr{table[p.b], table[p.g], table[p.r]}; });
}

void SaturateRgba32(Plane32 plane, const ByteTable& table, int32_t gain) noexcept {
    ForPixels(plane, [&](Bgr p) {
        const Bgr mapped = {table[p.b], table[p.g], table[p.r]};
        const int mean = Mean(mapped);
        const auto spread = [&](int c) {
            return ClampToByte(mean + (WrappingMultiply(c - mean, gain) >> 8));
        };
        return Bgr{spread(mapped.b), spread(mapped.g), spread(mapped.r)};
    });
}

void InvertComponent(Plane8 plane) noexcept {
    ForSamples(plane, [](uint8_t x) { return TruncToByte(~x); });
}

void MiddleGainComponent(Plane8 plane, MiddleGain map) noexcept {
    ByteTable table;
    for (int x = 0; x < 256; ++x) table[x] = Apply(map, TruncToByte(x));
    ForSamples(plane, [&](uint8_t x) { return table[x]; });
}

void FillPitch(Plane8 plane, uint8_t value) noexcept {
    if (plane.data) std::memset(plane.data, value, plane.pitch * plane.rows);
}

void SwapPlanes(Plane8 first, Plane8 second) noexcept {
    const size_t width = std::min(first.width, second.width);
    for (size_t y = 0; y < std::min(first.rows, second.rows); ++y)
        std::swap_ranges(first.Row(y), first.Row(y) + width, second.Row(y));
}

} // namespace AVBased::kernels
