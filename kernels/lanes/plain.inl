// What the instructions of 16 bytes compute that the layer names, in words that any compiler of any processor
// takes. Most of them become one or two instructions wherever there are such; neon.inl has those of AArch64
// that compilers do not find.

typedef U8 Register;
typedef U8 Register16;

// Where a mask's lanes are all ones a, elsewhere b.
template <class Mask, class Vector>
AVEFFECT_INLINE Vector op_blend(Mask mask, Vector a, Vector b) {
    return (Vector)(((Mask)a & mask) | ((Mask)b & ~mask));
}
template <class Vector>
AVEFFECT_INLINE Vector op_max(Vector a, Vector b) {
    return op_blend(a > b, a, b);
}
template <class Vector>
AVEFFECT_INLINE Vector op_min(Vector a, Vector b) {
    return op_blend(a < b, a, b);
}

#ifndef AVEFFECT_NEON
// Twice a register, for what needs room on its way.
typedef uint32_t WideU32 __attribute__((vector_size(2 * kLanes)));
typedef int32_t WideI32 __attribute__((vector_size(2 * kLanes)));

// Limits come before narrowing.
template <class Narrow, class Wide>
AVEFFECT_INLINE Narrow op_limited(Wide x, Wide least, Wide most) {
    return __builtin_convertvector(op_min(op_max(x, least), most), Narrow);
}

AVEFFECT_INLINE Register op_adds_epu8(Register a, Register b) {
    const Register sum = a + b;
    return sum | (Register)(sum < a);
}
AVEFFECT_INLINE Register op_subs_epu8(Register a, Register b) { return (a - b) & (Register)(a > b); }
AVEFFECT_INLINE Register op_subs_epu16(Register a, Register b) {
    return (Register)(((U16)a - (U16)b) & (U16)((U16)a > (U16)b));
}
// A sum that leaves the range has another sign than both numbers: it becomes the end that theirs points to.
AVEFFECT_INLINE Register op_adds_epi16(Register a, Register b) {
    const I16 x = (I16)a, y = (I16)b, sum = x + y, end = (x >> 15) ^ 0x7FFF;
    return (Register)op_blend(((x ^ sum) & (y ^ sum)) < 0, end, sum);
}
AVEFFECT_INLINE Register op_subs_epi16(Register a, Register b) {
    const I16 x = (I16)a, y = (I16)b, difference = x - y, end = (x >> 15) ^ 0x7FFF;
    return (Register)op_blend(((x ^ y) & (x ^ difference)) < 0, end, difference);
}
AVEFFECT_INLINE Register op_max_epu8(Register a, Register b) { return op_max(a, b); }
AVEFFECT_INLINE Register op_min_epu8(Register a, Register b) { return op_min(a, b); }
AVEFFECT_INLINE Register op_max_epi16(Register a, Register b) { return (Register)op_max((I16)a, (I16)b); }
AVEFFECT_INLINE Register op_min_epi16(Register a, Register b) { return (Register)op_min((I16)a, (I16)b); }
AVEFFECT_INLINE Register op_mulhi_epu16(Register a, Register b) {
    const WideU32 x = __builtin_convertvector((U16)a, WideU32), y = __builtin_convertvector((U16)b, WideU32);
    return (Register) __builtin_convertvector(x * y >> 16, U16);
}
AVEFFECT_INLINE Register op_mulhi_epi16(Register a, Register b) {
    const WideI32 x = __builtin_convertvector((I16)a, WideI32), y = __builtin_convertvector((I16)b, WideI32);
    return (Register) __builtin_convertvector(x * y >> 16, I16);
}
AVEFFECT_INLINE Register op_madd_epi16(Register a, Register b) {
    const I32 x = (I32)a, y = (I32)b;
    return (Register)((x << 16 >> 16) * (y << 16 >> 16) + (x >> 16) * (y >> 16));
}

AVEFFECT_INLINE Register op_packus_epi16(Register low, Register high) {
    const HalfU8 first = op_limited<HalfU8>((I16)low, I16{}, I16{} + 255),
                 second = op_limited<HalfU8>((I16)high, I16{}, I16{} + 255);
    return __builtin_shufflevector(first, second, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15);
}
AVEFFECT_INLINE Register op_packs_epi16(Register low, Register high) {
    const HalfU8 first = op_limited<HalfU8>((I16)low, I16{} - 128, I16{} + 127),
                 second = op_limited<HalfU8>((I16)high, I16{} - 128, I16{} + 127);
    return __builtin_shufflevector(first, second, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15);
}
AVEFFECT_INLINE Register op_packs_epi32(Register low, Register high) {
    const HalfU16 first = op_limited<HalfU16>((I32)low, I32{} - 32768, I32{} + 32767),
                  second = op_limited<HalfU16>((I32)high, I32{} - 32768, I32{} + 32767);
    return (Register)__builtin_shufflevector(first, second, 0, 1, 2, 3, 4, 5, 6, 7);
}

AVEFFECT_INLINE int op_movemask_epi8(Register x) {
    int bits = 0;
    for (unsigned i = 0; i < kLanes; ++i) bits |= x[i] >> 7 << i;
    return bits;
}

AVEFFECT_INLINE F32 op_sqrt_ps(F32 x) {
    AVEFFECT_UNROLL
    for (unsigned i = 0; i < kLanes / 4; ++i) x[i] = __builtin_sqrtf(x[i]);
    return x;
}
#endif

AVEFFECT_INLINE Register op_unpacklo_epi8(Register a, Register b) {
    return __builtin_shufflevector(a, b, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
}
AVEFFECT_INLINE Register op_unpackhi_epi8(Register a, Register b) {
    return __builtin_shufflevector(a, b, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
}
AVEFFECT_INLINE Register op_unpacklo_epi16(Register a, Register b) {
    return (Register)__builtin_shufflevector((U16)a, (U16)b, 0, 8, 1, 9, 2, 10, 3, 11);
}
AVEFFECT_INLINE Register op_unpackhi_epi16(Register a, Register b) {
    return (Register)__builtin_shufflevector((U16)a, (U16)b, 4, 12, 5, 13, 6, 14, 7, 15);
}
AVEFFECT_INLINE Register op_unpacklo_epi32(Register a, Register b) {
    return (Register)__builtin_shufflevector((U32)a, (U32)b, 0, 4, 1, 5);
}
AVEFFECT_INLINE Register op_unpackhi_epi32(Register a, Register b) {
    return (Register)__builtin_shufflevector((U32)a, (U32)b, 2, 6, 3, 7);
}
AVEFFECT_INLINE Register op_unpacklo_epi64(Register a, Register b) {
    return (Register)__builtin_shufflevector((F64)a, (F64)b, 0, 2);
}

// Two bits of the picks for each lane, from the lowest on.
AVEFFECT_INLINE Register op_shuffle_epi32(Register a, int picks) {
    const U32 x = (U32)a;
    return (Register)U32{x[picks & 3], x[picks >> 2 & 3], x[picks >> 4 & 3], x[picks >> 6 & 3]};
}
AVEFFECT_INLINE F32 op_shuffle_ps(F32 a, F32 b, int picks) {
    return F32{a[picks & 3], a[picks >> 2 & 3], b[picks >> 4 & 3], b[picks >> 6 & 3]};
}
AVEFFECT_INLINE Register op_shufflelo_epi16(Register a, int picks) {
    const U16 x = (U16)a;
    return (Register)U16{
        x[picks & 3], x[picks >> 2 & 3], x[picks >> 4 & 3], x[picks >> 6 & 3], x[4], x[5], x[6], x[7]};
}
AVEFFECT_INLINE Register op_shufflehi_epi16(Register a, int picks) {
    const U16 x = (U16)a;
    return (Register)U16{x[0],
                         x[1],
                         x[2],
                         x[3],
                         x[4 + (picks & 3)],
                         x[4 + (picks >> 2 & 3)],
                         x[4 + (picks >> 4 & 3)],
                         x[4 + (picks >> 6 & 3)]};
}
// By 8 bytes, the one distance that is asked for.
AVEFFECT_INLINE Register op_srli_si128(Register a, int) {
    return (Register)__builtin_shufflevector((F64)a, F64{}, 1, 2);
}
AVEFFECT_INLINE Register op_setzero_si128() { return Register{}; }
AVEFFECT_INLINE Register op_cvtsi32_si128(int x) { return (Register)I32{x}; }
AVEFFECT_INLINE int op_cvtsi128_si32(Register x) { return ((I32)x)[0]; }
AVEFFECT_INLINE F64 op_set1_pd(double x) { return F64{x, x}; }
// The second one when either is no number.
AVEFFECT_INLINE F64 op_max_pd(F64 a, F64 b) { return op_max(a, b); }
AVEFFECT_INLINE F64 op_min_pd(F64 a, F64 b) { return op_min(a, b); }

// Between doubles and the lower half of a register.
AVEFFECT_INLINE F64 op_cvtepi32_pd(Register x) {
    const I32 whole = (I32)x;
    return F64{static_cast<double>(whole[0]), static_cast<double>(whole[1])};
}
AVEFFECT_INLINE F64 op_cvtps_pd(F32 x) { return F64{double{x[0]}, double{x[1]}}; }
AVEFFECT_INLINE F32 op_movehl_ps(F32 a, F32 b) { return __builtin_shufflevector(a, b, 6, 7, 2, 3); }
AVEFFECT_INLINE F32 op_movelh_ps(F32 a, F32 b) { return __builtin_shufflevector(a, b, 0, 1, 4, 5); }
AVEFFECT_INLINE F32 op_cvtpd_ps(F64 x) { return F32{static_cast<float>(x[0]), static_cast<float>(x[1])}; }
// Towards 0; what does not fit becomes the lowest integer.
AVEFFECT_INLINE int32_t op_whole(double x) {
    return x > -2147483649.0 && x < 2147483648.0 ? static_cast<int32_t>(x) : INT32_MIN;
}
AVEFFECT_INLINE Register op_cvttpd_epi32(F64 x) { return (Register)I32{op_whole(x[0]), op_whole(x[1])}; }
