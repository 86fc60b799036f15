// Bodies of the 3x3 filters, for one level. Each filter is a sum across of three neighbours and a sum down of
// three such sums, so that a plane is read and written once. Kept from row to row, for each column: the sum
// across of the row in work, and that sum with the one above it as the filter weighs them. Sums have 16 bits;
// a register of samples makes two registers of sums, one of its even bytes and one of its odd bytes, which
// needs no shuffling.

struct Blur {
    template <class Value>
    AVEFFECT_INLINE static Value Across(Value left, Value middle, Value right) {
        return left + middle + middle + right;
    }
    // 1-2-1 down is the pair above and here and the pair here and below.
    template <class Value>
    AVEFFECT_INLINE static Value Down(Value pair, Value nextPair, Value, Value) {
        return (pair + nextPair) >> 4;
    }
};

// Nine times the sample less its neighbours is ten times the sample less all nine.
struct Sharpen {
    template <class Value>
    AVEFFECT_INLINE static Value Across(Value left, Value middle, Value right) {
        return left + middle + right;
    }
    AVEFFECT_INLINE static int Down(int pair, int, int below, int sample) {
        return ClampToByte(10 * sample - (pair + below));
    }
    AVEFFECT_INLINE static U16 Down(U16 pair, U16, U16 below, U16 sample) {
        return (U16)Min((I16)SubSaturated(sample * 10, pair + below), SplatI16(255));
    }
};

// What is kept for one column, or for the even or odd bytes of a register.
template <class Value>
struct Kept {
    Value here; // sum across of the row in work
    Value pair; // that and the sum across of the row above, added
};

template <class Filter, class Value>
AVEFFECT_INLINE Value Advance(Kept<Value>& kept, Value below, Value sample) {
    const Value nextPair = kept.here + below;
    const Value result = Filter::Down(kept.pair, nextPair, below, sample);
    kept.here = below;
    kept.pair = nextPair;
    return result;
}

struct KeptRegister {
    Kept<U16> even, odd;
};

// The columns of a plane as registers: one after another from the first inner column, and a last one that
// ends at the last inner column and so overlaps its neighbour. Each keeps sums of its own.
template <class Filter, size_t Step>
struct Columns {
    using Sums = KeptRegister;

    size_t last;  // column of the last register
    size_t count; // registers before the last

    AVEFFECT_INLINE explicit Columns(size_t width)
        : last(width - Step - kLanes)
        , count((last - Step + kLanes - 1) / kLanes) {}

    AVEFFECT_INLINE static U8 AdvanceRegister(Sums& kept, const uint8_t* next, U8 samples) {
        const U8 left = Load<U8>(next - Step), middle = Load<U8>(next), right = Load<U8>(next + Step);
        const U16 even = Filter::template Across<U16>(Even(left), Even(middle), Even(right));
        const U16 odd = Filter::template Across<U16>(Odd(left), Odd(middle), Odd(right));
        return (U8)(Advance<Filter>(kept.even, even, Even(samples)) |
                    (Advance<Filter>(kept.odd, odd, Odd(samples)) << 8));
    }

    AVEFFECT_INLINE void Feed(const uint8_t* next, Sums* sums) const {
        for (size_t i = 0; i < count; ++i) AdvanceRegister(sums[i], next + Step + i * kLanes, U8{});
        AdvanceRegister(sums[count], next + last, U8{});
    }

    template <bool Track>
    AVEFFECT_INLINE bool FilterRow(uint8_t* row, const uint8_t* next, size_t pitch, Sums* sums) const {
        const U8 oldLast = Load<U8>(row + last);
        const U8 newLast = AdvanceRegister(sums[count], next + last, oldLast);
        U8 difference = oldLast ^ newLast;
        for (size_t i = 0; i < count; ++i) {
            const size_t x = Step + i * kLanes;
            const U8 old = Load<U8>(row + x);
            Prefetch(next + x + pitch);
            const U8 result = AdvanceRegister(sums[i], next + x, old);
            if constexpr (Track) difference |= old ^ result;
            Store(row + x, result);
        }
        Store(row + last, newLast);
        return !Track || !IsZero(difference);
    }
};

// The same for rows too short for a register, column by column.
template <class Filter, size_t Step>
struct NarrowColumns {
    using Sums = Kept<int>;

    size_t end; // past the last inner column

    explicit NarrowColumns(size_t width)
        : end(width - Step) {}

    static int AdvanceColumn(Sums& kept, const uint8_t* next, int sample) {
        return Advance<Filter>(
            kept, Filter::template Across<int>(next[-ptrdiff_t{Step}], next[0], next[Step]), sample);
    }

    void Feed(const uint8_t* next, Sums* sums) const {
        for (size_t x = Step; x < end; ++x) AdvanceColumn(sums[x], next + x, 0);
    }

    template <bool Track>
    bool FilterRow(uint8_t* row, const uint8_t* next, size_t, Sums* sums) const {
        bool changed = !Track;
        for (size_t x = Step; x < end; ++x) {
            const uint8_t result = TruncToByte(AdvanceColumn(sums[x], next + x, row[x]));
            changed |= result != row[x];
            row[x] = result;
        }
        return changed;
    }
};

template <class Columns, bool Track>
AVEFFECT_INLINE bool FilterRows(Plane8 plane, uint8_t* scratch) {
    const Columns columns(plane.width);
    auto* sums = reinterpret_cast<typename Columns::Sums*>(scratch);
    std::memset(scratch, 0, FilterScratchBytes(plane.width));
    columns.Feed(plane.Row(0), sums);
    columns.Feed(plane.Row(1), sums);
    bool changed = false;
    for (size_t y = 1; y + 1 < plane.rows; ++y)
        changed |= columns.template FilterRow<Track>(plane.Row(y), plane.Row(y + 1), plane.pitch, sums);
    return changed;
}

template <class Filter, size_t Step>
AVEFFECT_INLINE bool FilterPlane(Plane8 plane, uint8_t* scratch, bool track) {
    if (plane.width < 3 * Step || plane.rows < 3) return false;
    using Narrow = NarrowColumns<Filter, Step>;
    using Wide = Columns<Filter, Step>;
    if (plane.width < kLanes + 2 * Step) return FilterRows<Narrow, true>(plane, scratch);
    return track ? FilterRows<Wide, true>(plane, scratch) : FilterRows<Wide, false>(plane, scratch);
}

bool BlurComponent(Plane8 plane, uint8_t* scratch, bool track) noexcept {
    return FilterPlane<Blur, 1>(plane, scratch, track);
}
bool BlurRgba32(Plane32 plane, uint8_t* scratch, bool track) noexcept {
    return FilterPlane<Blur, 4>(plane.Bytes(), scratch, track);
}
bool SharpenComponent(Plane8 plane, uint8_t* scratch, bool track) noexcept {
    return FilterPlane<Sharpen, 1>(plane, scratch, track);
}
bool SharpenRgba32(Plane32 plane, uint8_t* scratch, bool track) noexcept {
    return FilterPlane<Sharpen, 4>(plane.Bytes(), scratch, track);
}

constexpr Filter3x3Kernels kKernels = {BlurComponent, BlurRgba32, SharpenComponent, SharpenRgba32};
