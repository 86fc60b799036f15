// Bodies of the spotlight kernels, for one level. What the columns of a row are mixed with is found first, in
// 16 bits a column, then samples and chroma samples are mixed. Discs that 16 bits don't hold go pixel by
// pixel.

AVEFFECT_INLINE size_t DistanceBetween(size_t a, size_t b) { return a < b ? b - a : a - b; }
AVEFFECT_INLINE size_t RootOf(size_t square) {
    return static_cast<size_t>(__builtin_sqrt(static_cast<double>(square)));
}

// A spot in a picture: the columns and rows that it is limited to, and the changes with each pixel of
// distance.
struct Disc : Spot {
    size_t left, right, top, bottom;
    size_t rim;
    int64_t densityStep, brightnessStep;

    AVEFFECT_INLINE Disc(const Spot& spot, size_t width, size_t rows)
        : Spot(spot)
        , left(x < radius ? 0 : x - radius)
        , right(x + radius < width ? x + radius : width)
        , top(y < radius ? 0 : y - radius)
        , bottom(y + radius < rows ? y + radius : rows)
        , rim(3 * radius / 4)
        , densityStep(density / static_cast<int64_t>(rim))
        , brightnessStep(brightness * 256 / static_cast<int64_t>(rim)) {}
    AVEFFECT_INLINE bool Empty() const { return left >= right || top >= bottom; }
};

struct Mix {
    int64_t a, b;

    AVEFFECT_INLINE void operator()(uint8_t& sample, uint8_t colour) const {
        const int64_t mixed = ((sample * (65536 - a) + colour * a) >> 16) + b;
        sample = static_cast<uint8_t>(mixed < 0 ? 0 : mixed > 255 ? 255 : mixed);
    }
    AVEFFECT_INLINE Mix WithoutBrightness() const { return {a, 0}; }
};

// Outside the disc it leaves samples alone.
AVEFFECT_INLINE Mix MixAt(const Disc& spot, size_t x, size_t y) {
    const size_t dx = DistanceBetween(x, spot.x), dy = DistanceBetween(y, spot.y);
    const size_t square = dx * dx + dy * dy, core = spot.radius - spot.rim;
    if (square > spot.radius * spot.radius) return {0, 0};
    if (square <= core * core) return {spot.density, spot.brightness};
    const auto t = static_cast<int64_t>(spot.radius - RootOf(square));
    return {t * spot.densityStep, (t * spot.brightnessStep) >> 8};
}

void MixPixelsOneByOne(Plane32 plane, const Disc& spot, uint32_t colour) {
    for (size_t y = spot.top; y < spot.bottom; ++y)
        for (size_t x = spot.left; x < spot.right; ++x) {
            const Mix mix = MixAt(spot, x, y);
            for (size_t i = 0; i < 3; ++i)
                mix(plane.Row(y)[x * 4 + i], static_cast<uint8_t>(colour >> (8 * i)));
        }
}

void MixPlanesOneByOne(const SpotPlanes& planes, const Disc& spot) {
    for (size_t y = spot.top; y < spot.bottom; ++y)
        for (size_t x = spot.left; x < spot.right; ++x) {
            const Mix mix = MixAt(spot, x, y), chroma = mix.WithoutBrightness();
            const size_t cx = x >> planes.horizontalShift, cy = y >> planes.verticalShift;
            mix(planes.y.Row(y)[x], planes.colourY);
            if (cx < planes.u.width && cy < planes.u.rows) chroma(planes.u.Row(cy)[cx], planes.colourU);
            if (cx < planes.v.width && cy < planes.v.rows) chroma(planes.v.Row(cy)[cx], planes.colourV);
        }
}

constexpr size_t kColumns = kLanes / 2; // that a register has 16 bits each for

AVEFFECT_INLINE I16 Choose(I16 mask, I16 a, I16 b) { return (I16)Select((U8)mask, (U8)a, (U8)b); }

// What the columns of one row after another are mixed with: their distances from the centre, and the weights
// and the brightness made of those.
struct MixRows {
    const Disc& spot;
    size_t origin;          // first column, a multiple of all chroma steps
    size_t count;           // of columns, the last one's register filled up
    int16_t *roots, *rests; // the distance rounded down, and its square less that of the rounded one
    // With the colour less the sample times weight >> 16, and with base the whole difference besides.
    int16_t *weights, *bases, *brightnesses;

    AVEFFECT_INLINE MixRows(const Disc& whole, uint8_t* scratch)
        : spot(whole)
        , origin(whole.left / 4 * 4)
        , count((whole.right - origin + kColumns - 1) / kColumns * kColumns)
        , roots(reinterpret_cast<int16_t*>(scratch)) {
        const size_t room = SpotScratchBytes(spot.right - spot.left) / 10;
        rests = roots + room;
        weights = rests + room;
        bases = weights + room;
        brightnesses = bases + room;
        const size_t dy = DistanceBetween(spot.top, spot.y);
        for (size_t i = 0; i < count; ++i) {
            const size_t dx = DistanceBetween(origin + i, spot.x), root = RootOf(dx * dx + dy * dy);
            roots[i] = static_cast<int16_t>(root);
            rests[i] = static_cast<int16_t>(dx * dx + dy * dy - root * root);
        }
        // Behind the last column nothing is mixed; chroma may ask for up to three columns there.
        std::memset(weights + count, 0, (room - count) * sizeof *weights);
        std::memset(bases + count, 0, (room - count) * sizeof *bases);
    }

    // Whether it all fits into 16 bits with sign: rests and their steps are up to twice the distances.
    AVEFFECT_INLINE static bool Holds(const Disc& spot) {
        constexpr int64_t kMost = 32767;
        const size_t left = DistanceBetween(spot.left / 4 * 4, spot.x),
                     right = DistanceBetween(spot.right + kColumns, spot.x);
        const size_t top = DistanceBetween(spot.top, spot.y), bottom = DistanceBetween(spot.bottom, spot.y);
        const size_t dx = left > right ? left : right, dy = top > bottom ? top : bottom;
        return dx < 16384 && dy < 16384 && dx * dx + dy * dy < 16384 * 16384 && spot.radius <= kMost &&
               spot.density >= 0 && spot.density <= 65536 && spot.densityStep <= 65535 &&
               spot.brightness <= kMost && spot.brightness >= -kMost && spot.brightnessStep <= kMost &&
               spot.brightnessStep >= -kMost;
    }

    AVEFFECT_INLINE static int16_t Limited(int64_t brightness) {
        return static_cast<int16_t>(brightness < -255 ? -255 : brightness > 255 ? 255 : brightness);
    }

    // Makes the row's mix, and goes on to the distances of the next row.
    template <bool Closer>
    AVEFFECT_INLINE void MakeRow(size_t dy) {
        const I16 radius = SplatI16(static_cast<int16_t>(spot.radius)),
                  rim = SplatI16(static_cast<int16_t>(spot.rim));
        const I16 density = SplatI16(static_cast<int16_t>(spot.density)),
                  base = SplatI16(spot.density >= 32768 ? -1 : 0),
                  brightness = SplatI16(Limited(spot.brightness));
        const auto step = static_cast<int32_t>(spot.densityStep);
        const I16 densityStep = SplatI16(static_cast<int16_t>(step)),
                  brightnessStep = SplatI16(static_cast<int16_t>(spot.brightnessStep));
        // Up to here weights fit into 15 bits.
        const I16 lastLow = SplatI16(static_cast<int16_t>(step > 1 ? 32767 / step : 32767));
        const I16 change = SplatI16(static_cast<int16_t>(Closer ? 2 * dy - 1 : 2 * dy + 1));
        for (size_t i = 0; i < count; i += kColumns) {
            I16 root = Load<I16>(roots + i), rest = Load<I16>(rests + i);
            // Beyond the radius t is 0, with which nothing changes.
            const I16 t = Max(radius - root, I16{});
            const I16 core = (t > rim) | ((t == rim) & (rest == 0));
            Store(weights + i, Choose(core, density, t * densityStep));
            Store(bases + i, Choose(core, base, t > lastLow));
            const I16 scaled = (MultiplyHigh(t, brightnessStep) << 8) | (I16)((U16)(t * brightnessStep) >> 8);
            Store(brightnesses + i,
                  Choose(core, brightness, Min(Max(scaled, SplatI16(-255)), SplatI16(255))));
            // A row further, a distance is at most 1 more or less.
            if constexpr (Closer) {
                rest -= change;
                const I16 shorter = rest < 0;
                root += shorter;
                rest += shorter & (root + root + 1);
            } else {
                rest += change - (root + root + 1);
                const I16 same = rest < 0;
                rest += same & (root + root + 1);
                root += same + 1;
            }
            Store(roots + i, root);
            Store(rests + i, rest);
        }
        std::memset(weights + (spot.right - origin), 0, 4 * sizeof *weights);
        std::memset(bases + (spot.right - origin), 0, 4 * sizeof *bases);
    }

    // Calls mix(row, first column, the one behind the last) for the rows of the disc.
    template <class MixRow>
    AVEFFECT_INLINE void ForRows(const MixRow& mix) {
        for (size_t y = spot.top; y < spot.bottom; ++y) {
            const size_t dy = DistanceBetween(y, spot.y);
            if (y < spot.y)
                MakeRow<true>(dy);
            else
                MakeRow<false>(dy);
            const size_t reach = RootOf(spot.radius * spot.radius - dy * dy);
            const size_t begin = spot.x > reach + spot.left ? spot.x - reach : spot.left;
            const size_t end = spot.x + reach + 1 < spot.right ? spot.x + reach + 1 : spot.right;
            if (begin < end) mix(*this, y, begin, end);
        }
    }
};

AVEFFECT_INLINE I16 Mixed(I16 samples, I16 colours, I16 weights, I16 bases) {
    const I16 difference = colours - samples;
    return samples + (difference & bases) + MultiplyHigh(difference, weights);
}

struct MixPixels {
    Plane32 plane;
    I16 evenColour, oddColour; // B and R, and G

    struct Columns {
        const MixPixels& pixels;
        const MixRows& rows;
        size_t first;

        // Of each pixel twice.
        AVEFFECT_INLINE I16 Twice(const int16_t* columns, size_t x) const {
            const U32 wide = Widened(Load<HalfU16>(columns + first + x / 4));
            return (I16)(wide | wide << 16);
        }
        AVEFFECT_INLINE U8 operator()(U8 samples, size_t x) const {
            const I16 weights = Twice(rows.weights, x), bases = Twice(rows.bases, x),
                      brightness = Twice(rows.brightnesses, x);
            const I16 even = Mixed((I16)Even(samples), pixels.evenColour, weights, bases) + brightness;
            const I16 odd = Mixed((I16)Odd(samples), pixels.oddColour, weights, bases) + brightness;
            const U8 mixed =
                Join((U16)Min(Max(even, I16{}), SplatI16(255)), (U16)Min(Max(odd, I16{}), SplatI16(255)));
            return Select(AlphaMask(), samples, mixed);
        }
    };

    AVEFFECT_INLINE void operator()(const MixRows& rows, size_t y, size_t begin, size_t end) const {
        uint8_t* const row = plane.Row(y) + begin * 4;
        ForColumns<U8>(row, (end - begin) * 4, row + plane.pitch, Columns{*this, rows, begin - rows.origin});
    }
};

struct LumaColumns {
    const MixRows& rows;
    size_t first;
    I16 colour;

    AVEFFECT_INLINE HalfU8 operator()(HalfU8 samples, size_t x) const {
        const size_t i = first + x;
        const I16 mixed =
            Mixed((I16)Widened(samples), colour, Load<I16>(rows.weights + i), Load<I16>(rows.bases + i)) +
            Load<I16>(rows.brightnesses + i);
        return Narrowed((U16)Min(Max(mixed, I16{}), SplatI16(255)));
    }
};

// Every 2 to the power of Shift-th number.
template <unsigned Shift>
AVEFFECT_INLINE I16 LoadStrided(const int16_t* from) {
    if constexpr (Shift == 0)
        return Load<I16>(from);
    else
        return (I16)EvenLanes((U16)LoadStrided<Shift - 1>(from),
                              (U16)LoadStrided<Shift - 1>(from + (kColumns << (Shift - 1))));
}

template <unsigned Shift>
struct ChromaColumns {
    const MixRows& rows;
    size_t first; // luma column of the first sample
    I16 colour;

    AVEFFECT_INLINE HalfU8 operator()(HalfU8 samples, size_t x) const {
        I16 mixed = (I16)Widened(samples);
        AVEFFECT_UNROLL
        for (size_t i = 0; i < size_t{1} << Shift; ++i) {
            const size_t column = first + (x << Shift) + i;
            mixed = Mixed(mixed, colour, LoadStrided<Shift>(rows.weights + column),
                          LoadStrided<Shift>(rows.bases + column));
        }
        return Narrowed((U16)mixed);
    }
};

template <unsigned Shift>
struct MixPlanes {
    const SpotPlanes& planes;

    AVEFFECT_INLINE void Chroma(Plane8 plane, uint8_t colour, const MixRows& rows, size_t y, size_t begin,
                                size_t end) const {
        const size_t cy = y >> planes.verticalShift, first = begin >> Shift;
        size_t behind = ((end - 1) >> Shift) + 1;
        if (behind > plane.width) behind = plane.width;
        if (cy >= plane.rows || first >= behind) return;
        uint8_t* const row = plane.Row(cy) + first;
        ForColumns<HalfU8>(row, behind - first, row + plane.pitch,
                           ChromaColumns<Shift>{rows, (first << Shift) - rows.origin, SplatI16(colour)});
    }
    AVEFFECT_INLINE void operator()(const MixRows& rows, size_t y, size_t begin, size_t end) const {
        uint8_t* const row = planes.y.Row(y) + begin;
        ForColumns<HalfU8>(row, end - begin, row + planes.y.pitch,
                           LumaColumns{rows, begin - rows.origin, SplatI16(planes.colourY)});
        Chroma(planes.u, planes.colourU, rows, y, begin, end);
        Chroma(planes.v, planes.colourV, rows, y, begin, end);
    }
};

void SpotlightRgba32(Plane32 plane, const Spot& spot, uint32_t colour, uint8_t* scratch) noexcept {
    const Disc disc(spot, plane.width, plane.rows);
    if (disc.Empty()) return;
    if (!MixRows::Holds(disc)) {
        MixPixelsOneByOne(plane, disc, colour);
        return;
    }
    const U8 colours = (U8)Splat32(colour);
    MixRows(disc, scratch).ForRows(MixPixels{plane, (I16)Even(colours), (I16)Odd(colours)});
}

void SpotlightComponent(const SpotPlanes& planes, const Spot& spot, uint8_t* scratch) noexcept {
    const Disc disc(spot, planes.y.width, planes.y.rows);
    if (disc.Empty()) return;
    if (!MixRows::Holds(disc)) {
        MixPlanesOneByOne(planes, disc);
        return;
    }
    MixRows rows(disc, scratch);
    if (planes.horizontalShift == 0)
        rows.ForRows(MixPlanes<0>{planes});
    else if (planes.horizontalShift == 1)
        rows.ForRows(MixPlanes<1>{planes});
    else
        rows.ForRows(MixPlanes<2>{planes});
}

constexpr SpotlightKernels kKernels = {SpotlightRgba32, SpotlightComponent};
