// Bodies of the 3x3 filters, for one level. Each filter is a sum across of three neighbours, kept for three
// rows at a time, and a sum down of three such sums, so that a plane is read and written once. Values have 16
// bits.

constexpr size_t kHalf = kLanes / 2; // samples of a register of 16-bit values

struct Blur {
    template <class Value>
    AVEFFECT_INLINE static Value Across(Value left, Value middle, Value right) {
        return left + middle + middle + right;
    }
    template <class Value>
    AVEFFECT_INLINE static Value Down(Value above, Value here, Value below, Value) {
        return (above + here + here + below) >> 4;
    }
    AVEFFECT_INLINE static uint8_t Finish(int value) { return TruncToByte(value); }
    AVEFFECT_INLINE static U16 Finish(U16 values) { return values; }
};

struct Sharpen {
    template <class Value>
    AVEFFECT_INLINE static Value Across(Value left, Value middle, Value right) {
        return left + middle + right;
    }
    // Ten times the sample less all nine; below 0 it wraps in 16 bits.
    template <class Value>
    AVEFFECT_INLINE static Value Down(Value above, Value here, Value below, Value sample) {
        return sample * 10 - (above + here + below);
    }
    AVEFFECT_INLINE static uint8_t Finish(int value) { return ClampToByte(value); }
    AVEFFECT_INLINE static U16 Finish(U16 values) {
        return (U16)Max(Min((I16)values, SplatI16(255)), SplatI16(0));
    }
};

// Sums across for the columns from step to width - step - 1.
template <class Filter, size_t Step>
AVEFFECT_INLINE void SumAcross(const uint8_t* row, uint16_t* sums, size_t width) {
    const size_t end = width - Step;
    if (end - Step < kHalf) {
        for (size_t x = Step; x < end; ++x)
            sums[x] =
                static_cast<uint16_t>(Filter::template Across<int>(row[x - Step], row[x], row[x + Step]));
        return;
    }
    for (size_t x = Step;; x += kHalf) {
        if (x > end - kHalf) x = end - kHalf;
        Store(sums + x,
              Filter::template Across<U16>(Widen(Load<U8Half>(row + x - Step)), Widen(Load<U8Half>(row + x)),
                                           Widen(Load<U8Half>(row + x + Step))));
        if (x == end - kHalf) break;
    }
}

template <class Filter>
AVEFFECT_INLINE U8Half FilterHalf(const uint8_t* row, const uint16_t* above, const uint16_t* here,
                                  const uint16_t* below) {
    return Narrow(Filter::Finish(Filter::template Down<U16>(Load<U16>(above), Load<U16>(here),
                                                            Load<U16>(below), Widen(Load<U8Half>(row)))));
}

// Writes the row from three rows of sums; true when a byte changed.
template <class Filter, size_t Step>
AVEFFECT_INLINE bool SumDown(uint8_t* row, const uint16_t* above, const uint16_t* here, const uint16_t* below,
                             size_t width) {
    const size_t end = width - Step;
    if (end - Step < kHalf) {
        bool changed = false;
        for (size_t x = Step; x < end; ++x) {
            const uint8_t result =
                Filter::Finish(Filter::template Down<int>(above[x], here[x], below[x], row[x]));
            changed |= result != row[x];
            row[x] = result;
        }
        return changed;
    }
    // The last half register overlaps its neighbour, both computed from the old bytes.
    const size_t last = end - kHalf;
    const U8Half oldLast = Load<U8Half>(row + last);
    const U8Half newLast = FilterHalf<Filter>(row + last, above + last, here + last, below + last);
    U8Half difference = oldLast ^ newLast;
    for (size_t x = Step; x < last; x += kHalf) {
        const U8Half result = FilterHalf<Filter>(row + x, above + x, here + x, below + x);
        difference |= result ^ Load<U8Half>(row + x);
        Store(row + x, result);
    }
    Store(row + last, newLast);
    static constexpr U8Half kZero{};
    return std::memcmp(&difference, &kZero, sizeof difference) != 0;
}

template <class Filter, size_t Step>
AVEFFECT_INLINE bool FilterPlane(Plane8 plane, uint8_t* scratch) {
    if (plane.width < 3 * Step || plane.rows < 3) return false;
    const size_t stride = FilterScratchBytes(plane.width) / 6;
    uint16_t* above = reinterpret_cast<uint16_t*>(scratch);
    uint16_t* here = above + stride;
    uint16_t* below = here + stride;
    SumAcross<Filter, Step>(plane.Row(0), above, plane.width);
    SumAcross<Filter, Step>(plane.Row(1), here, plane.width);
    bool changed = false;
    for (size_t y = 1; y + 1 < plane.rows; ++y) {
        SumAcross<Filter, Step>(plane.Row(y + 1), below, plane.width);
        changed |= SumDown<Filter, Step>(plane.Row(y), above, here, below, plane.width);
        uint16_t* free = above;
        above = here;
        here = below;
        below = free;
    }
    return changed;
}

bool BlurComponent(Plane8 plane, uint8_t* scratch) noexcept { return FilterPlane<Blur, 1>(plane, scratch); }
bool BlurRgba32(Plane32 plane, uint8_t* scratch) noexcept {
    return FilterPlane<Blur, 4>(plane.Bytes(), scratch);
}
bool SharpenComponent(Plane8 plane, uint8_t* scratch) noexcept {
    return FilterPlane<Sharpen, 1>(plane, scratch);
}
bool SharpenRgba32(Plane32 plane, uint8_t* scratch) noexcept {
    return FilterPlane<Sharpen, 4>(plane.Bytes(), scratch);
}

constexpr FilterKernels kKernels = {BlurComponent, BlurRgba32, SharpenComponent, SharpenRgba32};
