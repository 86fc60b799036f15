// Bodies of the relief kernels, for one level. A plane is read and written once: a row that is read gives its
// terms to the row above, which is then whole and can be written, to itself, and to the row below. What is
// kept from row to row are the sums so far of the row in work and of the next, in 16 bits, which hold nine
// terms; a register of samples makes two registers of sums, one of its even bytes and one of its odd bytes.

// High halves of products of sample * 64 and weight * 4 are sample * weight >> 8.
struct Weights {
    I16 of[9];

    AVEFFECT_INLINE explicit Weights(const ReliefWeights& weights) {
        AVEFFECT_UNROLL
        for (size_t i = 0; i < 9; ++i) of[i] = SplatI16(static_cast<int16_t>(weights.of[i] * 4));
    }
};

template <bool Odds>
AVEFFECT_INLINE I16 Times64(U8 samples) {
#if AVEFFECT_LANE_BYTES > 16
    return MultiplyAddPairs(samples, (U8)Splat16(Odds ? 64 << 8 : 64));
#else
    return (I16)((Odds ? Odd(samples) : Even(samples)) << 6);
#endif
}

// Samples with those to their left and right.
struct Triple {
    U8 left, middle, right;
};

struct Sums {
    I16 here, next; // of the row in work and of the one below

    // Adds the terms of the row below and goes on to it. Gives the whole sum.
    template <bool Odds>
    AVEFFECT_INLINE I16 Advance(const Triple& below, const Weights& weights) {
        const I16 left = Times64<Odds>(below.left), middle = Times64<Odds>(below.middle),
                  right = Times64<Odds>(below.right);
        const I16 whole = here + MultiplyHigh(left, weights.of[6]) + MultiplyHigh(middle, weights.of[7]) +
                          MultiplyHigh(right, weights.of[8]);
        here = next + MultiplyHigh(left, weights.of[3]) + (middle >> 6) + MultiplyHigh(right, weights.of[5]);
        next = MultiplyHigh(left, weights.of[0]) + MultiplyHigh(middle, weights.of[1]) +
               MultiplyHigh(right, weights.of[2]);
        return whole;
    }
};

struct SumsRegister {
    Sums even, odd;
};

AVEFFECT_INLINE U8 LimitAndJoin(I16 even, I16 odd) { return InterleaveLow(Pack(even, even), Pack(odd, odd)); }

// The columns of a plane as registers: one after another, and a last one that ends where the row ends and so
// overlaps its neighbour, or a single one for narrower rows. Each keeps sums of its own.
template <size_t Step>
struct ReliefRow {
    const Weights& weights;
    size_t width;
    size_t count; // registers before the last

    AVEFFECT_INLINE ReliefRow(const Weights& weightsOfPlane, size_t widthBytes)
        : weights(weightsOfPlane)
        , width(widthBytes)
        , count((widthBytes - 1) / kLanes) {}

    AVEFFECT_INLINE size_t Last() const { return count == 0 ? 0 : width - kLanes; }

    // From column x on, 0 outside the row.
    AVEFFECT_INLINE U8 LoadInside(const uint8_t* row, ptrdiff_t x) const {
        const auto end = static_cast<ptrdiff_t>(width);
        const ptrdiff_t from = x < 0 ? 0 : x, to = x + ptrdiff_t{kLanes} < end ? x + ptrdiff_t{kLanes} : end;
        U8 result{};
        if (from < to)
            std::memcpy(reinterpret_cast<uint8_t*>(&result) + (from - x), row + from,
                        static_cast<size_t>(to - from));
        return result;
    }
    AVEFFECT_INLINE Triple AtEdge(const uint8_t* row, size_t column) const {
        const auto x = static_cast<ptrdiff_t>(column);
        return {LoadInside(row, x - ptrdiff_t{Step}), LoadInside(row, x),
                LoadInside(row, x + ptrdiff_t{Step})};
    }
    AVEFFECT_INLINE Triple Within(const uint8_t* row, size_t x) const {
        return {Load<U8>(row + x - Step), Load<U8>(row + x), Load<U8>(row + x + Step)};
    }

    AVEFFECT_INLINE U8 AdvanceRegister(SumsRegister& sums, const Triple& below) const {
        const I16 even = sums.even.template Advance<false>(below, weights);
        return LimitAndJoin(even, sums.odd.template Advance<true>(below, weights));
    }
    AVEFFECT_INLINE static U8 WithAlpha(U8 old, U8 result) {
        return Step == 4 ? Select(AlphaMask(), old, result) : result;
    }
    AVEFFECT_INLINE void StoreAtEdge(uint8_t* row, size_t x, U8 result) const {
        result = WithAlpha(LoadInside(row, static_cast<ptrdiff_t>(x)), result);
        std::memcpy(row + x, &result, width < kLanes ? width : kLanes);
    }

    // Takes in the first row.
    AVEFFECT_INLINE void Begin(const uint8_t* first, SumsRegister* sums) const {
        std::memset(static_cast<void*>(sums), 0, ReliefScratchBytes(width));
        for (size_t i = 0; i <= count; ++i)
            AdvanceRegister(sums[i], AtEdge(first, i < count ? i * kLanes : Last()));
    }
    // Writes a row after taking in the one below.
    AVEFFECT_INLINE void Filter(uint8_t* row, const uint8_t* below, size_t pitch, SumsRegister* sums) const {
        StoreAtEdge(row, 0, AdvanceRegister(sums[0], AtEdge(below, 0)));
        for (size_t i = 1; i < count; ++i) {
            const size_t x = i * kLanes;
            Prefetch(below + x + pitch);
            const U8 result = AdvanceRegister(sums[i], Within(below, x));
            Store(row + x, WithAlpha(Load<U8>(row + x), result));
        }
        if (count > 0) StoreAtEdge(row, Last(), AdvanceRegister(sums[count], AtEdge(below, Last())));
    }
    // Writes the last row.
    AVEFFECT_INLINE void End(uint8_t* row, const SumsRegister* sums) const {
        for (size_t i = 0; i <= count; ++i)
            StoreAtEdge(row, i < count ? i * kLanes : Last(),
                        LimitAndJoin(sums[i].even.here, sums[i].odd.here));
    }
};

template <size_t Step>
AVEFFECT_INLINE void ReliefPlane(Plane8 plane, const ReliefWeights& planeWeights, uint8_t* scratch) {
    if (plane.Empty()) return;
    const Weights weights(planeWeights);
    const ReliefRow<Step> row(weights, plane.width);
    auto* const sums = reinterpret_cast<SumsRegister*>(scratch);
    row.Begin(plane.Row(0), sums);
    for (size_t y = 0; y + 1 < plane.rows; ++y) row.Filter(plane.Row(y), plane.Row(y + 1), plane.pitch, sums);
    row.End(plane.Row(plane.rows - 1), sums);
}

void ReliefComponent(Plane8 plane, const ReliefWeights& weights, uint8_t* scratch) noexcept {
    ReliefPlane<1>(plane, weights, scratch);
}
void ReliefRgba32(Plane32 plane, const ReliefWeights& weights, uint8_t* scratch) noexcept {
    ReliefPlane<4>(plane.Bytes(), weights, scratch);
}

constexpr ReliefKernels kKernels = {ReliefComponent, ReliefRgba32};
