// Bodies of the transition kernels, for one level.

// Fewer bytes than twice Part, by the largest part that they hold, and again, overlapping.
template <size_t Part>
AVEFFECT_INLINE void CopyShort(uint8_t* to, const uint8_t* from, size_t bytes) {
    if (bytes < Part) {
        if constexpr (Part > 1) CopyShort<Part / 2>(to, from, bytes);
        return;
    }
    uint8_t head[Part], tail[Part];
    std::memcpy(head, from, Part);
    std::memcpy(tail, from + bytes - Part, Part);
    std::memcpy(to, head, Part);
    std::memcpy(to + bytes - Part, tail, Part);
}

// Parts of rows are often too short to be worth a call.
AVEFFECT_INLINE void CopyBytes(uint8_t* to, const uint8_t* from, size_t bytes) {
    if (bytes < kLanes) {
        CopyShort<kLanes / 2>(to, from, bytes);
        return;
    }
    for (size_t x = 0; x + kLanes < bytes; x += kLanes) Store(to + x, Load<U8>(from + x));
    Store(to + bytes - kLanes, Load<U8>(from + bytes - kLanes));
}

void OverlayRuns(Plane8 out, Plane8 under, Plane8 over, const Run* runs, size_t count) noexcept {
    for (size_t y = 0; y < out.rows; ++y) {
        uint8_t* const to = out.Row(y);
        const uint8_t *const below = under.Row(y), *const above = over.Row(y);
        size_t at = 0;
        for (const Run* run = runs; run != runs + count; ++run) {
            if (run->begin >= run->end) continue;
            const size_t gapEnd = run->begin < under.width ? run->begin : under.width;
            if (at < gapEnd) CopyBytes(to + at, below + at, gapEnd - at);
            CopyBytes(to + run->begin, above + run->from, run->end - run->begin);
            at = run->end;
        }
        if (at < under.width) CopyBytes(to + at, below + at, under.width - at);
    }
}

void OverlayStripes(Plane8 out, Plane8 under, Plane8 over, size_t begin, size_t bytes) noexcept {
    for (size_t y = 0; y < out.rows; ++y) {
        uint8_t* const to = out.Row(y);
        const uint8_t *const below = under.Row(y), *const above = over.Row(y);
        size_t at = 0;
        for (size_t x = begin; x < over.width; x += 2 * bytes) {
            const size_t end = x + bytes < over.width ? x + bytes : over.width;
            CopyBytes(to + at, below + at, x - at);
            CopyBytes(to + x, above + x, end - x);
            at = end;
        }
        CopyBytes(to + at, below + at, under.width - at);
    }
}

// Draws a row from two others, register by register: op(old, a, b). The last register overlaps its
// neighbour, so results may not depend on old bytes that they replace; shorter rows go through a buffer.
template <class Op>
AVEFFECT_INLINE void ForRowFrom(uint8_t* out, const uint8_t* a, const uint8_t* b, size_t width,
                                const Op& op) {
    if (width < kLanes) {
        U8 whole{}, wholeA{}, wholeB{};
        std::memcpy(&whole, out, width);
        std::memcpy(&wholeA, a, width);
        std::memcpy(&wholeB, b, width);
        whole = op(whole, wholeA, wholeB);
        std::memcpy(out, &whole, width);
        return;
    }
    for (size_t x = 0; x < width; x += kLanes) {
        const size_t at = x + kLanes <= width ? x : width - kLanes;
        Store(out + at, op(Load<U8>(out + at), Load<U8>(a + at), Load<U8>(b + at)));
    }
}

template <class Op>
AVEFFECT_INLINE void ForPlaneFrom(Plane32 out, Plane32 first, Plane32 second, const Op& op) {
    for (size_t y = 0; y < out.rows; ++y)
        ForRowFrom(out.Row(y), first.Row(y), second.Row(y), out.width * 4, op);
}

struct TakeFirst {
    AVEFFECT_INLINE U8 operator()(U8 old, U8 a, U8) const { return Select(AlphaMask(), old, a); }
};
struct TakeSecond {
    AVEFFECT_INLINE U8 operator()(U8 old, U8, U8 b) const { return Select(AlphaMask(), old, b); }
};

// The definition, step by step.
struct FadeInDoubles {
    double rest, progress;

    AVEFFECT_INLINE U8 Colours(U8 a, U8 b) const {
        uint8_t firsts[kLanes], seconds[kLanes], sums[kLanes];
        Store(firsts, a);
        Store(seconds, b);
        AVEFFECT_UNROLL
        for (size_t i = 0; i < kLanes; i += kLanes / 8) {
            const F64 products = LoadDoubles(firsts + i) * rest;
            StoreCut(sums + i, products + LoadDoubles(seconds + i) * progress);
        }
        return Load<U8>(sums);
    }
    AVEFFECT_INLINE U8 operator()(U8 old, U8 a, U8 b) const {
        return Select(AlphaMask(), old, Colours(a, b));
    }
};

AVEFFECT_INLINE uint8_t FadeByte(uint32_t a, uint32_t b, double progress) {
    return static_cast<uint8_t>(a * (1 - progress) + b * progress);
}

// Between 0 and 1 the result is the smaller sample and the whole part of the difference times the weight of
// the larger one. Which whole numbers the multiples of a weight reach, up to 255 times, depends only on the
// two fractions with denominators up to 255 that it lies between. Those are more than a 65536th from each
// other, so a number of 65536ths lies there as well, and with it sixteen bits give what doubles do.
//
// Only where a multiple is a whole number but for rounding can doubles fall short of it. The 65536ths are
// then just above the weight: what remains of such a multiple is below 256.
struct FadeWeights {
    uint16_t first, second; // of the pictures
    bool fallsShort;        // whether any pair of samples does
};

constexpr double kRounding = 1e-11; // far more than rounding makes; no multiple is as close but not whole

AVEFFECT_INLINE bool IsClose(uint32_t k, double weight) {
    const double multiple = k * weight + kRounding;
    return multiple - static_cast<uint32_t>(multiple) < 2 * kRounding;
}

// False where there is no such number.
AVEFFECT_INLINE bool In65536ths(double weight, uint16_t* result) {
    uint32_t least = 0, most = 65535;
    bool close = false;
    for (uint32_t k = 1; k < 256; ++k) {
        const auto whole = static_cast<uint32_t>(k * weight + kRounding);
        const uint32_t from = (whole * 65536 + k - 1) / k, below = ((whole + 1) * 65536 + k - 1) / k;
        least = from > least ? from : least;
        most = below - 1 < most ? below - 1 : most;
        close = close || IsClose(k, weight);
    }
    const auto nearest = static_cast<uint32_t>(weight * 65536);
    *result = static_cast<uint16_t>(close || nearest < least ? least : nearest > most ? most : nearest);
    return least <= most;
}

AVEFFECT_INLINE bool FallsShort(const FadeWeights& weights, double progress) {
    for (uint32_t k = 0; k < 256; ++k) {
        if (!IsClose(k, progress)) continue;
        const uint32_t up = (k * weights.second) >> 16, down = (k * weights.first) >> 16;
        for (uint32_t a = 0; a + k < 256; ++a)
            if (FadeByte(a, a + k, progress) != a + up || FadeByte(a + k, a, progress) != a + down)
                return true;
    }
    return false;
}

AVEFFECT_INLINE bool MakeWeights(double progress, FadeWeights* weights) {
    if (!In65536ths(1 - progress, &weights->first) || !In65536ths(progress, &weights->second)) return false;
    weights->fallsShort = FallsShort(*weights, progress);
    return true;
}

// MayFallShort: registers in which a sample may fall short are computed in doubles.
template <bool MayFallShort>
struct FadeInLanes {
    U16 first, second;
    FadeInDoubles exact;

    AVEFFECT_INLINE U8 operator()(U8 old, U8 a, U8 b) const {
        const U8 firstMore = SubSaturated(a, b), secondMore = SubSaturated(b, a);
        const U16 even1 = Even(firstMore), odd1 = Odd(firstMore);
        const U16 even2 = Even(secondMore), odd2 = Odd(secondMore);
        if constexpr (MayFallShort) {
            const U16 even = even1 * first + even2 * second, odd = odd1 * first + odd2 * second;
            const U8 remains = (U8)((even >> 8) | (odd & 0xFF00));
            if (!IsZero((U8)(remains == U8{}) & ~AlphaMask())) return exact(old, a, b);
        }
        const U16 even = MultiplyHigh(even1, first) + MultiplyHigh(even2, second);
        const U16 odd = MultiplyHigh(odd1, first) + MultiplyHigh(odd2, second);
        return Select(AlphaMask(), old, a - firstMore + Join(even, odd));
    }
};

#ifdef AVEFFECT_HAS_TABLES
// Each product is a whole part and a rest, and two rests together make one more or not. Which of them do is,
// for nearly every progress, a matter of order: ranks that fit in a byte tell it, rounding included.
struct FadeTables {
    uint8_t firstWhole[256], firstRank[256], secondWhole[256], secondRank[256];
};

// Counts for every first sample with how many second ones it makes one more; a second sample's rank is one
// below the least of these counts. False where the ranks do not tell the whole truth.
AVEFFECT_INLINE bool MakeTables(double progress, FadeTables* tables) {
    const double rest = 1 - progress;
    double products[256], nextWholes[256];
    for (uint32_t i = 0; i < 256; ++i) {
        products[i] = i * progress;
        tables->firstWhole[i] = static_cast<uint8_t>(i * rest);
        tables->secondWhole[i] = static_cast<uint8_t>(products[i]);
        tables->secondRank[i] = 255;
        nextWholes[i] = tables->secondWhole[i] + 1.0;
    }
    bool twoMore = false;
    for (uint32_t a = 0; a < 256; ++a) {
        const F64 product = F64{} + a * rest, whole = F64{} + tables->firstWhole[a];
        uint64_t oneMore[4] = {};
        for (uint32_t b = 0; b < 256; b += 8) {
            const F64 sums = product + Load<F64>(products + b), next = whole + Load<F64>(nextWholes + b);
            const uint64_t reached = _mm512_cmp_pd_mask((__m512d)sums, (__m512d)next, _CMP_GE_OQ);
            twoMore = twoMore || _mm512_cmp_pd_mask((__m512d)sums, (__m512d)(next + 1), _CMP_GE_OQ) != 0;
            oneMore[b / 64] |= reached << b % 64;
        }
        int count = 0;
        for (const uint64_t bits : oneMore) count += __builtin_popcountll(bits);
        tables->firstRank[a] = static_cast<uint8_t>(count); // a second sample of 0 makes none, so 255 at most
        for (size_t i = 0; i < 4 && count > 0; ++i) {
            uint8_t* const ranks = tables->secondRank + i * 64;
            const __m512i least = (__m512i)Splat8(static_cast<uint8_t>(count - 1)),
                          old = (__m512i)Load<U8>(ranks);
            Store(ranks, (U8)_mm512_mask_min_epu8(old, oneMore[i], old, least));
        }
    }
    uint32_t below[257] = {}; // of the second samples, those whose rank is below
    for (const uint8_t rank : tables->secondRank) ++below[rank + 1];
    for (size_t i = 0; i < 256; ++i) below[i + 1] += below[i];
    bool ordered = !twoMore;
    for (const uint8_t rank : tables->firstRank) ordered = ordered && below[rank] == rank;
    return ordered;
}

AVEFFECT_INLINE ByteTable LoadTable(const uint8_t* bytes) {
    return {{Load<U8>(bytes), Load<U8>(bytes + 64), Load<U8>(bytes + 128), Load<U8>(bytes + 192)}};
}

struct FadeByTables {
    ByteTable firstWhole, firstRank, secondWhole, secondRank;

    AVEFFECT_INLINE explicit FadeByTables(const FadeTables& tables)
        : firstWhole(LoadTable(tables.firstWhole))
        , firstRank(LoadTable(tables.firstRank))
        , secondWhole(LoadTable(tables.secondWhole))
        , secondRank(LoadTable(tables.secondRank)) {}

    AVEFFECT_INLINE U8 operator()(U8 old, U8 a, U8 b) const {
        const auto oneMore = _mm512_cmpgt_epu8_mask((__m512i)firstRank(a), (__m512i)secondRank(b));
        const __m512i sum = (__m512i)(firstWhole(a) + secondWhole(b));
        const U8 faded = (U8)_mm512_mask_add_epi8(sum, oneMore, sum, (__m512i)Splat8(1));
        return Select(AlphaMask(), old, faded);
    }
};

AVEFFECT_INLINE bool FadesByTables(Plane32 out, Plane32 first, Plane32 second, double progress) {
    FadeTables tables;
    if (!MakeTables(progress, &tables)) return false;
    ForPlaneFrom(out, first, second, FadeByTables(tables));
    return true;
}
#else
AVEFFECT_INLINE bool FadesByTables(Plane32, Plane32, Plane32, double) { return false; }
#endif

void CrossFadeRgba32(Plane32 out, Plane32 first, Plane32 second, double progress) noexcept {
    const FadeInDoubles exact = {1 - progress, progress};
    const bool between = progress > 0 && progress < 1;
    if (progress == 0) {
        ForPlaneFrom(out, first, second, TakeFirst{});
    } else if (progress == 1) {
        ForPlaneFrom(out, first, second, TakeSecond{});
    } else if (!between || !FadesByTables(out, first, second, progress)) {
        FadeWeights weights{};
        if (!between || !MakeWeights(progress, &weights)) {
            ForPlaneFrom(out, first, second, exact);
            return;
        }
        const U16 ofFirst = Splat16(weights.first), ofSecond = Splat16(weights.second);
        if (weights.fallsShort)
            ForPlaneFrom(out, first, second, FadeInLanes<true>{ofFirst, ofSecond, exact});
        else
            ForPlaneFrom(out, first, second, FadeInLanes<false>{ofFirst, ofSecond, exact});
    }
}

// A register of pixels, each times its column's gain. The gains' halves are alike, so they serve even and odd
// bytes.
AVEFFECT_INLINE U8 Brightened(U8 pixels, U16 whole, U16 fraction) {
    const U16 even = Even(pixels), odd = Odd(pixels);
    return Join(LimitToByte(even * whole + MultiplyHigh(even, fraction)),
                LimitToByte(odd * whole + MultiplyHigh(odd, fraction)));
}

AVEFFECT_INLINE U8 MirrorPixels(U8 old, U8 pixels, const uint32_t* whole, const uint32_t* fraction) {
    return Select(AlphaMask(), old, Brightened(ReversePixels(pixels), Load<U16>(whole), Load<U16>(fraction)));
}

// Rows shorter than a register: their pixels stand at its end, and so at its beginning once they are
// reversed.
AVEFFECT_INLINE void MirrorShortRow(uint8_t* out, const uint8_t* picture, size_t width, ColumnGains gains) {
    U8 pixels{}, old{};
    uint32_t whole[kLanes / 4] = {}, fraction[kLanes / 4] = {};
    std::memcpy(reinterpret_cast<uint8_t*>(&pixels) + kLanes - width * 4, picture, width * 4);
    std::memcpy(&old, out, width * 4);
    std::memcpy(whole, gains.whole, width * 4);
    std::memcpy(fraction, gains.fraction, width * 4);
    old = MirrorPixels(old, pixels, whole, fraction);
    std::memcpy(out, &old, width * 4);
}

void MirrorRgba32(Plane32 out, Plane32 picture, ColumnGains gains) noexcept {
    constexpr size_t kPixels = kLanes / 4;
    const size_t width = out.width;
    if (width == 0) return;
    for (size_t y = 0; y < out.rows; ++y) {
        uint8_t* const to = out.Row(y);
        const uint8_t* const from = picture.Row(y);
        if (width < kPixels) MirrorShortRow(to, from, width, gains);
        for (size_t x = 0; x < width && width >= kPixels; x += kPixels) {
            const size_t at = x + kPixels <= width ? x : width - kPixels;
            Store(to + at * 4,
                  MirrorPixels(Load<U8>(to + at * 4), Load<U8>(from + (width - at - kPixels) * 4),
                               gains.whole + at, gains.fraction + at));
        }
    }
}

constexpr TransitionKernels kKernels = {OverlayRuns, OverlayStripes, CrossFadeRgba32, MirrorRgba32};
