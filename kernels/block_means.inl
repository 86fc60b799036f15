// Means of blocks of samples, for one level.
#include "kernels/lanes/channels.inl"

// Of 1 << Across columns and 1 << down rows, up to 4 each, rounded to the nearest, halves up. Less than a
// block beyond the plane's edges its last samples repeat.
template <unsigned Across>
struct BlockMeans {
    static constexpr size_t kBytes = kLanes << Across; // that a register is made of
    const uint8_t* rows[4];
    unsigned down;
    U16 half;

    AVEFFECT_INLINE BlockMeans(const Plane8& plane, size_t row, unsigned downShift)
        : down(downShift)
        , half(Splat16(static_cast<uint16_t>(1u << (Across + downShift) >> 1))) {
        const size_t first = row << down;
        for (size_t i = 0; i < size_t{1} << down; ++i)
            rows[i] = plane.Row(first + i < plane.rows ? first + i : plane.rows - 1);
    }

    // Sums of the columns that each 16-bit lane holds, or of its even and its odd one.
    AVEFFECT_INLINE U16 PairSums(size_t x) const {
        U16 even, odd;
        Sums(x, &even, &odd);
        return even + odd;
    }
    AVEFFECT_INLINE void Sums(size_t x, U16* even, U16* odd) const {
        *even = *odd = U16{};
        for (size_t i = 0; i < size_t{1} << down; ++i) {
            const U8 samples = Load<U8>(rows[i] + x);
            *even += Even(samples);
            *odd += Odd(samples);
        }
    }
    AVEFFECT_INLINE I16 Mean(U16 sums) const { return (I16)((sums + half) >> (Across + down)); }
    AVEFFECT_INLINE I32 QuadMeans(size_t x) const {
        const U32 pairs = (U32)PairSums(x), sums = (pairs & 0xFFFF) + (pairs >> 16);
        return (I32)((sums + (1u << (Across + down) >> 1)) >> (Across + down));
    }

    // A register of means, from the column of its first block on.
    AVEFFECT_INLINE U8 At(size_t x) const {
        if constexpr (Across == 0) {
            U16 even, odd;
            Sums(x, &even, &odd);
            return Join((U16)Mean(even), (U16)Mean(odd));
        } else if constexpr (Across == 1) {
            return PackInOrder(Mean(PairSums(x)), Mean(PairSums(x + kLanes)));
        } else {
            return InOrder(Pack(PackPairs(QuadMeans(x), QuadMeans(x + kLanes)),
                                PackPairs(QuadMeans(x + 2 * kLanes), QuadMeans(x + 3 * kLanes))));
        }
    }
    // The same where the plane has no more than that many columns left.
    AVEFFECT_INLINE U8 AtEnd(size_t x, size_t count) const {
        if (count >= kBytes) return At(x);
        uint8_t ends[4][kBytes];
        BlockMeans end = *this;
        for (size_t i = 0; i < size_t{1} << down; ++i) {
            std::memset(ends[i], rows[i][x + count - 1], kBytes);
            std::memcpy(ends[i], rows[i] + x, count);
            end.rows[i] = ends[i];
        }
        return end.At(0);
    }
};
