// Bodies of the fade kernels, for one level.

// From this level on every sample but 0 reaches the limit, so that larger levels need no more bits.
AVEFFECT_INLINE uint16_t Limited(uint32_t level) {
    return static_cast<uint16_t>(level < 0xFFFF ? level : 0xFFFF);
}

struct ScaleAlpha {
    U16 level;
    AVEFFECT_INLINE U8 operator()(U8 pixels) const {
        // A, times 256, is the upper half of the odd lanes.
        const U16 alpha = LimitToByte(MultiplyHigh((U16)(pixels & AlphaMask()), level));
        return Select(AlphaMask(), (U8)(alpha << 8), pixels);
    }
};

struct ScaleSamples {
    U16 level;
    AVEFFECT_INLINE U8 operator()(U8 samples) const {
        return Join(LimitToByte(MultiplyHigh(EvenTimes256(samples), level)),
                    LimitToByte(MultiplyHigh(OddTimes256(samples), level)));
    }
};

// c * level + k * (256 - level) for levels up to 256 fits in 16 bits. Even and odd bytes have weights of
// their own: alpha is an odd byte, and keeps its value with 256 and 0.
struct Mix {
    U16 evenLevel, oddLevel, evenColour, oddColour;

    AVEFFECT_INLINE U8 operator()(U8 samples) const {
        const U16 even = Even(samples) * evenLevel + evenColour;
        const U16 odd = Odd(samples) * oddLevel + oddColour;
        return (U8)((even >> 8) | (odd & 0xFF00));
    }
};

// Beyond 256 the samples move away from the colour: k + ((c - k) * level >> 8), the way up and the way down
// each computed from a difference that is not negative, and the way down rounded up.
struct MoveAway {
    U8 colour;
    U16 level;

    AVEFFECT_INLINE U16 Up(U16 difference256) const {
        return LimitToByte(MultiplyHigh(difference256, level));
    }
    AVEFFECT_INLINE U16 Down(U16 difference256) const {
        const U16 remainder = (U16)(difference256 * level != 0); // all ones, -1, where there is one
        return LimitToByte(MultiplyHigh(difference256, level) - remainder);
    }
    AVEFFECT_INLINE U8 operator()(U8 samples) const {
        const U8 above = SubSaturated(samples, colour), below = SubSaturated(colour, samples);
        const U8 up = Join(Up(EvenTimes256(above)), Up(OddTimes256(above)));
        const U8 down = Join(Down(EvenTimes256(below)), Down(OddTimes256(below)));
        return SubSaturated(AddSaturated(colour, up), down);
    }
};

struct MovePixelsAway {
    MoveAway move;
    AVEFFECT_INLINE U8 operator()(U8 pixels) const { return Select(AlphaMask(), pixels, move(pixels)); }
};

void ScaleAlphaRgba32(Plane32 plane, uint32_t level) noexcept {
    ForPlane(plane.Bytes(), ScaleAlpha{Splat16(Limited(level))});
}
void ScaleComponent(Plane8 plane, uint32_t level) noexcept {
    ForPlane(plane, ScaleSamples{Splat16(Limited(level))});
}

void MixRgba32(Plane32 plane, uint32_t level, uint32_t colour) noexcept {
    const uint32_t even = colour & 0x00FF00FFu, odd = (colour >> 8) & 0xFFu;
    if (level > 256) {
        ForPlane(plane.Bytes(), MovePixelsAway{{(U8)Splat32(colour), Splat16(Limited(level))}});
        return;
    }
    ForPlane(plane.Bytes(), Mix{Splat16(static_cast<uint16_t>(level)), (U16)Splat32(level | (256u << 16)),
                                (U16)Splat32(even * (256 - level)), (U16)Splat32(odd * (256 - level))});
}

void MixComponent(Plane8 plane, uint32_t level, uint8_t value) noexcept {
    if (level > 256) {
        ForPlane(plane, MoveAway{Splat8(value), Splat16(Limited(level))});
        return;
    }
    const U16 weight = Splat16(static_cast<uint16_t>(level));
    const U16 added = Splat16(static_cast<uint16_t>(value * (256 - level)));
    ForPlane(plane, Mix{weight, weight, added, added});
}

constexpr FadeKernels kKernels = {ScaleAlphaRgba32, ScaleComponent, MixRgba32, MixComponent};
