// Bodies of the stroke kernels, for one level.

#include "kernels/lanes/channels.inl"

// A third, rounded down, of sums up to 765.
AVEFFECT_INLINE U16 Third(U16 sum) { return MultiplyHigh(sum, Splat16(21846)); }

AVEFFECT_INLINE U8 GreyOf(const uint8_t* pixels) {
    const Channels c = TakeApart(pixels);
    const U8 added = (U8)((c.b | c.g | c.r | c.a) != 0) & 1;
    return InOrder(Join(Third(Even(c.g) + Even(c.r) + Even(added)), Third(Odd(c.g) + Odd(c.r) + Odd(added))));
}

// Each register stands for kLanes pixels. The last one overlaps its neighbour; in shorter rows it reaches
// beyond the pixels, with any greys.
AVEFFECT_INLINE void GreyRow(uint8_t* grey, const uint8_t* row, size_t width, const uint8_t* soon) {
    if (width < kLanes) {
        uint8_t pixels[4 * kLanes] = {};
        std::memcpy(pixels, row, 4 * width);
        Store(grey, GreyOf(pixels));
        return;
    }
    for (size_t x = 0;; x = x + 2 * kLanes <= width ? x + kLanes : width - kLanes) {
        for (size_t line = 0; line < 4 * kLanes; line += 64) Prefetch(soon + 4 * x + line);
        Store(grey + x, GreyOf(row + 4 * x));
        if (x + kLanes >= width) break;
    }
}

// The comparison of contrasts, 0 to 510, with a threshold, in bytes: halves of both, rounded up where the
// lowest contrast above the threshold is odd and down where it is even.
struct AboveThreshold {
    U8 limit;    // the highest half that is not above
    U8 roundsUp; // 1 or 0

    AVEFFECT_INLINE explicit AboveThreshold(uint32_t threshold) {
        const uint32_t lowest = (threshold < 510 ? threshold : 511) + 1;
        limit = Splat8(static_cast<uint8_t>((lowest + 1) / 2 - 1));
        roundsUp = Splat8(lowest % 2);
    }
    // 0 where twice the outer difference and the inner one are not above.
    AVEFFECT_INLINE U8 operator()(U8 outer, U8 inner) const {
        return SubSaturated(outer + (inner >> 1) + (inner & roundsUp), limit);
    }
};

// All ones where the pixel becomes white.
AVEFFECT_INLINE U8 WhiteAt(const uint8_t* above, const uint8_t* here, const uint8_t* below,
                           const AboveThreshold& isAbove) {
    const U8 a = Load<U8>(above), b = Load<U8>(below), c = Load<U8>(here - 1), d = Load<U8>(here + 1);
    const U8 lowAb = Min(a, b), highAb = Max(a, b), lowCd = Min(c, d), highCd = Max(c, d);
    const U8 middle1 = Max(lowAb, lowCd), middle2 = Min(highAb, highCd);
    const U8 outer = Max(highAb, highCd) - Min(lowAb, lowCd);
    return (U8)(isAbove(outer, Max(middle1, middle2) - Min(middle1, middle2)) == 0);
}

// Each byte as the B, G and R of a pixel, alpha 0.
AVEFFECT_INLINE void StoreAsPixels(uint8_t* pixels, U8 bytes) {
    const U8 groups = ToInterleave(bytes), colours = ~AlphaMask();
    const U8 low = InterleaveLow(groups, groups), high = InterleaveHigh(groups, groups);
    Store(pixels, InterleaveLow(low, low) & colours);
    Store(pixels + kLanes, InterleaveHigh(low, low) & colours);
    Store(pixels + 2 * kLanes, InterleaveLow(high, high) & colours);
    Store(pixels + 3 * kLanes, InterleaveHigh(high, high) & colours);
}

// The inner pixels of a row, from the greys of three rows alone, so that the last register may overlap.
AVEFFECT_INLINE void StrokeRow(uint8_t* row, size_t width, const uint8_t* above, const uint8_t* here,
                               const uint8_t* below, const AboveThreshold& isAbove) {
    const size_t end = width - 1;
    if (end - 1 < kLanes) {
        uint8_t pixels[4 * kLanes];
        StoreAsPixels(pixels, WhiteAt(above + 1, here + 1, below + 1, isAbove));
        std::memcpy(row + 4, pixels, 4 * (end - 1));
        return;
    }
    for (size_t x = 1;; x = x + 2 * kLanes <= end ? x + kLanes : end - kLanes) {
        StoreAsPixels(row + 4 * x, WhiteAt(above + x, here + x, below + x, isAbove));
        if (x + kLanes >= end) break;
    }
}

void StrokeRgba32(Plane32 plane, uint32_t threshold, uint8_t* scratch) noexcept {
    if (plane.rows < 3 || plane.width < 3) return;
    const size_t greyPitch = StrokeScratchBytes(plane.width) / 3;
    uint8_t *above = scratch, *here = scratch + greyPitch, *below = scratch + 2 * greyPitch;
    const AboveThreshold isAbove(threshold);
    GreyRow(above, plane.Row(0), plane.width, plane.Row(1));
    GreyRow(here, plane.Row(1), plane.width, plane.Row(2));
    for (size_t y = 1; y + 1 < plane.rows; ++y) {
        const uint8_t* const next = plane.Row(y + 1);
        GreyRow(below, next, plane.width, next + plane.pitch);
        StrokeRow(plane.Row(y), plane.width, above, here, below, isAbove);
        uint8_t* const free = above;
        above = here;
        here = below;
        below = free;
    }
}

struct StrokeSamples {
    U8 limit; // differences up to it are white
    AVEFFECT_INLINE U8 operator()(U8 samples, U8 above) const {
        const U8 difference = SubSaturated(samples, above) | SubSaturated(above, samples);
        return (U8)(SubSaturated(difference, limit) == 0);
    }
};

void StrokeComponent(Plane8 plane, uint32_t threshold) noexcept {
    if (plane.rows < 3) return;
    const uint32_t limit = threshold / 4 < 255 ? threshold / 4 : 255;
    ForRowsUpwards({plane.Row(1), plane.width, plane.pitch, plane.rows - 1}, plane.width,
                   StrokeSamples{Splat8(static_cast<uint8_t>(limit))});
}

constexpr StrokeKernels kKernels = {StrokeRgba32, StrokeComponent};
