#pragma once
/// Views of pixel planes, as kernels see them. Rows are the stored rows; a plane starts at any address and
/// its pitch is anything from its width in bytes upwards.
#include <cstddef>
#include <cstdint>

namespace AVBased::kernels {

/// A plane of bytes.
struct Plane8 {
    uint8_t* data;
    size_t width; ///< bytes of picture a row
    size_t pitch; ///< bytes from row to row
    size_t rows;

    uint8_t* Row(size_t y) const noexcept { return data + y * pitch; }
    /// Without a byte of picture; the address may be null then.
    bool Empty() const noexcept { return width == 0 || rows == 0; }
};

/// A plane of 32-bit pixels, bytes B, G, R, A in memory.
struct Plane32 {
    uint8_t* data;
    size_t width; ///< pixels a row
    size_t pitch; ///< bytes from row to row
    size_t rows;

    uint8_t* Row(size_t y) const noexcept { return data + y * pitch; }
    /// Without a pixel; the address may be null then.
    bool Empty() const noexcept { return width == 0 || rows == 0; }
    /// The same picture as bytes, without what is left of a row after the last whole pixel.
    Plane8 Bytes() const noexcept { return {data, width * 4, pitch, rows}; }
};

} // namespace AVBased::kernels
