// Bodies of the mosaic kernels, for one level. A band's first row is made block by block, its other rows are
// copies of it.

AVEFFECT_INLINE size_t Smaller(size_t a, size_t b) { return a < b ? a : b; }

// Past the last column that the blocks of a row write.
AVEFFECT_INLINE size_t EndOfBlocks(const MosaicArea& area, size_t width) {
    const size_t block = size_t{1} << area.step;
    return Smaller(width, area.left + (area.right - area.left + block - 1) / block * block);
}

// Repeats one sample from start to stop.
template <size_t Piece>
AVEFFECT_INLINE void FillBlock(uint8_t* start, const uint8_t* stop, uint32_t word) {
    typedef uint32_t Words __attribute__((vector_size(Piece)));
    const Words words = Words{} + word;
    for (; start + Piece <= stop; start += Piece) std::memcpy(start, &words, Piece);
    if (start < stop) std::memcpy(start, &words, static_cast<size_t>(stop - start)); // the row cuts the block
}

// Every sample of a block becomes the first of the same block in from, which may be the row itself. Left, end
// and block in bytes; Piece divides the block.
template <size_t SampleBytes, size_t Piece>
AVEFFECT_INLINE void FillBlocks(uint8_t* row, const uint8_t* from, size_t left, size_t end, size_t block) {
    for (size_t start = left; start < end; start += block) {
        uint32_t word = from[start] * 0x01010101u;
        if constexpr (SampleBytes == 4) std::memcpy(&word, from + start, sizeof word);
        FillBlock<Piece>(row + start, row + Smaller(start + block, end), word);
    }
}

template <size_t SampleBytes>
AVEFFECT_INLINE void FillRow(uint8_t* row, const uint8_t* from, size_t left, size_t end, size_t block) {
#if AVEFFECT_LANE_BYTES > 16
    // Blocks that 128 bits hold: within these, each byte comes from its block's first sample.
    if (block <= 16) {
        U8 origins{};
        for (unsigned i = 0; i < kLanes; ++i)
            origins[i] = static_cast<uint8_t>((i % 16 & ~(block - 1)) + i % SampleBytes);
        for (; left + kLanes <= end; left += kLanes)
            Store(row + left, PickBytes(Load<U8>(from + left), origins));
    }
#endif
    if (block >= kLanes)
        FillBlocks<SampleBytes, kLanes>(row, from, left, end, block);
    else if (block >= 16)
        FillBlocks<SampleBytes, 16>(row, from, left, end, block);
    else if (block == 8)
        FillBlocks<SampleBytes, 8>(row, from, left, end, block);
    else if (block == 4)
        FillBlocks<SampleBytes, 4>(row, from, left, end, block);
    else
        for (size_t x = left; x < end; ++x) row[x] = from[left + ((x - left) & ~(block - 1))];
}

template <size_t SampleBytes>
AVEFFECT_INLINE void MosaicPlane(uint8_t* data, size_t pitch, size_t width, const MosaicArea& area) {
    if (area.left >= area.right) return;
    const size_t block = size_t{1} << area.step;
    const size_t left = area.left * SampleBytes, end = EndOfBlocks(area, width) * SampleBytes;
    for (size_t top = area.top; top < area.bottom; top += block) {
        uint8_t* const first = data + top * pitch;
        FillRow<SampleBytes>(first, first, left, end, block * SampleBytes);
        for (size_t y = top + 1; y < Smaller(top + block, area.bottom); ++y)
            std::memcpy(data + y * pitch + left, first + left, end - left);
    }
}

void MosaicRgba32(Plane32 plane, const MosaicArea& area) noexcept {
    MosaicPlane<4>(plane.data, plane.pitch, plane.width, area);
}
void MosaicLuma(Plane8 plane, const MosaicArea& area) noexcept {
    MosaicPlane<1>(plane.data, plane.pitch, plane.width, area);
}

// Copies count samples that stand Stride apart.
template <size_t Stride>
AVEFFECT_INLINE void CopyStrided(uint8_t* to, const uint8_t* from, size_t count) {
    const U8 mask = Stride == 2 ? (U8)Splat16(0x00FF) : (U8)Splat32(0x000000FFu);
    const size_t bytes = (count - 1) * Stride + 1;
    size_t x = 0;
    for (; x + kLanes <= bytes; x += kLanes)
        Store(to + x, Select(mask, Load<U8>(from + x), Load<U8>(to + x)));
    for (; x < bytes; x += Stride) to[x] = from[x];
}
template <>
AVEFFECT_INLINE void CopyStrided<1>(uint8_t* to, const uint8_t* from, size_t count) {
    std::memcpy(to, from, count);
}

template <size_t Stride>
AVEFFECT_INLINE void MosaicStrided(Plane8 plane, const MosaicArea& area, size_t left, size_t count,
                                   unsigned verticalShift, uint8_t* blocks) {
    const size_t block = size_t{1} << area.step;
    for (size_t top = area.top; top < area.bottom; top += block) {
        const size_t bottom = Smaller(top + block, area.bottom);
        const size_t firstRow = top >> verticalShift;
        const size_t lastRow = Smaller((bottom - 1) >> verticalShift, plane.rows - 1);
        if (firstRow >= plane.rows) return;
        FillRow<1>(blocks, plane.Row(firstRow) + left, 0, (count - 1) * Stride + 1, block / 4 * Stride);
        for (size_t y = firstRow; y <= lastRow; ++y) CopyStrided<Stride>(plane.Row(y) + left, blocks, count);
    }
}

void MosaicChroma(Plane8 plane, const MosaicArea& area, size_t lumaWidth, unsigned horizontalShift,
                  unsigned verticalShift, uint8_t* scratch) noexcept {
    const size_t left = area.left >> horizontalShift, stride = size_t{4} >> horizontalShift;
    if (area.left >= area.right || left >= plane.width || plane.rows == 0) return;
    const size_t steps = (EndOfBlocks(area, lumaWidth) - area.left + 3) / 4;
    const size_t count = Smaller(steps, (plane.width - left + stride - 1) / stride);
    if (stride == 1)
        MosaicStrided<1>(plane, area, left, count, verticalShift, scratch);
    else if (stride == 2)
        MosaicStrided<2>(plane, area, left, count, verticalShift, scratch);
    else
        MosaicStrided<4>(plane, area, left, count, verticalShift, scratch);
}

constexpr MosaicKernels kKernels = {MosaicRgba32, MosaicLuma, MosaicChroma};
