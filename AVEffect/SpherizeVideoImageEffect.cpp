#include "AVEffect/SpherizeVideoImageEffect.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cmath>
#include <cstdlib>

#include "AVEffect/factory.h"
#include "AVEffect/frame_clone.h"
#include "aveffect/base_media.h"

namespace AVBased {

namespace {

constexpr uint32_t kWhitePixel = 0xFFFFFFFF;
constexpr uint32_t kWhiteLuma = 235, kWhiteChroma = 128;

/// What the change tests take a new scale for.
int32_t LowBits(double scale) { return static_cast<int32_t>(std::bit_cast<uint64_t>(scale)); }

} // namespace

CCircleMapEffect::CCircleMapEffect(const char* name, bool fillsPacked, bool writesRimLater)
    : CBasedVideoImageEffect(name)
    , m_bFillsPacked(fillsPacked)
    , m_bWritesRimLater(writesRimLater)
    , m_Kernels(kernels::SelectRemapKernels(AVBasedGetCPUFeatures())) {}

bool CCircleMapEffect::BuildMap(size_t width, size_t height) {
    if (m_nRadius < 0 || m_nX < 0 || m_nY < 0) return false;
    const auto x = static_cast<size_t>(m_nX), y = static_cast<size_t>(m_nY);
    const auto r = static_cast<size_t>(m_nRadius);
    if (x > width || y > height) return false;
    const Rectangle rectangle = {x - std::min(x, r), std::min(x + r, width), y - std::min(y, r),
                                 std::min(y + r, height)};
    if (rectangle.yEnd <= rectangle.yBegin || rectangle.xEnd <= rectangle.xBegin) return false;
    const size_t columns = rectangle.xEnd - rectangle.xBegin, rows = rectangle.yEnd - rectangle.yBegin;
    m_nMapValid = 0;
    m_Mapped = {};
    m_Sources.resize(columns * rows);
    m_Rectangle = rectangle;
    // Rows as far above the centre as below it share their costly part.
    const auto farthest = [](int64_t centre, size_t begin, size_t end) {
        return std::max(centre - static_cast<int64_t>(begin), static_cast<int64_t>(end) - 1 - centre);
    };
    const int64_t farthestRow = farthest(m_nY, rectangle.yBegin, rectangle.yEnd);
    for (int64_t distance = 0; distance <= farthestRow; ++distance) {
        PrepareRow(distance, farthest(m_nX, rectangle.xBegin, rectangle.xEnd));
        for (const int64_t dy : {-distance, distance}) {
            const int64_t row = m_nY + dy;
            if (row < static_cast<int64_t>(rectangle.yBegin) || row >= static_cast<int64_t>(rectangle.yEnd))
                continue;
            Source* const sources = &m_Sources[(static_cast<size_t>(row) - rectangle.yBegin) * columns];
            for (size_t i = 0; i < columns; ++i)
                sources[i] = SourceOf(static_cast<int64_t>(rectangle.xBegin + i) - m_nX, dy);
        }
    }
    m_nMapValid = 1;
    return true;
}

// Samples that come from themselves are left out: they hold what they would get.
void CCircleMapEffect::MapPlane(PlaneMap& map, size_t width, size_t height, size_t pitch, bool fills) const {
    map.Begin(pitch);
    for (size_t y = m_Rectangle.yBegin; y < std::min(m_Rectangle.yEnd, height); ++y)
        for (size_t x = m_Rectangle.xBegin; x < std::min(m_Rectangle.xEnd, width); ++x) {
            const auto sx = static_cast<uint32_t>(At(x, y).x), sy = static_cast<uint32_t>(At(x, y).y);
            if (sx >= width || sy >= height) {
                if (fills) map.AddFill(x, y);
            } else if (sx != x || sy != y) {
                map.AddSource(x, y, sx, sy);
            }
        }
}

// A chroma sample is written with each of its luma samples, so the last one that is written decides.
void CCircleMapEffect::MapChroma(PlaneMap& map, const PlanarView& view, const Plane8& copy,
                                 bool atOnce) const {
    map.Begin(copy.pitch);
    const size_t xEnd = std::min(m_Rectangle.xEnd, view.y.width),
                 yEnd = std::min(m_Rectangle.yEnd, view.y.rows);
    if (m_Rectangle.xBegin >= xEnd || m_Rectangle.yBegin >= yEnd || copy.Empty()) return;
    const unsigned h = view.horizontalShift, v = view.verticalShift;
    const auto decide = [&](size_t cx, size_t cy) {
        const size_t top = std::max(cy << v, m_Rectangle.yBegin),
                     left = std::max(cx << h, m_Rectangle.xBegin);
        for (size_t y = std::min((cy + 1) << v, yEnd); y-- > top;)
            for (size_t x = std::min((cx + 1) << h, xEnd); x-- > left;) {
                if (atOnce && !WrittenAtOnce(static_cast<int64_t>(x) - m_nX, static_cast<int64_t>(y) - m_nY))
                    continue;
                const auto sx = static_cast<uint32_t>(At(x, y).x), sy = static_cast<uint32_t>(At(x, y).y);
                const size_t fromX = std::min<size_t>(sx >> h, copy.width - 1);
                const size_t fromY = std::min<size_t>(sy >> v, copy.rows - 1);
                if (sx >= view.y.width || sy >= view.y.rows)
                    map.AddFill(cx, cy);
                else if (fromX != cx || fromY != cy)
                    map.AddSource(cx, cy, fromX, fromY);
                return;
            }
    };
    for (size_t cy = m_Rectangle.yBegin >> v; cy <= (yEnd - 1) >> v && cy < copy.rows; ++cy)
        for (size_t cx = m_Rectangle.xBegin >> h; cx <= (xEnd - 1) >> h && cx < copy.width; ++cx)
            decide(cx, cy);
}

void CCircleMapEffect::BuildPacked(Plane32 plane, Plane32 copy) {
    if (BuildMap(plane.width, plane.rows)) ReplayPacked(plane, copy);
}

void CCircleMapEffect::ReplayPacked(Plane32 plane, Plane32 copy) {
    assert(plane.data != NULL);
    const Geometry geometry = {true, plane.width, plane.rows, copy.pitch};
    if (m_Mapped != geometry) {
        m_Mapped = {};
        MapPlane(m_Pixels, plane.width, plane.rows, copy.pitch, m_bFillsPacked);
        m_Mapped = geometry;
    }
    m_Pixels.Apply(m_Kernels, plane.Bytes(), copy.data, kWhitePixel);
}

void CCircleMapEffect::ApplyPlanar(const PlanarView& view, const PlanarView& copy, bool atOnce) {
    assert(view.y.data != NULL);
    const Geometry geometry = {
        false,       view.y.width, view.y.rows,  copy.y.pitch,         view.u.width,
        view.u.rows, copy.u.pitch, copy.v.pitch, view.horizontalShift, view.verticalShift};
    const bool oneChroma = SameShape(copy.u, copy.v);
    if (m_Mapped != geometry || atOnce) {
        m_Mapped = {};
        MapPlane(m_Luma, view.y.width, view.y.rows, copy.y.pitch, true);
        MapChroma(m_U, view, copy.u, atOnce);
        if (!oneChroma) MapChroma(m_V, view, copy.v, atOnce);
        if (!atOnce) m_Mapped = geometry;
    }
    m_Luma.Apply(m_Kernels, view.y, copy.y.data, kWhiteLuma);
    m_U.Apply(m_Kernels, view.u, copy.u.data, kWhiteChroma);
    (oneChroma ? m_U : m_V).Apply(m_Kernels, view.v, copy.v.data, kWhiteChroma);
}

void CCircleMapEffect::BuildPlanar(const PlanarView& view, const PlanarView& copy) {
    if (BuildMap(view.y.width, view.y.rows)) ApplyPlanar(view, copy, m_bWritesRimLater);
}

void CCircleMapEffect::ReplayPlanar(const PlanarView& view, const PlanarView& copy) {
    ApplyPlanar(view, copy, false);
}

// Spherize

namespace {

// In 32 bits.
uint32_t Squares(int64_t dx, int64_t dy) { return static_cast<uint32_t>(dx * dx + dy * dy); }

} // namespace

CSpherizeVideoImageEffect::CSpherizeVideoImageEffect()
    : CCircleMapEffect(effectNameSpherize, false, false) {}

void CSpherizeVideoImageEffect::OnSetProperty(const std::string& name, PropertyNode& node) {
    CBasedVideoEffect::OnSetProperty(name, node);
    const auto store = [&](int& member) {
        if (member != node.value.int32) m_nMapValid = 0;
        member = node.value.int32;
    };
    if (name == "spherize_r") store(m_nRadius);
    if (name == "spherize_x") store(m_nX);
    if (name == "spherize_y") store(m_nY);
    if (name == "spherize_scale") {
        // The low bits of the number, not the number: from 0 to 2 the map stays.
        if (m_dScale != LowBits(node.value.number)) m_nMapValid = 0;
        m_dScale = node.value.number;
    }
}

void CSpherizeVideoImageEffect::PrepareRow(int64_t dy, int64_t farthest) {
    m_Factors.resize(static_cast<size_t>(farthest) + 1);
    for (int64_t dx = 0; dx <= farthest; ++dx) {
        const uint32_t squares = Squares(dx, dy);
        if (squares > Squares(m_nRadius, 0)) continue;
        const double share = std::sqrt(static_cast<double>(squares)) / m_nRadius;
        m_Factors[static_cast<size_t>(dx)] = Truncate(std::pow(share, m_dScale) * 256);
    }
}

CCircleMapEffect::Source CSpherizeVideoImageEffect::SourceOf(int64_t dx, int64_t dy) const {
    if (Squares(dx, dy) <= Squares(m_nRadius, 0)) {
        const int64_t factor = m_Factors[static_cast<size_t>(std::abs(dx))];
        dx = (dx * factor) >> 8;
        dy = (dy * factor) >> 8;
    }
    return {Narrow(dx + m_nX), Narrow(dy + m_nY)};
}

void CSpherizeVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* pFrame) {
    assert(pFrame);
    const FrameClone copy = CloneFrame(pFrame);
    ForFormat(
        pFrame, copy.get(),
        [this](Plane32 plane, Plane32 from) {
            if (m_nMapValid == 1)
                ConverSpherizeRgba32Effect(plane, from);
            else
                SpherizeRgba32Effect(plane, from);
        },
        [this](const PlanarView& view, const PlanarView& from) {
            if (m_nMapValid == 1)
                ConverSpherizeComponentEffect(view, from);
            else
                SpherizeComponentEffect(view, from);
        });
}

// Rotate

CRotateVideoImageEffect::CRotateVideoImageEffect()
    : CCircleMapEffect(effectNameRotate, true, true) {}

void CRotateVideoImageEffect::OnSetProperty(const std::string& name, PropertyNode& node) {
    CBasedVideoEffect::OnSetProperty(name, node);
    // Every new value is held against the radius, and a scale by its low bits.
    const auto test = [this](int value) {
        if (value != m_nRadius) m_nMapValid = 0;
        return value;
    };
    if (name == "rotate_r") m_nRadius = test(node.value.int32);
    if (name == "rotate_x") m_nX = test(node.value.int32);
    if (name == "rotate_y") m_nY = test(node.value.int32);
    if (name == "rotate_scale") {
        test(LowBits(node.value.number));
        m_dScale = node.value.number;
    }
}

void CRotateVideoImageEffect::PrepareRow(int64_t dy, int64_t farthest) {
    m_Turns.resize(static_cast<size_t>(farthest) + 1);
    const auto radius = static_cast<float>(m_nRadius);
    for (int64_t dx = 0; dx <= farthest && Inside(dx, dy); ++dx) {
        const float nx = static_cast<float>(dx) / radius, ny = static_cast<float>(dy) / radius;
        const double depth = (radius - std::sqrt(static_cast<float>(dx * dx + dy * dy))) * m_dScale;
        const double direction = std::sqrt(nx * nx + ny * ny) - 0.7;
        const auto angle = static_cast<float>(2 * (depth / radius * direction));
        m_Turns[static_cast<size_t>(dx)] = {std::sin(angle), std::cos(angle)};
    }
}

CCircleMapEffect::Source CRotateVideoImageEffect::SourceOf(int64_t dx, int64_t dy) const {
    if (!Inside(dx, dy)) return {Narrow(dx + m_nX), Narrow(dy + m_nY)};
    const auto radius = static_cast<float>(m_nRadius);
    const float nx = static_cast<float>(dx) / radius, ny = static_cast<float>(dy) / radius;
    const Turn& turn = m_Turns[static_cast<size_t>(std::abs(dx))];
    return {Truncate((nx * turn.cosine - ny * turn.sine) * radius + static_cast<float>(m_nX)),
            Truncate(static_cast<float>(m_nY) + (ny * turn.cosine + nx * turn.sine) * radius)};
}

void CRotateVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* pFrame) {
    assert(pFrame);
    const FrameClone copy = CloneFrame(pFrame);
    ForFormat(
        pFrame, copy.get(),
        [this](Plane32 plane, Plane32 from) {
            if (m_nMapValid == 1)
                ConverRotateRgba32Effect(plane, from);
            else
                RotateRgba32Effect(plane, from);
        },
        [this](const PlanarView& view, const PlanarView& from) {
            if (m_nMapValid == 1)
                ConverRotateComponentEffect(view, from);
            else
                RotateComponentEffect(view, from);
        });
}

AVEFFECT_CONSTRUCT_VIDEO(CSpherizeVideoImageEffect)
AVEFFECT_CONSTRUCT_VIDEO(CRotateVideoImageEffect)

} // namespace AVBased
