#pragma once
/// What morphology and relief do to one plane, sample by sample from an untouched copy.
#include <algorithm>
#include <vector>

#include "kernels/planes.h"

namespace test {

using AVBased::kernels::Plane8;

/// Calls change(sample, read) for every byte of samples (step 1) or pixels (step 4) but alpha. read(dx, dy)
/// gives the old neighbour that far away, -1 outside the plane.
template <class Change>
void ForNeighbours(Plane8 plane, size_t step, Change change) {
    const std::vector<uint8_t> old(plane.data, plane.Row(plane.rows - 1) + plane.width);
    for (size_t y = 0; y < plane.rows; ++y)
        for (size_t x = 0; x < plane.width; ++x) {
            if (step == 4 && x % 4 == 3) continue;
            change(plane.Row(y)[x], [&](int dx, int dy) {
                const size_t column = x + static_cast<size_t>(dx) * step, row = y + static_cast<size_t>(dy);
                return column < plane.width && row < plane.rows ? old[row * plane.pitch + column] : -1;
            });
        }
}

/// The largest of the block two samples to the left and upwards, or the smallest of the block to the right
/// and downwards; samples whose block leaves the plane stay.
template <bool Dilates>
void TakeExtreme(Plane8 plane, size_t step) {
    constexpr int kWay = Dilates ? -1 : 1;
    ForNeighbours(plane, step, [](uint8_t& sample, auto read) {
        for (int i = 0; i < 9 && read(2 * kWay, 2 * kWay) >= 0; ++i) {
            const auto other = static_cast<uint8_t>(read(kWay * (i % 3), kWay * (i / 3)));
            sample = Dilates ? std::max(sample, other) : std::min(sample, other);
        }
    });
}

/// The sum of the 3x3 block about each sample, nine weights in 256ths row by row, each term rounded down by
/// itself. What lies outside the plane has no term.
inline void Relief(Plane8 plane, size_t step, const int16_t* weights) {
    ForNeighbours(plane, step, [&](uint8_t& sample, auto read) {
        int sum = 0;
        for (int i = 0; i < 9; ++i)
            if (const int value = read(i % 3 - 1, i / 3 - 1); value >= 0) sum += value * weights[i] >> 8;
        sample = static_cast<uint8_t>(std::clamp(sum, 0, 255));
    });
}

} // namespace test
