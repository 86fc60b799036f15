// Bodies of the reverse kernels, for one level. Plane is Plane32 with units of 4 bytes, or Plane8 with single
// bytes.

template <size_t UnitBytes, class Plane>
AVEFFECT_INLINE void Mirror(Plane plane) {
    const size_t half = plane.width / 2 * UnitBytes, right = plane.width * UnitBytes - half;
    for (size_t y = 0; y < plane.rows; ++y)
        Exchange(plane.Row(y), plane.Row(y) + right, half, Reversed<UnitBytes>{});
}

template <size_t UnitBytes, class Plane>
AVEFFECT_INLINE void ExchangeOpposites(Plane plane) {
    const size_t half = plane.width / 2 * UnitBytes, right = plane.width * UnitBytes - half;
    for (size_t y = 0; y < plane.rows / 2; ++y) {
        uint8_t* const upper = plane.Row(y);
        uint8_t* const lower = plane.Row(plane.rows - 1 - y);
        if (half == right) {
            Exchange(upper, lower, 2 * half, Reversed<UnitBytes>{});
            continue;
        }
        Exchange(upper, lower + right, half, Reversed<UnitBytes>{});
        Exchange(upper + right, lower, half, Reversed<UnitBytes>{});
    }
}

void MirrorRgba32(Plane32 plane) noexcept { Mirror<4>(plane); }
void MirrorComponent(Plane8 plane) noexcept { Mirror<1>(plane); }
void FlipComponent(Plane8 plane) noexcept {
    for (size_t y = 0; y < plane.rows / 2; ++y)
        Exchange(plane.Row(y), plane.Row(plane.rows - 1 - y), plane.width, Straight{});
}
void OppositeRgba32(Plane32 plane) noexcept { ExchangeOpposites<4>(plane); }
void OppositeComponent(Plane8 plane) noexcept { ExchangeOpposites<1>(plane); }

constexpr ReverseKernels kKernels = {MirrorRgba32, MirrorComponent, FlipComponent, OppositeRgba32,
                                     OppositeComponent};
