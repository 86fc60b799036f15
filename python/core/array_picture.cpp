#include "python/core/array_picture.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "aveffect/pixel_format.h"
#include "python/core/failures.h"

namespace aveffect::python {

namespace py = pybind11;

namespace {

constexpr py::ssize_t kMostSide = 1 << 15; // whose pixels an array of bytes still counts in 32 bits

std::string ShapeText(const py::array& array) { return py::str(array.attr("shape")).cast<std::string>(); }

// The array's own type may be a subclass with meaning of its own; only the memory counts.
py::array TakeArray(const py::handle& object, const std::string& what) {
    if (!py::isinstance<py::array>(object))
        throw py::type_error(what + " must be an array of uint8, or planes of them, not " +
                             py::str(py::type::handle_of(object).attr("__name__")).cast<std::string>());
    auto array = py::reinterpret_borrow<py::array>(object);
    if (!array.dtype().equal(py::dtype::of<uint8_t>()))
        throw py::type_error(what + " must be of uint8, not " + py::str(array.dtype()).cast<std::string>());
    return array;
}

void RequireSides(const py::array& array, const std::string& what) {
    for (const py::ssize_t i : {0, 1})
        if (array.shape(i) < 1 || array.shape(i) > kMostSide)
            throw Wrong(what + " of shape " + ShapeText(array) + " is no picture; sides have 1 to " +
                        std::to_string(kMostSide) + " pixels");
}

struct NamedOrder {
    std::string_view name;
    PixelOrder order;
    py::ssize_t channels;
};
constexpr NamedOrder kOrders[] = {{"BGRA", PixelOrder::Bgra, 4},
                                  {"BGR", PixelOrder::Bgr, 3},
                                  {"RGBA", PixelOrder::Rgba, 4},
                                  {"RGB", PixelOrder::Rgb, 3}};

PixelOrder OrderOf(const py::array& array, const std::string& order, const std::string& what) {
    const py::ssize_t channels = array.shape(2);
    if (order.empty()) {
        if (channels == 4) return PixelOrder::Bgra;
        if (channels == 3) return PixelOrder::Bgr;
        throw Wrong(what + " of shape " + ShapeText(array) +
                    " is no picture; shapes are (H, W, 4), (H, W, 3) and (H, W)");
    }
    const auto* const named = std::ranges::find(kOrders, std::string_view(order), &NamedOrder::name);
    if (named == std::end(kOrders)) throw Wrong("order must be BGRA, RGBA, BGR or RGB, not '" + order + "'");
    if (named->channels != channels)
        throw Wrong(what + " of shape " + ShapeText(array) + " has not the " +
                    std::to_string(named->channels) + " channels of " + order);
    return named->order;
}

ArrayPicture TakePixels(py::array array, const std::string& order, const std::string& what) {
    if (array.ndim() != 3 && array.ndim() != 2)
        throw Wrong(what + " of shape " + ShapeText(array) +
                    " is no picture; shapes are (H, W, 4), (H, W, 3) and (H, W)");
    RequireSides(array, what);
    ArrayPicture picture;
    picture.order = array.ndim() == 2 ? PixelOrder::Grey : OrderOf(array, order, what);
    picture.format = AVBased::BGRA;
    picture.width = static_cast<unsigned>(array.shape(1));
    picture.height = static_cast<unsigned>(array.shape(0));
    picture.planes.push_back(std::move(array));
    return picture;
}

// Chroma of odd sides is rounded up by most, and down by some.
bool IsShared(py::ssize_t chroma, py::ssize_t luma, unsigned shift) {
    return chroma == luma >> shift || chroma == -(-luma >> shift);
}

// The format whose chroma has that share of luma's columns and rows.
unsigned FormatOf(const std::vector<py::array>& planes, const std::string& what) {
    constexpr std::array kPlanar = {AVBased::YUV420P, AVBased::YUV422P,  AVBased::YUV411P,
                                    AVBased::YUV410P, AVBased::YUVA420P, AVBased::YUVA444P};
    for (const unsigned format : kPlanar) {
        const AVBased::FormatLayout& layout = *AVBased::FindPixelFormat(format);
        const bool fits = planes.size() == layout.planeCount &&
                          IsShared(planes[1].shape(1), planes[0].shape(1), layout.horizontalShift) &&
                          IsShared(planes[1].shape(0), planes[0].shape(0), layout.verticalShift);
        if (fits) return format;
    }
    throw Wrong(
        what + ": planes of " + ShapeText(planes[0]) + " and " + ShapeText(planes[1]) +
        " are in no format that effects know; these are 4:2:0, 4:2:2, 4:1:1 and 4:1:0, and with alpha "
        "4:2:0 and 4:4:4");
}

ArrayPicture TakePlanes(const py::sequence& sequence, const std::string& what) {
    ArrayPicture picture;
    for (const py::handle& object : sequence)
        picture.planes.push_back(TakeArray(object, "each plane of " + what));
    if (picture.planes.size() != 3 && picture.planes.size() != 4)
        throw Wrong(what + ": a picture has 3 planes (Y, U, V), or 4 with alpha, not " +
                    std::to_string(picture.planes.size()));
    for (const py::array& plane : picture.planes) {
        if (plane.ndim() != 2)
            throw Wrong("a plane of " + what + " has a shape (H, W), not " + ShapeText(plane));
        RequireSides(plane, "a plane of " + what);
    }
    const auto alike = [&](size_t a, size_t b) {
        const py::array &x = picture.planes[a], &y = picture.planes[b];
        return x.shape(0) == y.shape(0) && x.shape(1) == y.shape(1);
    };
    if (!alike(1, 2) || (picture.planes.size() == 4 && !alike(0, 3)))
        throw Wrong(what + ": U and V have one shape, and alpha has that of Y");
    picture.format = FormatOf(picture.planes, what);
    picture.width = static_cast<unsigned>(picture.planes[0].shape(1));
    picture.height = static_cast<unsigned>(picture.planes[0].shape(0));
    return picture;
}

} // namespace

bool ArrayPicture::IsPlain() const {
    return std::ranges::all_of(planes,
                               [](const py::array& plane) { return plane.flags() & py::array::c_style; });
}

bool ArrayPicture::IsWriteable() const {
    return std::ranges::all_of(planes, [](const py::array& plane) { return plane.writeable(); });
}

bool ArrayPicture::GoesWith(const ArrayPicture& other) const {
    const auto alike = [](const py::array& a, const py::array& b) {
        return std::equal(a.shape(), a.shape() + a.ndim(), b.shape(), b.shape() + b.ndim());
    };
    return order == other.order && std::ranges::equal(planes, other.planes, alike);
}

ArrayPicture TakePicture(const py::object& arrays, const std::string& order, const std::string& what) {
    if (!py::isinstance<py::tuple>(arrays) && !py::isinstance<py::list>(arrays))
        return TakePixels(TakeArray(arrays, what), order, what);
    if (!order.empty()) throw Wrong("order is of pixels; planes have none");
    return TakePlanes(py::reinterpret_borrow<py::sequence>(arrays), what);
}

ArrayPicture NewLike(const ArrayPicture& picture) {
    ArrayPicture made = picture;
    for (py::array& plane : made.planes)
        plane = py::array_t<uint8_t>(std::vector<py::ssize_t>(plane.shape(), plane.shape() + plane.ndim()));
    return made;
}

void CopySamples(const ArrayPicture& from, ArrayPicture& to) {
    static const py::object& copy = *new py::object(py::module_::import("numpy").attr("copyto"));
    for (size_t i = 0; i < from.planes.size(); ++i) copy(to.planes[i], from.planes[i]);
}

py::object AsObject(const ArrayPicture& picture) {
    if (picture.IsPacked()) return picture.planes.front();
    py::tuple planes(picture.planes.size());
    for (size_t i = 0; i < picture.planes.size(); ++i) planes[i] = picture.planes[i];
    return planes;
}

} // namespace aveffect::python
