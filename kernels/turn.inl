// Bodies of the turn kernels, for one level. The rows that make a strip of 64 bytes of the result are reduced
// and written as columns into a turned copy of the plane, strip beside strip; the rows of that copy are then
// reduced into the plane. Both times whole rows are summed.

// The rows that make one row of the result, each with its share, none of 0.
struct Shares {
    size_t count = 0;
    const uint8_t* rows[256];
    uint16_t shares[256];

    // Of row index of the result, when oldRows are reduced to newRows.
    AVEFFECT_INLINE Shares(const uint8_t* data, size_t pitch, size_t oldRows, size_t newRows, size_t index) {
        const size_t start = index * oldRows; // in newRows-ths of an old row
        size_t reached = 0;                   // in 256ths of the new row
        for (size_t row = start / newRows; reached < 256; ++row) {
            size_t covered = (row + 1) * newRows - start;
            if (covered > oldRows) covered = oldRows;
            const size_t next = (256 * covered + oldRows / 2) / oldRows;
            if (next == reached) continue;
            rows[count] = data + row * pitch;
            shares[count++] = static_cast<uint16_t>(next - reached);
            reached = next;
        }
    }

    AVEFFECT_INLINE uint8_t Sum(size_t x) const {
        uint32_t sum = 128;
        for (size_t i = 0; i < count; ++i) sum += uint32_t{shares[i]} * rows[i][x];
        return static_cast<uint8_t>(sum >> 8);
    }
};

// Sums of products of 16 bits: 256 * 255 + 128 still fits.
struct WeightedSum {
    U16 even, odd;

    AVEFFECT_INLINE WeightedSum()
        : even(Splat16(128))
        , odd(Splat16(128)) {}
    AVEFFECT_INLINE void Add(U8 samples, U16 share) {
        even += Even(samples) * share;
        odd += Odd(samples) * share;
    }
    AVEFFECT_INLINE U8 Result() const { return Join(even >> 8, odd >> 8); }
};

// Count rows, whose shares stay in registers.
template <size_t Count>
struct FewRows {
    const uint8_t* rows[Count];
    U16 shares[Count];

    AVEFFECT_INLINE explicit FewRows(const Shares& from) {
        AVEFFECT_UNROLL
        for (size_t i = 0; i < Count; ++i) {
            rows[i] = from.rows[i];
            shares[i] = Splat16(from.shares[i]);
        }
    }
    AVEFFECT_INLINE U8 operator()(size_t x) const {
        WeightedSum sum;
        AVEFFECT_UNROLL
        for (size_t i = 0; i < Count; ++i) sum.Add(Load<U8>(rows[i] + x), shares[i]);
        return sum.Result();
    }
};

struct ManyRows {
    const Shares& from;

    AVEFFECT_INLINE U8 operator()(size_t x) const {
        WeightedSum sum;
        for (size_t i = 0; i < from.count; ++i) sum.Add(Load<U8>(from.rows[i] + x), Splat16(from.shares[i]));
        return sum.Result();
    }
};

// The last register overlaps its neighbour.
template <class Rows>
AVEFFECT_INLINE void StoreSums(uint8_t* to, size_t bytes, const Rows& rows) {
    for (size_t x = 0; x + kLanes < bytes; x += kLanes) Store(to + x, rows(x));
    Store(to + bytes - kLanes, rows(bytes - kLanes));
}

void ReduceRow(uint8_t* to, size_t bytes, const Shares& shares) {
    if (bytes < kLanes) {
        for (size_t x = 0; x < bytes; ++x) to[x] = shares.Sum(x);
        return;
    }
    switch (shares.count) {
    case 1: // all of one row
        std::memcpy(to, shares.rows[0], bytes);
        return;
    case 2:
        StoreSums(to, bytes, FewRows<2>(shares));
        return;
    case 3:
        StoreSums(to, bytes, FewRows<3>(shares));
        return;
    case 4:
        StoreSums(to, bytes, FewRows<4>(shares));
        return;
    default:
        StoreSums(to, bytes, ManyRows{shares});
    }
}

// Writes a strip of rows as columns of 64 bytes. Works on squares of 16 bytes by as many rows, the last ones
// of either direction rounded up: what lies beyond the strip is undefined.
template <size_t UnitBytes>
AVEFFECT_INLINE void WriteAsColumns(const uint8_t* strip, size_t rows, size_t bytes, uint8_t* to,
                                    size_t toPitch) {
    constexpr size_t kSide = 16 / UnitBytes;
    const size_t pitch = TurnPitch(bytes);
    for (size_t x = 0; x < bytes; x += 16)
        for (size_t y = 0; y < rows; y += kSide)
            TransposeSquare<UnitBytes>(strip + y * pitch + x, pitch,
                                       to + x / UnitBytes * toPitch + y * UnitBytes, toPitch);
}

AVEFFECT_INLINE uint8_t* Fill(uint8_t* at, size_t bytes, U8 value) {
    uint8_t* const end = at + bytes;
    for (; at + kLanes <= end; at += kLanes) Store(at, value);
    std::memcpy(at, &value, static_cast<size_t>(end - at));
    return end;
}

template <size_t UnitBytes, class Plane>
AVEFFECT_INLINE void TurnPlane(Plane plane, const PlaneArea& area, bool clockwise, U8 background,
                               uint8_t* scratch) {
    constexpr size_t kStrip = 64 / UnitBytes; // columns of the result
    const size_t width = plane.width * UnitBytes, areaWidth = area.width * UnitBytes;
    const size_t pitch = TurnPitch(width), turnedPitch = TurnPitch(areaWidth);
    uint8_t* const turned = scratch + kStrip * pitch;
    for (size_t left = 0; left < area.width; left += kStrip) {
        const size_t columns = area.width - left < kStrip ? area.width - left : kStrip;
        for (size_t i = 0; i < columns; ++i) {
            const size_t index = clockwise ? area.width - 1 - (left + i) : left + i;
            ReduceRow(scratch + i * pitch, width,
                      Shares(plane.data, plane.pitch, plane.rows, area.width, index));
        }
        WriteAsColumns<UnitBytes>(scratch, columns, width, turned + left * UnitBytes, turnedPitch);
    }
    for (size_t y = 0; y < plane.rows; ++y) {
        uint8_t* const row = plane.Row(y);
        if (y < area.top || y >= area.top + area.height) {
            Fill(row, width, background);
            continue;
        }
        const size_t index = clockwise ? y - area.top : area.height - 1 - (y - area.top);
        uint8_t* const start = Fill(row, area.left * UnitBytes, background);
        ReduceRow(start, areaWidth, Shares(turned, turnedPitch, plane.width, area.height, index));
        Fill(start + areaWidth, width - area.left * UnitBytes - areaWidth, background);
    }
}

void TurnRgba32(Plane32 plane, const PlaneArea& area, bool clockwise, uint32_t background,
                uint8_t* scratch) noexcept {
    TurnPlane<4>(plane, area, clockwise, (U8)Splat32(background), scratch);
}
void TurnComponent(Plane8 plane, const PlaneArea& area, bool clockwise, uint8_t background,
                   uint8_t* scratch) noexcept {
    TurnPlane<1>(plane, area, clockwise, Splat8(background), scratch);
}

constexpr TurnKernels kKernels = {TurnRgba32, TurnComponent};
