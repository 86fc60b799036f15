// Bodies of the area kernels, for one level.
#include "kernels/lanes/channels.inl"

constexpr float kLaneNumbers[16] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
constexpr size_t kPlaces = kLanes / 4; // of a register of floats

AVEFFECT_INLINE F32 Where(I32 mask, F32 a, F32 b) { return (F32)(((I32)a & mask) | ((I32)b & ~mask)); }
AVEFFECT_INLINE F32 AtLeast(F32 x, float low) { return Where(x > low, x, SplatF32(low)); }
AVEFFECT_INLINE F32 AtMost(F32 x, float high) { return Where(x < high, x, SplatF32(high)); }
AVEFFECT_INLINE F32 Magnitude(F32 x) { return (F32)((U32)x & 0x7FFFFFFFu); }

// A quarter of an ellipse. The border's point nearest to a place is (a cos, b sin) of some angle. Of a guess,
// the border is taken for a circle around its centre of curvature, on which the place's nearest point is
// known; that is the next guess. Three lead from 45 degrees to where no level shows the difference.
struct Ellipse {
    F32 width, height, perWidth, perHeight, evolute; // a, b, their inverses, a * a - b * b

    AVEFFECT_INLINE explicit Ellipse(const EllipseRamp& ramp)
        : width(SplatF32(ramp.halfWidth))
        , height(SplatF32(ramp.halfHeight))
        , perWidth(SplatF32(1 / ramp.halfWidth))
        , perHeight(SplatF32(1 / ramp.halfHeight))
        , evolute(width * width - height * height) {}

    // Negative outside. x and y are not.
    AVEFFECT_INLINE F32 Distance(F32 x, F32 y) const {
        constexpr float kTiny = 1e-20F; // instead of 0, which nothing can be divided by
        F32 cosine = SplatF32(0.70710678F), sine = cosine;
        for (int i = 0; i < 3; ++i) {
            const F32 centreX = evolute * perWidth * cosine * cosine * cosine;
            const F32 centreY = -evolute * perHeight * sine * sine * sine;
            const F32 borderX = width * cosine - centreX, borderY = height * sine - centreY;
            const F32 placeX = x - centreX, placeY = y - centreY;
            const F32 radius = borderX * borderX + borderY * borderY;
            const F32 reach = SquareRoot(radius / AtLeast(placeX * placeX + placeY * placeY, kTiny));
            cosine = AtMost(AtLeast((placeX * reach + centreX) * perWidth, 0), 1);
            sine = AtMost(AtLeast((placeY * reach + centreY) * perHeight, 0), 1);
            const F32 perLength = 1.0F / SquareRoot(AtLeast(cosine * cosine + sine * sine, kTiny));
            cosine = cosine * perLength;
            sine = sine * perLength;
        }
        const F32 apartX = width * cosine - x, apartY = height * sine - y;
        const F32 distance = SquareRoot(apartX * apartX + apartY * apartY);
        const F32 acrossUnits = x * perWidth, downUnits = y * perHeight;
        return Where(acrossUnits * acrossUnits + downUnits * downUnits < 1, distance, -distance);
    }
};

void SoftEllipse(uint8_t* to, size_t count, float x, float y, const EllipseRamp& ramp) noexcept {
    const Ellipse ellipse(ramp);
    const F32 down = Magnitude(SplatF32(y));
    for (size_t i = 0; i < count; i += kPlaces) {
        const F32 across = Magnitude(Load<F32>(kLaneNumbers) + (x + static_cast<float>(i)));
        const F32 level = ellipse.Distance(across, down) * ramp.levels + 128.0F; // a half for rounding
        const I32 limited = Truncated(AtMost(AtLeast(level, 0), 255));
        const U8 bytes = InOrder(Pack(PackPairs(limited, I32{}), I16{}));
        std::memcpy(to + i, &bytes, count - i < kPlaces ? count - i : kPlaces);
    }
}

constexpr AreaKernels kKernels = {SoftEllipse};
