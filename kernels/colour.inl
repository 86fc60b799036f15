// Bodies of the colour kernels, for one level.

#if AVEFFECT_LANE_BYTES > 16
// The index within 128 bits of each pixel's first byte: 0, 4, 8, 12, again and again.
AVEFFECT_INLINE U32 PixelStarts() {
    U32 starts{};
    for (unsigned i = 0; i < kLanes / 4; ++i) starts[i] = i % 4 * 4;
    return starts;
}
#endif

// (B + G + R) of each pixel times 21846: for sums up to 765 the upper half is a third of the sum.
AVEFFECT_INLINE U32 ScaledSums(U8 pixels) {
#if AVEFFECT_LANE_BYTES == 16
    const U32 words = (U32)pixels;
    return (U32)(MultiplyAddPairs((I16)(words & 0x00FF00FFu), SplatI16(21846)) +
                 MultiplyAddPairs((I16)((words >> 8) & 0xFFu), SplatI16(21846)));
#else
    const I16 pairs = MultiplyAddPairs(pixels, (U8)Splat32(0x00010101u)); // B + G, R
    return (U32)MultiplyAddPairs(pairs, SplatI16(21846));
#endif
}

// (B + G + R) / 3 of each pixel in B, G and R; A is 0.
AVEFFECT_INLINE U8 MeanOfPixels(U8 pixels) {
#if AVEFFECT_LANE_BYTES == 16
    const U32 mean = ScaledSums(pixels) >> 16;
    return (U8)(mean | (mean << 8) | (mean << 16));
#else
    return PickBytes((U8)ScaledSums(pixels), (U8)(Splat32(0x80020202u) + PixelStarts() * 0x00010101u));
#endif
}

struct Gray {
    AVEFFECT_INLINE U8 operator()(U8 pixels) const { return MeanOfPixels(pixels) | (pixels & AlphaMask()); }
};

struct FlipColor {
    AVEFFECT_INLINE U8 operator()(U8 pixels) const {
#if AVEFFECT_LANE_BYTES == 16
        const U32 words = (U32)pixels;
        const U32 swapped = ((words >> 16) & 0xFFu) | ((words & 0xFFu) << 16);
        return (U8)((words & 0xFF00FF00u) | swapped);
#else
        return PickBytes(pixels, (U8)(Splat32(0x03000102u) + PixelStarts() * 0x01010101u));
#endif
    }
};

struct InvertPixels {
    AVEFFECT_INLINE U8 operator()(U8 pixels) const { return (U8)((U32)pixels ^ 0x00FFFFFFu); }
};

struct InvertSamples {
    AVEFFECT_INLINE U8 operator()(U8 samples) const { return ~samples; }
};

struct AgedFilm {
    AVEFFECT_INLINE U8 operator()(U8 pixels) const {
        // B = R - 35 and G = R - 15; dark pixels are lifted so that B does not fall below 0.
        const U8 mean = Max(MeanOfPixels(pixels), (U8)Splat32(0x00232323u));
        return (mean - (U8)Splat32(0x00000F23u)) | (pixels & AlphaMask());
    }
};

// ((x - 127) * gain >> 8) + offset in 16 bits: (x - 127) * 2^7 times gain * 2 has the result in its high
// half, exactly, for gains from 0 to 4096.
struct Gain16 {
    I16 gain, offset;

    AVEFFECT_INLINE explicit Gain16(MiddleGain map)
        : gain(SplatI16(static_cast<int16_t>(2 * map.gain)))
        , offset(SplatI16(static_cast<int16_t>(map.offset))) {}
    AVEFFECT_INLINE I16 Apply16(I16 x) const { return MultiplyHigh((x << 7) - (127 << 7), gain) + offset; }
    AVEFFECT_INLINE U8 operator()(U8 samples) const {
        return Pack(Apply16(WidenLow(samples)), Apply16(WidenHigh(samples)));
    }
};

#ifdef AVEFFECT_HAS_TABLES
// The gain of all 256 bytes, computed once a plane.
struct GainMap {
    ByteTable table;

    AVEFFECT_INLINE explicit GainMap(MiddleGain map) {
        const Gain16 gain(map);
        U8 bytes{};
        for (unsigned i = 0; i < kLanes; ++i) bytes[i] = static_cast<uint8_t>(i);
        for (unsigned i = 0; i < 4; ++i) table.quarters[i] = gain(bytes + static_cast<uint8_t>(i * kLanes));
    }
    AVEFFECT_INLINE U8 operator()(U8 samples) const { return table(samples); }
};
#else
using GainMap = Gain16;
#endif

struct GainPixels {
    GainMap map;
    AVEFFECT_INLINE U8 operator()(U8 pixels) const { return Select(AlphaMask(), pixels, map(pixels)); }
};

// mean + ((c - mean) * gain >> 8): the difference times 2^6, the gain times 2^2.
struct Saturate {
    GainMap map;
    I16 gain;

#if AVEFFECT_LANE_BYTES == 16
    AVEFFECT_INLINE I16 Spread(I16 c, I16 mean) const { return MultiplyHigh((c - mean) << 6, gain) + mean; }
    AVEFFECT_INLINE U8 operator()(U8 pixels) const {
        const U8 mapped = map(pixels), means = MeanOfPixels(mapped);
        return Select(
            AlphaMask(), pixels,
            Pack(Spread(WidenLow(mapped), WidenLow(means)), Spread(WidenHigh(mapped), WidenHigh(means))));
    }
#else
    // Even and odd bytes apart, each multiplied by 2^6 on the way into its lane.
    AVEFFECT_INLINE U8 operator()(U8 pixels) const {
        const U8 mapped = map(pixels);
        const I16 even = MultiplyAddPairs(mapped, (U8)Splat16(64));
        const I16 odd = MultiplyAddPairs(mapped, (U8)Splat16(64 << 8));
        const I16 mean =
            (I16)PickBytes((U8)ScaledSums(mapped), (U8)(Splat32(0x03020302u) + PixelStarts() * 0x01010101u));
        const I16 scaledMean = mean << 6;
        const U8 apart =
            Pack(MultiplyHigh(even - scaledMean, gain) + mean, MultiplyHigh(odd - scaledMean, gain) + mean);
        return PickColours(pixels, apart, (U8)(Splat32(0x09010800u) + PixelStarts() / 4 * 0x02020202u));
    }
#endif
};

void GrayRgba32(Plane32 plane) noexcept { ForPlane(plane.Bytes(), Gray{}); }
void FlipColorRgba32(Plane32 plane) noexcept { ForPlane(plane.Bytes(), FlipColor{}); }
void InvertRgba32(Plane32 plane) noexcept { ForPlane(plane.Bytes(), InvertPixels{}); }
void AgedFilmRgba32(Plane32 plane) noexcept { ForPlane(plane.Bytes(), AgedFilm{}); }
void MiddleGainRgba32(Plane32 plane, MiddleGain map) noexcept {
    ForPlane(plane.Bytes(), GainPixels{GainMap(map)});
}
void SaturateRgba32(Plane32 plane, MiddleGain map, int32_t gain) noexcept {
    ForPlane(plane.Bytes(), Saturate{GainMap(map), SplatI16(static_cast<int16_t>(4 * gain))});
}
void InvertComponent(Plane8 plane) noexcept { ForPlane(plane, InvertSamples{}); }
void MiddleGainComponent(Plane8 plane, MiddleGain map) noexcept { ForPlane(plane, GainMap(map)); }

void SwapPlanes(Plane8 first, Plane8 second) noexcept {
    const size_t width = first.width < second.width ? first.width : second.width;
    const size_t rows = first.rows < second.rows ? first.rows : second.rows;
    for (size_t y = 0; y < rows; ++y) Exchange(first.Row(y), second.Row(y), width, Straight{});
}

constexpr ColourKernels kKernels = {GrayRgba32,      FlipColorRgba32,     InvertRgba32,
                                    AgedFilmRgba32,  MiddleGainRgba32,    SaturateRgba32,
                                    InvertComponent, MiddleGainComponent, SwapPlanes};
