// Bodies of the mirage kernels, for one level.

#include "kernels/lanes/columns.inl"

AVEFFECT_INLINE size_t AtMost(size_t x, size_t limit) { return x < limit ? x : limit; }

// Along one axis: the sample of a plane of size samples that enlarged sample i comes from, which is where the
// last of its luma samples comes from.
AVEFFECT_INLINE size_t Origin(size_t i, uint32_t offset, uint32_t step, unsigned shift, size_t lumaSize,
                              size_t size) {
    const size_t luma = AtMost(((i + 1) << shift) - 1, lumaSize - 1);
    const size_t origin = (offset + static_cast<uint32_t>(luma) * step) >> 16;
    return AtMost(AtMost(origin, lumaSize - 1) >> shift, size - 1);
}

// Along one axis: how many luma samples sample i stands for.
AVEFFECT_INLINE unsigned LumaSamples(size_t i, unsigned shift, size_t lumaSize) {
    return static_cast<unsigned>(AtMost(size_t{1} << shift, lumaSize - (i << shift)));
}

// The enlarged rows of a plane.
template <size_t Bytes>
struct RowEnlarger {
    RowPicker<Bytes> picker;
    uint8_t* row; // the latest

    AVEFFECT_INLINE RowEnlarger(const Mirage& mirage, size_t samples, size_t originSamples, uint8_t* scratch)
        : picker(samples, originSamples, scratch)
        , row(scratch + ColumnScratchBytes(samples)) {
        for (size_t x = 0; x < samples; ++x)
            picker.columns[x] = static_cast<uint32_t>(
                Origin(x, mirage.offsetX, mirage.step, mirage.horizontalShift, mirage.width, originSamples));
        picker.Prepare();
    }
    AVEFFECT_INLINE void Enlarge(const uint8_t* from, const uint8_t* soon) const {
        picker.Pick(row, from, soon);
    }
};

// (own * (256 - weight) + enlarged * weight) >> 8, times over, each on the result of the one before.
struct Blend {
    U16 ownWeight, weight;
    unsigned times;

    AVEFFECT_INLINE explicit Blend(uint32_t enlargedWeight, unsigned count = 1)
        : ownWeight(Splat16(static_cast<uint16_t>(256 - enlargedWeight)))
        , weight(Splat16(static_cast<uint16_t>(enlargedWeight)))
        , times(count) {}
    AVEFFECT_INLINE U8 operator()(U8 own, U8 enlarged) const {
        const U16 evenShare = Even(own) * ownWeight, oddShare = Odd(own) * ownWeight;
        U16 even = Even(enlarged), odd = Odd(enlarged);
        for (unsigned i = 0; i < times; ++i) {
            even = (evenShare + even * weight) >> 8;
            odd = (oddShare + odd * weight) >> 8;
        }
        return Join(even, odd);
    }
};

struct BlendColours {
    Blend blend;
    AVEFFECT_INLINE U8 operator()(U8 own, U8 enlarged) const {
        return Select(AlphaMask(), enlarged, blend(own, enlarged));
    }
};

AVEFFECT_INLINE uint8_t BlendByte(uint32_t own, uint32_t enlarged, uint32_t weight, unsigned times) {
    for (unsigned i = 0; i < times; ++i) enlarged = (own * (256 - weight) + enlarged * weight) >> 8;
    return static_cast<uint8_t>(enlarged);
}

template <class Op>
AVEFFECT_INLINE void MirageRows(Plane32 plane, Plane32 copy, const Mirage& mirage, uint8_t* scratch,
                                const Op& op) {
    if (plane.Empty() || copy.Empty()) return;
    const RowEnlarger<4> enlarger(mirage, plane.width, copy.width, scratch);
    for (size_t y = 0; y < plane.rows; ++y) {
        const uint8_t* const from =
            copy.Row(Origin(y, mirage.offsetY, mirage.step, 0, mirage.height, copy.rows));
        uint8_t* const row = plane.Row(y);
        enlarger.Enlarge(from, from + copy.pitch);
        ForRowWith(row, enlarger.row, plane.width * 4, row + plane.pitch, op);
    }
}

void MirageRgba32(Plane32 plane, Plane32 copy, const Mirage& mirage, uint8_t* scratch) noexcept {
    MirageRows(plane, copy, mirage, scratch, BlendColours{Blend(mirage.weight)});
}
void MirageRgba32Mmx(Plane32 plane, Plane32 copy, const Mirage& mirage, uint8_t* scratch) noexcept {
    MirageRows(plane, copy, mirage, scratch, Blend(mirage.weight));
}

void MirageComponent(Plane8 plane, Plane8 copy, const Mirage& mirage, uint8_t* scratch) noexcept {
    if (plane.Empty() || copy.Empty() || mirage.width == 0 || mirage.height == 0) return;
    const unsigned hShift = mirage.horizontalShift, vShift = mirage.verticalShift;
    const size_t width = AtMost(plane.width, ((mirage.width - 1) >> hShift) + 1);
    const size_t rows = AtMost(plane.rows, ((mirage.height - 1) >> vShift) + 1);
    const RowEnlarger<1> enlarger(mirage, width, copy.width, scratch);
    const unsigned across = 1u << hShift, acrossLast = LumaSamples(width - 1, hShift, mirage.width);
    for (size_t y = 0; y < rows; ++y) {
        const uint8_t* const from =
            copy.Row(Origin(y, mirage.offsetY, mirage.step, vShift, mirage.height, copy.rows));
        enlarger.Enlarge(from, from + copy.pitch);
        const unsigned down = LumaSamples(y, vShift, mirage.height);
        uint8_t* const row = plane.Row(y);
        const uint8_t last =
            BlendByte(row[width - 1], enlarger.row[width - 1], mirage.weight, acrossLast * down);
        ForRowWith(row, enlarger.row, width, row + plane.pitch, Blend(mirage.weight, across * down));
        row[width - 1] = last;
    }
}

constexpr MirageKernels kKernels = {MirageRgba32, MirageRgba32Mmx, MirageComponent};
