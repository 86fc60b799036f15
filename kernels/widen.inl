// Bodies of the widening kernels, for one level.
#include "kernels/yuv_colours.inl"

constexpr size_t kColourPadding = 64;
constexpr size_t kPicksBefore = 8; // columns

// Rows of one colour each, in 64ths.
struct ColourRows {
    int16_t *b, *g, *r;

    AVEFFECT_INLINE ColourRows(int16_t* scratch, size_t width)
        : b(scratch + kColourPadding)
        , g(b + Pitch(width))
        , r(g + Pitch(width)) {}
    AVEFFECT_INLINE static size_t Pitch(size_t width) { return (width + 63) / 64 * 64 + 2 * kColourPadding; }
    AVEFFECT_INLINE void Repeat(size_t width) const {
        RepeatEnds(b, width);
        RepeatEnds(g, width);
        RepeatEnds(r, width);
    }
};

// Fills them from pixels.
struct PixelSplitter {
    const ColourRows& rows;
    bool swapped;

    AVEFFECT_INLINE static I16 Colour(const U32* pixels, int shift) {
        return PackPairsInOrder((I32)((pixels[0] >> shift) & 0xFF), (I32)((pixels[1] >> shift) & 0xFF)) << 6;
    }
    AVEFFECT_INLINE void Split(const uint8_t* from, size_t x) const {
        const U32 pixels[2] = {Load<U32>(from), Load<U32>(from + kLanes)};
        Store(rows.b + x, Colour(pixels, swapped ? 16 : 0));
        Store(rows.g + x, Colour(pixels, 8));
        Store(rows.r + x, Colour(pixels, swapped ? 0 : 16));
    }
    // Asks for the pixels at soon.
    AVEFFECT_INLINE void operator()(const uint8_t* pixels, size_t width, const uint8_t* soon) const {
        size_t x = 0;
        for (; x + kHalf <= width; x += kHalf) {
            AVEFFECT_UNROLL
            for (size_t i = 0; i < 2 * kLanes; i += 64) Prefetch(soon + x * 4 + i);
            Split(pixels + x * 4, x);
        }
        if (x < width) {
            uint8_t some[2 * kLanes] = {};
            std::memcpy(some, pixels + x * 4, (width - x) * 4);
            Split(some, x);
        }
        rows.Repeat(width);
    }
};

// Fills them from planes.
struct PlaneJoiner {
    const ColourRows& rows;
    size_t width;
    const ColourMix& mix;

    template <class Chroma>
    AVEFFECT_INLINE void operator()(const uint8_t* luma, const Chroma& chroma) const {
        for (size_t x = 0; x < width; x += kLanes) {
            const size_t count = width - x;
            const U8 samples = LoadSome(luma + x, count);
            const ChromaLanes c = chroma.At(x, count);
            const ColourLanes even(EvenTimes256(samples), c.evenU, c.evenV, mix);
            const ColourLanes odd(OddTimes256(samples), c.oddU, c.oddV, mix);
            StoreInTurns(rows.b + x, even.b, odd.b);
            StoreInTurns(rows.g + x, even.g, odd.g);
            StoreInTurns(rows.r + x, even.r, odd.r);
        }
        rows.Repeat(width);
    }
};

// Makes a wide row of them.
struct RowWidener {
    const Widening& widening;
    uint32_t* origins; // of groups of columns, in bytes
    uint8_t* picks;    // of the bytes of columns within their group's
    uint8_t* pixels;   // a wide row

    AVEFFECT_INLINE static size_t Columns(size_t width) { return (width + 63) / 64 * 64; }
    AVEFFECT_INLINE RowWidener(const Widening& by, uint8_t* scratch)
        : widening(by)
        , origins(reinterpret_cast<uint32_t*>(scratch))
        , picks(scratch + Columns(by.width))
        , pixels(picks + 2 * Columns(by.width)) {
#if AVEFFECT_LANE_BYTES > 16
        constexpr size_t kGroup = kPickGroup / 2;
        for (size_t x = 0; x < Columns(by.width); ++x) {
            const int32_t base = by.first[x / kGroup * kGroup];
            origins[x / kGroup] = 2 * static_cast<uint32_t>(base + static_cast<int32_t>(kPicksBefore));
            picks[2 * x] = static_cast<uint8_t>(2 * (by.first[x] - base));
            picks[2 * x + 1] = static_cast<uint8_t>(2 * (by.first[x] - base) + 1);
        }
#endif
    }
    AVEFFECT_INLINE I16 Pick(const int16_t* row, size_t x, size_t tap) const {
#if AVEFFECT_LANE_BYTES > 16
        return (I16)PickFromGroups(reinterpret_cast<const uint8_t*>(row + tap - kPicksBefore),
                                   origins + 2 * x / kPickGroup, Load<U8>(picks + 2 * x));
#else
        int16_t picked[kHalf];
        for (size_t i = 0; i < kHalf; ++i) picked[i] = row[widening.first[x + i] + static_cast<int32_t>(tap)];
        return Load<I16>(picked);
#endif
    }
    // Products are 32nds, and cut.
    AVEFFECT_INLINE I16 Sum(const int16_t* row, size_t x) const {
        I16 sum = SplatI16(16 + 2);
        AVEFFECT_UNROLL
        for (size_t i = 0; i < 4; ++i)
            sum = sum + MultiplyHigh(Pick(row, x, i), Load<I16>(widening.taps[i] + x));
        return sum >> 5;
    }
    AVEFFECT_INLINE U8 At(const int16_t* row, size_t x) const {
        return PackInOrder(Sum(row, x), Sum(row, x + kHalf));
    }
    AVEFFECT_INLINE void Write(uint8_t* to, const ColourRows& rows) const {
        for (size_t x = 0; x < widening.width; x += kLanes)
            StoreJoined(pixels + 4 * x, At(rows.r, x), At(rows.g, x), At(rows.b, x), U8{});
        DropFourth(to, pixels, widening.width);
    }
};

void WidenPixels(Plane8 rgb24, Plane32 pixels, const Widening& widening, bool swapped,
                 uint8_t* scratch) noexcept {
    if (rgb24.Empty()) return;
    const ColourRows rows(reinterpret_cast<int16_t*>(scratch), pixels.width);
    const RowWidener widener(widening, scratch + 6 * ColourRows::Pitch(pixels.width));
    const PixelSplitter split{rows, swapped};
    for (size_t y = 0; y < rgb24.rows; ++y) {
        split(pixels.Row(y), pixels.width,
              pixels.Row(LimitedRow(static_cast<ptrdiff_t>(y + 1), pixels.rows)));
        widener.Write(rgb24.Row(y), rows);
    }
}

void WidenPlanes(Plane8 rgb24, const YuvaPlanes& planes, const PixelRule& rule, const Widening& widening,
                 uint8_t* scratch) noexcept {
    if (rgb24.Empty()) return;
    const size_t width = planes.y.width;
    const ColourRows rows(reinterpret_cast<int16_t*>(scratch), width);
    uint8_t* const behind = scratch + 6 * ColourRows::Pitch(width);
    const RowWidener widener(widening, behind);
    const ChromaRows chroma(planes, rule,
                            reinterpret_cast<int16_t*>(behind + 7 * RowWidener::Columns(widening.width)));
    const ColourMix mix(rule, 0);
    for (size_t y = 0; y < rgb24.rows; ++y) {
        chroma.Row(y, PlaneJoiner{rows, width, mix});
        widener.Write(rgb24.Row(y), rows);
    }
}

constexpr WidenKernels kKernels = {WidenPixels, WidenPlanes};
