// Bodies of the emboss kernels, for one level.

template <class Relief>
struct KeepAlpha {
    Relief relief;
    AVEFFECT_INLINE U8 operator()(U8 pixels, U8 above) const {
        return Select(AlphaMask(), pixels, relief(pixels, above));
    }
};

// (c - above) * level, limited to -128..127, plus 128. Up to 127 nothing can overflow, so the limits may come
// last in both kinds of kernels.
struct LimitedRelief {
    I16 level; // -128 to 128

    AVEFFECT_INLINE I16 Lanes(I16 samples, I16 above) const { return (samples - above) * level; }
    AVEFFECT_INLINE U8 operator()(U8 samples, U8 above) const {
        return PackSigned(Lanes(WidenLow(samples), WidenLow(above)),
                          Lanes(WidenHigh(samples), WidenHigh(above))) ^
               0x80;
    }
};

#if AVEFFECT_LANE_BYTES > 16
// The same with less work: each sample and the one above side by side, times level and -level.
struct SmallRelief {
    U8 levels;

    AVEFFECT_INLINE explicit SmallRelief(int32_t level) // -127 to 127
        : levels((U8)Splat16(static_cast<uint16_t>((level & 0xFF) | (-level & 0xFF) << 8))) {}
    AVEFFECT_INLINE U8 operator()(U8 samples, U8 above) const {
        return PackSigned(MultiplyAddPairs(InterleaveLow(samples, above), levels),
                          MultiplyAddPairs(InterleaveHigh(samples, above), levels)) ^
               0x80;
    }
};
#else
struct SmallRelief : LimitedRelief {
    AVEFFECT_INLINE explicit SmallRelief(int32_t smallLevel)
        : LimitedRelief{SplatI16(static_cast<int16_t>(smallLevel))} {}
};
#endif

AVEFFECT_INLINE bool IsSmall(int32_t level) { return level >= -127 && level <= 127; }

struct WhiteningRelief {
    U16 level; // -255 to 255: no product comes back into 0..254 by wrapping

    AVEFFECT_INLINE U16 Lanes(U16 samples, U16 above) const {
        return LimitToByte((samples - above) * level + 128);
    }
    AVEFFECT_INLINE U8 operator()(U8 samples, U8 above) const {
        return Join(Lanes(Even(samples), Even(above)), Lanes(Odd(samples), Odd(above)));
    }
};

struct WrappingRelief {
    I16 level;

    AVEFFECT_INLINE I16 Lanes(I16 samples, I16 above) const {
        return SubSaturated(samples * level + 128, above * level);
    }
    AVEFFECT_INLINE U8 operator()(U8 samples, U8 above) const {
        return Pack(Lanes(WidenLow(samples), WidenLow(above)), Lanes(WidenHigh(samples), WidenHigh(above)));
    }
};

AVEFFECT_INLINE int32_t Between(int32_t low, int32_t x, int32_t high) {
    return x < low ? low : x > high ? high : x;
}

void EmbossRgba32(Plane32 plane, int32_t level) noexcept {
    if (IsSmall(level)) {
        ForRowsUpwards(plane.Bytes(), plane.width * 4, KeepAlpha<SmallRelief>{SmallRelief(level)});
        return;
    }
    // From 128 on, every difference but 0 reaches the limit.
    const I16 limited = SplatI16(static_cast<int16_t>(Between(-128, level, 128)));
    ForRowsUpwards(plane.Bytes(), plane.width * 4, KeepAlpha<LimitedRelief>{{limited}});
}

// Levels so large that products of 32 bits wrap.
void EmbossComponentWrapped(Plane8 plane, uint32_t level) {
    for (size_t y = plane.rows; y-- > 1;) {
        uint8_t* row = plane.Row(y);
        const uint8_t* above = plane.Row(y - 1);
        for (size_t x = 0; x < plane.width; ++x) {
            const uint32_t difference = uint32_t{row[x]} - uint32_t{above[x]};
            const uint32_t value = difference * level + 128;
            row[x] = static_cast<uint8_t>(value < 255 ? value : 255);
        }
    }
}

void EmbossComponent(Plane8 plane, int32_t level) noexcept {
    constexpr int32_t kWraps = 1 << 24;
    if (level > kWraps || level < -kWraps) {
        EmbossComponentWrapped(plane, static_cast<uint32_t>(level));
        return;
    }
    // From 255 on, every difference but 0 is white.
    const auto limited = static_cast<uint16_t>(Between(-255, level, 255));
    ForRowsUpwards(plane, plane.width, WhiteningRelief{Splat16(limited)});
}

void EmbossRgba32Mmx(Plane32 plane, int32_t level) noexcept {
    if (IsSmall(level)) {
        EmbossRgba32(plane, level);
        return;
    }
    ForRowsUpwards(plane.Bytes(), plane.width * 4,
                   KeepAlpha<WrappingRelief>{{SplatI16(static_cast<int16_t>(level))}});
}

void EmbossComponentMmx(Plane8 plane, int32_t level) noexcept {
    const size_t whole = plane.width & ~size_t{3};
    if (IsSmall(level))
        ForRowsUpwards(plane, whole, SmallRelief(level));
    else
        ForRowsUpwards(plane, whole, WrappingRelief{SplatI16(static_cast<int16_t>(level))});
    for (size_t y = plane.rows; y-- > 1;)
        for (size_t x = whole; x < plane.width; ++x) {
            const int difference = plane.Row(y)[x] - plane.Row(y - 1)[x];
            plane.Row(y)[x] = TruncToByte(Between(-128, 2 * difference, 127) + 128);
        }
}

constexpr EmbossKernels kKernels = {EmbossRgba32, EmbossComponent, EmbossRgba32Mmx, EmbossComponentMmx};
