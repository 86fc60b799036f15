// Bodies of the colour key kernels, for one level.

struct KeyPixels {
    I32 low, high;
    AVEFFECT_INLINE U8 operator()(U8 pixels) const {
        const I32 colour = (I32)((U32)pixels & 0x00FFFFFFu);
        const U32 match = (U32)((colour >= low) & (colour <= high));
        return (U8)((U32)pixels & ~(match & 0xFF000000u));
    }
};

void KeyRgba32(Plane32 plane, uint32_t low, uint32_t high) noexcept {
    ForPlane(plane.Bytes(), KeyPixels{(I32)Splat32(low), (I32)Splat32(high)});
}

// 0 where a sample lies in the range.
struct Outside {
    U8 low, high;
    AVEFFECT_INLINE explicit Outside(KeyRange range)
        : low(Splat8(range.low))
        , high(Splat8(range.high)) {}
    AVEFFECT_INLINE U8 operator()(U8 samples) const {
        return SubSaturated(samples, high) | SubSaturated(low, samples);
    }
};

// Both chroma samples of a row: 0 where they lie in their ranges. First a copy of U, then this with V.
struct OutsideChroma {
    Outside u, v;
    AVEFFECT_INLINE U8 operator()(U8 us, U8 vs) const { return u(us) | v(vs); }
};

// Repeats the last byte up to the width.
AVEFFECT_INLINE void Extend(uint8_t* row, size_t count, size_t width) {
    for (size_t x = count; x < width; ++x) row[x] = row[count - 1];
}

// One row of alpha.
AVEFFECT_INLINE void KeyRow(uint8_t* alpha, const uint8_t* luma, const uint8_t* outsideChroma, size_t width,
                            Outside outside) {
    if (width < kLanes) {
        U8 a{}, y{}, c{};
        std::memcpy(&a, alpha, width);
        std::memcpy(&y, luma, width);
        std::memcpy(&c, outsideChroma, width);
        a &= (U8)((outside(y) | c) != 0);
        std::memcpy(alpha, &a, width);
        return;
    }
    // Keying twice changes nothing, so the last register may overlap its neighbour.
    for (size_t x = 0;; x = x + 2 * kLanes <= width ? x + kLanes : width - kLanes) {
        const U8 kept = (U8)((outside(Load<U8>(luma + x)) | Load<U8>(outsideChroma + x)) != 0);
        Store(alpha + x, Load<U8>(alpha + x) & kept);
        if (x + kLanes >= width) break;
    }
}

void KeyComponent(Plane8 y, Plane8 u, Plane8 v, Plane8 alpha, const PlanarKey& key,
                  uint8_t* scratch) noexcept {
    const size_t width = y.width < alpha.width ? y.width : alpha.width;
    const size_t rows = y.rows < alpha.rows ? y.rows : alpha.rows;
    if (width == 0 || u.Empty()) return;
    const Outside outsideLuma(key.y);
    const OutsideChroma outsideChroma{Outside(key.u), Outside(key.v)};
    uint8_t* const chroma = scratch;
    uint8_t* const doubled = scratch + width + 2 * kLanes;
    uint8_t* const wide = key.horizontalShift != 0 ? doubled : chroma;
    size_t count = (width - 1) / (size_t{1} << key.horizontalShift) + 1;
    if (count > u.width) count = u.width;
    size_t chromaRow = u.rows;
    for (size_t row = 0; row < rows; ++row) {
        size_t wanted = row >> key.verticalShift;
        if (wanted >= u.rows) wanted = u.rows - 1;
        if (wanted != chromaRow) {
            chromaRow = wanted;
            std::memcpy(chroma, u.Row(chromaRow), count);
            ForRowWith(chroma, v.Row(chromaRow), count, outsideChroma);
            if (key.horizontalShift != 0) Double(doubled, chroma, width);
            Extend(wide, count << key.horizontalShift, width);
        }
        KeyRow(alpha.Row(row), y.Row(row), wide, width, outsideLuma);
    }
}

constexpr KeyKernels kKernels = {KeyRgba32, KeyComponent};
