// Oil with small neighbourhoods: of a register of columns, the counts of a bin are summed across for one bin
// after another, which finds the most frequent bin of each; then the samples of that bin are summed over the
// neighbourhood, all others masked.

typedef float F32 __attribute__((vector_size(kLanes)));

// Sums of bytes, for each even one and its odd neighbour: of the odd bytes, and of both as one 16-bit number.
// The latter wraps, but the sum of the even bytes does not.
struct ByteSums {
    U16 all, odd;

    AVEFFECT_INLINE void Add(U8 x) {
        all += (U16)x;
        odd += Odd(x);
    }
    AVEFFECT_INLINE U16 Even() const { return all - (odd << 8); }
};

// Sums divided by counts, rounded down. Half a unit more than the sum lies at least 1 / 450 from a whole
// quotient, which is far more than single precision is off.
template <size_t Count>
AVEFFECT_INLINE void Divide(U8 (&means)[3], const ByteSums (&sums)[Count], U8 counts) {
    const U32 divisors = (U32)Max(counts, Splat8(1)); // beyond the row nothing is counted
    U32 quotients[Count] = {};
    AVEFFECT_UNROLL
    for (unsigned quarter = 0; quarter < 4; ++quarter) {
        const U32 divisor = (divisors >> (8 * quarter)) & 0xFF;
        const F32 reciprocal = 1.0f / __builtin_convertvector((I32)divisor, F32);
        AVEFFECT_UNROLL
        for (size_t i = 0; i < Count; ++i) {
            const U32 pairs = (U32)(quarter % 2 ? sums[i].odd : sums[i].Even());
            const U32 sum = quarter < 2 ? pairs & 0xFFFF : pairs >> 16;
            const F32 quotient = (__builtin_convertvector((I32)sum, F32) + 0.5f) * reciprocal;
            quotients[i] |= (U32) __builtin_convertvector(quotient, I32) << (8 * quarter);
        }
    }
    AVEFFECT_UNROLL
    for (size_t i = 0; i < Count; ++i) means[i] = (U8)quotients[i];
}

// The top bits of 64 bytes.
AVEFFECT_INLINE uint64_t TopBits(const uint8_t* bytes) {
    uint64_t bits = 0;
    for (unsigned i = 0; i < 4; ++i) {
        Register16 part;
        std::memcpy(&part, bytes + 16 * i, sizeof part);
        bits |= uint64_t{static_cast<uint16_t>(AVEFFECT_OP16(movemask_epi8)(part))} << (16 * i);
    }
    return bits;
}

// Radius is the brush's, or 0 where it is not known beforehand.
template <class Picture, size_t Radius>
struct SmallBrush {
    static constexpr size_t kBlock = OilMemory::kBlock;
    static constexpr size_t kMostRows = 2 * OilMemory::kLargestSmallRadius + 1;

    // The bins of a row of the ring, and a bit for every bin that occurs in a block of it.
    struct BinnedRow {
        const uint8_t* bins;
        uint64_t* used;
    };

    Picture& picture;
    const OilMemory& memory;
    OilBrush brush;
    uint8_t* scratch;
    OilRow around[kMostRows] = {}; // the rows of the neighbourhood
    uint64_t* used[kMostRows] = {};
    size_t rows = 0;                    // how many
    BinnedRow added = {}, removed = {}; // since the row before

    AVEFFECT_INLINE size_t Reach() const { return Radius ? Radius : brush.radius; }
    AVEFFECT_INLINE uint64_t* Used(size_t slot) const {
        return reinterpret_cast<uint64_t*>(scratch + memory.used) + slot * memory.blocks * memory.words;
    }
    AVEFFECT_INLINE BinnedRow Binned(size_t row) const {
        return {picture.RowAt(row).bins, Used(row % memory.slots)};
    }
    // A row without any bin.
    AVEFFECT_INLINE BinnedRow Blank() const { return {scratch + memory.blank + kBlock, Used(memory.slots)}; }
    // Of the first column of a block.
    AVEFFECT_INLINE uint8_t* Counts(size_t bin, size_t block) const {
        return scratch + memory.counts + bin * memory.pitch + block * kBlock;
    }
    AVEFFECT_INLINE size_t LastBlock() const { return (picture.Width() + kBlock - 1) / kBlock; }

    AVEFFECT_INLINE BinnedRow Enter(size_t row) const {
        ReadRow(picture, row, brush.levels);
        const BinnedRow entered = Binned(row);
        uint64_t* usedInBlock = entered.used + memory.words;
        for (size_t x = 0; x < picture.Width(); x += kBlock, usedInBlock += memory.words) {
            uint8_t flags[256] = {};
            const size_t rest = picture.Width() - x, end = rest < kBlock ? picture.Width() : x + kBlock;
            for (size_t i = x; i < end; ++i) flags[entered.bins[i]] = 0x80;
            for (size_t word = 0; word < memory.words; ++word) usedInBlock[word] = TopBits(flags + 64 * word);
        }
        return entered;
    }

    // Brings the counts of a block's columns up to the row.
    AVEFFECT_INLINE void CountBlock(size_t block) const {
        const uint8_t* const news = added.bins + (block - 1) * kBlock;
        const uint8_t* const olds = removed.bins + (block - 1) * kBlock;
        for (size_t word = 0; word < memory.words; ++word) {
            const size_t place = block * memory.words + word;
            for (uint64_t bins = added.used[place] | removed.used[place]; bins != 0; bins &= bins - 1) {
                const size_t bin = 64 * word + static_cast<size_t>(__builtin_ctzll(bins));
                const U8 wanted = Splat8(static_cast<uint8_t>(bin));
                uint8_t* const counts = Counts(bin, block);
                for (size_t x = 0; x < kBlock; x += kLanes) {
                    const U8 more = Increment(Load<U8>(counts + x), Equal(Load<U8>(news + x), wanted));
                    Store(counts + x, Decrement(more, Equal(Load<U8>(olds + x), wanted)));
                }
            }
        }
    }

    // The bins of a block's neighbourhoods, those of the blocks beside it among them, in ascending order.
    // Returns how many.
    AVEFFECT_INLINE size_t List(uint8_t* list, size_t block) const {
        size_t count = 0;
        for (size_t word = 0; word < memory.words; ++word) {
            uint64_t bins = 0;
            for (size_t row = 0; row < rows; ++row) {
                const uint64_t* const beside = used[row] + (block - 1) * memory.words + word;
                bins |= beside[0] | beside[memory.words] | beside[2 * memory.words];
            }
            for (; bins != 0; bins &= bins - 1)
                list[count++] = static_cast<uint8_t>(64 * word + static_cast<size_t>(__builtin_ctzll(bins)));
        }
        return count;
    }

    // The counts of a bin in the neighbourhoods, from those of the first columns.
    AVEFFECT_INLINE U8 Across(const uint8_t* counts) const {
        U8 sum = Load<U8>(counts);
        if constexpr (Radius != 0) {
            AVEFFECT_UNROLL
            for (size_t column = 1; column <= 2 * Radius; ++column) sum += Load<U8>(counts + column);
        } else {
            for (size_t column = 1; column <= 2 * brush.radius; ++column) sum += Load<U8>(counts + column);
        }
        return sum;
    }

    // The most frequent bins of a register of columns, and how often they occur.
    AVEFFECT_INLINE void FindBins(U8& winners, U8& most, const uint8_t* list, size_t listed, size_t block,
                                  size_t x) const {
        U8 best{}, highest{};
        const uint8_t* const first = Counts(0, block) + x - Reach();
        const size_t pitch = memory.pitch;
        for (size_t i = 0; i < listed; ++i) {
            const U8 count = Across(first + list[i] * pitch);
            best = Replace(best, Greater(count, highest), Splat8(list[i]));
            highest = Max(highest, count);
        }
        winners = best;
        most = highest;
    }

    template <size_t Count>
    AVEFFECT_INLINE void AddColumn(ByteSums (&sums)[Count], const OilRow& from, U8 winners, size_t at) const {
        const ByteMask here = Equal(Load<U8>(from.bins + at - Reach()), winners);
        AVEFFECT_UNROLL
        for (size_t i = 0; i < Count; ++i) sums[i].Add(LoadWhere(here, from.samples[i] + at - Reach()));
    }

    template <size_t Count>
    AVEFFECT_INLINE void FindMeans(U8 (&means)[3], U8 winners, U8 counts, size_t x) const {
        ByteSums sums[Count] = {};
        for (size_t row = 0; row < rows; ++row)
            if constexpr (Radius != 0) {
                AVEFFECT_UNROLL
                for (size_t column = 0; column <= 2 * Radius; ++column)
                    AddColumn(sums, around[row], winners, x + column);
            } else {
                for (size_t column = 0; column <= 2 * brush.radius; ++column)
                    AddColumn(sums, around[row], winners, x + column);
            }
        Divide(means, sums, counts);
    }

    template <size_t Count>
    AVEFFECT_INLINE void PaintRow(size_t row) const {
        uint8_t list[256];
        CountBlock(1);
        for (size_t block = 1; block <= LastBlock(); ++block) {
            if (block < LastBlock()) CountBlock(block + 1);
            const size_t listed = List(list, block);
            for (size_t x = 0; x < kBlock; x += kLanes) {
                const size_t column = (block - 1) * kBlock + x;
                if (column >= picture.Width()) break;
                U8 winners, counts, means[3] = {};
                FindBins(winners, counts, list, listed, block, x);
                FindMeans<Count>(means, winners, counts, column);
                picture.Put(row, column, means);
            }
        }
    }

    AVEFFECT_INLINE void Paint() {
        std::memset(scratch + memory.used, 0, memory.blank - memory.used);
        std::memset(scratch + memory.blank, OilMemory::kNoBin, memory.pitch);
        const size_t height = picture.Rows(), radius = Reach();
        removed = Blank();
        for (size_t row = 0; row < radius && row < height; ++row) {
            added = Enter(row);
            for (size_t block = 1; block <= LastBlock(); ++block) CountBlock(block);
        }
        for (size_t row = 0; row < height; ++row) {
            const size_t first = row > radius ? row - radius : 0;
            rows = (height - row > radius ? row + radius + 1 : height) - first;
            added = height - row > radius ? Enter(row + radius) : Blank();
            if (row > radius) removed = Binned(row - radius - 1);
            for (size_t i = 0; i < rows; ++i) {
                around[i] = picture.RowAt(first + i);
                used[i] = Binned(first + i).used;
            }
            if (picture.ChannelsOf(row) == 3)
                PaintRow<3>(row);
            else
                PaintRow<1>(row);
            picture.FinishRow(row);
        }
    }
};
