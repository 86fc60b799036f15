#include "host/picture/area_mask.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <numbers>

#include "aveffect/base_media.h"
#include "host/support/error.h"
#include "kernels/area.h"
#include "mediabridge/picture_blend.h"
#include "mediabridge/picture_pool.h"

namespace aveffect {
namespace {

constexpr double kPi = std::numbers::pi;

/// The nearest; from 0 to 255, so that cutting rounds down, which is faster than to ask for it.
uint8_t ToByte(double value) {
    constexpr double kHalf = 0.5;
    return static_cast<uint8_t>(value + kHalf);
}

/// What is no number counts as low.
int Limited(double column, int low, int high) {
    return column > high ? high : column > low ? static_cast<int>(column) : low;
}

/// The share of a stretch of that length around a place which lies within so much of the middle.
double Share(double place, double middle, double half, double length) {
    const double begin = std::max(place - length / 2, middle - half);
    const double end = std::min(place + length / 2, middle + half);
    return std::max(0.0, end - begin) / length;
}

/// Half the chord of an ellipse at that height above its middle; negative where there is none.
double HalfChord(double halfWidth, double halfHeight, double height) {
    const double ratio = height / halfHeight;
    return ratio < 1 ? halfWidth * std::sqrt(1 - ratio * ratio) : -1;
}

/// What a line cuts off the unit disc on its right, at -1 to 1.
double Cap(double at) { return AVBasedArcCosine(at) - at * std::sqrt(1 - at * at); }

/// The area of the unit disc left of x and above y.
double CornerArea(double x, double y) {
    x = std::clamp(x, -1.0, 1.0);
    y = std::clamp(y, -1.0, 1.0);
    // Lines that cross within the disc cut it in four; one pair of opposite pieces is larger by 4xy.
    if (x * x + y * y < 1) return (Cap(-x) + Cap(-y)) / 2 - kPi / 4 + x * y;
    if (x <= 0 && y <= 0) return 0;
    if (x > 0 && y > 0) return kPi - Cap(x) - Cap(y);
    return x <= 0 ? Cap(-x) : Cap(-y);
}

} // namespace

const AVFrame& AreaMask::Draw(const Area& area, double featherPixels, bool inverted, int width, int height) {
    const bool fits = m_mask && m_mask->width == width && m_mask->height == height;
    if (fits && area == m_area && featherPixels == m_feather && inverted == m_inverted) return *m_mask;
    if (!fits) m_mask = mediabridge::AllocatePicture(AV_PIX_FMT_GRAY8, width, height);
    if (!m_mask) throw NoMemory("out of memory for a mask");
    m_mask->color_range = AVCOL_RANGE_JPEG;
    m_mask->pts = mediabridge::NextMaskNumber();
    m_area = area;
    m_feather = featherPixels;
    m_inverted = inverted;
    m_halfWidth = area.width * width / 2;
    m_halfHeight = area.height * height / 2;
    m_x = area.x * width + m_halfWidth;
    m_y = area.y * height + m_halfHeight;
    m_ramp = std::min({featherPixels, 2 * m_halfWidth, 2 * m_halfHeight});
    if (!(m_halfWidth > 0 && m_halfHeight > 0 && std::isfinite(m_x) && std::isfinite(m_y)))
        for (int y = 0; y < height; ++y) DrawRow(y, 0, -1, -1, [](uint8_t*, int, int) {});
    else if (area.shape == Area::Shape::Rectangle)
        DrawRectangle();
    else if (m_ramp < 1)
        DrawCoveredEllipse();
    else
        DrawEllipse();
    return *m_mask;
}

/// A row that is within the area as far from the middle as inner, outside from outer on, both negative where
/// there is no such stretch; ramp(row, begin, end) draws the columns between.
template <class Ramp>
void AreaMask::DrawRow(int row, double middle, double outer, double inner, const Ramp& ramp) {
    const int width = m_mask->width;
    const uint8_t outside = m_inverted ? 255 : 0;
    uint8_t* const to = m_mask->data[0] + ptrdiff_t{row} * m_mask->linesize[0];
    const int begin = outer < 0 ? width : Limited(std::floor(middle - outer), 0, width);
    const int end = outer < 0 ? width : Limited(std::ceil(middle + outer), begin, width);
    const int full = inner < 0 ? end : Limited(std::ceil(middle - inner), begin, end);
    const int fullEnd = inner < 0 ? end : Limited(std::floor(middle + inner), full, end);
    const auto fill = [&](int from, int till, int value) {
        std::memset(to + from, value, static_cast<size_t>(till - from));
    };
    const auto draw = [&](int from, int till) {
        ramp(to, from, till);
        for (int x = from; x < till; ++x) to[x] ^= outside;
    };
    fill(0, begin, outside);
    draw(begin, full);
    fill(full, fullEnd, 255 ^ outside);
    draw(fullEnd, end);
    fill(end, width, outside);
}

// The share of a square around each pixel, as wide as the ramp, and at least a pixel.
void AreaMask::DrawRectangle() {
    const double side = std::max(1.0, m_ramp);
    m_columns.resize(static_cast<size_t>(m_mask->width));
    for (int x = 0; x < m_mask->width; ++x)
        m_columns[static_cast<size_t>(x)] = static_cast<float>(255 * Share(x + 0.5, m_x, m_halfWidth, side));
    for (int y = 0; y < m_mask->height; ++y) {
        const double share = Share(y + 0.5, m_y, m_halfHeight, side);
        const auto weight = static_cast<float>(share);
        DrawRow(y, m_x, share > 0 ? m_halfWidth + side / 2 : -1, share == 1 ? m_halfWidth - side / 2 : -1,
                [&](uint8_t* to, int x, int end) {
                    for (; x < end; ++x) to[x] = ToByte(m_columns[static_cast<size_t>(x)] * weight);
                });
    }
}

// The share of each pixel, exactly.
void AreaMask::DrawCoveredEllipse() {
    const double pixels = m_halfWidth * m_halfHeight; // in a unit of the disc's area
    for (int y = 0; y < m_mask->height; ++y) {
        const double top = (y - m_y) / m_halfHeight, bottom = (y + 1 - m_y) / m_halfHeight;
        const double nearest = top < 0 && bottom > 0 ? 0 : std::min(std::abs(top), std::abs(bottom));
        const double furthest = std::max(std::abs(top), std::abs(bottom));
        const auto area = [&](int x) { // of the row left of a column
            const double at = (x - m_x) / m_halfWidth;
            return CornerArea(at, bottom) - CornerArea(at, top);
        };
        DrawRow(y, m_x, HalfChord(m_halfWidth, 1, nearest), HalfChord(m_halfWidth, 1, furthest),
                [&](uint8_t* to, int x, int end) {
                    double left = area(x);
                    for (; x < end; ++x) {
                        const double right = area(x + 1), share = (right - left) * pixels;
                        to[x] = ToByte(255 * std::clamp(share, 0.0, 1.0));
                        left = right;
                    }
                });
    }
}

// By the distance from the border.
void AreaMask::DrawEllipse() {
    const auto& kernels = AVBased::Kernels<AVBased::kernels::AreaKernels>();
    const AVBased::kernels::EllipseRamp ellipse = {
        static_cast<float>(m_halfWidth), static_cast<float>(m_halfHeight), static_cast<float>(255 / m_ramp)};
    // Of the ellipse k times as large, no point is nearer than (k - 1) times the smaller half axis.
    const double spread = m_ramp / (2 * std::min(m_halfWidth, m_halfHeight));
    const auto halfChord = [&](double scale, double height) {
        return scale > 0 ? HalfChord(m_halfWidth * scale, m_halfHeight * scale, std::abs(height)) : -1;
    };
    for (int y = 0; y < m_mask->height; ++y) {
        const double height = y + 0.5 - m_y;
        DrawRow(y, m_x, halfChord(1 + spread, height), halfChord(1 - spread, height),
                [&](uint8_t* to, int begin, int end) {
                    if (begin < end)
                        kernels.softEllipse(to + begin, static_cast<size_t>(end - begin),
                                            static_cast<float>(begin + 0.5 - m_x), static_cast<float>(height),
                                            ellipse);
                });
    }
}

} // namespace aveffect
