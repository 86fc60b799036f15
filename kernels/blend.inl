// Bodies of the blend kernels, for one level.
#include "kernels/block_means.inl"

struct MixSamples {
    I16 weight; // below 32768

    AVEFFECT_INLINE U16 Change(U16 to, U16 before) const {
        const I16 difference = (I16)(to - before);
#if AVEFFECT_LANE_BYTES > 16
        return (U16)MultiplyRounded(difference, weight);
#else
        // Times 128 it fits in 16 bits; to cut the product by 9 bits before it is rounded changes nothing.
        return (U16)((MultiplyHigh(difference << 7, weight) + 32) >> 6);
#endif
    }
    AVEFFECT_INLINE U8 operator()(U8 to, U8 before) const {
        const U16 even = Change(Even(to), Even(before)), odd = Change(Odd(to), Odd(before));
        return before + (U8)((even & 0xFF) | (odd << 8));
    }
};

struct ScaleSamples {
    U16 weight;

    AVEFFECT_INLINE U8 operator()(U8 samples) const {
        return Join((MultiplyHigh(EvenTimes256(samples), weight) + 64) >> 7,
                    (MultiplyHigh(OddTimes256(samples), weight) + 64) >> 7);
    }
};

// Lanes of a mask for even and odd bytes.
AVEFFECT_INLINE U8 Masked(U8 to, U8 before, U16 evenMask, U16 oddMask) {
    const U16 even = Even(before), odd = Odd(before);
    return Join(DividedBy255(EvenTimes256(before) - even + (Even(to) - even) * evenMask),
                DividedBy255(OddTimes256(before) - odd + (Odd(to) - odd) * oddMask));
}

// What the mask of a register of the picture says, by itself.
enum class MaskKind { Nothing, Everything, Some };

// A register of the picture takes kBytes of mask.
struct MaskSamples {
    static constexpr size_t kBytes = kLanes;
    AVEFFECT_INLINE U8 operator()(U8 to, U8 before, const uint8_t* mask) const {
        const U8 m = Load<U8>(mask);
        return Masked(to, before, Even(m), Odd(m));
    }
    AVEFFECT_INLINE MaskKind KindOf(const uint8_t* mask) const {
        const U8 m = Load<U8>(mask);
        return IsZero(m) ? MaskKind::Nothing : IsZero(~m) ? MaskKind::Everything : MaskKind::Some;
    }
};
struct MaskPixels {
    static constexpr size_t kBytes = kLanes / 4;
    AVEFFECT_INLINE U8 operator()(U8 to, U8 before, const uint8_t* mask) const {
        const U32 one = LoadQuarter(mask);
        const U16 m = (U16)(one | (one << 16));
        return Masked(to, before, m, m);
    }
    AVEFFECT_INLINE MaskKind KindOf(const uint8_t* mask) const {
        uint32_t words[kBytes / 4], any = 0, all = ~0u;
        std::memcpy(words, mask, kBytes);
        for (const uint32_t word : words) {
            any |= word;
            all &= word;
        }
        return any == 0 ? MaskKind::Nothing : all == ~0u ? MaskKind::Everything : MaskKind::Some;
    }
};

// A row as ForRowWith walks it, with a third one. Most of a mask is nothing or everything, which takes no
// arithmetic, and of the latter no picture.
template <class Op>
AVEFFECT_INLINE void MaskRow(uint8_t* to, const uint8_t* before, const uint8_t* mask, size_t width,
                             const Op& op) {
    constexpr size_t kShare = kLanes / Op::kBytes; // bytes of picture a byte of mask
    if (width < kLanes) {
        U8 whole{}, wholeBefore{}, wholeMask{};
        std::memcpy(&whole, to, width);
        std::memcpy(&wholeBefore, before, width);
        std::memcpy(&wholeMask, mask, width / kShare);
        whole = op(whole, wholeBefore, reinterpret_cast<const uint8_t*>(&wholeMask));
        std::memcpy(to, &whole, width);
        return;
    }
    const size_t end = width - kLanes;
    const U8 last = op(Load<U8>(to + end), Load<U8>(before + end), mask + end / kShare);
    for (size_t x = 0; x < end; x += kLanes) {
        const uint8_t* const at = mask + x / kShare;
        const MaskKind kind = op.KindOf(at);
        if (kind == MaskKind::Nothing)
            Store(to + x, Load<U8>(before + x));
        else if (kind == MaskKind::Some)
            Store(to + x, op(Load<U8>(to + x), Load<U8>(before + x), at));
    }
    Store(to + end, last);
}

template <class Op>
AVEFFECT_INLINE void MaskPlane(const Plane8& to, const Plane8& before, const Plane8& mask, const Op& op) {
    for (size_t y = 0; y < to.rows && to.width > 0; ++y)
        MaskRow(to.Row(y), before.Row(y), mask.Row(y), to.width, op);
}

void MaskBytes(Plane8 to, Plane8 before, Plane8 mask) noexcept { MaskPlane(to, before, mask, MaskSamples{}); }
void MaskRgba32(Plane32 to, Plane32 before, Plane8 mask) noexcept {
    MaskPlane(to.Bytes(), before.Bytes(), mask, MaskPixels{});
}

void MixBytes(Plane8 to, Plane8 before, unsigned weight) noexcept {
    if (to.Empty() || weight >= kWholeWeight) return;
    const MixSamples mix{SplatI16(static_cast<int16_t>(weight))};
    for (size_t y = 0; y < to.rows; ++y) ForRowWith(to.Row(y), before.Row(y), to.width, mix);
}

struct ScaleOther {
    ScaleSamples scale;
    AVEFFECT_INLINE U8 operator()(U8, U8 from) const { return scale(from); }
};

void ScaleBytes(Plane8 to, Plane8 from, unsigned weight) noexcept {
    if (to.Empty()) return;
    const ScaleOther scale{{Splat16(static_cast<uint16_t>(weight < kWholeWeight ? weight : kWholeWeight))}};
    for (size_t y = 0; y < to.rows; ++y) ForRowWith(to.Row(y), from.Row(y), to.width, scale);
}

template <unsigned Across>
AVEFFECT_INLINE void Shrink(const Plane8& to, const Plane8& mask, unsigned down) {
    for (size_t y = 0; y < to.rows; ++y) {
        const BlockMeans<Across> means(mask, y, down);
        uint8_t* const row = to.Row(y);
        for (size_t x = 0; x < to.width; x += kLanes) {
            const U8 found = means.AtEnd(x << Across, mask.width - (x << Across));
            if (x + kLanes <= to.width)
                Store(row + x, found);
            else
                std::memcpy(row + x, &found, to.width - x);
        }
    }
}

void ShrinkMask(Plane8 to, Plane8 mask, unsigned horizontalShift, unsigned verticalShift) noexcept {
    if (to.Empty() || mask.Empty()) return;
    if (horizontalShift == 0)
        Shrink<0>(to, mask, verticalShift);
    else if (horizontalShift == 1)
        Shrink<1>(to, mask, verticalShift);
    else
        Shrink<2>(to, mask, verticalShift);
}

constexpr BlendKernels kKernels = {MixBytes, MaskBytes, MaskRgba32, ScaleBytes, ShrinkMask};
