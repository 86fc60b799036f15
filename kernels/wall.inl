// Bodies of the wall kernels, for one level.

// Samples from their own place or a later one, so that a row can become its own. Four pixels are stored
// together.
template <size_t Bytes>
AVEFFECT_INLINE void ShrinkRow(uint8_t* to, const uint8_t* from, Places columns) {
    size_t x = 0;
    if constexpr (Bytes == 4)
        for (; x + 4 <= columns.count; x += 4) {
            uint32_t group[4];
            for (size_t i = 0; i < 4; ++i) std::memcpy(&group[i], from + columns.of[x + i] * Bytes, Bytes);
            std::memcpy(to + x * Bytes, group, sizeof group);
        }
    for (; x < columns.count; ++x) std::memmove(to + x * Bytes, from + columns.of[x] * Bytes, Bytes);
}

template <size_t Bytes>
AVEFFECT_INLINE void Shrink(Plane8 plane, const WallTile& tile) {
    for (size_t y = 0; y < tile.rows.count; ++y) {
        const uint8_t* const from = plane.Row(tile.rows.of[y]);
        uint8_t* const to = plane.Row(y);
        unsigned times = 1;
        if (from == to) times = y + 1 == tile.rows.count ? tile.lastTimes : tile.times;
        for (unsigned i = 0; i < times; ++i) ShrinkRow<Bytes>(to, from, tile.columns);
    }
}

void ShrinkRgba32(Plane32 plane, const WallTile& tile) noexcept { Shrink<4>(plane.Bytes(), tile); }
void ShrinkComponent(Plane8 plane, const WallTile& tile) noexcept { Shrink<1>(plane, tile); }

void RepeatRow(uint8_t* row, size_t first, Places following, size_t width) noexcept {
    size_t filled = first;
    for (size_t i = 0; i < following.count && filled < width; ++i) row[filled++] = row[following.of[i]];
    while (filled < width) { // whole repeats, so what is filled begins anew behind itself
        const size_t count = filled < width - filled ? filled : width - filled;
        std::memcpy(row + filled, row, count);
        filled += count;
    }
}

constexpr WallKernels kKernels = {ShrinkRgba32, ShrinkComponent, RepeatRow};
