#pragma once
/// Pictures as Python has them: arrays of pixels, or of planes.
#include <optional>
#include <string>
#include <vector>

#include <pybind11/numpy.h>

namespace aveffect::python {

/// The order of a pixel's bytes.
enum class PixelOrder { Bgra, Rgba, Bgr, Rgb, Grey };

/// Arrays of uint8 that are one picture. Their memory is whoever's it was.
struct ArrayPicture {
    std::vector<pybind11::array> planes; ///< one of pixels, or Y, U, V and perhaps alpha
    std::optional<PixelOrder> order;     ///< of pixels
    unsigned format = 0; ///< that effects know; of pixels BGRA, which they may first be brought to
    unsigned width = 0, height = 0;

    bool IsPacked() const { return order.has_value(); }
    bool HasAlpha() const { return !IsPacked() || *order == PixelOrder::Bgra || *order == PixelOrder::Rgba; }
    /// Whether effects can work in the arrays' own memory: rows without gaps, all of them one behind the
    /// other.
    bool IsPlain() const;
    bool IsWriteable() const;
    /// Whether both have the same shapes and order.
    bool GoesWith(const ArrayPicture& other) const;
};

/// The picture that an array of shape (H, W, 4), (H, W, 3) or (H, W) is, or a sequence of planes. Order is
/// "BGRA", "RGBA", "BGR" or "RGB"; empty: BGRA and BGR. What names it in errors. Throws Error (Usage).
ArrayPicture TakePicture(const pybind11::object& arrays, const std::string& order, const std::string& what);

/// Arrays of the same shapes, in memory of their own, and plain.
ArrayPicture NewLike(const ArrayPicture& picture);

/// Copies all samples; the shapes are the same.
void CopySamples(const ArrayPicture& from, ArrayPicture& to);

/// An array, or a tuple of them.
pybind11::object AsObject(const ArrayPicture& picture);

} // namespace aveffect::python
