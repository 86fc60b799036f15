#include "AVEffect/kernels/filter3x3.h"

#include <cstring>

#include "AVEffect/kernels/arithmetic.h"

namespace AVBased::kernels {

namespace {

// Each filter is a weighted sum of three column sums, so that a row costs one pass down and one pass across.
struct Blur {
    static int Column(int above, int here, int below) { return above + 2 * here + below; }
    static uint8_t Across(int left, int middle, int right, int) {
        return TruncToByte((left + 2 * middle + right) >> 4);
    }
};
struct Sharpen {
    static int Column(int above, int here, int below) { return above + here + below; }
    static uint8_t Across(int left, int middle, int right, int here) {
        return ClampToByte(10 * here - (left + middle + right));
    }
};

// Step is the distance in bytes between neighbours of a row.
template <class Filter, size_t Step>
bool FilterInPlace(Plane8 plane, uint8_t* __restrict scratch) noexcept {
    if (plane.width < 3 * Step || plane.rows < 3) return false;
    const size_t width = plane.width;
    auto* __restrict sums = reinterpret_cast<uint16_t*>(scratch);
    uint8_t* __restrict above = scratch + 2 * width;
    std::memcpy(above, plane.Row(0), width);
    bool changed = false;
    for (size_t y = 1; y + 1 < plane.rows; ++y) {
        uint8_t* row = plane.Row(y);
        const uint8_t* below = plane.Row(y + 1);
        for (size_t x = 0; x < width; ++x)
            sums[x] = static_cast<uint16_t>(Filter::Column(above[x], row[x], below[x]));
        // The row's old values are needed once more, as the row above of the next one.
        std::memcpy(above, row, width);
        for (size_t x = Step; x + Step < width; ++x)
            row[x] = Filter::Across(sums[x - Step], sums[x], sums[x + Step], above[x]);
        changed = changed || std::memcmp(above, row, width) != 0;
    }
    return changed;
}

} // namespace

bool BlurComponent(Plane8 plane, uint8_t* scratch) noexcept { return FilterInPlace<Blur, 1>(plane, scratch); }

bool BlurRgba32(Plane32 plane, uint8_t* scratch) noexcept {
    return FilterInPlace<Blur, 4>(plane.Bytes(), scratch);
}

bool SharpenComponent(Plane8 plane, uint8_t* scratch) noexcept {
    return FilterInPlace<Sharpen, 1>(plane, scratch);
}

bool SharpenRgba32(Plane32 plane, uint8_t* scratch) noexcept {
    return FilterInPlace<Sharpen, 4>(plane.Bytes(), scratch);
}

} // namespace AVBased::kernels
