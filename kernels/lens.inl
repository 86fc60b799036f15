// Bodies of the lens kernels, for one level. All arithmetic is of 32 bits.

constexpr size_t kPlaces = kLanes / 4; // of a register
constexpr uint32_t kCounting[16] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};

AVEFFECT_INLINE U32 ShiftRight(U32 x, int bits) { return (U32)((I32)x >> bits); }

typedef double Doubles __attribute__((vector_size(kLanes)));
typedef int32_t HalfWords __attribute__((vector_size(kLanes / 2)));

AVEFFECT_INLINE bool AllBelow(U32 numbers, uint32_t limit) {
#if AVEFFECT_LANE_BYTES == 64
    return _mm512_cmpge_epu32_mask((__m512i)numbers, (__m512i)Splat32(limit)) == 0;
#else
    return IsZero((U8)(numbers >= limit));
#endif
}

// The quotients of signed 32-bit numbers, truncated. By 0 it is any. With divisors from 0 to 2^29, those
// below 2^20 are off by at most one in single precision, which the remainder tells. Those of doubles lie near
// enough.
AVEFFECT_INLINE U32 Quotients(int32_t dividend, U32 divisors, bool smallDivisors) {
    const uint32_t sign = dividend < 0 ? 0xFFFFFFFF : 0;
    const uint32_t size = (static_cast<uint32_t>(dividend) ^ sign) - sign;
    constexpr uint32_t kTooLarge = 0x49800000; // 2^20; infinity lies above
    const F32 near = SplatF32(static_cast<float>(size)) / ToFloat((I32)divisors);
    if (smallDivisors && AllBelow((U32)near, kTooLarge)) {
        U32 quotients = (U32)Truncated(near);
        const I32 rest = (I32)(size - quotients * divisors);
        quotients += (U32)(rest < 0);
        quotients -= (U32)(rest >= (I32)divisors);
        return (quotients ^ sign) - sign;
    }
    HalfWords halves[2];
    std::memcpy(halves, &divisors, sizeof divisors);
    for (HalfWords& half : halves)
        half = __builtin_convertvector(dividend / __builtin_convertvector(half, Doubles), HalfWords);
    return Load<U32>(halves);
}

// Numbers without sign modulo a size. The product with the inverse is off by far less than 1 / size, so that
// the quotient is right, or one less where nothing remains.
AVEFFECT_INLINE U32 Remainders(U32 numbers, uint32_t size) {
    if (size == 1) return U32{}; // quotients of 32 bits
    HalfWords halves[2];
    const U32 lowered = numbers - 0x80000000u; // there are conversions from signed numbers alone
    std::memcpy(halves, &lowered, sizeof lowered);
    for (HalfWords& half : halves)
        half = __builtin_convertvector((__builtin_convertvector(half, Doubles) + 2147483648.0) * (1.0 / size),
                                       HalfWords);
    numbers -= Load<U32>(halves) * size;
    return Min(numbers, numbers - size);
}

// From places about the middle to places of the picture. Most lie in it or next to it.
struct Wrapper {
    uint32_t size;
    uint32_t middle; // added to a place

    AVEFFECT_INLINE U32 operator()(U32 place) const {
        place += middle;
        place = Min(place, place - size); // which wraps below it
        place = Min(place, place - size);
        return AllBelow(place, size) ? place : Remainders(place, size);
    }
};

// Writes a register of places from x on, those inside the row.
AVEFFECT_INLINE void StorePlaces(uint32_t* to, size_t x, size_t width, U32 places) {
    if (x + kPlaces <= width)
        Store(to + x, places);
    else if (x < width) {
        const U32 last = places; // has an address, and no register
        std::memcpy(to + x, &last, (width - x) * sizeof *to);
    }
}

// Entries of a table. The baseline has no instruction for it.
AVEFFECT_INLINE U32 Gather(const int32_t* table, U32 indices) {
#if AVEFFECT_LANE_BYTES == 64
    return (U32)_mm512_mask_i32gather_epi32(__m512i{}, 0xFFFF, (__m512i)indices, table, 4);
#elif AVEFFECT_LANE_BYTES == 32
    return (U32)_mm256_i32gather_epi32(table, (__m256i)indices, 4);
#else
    U32 entries;
    for (size_t i = 0; i < kPlaces; ++i) entries[i] = static_cast<uint32_t>(table[indices[i]]);
    return entries;
#endif
}

#ifdef AVEFFECT_HAS_TABLES
// The bends by their bytes: a row takes many of them, and picking from registers is faster than gathering.
struct BendTable {
    static constexpr size_t kAtOnce = 4; // registers that are looked up
    U8 bytes[4][TileLens::kBends / 64];  // of each entry's byte 0, 1, 2, 3

    AVEFFECT_INLINE explicit BendTable(const int32_t* bends) {
        alignas(64) uint8_t apart[4][TileLens::kBends];
        for (size_t i = 0; i < TileLens::kBends; i += kPlaces) {
            const U32 entries = Load<U32>(bends + i);
            AVEFFECT_UNROLL
            for (size_t byte = 0; byte < 4; ++byte) {
                const __m128i narrow = _mm512_maskz_cvtepi32_epi8(0xFFFF, (__m512i)(entries >> 8 * byte));
                std::memcpy(apart[byte] + i, &narrow, sizeof narrow);
            }
        }
        std::memcpy(bytes, apart, sizeof bytes);
    }

    // Replaces indices by their entries.
    AVEFFECT_INLINE void LookUp(U32* indices) const {
        // Within 16 bytes: those of register 0, 1, 2, 3. Joining brings them back to where they came from.
        const __m512i picks =
            _mm512_packus_epi16(_mm512_packus_epi32((__m512i)indices[0], (__m512i)indices[1]),
                                _mm512_packus_epi32((__m512i)indices[2], (__m512i)indices[3]));
        const __mmask64 beyond = _mm512_movepi8_mask(picks);
        __m512i found[4];
        AVEFFECT_UNROLL
        for (size_t byte = 0; byte < 4; ++byte) {
            const __m512i low =
                _mm512_permutex2var_epi8((__m512i)bytes[byte][0], picks, (__m512i)bytes[byte][1]);
            found[byte] = _mm512_mask_permutexvar_epi8(low, beyond, picks, (__m512i)bytes[byte][2]);
        }
        const __m512i early01 = _mm512_unpacklo_epi8(found[0], found[1]),
                      early23 = _mm512_unpacklo_epi8(found[2], found[3]),
                      late01 = _mm512_unpackhi_epi8(found[0], found[1]),
                      late23 = _mm512_unpackhi_epi8(found[2], found[3]);
        indices[0] = (U32)_mm512_unpacklo_epi16(early01, early23);
        indices[1] = (U32)_mm512_unpackhi_epi16(early01, early23);
        indices[2] = (U32)_mm512_unpacklo_epi16(late01, late23);
        indices[3] = (U32)_mm512_unpackhi_epi16(late01, late23);
    }
};
#else
struct BendTable {
    static constexpr size_t kAtOnce = 1;
    const int32_t* bends;

    AVEFFECT_INLINE explicit BendTable(const int32_t* table)
        : bends(table) {}
    AVEFFECT_INLINE void LookUp(U32* indices) const { indices[0] = Gather(bends, indices[0]); }
};
#endif

AVEFFECT_INLINE U32 BendIndex(U32 along, uint32_t zoom) {
    constexpr int32_t kQuarter = TileLens::kQuarterTurn;
    const I32 degrees = (I32)(along * zoom) >> 23;
    return (U32)(degrees + kQuarter + ((degrees < -kQuarter) & 2 * kQuarter) -
                 ((degrees > kQuarter) & 2 * kQuarter));
}

AVEFFECT_INLINE void Bend(const BendTable& table, U32* along, uint32_t zoom) {
    U32 bends[BendTable::kAtOnce];
    AVEFFECT_UNROLL
    for (size_t i = 0; i < BendTable::kAtOnce; ++i) bends[i] = BendIndex(along[i], zoom);
    table.LookUp(bends);
    AVEFFECT_UNROLL
    for (size_t i = 0; i < BendTable::kAtOnce; ++i) along[i] = ShiftRight(bends[i] + along[i], 15);
}

void TileRow(const TileLens& lens, uint32_t y, size_t count, uint32_t* columns, uint32_t* rows) noexcept {
    const uint32_t sine = static_cast<uint32_t>(lens.sine), cosine = static_cast<uint32_t>(lens.cosine);
    const uint32_t zoom = static_cast<uint32_t>(lens.zoom);
    // Once around, which brings most places left of the picture into it.
    const Wrapper wrapColumn = {lens.size.width, lens.size.width / 2 + lens.size.width};
    const Wrapper wrapRow = {lens.size.height, lens.size.height / 2 + lens.size.height};
    const uint32_t dy = y - lens.size.height / 2;
    const BendTable table(lens.bends);
    constexpr size_t kAtOnce = BendTable::kAtOnce;
    U32 dx = Load<U32>(kCounting) - lens.size.width / 2;
    for (size_t x = 0; x < count; x += kAtOnce * kPlaces) {
        U32 u[kAtOnce], v[kAtOnce];
        AVEFFECT_UNROLL
        for (size_t i = 0; i < kAtOnce; ++i, dx += kPlaces) {
            u[i] = dx * cosine + sine * dy;
            v[i] = cosine * dy - dx * sine;
        }
        Bend(table, u, zoom);
        Bend(table, v, zoom);
        AVEFFECT_UNROLL
        for (size_t i = 0; i < kAtOnce; ++i) {
            StorePlaces(columns, x + i * kPlaces, count,
                        wrapColumn(ShiftRight(u[i] * cosine - v[i] * sine, 15)));
            StorePlaces(rows, x + i * kPlaces, count, wrapRow(ShiftRight(v[i] * cosine + u[i] * sine, 15)));
        }
    }
}

void InversionRow(LensSize size, int32_t power, uint32_t y, size_t count, uint32_t* columns,
                  uint32_t* rows) noexcept {
    const Wrapper wrapColumn = {size.width, size.width / 2}, wrapRow = {size.height, size.height / 2};
    const bool smallDivisors = size.width <= 32768 && size.height <= 32768; // half of them squared
    const uint32_t dy = y - size.height / 2;
    U32 dx = Load<U32>(kCounting) - size.width / 2;
    for (size_t x = 0; x < count; x += kPlaces, dx += kPlaces) {
        const U32 factors = Quotients(power, dx * dx + dy * dy, smallDivisors);
        StorePlaces(columns, x, count, wrapColumn(ShiftRight(dx * factors, 8)));
        StorePlaces(rows, x, count, wrapRow(ShiftRight(factors * dy, 8)));
    }
}

// Entries of a table by distance, from dx on.
AVEFFECT_INLINE U32 ByDistance(const void* table, int32_t dx) {
    const auto* const entries = static_cast<const uint32_t*>(table);
    const int32_t last = dx + static_cast<int32_t>(kPlaces) - 1;
    if (dx >= 0) return Load<U32>(entries + dx);
    if (last <= 0) return (U32)ReversePixels(Load<U8>(entries - last));
    uint32_t both[kPlaces];
    for (int32_t i = dx; i <= last; ++i) both[i - dx] = entries[i < 0 ? -i : i];
    return Load<U32>(both);
}

void ScaledRow(const RowAround& row, const int32_t* factors, uint32_t* columns, uint32_t* rows) noexcept {
    U32 dx = Load<U32>(kCounting) + static_cast<uint32_t>(row.dx);
    for (size_t i = 0; i < row.count; i += kPlaces, dx += kPlaces) {
        const U32 factor = ByDistance(factors, row.dx + static_cast<int32_t>(i));
        StorePlaces(columns, i, row.count, ShiftRight(dx * factor, 8) + static_cast<uint32_t>(row.x));
        StorePlaces(rows, i, row.count,
                    ShiftRight(factor * static_cast<uint32_t>(row.dy), 8) + static_cast<uint32_t>(row.y));
    }
}

void TurnedRow(const RowAround& row, float radius, const float* sines, const float* cosines,
               uint32_t* columns, uint32_t* rows) noexcept {
    const float x = static_cast<float>(row.x), y = static_cast<float>(row.y);
    const float ny = static_cast<float>(row.dy) / radius;
    U32 dx = Load<U32>(kCounting) + static_cast<uint32_t>(row.dx);
    for (size_t i = 0; i < row.count; i += kPlaces, dx += kPlaces) {
        const int32_t first = row.dx + static_cast<int32_t>(i);
        const F32 sine = (F32)ByDistance(sines, first), cosine = (F32)ByDistance(cosines, first);
        const F32 nx = ToFloat((I32)dx) / radius;
        const U8 own = (U8)(sine == 0);
        const U32 column = (U32)Truncated((nx * cosine - ny * sine) * radius + x);
        const U32 line = (U32)Truncated(y + (ny * cosine + nx * sine) * radius);
        StorePlaces(columns, i, row.count,
                    (U32)Select(own, (U8)(dx + static_cast<uint32_t>(row.x)), (U8)column));
        StorePlaces(rows, i, row.count,
                    (U32)Select(own, (U8)Splat32(static_cast<uint32_t>(row.y + row.dy)), (U8)line));
    }
}

constexpr LensKernels kKernels = {TileRow, InversionRow, ScaledRow, TurnedRow};
