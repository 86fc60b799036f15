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

// A register of pixels: blue and red, green and what weighs an offset.
struct PixelBytes {
    static constexpr int32_t kUnit = 256; // of offsets
    I16 outer, inner;

    AVEFFECT_INLINE PixelBytes() = default;
    AVEFFECT_INLINE explicit PixelBytes(U32 pixels)
        : outer((I16)Even((U8)pixels))
        , inner((I16)(((pixels >> 8) & 0xFF) | (kUnit << 16))) {}
};

// Four registers of pixels, the even ones and the odd ones, as EveryOtherPixel leaves them.
struct PixelGroup {
    PixelBytes even[2], odd[2];

    AVEFFECT_INLINE explicit PixelGroup(const U8* pixels) {
        AVEFFECT_UNROLL
        for (int i = 0; i < 2; ++i) {
            even[i] = PixelBytes((U32)EveryOtherPixel<false>(pixels[2 * i], pixels[2 * i + 1]));
            odd[i] = PixelBytes((U32)EveryOtherPixel<true>(pixels[2 * i], pixels[2 * i + 1]));
        }
    }
};

struct PixelWeights {
    I16 outer, inner;

    AVEFFECT_INLINE PixelWeights(const PlaneRule::Weights& weights, int32_t offset, bool swapped)
        : outer(Two(swapped ? weights.red : weights.blue, swapped ? weights.blue : weights.red))
        , inner(Two(weights.green, static_cast<int16_t>(offset / PixelBytes::kUnit))) {}
    AVEFFECT_INLINE static I16 Two(int16_t low, int16_t high) {
        return (I16)Splat32(static_cast<uint16_t>(low) | static_cast<uint32_t>(static_cast<uint16_t>(high))
                                                             << 16);
    }
    // Of two registers, cut.
    template <size_t Shift>
    AVEFFECT_INLINE I16 Sums(const PixelBytes* pixels) const {
        I32 sums[2];
        AVEFFECT_UNROLL
        for (int i = 0; i < 2; ++i)
            sums[i] = (MultiplyAddPairs(pixels[i].outer, outer) + MultiplyAddPairs(pixels[i].inner, inner)) >>
                      Shift;
        return PackPairs(sums[0], sums[1]);
    }
    AVEFFECT_INLINE U8 Samples(const PixelGroup& pixels) const {
        return InOrder(JoinLimited(Sums<kWeightBits>(pixels.even), Sums<kWeightBits>(pixels.odd)));
    }
};

struct PlaneWeights {
    PixelWeights y, u, v;
};

AVEFFECT_INLINE U8 AlphaOf(const U8* pixels) {
    I32 alpha[4];
    AVEFFECT_UNROLL
    for (int i = 0; i < 4; ++i) alpha[i] = (I32)((U32)pixels[i] >> 24);
    return InOrder(Pack(PackPairs(alpha[0], alpha[1]), PackPairs(alpha[2], alpha[3])));
}

AVEFFECT_INLINE void StoreSome(uint8_t* to, U8 samples, size_t count) {
    if (count >= kLanes)
        Store(to, samples);
    else
        std::memcpy(to, &samples, count);
}

// From a row of halved columns to the next: a multiple of a cache line, and odd, so that several rows share a
// cache well.
AVEFFECT_INLINE size_t HalvedPitch(size_t columns) { return (columns + 63) / 64 * 64 + 3 * kChromaPadding; }

// A row of chroma in 128ths, less 128 and cut: its even and its odd columns.
struct ChromaColumns {
    int16_t *even, *odd;

    AVEFFECT_INLINE ChromaColumns(int16_t* scratch, size_t columns)
        : even(scratch + kChromaPadding)
        , odd(even + HalvedPitch(columns)) {}
    AVEFFECT_INLINE void Write(size_t x, const PixelGroup& pixels, const PixelWeights& weights) const {
        constexpr size_t kShift = kWeightBits - kChromaFractionBits;
        Store(even + x / 2, InOrder((U8)weights.Sums<kShift>(pixels.even)));
        Store(odd + x / 2, InOrder((U8)weights.Sums<kShift>(pixels.odd)));
    }
    // Repeats the first and the last column outwards.
    AVEFFECT_INLINE void RepeatEnds(size_t width) const {
        constexpr ptrdiff_t kBeyond = 4;
        const ptrdiff_t end = static_cast<ptrdiff_t>(width);
        for (ptrdiff_t x = -kBeyond; x < 0; ++x) *At(x) = *At(0);
        for (ptrdiff_t x = end; x < end + kBeyond; ++x) *At(x) = *At(end - 1);
    }
    AVEFFECT_INLINE int16_t* At(ptrdiff_t x) const { return (x % 2 != 0 ? odd : even) + (x >> 1); }
};

// Rows of planes that one row of pixels becomes; chroma goes to rows of its own where it is halved.
struct PlaneRows {
    uint8_t *y, *u, *v, *alpha;
    const ChromaColumns *wideU, *wideV;

    AVEFFECT_INLINE void Write(const uint8_t* from, size_t x, size_t count,
                               const PlaneWeights& weights) const {
        U8 pixels[4];
        AVEFFECT_UNROLL
        for (size_t i = 0; i < 4; ++i) pixels[i] = Load<U8>(from + i * kLanes);
        const PixelGroup group(pixels);
        StoreSome(y + x, weights.y.Samples(group), count);
        if (alpha) StoreSome(alpha + x, AlphaOf(pixels), count);
        if (wideU) {
            wideU->Write(x, group, weights.u);
            wideV->Write(x, group, weights.v);
        } else {
            StoreSome(u + x, weights.u.Samples(group), count);
            StoreSome(v + x, weights.v.Samples(group), count);
        }
    }
    // Asks for the pixels at soon.
    AVEFFECT_INLINE void WriteRow(const uint8_t* from, size_t width, const PlaneWeights& weights,
                                  const uint8_t* soon) const {
        size_t x = 0;
        for (; x + kLanes <= width; x += kLanes) {
            AVEFFECT_UNROLL
            for (size_t i = 0; i < 4 * kLanes; i += 64) Prefetch(soon + x * 4 + i);
            Write(from + x * 4, x, kLanes, weights);
        }
        if (x < width) {
            uint8_t pixels[4 * kLanes] = {};
            std::memcpy(pixels, from + x * 4, (width - x) * 4);
            Write(pixels, x, width - x, weights);
        }
        if (!wideU) return;
        wideU->RepeatEnds(width);
        wideV->RepeatEnds(width);
    }
};

constexpr size_t kHalvedFractionBits = 6; // so that two may be added

// What all that is cut on the way to halved columns lacks in the mean, in 4ths of their unit: a sum of
// weights, as many products as there are pairs, and a last digit.
AVEFFECT_INLINE int32_t CutQuarters(const ChromaPairs& columns) { return columns.weights[3] != 0 ? 6 : 5; }

// Halves the columns of a row of chroma.
struct ColumnsHalved {
    const ChromaPairs& pairs;
    I16 weights[ChromaPairs::kPairs];

    AVEFFECT_INLINE explicit ColumnsHalved(const ChromaPairs& columns)
        : pairs(columns) {
        AVEFFECT_UNROLL
        for (size_t i = 0; i < ChromaPairs::kPairs; ++i) weights[i] = SplatI16(columns.weights[i]);
    }
    template <size_t Pairs>
    AVEFFECT_INLINE void WriteFrom(int16_t* to, const ChromaColumns& from, size_t columns) const {
        const int16_t *first[Pairs], *second[Pairs];
        for (size_t i = 0; i < Pairs; ++i) {
            first[i] = from.At(pairs.first[i]);
            second[i] = from.At(pairs.second[i]);
        }
        for (size_t x = 0; x < columns; x += kHalf) {
            I16 sum{};
            AVEFFECT_UNROLL
            for (size_t i = 0; i < Pairs; ++i)
                sum = sum + MultiplyHigh(Load<I16>(first[i] + x) + Load<I16>(second[i] + x), weights[i]);
            Store(to + x, sum >> (kChromaFractionBits - kHalvedFractionBits));
        }
    }
    AVEFFECT_INLINE void Write(int16_t* to, const ChromaColumns& from, size_t columns) const {
        if (pairs.weights[3] != 0)
            WriteFrom<4>(to, from, columns);
        else
            WriteFrom<3>(to, from, columns);
    }
};

// The halved rows of chroma that the next one is made of.
struct ChromaRing {
    static constexpr size_t kRows = 8;
    int16_t* rows[kRows];

    AVEFFECT_INLINE ChromaRing(int16_t* scratch, size_t columns) {
        for (size_t i = 0; i < kRows; ++i) rows[i] = scratch + kChromaPadding + i * HalvedPitch(columns);
    }
    AVEFFECT_INLINE int16_t* Of(size_t y) const { return rows[y % kRows]; }
    AVEFFECT_INLINE const int16_t* Of(ptrdiff_t y, size_t height) const { return Of(LimitedRow(y, height)); }
};

// A row of chroma from eight, or from one.
struct RowsHalved {
    const ChromaPairs& pairs;
    I16 low, high; // weights
    int32_t cut;   // in quarters

    AVEFFECT_INLINE RowsHalved(const ChromaPairs& columns, const ChromaPairs& rows)
        : pairs(rows)
        , low(PixelWeights::Two(rows.weights[0], rows.weights[1]))
        , high(PixelWeights::Two(rows.weights[2], rows.weights[3]))
        , cut(CutQuarters(columns)) {}

    struct Rows {
        const int16_t *first[ChromaPairs::kPairs], *second[ChromaPairs::kPairs];
    };
    AVEFFECT_INLINE I16 At(const Rows& rows, size_t x) const {
        constexpr int kShift = 16 + kHalvedFractionBits;
        U16 sums[ChromaPairs::kPairs];
        AVEFFECT_UNROLL
        for (size_t i = 0; i < ChromaPairs::kPairs; ++i)
            sums[i] = Load<U16>(rows.first[i] + x) + Load<U16>(rows.second[i] + x);
        const I32 rounding = I32{} + ((128 << kShift) + (1 << (kShift - 1)) + (cut << 14));
        const I32 first = MultiplyAddPairs((I16)InterleaveLow(sums[0], sums[1]), low) +
                          MultiplyAddPairs((I16)InterleaveLow(sums[2], sums[3]), high) + rounding;
        const I32 second = MultiplyAddPairs((I16)InterleaveHigh(sums[0], sums[1]), low) +
                           MultiplyAddPairs((I16)InterleaveHigh(sums[2], sums[3]), high) + rounding;
        return PackPairs(first >> kShift, second >> kShift);
    }
    AVEFFECT_INLINE void Write(uint8_t* to, const ChromaRing& ring, size_t row, size_t height,
                               size_t width) const {
        Rows rows;
        for (size_t i = 0; i < ChromaPairs::kPairs; ++i) {
            rows.first[i] = ring.Of(static_cast<ptrdiff_t>(2 * row) + pairs.first[i], height);
            rows.second[i] = ring.Of(static_cast<ptrdiff_t>(2 * row) + pairs.second[i], height);
        }
        for (size_t x = 0; x < width; x += kLanes)
            StoreSome(to + x, PackInOrder(At(rows, x), At(rows, x + kHalf)), width - x);
    }
    AVEFFECT_INLINE I16 One(const int16_t* from) const {
        constexpr int kMiddle = (128 << kHalvedFractionBits) + (1 << (kHalvedFractionBits - 1));
        return (Load<I16>(from) + SplatI16(static_cast<int16_t>(kMiddle + cut / 4))) >> kHalvedFractionBits;
    }
    AVEFFECT_INLINE void WriteOne(uint8_t* to, const int16_t* from, size_t width) const {
        for (size_t x = 0; x < width; x += kLanes)
            StoreSome(to + x, PackInOrder(One(from + x), One(from + x + kHalf)), width - x);
    }
};

void ToPlanes(const YuvaPlanes& planes, Plane32 pixels, const PlaneRule& rule, PixelOrder order,
              uint8_t* scratch) noexcept {
    if (pixels.Empty()) return;
    const int32_t half = 1 << (kWeightBits - 1),
                  middle = planes.halvedColumns ? 0 : half + (128 << kWeightBits);
    const PlaneWeights weights = {PixelWeights(rule.y, rule.lumaOffset + half, order.swapped),
                                  PixelWeights(rule.u, middle, order.swapped),
                                  PixelWeights(rule.v, middle, order.swapped)};
    const size_t width = pixels.width, columns = planes.u.width, pitch = HalvedPitch(columns);
    uint8_t* const whole = scratch; // a row of pixels
    int16_t* const behind = reinterpret_cast<int16_t*>(scratch + RowBytes(width));
    const ChromaColumns wideU(behind, columns), wideV(behind + 2 * pitch, columns);
    const ChromaRing ringU(behind + 4 * pitch, columns);
    const ChromaRing ringV(behind + (4 + ChromaRing::kRows) * pitch, columns);
    const ColumnsHalved across(rule.columns);
    const RowsHalved down(rule.columns, rule.rows);
    size_t next = 0; // row of chroma
    for (size_t y = 0; y < pixels.rows; ++y) {
        const uint8_t* const from = order.isShort ? whole : pixels.Row(y);
        const uint8_t* const soon = order.isShort ? whole : pixels.Row(y + 1 < pixels.rows ? y + 1 : y);
        if (order.isShort) AddFourth<false>(whole, pixels.Row(y), width);
        uint8_t* const alpha = planes.alpha.Empty() ? nullptr : planes.alpha.Row(y);
        if (!planes.halvedColumns) {
            PlaneRows{planes.y.Row(y), planes.u.Row(y), planes.v.Row(y), alpha, nullptr, nullptr}.WriteRow(
                from, width, weights, soon);
            continue;
        }
        PlaneRows{planes.y.Row(y), nullptr, nullptr, alpha, &wideU, &wideV}.WriteRow(from, width, weights,
                                                                                     soon);
        across.Write(ringU.Of(y), wideU, columns);
        across.Write(ringV.Of(y), wideV, columns);
        if (!planes.halvedRows) {
            down.WriteOne(planes.u.Row(y), ringU.Of(y), columns);
            down.WriteOne(planes.v.Row(y), ringV.Of(y), columns);
            continue;
        }
        for (; next < planes.u.rows && (2 * next + 4 <= y || y + 1 == pixels.rows); ++next) {
            down.Write(planes.u.Row(next), ringU, next, pixels.rows, columns);
            down.Write(planes.v.Row(next), ringV, next, pixels.rows, columns);
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
