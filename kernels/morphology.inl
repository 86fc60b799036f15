// Bodies of the morphology kernels, for one level. A block's extreme is that of three extremes across, one
// for each of its rows. Rows are walked towards the far side of the blocks, each written once the row two
// further on has been read: the plane needs no copy, only the extremes across of the two rows before.

// Alpha of what is compared with a pixel is made to lose, so that the pixel's own stays.
struct Largest {
    static constexpr bool kUpwards = true; // blocks reach up and to the left
    AVEFFECT_INLINE static U8 Of(U8 a, U8 b) { return Max(a, b); }
    AVEFFECT_INLINE static U8 WithoutAlpha(U8 pixels) { return pixels & ~AlphaMask(); }
};
struct Smallest {
    static constexpr bool kUpwards = false;
    AVEFFECT_INLINE static U8 Of(U8 a, U8 b) { return Min(a, b); }
    AVEFFECT_INLINE static U8 WithoutAlpha(U8 pixels) { return pixels | AlphaMask(); }
};

// The written part of a row as registers: one after another, and a last one that ends where it ends and so
// overlaps its neighbour, or a single one for what is narrower. Each keeps extremes of its own.
template <class Extreme, size_t Step, bool Narrow>
struct BlockRow {
    size_t width; // bytes that are written
    size_t count; // registers before the last

    AVEFFECT_INLINE explicit BlockRow(size_t writtenBytes)
        : width(writtenBytes)
        , count((writtenBytes - 1) / kLanes) {}

    AVEFFECT_INLINE U8 Get(const uint8_t* from) const {
        if constexpr (!Narrow) return Load<U8>(from);
        U8 part{};
        std::memcpy(&part, from, width);
        return part;
    }
    AVEFFECT_INLINE void Put(uint8_t* to, U8 value) const {
        std::memcpy(to, &value, Narrow ? width : kLanes);
    }
    AVEFFECT_INLINE size_t Last() const { return Narrow ? 0 : width - kLanes; }

    AVEFFECT_INLINE U8 Across(const uint8_t* from) const {
        const U8 extreme = Extreme::Of(Extreme::Of(Get(from), Get(from + Step)), Get(from + 2 * Step));
        return Step == 4 ? Extreme::WithoutAlpha(extreme) : extreme;
    }
    AVEFFECT_INLINE void Keep(const uint8_t* from, uint8_t* kept) const {
        for (size_t i = 0; i < count; ++i) Store(kept + i * kLanes, Across(from + i * kLanes));
        Store(kept + count * kLanes, Across(from + Last()));
    }

    // The pixel is one of its block, so comparing with it once more brings in nothing but alpha.
    AVEFFECT_INLINE void Advance(uint8_t* to, const uint8_t* from, uint8_t* older,
                                 const uint8_t* newer) const {
        const U8 across = Across(from);
        const U8 block = Extreme::Of(Extreme::Of(Load<U8>(older), Load<U8>(newer)), across);
        Store(older, across);
        Put(to, Step == 4 ? Extreme::Of(block, Get(to)) : block);
    }
    AVEFFECT_INLINE void Filter(uint8_t* to, const uint8_t* from, ptrdiff_t ahead, uint8_t* older,
                                const uint8_t* newer) const {
        for (size_t i = 0; i < count; ++i) {
            const size_t x = i * kLanes;
            Prefetch(from + x + ahead);
            Advance(to + x, from + x, older + x, newer + x);
        }
        Advance(to + Last(), from + Last(), older + count * kLanes, newer + count * kLanes);
    }
};

// Row y, counted in the direction of the walk.
template <class Extreme>
AVEFFECT_INLINE uint8_t* WalkedRow(Plane8 plane, size_t y) {
    return plane.Row(Extreme::kUpwards ? plane.rows - 1 - y : y);
}

template <class Extreme, size_t Step, bool Narrow>
AVEFFECT_INLINE void FilterRows(Plane8 plane, uint8_t* scratch) {
    const BlockRow<Extreme, Step, Narrow> row(plane.width - 2 * Step);
    const auto pitch = static_cast<ptrdiff_t>(plane.pitch);
    uint8_t* older = scratch;
    uint8_t* newer = scratch + (row.count + 1) * kLanes;
    row.Keep(WalkedRow<Extreme>(plane, 0), older);
    row.Keep(WalkedRow<Extreme>(plane, 1), newer);
    for (size_t y = 2; y < plane.rows; ++y) {
        uint8_t* const to = WalkedRow<Extreme>(plane, y - 2) + (Extreme::kUpwards ? 2 * Step : 0);
        row.Filter(to, WalkedRow<Extreme>(plane, y), Extreme::kUpwards ? -pitch : pitch, older, newer);
        uint8_t* const filled = older;
        older = newer;
        newer = filled;
    }
}

template <class Extreme, size_t Step>
AVEFFECT_INLINE void FilterPlane(Plane8 plane, uint8_t* scratch) {
    if (plane.width < 3 * Step || plane.rows < 3) return;
    if (plane.width < kLanes + 2 * Step)
        FilterRows<Extreme, Step, true>(plane, scratch);
    else
        FilterRows<Extreme, Step, false>(plane, scratch);
}

void DilateComponent(Plane8 plane, uint8_t* scratch) noexcept { FilterPlane<Largest, 1>(plane, scratch); }
void DilateRgba32(Plane32 plane, uint8_t* scratch) noexcept {
    FilterPlane<Largest, 4>(plane.Bytes(), scratch);
}
void ErodeComponent(Plane8 plane, uint8_t* scratch) noexcept { FilterPlane<Smallest, 1>(plane, scratch); }
void ErodeRgba32(Plane32 plane, uint8_t* scratch) noexcept {
    FilterPlane<Smallest, 4>(plane.Bytes(), scratch);
}

constexpr MorphologyKernels kKernels = {DilateComponent, DilateRgba32, ErodeComponent, ErodeRgba32};
