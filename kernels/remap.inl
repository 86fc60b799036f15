// Bodies of the remap kernels, for one level. The processors' gathers are no faster than loads one by one
// where neighbours come from neighbours, as they mostly do.

constexpr size_t kPlaces = kLanes / 4; // of a register

// Register i of a tile's entries, which stand in rows that lie stride apart.
AVEFFECT_INLINE U32 OfTile(const uint32_t* first, size_t stride, size_t i) {
#if AVEFFECT_LANE_BYTES == 64
    __m256i upper, lower; // two rows; stored to be loaded as one, they would have to wait for each other
    std::memcpy(&upper, first + 2 * i * stride, sizeof upper);
    std::memcpy(&lower, first + (2 * i + 1) * stride, sizeof lower);
    return (U32)_mm512_maskz_inserti64x4(0xFF, _mm512_castsi256_si512(upper), lower, 1);
#else
    const size_t entry = i * kPlaces;
    return Load<U32>(first + entry / kTileSide * stride + entry % kTileSide);
#endif
}

AVEFFECT_INLINE U32 Chosen(U32 mask, U32 x, U32 other) { return (U32)Select((U8)mask, (U8)x, (U8)other); }

constexpr size_t kStripBytes = 4096; // of a row, that are replayed before the rest of it
constexpr size_t kTileRegisters = kTileSide * kTileSide / kPlaces;

// A tile's places, those outside the plane replaced by the samples' own. False if all are.
AVEFFECT_INLINE bool PlacesOfTile(const PlaceBand& band, size_t x, const PlaceLimits& limits, U32* columns,
                                  U32* rows) {
    constexpr uint32_t kAcross[16] = {0, 1, 2, 3, 4, 5, 6, 7, 0, 1, 2, 3, 4, 5, 6, 7};
    constexpr uint32_t kDown[16] = {0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 1, 1, 1, 1};
    constexpr auto kSide = static_cast<uint32_t>(kTileSide);
    U32 moved{};
    AVEFFECT_UNROLL
    for (size_t i = 0; i < kTileRegisters; ++i) {
        const auto entry = static_cast<uint32_t>(i * kPlaces);
        const U32 ownColumn = Load<U32>(kAcross) + (limits.x + static_cast<uint32_t>(x) + entry % kSide);
        const U32 ownRow = Load<U32>(kDown) + (limits.y + entry / kSide);
        const U32 column = OfTile(band.columns + x, band.stride, i);
        const U32 row = OfTile(band.rows + x, band.stride, i);
        const U32 inside = (U32)(column < limits.width) & (U32)(row < limits.height);
        columns[i] = Chosen(inside, column, ownColumn);
        rows[i] = Chosen(inside, row, ownRow);
        moved |= (columns[i] ^ ownColumn) | (rows[i] ^ ownRow);
    }
    return !IsZero((U8)moved);
}

#ifndef AVEFFECT_HAS_TABLES
constexpr bool kPicks = false; // tiles from windows
#else
constexpr bool kPicks = true;
constexpr uint32_t kWindowSide = 16;

AVEFFECT_INLINE uint32_t WindowBegin(uint32_t middle, uint32_t size) {
    const uint32_t first = middle < kWindowSide / 2 ? 0 : middle - kWindowSide / 2;
    return first + kWindowSide <= size ? first : size - kWindowSide;
}

// Stores the tile's places within a window about its middle. Returns the window, or that there is none.
AVEFFECT_INLINE uint32_t FindWindow(const U32* columns, const U32* rows, const PlaceLimits& limits,
                                    uint8_t* places) {
    constexpr size_t kMiddle = kTileSide / 2 * (kTileSide + 1);
    if (limits.width < kWindowSide || limits.height < kWindowSide) return MapTile::kByOffsets;
    const uint32_t left = WindowBegin(columns[kMiddle / kPlaces][kMiddle % kPlaces], limits.width);
    const uint32_t top = WindowBegin(rows[kMiddle / kPlaces][kMiddle % kPlaces], limits.height);
    U32 all{};
    AVEFFECT_UNROLL
    for (size_t i = 0; i < kTileRegisters; ++i) {
        const U32 across = columns[i] - left, down = rows[i] - top;
        all |= across | down;
        const __m128i narrow = _mm512_maskz_cvtepi32_epi8(0xFFFF, (__m512i)(down * kWindowSide + across));
        std::memcpy(places + i * kPlaces, &narrow, sizeof narrow);
    }
    if (!IsZero((U8)(all & ~(kWindowSide - 1)))) return MapTile::kByOffsets;
    return top * limits.pitch + left;
}

AVEFFECT_INLINE __m128i Load16(const uint8_t* from) {
    __m128i bytes;
    std::memcpy(&bytes, from, sizeof bytes);
    return bytes;
}

AVEFFECT_INLINE __m512i WindowRows(const uint8_t* from, size_t pitch) {
    __m512i four = _mm512_castsi128_si512(Load16(from));
    four = _mm512_inserti32x4(four, Load16(from + pitch), 1);
    four = _mm512_inserti32x4(four, Load16(from + 2 * pitch), 2);
    return _mm512_inserti32x4(four, Load16(from + 3 * pitch), 3);
}

AVEFFECT_INLINE void StoreTwoLines(uint8_t* to, size_t pitch, __m128i lines) {
    _mm_storel_epi64(reinterpret_cast<__m128i*>(to), lines);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(to + pitch), _mm_unpackhi_epi64(lines, lines));
}

AVEFFECT_INLINE void PickTile(uint8_t* to, size_t toPitch, const uint8_t* from, size_t pitch,
                              const uint8_t* places) {
    const __m512i picks = (__m512i)Load<U8>(places);
    const __m512i upper =
        _mm512_permutex2var_epi8(WindowRows(from, pitch), picks, WindowRows(from + 4 * pitch, pitch));
    const __m512i lower = _mm512_permutex2var_epi8(WindowRows(from + 8 * pitch, pitch), picks,
                                                   WindowRows(from + 12 * pitch, pitch));
    const __m512i picked = _mm512_mask_blend_epi8(_mm512_movepi8_mask(picks), upper, lower);
    StoreTwoLines(to, toPitch, _mm512_maskz_extracti32x4_epi32(0xF, picked, 0));
    StoreTwoLines(to + 2 * toPitch, toPitch, _mm512_maskz_extracti32x4_epi32(0xF, picked, 1));
    StoreTwoLines(to + 4 * toPitch, toPitch, _mm512_maskz_extracti32x4_epi32(0xF, picked, 2));
    StoreTwoLines(to + 6 * toPitch, toPitch, _mm512_maskz_extracti32x4_epi32(0xF, picked, 3));
}
#endif

// Stores the byte offsets of a band's columns begin to end, line by line.
AVEFFECT_INLINE void StoreOffsets(const PlaceBand& band, size_t begin, size_t end, const PlaceLimits& limits,
                                  uint8_t* places) {
    constexpr uint32_t kCounting[16] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
    for (size_t y = 0; y < band.lines; ++y) {
        const uint32_t* const columns = band.columns + y * band.stride;
        const uint32_t* const rows = band.rows + y * band.stride;
        const uint32_t ownRow = limits.y + static_cast<uint32_t>(y);
        size_t x = begin;
        U32 own = Load<U32>(kCounting) + (limits.x + static_cast<uint32_t>(x));
        for (; x + kPlaces <= end; x += kPlaces, own += kPlaces, places += kLanes) {
            const U32 column = Load<U32>(columns + x), row = Load<U32>(rows + x);
            const U32 inside = (U32)(column < limits.width) & (U32)(row < limits.height);
            Store(places, Chosen(inside, row, Splat32(ownRow)) * limits.pitch +
                              Chosen(inside, column, own) * limits.bytes);
        }
        for (; x < end; ++x, places += 4) {
            const bool inside = columns[x] < limits.width && rows[x] < limits.height;
            const uint32_t offset =
                inside ? rows[x] * limits.pitch + columns[x] * limits.bytes
                       : ownRow * limits.pitch + (limits.x + static_cast<uint32_t>(x)) * limits.bytes;
            std::memcpy(places, &offset, sizeof offset);
        }
    }
}

// Whether a tile's corner comes from near its middle, so that one window may hold both.
AVEFFECT_INLINE bool NearMiddle(const PlaceBand& band, size_t x, size_t corner) {
    const size_t middle = x + kTileSide / 2 * (band.stride + 1);
    const uint32_t across = band.columns[x + corner] - band.columns[middle] + kTileSide;
    const uint32_t down = band.rows[x + corner] - band.rows[middle] + kTileSide;
    return (across | down) < 2 * kTileSide;
}

// A tile's kind. Writes its places within a window where it has one; may write as many bytes where not.
AVEFFECT_INLINE uint32_t KindOfTile(const PlaceBand& band, size_t x, const PlaceLimits& limits,
                                    [[maybe_unused]] uint8_t* picks) {
    if (band.lines < kTileSide || x + kTileSide > band.count) return MapTile::kByOffsets;
    // Most tiles are told apart by their corners.
    const bool mayStay = band.columns[x] == limits.x + x && band.rows[x] == limits.y;
    const size_t right = kTileSide - 1, bottom = right * band.stride;
    const bool mayHaveWindow = kPicks && limits.bytes == 1 && NearMiddle(band, x, 0) &&
                               NearMiddle(band, x, right) && NearMiddle(band, x, bottom) &&
                               NearMiddle(band, x, bottom + right);
    if (!mayStay && !mayHaveWindow) return MapTile::kByOffsets;
    U32 columns[kTileRegisters], rows[kTileRegisters];
    if (!PlacesOfTile(band, x, limits, columns, rows)) return MapTile::kStays;
#ifdef AVEFFECT_HAS_TABLES
    if (mayHaveWindow) return FindWindow(columns, rows, limits, picks);
#endif
    return MapTile::kByOffsets;
}

uint32_t FindTiles(const PlaceBand& band, const PlaceLimits& limits, MapTile* tiles, uint8_t* memory,
                   uint32_t used) noexcept {
    const size_t count = (band.count + kTileSide - 1) / kTileSide;
    for (size_t i = 0; i < count; ++i) {
        const uint32_t kind = KindOfTile(band, i * kTileSide, limits, memory + size_t{used} * 64);
        tiles[i] = {kind, used};
        if (kind != MapTile::kStays && kind != MapTile::kByOffsets) ++used;
    }
    const size_t strip = kStripBytes / limits.bytes / kTileSide;
    for (size_t i = 0; i < count;) {
        const size_t first = i++;
        if (tiles[first].window != MapTile::kByOffsets) continue;
        while (i < count && i % strip != 0 && tiles[i].window == MapTile::kByOffsets) ++i;
        const size_t begin = first * kTileSide;
        const size_t end = i * kTileSide < band.count ? i * kTileSide : band.count;
        tiles[first].places = used;
        StoreOffsets(band, begin, end, limits, memory + size_t{used} * 64);
        used += static_cast<uint32_t>(((end - begin) * band.lines * 4 + 63) / 64);
    }
    return used;
}

size_t CountInside(const uint32_t* columns, const uint32_t* rows, size_t count, uint32_t width,
                   uint32_t height) noexcept {
    size_t i = 0;
    for (; i + kPlaces <= count; i += kPlaces)
        if (!IsZero((U8)((U32)(Load<U32>(columns + i) >= width) | (U32)(Load<U32>(rows + i) >= height))))
            break;
    while (i < count && columns[i] < width && rows[i] < height) ++i;
    return i;
}

AVEFFECT_INLINE U32 OddPlaces(const uint32_t* from) {
    return (U32)EvenUnits<4>(Load<U8>(from + 1), Load<U8>(from + 1 + kLanes / 4));
}

size_t FindChroma(const uint32_t* columns, const uint32_t* rows, size_t count, const ChromaLimits& limits,
                  uint32_t* chromaColumns, uint32_t* chromaRows) noexcept {
    size_t i = 0;
    for (; 2 * (i + kPlaces) < count; i += kPlaces) {
        const U32 column = OddPlaces(columns + 2 * i), row = OddPlaces(rows + 2 * i);
        if (!IsZero((U8)((U32)(column >= limits.width) | (U32)(row >= limits.height)))) break;
        Store(chromaColumns + i, Min(column >> 1, Splat32(limits.lastColumn)));
        Store(chromaRows + i, Min(row >> limits.rowShift, Splat32(limits.lastRow)));
    }
    return i;
}

AVEFFECT_INLINE uint32_t PixelAt(const uint8_t* at) {
    uint32_t pixel;
    std::memcpy(&pixel, at, sizeof pixel);
    return pixel;
}

void RemapRgba32(uint8_t* to, const uint8_t* from, const uint32_t* offsets, size_t pixels) noexcept {
    size_t i = 0;
    for (; i + 4 <= pixels; i += 4) { // stored together
        typedef uint32_t Group __attribute__((vector_size(16)));
        const Group group = {PixelAt(from + offsets[i]), PixelAt(from + offsets[i + 1]),
                             PixelAt(from + offsets[i + 2]), PixelAt(from + offsets[i + 3])};
        std::memcpy(to + i * 4, &group, sizeof group);
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

// Tiles of a band, from column on up to end. Those that are taken from offsets and follow each other go
// together.
template <size_t Bytes>
AVEFFECT_INLINE void RemapStretch(Plane8 plane, const uint8_t* from, const TileGrid& grid,
                                  const MapTile* tiles, size_t band, size_t column, size_t end) {
    const size_t bandEnd = (band + 1) * kTileSide, yEnd = bandEnd < grid.yEnd ? bandEnd : grid.yEnd;
    const size_t y = band * kTileSide < grid.yBegin ? grid.yBegin : band * kTileSide;
    while (column < end) {
        const MapTile& tile = tiles[column];
        const size_t x = grid.xBegin + column++ * kTileSide;
        if (tile.window == MapTile::kStays) continue;
        uint8_t* const to = plane.Row(y) + x * Bytes;
        const uint8_t* const places = grid.places + size_t{tile.places} * 64;
#ifdef AVEFFECT_HAS_TABLES
        if (tile.window != MapTile::kByOffsets) {
            PickTile(to, plane.pitch, from + tile.window, grid.pitch, places);
            continue;
        }
#endif
        while (column < end && tiles[column].window == MapTile::kByOffsets) ++column;
        const size_t stretchEnd = grid.xBegin + column * kTileSide;
        const size_t xEnd = stretchEnd < grid.xEnd ? stretchEnd : grid.xEnd;
        const auto* const offsets = reinterpret_cast<const uint32_t*>(places);
        for (size_t line = 0; line < yEnd - y; ++line)
            (Bytes == 4 ? RemapRgba32 : RemapComponent)(to + line * plane.pitch, from,
                                                        offsets + line * (xEnd - x), xEnd - x);
    }
}

// Rows that follow each other come from much the same rows. Of whole rows those are more than a cache holds,
// of strips they are few enough.
template <size_t Bytes>
AVEFFECT_INLINE void RemapTiles(Plane8 plane, const uint8_t* from, const TileGrid& grid) {
    if (grid.xBegin >= grid.xEnd || grid.yBegin >= grid.yEnd) return;
    constexpr size_t kStrip = kStripBytes / Bytes / kTileSide;
    const size_t across = (grid.xEnd - grid.xBegin + kTileSide - 1) / kTileSide;
    const size_t begin = grid.yBegin / kTileSide, end = (grid.yEnd - 1) / kTileSide + 1;
    for (size_t left = 0; left < across; left += kStrip)
        for (size_t band = begin; band < end; ++band)
            RemapStretch<Bytes>(plane, from, grid, grid.tiles + (band - begin) * across, band, left,
                                left + kStrip < across ? left + kStrip : across);
}

void RemapTilesRgba32(Plane8 plane, const uint8_t* from, const TileGrid& grid) noexcept {
    RemapTiles<4>(plane, from, grid);
}
void RemapTilesComponent(Plane8 plane, const uint8_t* from, const TileGrid& grid) noexcept {
    RemapTiles<1>(plane, from, grid);
}

constexpr RemapKernels kKernels = {FindTiles,           CountInside, FindChroma,    RemapTilesRgba32,
                                   RemapTilesComponent, RemapRgba32, RemapComponent};
