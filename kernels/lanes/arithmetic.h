#pragma once
/// Narrowing, said by name.
#include <cstdint>

namespace AVBased::kernels {

/// The low byte.
constexpr uint8_t TruncToByte(int value) noexcept { return static_cast<uint8_t>(value); }

/// The nearest value a byte can hold.
constexpr uint8_t ClampToByte(int value) noexcept {
    return static_cast<uint8_t>(value < 0 ? 0 : value > 255 ? 255 : value);
}

} // namespace AVBased::kernels
