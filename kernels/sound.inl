// Bodies of the sound kernels, for one level.

typedef float F32 __attribute__((vector_size(kLanes)));
typedef double F64 __attribute__((vector_size(kLanes)));

AVEFFECT_INLINE F64 SplatF64(double x) { return (F64)AVEFFECT_OP(set1_pd)(x); }

// 16-bit lanes widened with their sign; low and high halves are those of each 128 bits, as PackSaturated
// joins them again.
AVEFFECT_INLINE I32 WidenLow(I16 x) {
    return (I32)AVEFFECT_OP(unpacklo_epi16)((Register)x, (Register)x) >> 16;
}
AVEFFECT_INLINE I32 WidenHigh(I16 x) {
    return (I32)AVEFFECT_OP(unpackhi_epi16)((Register)x, (Register)x) >> 16;
}
AVEFFECT_INLINE I16 PackSaturated(I32 low, I32 high) {
    return (I16)AVEFFECT_OP(packs_epi32)((Register)low, (Register)high);
}

// The two halves of a register as doubles, and back: to integers towards zero (what does not fit becomes the
// lowest integer), or to floats.
#if AVEFFECT_LANE_BYTES == 16
AVEFFECT_INLINE F64 LowerDoubles(I32 x) { return (F64)AVEFFECT_OP16(cvtepi32_pd)((Register16)x); }
AVEFFECT_INLINE F64 UpperDoubles(I32 x) {
    return (F64)AVEFFECT_OP16(cvtepi32_pd)(AVEFFECT_OP16(shuffle_epi32)((Register16)x, 0xEE));
}
AVEFFECT_INLINE F64 LowerDoubles(F32 x) { return (F64)AVEFFECT_OP16(cvtps_pd)(x); }
AVEFFECT_INLINE F64 UpperDoubles(F32 x) {
    return (F64)AVEFFECT_OP16(cvtps_pd)(AVEFFECT_OP16(movehl_ps)(x, x));
}
AVEFFECT_INLINE I32 TruncToInts(F64 lower, F64 upper) {
    return (I32)AVEFFECT_OP16(unpacklo_epi64)(AVEFFECT_OP16(cvttpd_epi32)(lower),
                                              AVEFFECT_OP16(cvttpd_epi32)(upper));
}
AVEFFECT_INLINE F32 RoundToFloats(F64 lower, F64 upper) {
    return (F32)AVEFFECT_OP16(movelh_ps)(AVEFFECT_OP16(cvtpd_ps)(lower), AVEFFECT_OP16(cvtpd_ps)(upper));
}
#elif AVEFFECT_LANE_BYTES == 32
AVEFFECT_INLINE F64 LowerDoubles(I32 x) {
    return (F64)_mm256_cvtepi32_pd(_mm256_castsi256_si128((__m256i)x));
}
AVEFFECT_INLINE F64 UpperDoubles(I32 x) {
    return (F64)_mm256_cvtepi32_pd(_mm256_extracti128_si256((__m256i)x, 1));
}
AVEFFECT_INLINE F64 LowerDoubles(F32 x) { return (F64)_mm256_cvtps_pd(_mm256_castps256_ps128((__m256)x)); }
AVEFFECT_INLINE F64 UpperDoubles(F32 x) { return (F64)_mm256_cvtps_pd(_mm256_extractf128_ps((__m256)x, 1)); }
AVEFFECT_INLINE I32 TruncToInts(F64 lower, F64 upper) {
    return (I32)_mm256_set_m128i(_mm256_cvttpd_epi32((__m256d)upper), _mm256_cvttpd_epi32((__m256d)lower));
}
AVEFFECT_INLINE F32 RoundToFloats(F64 lower, F64 upper) {
    return (F32)_mm256_set_m128(_mm256_cvtpd_ps((__m256d)upper), _mm256_cvtpd_ps((__m256d)lower));
}
#else
// All lanes of a mask: the plain forms leave g++ warning of values without a beginning.
AVEFFECT_INLINE F64 LowerDoubles(I32 x) {
    return (F64)_mm512_maskz_cvtepi32_pd(0xFF, _mm512_maskz_extracti64x4_epi64(0xF, (__m512i)x, 0));
}
AVEFFECT_INLINE F64 UpperDoubles(I32 x) {
    return (F64)_mm512_maskz_cvtepi32_pd(0xFF, _mm512_maskz_extracti64x4_epi64(0xF, (__m512i)x, 1));
}
AVEFFECT_INLINE F64 LowerDoubles(F32 x) {
    return (F64)_mm512_maskz_cvtps_pd(0xFF, _mm512_maskz_extractf32x8_ps(0xFF, (__m512)x, 0));
}
AVEFFECT_INLINE F64 UpperDoubles(F32 x) {
    return (F64)_mm512_maskz_cvtps_pd(0xFF, _mm512_maskz_extractf32x8_ps(0xFF, (__m512)x, 1));
}
AVEFFECT_INLINE I32 TruncToInts(F64 lower, F64 upper) {
    return (I32)_mm512_maskz_inserti64x4(
        0xFF, _mm512_castsi256_si512(_mm512_maskz_cvttpd_epi32(0xFF, (__m512d)lower)),
        _mm512_maskz_cvttpd_epi32(0xFF, (__m512d)upper), 1);
}
AVEFFECT_INLINE F32 RoundToFloats(F64 lower, F64 upper) {
    return (F32)_mm512_maskz_insertf32x8(0xFFFF,
                                         _mm512_castps256_ps512(_mm512_maskz_cvtpd_ps(0xFF, (__m512d)lower)),
                                         _mm512_maskz_cvtpd_ps(0xFF, (__m512d)upper), 1);
}
#endif

// The lower and the greater of two numbers; the second one when either has no value.
#if AVEFFECT_LANE_BYTES == 16
AVEFFECT_INLINE F64 Lower(F64 a, F64 b) { return (F64)AVEFFECT_OP16(min_pd)(a, b); }
AVEFFECT_INLINE F64 Greater(F64 a, F64 b) { return (F64)AVEFFECT_OP16(max_pd)(a, b); }
#elif AVEFFECT_LANE_BYTES == 32
AVEFFECT_INLINE F64 Lower(F64 a, F64 b) { return (F64)_mm256_min_pd((__m256d)a, (__m256d)b); }
AVEFFECT_INLINE F64 Greater(F64 a, F64 b) { return (F64)_mm256_max_pd((__m256d)a, (__m256d)b); }
#else
AVEFFECT_INLINE F64 Lower(F64 a, F64 b) { return (F64)_mm512_maskz_min_pd(0xFF, (__m512d)a, (__m512d)b); }
AVEFFECT_INLINE F64 Greater(F64 a, F64 b) { return (F64)_mm512_maskz_max_pd(0xFF, (__m512d)a, (__m512d)b); }
#endif

// The nearest value between the limits; what has no value stays so.
struct Limits {
    F64 lowest, highest;
    AVEFFECT_INLINE F64 operator()(F64 x) const { return Greater(lowest, Lower(highest, x)); }
};
AVEFFECT_INLINE Limits MakeLimits(double lowest, double highest) {
    return {SplatF64(lowest), SplatF64(highest)};
}

// Without NaN, and from so far out on that every sample but 0 reaches its limit, no further: 0 times that is
// 0.
AVEFFECT_INLINE double Tamed(double scale, double furthest) {
    if (scale != scale) return 0;
    return scale > furthest ? furthest : scale < -furthest ? -furthest : scale;
}

// Replaces each register of a range of samples by op(register), as ForRow does; both ends overlap their
// neighbours, so that all between them can be aligned: sound is worked on in the caches, where every access
// across two lines would be felt.
template <size_t SampleBytes, class Op>
AVEFFECT_INLINE void ForSamples(uint8_t* samples, size_t count, const Op& op) {
    const size_t bytes = count * SampleBytes;
    const size_t misfit = (kLanes - reinterpret_cast<uintptr_t>(samples) % kLanes) % kLanes;
    if (bytes < 2 * kLanes || misfit % SampleBytes != 0) return ForRow(samples, bytes, op);
    uint8_t* const end = samples + bytes - kLanes;
    const U8 first = op(Load<U8>(samples)), last = op(Load<U8>(end));
    for (uint8_t* at = samples + misfit; at < end; at += kLanes) Store(at, op(Load<U8>(at)));
    Store(samples, first);
    Store(end, last);
}

// s * gain >> 8 for gains of -128 to 383: s, or nothing, and a fraction of -1/2 to 127/256 of it. Both parts
// are whole, and only their sum is limited.
struct AmplifyNear16 {
    I16 whole;    // all ones or 0
    I16 fraction; // times 65536
    AVEFFECT_INLINE explicit AmplifyNear16(int gain)
        : whole(SplatI16(gain >= 128 ? -1 : 0))
        , fraction(SplatI16(static_cast<int16_t>((gain >= 128 ? gain - 256 : gain) * 256))) {}
    AVEFFECT_INLINE U8 operator()(U8 bytes) const {
        const I16 samples = (I16)bytes;
        return (U8)AddSaturated(samples & whole, MultiplyHigh(samples, fraction));
    }
};

struct Amplify16 {
    I16 gain;
    AVEFFECT_INLINE U8 operator()(U8 bytes) const {
        const I16 samples = (I16)bytes;
        const Register low = (Register)(samples * gain), high = (Register)MultiplyHigh(samples, gain);
        return (U8)PackSaturated((I32)AVEFFECT_OP(unpacklo_epi16)(low, high) >> 8,
                                 (I32)AVEFFECT_OP(unpackhi_epi16)(low, high) >> 8);
    }
};

// With |scale| up to 65535 products of 16-bit samples fit in 32 bits, and packing limits them.
struct ScaleSigned16 {
    static constexpr double kFurthest = 65535;
    F64 scale;
    AVEFFECT_INLINE explicit ScaleSigned16(double by)
        : scale(SplatF64(Tamed(by, kFurthest))) {}

    AVEFFECT_INLINE I32 Scaled(I32 x) const {
        return TruncToInts(LowerDoubles(x) * scale, UpperDoubles(x) * scale);
    }
    AVEFFECT_INLINE I16 Scaled(I16 x) const {
        return PackSaturated(Scaled(WidenLow(x)), Scaled(WidenHigh(x)));
    }
    AVEFFECT_INLINE U8 operator()(U8 bytes) const { return (U8)Scaled((I16)bytes); }
};

// Bytes take the same way; the limits of 16 bits do not matter beyond theirs.
struct ScaleSigned8 {
    ScaleSigned16 wide;
    AVEFFECT_INLINE explicit ScaleSigned8(double by)
        : wide(by) {}
    AVEFFECT_INLINE U8 operator()(U8 bytes) const {
        return PackSigned(wide.Scaled((I16)InterleaveLow(bytes, bytes) >> 8),
                          wide.Scaled((I16)InterleaveHigh(bytes, bytes) >> 8));
    }
};

struct ScaleUnsigned8 {
    ScaleSigned16 wide;
    AVEFFECT_INLINE explicit ScaleUnsigned8(double by)
        : wide(by) {}
    AVEFFECT_INLINE U8 operator()(U8 bytes) const {
        return Pack(wide.Scaled(WidenLow(bytes)), wide.Scaled(WidenHigh(bytes)));
    }
};

// Beyond this every 32-bit sample but 0 is at its limit.
constexpr double kFurthestScale = 8589934592.0; // 2^33

struct ScaleUnsigned16 {
    F64 scale;
    Limits limits;
    AVEFFECT_INLINE explicit ScaleUnsigned16(double by)
        : scale(SplatF64(Tamed(by, kFurthestScale)))
        , limits(MakeLimits(0, 65535)) {}

    // With the sign that packing in signed 16 bits expects.
    AVEFFECT_INLINE I32 Scaled(I32 x) const {
        const I32 whole = TruncToInts(limits(LowerDoubles(x) * scale), limits(UpperDoubles(x) * scale));
        return whole << 16 >> 16;
    }
    AVEFFECT_INLINE U8 operator()(U8 bytes) const {
        const Register x = (Register)bytes, zero{};
        return (U8)PackSaturated(Scaled((I32)AVEFFECT_OP(unpacklo_epi16)(x, zero)),
                                 Scaled((I32)AVEFFECT_OP(unpackhi_epi16)(x, zero)));
    }
};

struct ScaleSigned32 {
    F64 scale;
    Limits limits;
    AVEFFECT_INLINE explicit ScaleSigned32(double by)
        : scale(SplatF64(Tamed(by, kFurthestScale)))
        , limits(MakeLimits(-2147483648.0, 2147483647.0)) {}
    AVEFFECT_INLINE U8 operator()(U8 bytes) const {
        const I32 x = (I32)bytes;
        return (U8)TruncToInts(limits(LowerDoubles(x) * scale), limits(UpperDoubles(x) * scale));
    }
};

// Results of 2^31 and more are converted in two parts: 2^31, whose conversion gives the lowest integer and so
// the right bit, and the rest.
struct ScaleUnsigned32 {
    F64 scale;
    Limits half, limits;
    AVEFFECT_INLINE explicit ScaleUnsigned32(double by)
        : scale(SplatF64(Tamed(by, kFurthestScale)))
        , half(MakeLimits(0, 2147483648.0))
        , limits(MakeLimits(0, 4294967295.0)) {}
    AVEFFECT_INLINE U8 operator()(U8 bytes) const {
        const I32 x = (I32)bytes; // as it is defined: read with a sign
        const F64 lower = limits(LowerDoubles(x) * scale), upper = limits(UpperDoubles(x) * scale);
        const I32 first = TruncToInts(half(lower), half(upper));
        const I32 rest = TruncToInts(half(lower - half.highest), half(upper - half.highest));
        return (U8)(first + rest);
    }
};

struct ScaleFloat {
    F64 scale;
    Limits limits;
    AVEFFECT_INLINE explicit ScaleFloat(double by)
        : scale(SplatF64(by))
        , limits(MakeLimits(-1, 1)) {}
    AVEFFECT_INLINE U8 operator()(U8 bytes) const {
        const F32 x = (F32)bytes;
        return (U8)RoundToFloats(limits(LowerDoubles(x) * scale), limits(UpperDoubles(x) * scale));
    }
};

struct ScaleDouble {
    F64 scale;
    Limits limits;
    AVEFFECT_INLINE explicit ScaleDouble(double by)
        : scale(SplatF64(by))
        , limits(MakeLimits(-1, 1)) {}
    AVEFFECT_INLINE U8 operator()(U8 bytes) const { return (U8)limits((F64)bytes * scale); }
};

// The bytes of each unit in the other order.
template <size_t UnitBytes>
AVEFFECT_INLINE U8 SwapBytes(U8 x) {
    x = (U8)((U16)x << 8 | (U16)x >> 8);
    if constexpr (UnitBytes > 2) x = (U8)((U32)x << 16 | (U32)x >> 16);
    if constexpr (UnitBytes > 4)
#if AVEFFECT_LANE_BYTES == 64
        x = (U8)_mm512_maskz_shuffle_epi32(0xFFFF, (__m512i)x, (_MM_PERM_ENUM)0xB1);
#else
        x = (U8)AVEFFECT_OP(shuffle_epi32)((Register)x, 0xB1);
#endif
    return x;
}

template <class Scale, size_t SampleBytes>
void ScaleRange(uint8_t* samples, size_t count, double scale) noexcept {
    ForSamples<SampleBytes>(samples, count, Scale(scale));
}

template <class Scale, size_t SampleBytes>
struct Swapped {
    Scale scale;
    AVEFFECT_INLINE U8 operator()(U8 bytes) const {
        return SwapBytes<SampleBytes>(scale(SwapBytes<SampleBytes>(bytes)));
    }
};

template <class Scale, size_t SampleBytes>
void ScaleSwappedRange(uint8_t* samples, size_t count, double scale) noexcept {
    ForSamples<SampleBytes>(samples, count, Swapped<Scale, SampleBytes>{Scale(scale)});
}

void AmplifyRange16(uint8_t* samples, size_t count, int16_t gain) noexcept {
    if (gain >= -128 && gain < 384)
        ForSamples<2>(samples, count, AmplifyNear16(gain));
    else
        ForSamples<2>(samples, count, Amplify16{SplatI16(gain)});
}

constexpr SoundKernels kKernels = {
    AmplifyRange16,
    {nullptr, ScaleRange<ScaleSigned8, 1>, ScaleRange<ScaleUnsigned8, 1>, ScaleRange<ScaleSigned16, 2>,
     ScaleRange<ScaleUnsigned16, 2>, nullptr, nullptr, ScaleRange<ScaleSigned32, 4>,
     ScaleRange<ScaleUnsigned32, 4>, ScaleRange<ScaleFloat, 4>, ScaleRange<ScaleDouble, 8>},
    {nullptr, ScaleRange<ScaleSigned8, 1>, ScaleRange<ScaleUnsigned8, 1>, ScaleSwappedRange<ScaleSigned16, 2>,
     ScaleSwappedRange<ScaleUnsigned16, 2>, nullptr, nullptr, ScaleSwappedRange<ScaleSigned32, 4>,
     ScaleSwappedRange<ScaleUnsigned32, 4>, ScaleSwappedRange<ScaleFloat, 4>,
     ScaleSwappedRange<ScaleDouble, 8>}};
