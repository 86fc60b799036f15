// Bodies of the stereo kernels, for one level.

AVEFFECT_INLINE size_t Least(size_t a, size_t b) { return a < b ? a : b; }

AVEFFECT_INLINE U8 AnaglyphPixels(U8 out, U8 left, U8 right) {
    const U8 red = (U8)Splat32(0x00FF0000u), alpha = AlphaMask();
    return Select(alpha, out, Select(red, left, right));
}

// The last register overlaps its neighbour, both made from the old bytes, since any of the rows may be the
// output's.
AVEFFECT_INLINE void AnaglyphRow(uint8_t* out, const uint8_t* left, const uint8_t* right, size_t width,
                                 const uint8_t* leftSoon, const uint8_t* rightSoon) {
    if (width < kLanes) {
        U8 o{}, l{}, r{};
        std::memcpy(&o, out, width);
        std::memcpy(&l, left, width);
        std::memcpy(&r, right, width);
        o = AnaglyphPixels(o, l, r);
        std::memcpy(out, &o, width);
        return;
    }
    const size_t end = width - kLanes;
    const U8 last = AnaglyphPixels(Load<U8>(out + end), Load<U8>(left + end), Load<U8>(right + end));
    for (size_t x = 0; x < end; x += kLanes) {
        Prefetch(leftSoon + x);
        Prefetch(rightSoon + x);
        Store(out + x, AnaglyphPixels(Load<U8>(out + x), Load<U8>(left + x), Load<U8>(right + x)));
    }
    Store(out + end, last);
}

void AnaglyphRgba32(Plane32 out, Plane32 left, Plane32 right) noexcept {
    const size_t width = Least(out.width, Least(left.width, right.width)) * 4;
    const size_t rows = Least(out.rows, Least(left.rows, right.rows));
    if (width == 0) return;
    for (size_t y = 0; y < rows; ++y)
        AnaglyphRow(out.Row(y), left.Row(y), right.Row(y), width, left.Row(y) + left.pitch,
                    right.Row(y) + right.pitch);
}

typedef uint8_t HalfU8 __attribute__((vector_size(kLanes / 2)));
constexpr size_t kHalf = kLanes / 2;

// What a chroma sample adds to each of its pixels' colours, in 16-bit lanes. The sums of the formulas have up
// to 18 bits; with their multiples of 256 taken out, 16 are enough: 298 = 256 + 42, 409 = 256 + 153, 208 =
// 256 - 48, 516 = 512 + 4.
struct ChromaTerms {
    I16 red, redFraction;
    I16 green, greenFraction;
    I16 blue, blueFraction;

    AVEFFECT_INLINE ChromaTerms(I16 leftV, I16 u, I16 v)
        : red(leftV)
        , redFraction(leftV * 153 + 128)
        , green(-v)
        , greenFraction(v * 48 - u * 100 + 128)
        , blue(u + u)
        , blueFraction(u * 4 + 128) {}
};

struct Colours {
    I16 r, g, b;

    // Luma of the two views.
    AVEFFECT_INLINE Colours(U16 leftLuma, U16 rightLuma, const ChromaTerms& chroma) {
        const I16 left = (I16)leftLuma - 16, right = (I16)rightLuma - 16;
        const I16 leftFraction = left * 42, rightFraction = right * 42;
        r = left + chroma.red + ((leftFraction + chroma.redFraction) >> 8);
        g = right + chroma.green + ((rightFraction + chroma.greenFraction) >> 8);
        b = right + chroma.blue + ((rightFraction + chroma.blueFraction) >> 8);
    }
    // Only bits 8 to 15 of these sums count, so they may wrap. The result stands in the high byte.
    AVEFFECT_INLINE U16 Luma() const { return (U16)(r * 66 + g * 129 + b * 25) + (128 + 16 * 256); }
    AVEFFECT_INLINE U16 U() const { return (U16)(b * 112 - r * 38 - g * 74) + (128 + 128 * 256); }
    AVEFFECT_INLINE U16 V() const { return (U16)(r * 112 - g * 94 - b * 18) + (128 + 128 * 256); }
};

// Half a register of chroma samples less 128, from column x on.
AVEFFECT_INLINE I16 LoadChroma(const Plane8& plane, size_t row, size_t x) {
    const uint8_t* const from = plane.Row(Least(row, plane.rows - 1));
    if (x + kHalf <= plane.width) return (I16) __builtin_convertvector(Load<HalfU8>(from + x), U16) - 128;
    uint8_t samples[kHalf];
    for (size_t i = 0; i < kHalf; ++i) samples[i] = from[Least(x + i, plane.width - 1)];
    return (I16) __builtin_convertvector(Load<HalfU8>(samples), U16) - 128;
}

// As many samples from column x on as the plane has.
AVEFFECT_INLINE void StoreChroma(const Plane8& plane, size_t row, size_t x, size_t count, U16 highBytes) {
    if (row >= plane.rows || x >= plane.width) return;
    const HalfU8 samples = __builtin_convertvector(highBytes >> 8, HalfU8);
    count = Least(count, plane.width - x);
    if (count == kHalf)
        Store(plane.Row(row) + x, samples);
    else
        std::memcpy(plane.Row(row) + x, &samples, count);
}

AVEFFECT_INLINE U8 LoadLuma(const uint8_t* from, size_t count) {
    if (count == kLanes) return Load<U8>(from);
    U8 samples{};
    std::memcpy(&samples, from, count);
    return samples;
}

AVEFFECT_INLINE void StoreLuma(uint8_t* to, U16 even, U16 odd, size_t count) {
    const U8 samples = (U8)(even >> 8 | (odd & 0xFF00));
    if (count == kLanes)
        Store(to, samples);
    else
        std::memcpy(to, &samples, count);
}

// An even row and, if there is one, the row below it, up to a register's width. All is read before anything
// is written.
AVEFFECT_INLINE void AnaglyphBlock(const YuvPlanes& out, const YuvPlanes& left, const YuvPlanes& right,
                                   size_t x, size_t y, size_t count, bool hasBelow) {
    const ChromaTerms chroma(LoadChroma(left.v, y / 2, x / 2), LoadChroma(right.u, y / 2, x / 2),
                             LoadChroma(right.v, y / 2, x / 2));
    const size_t below = hasBelow ? y + 1 : y;
    const U8 l0 = LoadLuma(left.y.Row(y) + x, count), r0 = LoadLuma(right.y.Row(y) + x, count);
    const U8 l1 = LoadLuma(left.y.Row(below) + x, count), r1 = LoadLuma(right.y.Row(below) + x, count);
    const Colours even(Even(l0), Even(r0), chroma), odd(Odd(l0), Odd(r0), chroma);
    StoreLuma(out.y.Row(y) + x, even.Luma(), odd.Luma(), count);
    StoreChroma(out.u, y / 2, x / 2, (count + 1) / 2, even.U());
    StoreChroma(out.v, y / 2, x / 2, (count + 1) / 2, even.V());
    if (!hasBelow) return;
    const Colours belowEven(Even(l1), Even(r1), chroma), belowOdd(Odd(l1), Odd(r1), chroma);
    StoreLuma(out.y.Row(below) + x, belowEven.Luma(), belowOdd.Luma(), count);
}

// From the lower right corner: where chroma planes end early, what lies beyond needs their last row and
// column, which may be overwritten.
void AnaglyphYuv(const YuvPlanes& out, const YuvPlanes& left, const YuvPlanes& right) noexcept {
    const size_t width = Least(out.y.width, Least(left.y.width, right.y.width));
    const size_t rows = Least(out.y.rows, Least(left.y.rows, right.y.rows));
    const size_t rest = width % kLanes;
    for (size_t y = (rows + 1) / 2 * 2; y > 0; y -= 2) {
        const bool hasBelow = y <= rows;
        if (rest) AnaglyphBlock(out, left, right, width - rest, y - 2, rest, hasBelow);
        for (size_t x = width - rest; x > 0; x -= kLanes)
            AnaglyphBlock(out, left, right, x - kLanes, y - 2, kLanes, hasBelow);
    }
}

// A register of every second unit. The count of those to make is at most that; so many are there to read.
template <size_t Bytes>
AVEFFECT_INLINE void HalveRest(uint8_t* to, const uint8_t* from, size_t count, size_t available) {
    U8 in[2] = {}, out;
    std::memcpy(in, from, Least(2 * count, available) * Bytes);
    out = EvenUnits<Bytes>(in[0], in[1]);
    std::memcpy(to, &out, count * Bytes);
}

template <size_t Bytes>
AVEFFECT_INLINE void HalveWhole(uint8_t* to, const uint8_t* from, const uint8_t* soon) {
    Prefetch(soon);
    Prefetch(soon + kLanes);
    Store(to, EvenUnits<Bytes>(Load<U8>(from), Load<U8>(from + kLanes)));
}

// Every second unit of a row with so many of them. Both rows may be in one place: forwards when what is made
// begins where the row does, backwards when it begins in its middle.
template <size_t Bytes, bool Backwards>
AVEFFECT_INLINE void HalveRow(uint8_t* to, const uint8_t* from, size_t count, size_t available,
                              const uint8_t* soon) {
    const size_t whole = Least(count, available / 2) * Bytes / kLanes * kLanes;
    const size_t rest = count - whole / Bytes;
    if (Backwards && rest)
        HalveRest<Bytes>(to + whole, from + 2 * whole, rest, available - 2 * whole / Bytes);
    for (size_t done = 0; done < whole; done += kLanes) {
        const size_t at = Backwards ? whole - kLanes - done : done;
        HalveWhole<Bytes>(to + at, from + 2 * at, soon + 2 * at);
    }
    if (!Backwards && rest)
        HalveRest<Bytes>(to + whole, from + 2 * whole, rest, available - 2 * whole / Bytes);
}

template <size_t Bytes>
AVEFFECT_INLINE void SideBySide(Plane8 out, Plane8 left, Plane8 right) {
    const size_t width = out.width / Bytes, half = (width + 1) / 2;
    const size_t leftWidth = left.width / Bytes, rightWidth = right.width / Bytes;
    const size_t leftCount = Least(half, (leftWidth + 1) / 2);
    const size_t rightCount = Least(width - half, (rightWidth + 1) / 2);
    const bool overRight = out.data == right.data;
    for (size_t y = 0; y < out.rows; ++y) {
        uint8_t* const to = out.Row(y);
        if (overRight && y < right.rows)
            HalveRow<Bytes, true>(to + half * Bytes, right.Row(y), rightCount, rightWidth,
                                  right.Row(y) + right.pitch);
        if (y < left.rows)
            HalveRow<Bytes, false>(to, left.Row(y), leftCount, leftWidth, left.Row(y) + left.pitch);
        if (!overRight && y < right.rows)
            HalveRow<Bytes, false>(to + half * Bytes, right.Row(y), rightCount, rightWidth,
                                   right.Row(y) + right.pitch);
    }
}

void SideBySideRgba32(Plane32 out, Plane32 left, Plane32 right) noexcept {
    SideBySide<4>(out.Bytes(), left.Bytes(), right.Bytes());
}
void SideBySideComponent(Plane8 out, Plane8 left, Plane8 right) noexcept { SideBySide<1>(out, left, right); }

// Row y of the output from row 2 (y - first) of the view.
AVEFFECT_INLINE void CopyEvenRow(const Plane8& out, const Plane8& view, size_t y, size_t first) {
    const size_t from = 2 * (y - first), width = Least(out.width, view.width);
    if (from >= view.rows || width == 0 || out.Row(y) == view.Row(from)) return;
    std::memcpy(out.Row(y), view.Row(from), width);
}

// What is read lies further on than what is written from the top, and not as far as what is written from the
// bottom, so that either view may be overwritten.
void TopAndBottomComponent(Plane8 out, Plane8 left, Plane8 right) noexcept {
    const size_t half = out.rows / 2;
    const bool overRight = out.data == right.data;
    for (size_t y = out.rows; overRight && y > half; --y) CopyEvenRow(out, right, y - 1, half);
    for (size_t y = 0; y < half; ++y) CopyEvenRow(out, left, y, 0);
    for (size_t y = half; !overRight && y < out.rows; ++y) CopyEvenRow(out, right, y, half);
}

// Bits of the colours that come from further to the right, for a register that begins with R, G or B.
struct ShiftMasks {
    U8 at[3];

    AVEFFECT_INLINE explicit ShiftMasks(bool blueToo) {
        uint8_t pattern[kLanes + 2];
        for (size_t i = 0; i < sizeof pattern; ++i)
            pattern[i] = i % 3 == 0 || (blueToo && i % 3 == 2) ? 0xFF : 0;
        for (size_t i = 0; i < 3; ++i) at[i] = Load<U8>(pattern + i);
    }
};

AVEFFECT_INLINE void ShiftRow(uint8_t* to, const uint8_t* from, size_t width, size_t shift,
                              const ShiftMasks& masks, const uint8_t* soon) {
    if (width < kLanes) {
        U8 own{}, shifted{};
        std::memcpy(&own, from, width);
        std::memcpy(&shifted, from + shift, width);
        own = Select(masks.at[0], shifted, own);
        std::memcpy(to, &own, width);
        return;
    }
    const U8 first = masks.at[0], second = masks.at[kLanes % 3], third = masks.at[2 * kLanes % 3];
    const size_t last = width - kLanes;
    size_t x = 0;
    for (; x + 2 * kLanes <= last; x += 3 * kLanes) {
        Prefetch(soon + x);
        Prefetch(soon + x + kLanes);
        Prefetch(soon + x + 2 * kLanes);
        Store(to + x, Select(first, Load<U8>(from + shift + x), Load<U8>(from + x)));
        const uint8_t* const next = from + x + kLanes;
        Store(to + x + kLanes, Select(second, Load<U8>(next + shift), Load<U8>(next)));
        Store(to + x + 2 * kLanes, Select(third, Load<U8>(next + kLanes + shift), Load<U8>(next + kLanes)));
    }
    for (; x < last; x += kLanes)
        Store(to + x, Select(masks.at[x % 3], Load<U8>(from + shift + x), Load<U8>(from + x)));
    Store(to + last, Select(masks.at[last % 3], Load<U8>(from + shift + last), Load<U8>(from + last)));
}

AVEFFECT_INLINE void ShiftColours(Plane8 out, Plane8 wide, size_t shift, bool blueToo) {
    if (out.width == 0) return;
    const ShiftMasks masks(blueToo);
    for (size_t y = 0; y < out.rows; ++y)
        ShiftRow(out.Row(y), wide.Row(y), out.width, shift, masks, wide.Row(y) + wide.pitch);
}

void ShiftRedRgb24(Plane8 out, Plane8 wide, size_t shift) noexcept { ShiftColours(out, wide, shift, false); }
void ShiftRedAndBlueRgb24(Plane8 out, Plane8 wide, size_t shift) noexcept {
    ShiftColours(out, wide, shift, true);
}

constexpr StereoKernels kKernels = {AnaglyphRgba32,      AnaglyphYuv,           SideBySideRgba32,
                                    SideBySideComponent, TopAndBottomComponent, ShiftRedRgb24,
                                    ShiftRedAndBlueRgb24};
