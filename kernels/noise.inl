// Bodies of the noise kernels, for one level.

struct AddNoise {
    U16 gain;
    AVEFFECT_INLINE U8 operator()(U8 samples, U8 noise) const {
        const U8 gained = Join(LimitToByte(MultiplyHigh(EvenTimes256(samples), gain)),
                               LimitToByte(MultiplyHigh(OddTimes256(samples), gain)));
        return AddSaturated(gained, noise);
    }
};

struct AddNoiseToPixels {
    AddNoise add;
    AVEFFECT_INLINE U8 operator()(U8 pixels, U8 noise) const {
        return Select(AlphaMask(), pixels, add(pixels, noise));
    }
};

template <class Op>
AVEFFECT_INLINE void ForPlaneWithNoise(Plane8 plane, const uint8_t* noise, const Op& op) {
    plane = Joined(plane);
    if (plane.width == 0) return;
    for (size_t y = 0; y < plane.rows; ++y)
        ForRowWith(plane.Row(y), noise + y * plane.width, plane.width, op);
}

void AddNoiseRgba32(Plane32 plane, const uint8_t* noise, uint32_t gain) noexcept {
    ForPlaneWithNoise(plane.Bytes(), noise, AddNoiseToPixels{{Splat16(static_cast<uint16_t>(gain))}});
}
void AddNoiseComponent(Plane8 plane, const uint8_t* noise, uint32_t gain) noexcept {
    ForPlaneWithNoise(plane, noise, AddNoise{Splat16(static_cast<uint16_t>(gain))});
}

constexpr NoiseKernels kKernels = {AddNoiseRgba32, AddNoiseComponent};
