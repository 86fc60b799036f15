// Bodies of the oil kernels, for one level.

#include "kernels/lanes/channels.inl"

// A mask with an element for each byte: bits where the registers have masks of their own.
#if AVEFFECT_LANE_BYTES == 64
typedef __mmask64 ByteMask;

AVEFFECT_INLINE ByteMask Equal(U8 a, U8 b) { return _mm512_cmpeq_epi8_mask((__m512i)a, (__m512i)b); }
AVEFFECT_INLINE ByteMask Greater(U8 a, U8 b) { return _mm512_cmpgt_epu8_mask((__m512i)a, (__m512i)b); }
AVEFFECT_INLINE U8 Replace(U8 x, ByteMask where, U8 by) {
    return (U8)_mm512_mask_mov_epi8((__m512i)x, where, (__m512i)by);
}
AVEFFECT_INLINE U8 LoadWhere(ByteMask where, const uint8_t* from) {
    return (U8)_mm512_maskz_loadu_epi8(where, from);
}
AVEFFECT_INLINE U8 Increment(U8 x, ByteMask where) {
    return (U8)_mm512_mask_add_epi8((__m512i)x, where, (__m512i)x, _mm512_set1_epi8(1));
}
AVEFFECT_INLINE U8 Decrement(U8 x, ByteMask where) {
    return (U8)_mm512_mask_sub_epi8((__m512i)x, where, (__m512i)x, _mm512_set1_epi8(1));
}
#else
typedef U8 ByteMask;

AVEFFECT_INLINE ByteMask Equal(U8 a, U8 b) { return (U8)(a == b); }
AVEFFECT_INLINE ByteMask Greater(U8 a, U8 b) { return (U8)(Max(a, b) != b); }
AVEFFECT_INLINE U8 Replace(U8 x, ByteMask where, U8 by) { return Select(where, by, x); }
AVEFFECT_INLINE U8 LoadWhere(ByteMask where, const uint8_t* from) { return where & Load<U8>(from); }
AVEFFECT_INLINE U8 Increment(U8 x, ByteMask where) { return x - where; }
AVEFFECT_INLINE U8 Decrement(U8 x, ByteMask where) { return x + where; }
#endif

// A row of the ring: bins, and three rows of samples at the resolution of the bins.
struct OilRow {
    const uint8_t* bins;
    const uint8_t* samples[3];
};

struct OilRing {
    uint8_t* rows;
    size_t pitch, slots;

    // The first sample or, of part 3, the first bin.
    AVEFFECT_INLINE uint8_t* At(size_t row, size_t part) const {
        return rows + ((row % slots) * 4 + part) * pitch + OilMemory::kBlock;
    }
};

constexpr size_t kOilBins = 3;

AVEFFECT_INLINE U8 BinsOf(U8 brightness, U16 levels) {
    return Join(MultiplyHigh(EvenTimes256(brightness), levels),
                MultiplyHigh(OddTimes256(brightness), levels));
}

// The bins of brightness, and beyond the row none.
AVEFFECT_INLINE void BinRow(uint8_t* bins, const uint8_t* brightness, size_t width, size_t pitch,
                            U16 levels) {
    std::memset(bins - OilMemory::kBlock, OilMemory::kNoBin, OilMemory::kBlock);
    for (size_t x = 0; x < width; x += kLanes) Store(bins + x, BinsOf(Load<U8>(brightness + x), levels));
    std::memset(bins + width, OilMemory::kNoBin, pitch - OilMemory::kBlock - width);
}

// A picture of pixels: where rows come from and go to.
struct OilPixels {
    static constexpr size_t kBrightness = 1;
    Plane32 plane;
    OilRing ring;

    AVEFFECT_INLINE size_t Width() const { return plane.width; }
    AVEFFECT_INLINE size_t Rows() const { return plane.rows; }
    AVEFFECT_INLINE size_t ChannelsOf(size_t) const { return 3; }
    AVEFFECT_INLINE void StoreSamples(size_t y, size_t x, const uint8_t* pixels) const {
        const Channels c = TakeApart(pixels);
        Store(ring.At(y, 0) + x, InOrder(c.b));
        Store(ring.At(y, 1) + x, InOrder(c.g));
        Store(ring.At(y, 2) + x, InOrder(c.r));
    }
    AVEFFECT_INLINE void LoadRow(size_t y) {
        const uint8_t* const row = plane.Row(y);
        size_t x = 0;
        for (; x + kLanes <= plane.width; x += kLanes) StoreSamples(y, x, row + 4 * x);
        if (x == plane.width) return;
        uint8_t rest[4 * kLanes] = {};
        std::memcpy(rest, row + 4 * x, 4 * (plane.width - x));
        StoreSamples(y, x, rest);
    }
    AVEFFECT_INLINE OilRow RowAt(size_t y) const {
        return {ring.At(y, kOilBins), {ring.At(y, 0), ring.At(y, 1), ring.At(y, 2)}};
    }
    AVEFFECT_INLINE void Put(size_t y, size_t x, const U8 (&means)[3]) const {
        uint8_t* const row = plane.Row(y) + 4 * x;
        if (x + kLanes <= plane.width) {
            StoreJoined(row, means[0], means[1], means[2], U8{});
            return;
        }
        uint8_t pixels[4 * kLanes];
        StoreJoined(pixels, means[0], means[1], means[2], U8{});
        std::memcpy(row, pixels, 4 * (plane.width - x));
    }
    AVEFFECT_INLINE void FinishRow(size_t) const {}
};

// A planar picture. Rows of chroma stand in the ring under their own numbers, widened to luma's resolution;
// a row of it is written with the last luma row that it belongs to, when all of these have been read.
struct OilPlanes {
    static constexpr size_t kBrightness = 0;
    Plane8 y, chroma[2];
    unsigned horizontalShift, verticalShift;
    OilRing ring;
    uint8_t* found[2]; // chroma of the row in work, at luma's resolution
    size_t loaded[2];  // rows of chroma so far

    AVEFFECT_INLINE size_t Width() const { return y.width; }
    AVEFFECT_INLINE size_t Rows() const { return y.rows; }
    AVEFFECT_INLINE size_t ChannelsOf(size_t row) const {
        const size_t next = row + 1;
        return next == y.rows || next >> verticalShift != row >> verticalShift ? 3 : 1;
    }
    AVEFFECT_INLINE size_t ChromaRow(size_t row, size_t plane) const {
        const size_t wanted = row >> verticalShift, rows = chroma[plane].rows;
        return wanted < rows ? wanted : rows - 1;
    }
    AVEFFECT_INLINE void LoadChroma(size_t row, size_t plane) {
        const Plane8& from = chroma[plane];
        if (from.Empty() || ChromaRow(row, plane) < loaded[plane]) return;
        const size_t wanted = ((y.width - 1) >> horizontalShift) + 1;
        const size_t count = from.width < wanted ? from.width : wanted;
        uint8_t* const to = ring.At(loaded[plane], 1 + plane);
        uint8_t* const narrow = found[plane]; // free until the row is painted
        std::memcpy(horizontalShift == 1 ? narrow : to, from.Row(loaded[plane]), count);
        if (horizontalShift == 2) Double(narrow, to, 2 * count);
        if (horizontalShift != 0) Double(to, narrow, y.width);
        for (size_t x = count << horizontalShift; x < y.width; ++x) to[x] = to[x - 1];
        ++loaded[plane];
    }
    AVEFFECT_INLINE void LoadRow(size_t row) {
        std::memcpy(ring.At(row, 0), y.Row(row), y.width);
        for (size_t plane = 0; plane < 2; ++plane) LoadChroma(row, plane);
    }
    AVEFFECT_INLINE const uint8_t* ChromaAt(size_t row, size_t plane) const {
        return chroma[plane].Empty() ? ring.At(row, 0) : ring.At(ChromaRow(row, plane), 1 + plane);
    }
    AVEFFECT_INLINE OilRow RowAt(size_t row) const {
        return {ring.At(row, kOilBins), {ring.At(row, 0), ChromaAt(row, 0), ChromaAt(row, 1)}};
    }
    AVEFFECT_INLINE void Put(size_t row, size_t x, const U8 (&means)[3]) const {
        uint8_t* const to = y.Row(row) + x;
        if (x + kLanes <= y.width)
            Store(to, means[0]);
        else
            std::memcpy(to, &means[0], y.width - x);
        for (size_t plane = 0; plane < 2; ++plane) Store(found[plane] + x, means[1 + plane]);
    }
    AVEFFECT_INLINE void FinishRow(size_t row) const {
        if (ChannelsOf(row) == 1) return;
        for (size_t plane = 0; plane < 2; ++plane) {
            const size_t chromaRow = row >> verticalShift;
            if (chroma[plane].width == 0 || chromaRow >= chroma[plane].rows) continue;
            uint8_t* const to = chroma[plane].Row(chromaRow);
            for (size_t x = 0; x < chroma[plane].width && x << horizontalShift < y.width; ++x) {
                const size_t last = ((x + 1) << horizontalShift) - 1;
                to[x] = found[plane][last < y.width ? last : y.width - 1];
            }
        }
    }
};

// Brings a row into the ring.
template <class Picture>
AVEFFECT_INLINE void ReadRow(Picture& picture, size_t row, uint32_t levels) {
    picture.LoadRow(row);
    const OilRing& ring = picture.ring;
    BinRow(ring.At(row, kOilBins), ring.At(row, Picture::kBrightness), picture.Width(), ring.pitch,
           Splat16(static_cast<uint16_t>(levels)));
}

#include "kernels/oil_small.inl"

#include "kernels/oil_wide.inl"

template <class Picture>
AVEFFECT_INLINE void Paint(Picture& picture, const OilMemory& memory, OilBrush brush, uint8_t* scratch) {
    if (memory.small && brush.radius == 3)
        SmallBrush<Picture, 3>{picture, memory, brush, scratch}.Paint();
    else if (memory.small)
        SmallBrush<Picture, 0>{picture, memory, brush, scratch}.Paint();
    else
        WideBrush<Picture>{picture, memory, brush, scratch}.Paint();
}

void OilRgba32(Plane32 plane, OilBrush brush, uint8_t* scratch) noexcept {
    if (plane.Empty()) return;
    const OilMemory memory(plane.width, plane.rows, brush);
    OilPixels picture{plane, {scratch, memory.pitch, memory.slots}};
    Paint(picture, memory, brush, scratch);
}

void OilComponent(Plane8 y, Plane8 u, Plane8 v, unsigned horizontalShift, unsigned verticalShift,
                  OilBrush brush, uint8_t* scratch) noexcept {
    if (y.Empty()) return;
    const OilMemory memory(y.width, y.rows, brush);
    OilPlanes picture{y,
                      {u, v},
                      horizontalShift,
                      verticalShift,
                      {scratch, memory.pitch, memory.slots},
                      {scratch + memory.found, scratch + memory.found + memory.pitch},
                      {0, 0}};
    Paint(picture, memory, brush, scratch);
}

constexpr OilKernels kKernels = {OilRgba32, OilComponent};
