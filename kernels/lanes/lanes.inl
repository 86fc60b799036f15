// The vector layer for one register width, AVEFFECT_LANE_BYTES. Arithmetic (+ - * & | ^ << >> and
// comparisons) is the compilers' own on these types and wraps; what they lack is here.

constexpr size_t kLanes = AVEFFECT_LANE_BYTES; // bytes of a register

#undef AVEFFECT_INLINE
#define AVEFFECT_INLINE [[gnu::always_inline]] inline

typedef uint8_t U8 __attribute__((vector_size(kLanes)));
typedef uint16_t U16 __attribute__((vector_size(kLanes)));
typedef int16_t I16 __attribute__((vector_size(kLanes)));
typedef uint32_t U32 __attribute__((vector_size(kLanes)));
typedef int32_t I32 __attribute__((vector_size(kLanes)));
typedef double F64 __attribute__((vector_size(kLanes)));
typedef float F32 __attribute__((vector_size(kLanes)));
typedef uint8_t HalfU8 __attribute__((vector_size(kLanes / 2)));
typedef uint16_t HalfU16 __attribute__((vector_size(kLanes / 2)));

// The instructions of a register, and those of 16 bytes at every level.
#undef AVEFFECT_OP
#undef AVEFFECT_OP16
#ifdef AVEFFECT_ONE_LEVEL
#include "kernels/lanes/plain.inl"
#ifdef AVEFFECT_NEON
#include "kernels/lanes/neon.inl"
#endif
#define AVEFFECT_OP(name) op_##name
#define AVEFFECT_OP16(name) op_##name
#else
typedef __m128i Register16;
#define AVEFFECT_OP16(name) _mm_##name
#if AVEFFECT_LANE_BYTES == 16
typedef __m128i Register;
#define AVEFFECT_OP(name) _mm_##name
#elif AVEFFECT_LANE_BYTES == 32
typedef __m256i Register;
#define AVEFFECT_OP(name) _mm256_##name
#else
typedef __m512i Register;
#define AVEFFECT_OP(name) _mm512_##name
#endif
#endif

template <class Vector>
AVEFFECT_INLINE Vector Load(const void* from) {
    Vector result;
    std::memcpy(&result, from, sizeof result);
    return result;
}

template <class Vector>
AVEFFECT_INLINE void Store(void* to, Vector value) {
    std::memcpy(to, &value, sizeof value);
}

// Asks for the cache line of an address, which may lie anywhere. The processor foresees a row by itself, but
// not the next one.
AVEFFECT_INLINE void Prefetch(const uint8_t* at) { __builtin_prefetch(at); }

AVEFFECT_INLINE U8 Splat8(uint8_t x) { return U8{} + x; }
AVEFFECT_INLINE U16 Splat16(uint16_t x) { return U16{} + x; }
AVEFFECT_INLINE I16 SplatI16(int16_t x) { return I16{} + x; }
AVEFFECT_INLINE U32 Splat32(uint32_t x) { return U32{} + x; }
AVEFFECT_INLINE F32 SplatF32(float x) { return F32{} + x; }

// Where the mask's bits are set a, elsewhere b.
AVEFFECT_INLINE U8 Select(U8 mask, U8 a, U8 b) { return (a & mask) | (b & ~mask); }

// Alpha's bits of a register of pixels.
AVEFFECT_INLINE U8 AlphaMask() { return (U8)Splat32(0xFF000000u); }

#undef AVEFFECT_BINARY
#define AVEFFECT_BINARY(Name, Type, operation)                                                               \
    AVEFFECT_INLINE Type Name(Type a, Type b) {                                                              \
        return (Type)AVEFFECT_OP(operation)((Register)a, (Register)b);                                       \
    }

AVEFFECT_BINARY(AddSaturated, U8, adds_epu8)
AVEFFECT_BINARY(SubSaturated, U8, subs_epu8)
AVEFFECT_BINARY(SubSaturated, U16, subs_epu16)
AVEFFECT_BINARY(AddSaturated, I16, adds_epi16)
AVEFFECT_BINARY(SubSaturated, I16, subs_epi16)
AVEFFECT_BINARY(Max, U8, max_epu8)
AVEFFECT_BINARY(Min, U8, min_epu8)
AVEFFECT_BINARY(Max, I16, max_epi16)
AVEFFECT_BINARY(Min, I16, min_epi16)
// The high halves of the products.
AVEFFECT_BINARY(MultiplyHigh, U16, mulhi_epu16)
AVEFFECT_BINARY(MultiplyHigh, I16, mulhi_epi16)

AVEFFECT_INLINE U32 Min(U32 a, U32 b) {
#if AVEFFECT_LANE_BYTES == 64
    return (U32)_mm512_maskz_min_epu32(0xFFFF, (Register)a, (Register)b);
#elif AVEFFECT_LANE_BYTES == 32
    return (U32)_mm256_min_epu32((Register)a, (Register)b);
#else
    const U32 less = (U32)(a < b);
    return (a & less) | (b & ~less);
#endif
}

// Sums of the products of neighbouring 16-bit numbers.
AVEFFECT_INLINE I32 MultiplyAddPairs(I16 a, I16 b) {
    return (I32)AVEFFECT_OP(madd_epi16)((Register)a, (Register)b);
}

AVEFFECT_INLINE F32 ToFloat(I32 x) { return __builtin_convertvector(x, F32); }
// Towards 0; what does not fit is undefined.
AVEFFECT_INLINE I32 Truncated(F32 x) { return __builtin_convertvector(x, I32); }
AVEFFECT_INLINE F32 SquareRoot(F32 x) {
#if AVEFFECT_LANE_BYTES == 64
    return (F32)_mm512_maskz_sqrt_ps(0xFFFF, (__m512)x);
#else
    return (F32)AVEFFECT_OP(sqrt_ps)(x);
#endif
}

// Bytes of a and b in turns, from the low or the high half of each 128 bits.
AVEFFECT_INLINE U8 InterleaveLow(U8 a, U8 b) {
    return (U8)AVEFFECT_OP(unpacklo_epi8)((Register)a, (Register)b);
}
AVEFFECT_INLINE U8 InterleaveHigh(U8 a, U8 b) {
    return (U8)AVEFFECT_OP(unpackhi_epi8)((Register)a, (Register)b);
}
// The same for 16-bit lanes.
AVEFFECT_BINARY(InterleaveLow, U16, unpacklo_epi16)
AVEFFECT_BINARY(InterleaveHigh, U16, unpackhi_epi16)
// Bytes widened to 16 bits. Low and high halves are those of each 128 bits, so the order is odd; Pack undoes
// it.
AVEFFECT_INLINE I16 WidenLow(U8 x) { return (I16)InterleaveLow(x, U8{}); }
AVEFFECT_INLINE I16 WidenHigh(U8 x) { return (I16)InterleaveHigh(x, U8{}); }
// Limits to 0..255 and joins what WidenLow and WidenHigh took apart.
AVEFFECT_INLINE U8 Pack(I16 low, I16 high) {
    return (U8)AVEFFECT_OP(packus_epi16)((Register)low, (Register)high);
}
// The same for 32-bit lanes, of numbers that fit: joins what interleaving with 0 took apart.
AVEFFECT_INLINE I16 PackPairs(I32 low, I32 high) {
    return (I16)AVEFFECT_OP(packs_epi32)((Register)low, (Register)high);
}
// The same, limited to -128..127.
AVEFFECT_INLINE U8 PackSigned(I16 low, I16 high) {
    return (U8)AVEFFECT_OP(packs_epi16)((Register)low, (Register)high);
}

// Bytes picked within each 128 bits by an index each; an index of 128 or more gives 0. The baseline has no
// such instruction: kernels that want it offer another way there.
#if AVEFFECT_LANE_BYTES > 16
AVEFFECT_BINARY(PickBytes, U8, shuffle_epi8)

// The same for B, G and R; A stays that of pixels.
AVEFFECT_INLINE U8 PickColours(U8 pixels, U8 from, U8 indices) {
#if AVEFFECT_LANE_BYTES == 32
    return Select(AlphaMask(), pixels, PickBytes(from, indices));
#else
    return (U8)_mm512_mask_shuffle_epi8((Register)pixels, 0x7777777777777777, (Register)from,
                                        (Register)indices);
#endif
}

// Products, shifted by 15, rounded to the nearest, halves up.
AVEFFECT_BINARY(MultiplyRounded, I16, mulhrs_epi16)

// Sums of the products of neighbouring bytes, a unsigned and b signed.
AVEFFECT_INLINE I16 MultiplyAddPairs(U8 a, U8 b) {
    return (I16)AVEFFECT_OP(maddubs_epi16)((Register)a, (Register)b);
}
#endif

// Half a register, widened in order to a whole one, and back; Narrowed keeps the low bytes.
AVEFFECT_INLINE U16 Widened(HalfU8 x) { return __builtin_convertvector(x, U16); }
AVEFFECT_INLINE U32 Widened(HalfU16 x) { return __builtin_convertvector(x, U32); }
AVEFFECT_INLINE HalfU8 Narrowed(U16 x) { return __builtin_convertvector(x, HalfU8); }

#if AVEFFECT_LANE_BYTES == 64
constexpr uint16_t kEvenLanes[32] = {0,  2,  4,  6,  8,  10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30,
                                     32, 34, 36, 38, 40, 42, 44, 46, 48, 50, 52, 54, 56, 58, 60, 62};
#endif

// Both registers' lanes in order, limited to 16 bits.
AVEFFECT_INLINE I16 PackPairsInOrder(I32 low, I32 high) {
    const I16 packed = PackPairs(low, high);
#if AVEFFECT_LANE_BYTES == 64
    return (I16)_mm512_maskz_permutexvar_epi64(0xFF, _mm512_set_epi64(7, 5, 3, 1, 6, 4, 2, 0),
                                               (Register)packed);
#elif AVEFFECT_LANE_BYTES == 32
    return (I16)_mm256_permute4x64_epi64((Register)packed, 0xD8);
#else
    return packed;
#endif
}

// Both registers' lanes in order, limited to 0..255.
AVEFFECT_INLINE U8 PackInOrder(I16 low, I16 high) {
    const U8 packed = Pack(low, high);
#if AVEFFECT_LANE_BYTES == 64
    return (U8)_mm512_maskz_permutexvar_epi64(0xFF, _mm512_set_epi64(7, 5, 3, 1, 6, 4, 2, 0),
                                              (Register)packed);
#elif AVEFFECT_LANE_BYTES == 32
    return (U8)_mm256_permute4x64_epi64((Register)packed, 0xD8);
#else
    return packed;
#endif
}

// Lanes of a and b in turns, as two registers in order.
AVEFFECT_INLINE void StoreInTurns(int16_t* to, I16 a, I16 b) {
    const Register low = (Register)InterleaveLow((U16)a, (U16)b);
    const Register high = (Register)InterleaveHigh((U16)a, (U16)b);
#if AVEFFECT_LANE_BYTES == 64
    const Register first = _mm512_set_epi64(11, 10, 3, 2, 9, 8, 1, 0);
    const Register second = _mm512_set_epi64(15, 14, 7, 6, 13, 12, 5, 4);
    Store(to, _mm512_permutex2var_epi64(low, first, high));
    Store(to + kLanes / 2, _mm512_permutex2var_epi64(low, second, high));
#elif AVEFFECT_LANE_BYTES == 32
    Store(to, _mm256_permute2x128_si256(low, high, 0x20));
    Store(to + kLanes / 2, _mm256_permute2x128_si256(low, high, 0x31));
#else
    Store(to, low);
    Store(to + kLanes / 2, high);
#endif
}

// Every other lane of a, then of b.
AVEFFECT_INLINE U16 EvenLanes(U16 a, U16 b) {
#if AVEFFECT_LANE_BYTES == 64
    return (U16)_mm512_permutex2var_epi16((Register)a, (Register)Load<U16>(kEvenLanes), (Register)b);
#else
    return (U16)PackPairsInOrder(((I32)a << 16) >> 16, ((I32)b << 16) >> 16);
#endif
}

#if AVEFFECT_LANE_BYTES > 16
// The same in each 128 bits.
AVEFFECT_INLINE U8 InEach128Bits(const uint8_t* bytes) {
    const __m128i one = Load<__m128i>(bytes);
#if AVEFFECT_LANE_BYTES == 64
    return (U8)_mm512_maskz_broadcast_i32x4(0xFFFF, one);
#else
    return (U8)_mm256_broadcastsi128_si256(one);
#endif
}

// Of each 128 bits the low and the high eight bytes in turns.
constexpr uint8_t kHalvesInTurns[16] = {0, 8, 1, 9, 2, 10, 3, 11, 4, 12, 5, 13, 6, 14, 7, 15};
#endif

// 16-bit lanes of the even and of the odd bytes, which needs no shuffling; Join undoes it, for lanes up to
// 255.
AVEFFECT_INLINE U16 Even(U8 samples) { return (U16)samples & 0xFF; }
AVEFFECT_INLINE U16 Odd(U8 samples) { return (U16)samples >> 8; }
AVEFFECT_INLINE U8 Join(U16 even, U16 odd) { return (U8)(even | (odd << 8)); }
// The same, limited to 0..255 first.
AVEFFECT_INLINE U8 JoinLimited(I16 even, I16 odd) {
    const U8 packed = Pack(even, odd);
#if AVEFFECT_LANE_BYTES == 16
    return InterleaveLow(packed, (U8)AVEFFECT_OP16(srli_si128)((Register)packed, 8));
#else
    return PickBytes(packed, InEach128Bits(kHalvesInTurns));
#endif
}
// The same, each byte times 256: what MultiplyHigh by a gain turns into byte * gain >> 8.
AVEFFECT_INLINE U16 EvenTimes256(U8 samples) { return (U16)samples << 8; }
AVEFFECT_INLINE U16 OddTimes256(U8 samples) { return (U16)samples & 0xFF00; }
// Lanes above 255 become 255.
AVEFFECT_INLINE U16 LimitToByte(U16 x) { return x - SubSaturated(x, Splat16(255)); }

#if AVEFFECT_LANE_BYTES > 16
// 16 bytes, each picked from 16 others by an index below 16.
AVEFFECT_INLINE void Pick16Bytes(uint8_t* to, const uint8_t* from, const uint8_t* indices) {
    __m128i source, picks;
    std::memcpy(&source, from, sizeof source);
    std::memcpy(&picks, indices, sizeof picks);
    source = _mm_shuffle_epi8(source, picks);
    std::memcpy(to, &source, sizeof source);
}
// Bytes picked by an index each, within groups of kPickGroup of them from the places at origins.
#ifdef AVEFFECT_HAS_TABLES
constexpr size_t kPickGroup = 64;
#else
constexpr size_t kPickGroup = 16;
#endif
AVEFFECT_INLINE U8 PickFromGroups(const uint8_t* from, const uint32_t* origins, U8 indices) {
#ifdef AVEFFECT_HAS_TABLES
    return (U8)_mm512_maskz_permutexvar_epi8(~0ull, (__m512i)indices, (__m512i)Load<U8>(from + origins[0]));
#else
    __m128i group[kLanes / kPickGroup];
    AVEFFECT_UNROLL
    for (size_t i = 0; i < kLanes / kPickGroup; ++i) std::memcpy(&group[i], from + origins[i], kPickGroup);
#if AVEFFECT_LANE_BYTES == 32
    const Register groups = _mm256_set_m128i(group[1], group[0]);
#else
    const __m256i low = _mm256_set_m128i(group[1], group[0]), high = _mm256_set_m128i(group[3], group[2]);
    const Register groups = _mm512_maskz_inserti64x4(0xFF, _mm512_castsi256_si512(low), high, 1);
#endif
    return PickBytes((U8)groups, indices);
#endif
}
// Pixels picked by an index below the number of pixels in a register.
AVEFFECT_INLINE U8 PickPixels(U8 pixels, U32 indices) {
#if AVEFFECT_LANE_BYTES == 32
    return (U8)_mm256_permutevar8x32_epi32((__m256i)pixels, (__m256i)indices);
#else
    return (U8)_mm512_maskz_permutexvar_epi32(0xFFFF, (__m512i)indices, (__m512i)pixels);
#endif
}
#endif

// x / 255, rounded to the nearest, for x up to 255 * 255: 257 / 65536 is a little less than 1 / 255.
AVEFFECT_INLINE U16 DividedBy255(U16 x) { return MultiplyHigh(x + 128, Splat16(257)); }

// A byte for each pixel of a register.
AVEFFECT_INLINE U32 LoadQuarter(const uint8_t* from) {
#if AVEFFECT_LANE_BYTES == 64
    return (U32)_mm512_maskz_cvtepu8_epi32(0xFFFF, _mm_loadu_si128((const __m128i*)from));
#elif AVEFFECT_LANE_BYTES == 32
    return (U32)_mm256_cvtepu8_epi32(_mm_loadl_epi64((const __m128i*)from));
#else
    int bytes = 0;
    std::memcpy(&bytes, from, 4);
    const U16 words = (U16)InterleaveLow((U8)AVEFFECT_OP16(cvtsi32_si128)(bytes), U8{});
    return (U32)InterleaveLow(words, U16{});
#endif
}

// As many bytes as there are doubles in a register.
AVEFFECT_INLINE F64 LoadDoubles(const uint8_t* from) {
#if AVEFFECT_LANE_BYTES == 64
    return (F64)_mm512_maskz_cvtepi32_pd(0xFF, _mm256_cvtepu8_epi32(_mm_loadl_epi64((const __m128i*)from)));
#else
    uint32_t bytes = 0;
    std::memcpy(&bytes, from, kLanes / 8);
    const Register16 words = AVEFFECT_OP16(unpacklo_epi8)(
        AVEFFECT_OP16(cvtsi32_si128)(static_cast<int>(bytes)), AVEFFECT_OP16(setzero_si128)());
    return (F64)AVEFFECT_OP(cvtepi32_pd)(
        AVEFFECT_OP16(unpacklo_epi16)(words, AVEFFECT_OP16(setzero_si128)()));
#endif
}
// Cut to whole numbers and limited to bytes.
AVEFFECT_INLINE void StoreCut(uint8_t* to, F64 values) {
#if AVEFFECT_LANE_BYTES == 64
    values = (F64)_mm512_maskz_max_pd(0xFF, (__m512d)values, (__m512d)F64{});
    values = (F64)_mm512_maskz_min_pd(0xFF, (__m512d)values, (__m512d)(F64{} + 255));
    const __m256i whole = _mm512_maskz_cvttpd_epi32(0xFF, (__m512d)values);
    _mm_storel_epi64((__m128i*)to, _mm256_maskz_cvtepi32_epi8(0xFF, whole));
#else
    // Beyond a byte, but not beyond what the conversions can take.
    values = (F64)AVEFFECT_OP(max_pd)(values, F64{} - 1);
    values = (F64)AVEFFECT_OP(min_pd)(values, F64{} + 256);
    const Register16 words =
        AVEFFECT_OP16(packs_epi32)(AVEFFECT_OP(cvttpd_epi32)(values), AVEFFECT_OP16(setzero_si128)());
    const int bytes = AVEFFECT_OP16(cvtsi128_si32)(AVEFFECT_OP16(packus_epi16)(words, words));
    std::memcpy(to, &bytes, kLanes / 8);
#endif
}

#ifdef AVEFFECT_HAS_TABLES
// A table of 256 bytes, looked up for every byte at once.
struct ByteTable {
    U8 quarters[4];

    AVEFFECT_INLINE U8 operator()(U8 x) const {
        const __m512i low = _mm512_permutex2var_epi8((__m512i)quarters[0], (__m512i)x, (__m512i)quarters[1]);
        const __m512i high = _mm512_permutex2var_epi8((__m512i)quarters[2], (__m512i)x, (__m512i)quarters[3]);
        return (U8)_mm512_mask_blend_epi8(_mm512_movepi8_mask((__m512i)x), low, high);
    }
};
#endif

#if AVEFFECT_LANE_BYTES > 16
// Picks from the last to the first. The instructions take indices modulo what they pick from, so the
// beginning serves smaller registers.
constexpr uint8_t kDownwards[64] = {63, 62, 61, 60, 59, 58, 57, 56, 55, 54, 53, 52, 51, 50, 49, 48,
                                    47, 46, 45, 44, 43, 42, 41, 40, 39, 38, 37, 36, 35, 34, 33, 32,
                                    31, 30, 29, 28, 27, 26, 25, 24, 23, 22, 21, 20, 19, 18, 17, 16,
                                    15, 14, 13, 12, 11, 10, 9,  8,  7,  6,  5,  4,  3,  2,  1,  0};
constexpr uint32_t kPixelsDownwards[16] = {15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0};
#endif

// The register's bytes from the last to the first.
AVEFFECT_INLINE U8 ReverseBytes(U8 x) {
#ifdef AVEFFECT_HAS_TABLES
    return (U8)_mm512_maskz_permutexvar_epi8(~0ull, (__m512i)Load<U8>(kDownwards), (__m512i)x);
#elif AVEFFECT_LANE_BYTES == 64
    const __m512i within = (__m512i)PickBytes(x, Load<U8>(kDownwards));
    return (U8)_mm512_maskz_shuffle_i64x2(0xFF, within, within, 0x1B);
#elif AVEFFECT_LANE_BYTES == 32
    return (U8)_mm256_permute4x64_epi64((__m256i)PickBytes(x, Load<U8>(kDownwards)), 0x4E);
#else
    const Register16 swapped = (Register16)((U16)x << 8 | (U16)x >> 8);
    return (U8)AVEFFECT_OP16(shuffle_epi32)(
        AVEFFECT_OP16(shufflehi_epi16)(AVEFFECT_OP16(shufflelo_epi16)(swapped, 0x1B), 0x1B), 0x4E);
#endif
}

// The same for whole pixels.
AVEFFECT_INLINE U8 ReversePixels(U8 x) {
#if AVEFFECT_LANE_BYTES > 16
    return PickPixels(x, Load<U32>(kPixelsDownwards));
#else
    return (U8)AVEFFECT_OP16(shuffle_epi32)((Register16)x, 0x1B);
#endif
}

// Pixels 0 and 2, or 1 and 3, of each 128 bits of a, then those of b.
template <bool Odd>
AVEFFECT_INLINE U8 EveryOtherPixel(U8 a, U8 b) {
    constexpr int kPicks = Odd ? 0xDD : 0x88;
#if AVEFFECT_LANE_BYTES == 64
    return (U8)_mm512_maskz_shuffle_ps(0xFFFF, (__m512)a, (__m512)b, kPicks);
#else
    return (U8)AVEFFECT_OP(shuffle_ps)((F32)a, (F32)b, kPicks);
#endif
}

// Units 0, 2, 4, ... of a, then those of b, of 1 or 4 bytes.
template <size_t UnitBytes>
AVEFFECT_INLINE U8 EvenUnits(U8 a, U8 b) {
    const U8 within = UnitBytes == 4 ? EveryOtherPixel<false>(a, b) : Pack((I16)Even(a), (I16)Even(b));
#if AVEFFECT_LANE_BYTES == 64
    return (U8)_mm512_maskz_permutexvar_epi64(0xFF, _mm512_set_epi64(7, 5, 3, 1, 6, 4, 2, 0),
                                              (__m512i)within);
#elif AVEFFECT_LANE_BYTES == 32
    return (U8)_mm256_permute4x64_epi64((__m256i)within, 0xD8);
#else
    return within;
#endif
}

// Units of 1 or 4 bytes of a and b in turns, from the low or the high half.
template <size_t UnitBytes>
AVEFFECT_INLINE Register16 Interleave16Low(Register16 a, Register16 b) {
    return UnitBytes == 4 ? AVEFFECT_OP16(unpacklo_epi32)(a, b) : AVEFFECT_OP16(unpacklo_epi8)(a, b);
}
template <size_t UnitBytes>
AVEFFECT_INLINE Register16 Interleave16High(Register16 a, Register16 b) {
    return UnitBytes == 4 ? AVEFFECT_OP16(unpackhi_epi32)(a, b) : AVEFFECT_OP16(unpackhi_epi8)(a, b);
}

// Writes a square of units, 16 bytes wide, with rows and columns exchanged. Each pass interleaves the rows of
// the upper half with those of the lower, so that after all of them columns stand as rows.
template <size_t UnitBytes>
AVEFFECT_INLINE void TransposeSquare(const uint8_t* from, size_t fromPitch, uint8_t* to, size_t toPitch) {
    constexpr size_t kSide = 16 / UnitBytes;
    Register16 rows[kSide], mixed[kSide];
    AVEFFECT_UNROLL
    for (size_t y = 0; y < kSide; ++y) std::memcpy(&rows[y], from + y * fromPitch, 16);
    AVEFFECT_UNROLL
    for (size_t pass = 1; pass < kSide; pass *= 2) {
        AVEFFECT_UNROLL
        for (size_t y = 0; y < kSide / 2; ++y) {
            mixed[2 * y] = Interleave16Low<UnitBytes>(rows[y], rows[y + kSide / 2]);
            mixed[2 * y + 1] = Interleave16High<UnitBytes>(rows[y], rows[y + kSide / 2]);
        }
        AVEFFECT_UNROLL
        for (size_t y = 0; y < kSide; ++y) rows[y] = mixed[y];
    }
    AVEFFECT_UNROLL
    for (size_t y = 0; y < kSide; ++y) std::memcpy(to + y * toPitch, &rows[y], 16);
}

AVEFFECT_INLINE bool IsZero(U8 x) {
#if AVEFFECT_LANE_BYTES == 64
    return _mm512_test_epi8_mask((Register)x, (Register)x) == 0;
#elif AVEFFECT_LANE_BYTES == 32
    return _mm256_testz_si256((Register)x, (Register)x) != 0;
#else
    return AVEFFECT_OP16(movemask_epi8)((Register)(x == 0)) == 0xFFFF;
#endif
}

// A plane whose rows follow each other without padding is one long row.
AVEFFECT_INLINE Plane8 Joined(Plane8 plane) {
    if (plane.pitch != plane.width) return plane;
    return {plane.data, plane.width * plane.rows, 0, plane.rows ? size_t{1} : size_t{0}};
}

// Replaces each register of a row by op(register). The last one overlaps its neighbour, both computed from
// the old bytes; shorter rows go through a buffer. Positions of bytes within a register keep their remainder
// by 4.
template <class Op>
AVEFFECT_INLINE void ForRow(uint8_t* row, size_t width, const Op& op) {
    if (width < kLanes) {
        U8 whole{};
        std::memcpy(&whole, row, width);
        whole = op(whole);
        std::memcpy(row, &whole, width);
        return;
    }
    uint8_t* const end = row + width - kLanes;
    const U8 last = op(Load<U8>(end));
    for (uint8_t* at = row; at < end; at += kLanes) Store(at, op(Load<U8>(at)));
    Store(end, last);
}

template <class Op>
AVEFFECT_INLINE void ForPlane(Plane8 plane, const Op& op) {
    plane = Joined(plane);
    if (plane.width == 0) return; // an empty plane may have no address
    for (size_t y = 0; y < plane.rows; ++y) ForRow(plane.Row(y), plane.width, op);
}

// How Exchange hands bytes over: as they stand.
struct Straight {
    static constexpr bool kReverses = false;
    AVEFFECT_INLINE U8 operator()(U8 x) const { return x; }
};

// From the last to the first, in units of 1 or 4 bytes.
template <size_t UnitBytes>
struct Reversed {
    static constexpr bool kReverses = true;
    AVEFFECT_INLINE U8 operator()(U8 x) const {
        if constexpr (UnitBytes == 4)
            return ReversePixels(x);
        else
            return ReverseBytes(x);
    }
};

// Exchanges two ranges that do not overlap. The last register overlaps its neighbour, both made from the old
// bytes; shorter ranges go through a buffer.
template <class Order>
AVEFFECT_INLINE void Exchange(uint8_t* a, uint8_t* b, size_t bytes, const Order& order) {
    if (bytes == 0) return; // an empty range may have no address
    if (bytes < kLanes) {
        U8 wholeA{}, wholeB{};
        std::memcpy(&wholeA, a, bytes);
        std::memcpy(&wholeB, b, bytes);
        wholeA = order(wholeA);
        wholeB = order(wholeB);
        const size_t skipped = Order::kReverses ? kLanes - bytes : 0;
        std::memcpy(a, reinterpret_cast<const uint8_t*>(&wholeB) + skipped, bytes);
        std::memcpy(b, reinterpret_cast<const uint8_t*>(&wholeA) + skipped, bytes);
        return;
    }
    const size_t end = bytes - kLanes;
    uint8_t* const endOfB = Order::kReverses ? b : b + end;
    const U8 lastA = order(Load<U8>(a + end)), lastB = order(Load<U8>(endOfB));
    for (size_t x = 0; x < end; x += kLanes) {
        uint8_t* const other = Order::kReverses ? b + end - x : b + x;
        const U8 kept = order(Load<U8>(a + x));
        Store(a + x, order(Load<U8>(other)));
        Store(other, kept);
    }
    Store(a + end, lastB);
    Store(endOfB, lastA);
}

// Replaces each register of a row by op(register, its first column), as ForRow does, and asks for the row
// that begins at soon. Vectors may be half registers.
template <class Vector, class Op>
AVEFFECT_INLINE void ForColumns(uint8_t* row, size_t width, const uint8_t* soon, const Op& op) {
    if (width < sizeof(Vector)) {
        Vector whole{};
        std::memcpy(&whole, row, width);
        whole = op(whole, 0);
        std::memcpy(row, &whole, width);
        return;
    }
    const size_t end = width - sizeof(Vector);
    const Vector last = op(Load<Vector>(row + end), end);
    for (size_t x = 0; x < end; x += sizeof(Vector)) {
        Prefetch(soon + x);
        Store(row + x, op(Load<Vector>(row + x), x));
    }
    Store(row + end, last);
}

// Replaces each register of a row by op(register, the same bytes of the other row), as ForRow does, and asks
// for the row that begins at soon.
template <class Op>
AVEFFECT_INLINE void ForRowWith(uint8_t* row, const uint8_t* other, size_t width, const uint8_t* soon,
                                const Op& op) {
    if (width < kLanes) {
        U8 whole{}, wholeOther{};
        std::memcpy(&whole, row, width);
        std::memcpy(&wholeOther, other, width);
        whole = op(whole, wholeOther);
        std::memcpy(row, &whole, width);
        return;
    }
    const size_t end = width - kLanes;
    const U8 last = op(Load<U8>(row + end), Load<U8>(other + end));
    for (size_t x = 0; x < end; x += kLanes) {
        Prefetch(soon + x);
        Store(row + x, op(Load<U8>(row + x), Load<U8>(other + x)));
    }
    Store(row + end, last);
}

template <class Op>
AVEFFECT_INLINE void ForRowWith(uint8_t* row, const uint8_t* other, size_t width, const Op& op) {
    ForRowWith(row, other, width, row, op);
}

// Replaces the rows of a plane but the first by op(register, the same bytes of the row above), from the last
// upwards, so that the row above is still the old one.
template <class Op>
AVEFFECT_INLINE void ForRowsUpwards(Plane8 plane, size_t width, const Op& op) {
    if (width == 0) return;
    for (size_t y = plane.rows; y-- > 1;) {
        const uint8_t* const above = plane.Row(y - 1);
        ForRowWith(plane.Row(y), above, width, above - plane.pitch, op);
    }
}

// Each byte twice. Reads and writes up to a register beyond the row.
AVEFFECT_INLINE void Double(uint8_t* to, const uint8_t* from, size_t width) {
    typedef uint8_t Half __attribute__((vector_size(kLanes / 2)));
    for (size_t x = 0; x < width; x += kLanes) {
        const U16 wide = __builtin_convertvector(Load<Half>(from + x / 2), U16);
        Store(to + x, wide | (wide << 8));
    }
}
