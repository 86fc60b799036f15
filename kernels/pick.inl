// Bodies of the pick kernels, for one level.

#include "kernels/lanes/columns.inl"

template <size_t Bytes>
AVEFFECT_INLINE RowPicker<Bytes> PickerOf(Places columns, size_t limit, uint8_t* scratch) {
    RowPicker<Bytes> picker(columns.count, limit, scratch);
    if (columns.count > 0) std::memcpy(picker.columns, columns.of, columns.count * sizeof *columns.of);
    picker.Prepare();
    return picker;
}

template <size_t Bytes>
AVEFFECT_INLINE void PickRows(Plane8 plane, Plane8 copy, Places columns, Places rows, uint8_t* scratch) {
    const RowPicker<Bytes> picker = PickerOf<Bytes>(columns, copy.width / Bytes, scratch);
    for (size_t y = 0; y < rows.count; ++y) {
        const uint8_t* const from = copy.Row(rows.of[y]);
        if (y > 0 && rows.of[y] == rows.of[y - 1])
            std::memcpy(plane.Row(y), plane.Row(y - 1), columns.count * Bytes);
        else
            picker.Pick(plane.Row(y), from, from + copy.pitch);
    }
}

void PickRgba32(Plane32 plane, Plane32 copy, Places columns, Places rows, uint8_t* scratch) noexcept {
    PickRows<4>(plane.Bytes(), copy.Bytes(), columns, rows, scratch);
}
void PickComponent(Plane8 plane, Plane8 copy, Places columns, Places rows, uint8_t* scratch) noexcept {
    PickRows<1>(plane, copy, columns, rows, scratch);
}

template <size_t Bytes>
AVEFFECT_INLINE void CircleRows(Plane8 plane, Plane8 copy, const Circle& circle, uint8_t* scratch) {
    const RowPicker<Bytes> picker = PickerOf<Bytes>(circle.columns, copy.width / Bytes, scratch);
    uint8_t* const picked = scratch + ColumnScratchBytes(circle.columns.count);
    const uint8_t* pickedFrom = nullptr;
    for (const CircleRow* row = circle.rows; row != circle.rows + circle.rowCount; ++row) {
        const uint8_t* const from = copy.Row(row->from);
        if (from != pickedFrom) picker.Pick(picked, from, from + copy.pitch);
        pickedFrom = from;
        uint8_t* const to = plane.Row(row->row) + circle.left * Bytes;
        const size_t last = row->end - 1;
        std::memcpy(to + row->begin * Bytes, picked + row->begin * Bytes, (last - row->begin) * Bytes);
        std::memcpy(to + last * Bytes, from + row->last * Bytes, Bytes);
    }
}

void CircleRgba32(Plane32 plane, Plane32 copy, const Circle& circle, uint8_t* scratch) noexcept {
    CircleRows<4>(plane.Bytes(), copy.Bytes(), circle, scratch);
}
void CircleComponent(Plane8 plane, Plane8 copy, const Circle& circle, uint8_t* scratch) noexcept {
    CircleRows<1>(plane, copy, circle, scratch);
}

// Four rows of bytes to blend: the samples themselves, those to the right, below, and both.
struct Corners {
    uint8_t* own;
    uint8_t* right;
    uint8_t* below;
    uint8_t* both;
};

struct BlendLanes {
    U16 rowFraction;

    AVEFFECT_INLINE U16 Lanes(U16 own, U16 right, U16 below, U16 both, U16 fraction) const {
        const U16 shared = (fraction * rowFraction) >> 8;
        const U16 across = fraction - shared, down = rowFraction - shared;
        return (own * (256 - (rowFraction + across)) + right * across + below * down + both * shared) >> 8;
    }
    AVEFFECT_INLINE U8 Bytes(U8 own, U8 right, U8 below, U8 both, U8 fraction) const {
        return Join(Lanes(Even(own), Even(right), Even(below), Even(both), Even(fraction)),
                    Lanes(Odd(own), Odd(right), Odd(below), Odd(both), Odd(fraction)));
    }
};

AVEFFECT_INLINE uint8_t BlendFour(unsigned own, unsigned right, unsigned below, unsigned both, unsigned fx,
                                  unsigned fy) {
    const unsigned shared = (fx * fy) >> 8, across = fx - shared, down = fy - shared;
    return static_cast<uint8_t>(
        (own * (256 - (fy + across)) + right * across + below * down + both * shared) >> 8);
}

AVEFFECT_INLINE void BlendRow(uint8_t* to, const Corners& corners, const uint8_t* fraction, size_t x,
                              size_t end, unsigned rowFraction) {
    const BlendLanes blend = {Splat16(static_cast<uint16_t>(rowFraction))};
    for (; x + kLanes <= end; x += kLanes)
        Store(to + x,
              blend.Bytes(Load<U8>(corners.own + x), Load<U8>(corners.right + x), Load<U8>(corners.below + x),
                          Load<U8>(corners.both + x), Load<U8>(fraction + x)));
    for (; x < end; ++x)
        to[x] = BlendFour(corners.own[x], corners.right[x], corners.below[x], corners.both[x], fraction[x],
                          rowFraction);
}

template <size_t Bytes>
AVEFFECT_INLINE void BlendCircleRows(Plane8 plane, Plane8 copy, const Circle& circle, uint8_t* scratch) {
    const size_t columns = circle.columns.count, limit = copy.width / Bytes, rowBytes = columns * Bytes + 64;
    const RowPicker<Bytes> own = PickerOf<Bytes>(circle.columns, limit, scratch);
    scratch += ColumnScratchBytes(columns);
    const RowPicker<Bytes> right = PickerOf<Bytes>({circle.right, columns}, limit, scratch);
    scratch += ColumnScratchBytes(columns);
    uint8_t* const fraction = scratch + 4 * rowBytes;
    for (size_t x = 0; x < columns * Bytes; ++x) fraction[x] = circle.fraction[x / Bytes];
    const Corners picked = {scratch, scratch + rowBytes, scratch + 2 * rowBytes, scratch + 3 * rowBytes};
    // The planes of bytes have the middle weights the other way round.
    const Corners corners =
        Bytes == 4 ? picked : Corners{picked.own, picked.below, picked.right, picked.both};
    const uint8_t *pickedFrom = nullptr, *pickedBelow = nullptr;
    for (const CircleRow* row = circle.rows; row != circle.rows + circle.rowCount; ++row) {
        const uint8_t *from = copy.Row(row->from), *below = copy.Row(row->below);
        if (from != pickedFrom) {
            own.Pick(picked.own, from, below);
            right.Pick(picked.right, from, below);
        }
        if (below != pickedBelow) {
            own.Pick(picked.below, below, below + copy.pitch);
            right.Pick(picked.both, below, below + copy.pitch);
        }
        pickedFrom = from;
        pickedBelow = below;
        uint8_t* const to = plane.Row(row->row) + circle.left * Bytes;
        const size_t last = (row->end - 1) * Bytes;
        BlendRow(to, corners, fraction, row->begin * Bytes, last, row->fraction);
        for (size_t i = 0; i < Bytes; ++i) {
            const unsigned beside = from[row->lastRight * Bytes + i], under = below[row->last * Bytes + i];
            to[last + i] = BlendFour(from[row->last * Bytes + i], Bytes == 4 ? beside : under,
                                     Bytes == 4 ? under : beside, below[row->lastRight * Bytes + i],
                                     row->lastFraction, row->fraction);
        }
    }
}

void BlendCircleRgba32(Plane32 plane, Plane32 copy, const Circle& circle, uint8_t* scratch) noexcept {
    BlendCircleRows<4>(plane.Bytes(), copy.Bytes(), circle, scratch);
}
void BlendCircleComponent(Plane8 plane, Plane8 copy, const Circle& circle, uint8_t* scratch) noexcept {
    BlendCircleRows<1>(plane, copy, circle, scratch);
}

constexpr PickKernels kKernels = {PickRgba32,      PickComponent,     CircleRgba32,
                                  CircleComponent, BlendCircleRgba32, BlendCircleComponent};
