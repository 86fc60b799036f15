// Bodies of the reverse kernels, for one level. Plane is Plane32 with units of 4 bytes, or Plane8 with single
// bytes.

template <size_t UnitBytes>
AVEFFECT_INLINE void MirrorRow(uint8_t* row, size_t width) {
    const size_t half = width / 2 * UnitBytes;
    Exchange(row, row + width * UnitBytes - half, half, Reversed<UnitBytes>{});
}

template <size_t UnitBytes, class Plane>
AVEFFECT_INLINE void Mirror(Plane plane) {
    for (size_t y = 0; y < plane.rows; ++y) MirrorRow<UnitBytes>(plane.Row(y), plane.width);
}

template <size_t UnitBytes, class Plane>
AVEFFECT_INLINE void ExchangeOpposites(Plane plane, bool withMiddle) {
    const size_t width = plane.width * UnitBytes;
    const size_t half = plane.width / 2 * UnitBytes, right = width - half;
    for (size_t y = 0; y < plane.rows / 2; ++y) {
        uint8_t* const upper = plane.Row(y);
        uint8_t* const lower = plane.Row(plane.rows - 1 - y);
        if (withMiddle || half == right) {
            Exchange(upper, lower, width, Reversed<UnitBytes>{});
            continue;
        }
        Exchange(upper, lower + right, half, Reversed<UnitBytes>{});
        Exchange(upper + right, lower, half, Reversed<UnitBytes>{});
    }
    if (withMiddle && plane.rows % 2 == 1) MirrorRow<UnitBytes>(plane.Row(plane.rows / 2), plane.width);
}

void MirrorRgba32(Plane32 plane) noexcept { Mirror<4>(plane); }
void MirrorComponent(Plane8 plane) noexcept { Mirror<1>(plane); }
void FlipComponent(Plane8 plane) noexcept {
    for (size_t y = 0; y < plane.rows / 2; ++y)
        Exchange(plane.Row(y), plane.Row(plane.rows - 1 - y), plane.width, Straight{});
}
void OppositeRgba32(Plane32 plane) noexcept { ExchangeOpposites<4>(plane, false); }
void OppositeComponent(Plane8 plane) noexcept { ExchangeOpposites<1>(plane, false); }

void HalfTurnRgba32(Plane32 plane) noexcept { ExchangeOpposites<4>(plane, true); }
void HalfTurnComponent(Plane8 plane) noexcept { ExchangeOpposites<1>(plane, true); }

constexpr ReverseKernels kKernels = {MirrorRgba32,      MirrorComponent, FlipComponent,    OppositeRgba32,
                                     OppositeComponent, HalfTurnRgba32,  HalfTurnComponent};
