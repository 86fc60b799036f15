// Rows whose samples come from given columns of other rows, for one level. A group of samples that comes from
// a window, as in a picture that is enlarged or little shrunk, is picked within registers; others go one by
// one.
template <size_t Bytes>
struct RowPicker {
#if AVEFFECT_LANE_BYTES > 16
    static constexpr size_t kGroup = Bytes == 4 ? kLanes / 4 : kPickGroup;
    static constexpr size_t kWindow = kGroup * (kGroup * Bytes == 64 ? 2 : 1); // one register, or two
#else
    static constexpr size_t kGroup = 0, kWindow = 0; // there is no picking
#endif
    size_t width;      // samples that are made
    size_t limit;      // samples of the rows that they come from
    uint32_t* columns; // where each comes from, below limit; to be filled, then Prepare
    uint8_t* picks;    // of bytes: their places within the window they come from
    uint8_t* dense;    // of groups: whether they come from a window
    bool inGroups;     // whether any do
    bool allDense;     // whether all do

    AVEFFECT_INLINE RowPicker(size_t samples, size_t fromSamples, uint8_t* scratch)
        : width(samples)
        , limit(fromSamples)
        , columns(reinterpret_cast<uint32_t*>(scratch))
        , picks(scratch + 4 * samples)
        , dense(picks + samples + 64)
        , inGroups(kGroup != 0 && samples >= kGroup && fromSamples >= kWindow)
        , allDense(inGroups) {}

    // The last group of a row overlaps the one before it.
    AVEFFECT_INLINE size_t First(size_t x) const { return x + kGroup <= width ? x : width - kGroup; }
    AVEFFECT_INLINE size_t Origin(size_t first) const {
        return columns[first] + kWindow <= limit ? columns[first] : limit - kWindow;
    }

    AVEFFECT_INLINE void Prepare() {
#if AVEFFECT_LANE_BYTES > 16
        if (!inGroups) return;
        for (size_t x = 0; x < width; x += kGroup) {
            const size_t first = First(x), origin = Origin(first);
            bool fits = true;
            for (size_t i = 0; i < kGroup; ++i) {
                const size_t place = columns[first + i] - origin;
                fits = fits && place < kWindow;
                if (Bytes == 1) picks[x + i] = static_cast<uint8_t>(place);
            }
            dense[x / kGroup] = fits;
            allDense = allDense && fits;
        }
#endif
    }

    AVEFFECT_INLINE void PickOneByOne(uint8_t* to, const uint8_t* from, size_t x, size_t end) const {
        for (; x < end; ++x) std::memcpy(to + x * Bytes, from + columns[x] * Bytes, Bytes);
    }

    // Makes a row, and asks for the one that begins at soon.
    AVEFFECT_INLINE void Pick(uint8_t* to, const uint8_t* from, [[maybe_unused]] const uint8_t* soon) const {
        if (!inGroups) {
            PickOneByOne(to, from, 0, width);
            return;
        }
#if AVEFFECT_LANE_BYTES > 16
        if (allDense)
            for (size_t x = 0; x < width; x += kGroup) PickGroup(to, from, soon, x);
        else
            for (size_t x = 0; x < width; x += kGroup)
                if (dense[x / kGroup])
                    PickGroup(to, from, soon, x);
                else
                    PickOneByOne(to, from, First(x), First(x) + kGroup);
#endif
    }

#if AVEFFECT_LANE_BYTES > 16
    AVEFFECT_INLINE void PickGroup(uint8_t* to, const uint8_t* from, const uint8_t* soon, size_t x) const {
        const size_t first = First(x), origin = Origin(first);
        if (Bytes == 4 || x % 64 == 0) Prefetch(soon + origin * Bytes);
        const uint8_t* const window = from + origin * Bytes;
        if constexpr (Bytes == 4)
            Store(to + first * 4,
                  PickPixelsOf(window, Load<U32>(columns + first) - static_cast<uint32_t>(origin)));
        else
            PickBytesOf(to + first, window, picks + x);
    }

    AVEFFECT_INLINE static U8 PickPixelsOf(const uint8_t* window, U32 indices) {
#if AVEFFECT_LANE_BYTES == 64
        return (U8)_mm512_permutex2var_epi32((__m512i)Load<U8>(window), (__m512i)indices,
                                             (__m512i)Load<U8>(window + kLanes));
#else
        return PickPixels(Load<U8>(window), indices);
#endif
    }
    AVEFFECT_INLINE static void PickBytesOf(uint8_t* to, const uint8_t* window, const uint8_t* indices) {
#ifdef AVEFFECT_HAS_TABLES
        Store(to, (U8)_mm512_permutex2var_epi8((__m512i)Load<U8>(window), (__m512i)Load<U8>(indices),
                                               (__m512i)Load<U8>(window + kLanes)));
#else
        Pick16Bytes(to, window, indices);
#endif
    }
#endif
};
