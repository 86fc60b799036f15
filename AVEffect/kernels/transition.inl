// Bodies of the transition kernels, for one level.

// The product or sum cut to a whole number and limited to a byte.
AVEFFECT_INLINE uint8_t CutToByte(double value) {
    return value >= 256 ? 255 : value < 1 ? 0 : static_cast<uint8_t>(value);
}

void CrossFadeRgba32(Plane32 out, Plane32 first, Plane32 second, double progress) noexcept {
    const double rest = 1 - progress;
    for (size_t y = 0; y < out.rows; ++y) {
        uint8_t* const to = out.Row(y);
        const uint8_t *const a = first.Row(y), *const b = second.Row(y);
        for (size_t x = 0; x < out.width * 4; ++x)
            if (x % 4 != 3) to[x] = CutToByte(a[x] * rest + b[x] * progress);
    }
}

void MirrorRgba32(Plane32 out, Plane32 picture, const double* gains) noexcept {
    for (size_t y = 0; y < out.rows; ++y)
        for (size_t x = 0; x < out.width; ++x)
            for (size_t i = 0; i < 3; ++i)
                out.Row(y)[x * 4 + i] = CutToByte(picture.Row(y)[(out.width - 1 - x) * 4 + i] * gains[x]);
}

constexpr TransitionKernels kKernels = {CrossFadeRgba32, MirrorRgba32};
