// Bodies of the portrait kernels, for one level.

// One mix of a register: byte * weight + term, shifted right by 8, even and odd bytes apart.
struct MixTerms {
    U16 evenWeight, evenTerm, oddWeight, oddTerm;

    AVEFFECT_INLINE U8 operator()(U8 samples) const {
        const U16 even = Even(samples) * evenWeight + evenTerm;
        const U16 odd = Odd(samples) * oddWeight + oddTerm;
        return (U8)((even >> 8) | (odd & 0xFF00));
    }
};

// Mixes of pixels with a colour; alpha becomes that of the row.
struct RowOfPixels {
    const PortraitPlace& place;
    uint32_t colour;

    AVEFFECT_INLINE U8 operator()(U8 samples) const {
        for (size_t i = 0; i < place.mixes; ++i) {
            const uint32_t weight = place.weights[i], own = 256 - weight;
            const uint32_t alphaTerm = uint32_t{place.alpha} << 24;
            samples = MixTerms{Splat16(static_cast<uint16_t>(own)),
                               (U16)Splat32((colour & 0xFF00FF) * weight), (U16)Splat32(own),
                               (U16)Splat32(((colour >> 8) & 0xFF) * weight | alphaTerm)}(samples);
        }
        return samples;
    }
};

// Mixes of samples, each as often as the sample stands for luma columns.
struct RowOfSamples {
    const PortraitPlace& place;
    uint32_t value;
    unsigned times;

    AVEFFECT_INLINE U8 operator()(U8 samples) const {
        for (size_t i = 0; i < place.mixes; ++i) {
            const U16 own = Splat16(static_cast<uint16_t>(256 - place.weights[i]));
            const U16 term = Splat16(static_cast<uint16_t>(value * place.weights[i]));
            for (unsigned n = 0; n < times; ++n) samples = MixTerms{own, term, own, term}(samples);
        }
        return samples;
    }
    AVEFFECT_INLINE uint8_t One(uint32_t sample) const {
        for (size_t i = 0; i < place.mixes; ++i)
            for (unsigned n = 0; n < times; ++n)
                sample = (sample * (256u - place.weights[i]) + value * place.weights[i]) >> 8;
        return static_cast<uint8_t>(sample);
    }
};

struct ColumnMixes {
    const PortraitColumns& columns;
    unsigned times;

    AVEFFECT_INLINE U8 Mixed(U8 samples, size_t x) const {
        for (unsigned n = 0; n < times; ++n) {
            const uint16_t* tables = columns.tables + (x - columns.begin) / 2;
            for (size_t pass = 0; pass < columns.passes; ++pass, tables += 4 * columns.pitch)
                samples = MixTerms{Load<U16>(tables), Load<U16>(tables + columns.pitch),
                                   Load<U16>(tables + 2 * columns.pitch),
                                   Load<U16>(tables + 3 * columns.pitch)}(samples);
        }
        return samples;
    }
    AVEFFECT_INLINE void operator()(uint8_t* row) const {
        size_t x = columns.begin;
        for (; x + kLanes <= columns.end; x += kLanes) Store(row + x, Mixed(Load<U8>(row + x), x));
        if (x == columns.end) return;
        U8 rest{};
        std::memcpy(&rest, row + x, columns.end - x);
        rest = Mixed(rest, x);
        std::memcpy(row + x, &rest, columns.end - x);
    }
};

AVEFFECT_INLINE void MixColumns(uint8_t* row, const PortraitFrame& frame, unsigned times) {
    for (const PortraitColumns& run : frame.runs) ColumnMixes{run, times}(row);
}

void PortraitRgba32(Plane32 plane, const PortraitFrame& frame) noexcept {
    for (size_t y = 0; y < plane.rows && plane.width != 0; ++y) {
        uint8_t* const row = plane.Row(y);
        if (frame.rows[y].mixes) ForRow(row, 4 * plane.width, RowOfPixels{frame.rows[y], frame.colour});
        MixColumns(row, frame, 1);
    }
}

void PortraitComponent(Plane8 plane, const PortraitFrame& frame) noexcept {
    for (size_t y = 0; y < plane.rows && plane.width != 0; ++y) {
        uint8_t* const row = plane.Row(y);
        const PortraitPlace& place = frame.rows[y];
        if (place.mixes) {
            uint8_t& end = row[plane.width - 1];
            const uint8_t last = RowOfSamples{place, frame.colour, frame.acrossLast}.One(end);
            ForRow(row, plane.width, RowOfSamples{place, frame.colour, frame.across});
            end = last;
        }
        MixColumns(row, frame, place.samples);
    }
}

constexpr PortraitKernels kKernels = {PortraitRgba32, PortraitComponent};
