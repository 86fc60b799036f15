// Bodies of the flatten kernels, for one level.
#include "kernels/block_means.inl"

struct FlattenPixels {
    AVEFFECT_INLINE U8 operator()(U8 pixels) const {
        const U32 one = (U32)pixels >> 24;
        const U16 alpha = (U16)(one | (one << 16));
        return Join(DividedBy255(Even(pixels) * alpha), DividedBy255(Odd(pixels) * alpha)) | AlphaMask();
    }
};

struct CoverPixels {
    AVEFFECT_INLINE U8 operator()(U8 below, U8 above) const {
        const U32 one = (U32)above >> 24;
        const U16 alpha = (U16)(one | (one << 16)), rest = 255 - alpha;
        return Join(DividedBy255(Even(above) * alpha + Even(below) * rest),
                    DividedBy255(Odd(above) * alpha + Odd(below) * rest)) |
               AlphaMask();
    }
};

struct FlattenSamples {
    U16 colour;

    AVEFFECT_INLINE U16 Blended(U16 samples, U16 alpha) const {
        return DividedBy255(samples * alpha + colour * (255 - alpha));
    }
    AVEFFECT_INLINE U8 operator()(U8 samples, U8 alpha) const {
        return Join(Blended(Even(samples), Even(alpha)), Blended(Odd(samples), Odd(alpha)));
    }
};

void FlattenRgba32(Plane32 plane) noexcept { ForPlane(plane.Bytes(), FlattenPixels{}); }

void CoverRgba32(Plane32 below, Plane32 above) noexcept {
    const Plane8 to = below.Bytes(), from = above.Bytes();
    for (size_t y = 0; y < to.rows && to.width > 0; ++y)
        ForRowWith(to.Row(y), from.Row(y), to.width, CoverPixels{});
}

void FlattenComponent(Plane8 plane, Plane8 alpha, uint8_t colour) noexcept {
    if (plane.Empty()) return;
    const FlattenSamples flatten{Splat16(colour)};
    for (size_t y = 0; y < plane.rows; ++y) ForRowWith(plane.Row(y), alpha.Row(y), plane.width, flatten);
}

void FlattenQuarter(Plane8 plane, Plane8 alpha, uint8_t colour) noexcept {
    if (plane.Empty()) return;
    const FlattenSamples flatten{Splat16(colour)};
    for (size_t y = 0; y < plane.rows; ++y) {
        const BlockMeans<1> means(alpha, y, 1);
        uint8_t* const row = plane.Row(y);
        size_t x = 0;
        for (; x + kLanes <= plane.width; x += kLanes)
            Store(row + x, flatten(Load<U8>(row + x), means.AtEnd(2 * x, alpha.width - 2 * x)));
        if (x == plane.width) continue;
        U8 last{};
        std::memcpy(&last, row + x, plane.width - x);
        last = flatten(last, means.AtEnd(2 * x, alpha.width - 2 * x));
        std::memcpy(row + x, &last, plane.width - x);
    }
}

constexpr FlattenKernels kKernels = {FlattenRgba32, CoverRgba32, FlattenComponent, FlattenQuarter};
