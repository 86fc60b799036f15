// Bodies of the conversion kernels, for one level.
#include "kernels/yuv_colours.inl"

// A register of pixels: luma, alpha, chroma of so many. Whole registers of all are written.
template <bool Swapped, class Chroma>
AVEFFECT_INLINE void StorePixels(uint8_t* to, const uint8_t* luma, const uint8_t* alpha, size_t x,
                                 size_t count, const Chroma& chroma, const ColourMix& mix) {
    const U8 samples = LoadSome(luma + x, count);
    const ChromaLanes c = chroma.At(x, count);
    const ColourLanes even(EvenTimes256(samples), c.evenU, c.evenV, mix);
    const ColourLanes odd(OddTimes256(samples), c.oddU, c.oddV, mix);
    const U8 b = JoinLimited(even.b >> 6, odd.b >> 6), g = JoinLimited(even.g >> 6, odd.g >> 6);
    const U8 r = JoinLimited(even.r >> 6, odd.r >> 6);
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

// Of a row of pixels in scratch, a multiple of 64.
AVEFFECT_INLINE size_t RowBytes(size_t width) { return (width + 63) / 64 * 256; }

template <bool Swapped>
struct PixelWriter {
    uint8_t* to;
    const uint8_t* alpha;
    size_t width;
    const ColourMix& mix;

    template <class Chroma>
    AVEFFECT_INLINE void operator()(const uint8_t* luma, const Chroma& chroma) const {
        WritePixels<Swapped>(to, luma, alpha, width, chroma, mix);
    }
};

template <bool Swapped>
AVEFFECT_INLINE void ToPixelsAs(const Plane32& pixels, const YuvaPlanes& planes, const PixelRule& rule,
                                bool isShort, uint8_t* scratch) {
    const ColourMix mix(rule, 32);
    uint8_t* const whole = scratch; // a row of pixels
    const ChromaRows chroma(planes, rule, reinterpret_cast<int16_t*>(scratch + RowBytes(pixels.width)));
    for (size_t y = 0; y < pixels.rows; ++y) {
        const uint8_t* const alpha = planes.alpha.Empty() ? nullptr : planes.alpha.Row(y);
        chroma.Row(y, PixelWriter<Swapped>{isShort ? whole : pixels.Row(y), alpha, pixels.width, mix});
        if (isShort) DropFourth(pixels.Row(y), whole, pixels.width);
    }
}

void ToPixels(Plane32 pixels, const YuvaPlanes& planes, const PixelRule& rule, PixelOrder order,
              uint8_t* scratch) noexcept {
    if (pixels.Empty()) return;
    if (order.swapped)
        ToPixelsAs<true>(pixels, planes, rule, order.isShort, scratch);
    else
        ToPixelsAs<false>(pixels, planes, rule, order.isShort, scratch);
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

void ToPlanes(const YuvaPlanes& planes, Plane32 pixels, const PlaneRule& rule, PixelOrder order,
              uint8_t* scratch) noexcept {
    if (pixels.Empty()) return;
    const int32_t half = 1 << (kWeightBits - 1),
                  middle = planes.halvedColumns ? 128 : half + (128 << kWeightBits);
    const PlaneWeights weights = {PixelWeights(rule.y, rule.lumaOffset + half, order.swapped),
                                  PixelWeights(rule.u, middle, order.swapped),
                                  PixelWeights(rule.v, middle, order.swapped)};
    const size_t width = pixels.width, columns = planes.u.width;
    uint8_t* const whole = scratch; // a row of pixels
    int16_t* const wideU = reinterpret_cast<int16_t*>(scratch + RowBytes(width)) + kChromaPadding;
    int16_t* const wideV = wideU + width + 3 * kChromaPadding;
    int16_t* const halved = wideV + width + 3 * kChromaPadding;
    const ChromaRing ringU(halved, columns);
    const ChromaRing ringV(halved + ChromaRing::kRows * (columns + 2 * kChromaPadding), columns);
    const ColumnsHalved across(rule.columns);
    const RowsHalved down(rule.rows);
    size_t next = 0; // row of chroma
    for (size_t y = 0; y < pixels.rows; ++y) {
        const uint8_t* const from = order.isShort ? whole : pixels.Row(y);
        if (order.isShort) AddFourth<false>(whole, pixels.Row(y), width);
        uint8_t* const alpha = planes.alpha.Empty() ? nullptr : planes.alpha.Row(y);
        if (!planes.halvedColumns) {
            PlaneRows{planes.y.Row(y), planes.u.Row(y), planes.v.Row(y), alpha, nullptr, nullptr}.WriteRow(
                from, width, weights);
            continue;
        }
        PlaneRows{planes.y.Row(y), nullptr, nullptr, alpha, wideU, wideV}.WriteRow(from, width, weights);
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

struct MakeOpaque {
    AVEFFECT_INLINE U8 operator()(U8 pixels) const { return pixels | AlphaMask(); }
};

void AddAlpha(Plane32 pixels, Plane32 from, bool exchanged) noexcept {
    for (size_t y = 0; y < pixels.rows && pixels.width > 0; ++y) {
        if (exchanged)
            AddFourth<true>(pixels.Row(y), from.Row(y), pixels.width);
        else
            AddFourth<false>(pixels.Row(y), from.Row(y), pixels.width);
        ForRow(pixels.Row(y), pixels.width * 4, MakeOpaque{});
    }
}

constexpr ConversionKernels kKernels = {ToPixels, ToPlanes, AddAlpha};
