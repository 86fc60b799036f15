// Bodies of the remap kernels, for one level. The processors' gathers are no faster than loads one by one
// where neighbours come from neighbours, as they mostly do.

size_t FindOffsets(const uint32_t* columns, const uint32_t* rows, size_t count, const PlaceLimits& limits,
                   uint32_t* offsets) noexcept {
    constexpr size_t kPlaces = kLanes / 4; // of a register
    constexpr uint32_t kCounting[16] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
    U32 own = Load<U32>(kCounting) + limits.x;
    size_t i = 0;
    for (; i + kPlaces <= count; i += kPlaces, own += kPlaces) {
        const U32 column = Load<U32>(columns + i), row = Load<U32>(rows + i);
        const U32 others = (U32)(column >= limits.width) | (U32)(row >= limits.height) |
                           ((U32)(column == own) & (U32)(row == limits.y));
        if (!IsZero((U8)others)) break;
        Store(offsets + i, row * limits.pitch + column * limits.bytes);
    }
    for (; i < count; ++i) {
        if (columns[i] >= limits.width || rows[i] >= limits.height) break;
        if (columns[i] == limits.x + i && rows[i] == limits.y) break;
        offsets[i] = rows[i] * limits.pitch + columns[i] * limits.bytes;
    }
    return i;
}

AVEFFECT_INLINE U32 OddPlaces(const uint32_t* from) {
    return (U32)EvenUnits<4>(Load<U8>(from + 1), Load<U8>(from + 1 + kLanes / 4));
}

size_t FindChroma(const uint32_t* columns, const uint32_t* rows, size_t count, const ChromaLimits& limits,
                  uint32_t* chromaColumns, uint32_t* chromaRows) noexcept {
    constexpr size_t kPlaces = kLanes / 4;
    size_t i = 0;
    for (; 2 * (i + kPlaces) < count; i += kPlaces) {
        const U32 column = OddPlaces(columns + 2 * i), row = OddPlaces(rows + 2 * i);
        if (!IsZero((U8)((U32)(column >= limits.width) | (U32)(row >= limits.height)))) break;
        Store(chromaColumns + i, Min(column >> 1, Splat32(limits.lastColumn)));
        Store(chromaRows + i, Min(row >> limits.rowShift, Splat32(limits.lastRow)));
    }
    return i;
}

void RemapRgba32(uint8_t* to, const uint8_t* from, const uint32_t* offsets, size_t pixels) noexcept {
    size_t i = 0;
    for (; i + 4 <= pixels; i += 4) { // stored together
        uint32_t group[4];
        for (size_t j = 0; j < 4; ++j) std::memcpy(&group[j], from + offsets[i + j], sizeof group[j]);
        std::memcpy(to + i * 4, group, sizeof group);
    }
    for (; i < pixels; ++i) std::memcpy(to + i * 4, from + offsets[i], 4);
}

void RemapComponent(uint8_t* to, const uint8_t* from, const uint32_t* offsets, size_t samples) noexcept {
    size_t i = 0;
    for (; i + 4 <= samples; i += 4) {
        to[i] = from[offsets[i]];
        to[i + 1] = from[offsets[i + 1]];
        to[i + 2] = from[offsets[i + 2]];
        to[i + 3] = from[offsets[i + 3]];
    }
    for (; i < samples; ++i) to[i] = from[offsets[i]];
}

constexpr RemapKernels kKernels = {FindOffsets, FindChroma, RemapRgba32, RemapComponent};
