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

/// A product that wraps in 32 bits.
constexpr int32_t WrappingMultiply(int32_t a, int32_t b) noexcept {
    return static_cast<int32_t>(static_cast<uint32_t>(a) * static_cast<uint32_t>(b));
}

/// A sum that wraps in 32 bits.
constexpr int32_t WrappingAdd(int32_t a, int32_t b) noexcept {
    return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}

/// Truncates toward zero. What no 32-bit integer can hold, NaN included, becomes the most negative one, as
/// the processor's own conversion has it.
constexpr int32_t TruncToInt32(double value) noexcept {
    return value > -2147483649.0 && value < 2147483648.0 ? static_cast<int32_t>(value) : INT32_MIN;
}

} // namespace AVBased::kernels
