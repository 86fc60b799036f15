#pragma once
/// Two views drawn as one picture, plainly from the definitions.
#include <algorithm>
#include <cstdint>
#include <vector>

namespace test {

/// A plane to draw from: its samples as they are now, of unit bytes each, whatever is drawn later. Rows that
/// lie apart by any number of bytes; only what is inside the width is kept.
struct ViewSamples {
    ViewSamples(const uint8_t* data, size_t widthBytes, size_t pitch, size_t rowCount)
        : width(widthBytes)
        , rows(rowCount) {
        for (size_t y = 0; y < rows; ++y)
            bytes.insert(bytes.end(), data + y * pitch, data + y * pitch + width);
    }
    bool Has(size_t x, size_t y) const { return x < width && y < rows; }
    uint8_t At(size_t x, size_t y) const { return bytes[y * width + x]; }
    /// The nearest sample that there is; grey when there is none.
    int Nearest(size_t x, size_t y) const {
        return bytes.empty() ? 128 : At(std::min(x, width - 1), std::min(y, rows - 1));
    }

    size_t width, rows;
    std::vector<uint8_t> bytes;
};

/// Calls draw(x, y, value) for every byte of an output plane that a side-by-side picture has from its views.
template <class Draw>
void SideBySide(size_t width, size_t rows, size_t unit, const ViewSamples& left, const ViewSamples& right,
                Draw draw) {
    for (size_t y = 0; y < rows; ++y) {
        size_t to = 0;
        for (const ViewSamples* view : {&left, &right})
            for (size_t x = 0; x < width / unit; x += 2, ++to)
                for (size_t i = 0; i < unit && to < width / unit; ++i)
                    if (view->Has(x * unit + i, y)) draw(to * unit + i, y, view->At(x * unit + i, y));
    }
}

/// The same for a top-and-bottom picture.
template <class Draw>
void TopAndBottom(size_t width, size_t rows, const ViewSamples& left, const ViewSamples& right, Draw draw) {
    const size_t half = rows >> 1;
    for (size_t y = 0; y < rows; ++y)
        for (size_t x = 0; x < width; ++x) {
            const ViewSamples& view = y < half ? left : right;
            const size_t from = 2 * (y < half ? y : y - half);
            if (view.Has(x, from)) draw(x, y, view.At(x, from));
        }
}

/// The YUV anaglyph of one pixel.
struct AnaglyphYuv {
    uint8_t y, u, v;

    AnaglyphYuv(int leftY, int leftV, int rightY, int rightU, int rightV) {
        const int r = (298 * (leftY - 16) + 409 * (leftV - 128) + 128) >> 8;
        const int g = (298 * (rightY - 16) - 100 * (rightU - 128) - 208 * (rightV - 128) + 128) >> 8;
        const int b = (298 * (rightY - 16) + 516 * (rightU - 128) + 128) >> 8;
        y = static_cast<uint8_t>(((66 * r + 129 * g + 25 * b + 128) >> 8) + 16);
        u = static_cast<uint8_t>(((-38 * r - 74 * g + 112 * b + 128) >> 8) + 128);
        v = static_cast<uint8_t>(((112 * r - 94 * g - 18 * b + 128) >> 8) + 128);
    }
};

} // namespace test
