// Takes the channels of pixels apart into rows of bytes, and joins them again. Pack and Interleave work
// within each 128 bits, in groups of four bytes; the order of the groups is put right once, where it matters.

#if AVEFFECT_LANE_BYTES == 64
constexpr uint32_t kPackedGroups[16] = {0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15};
constexpr uint32_t kGroupsToInterleave[16] = {0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15};
#elif AVEFFECT_LANE_BYTES == 32
constexpr uint32_t kPackedGroups[8] = {0, 4, 1, 5, 2, 6, 3, 7};
constexpr uint32_t kGroupsToInterleave[8] = {0, 2, 4, 6, 1, 3, 5, 7};
#endif

// A channel of TakeApart, its bytes in the order of the pixels.
AVEFFECT_INLINE U8 InOrder(U8 packed) {
#if AVEFFECT_LANE_BYTES > 16
    return PickPixels(packed, Load<U32>(kPackedGroups));
#else
    return packed;
#endif
}

// Bytes in order, so that interleaving twice gives whole registers in order.
AVEFFECT_INLINE U8 ToInterleave(U8 bytes) {
#if AVEFFECT_LANE_BYTES > 16
    return PickPixels(bytes, Load<U32>(kGroupsToInterleave));
#else
    return bytes;
#endif
}

struct Channels {
    U8 b, g, r, a;
};

AVEFFECT_INLINE U8 PackEven(U8 low, U8 high) { return Pack((I16)Even(low), (I16)Even(high)); }
AVEFFECT_INLINE U8 PackOdd(U8 low, U8 high) { return Pack((I16)Odd(low), (I16)Odd(high)); }

// Four registers of pixels.
AVEFFECT_INLINE Channels TakeApart(const uint8_t* pixels) {
    const U8 p0 = Load<U8>(pixels), p1 = Load<U8>(pixels + kLanes);
    const U8 p2 = Load<U8>(pixels + 2 * kLanes), p3 = Load<U8>(pixels + 3 * kLanes);
    const U8 br01 = PackEven(p0, p1), br23 = PackEven(p2, p3);
    const U8 ga01 = PackOdd(p0, p1), ga23 = PackOdd(p2, p3);
    return {PackEven(br01, br23), PackEven(ga01, ga23), PackOdd(br01, br23), PackOdd(ga01, ga23)};
}

// Four registers of pixels from bytes in order.
AVEFFECT_INLINE void StoreJoined(uint8_t* pixels, U8 b, U8 g, U8 r, U8 a) {
    const U8 bs = ToInterleave(b), gs = ToInterleave(g), rs = ToInterleave(r), as = ToInterleave(a);
    const U16 bgLow = (U16)InterleaveLow(bs, gs), bgHigh = (U16)InterleaveHigh(bs, gs);
    const U16 raLow = (U16)InterleaveLow(rs, as), raHigh = (U16)InterleaveHigh(rs, as);
    Store(pixels, InterleaveLow(bgLow, raLow));
    Store(pixels + kLanes, InterleaveHigh(bgLow, raLow));
    Store(pixels + 2 * kLanes, InterleaveLow(bgHigh, raHigh));
    Store(pixels + 3 * kLanes, InterleaveHigh(bgHigh, raHigh));
}

// Pixels of three bytes from pixels of four, and back; the fourth byte is then anything; swapped with
// the first and third one exchanged. Within each 128 bits bytes are picked, between them groups of four.
AVEFFECT_INLINE void DropFourth(uint8_t* to, const uint8_t* from, size_t count) {
    size_t x = 0;
#if AVEFFECT_LANE_BYTES > 16
    constexpr uint8_t kThree[16] = {0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 0, 0, 0, 0};
    constexpr uint32_t kGroups[16] = {0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14};
    const U8 three = InEach128Bits(kThree);
    for (; x * 3 + kLanes <= count * 3; x += kLanes / 4) // the last quarter is overwritten
        Store(to + x * 3, PickPixels(PickBytes(Load<U8>(from + x * 4), three), Load<U32>(kGroups)));
#endif
    for (; x < count; ++x) std::memcpy(to + x * 3, from + x * 4, 3);
}
template <bool Swapped>
AVEFFECT_INLINE void AddFourth(uint8_t* to, const uint8_t* from, size_t count) {
    size_t x = 0;
    constexpr uint8_t kFirst = Swapped ? 2 : 0, kLast = 2 - kFirst;
#if AVEFFECT_LANE_BYTES > 16
    constexpr uint8_t kFour[16] = {kFirst,     1, kLast,     0, kFirst + 3, 4,  kLast + 3, 0,
                                   kFirst + 6, 7, kLast + 6, 0, kFirst + 9, 10, kLast + 9, 0};
    constexpr uint32_t kGroups[16] = {0, 1, 2, 0, 3, 4, 5, 0, 6, 7, 8, 0, 9, 10, 11, 0};
    const U8 four = InEach128Bits(kFour);
    for (; x * 3 + kLanes <= count * 3; x += kLanes / 4)
        Store(to + x * 4, PickBytes(PickPixels(Load<U8>(from + x * 3), Load<U32>(kGroups)), four));
#endif
    for (; x < count; ++x) {
        to[x * 4] = from[x * 3 + kFirst];
        to[x * 4 + 1] = from[x * 3 + 1];
        to[x * 4 + 2] = from[x * 3 + kLast];
    }
}
