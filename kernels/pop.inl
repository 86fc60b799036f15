// Bodies of the poster kernels, for one level.

struct PopPixels {
    I32 threshold; // times 256, where green stands
    U32 colour;
    AVEFFECT_INLINE U8 operator()(U8 pixels) const {
        const U32 bright = (U32)(((I32)pixels & 0xFF00) > threshold);
        return (U8)(((U32)pixels & 0xFF000000u) | (colour & bright));
    }
};

void PopRgba32(Plane32 plane, uint8_t threshold, uint32_t colour) noexcept {
    ForPlane(plane.Bytes(), PopPixels{(I32)Splat32(threshold * 256u), Splat32(colour & 0x00FFFFFF)});
}

constexpr uint8_t kBlackLuma = 16, kBlackChroma = 128;

struct PopSamples {
    U8 threshold, colour, black;
    AVEFFECT_INLINE U8 operator()(U8 samples) const {
        return Select((U8)(samples > threshold), colour, black);
    }
};

typedef uint8_t HalfBytes __attribute__((vector_size(kLanes / 2)));
typedef uint8_t QuarterBytes __attribute__((vector_size(kLanes / 4)));

// Samples of chroma from the last luma sample of each block of 2 to the power Shift, all blocks whole.
template <unsigned Shift>
AVEFFECT_INLINE void PopChroma(uint8_t* chroma, const uint8_t* luma, size_t count, const PopSamples& pop) {
    constexpr size_t kBlock = size_t{1} << Shift, kCount = kLanes / kBlock;
    const uint8_t threshold = pop.threshold[0], colour = pop.colour[0], black = pop.black[0];
    if (count < kCount) {
        for (size_t x = 0; x < count; ++x)
            chroma[x] = luma[(x + 1) * kBlock - 1] > threshold ? colour : black;
        return;
    }
    for (size_t x = 0;; x = x + 2 * kCount <= count ? x + kCount : count - kCount) {
        const U8 popped = pop(Load<U8>(luma + x * kBlock));
        if constexpr (Shift == 0)
            Store(chroma + x, popped);
        else if constexpr (Shift == 1)
            Store(chroma + x, __builtin_convertvector((U16)popped >> 8, HalfBytes));
        else
            Store(chroma + x, __builtin_convertvector((U32)popped >> 24, QuarterBytes));
        if (x + kCount >= count) break;
    }
}

// One row of a chroma plane, which may be narrower than its share of the luma.
AVEFFECT_INLINE void PopChromaRow(Plane8 plane, size_t row, const uint8_t* luma, size_t lumaWidth,
                                  unsigned shift, const PopSamples& pop) {
    if (row >= plane.rows || plane.width == 0) return;
    uint8_t* const chroma = plane.Row(row);
    const size_t whole = lumaWidth >> shift, count = plane.width < whole ? plane.width : whole;
    if (shift == 0)
        PopChroma<0>(chroma, luma, count, pop);
    else if (shift == 1)
        PopChroma<1>(chroma, luma, count, pop);
    else
        PopChroma<2>(chroma, luma, count, pop);
    if (whole << shift != lumaWidth && whole < plane.width)
        chroma[whole] = luma[lumaWidth - 1] > pop.threshold[0] ? pop.colour[0] : pop.black[0];
}

void PopComponent(Plane8 y, Plane8 u, Plane8 v, const PlanarPop& pop) noexcept {
    if (y.Empty()) return;
    const U8 threshold = Splat8(pop.threshold);
    const PopSamples luma = {threshold, Splat8(pop.y), Splat8(kBlackLuma)};
    const PopSamples blue = {threshold, Splat8(pop.u), Splat8(kBlackChroma)};
    const PopSamples red = {threshold, Splat8(pop.v), Splat8(kBlackChroma)};
    for (size_t row = 0; row < y.rows; ++row) {
        uint8_t* const samples = y.Row(row);
        const size_t chromaRow = row >> pop.verticalShift;
        if (row + 1 == y.rows || (row + 1) >> pop.verticalShift != chromaRow) {
            PopChromaRow(u, chromaRow, samples, y.width, pop.horizontalShift, blue);
            PopChromaRow(v, chromaRow, samples, y.width, pop.horizontalShift, red);
        }
        ForRow(samples, y.width, luma);
    }
}

constexpr PopKernels kKernels = {PopRgba32, PopComponent};
