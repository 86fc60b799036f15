// Bodies of the flatten kernels, for one level.

// x / 255, rounded to the nearest, for x up to 255 * 255.
AVEFFECT_INLINE U16 DividedBy255(U16 x) {
    const U16 rounded = x + 128;
    return (rounded + (rounded >> 8)) >> 8;
}

struct FlattenPixels {
    AVEFFECT_INLINE U8 operator()(U8 pixels) const {
        const U32 one = (U32)pixels >> 24;
        const U16 alpha = (U16)(one | (one << 16));
        return Join(DividedBy255(Even(pixels) * alpha), DividedBy255(Odd(pixels) * alpha)) | AlphaMask();
    }
};

struct FlattenSamples {
    U16 colour;

    AVEFFECT_INLINE U16 Blended(U16 samples, U16 alpha) const {
        return DividedBy255(samples * alpha + colour * (255 - alpha));
    }
    AVEFFECT_INLINE U8 operator()(U8 samples, U8 alpha) const {
        return Join(Blended(Even(samples), Even(alpha)), Blended(Odd(samples), Odd(alpha)));
    }
};

void FlattenRgba32(Plane32 plane) noexcept { ForPlane(plane.Bytes(), FlattenPixels{}); }

void FlattenComponent(Plane8 plane, Plane8 alpha, uint8_t colour) noexcept {
    if (plane.Empty()) return;
    const FlattenSamples flatten{Splat16(colour)};
    for (size_t y = 0; y < plane.rows; ++y) ForRowWith(plane.Row(y), alpha.Row(y), plane.width, flatten);
}

// Sums of the two columns that each lane holds.
AVEFFECT_INLINE U16 PairSums(const uint8_t* from) {
    const U8 samples = Load<U8>(from);
    return Even(samples) + Odd(samples);
}

// Means of four, of two registers of both rows.
AVEFFECT_INLINE U8 QuarterMeans(const uint8_t* above, const uint8_t* below) {
    const U16 low = PairSums(above) + PairSums(below);
    const U16 high = PairSums(above + kLanes) + PairSums(below + kLanes);
    return PackInOrder((I16)((low + 2) >> 2), (I16)((high + 2) >> 2));
}

// The last register of a row, or a short one: its end is repeated.
AVEFFECT_INLINE U8 LastMeans(const uint8_t* above, const uint8_t* below, size_t count) {
    uint8_t rows[2][2 * kLanes];
    std::memset(rows[0], above[count - 1], sizeof rows[0]);
    std::memset(rows[1], below[count - 1], sizeof rows[1]);
    std::memcpy(rows[0], above, count);
    std::memcpy(rows[1], below, count);
    return QuarterMeans(rows[0], rows[1]);
}

void FlattenQuarter(Plane8 plane, Plane8 alpha, uint8_t colour) noexcept {
    if (plane.Empty()) return;
    const FlattenSamples flatten{Splat16(colour)};
    for (size_t y = 0; y < plane.rows; ++y) {
        uint8_t* const row = plane.Row(y);
        const uint8_t* const above = alpha.Row(2 * y);
        const uint8_t* const below = 2 * y + 1 < alpha.rows ? above + alpha.pitch : above;
        size_t x = 0;
        for (; 2 * (x + kLanes) <= alpha.width; x += kLanes)
            Store(row + x, flatten(Load<U8>(row + x), QuarterMeans(above + 2 * x, below + 2 * x)));
        if (x == plane.width) continue;
        U8 last{};
        std::memcpy(&last, row + x, plane.width - x);
        last = flatten(last, LastMeans(above + 2 * x, below + 2 * x, alpha.width - 2 * x));
        std::memcpy(row + x, &last, plane.width - x);
    }
}

constexpr FlattenKernels kKernels = {FlattenRgba32, FlattenComponent, FlattenQuarter};
