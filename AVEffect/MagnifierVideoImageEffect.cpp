#include "AVEffect/MagnifierVideoImageEffect.h"

#include <algorithm>
#include <cassert>
#include <cmath>

#include "AVEffect/support/frame_clone.h"
#include "AVEffect/support/mmx_choice.h"
#include "aveffect/catalogue/distortions.h"

namespace AVBased {

CMagnifierVideoImageEffect::CMagnifierVideoImageEffect()
    : CBasedVideoImageEffect(catalogue::kMagnifier)
    , m_nUseMMX(ChoosesMmxKernels()) {
    Bind("magnifier_r", &m_nRadius);
    Bind("magnifier_x", &m_nX);
    Bind("magnifier_y", &m_nY);
    Bind("magnifier_scale", &m_dScale);
}

bool CMagnifierVideoImageEffect::FitsIn(size_t width, size_t height) const {
    const auto reaches = [](int x, size_t limit) { return x >= 0 && static_cast<size_t>(x) <= limit; };
    return m_nRadius != 0 && m_dScale > 1.0 && reaches(m_nX, width) && reaches(m_nY, height) &&
           reaches(m_nRadius, width / 2) && reaches(m_nRadius, height / 2);
}

// In 32 bits, as the positions are. A square cut off by the picture's edge begins at 0, or at 1 with
// skipsFirst.
void CMagnifierVideoImageEffect::FindPlaces(Axis& axis, int centre, size_t limit, bool skipsFirst) const {
    const auto middle = static_cast<uint32_t>(centre), radius = static_cast<uint32_t>(m_nRadius);
    axis.limit = static_cast<uint32_t>(limit);
    if (middle < radius) {
        axis.begin = skipsFirst ? 1 : 0;
        axis.size = radius + middle;
    } else {
        axis.begin = middle - radius;
        axis.size = std::min(axis.limit - axis.begin, 2 * radius);
    }
    const double enlarged = axis.size * m_dScale;
    const uint32_t margin =
        (enlarged < 4294967295.0 ? static_cast<uint32_t>(enlarged) : 0xFFFFFFFF) - axis.size;
    axis.places.resize(axis.size);
    if (Blends()) {
        const auto step = static_cast<uint32_t>(65536 / m_dScale);
        const uint32_t start = ((margin * step) >> 1) + (axis.begin << 16);
        for (uint32_t i = 0; i < axis.size; ++i) axis.places[i] = start + i * step;
    } else {
        const auto step = static_cast<uint32_t>(256 / m_dScale);
        const uint32_t start = axis.begin + ((margin * step) >> 9);
        for (uint32_t i = 0; i < axis.size; ++i) axis.places[i] = uint64_t{start + ((i * step) >> 8)} << 16;
    }
}

void CMagnifierVideoImageEffect::FindPlaces(size_t width, size_t height, bool skipsFirst) {
    FindPlaces(m_Columns, m_nX, width, skipsFirst);
    FindPlaces(m_Rows, m_nY, height, skipsFirst);
}

bool CMagnifierVideoImageEffect::SpanOf(uint32_t row, uint32_t& begin, uint32_t& end) const {
    const int64_t dy = int64_t{m_Rows.begin} + row - m_nY, radius = m_nRadius;
    const int64_t room = radius * radius - dy * dy; // dx * dx lies below it
    if (room <= 0) return false;
    int64_t reach = static_cast<int64_t>(std::sqrt(static_cast<double>(room)));
    while (reach * reach >= room) --reach;
    while ((reach + 1) * (reach + 1) < room) ++reach;
    const int64_t left = m_Columns.begin;
    const int64_t last =
        std::min<int64_t>({m_nX + reach, left + m_Columns.size - 1, m_Columns.limit - int64_t{1}});
    const int64_t first = std::max(m_nX - reach, left);
    if (first > last) return false;
    begin = static_cast<uint32_t>(first - left);
    end = static_cast<uint32_t>(last - left) + 1;
    return true;
}

// A chroma sample belongs to several luma samples; the last one that is written decides, so within a row the
// last of its luma columns, or the circle's last one.
const kernels::Circle& CMagnifierVideoImageEffect::CircleFor(size_t width, size_t rows,
                                                             unsigned horizontalShift,
                                                             unsigned verticalShift) {
    const auto planeWidth = static_cast<uint32_t>(width), planeRows = static_cast<uint32_t>(rows);
    const auto place = [](const Axis& axis, size_t i, unsigned shift, uint32_t size) {
        return static_cast<uint32_t>(std::min<uint64_t>((axis.places[i] >> 16) >> shift, size - 1));
    };
    const auto next = [](uint32_t at, uint32_t size) { return std::min(at + 1, size - 1); };
    const auto fraction = [](uint64_t at) { return static_cast<uint8_t>(at >> 8); };

    const uint32_t left = m_Columns.begin >> horizontalShift;
    const uint32_t end =
        std::min((m_Columns.begin + m_Columns.size - 1) >> horizontalShift, planeWidth - 1) + 1;
    PlaneCircle& c = m_Circle;
    c.columns.clear();
    c.right.clear();
    c.fractions.clear();
    c.rows.clear();
    for (uint32_t x = left; x < end; ++x) {
        const uint32_t lumaX = ((x + 1) << horizontalShift) - 1 - m_Columns.begin;
        const uint32_t i = std::min(lumaX, m_Columns.size - 1);
        const uint32_t column = place(m_Columns, i, horizontalShift, planeWidth);
        c.columns.push_back(column);
        c.right.push_back(next(column, planeWidth));
        c.fractions.push_back(fraction(m_Columns.places[i]));
    }
    for (uint32_t j = 0; j < m_Rows.size && left < end; ++j) {
        const uint32_t row = (m_Rows.begin + j) >> verticalShift;
        uint32_t first = 0, beyond = 0;
        if (row >= planeRows || !SpanOf(j, first, beyond)) continue;
        const uint32_t begin = ((m_Columns.begin + first) >> horizontalShift) - left;
        const uint32_t last = beyond - 1; // luma column
        const uint32_t stop = std::min(((m_Columns.begin + last) >> horizontalShift) + 1, end) - left;
        if (begin >= stop) continue;
        // Past the plane's last column, the last one is a whole group's.
        const bool whole = ((m_Columns.begin + last) >> horizontalShift) >= end;
        const uint32_t from = place(m_Rows, j, verticalShift, planeRows);
        const uint32_t column =
            whole ? c.columns.back() : place(m_Columns, last, horizontalShift, planeWidth);
        c.rows.push_back({row, from, next(from, planeRows), begin, stop, column, next(column, planeWidth),
                          fraction(m_Rows.places[j]),
                          whole ? c.fractions.back() : fraction(m_Columns.places[last])});
    }
    c.circle = {left,           {c.columns.data(), c.columns.size()},
                c.right.data(), c.fractions.data(),
                c.rows.data(),  c.rows.size()};
    return c.circle;
}

void CMagnifierVideoImageEffect::MagnifierNearestRGBA32Effect(Plane32 plane, Plane32 copy) {
    assert(plane.data != NULL);
    FindPlaces(plane.width, plane.rows, false);
    const kernels::Circle& circle = CircleFor(plane.width, plane.rows, 0, 0);
    Kernels<kernels::PickKernels>().circleRgba32(
        plane, copy, circle, m_Scratch.Require(kernels::CircleScratchBytes(circle.columns.count, 4)));
}

void CMagnifierVideoImageEffect::MagnifierDoubleRGBA32Effect(Plane32 plane, Plane32 copy) {
    assert(plane.data != NULL);
    FindPlaces(plane.width, plane.rows, true);
    const kernels::Circle& circle = CircleFor(plane.width, plane.rows, 0, 0);
    Kernels<kernels::PickKernels>().blendCircleRgba32(
        plane, copy, circle, m_Scratch.Require(kernels::CircleScratchBytes(circle.columns.count, 4)));
}

// The two compute the same.
void CMagnifierVideoImageEffect::MagnifierDoubleRGBA32EffectMMX(Plane32 plane, Plane32 copy) {
    MagnifierDoubleRGBA32Effect(plane, copy);
}

void CMagnifierVideoImageEffect::MagnifyPlanes(PlanarKernel kernel, const PlanarView& view,
                                               const PlanarView& copy) {
    AssertMemory(view);
    FindPlaces(view.y.width, view.y.rows, false);
    const auto magnify = [&](Plane8 plane, Plane8 from, unsigned horizontalShift, unsigned verticalShift) {
        if (plane.Empty()) return;
        const kernels::Circle& circle = CircleFor(plane.width, plane.rows, horizontalShift, verticalShift);
        kernel(plane, from, circle, m_Scratch.Require(kernels::CircleScratchBytes(circle.columns.count, 1)));
    };
    magnify(view.y, copy.y, 0, 0);
    magnify(view.u, copy.u, view.horizontalShift, view.verticalShift);
    magnify(view.v, copy.v, view.horizontalShift, view.verticalShift);
}

void CMagnifierVideoImageEffect::MagnifierNearestComponentEffect(const PlanarView& view,
                                                                 const PlanarView& copy) {
    MagnifyPlanes(Kernels<kernels::PickKernels>().circleComponent, view, copy);
}

void CMagnifierVideoImageEffect::MagnifierDoubleComponentEffect(const PlanarView& view,
                                                                const PlanarView& copy) {
    MagnifyPlanes(Kernels<kernels::PickKernels>().blendCircleComponent, view, copy);
}

void CMagnifierVideoImageEffect::Magnify(Plane32 plane, Plane32 copy) {
    if (!FitsIn(plane.width, plane.rows)) return;
    if (!Blends()) return MagnifierNearestRGBA32Effect(plane, copy);
    m_nUseMMX ? MagnifierDoubleRGBA32EffectMMX(plane, copy) : MagnifierDoubleRGBA32Effect(plane, copy);
}

void CMagnifierVideoImageEffect::Magnify(const PlanarView& view, const PlanarView& copy) {
    if (!FitsIn(view.y.width, view.y.rows)) return;
    Blends() ? MagnifierDoubleComponentEffect(view, copy) : MagnifierNearestComponentEffect(view, copy);
}

void CMagnifierVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* pFrame) {
    const auto magnify = [this](const auto&... views) { Magnify(views...); };
    ForPictureAndCopy(pFrame, magnify, magnify);
}

} // namespace AVBased
