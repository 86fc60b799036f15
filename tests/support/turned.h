#pragma once
/// A quarter turn into a part of a plane, computed plainly from its definition: both reductions as sums over
/// all old rows.
#include <algorithm>
#include <vector>

#include "kernels/turn.h"

namespace test {

/// Samples of unit bytes each, without padding.
struct Samples {
    size_t width, rows, unit;
    std::vector<uint8_t> bytes = std::vector<uint8_t>(width * rows * unit);

    uint8_t& At(size_t x, size_t y, size_t i) { return bytes[(y * width + x) * unit + i]; }
};

/// What an old row contributes to a new one, in 256ths.
inline size_t ShareOf(size_t oldRow, size_t oldRows, size_t newRow, size_t newRows) {
    const auto reached = [&](size_t end) { // of the new row up to the old one's end
        const size_t from = newRow * oldRows, to = std::clamp(end * newRows, from, from + oldRows);
        return ((to - from) * 256 * 2 + oldRows) / (2 * oldRows);
    };
    return reached(oldRow + 1) - reached(oldRow);
}

inline Samples ReducedRows(Samples old, size_t newRows) {
    Samples result{old.width, newRows, old.unit};
    for (size_t y = 0; y < newRows; ++y) {
        std::vector<size_t> sums(old.width * old.unit, 128);
        for (size_t row = 0; row < old.rows; ++row)
            if (const size_t share = ShareOf(row, old.rows, y, newRows))
                for (size_t x = 0; x < sums.size(); ++x) sums[x] += share * old.bytes[row * sums.size() + x];
        std::transform(sums.begin(), sums.end(), &result.bytes[y * sums.size()],
                       [](size_t sum) { return static_cast<uint8_t>(sum / 256); });
    }
    return result;
}

inline Samples Transposed(Samples old) {
    Samples result{old.rows, old.width, old.unit};
    for (size_t y = 0; y < old.rows; ++y)
        for (size_t x = 0; x < old.width; ++x)
            for (size_t i = 0; i < old.unit; ++i) result.At(y, x, i) = old.At(x, y, i);
    return result;
}

/// Turns a plane of bytes. The background's bytes from the lowest are those of a unit.
inline void Turned(const AVBased::kernels::Plane8& plane, size_t unit,
                   const AVBased::kernels::PlaneArea& area, bool clockwise, uint32_t background) {
    Samples old{plane.width / unit, plane.rows, unit};
    for (size_t y = 0; y < plane.rows; ++y)
        std::copy_n(plane.Row(y), plane.width, &old.bytes[y * plane.width]);
    // Column x and row y of it are row x and column y of the reduced plane.
    Samples reduced = ReducedRows(Transposed(ReducedRows(old, area.width)), area.height);
    for (size_t y = 0; y < plane.rows; ++y)
        for (size_t x = 0; x < old.width; ++x)
            for (size_t i = 0; i < unit; ++i) {
                uint8_t& byte = plane.Row(y)[x * unit + i];
                byte = static_cast<uint8_t>(background >> (8 * i));
                if (x < area.left || x >= area.left + area.width || y < area.top ||
                    y >= area.top + area.height)
                    continue;
                const size_t inX = x - area.left, inY = y - area.top;
                byte = clockwise ? reduced.At(area.width - 1 - inX, inY, i)
                                 : reduced.At(inX, area.height - 1 - inY, i);
            }
}

} // namespace test
