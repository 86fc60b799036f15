// Bodies of the radiate kernels, for one level. Where a sample's rays go is known of each column and of each
// row by itself, so the columns are found once and serve every row. Towards the centre, neighbours come from
// places that lie no farther apart than they do: a register of them is loaded at once and put in order.

constexpr size_t kRays = 16;

// One axis of a plane; the picture's size may be larger, by a shift.
struct Axis {
    uint32_t centre;
    int32_t level;
    size_t pictureSize;
    unsigned shift;
    size_t size;

    // Where picture positions first, first + step, ... go, kLanes / 4 of them: places[ray * stride + i].
    AVEFFECT_INLINE void FindPlaces(uint32_t first, uint32_t step, uint32_t* places, size_t stride) const {
        uint32_t positions[kLanes / 4];
        for (size_t i = 0; i < kLanes / 4; ++i) positions[i] = first + static_cast<uint32_t>(i) * step;
        const auto last = static_cast<int32_t>(pictureSize - 1), lastOfPlane = static_cast<int32_t>(size - 1);
        I32 s = (I32)(Load<U32>(positions) * 256 - centre);
        for (size_t ray = 0; ray < kRays; ++ray) {
            s -= ((s >> 4) * level) >> 10;
            I32 place = (I32)((U32)s + centre + 256) >> 8;
            place &= ~(place < 0);
            place += (place > last) & (last - place);
            place >>= static_cast<int32_t>(shift);
            place += (place > lastOfPlane) & (lastOfPlane - place);
            Store(places + ray * stride, place);
        }
    }
};

struct Sums {
    U16 even, odd; // bytes
};

// A register of neighbouring samples, or less, and where their rays go.
template <size_t Bytes>
struct Block {
    static constexpr size_t kSamples = kLanes / Bytes;
#if AVEFFECT_LANE_BYTES > 16
    static constexpr uint32_t kGroup = Bytes == 4 ? kSamples : kPickGroup;
#else
    static constexpr uint32_t kGroup = kSamples; // nothing is picked
#endif
    static constexpr size_t kGroups = kSamples / kGroup;

    alignas(64) uint32_t columns[kRays][kSamples]; // of dense pixels, less their origins
    uint8_t picks[kRays][Bytes == 1 ? kLanes : 1]; // of dense samples, their columns less the origins
    uint32_t origins[kRays][kGroups];              // of dense blocks, in bytes
    size_t first, count;
    bool dense; // each group comes from one that is no wider

    AVEFFECT_INLINE void Prepare(const Axis& axis, size_t from, size_t samples, size_t phase) {
        first = from;
        count = samples;
        for (size_t i = 0; i < kSamples; i += kLanes / 4)
            axis.FindPlaces(static_cast<uint32_t>(((first + i) << axis.shift) + phase),
                            uint32_t{1} << axis.shift, columns[0] + i, kSamples);
#if AVEFFECT_LANE_BYTES > 16
        dense = count == kSamples && axis.size >= kGroup && FindOrigins(static_cast<uint32_t>(axis.size));
        if (dense) FindPicks();
#else
        dense = false;
#endif
    }

    AVEFFECT_INLINE bool FindOrigins(uint32_t size) {
        bool fits = true;
        for (size_t ray = 0; ray < kRays; ++ray)
            for (size_t group = 0; group < kGroups; ++group) {
                const uint32_t* const places = columns[ray] + group * kGroup;
                uint32_t least = places[0], most = places[0];
                for (size_t i = 1; i < kGroup; ++i) {
                    least = places[i] < least ? places[i] : least;
                    most = places[i] > most ? places[i] : most;
                }
                if (least > size - kGroup) least = size - kGroup;
                origins[ray][group] = least * Bytes;
                fits = fits && most - least < kGroup;
            }
        return fits;
    }

    AVEFFECT_INLINE void FindPicks() {
        for (size_t ray = 0; ray < kRays; ++ray)
            for (size_t i = 0; i < kSamples; ++i) {
                const uint32_t pick = columns[ray][i] - origins[ray][i / kGroup] / Bytes;
                if constexpr (Bytes == 4)
                    columns[ray][i] = pick;
                else
                    picks[ray][i] = static_cast<uint8_t>(pick);
            }
    }

    // The samples of all rays, each ray's from its row.
    AVEFFECT_INLINE Sums Sum(const uint8_t* const* rows) const {
#if AVEFFECT_LANE_BYTES > 16
        if (dense) {
            U16 both{}, odd{}; // in 16 bits that wrap, even + 256 * odd
            AVEFFECT_UNROLL
            for (size_t ray = 0; ray < kRays; ++ray) {
                const U16 samples = (U16)Pick(rows[ray], ray);
                both += samples;
                odd += samples >> 8;
            }
            return {both - (odd << 8), odd};
        }
#endif
        return SumOneByOne(rows);
    }

#if AVEFFECT_LANE_BYTES > 16
    AVEFFECT_INLINE U8 Pick(const uint8_t* row, size_t ray) const {
        if constexpr (Bytes == 4)
            return PickPixels(Load<U8>(row + origins[ray][0]), Load<U32>(columns[ray]));
        else
            return PickFromGroups(row, origins[ray], Load<U8>(picks[ray]));
    }
#endif

    AVEFFECT_INLINE Sums SumOneByOne(const uint8_t* const* rows) const {
        constexpr uint32_t kEvenBytes = Bytes == 4 ? 0x00FF00FF : 0xFF;
        uint32_t even[kLanes / 4] = {}, odd[kLanes / 4] = {};
        for (size_t i = 0; i < count; ++i)
            for (size_t ray = 0; ray < kRays; ++ray) {
                uint32_t sample = 0;
                std::memcpy(&sample, rows[ray] + columns[ray][i] * Bytes, Bytes);
                if constexpr (Bytes == 4) {
                    even[i] += sample & kEvenBytes;
                    odd[i] += (sample >> 8) & kEvenBytes;
                } else {
                    uint32_t* const sums = i & 1 ? odd : even;
                    sums[i / 4] += sample << (i & 2) * 8;
                }
            }
        return {Load<U16>(even), Load<U16>(odd)};
    }

    AVEFFECT_INLINE U8 LoadFrom(const uint8_t* row) const {
        if (count == kSamples) return Load<U8>(row + first * Bytes);
        U8 samples{};
        std::memcpy(&samples, row + first * Bytes, count * Bytes);
        return samples;
    }
    AVEFFECT_INLINE void StoreTo(uint8_t* row, U8 samples) const {
        if (count == kSamples)
            Store(row + first * Bytes, samples);
        else
            std::memcpy(row + first * Bytes, &samples, count * Bytes);
    }
};

// Where the rays of each row of the picture go, and the blocks of a plane.
template <size_t Bytes>
struct RaysOfPlane {
    static_assert(sizeof(Block<Bytes>) <= 128 * Block<Bytes>::kSamples, "or they outgrow their scratch");
    // Blocks that are done row by row together: what they need stays near.
    static constexpr size_t kStrip = 16;

    Plane8 copy;
    size_t rowStride;
    uint32_t* rows;
    Block<Bytes>* blocks;
    size_t blockCount = 0;

    AVEFFECT_INLINE RaysOfPlane(Plane8 plane, const Axis& vertical, uint8_t* scratch)
        : copy(plane)
        , rowStride((vertical.pictureSize + kLanes / 4 - 1) / (kLanes / 4) * (kLanes / 4))
        , rows(reinterpret_cast<uint32_t*>(scratch))
        , blocks(reinterpret_cast<Block<Bytes>*>(scratch + kRays * rowStride * sizeof *rows)) {
        for (size_t y = 0; y < rowStride; y += kLanes / 4)
            vertical.FindPlaces(static_cast<uint32_t>(y), 1, rows + y, rowStride);
    }

    // Of samples begin to end, for each of the picture's columns that belong to one.
    AVEFFECT_INLINE void AddBlocks(const Axis& axis, size_t begin, size_t end, size_t phases) {
        constexpr size_t kSamples = Block<Bytes>::kSamples;
        for (size_t x = begin; x < end; x += kSamples) {
            // The last one overlaps its neighbour.
            const size_t first = x + kSamples <= end ? x : end - begin < kSamples ? begin : end - kSamples;
            const size_t count = end - first < kSamples ? end - first : kSamples;
            for (size_t phase = 0; phase < phases; ++phase)
                blocks[blockCount++].Prepare(axis, first, count, phase);
        }
    }

    AVEFFECT_INLINE void RowsOf(size_t y, const uint8_t** of) const {
        for (size_t ray = 0; ray < kRays; ++ray) of[ray] = copy.Row(rows[ray * rowStride + y]);
    }

    // Every block's row becomes tone(sums of it and its rays); A of pixels stays.
    template <class Tone>
    AVEFFECT_INLINE void Apply(Plane8 plane, const Tone& tone) const {
        const uint8_t* from[kRays];
        for (size_t strip = 0; strip < blockCount; strip += kStrip)
            for (size_t y = 0; y < plane.rows; ++y) {
                RowsOf(y, from);
                for (size_t i = strip; i < strip + kStrip && i < blockCount; ++i) {
                    const U8 own = blocks[i].LoadFrom(copy.Row(y));
                    const Sums sums = blocks[i].Sum(from);
                    const U8 toned = tone(sums.even + Even(own), sums.odd + Odd(own));
                    blocks[i].StoreTo(plane.Row(y), Bytes == 4 ? Select(AlphaMask(), own, toned) : toned);
                }
            }
    }
};

// min((sum >> 4) + addend, 255), the low 8 bits.
struct PlainTone {
    I16 addend;

    AVEFFECT_INLINE explicit PlainTone(int32_t level) {
        int32_t added = level >> 3;
        // More is white, and far enough below 0 the low bits count alone.
        if (added > 255) added = 255;
        if (added < -512) added = (added & 255) - 768;
        addend = SplatI16(static_cast<int16_t>(added));
    }
    AVEFFECT_INLINE U16 Lanes(U16 sum) const {
        return (U16)Min((I16)(sum >> 4) + addend, SplatI16(255)) & 0xFF;
    }
    AVEFFECT_INLINE U8 operator()(U16 even, U16 odd) const { return Join(Lanes(even), Lanes(odd)); }
};

struct MmxTone {
    U8 addend;

    AVEFFECT_INLINE explicit MmxTone(int32_t level)
        : addend(Splat8(TruncToByte(level >> 3))) {}
    AVEFFECT_INLINE U8 operator()(U16 even, U16 odd) const {
        return AddSaturated(Join(LimitToByte(even >> 4), LimitToByte(odd >> 4)), addend);
    }
};

template <size_t Bytes, class Tone>
AVEFFECT_INLINE void RadiatePlane(Plane8 plane, Plane8 copy, const Rays& rays, uint8_t* scratch,
                                  const Tone& tone) {
    if (plane.Empty()) return;
    const size_t width = plane.width / Bytes;
    RaysOfPlane<Bytes> whole(copy, {rays.y, rays.level, plane.rows, 0, plane.rows}, scratch);
    whole.AddBlocks({rays.x, rays.level, width, 0, width}, 0, width, 1);
    whole.Apply(plane, tone);
}

void RadiateRgba32(Plane32 plane, Plane32 copy, const Rays& rays, uint8_t* scratch) noexcept {
    RadiatePlane<4>(plane.Bytes(), copy.Bytes(), rays, scratch, PlainTone(rays.level));
}
void RadiateRgba32Mmx(Plane32 plane, Plane32 copy, const Rays& rays, uint8_t* scratch) noexcept {
    RadiatePlane<4>(plane.Bytes(), copy.Bytes(), rays, scratch, MmxTone(rays.level));
}
void RadiateLuma(Plane8 plane, Plane8 copy, const Rays& rays, uint8_t* scratch) noexcept {
    RadiatePlane<1>(plane, copy, rays, scratch, PlainTone(rays.level));
}

// A block for each column of the picture that belongs to a sample; of all rows that belong to it.
AVEFFECT_INLINE void RadiateChromaBlocks(const RaysOfPlane<1>& whole, Plane8 plane, const LumaShape& luma,
                                         size_t begin, size_t end, size_t phases) {
    const uint8_t* from[4][kRays];
    for (size_t y = 0; y < plane.rows && y << luma.verticalShift < luma.rows; ++y) {
        size_t lumaRows = 0;
        for (size_t lumaY = y << luma.verticalShift; lumaY < (y + 1) << luma.verticalShift; ++lumaY)
            if (lumaY < luma.rows) whole.RowsOf(lumaY, from[lumaRows++]);
        for (size_t i = begin; i < end; i += phases) {
            // From the copy, which still has the samples that the block before has written too.
            const U8 own = whole.blocks[i].LoadFrom(whole.copy.Row(y));
            U16 even = Even(own), odd = Odd(own);
            for (size_t row = 0; row < lumaRows; ++row)
                for (size_t phase = 0; phase < phases; ++phase) {
                    const Sums sums = whole.blocks[i + phase].Sum(from[row]);
                    even = LimitToByte((even + sums.even) >> 4);
                    odd = LimitToByte((odd + sums.odd) >> 4);
                }
            whole.blocks[i].StoreTo(plane.Row(y), Join(even, odd));
        }
    }
}

void RadiateChroma(Plane8 plane, Plane8 copy, const Rays& rays, const LumaShape& luma,
                   uint8_t* scratch) noexcept {
    if (plane.Empty()) return;
    const Axis horizontal = {rays.x, rays.level, luma.width, luma.horizontalShift, plane.width};
    RaysOfPlane<1> whole(copy, {rays.y, rays.level, luma.rows, luma.verticalShift, plane.rows}, scratch);
    const size_t columns = size_t{1} << luma.horizontalShift; // of the picture, that belong to a sample
    size_t full = luma.width / columns;
    if (full > plane.width) full = plane.width;
    whole.AddBlocks(horizontal, 0, full, columns);
    for (size_t i = 0; i < whole.blockCount; i += whole.kStrip) {
        const size_t end = i + whole.kStrip < whole.blockCount ? i + whole.kStrip : whole.blockCount;
        RadiateChromaBlocks(whole, plane, luma, i, end, columns);
    }
    const size_t left = luma.width - full * columns;
    if (full == plane.width || left == 0) return;
    whole.blockCount = 0;
    whole.AddBlocks(horizontal, full, full + 1, left);
    RadiateChromaBlocks(whole, plane, luma, 0, left, left);
}

constexpr RadiateKernels kKernels = {RadiateRgba32, RadiateRgba32Mmx, RadiateLuma, RadiateChroma};
