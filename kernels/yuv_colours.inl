// Colours of YUV planes, for one level.
#include "kernels/lanes/channels.inl"

constexpr size_t kHalf = kLanes / 2;  // samples of a register of 16-bit numbers
constexpr size_t kChromaPadding = 32; // samples before and behind a row of chroma
constexpr size_t kChromaFractionBits = 7, kTapBits = 14, kWeightBits = 15;

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

    // What is added for rounding, in 64ths.
    AVEFFECT_INLINE ColourMix(const PixelRule& rule, int rounding)
        : lumaScale(Splat16(rule.lumaScale))
        , lumaOffset(
              SplatI16(static_cast<int16_t>(rule.lumaOffset + rounding + 1))) // what cut products lack, 1
        , redWhole(SplatI16(rule.redWhole))
        , redPart(SplatI16(rule.redPart))
        , blueWhole(SplatI16(rule.blueWhole))
        , bluePart(SplatI16(rule.bluePart))
        , greenFromU(SplatI16(rule.greenFromU))
        , greenFromV(SplatI16(rule.greenFromV)) {}
};

// In 64ths.
struct ColourLanes {
    I16 b, g, r;

    AVEFFECT_INLINE ColourLanes(U16 luma256, I16 u, I16 v, const ColourMix& mix) {
        const I16 luma = (I16)MultiplyHigh(luma256, mix.lumaScale) + mix.lumaOffset;
        b = AddSaturated(luma, (u >> 1) * mix.blueWhole + MultiplyHigh(u, mix.bluePart));
        g = AddSaturated(luma, MultiplyHigh(u, mix.greenFromU) + MultiplyHigh(v, mix.greenFromV));
        r = AddSaturated(luma, (v >> 1) * mix.redWhole + MultiplyHigh(v, mix.redPart));
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

// Chroma of planes row by row, in rows of scratch where it is halved; they take 2 * (width + 128) numbers.
struct ChromaRows {
    const YuvaPlanes& planes;
    const PixelRule& rule;
    ColumnsMixed even, odd;
    int16_t *u, *v;

    AVEFFECT_INLINE ChromaRows(const YuvaPlanes& from, const PixelRule& by, int16_t* scratch)
        : planes(from)
        , rule(by)
        , even(by.columns[0])
        , odd(by.columns[1])
        , u(scratch + kChromaPadding)
        , v(u + from.u.width + 4 * kChromaPadding) {}

    // Calls visit(row of luma, chroma) for a row.
    template <class Visit>
    AVEFFECT_INLINE void Row(size_t y, const Visit& visit) const {
        if (!planes.halvedColumns) {
            visit(planes.y.Row(y), WholeChroma{planes.u.Row(y), planes.v.Row(y)});
            return;
        }
        RowsMixed(planes.u, rule.rows, planes.halvedRows, y).Write(u, planes.u.width);
        RowsMixed(planes.v, rule.rows, planes.halvedRows, y).Write(v, planes.v.width);
        visit(planes.y.Row(y), HalvedChroma{u, v, even, odd});
    }
};
