// Bodies of the conversion kernels, for one level.
#include "kernels/lanes/channels.inl"

constexpr size_t kHalf = kLanes / 2;  // samples of a register of 16-bit numbers
constexpr size_t kChromaPadding = 32; // samples before and behind a row of chroma
constexpr size_t kChromaFractionBits = 7, kColourFractionBits = 6, kTapBits = 14, kWeightBits = 15;

AVEFFECT_INLINE size_t LimitedRow(ptrdiff_t row, size_t rows) {
    return row < 0 ? 0 : static_cast<size_t>(row) < rows ? static_cast<size_t>(row) : rows - 1;
}

// Repeats the first and the last of a row of chroma outwards.
AVEFFECT_INLINE void RepeatEnds(int16_t* row, size_t width) {
    for (size_t i = 1; i <= 8; ++i) row[-static_cast<ptrdiff_t>(i)] = row[0];
    for (size_t i = 0; i < kChromaPadding; ++i) row[width + i] = row[width - 1];
}

// A sample in 128ths, less 128.
AVEFFECT_INLINE I16 Centred(U16 samples) { return (I16)((samples << 8) ^ 0x8000); } // in 256ths

// Up to half a register of samples.
AVEFFECT_INLINE U16 LoadSamples(const uint8_t* from, size_t count) {
    HalfU8 samples{};
    if (count >= kHalf)
        samples = Load<HalfU8>(from);
    else
        std::memcpy(&samples, from, count);
    return Widened(samples);
}

// Chroma of one row of luma, from the rows around it.
struct RowsMixed {
    const uint8_t* from[4];
    I16 taps[4];
    I16 bias;
    bool single;

    AVEFFECT_INLINE RowsMixed(const Plane8& plane, const ChromaPhase* phases, bool halved, size_t y) {
        const ChromaPhase& phase = phases[y % 2];
        const ptrdiff_t first = halved ? static_cast<ptrdiff_t>(y / 2) + phase.first : 0;
        int16_t rounding = 0; // each product is cut
        AVEFFECT_UNROLL
        for (int i = 0; i < 4; ++i) {
            from[i] = plane.Row(halved ? LimitedRow(first + i, plane.rows) : y);
            taps[i] = SplatI16(static_cast<int16_t>(phase.taps[i] < 16384 ? phase.taps[i] * 2 : 0));
            rounding = static_cast<int16_t>(rounding + (phase.taps[i] != 0));
        }
        bias = SplatI16(static_cast<int16_t>(rounding / 2));
        single = !halved || phase.taps[1] == 16384;
        if (single && halved) from[0] = from[1];
    }
    AVEFFECT_INLINE I16 At(size_t x, size_t count) const {
        if (single) return Centred(LoadSamples(from[0] + x, count)) >> 1;
        I16 sum = bias;
        AVEFFECT_UNROLL
        for (int i = 0; i < 4; ++i)
            sum = sum + MultiplyHigh(Centred(LoadSamples(from[i] + x, count)), taps[i]);
        return sum;
    }
    AVEFFECT_INLINE void Write(int16_t* to, size_t width) const {
        size_t x = 0;
        for (; x + kHalf <= width; x += kHalf) Store(to + x, At(x, kHalf));
        if (x < width) Store(to + x, At(x, width - x));
        RepeatEnds(to, width);
    }
};

// Chroma of every other column, from the columns around it.
struct ColumnsMixed {
    ptrdiff_t first;
    I16 low, high;
    bool single;

    AVEFFECT_INLINE explicit ColumnsMixed(const ChromaPhase& phase)
        : first(phase.first)
        , low(Pair(phase.taps))
        , high(Pair(phase.taps + 2))
        , single(phase.taps[1] == 16384) {}

    AVEFFECT_INLINE static I16 Pair(const int16_t* taps) {
        uint32_t both;
        std::memcpy(&both, taps, sizeof both);
        return (I16)Splat32(both);
    }
    AVEFFECT_INLINE I32 Sum(const int16_t* from) const {
        return (MultiplyAddPairs(Load<I16>(from), low) + MultiplyAddPairs(Load<I16>(from + 2), high) +
                (1 << (kTapBits - 1))) >>
               kTapBits;
    }
    AVEFFECT_INLINE I16 At(const int16_t* chroma) const {
        const int16_t* const from = chroma + first;
        if (single) return Load<I16>(from + 1);
        return (I16)((Sum(from) & 0xFFFF) | (Sum(from + 1) << 16));
    }
};

struct ColourMix {
    U16 lumaScale;
    I16 lumaOffset, redWhole, redPart, blueWhole, bluePart, greenFromU, greenFromV;

    AVEFFECT_INLINE explicit ColourMix(const PixelRule& rule)
        : lumaScale(Splat16(rule.lumaScale))
        , lumaOffset(SplatI16(static_cast<int16_t>(rule.lumaOffset + (1 << (kColourFractionBits - 1)) +
                                                   1))) // what the cut products lack, 1
        , redWhole(SplatI16(rule.redWhole))
        , redPart(SplatI16(rule.redPart))
        , blueWhole(SplatI16(rule.blueWhole))
        , bluePart(SplatI16(rule.bluePart))
        , greenFromU(SplatI16(rule.greenFromU))
        , greenFromV(SplatI16(rule.greenFromV)) {}
};

struct ColourLanes {
    I16 b, g, r;

    AVEFFECT_INLINE ColourLanes(U16 luma256, I16 u, I16 v, const ColourMix& mix) {
        const I16 luma = (I16)MultiplyHigh(luma256, mix.lumaScale) + mix.lumaOffset;
        b = AddSaturated(luma, (u >> 1) * mix.blueWhole + MultiplyHigh(u, mix.bluePart)) >> 6;
        g = AddSaturated(luma, MultiplyHigh(u, mix.greenFromU) + MultiplyHigh(v, mix.greenFromV)) >> 6;
        r = AddSaturated(luma, (v >> 1) * mix.redWhole + MultiplyHigh(v, mix.redPart)) >> 6;
    }
};

// Chroma of a register's pixels, the even and the odd ones.
struct ChromaLanes {
    I16 evenU, oddU, evenV, oddV;
};

struct HalvedChroma {
    const int16_t *u, *v;
    ColumnsMixed even, odd;

    AVEFFECT_INLINE ChromaLanes At(size_t x, size_t) const {
        const int16_t *const fromU = u + x / 2, *const fromV = v + x / 2;
        return {even.At(fromU), odd.At(fromU), even.At(fromV), odd.At(fromV)};
    }
};

AVEFFECT_INLINE U8 LoadSome(const uint8_t* from, size_t count) {
    if (count >= kLanes) return Load<U8>(from);
    U8 samples{};
    std::memcpy(&samples, from, count);
    return samples;
}

struct WholeChroma {
    const uint8_t *u, *v;

    AVEFFECT_INLINE static I16 Lanes(U16 samples256) { return (I16)(samples256 ^ 0x8000) >> 1; }
    AVEFFECT_INLINE ChromaLanes At(size_t x, size_t count) const {
        const U8 us = LoadSome(u + x, count), vs = LoadSome(v + x, count);
        return {Lanes(EvenTimes256(us)), Lanes(OddTimes256(us)), Lanes(EvenTimes256(vs)),
                Lanes(OddTimes256(vs))};
    }
};

// A register of pixels: luma, alpha, chroma of so many. Whole registers of all are written.
template <bool Swapped, class Chroma>
AVEFFECT_INLINE void StorePixels(uint8_t* to, const uint8_t* luma, const uint8_t* alpha, size_t x,
                                 size_t count, const Chroma& chroma, const ColourMix& mix) {
    const U8 samples = LoadSome(luma + x, count);
    const ChromaLanes c = chroma.At(x, count);
    const ColourLanes even(EvenTimes256(samples), c.evenU, c.evenV, mix);
    const ColourLanes odd(OddTimes256(samples), c.oddU, c.oddV, mix);
    const U8 b = JoinLimited(even.b, odd.b), g = JoinLimited(even.g, odd.g), r = JoinLimited(even.r, odd.r);
    StoreJoined(to, Swapped ? r : b, g, Swapped ? b : r, alpha ? LoadSome(alpha + x, count) : Splat8(255));
}

template <bool Swapped, class Chroma>
AVEFFECT_INLINE void WritePixels(uint8_t* to, const uint8_t* luma, const uint8_t* alpha, size_t width,
                                 const Chroma& chroma, const ColourMix& mix) {
    size_t x = 0;
    for (; x + kLanes <= width; x += kLanes)
        StorePixels<Swapped>(to + x * 4, luma, alpha, x, kLanes, chroma, mix);
    if (x == width) return;
    uint8_t pixels[4 * kLanes];
    StorePixels<Swapped>(pixels, luma, alpha, x, width - x, chroma, mix);
    std::memcpy(to + x * 4, pixels, (width - x) * 4);
}

template <bool Swapped>
AVEFFECT_INLINE void ToPixelsAs(const Plane32& pixels, const YuvaPlanes& planes, const PixelRule& rule,
                                uint8_t* scratch) {
    const ColourMix mix(rule);
    const size_t columns = planes.u.width;
    int16_t* const u = reinterpret_cast<int16_t*>(scratch) + kChromaPadding;
    int16_t* const v = u + columns + 4 * kChromaPadding;
    const ColumnsMixed even(rule.columns[0]), odd(rule.columns[1]);
    for (size_t y = 0; y < pixels.rows; ++y) {
        const uint8_t* const alpha = planes.alpha.Empty() ? nullptr : planes.alpha.Row(y);
        if (planes.halvedColumns) {
            RowsMixed(planes.u, rule.rows, planes.halvedRows, y).Write(u, columns);
            RowsMixed(planes.v, rule.rows, planes.halvedRows, y).Write(v, columns);
            WritePixels<Swapped>(pixels.Row(y), planes.y.Row(y), alpha, pixels.width,
                                 HalvedChroma{u, v, even, odd}, mix);
        } else {
            WritePixels<Swapped>(pixels.Row(y), planes.y.Row(y), alpha, pixels.width,
                                 WholeChroma{planes.u.Row(y), planes.v.Row(y)}, mix);
        }
    }
}

void ToPixels(Plane32 pixels, const YuvaPlanes& planes, const PixelRule& rule, bool swapped,
              uint8_t* scratch) noexcept {
    if (pixels.Empty()) return;
    if (swapped)
        ToPixelsAs<true>(pixels, planes, rule, scratch);
    else
        ToPixelsAs<false>(pixels, planes, rule, scratch);
}

// Weights of a register of pixels: even bytes hold blue and red, odd ones green and alpha.
struct PixelWeights {
    I16 even, odd;
    I32 offset;

    AVEFFECT_INLINE PixelWeights(const PlaneRule::Weights& weights, int32_t rounding, bool swapped)
        : even(Two(swapped ? weights.red : weights.blue, swapped ? weights.blue : weights.red))
        , odd(Two(weights.green, 0))
        , offset(I32{} + rounding) {}
    AVEFFECT_INLINE static I16 Two(int16_t low, int16_t high) {
        return (I16)Splat32(static_cast<uint16_t>(low) | static_cast<uint32_t>(static_cast<uint16_t>(high))
                                                             << 16);
    }
    AVEFFECT_INLINE I32 Sum(U8 pixels) const {
        return MultiplyAddPairs((I16)Even(pixels), even) + MultiplyAddPairs((I16)Odd(pixels), odd) + offset;
    }
};

struct PlaneWeights {
    PixelWeights y, u, v;
};

// Four registers of pixels as a register of samples.
AVEFFECT_INLINE U8 SamplesOf(const U8* pixels, const PixelWeights& weights) {
    const I16 low = PackPairs(weights.Sum(pixels[0]) >> kWeightBits, weights.Sum(pixels[1]) >> kWeightBits);
    const I16 high = PackPairs(weights.Sum(pixels[2]) >> kWeightBits, weights.Sum(pixels[3]) >> kWeightBits);
    return InOrder(Pack(low, high));
}
AVEFFECT_INLINE U8 AlphaOf(const U8* pixels) {
    I32 alpha[4];
    AVEFFECT_UNROLL
    for (int i = 0; i < 4; ++i) alpha[i] = (I32)((U32)pixels[i] >> 24);
    return InOrder(Pack(PackPairs(alpha[0], alpha[1]), PackPairs(alpha[2], alpha[3])));
}

// Chroma in 128ths, less 128.
AVEFFECT_INLINE void StoreChroma(int16_t* to, const U8* pixels, const PixelWeights& weights) {
    constexpr size_t kShift = kWeightBits - kChromaFractionBits;
    AVEFFECT_UNROLL
    for (int i = 0; i < 4; i += 2)
        Store(to + static_cast<size_t>(i) * kLanes / 4,
              PackPairsInOrder(weights.Sum(pixels[i]) >> kShift, weights.Sum(pixels[i + 1]) >> kShift));
}

AVEFFECT_INLINE void StoreSome(uint8_t* to, U8 samples, size_t count) {
    if (count >= kLanes)
        Store(to, samples);
    else
        std::memcpy(to, &samples, count);
}

// Rows of planes that one row of pixels becomes; chroma goes to rows of its own where it is halved.
struct PlaneRows {
    uint8_t *y, *u, *v, *alpha;
    int16_t *wideU, *wideV;

    AVEFFECT_INLINE void Write(const uint8_t* from, size_t x, size_t count,
                               const PlaneWeights& weights) const {
        U8 pixels[4];
        AVEFFECT_UNROLL
        for (size_t i = 0; i < 4; ++i) pixels[i] = Load<U8>(from + i * kLanes);
        StoreSome(y + x, SamplesOf(pixels, weights.y), count);
        if (alpha) StoreSome(alpha + x, AlphaOf(pixels), count);
        if (wideU) {
            StoreChroma(wideU + x, pixels, weights.u);
            StoreChroma(wideV + x, pixels, weights.v);
        } else {
            StoreSome(u + x, SamplesOf(pixels, weights.u), count);
            StoreSome(v + x, SamplesOf(pixels, weights.v), count);
        }
    }
    AVEFFECT_INLINE void WriteRow(const uint8_t* from, size_t width, const PlaneWeights& weights) const {
        size_t x = 0;
        for (; x + kLanes <= width; x += kLanes) Write(from + x * 4, x, kLanes, weights);
        if (x < width) {
            uint8_t pixels[4 * kLanes] = {};
            std::memcpy(pixels, from + x * 4, (width - x) * 4);
            Write(pixels, x, width - x, weights);
        }
        if (!wideU) return;
        RepeatEnds(wideU, width);
        RepeatEnds(wideV, width);
    }
};

// Halves the columns of a row of chroma.
struct ColumnsHalved {
    I16 taps[5];

    AVEFFECT_INLINE explicit ColumnsHalved(const int16_t* columns) {
        AVEFFECT_UNROLL
        for (size_t i = 0; i < 5; ++i) taps[i] = ColumnsMixed::Pair(columns + 2 * i);
    }
    AVEFFECT_INLINE I32 At(const int16_t* from) const {
        I32 sum = I32{} + (1 << (kTapBits - 1));
        AVEFFECT_UNROLL
        for (size_t i = 0; i < 5; ++i) sum = sum + MultiplyAddPairs(Load<I16>(from + 2 * i - 4), taps[i]);
        return sum >> kTapBits;
    }
    AVEFFECT_INLINE void Write(int16_t* to, const int16_t* from, size_t columns) const {
        for (size_t x = 0; x < columns; x += kHalf)
            Store(to + x, PackPairsInOrder(At(from + 2 * x), At(from + 2 * x + kHalf)));
    }
};

// Up to half a register of chroma samples.
AVEFFECT_INLINE void StoreSamples(uint8_t* to, I16 samples, size_t count) {
    const HalfU8 limited = Narrowed((U16)Min(Max(samples, I16{}), SplatI16(255)));
    if (count >= kHalf)
        Store(to, limited);
    else
        std::memcpy(to, &limited, count);
}

// A row of chroma from eight, or from one.
struct RowsHalved {
    I16 taps[4];

    AVEFFECT_INLINE explicit RowsHalved(const int16_t* rows) {
        AVEFFECT_UNROLL
        for (size_t i = 0; i < 4; ++i) taps[i] = ColumnsMixed::Pair(rows + 2 * i);
    }
    AVEFFECT_INLINE I16 At(const int16_t* const* from, size_t x) const {
        constexpr int kShift = kTapBits + kChromaFractionBits;
        I32 low = I32{} + ((1 << (kShift - 1)) + (128 << kShift)), high = low;
        AVEFFECT_UNROLL
        for (size_t i = 0; i < 4; ++i) {
            const U16 a = Load<U16>(from[2 * i] + x), b = Load<U16>(from[2 * i + 1] + x);
            low = low + MultiplyAddPairs((I16)InterleaveLow(a, b), taps[i]);
            high = high + MultiplyAddPairs((I16)InterleaveHigh(a, b), taps[i]);
        }
        return PackPairs(low >> kShift, high >> kShift);
    }
    AVEFFECT_INLINE void Write(uint8_t* to, const int16_t* const* from, size_t width) const {
        for (size_t x = 0; x < width; x += kHalf) StoreSamples(to + x, At(from, x), width - x);
    }
    AVEFFECT_INLINE static void WriteOne(uint8_t* to, const int16_t* from, size_t width) {
        constexpr int kRounding = (1 << (kChromaFractionBits - 1)) + (128 << kChromaFractionBits);
        for (size_t x = 0; x < width; x += kHalf)
            StoreSamples(to + x,
                         AddSaturated(Load<I16>(from + x), SplatI16(kRounding)) >> kChromaFractionBits,
                         width - x);
    }
};

// The halved rows of chroma that the next one is made of.
struct ChromaRing {
    static constexpr size_t kRows = 8;
    int16_t* rows[kRows];

    AVEFFECT_INLINE ChromaRing(int16_t* scratch, size_t columns) {
        for (size_t i = 0; i < kRows; ++i) rows[i] = scratch + i * (columns + 2 * kChromaPadding);
    }
    AVEFFECT_INLINE int16_t* Of(size_t y) const { return rows[y % kRows]; }
    AVEFFECT_INLINE void Around(size_t chromaRow, size_t height, const int16_t** around) const {
        for (size_t i = 0; i < kRows; ++i)
            around[i] = Of(LimitedRow(static_cast<ptrdiff_t>(2 * chromaRow + i) - 3, height));
    }
};

void ToPlanes(const YuvaPlanes& planes, Plane32 pixels, const PlaneRule& rule, bool swapped,
              uint8_t* scratch) noexcept {
    if (pixels.Empty()) return;
    const int32_t half = 1 << (kWeightBits - 1),
                  middle = planes.halvedColumns ? 128 : half + (128 << kWeightBits);
    const PlaneWeights weights = {PixelWeights(rule.y, rule.lumaOffset + half, swapped),
                                  PixelWeights(rule.u, middle, swapped),
                                  PixelWeights(rule.v, middle, swapped)};
    const size_t width = pixels.width, columns = planes.u.width;
    int16_t* const wideU = reinterpret_cast<int16_t*>(scratch) + kChromaPadding;
    int16_t* const wideV = wideU + width + 3 * kChromaPadding;
    int16_t* const halved = wideV + width + 3 * kChromaPadding;
    const ChromaRing ringU(halved, columns);
    const ChromaRing ringV(halved + ChromaRing::kRows * (columns + 2 * kChromaPadding), columns);
    const ColumnsHalved across(rule.columns);
    const RowsHalved down(rule.rows);
    size_t next = 0; // row of chroma
    for (size_t y = 0; y < pixels.rows; ++y) {
        uint8_t* const alpha = planes.alpha.Empty() ? nullptr : planes.alpha.Row(y);
        if (!planes.halvedColumns) {
            PlaneRows{planes.y.Row(y), planes.u.Row(y), planes.v.Row(y), alpha, nullptr, nullptr}.WriteRow(
                pixels.Row(y), width, weights);
            continue;
        }
        PlaneRows{planes.y.Row(y), nullptr, nullptr, alpha, wideU, wideV}.WriteRow(pixels.Row(y), width,
                                                                                   weights);
        across.Write(ringU.Of(y), wideU, columns);
        across.Write(ringV.Of(y), wideV, columns);
        if (!planes.halvedRows) {
            RowsHalved::WriteOne(planes.u.Row(y), ringU.Of(y), columns);
            RowsHalved::WriteOne(planes.v.Row(y), ringV.Of(y), columns);
            continue;
        }
        for (; next < planes.u.rows && (2 * next + 4 <= y || y + 1 == pixels.rows); ++next) {
            const int16_t* around[ChromaRing::kRows];
            ringU.Around(next, pixels.rows, around);
            down.Write(planes.u.Row(next), around, columns);
            ringV.Around(next, pixels.rows, around);
            down.Write(planes.v.Row(next), around, columns);
        }
    }
}

constexpr ConversionKernels kKernels = {ToPixels, ToPlanes};
