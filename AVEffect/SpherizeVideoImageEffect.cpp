#include "AVEffect/SpherizeVideoImageEffect.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>

#include "aveffect/base_media.h"
#include "aveffect/catalogue/distortions.h"

namespace AVBased {

namespace {

/// What the change tests take a new scale for.
int32_t LowBits(double scale) { return static_cast<int32_t>(std::bit_cast<uint64_t>(scale)); }

} // namespace

CCircleMapEffect::CCircleMapEffect(const EffectInfo& effect, Outside outside, bool writesRimLater)
    : CStoredMapEffect(effect, outside, writesRimLater) {
    StartFrom(effect.properties[0].name, &m_nRadius);
    StartFrom(effect.properties[1].name, &m_nX);
    StartFrom(effect.properties[2].name, &m_nY);
    StartFrom(effect.properties[3].name, &m_dScale);
}

bool CCircleMapEffect::BuildMap(size_t width, size_t height) {
    if (m_nRadius < 0 || m_nX < 0 || m_nY < 0) return false;
    const auto x = static_cast<size_t>(m_nX), y = static_cast<size_t>(m_nY);
    const auto r = static_cast<size_t>(m_nRadius);
    if (x > width || y > height) return false;
    const Rectangle rectangle = {x - std::min(x, r), std::min(x + r, width), y - std::min(y, r),
                                 std::min(y + r, height)};
    if (rectangle.yEnd <= rectangle.yBegin || rectangle.xEnd <= rectangle.xBegin) return false;
    const size_t columns = rectangle.xEnd - rectangle.xBegin;
    BeginMap(rectangle);
    m_nFirstRow = rectangle.yBegin;
    m_nColumns = columns;
    m_Columns.resize(columns * (rectangle.yEnd - rectangle.yBegin));
    m_Rows.resize(m_Columns.size());
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
            const size_t first = (static_cast<size_t>(row) - rectangle.yBegin) * columns;
            for (size_t i = 0; i < columns; ++i) {
                const Source source = SourceOf(static_cast<int64_t>(rectangle.xBegin + i) - m_nX, dy);
                m_Columns[first + i] = static_cast<uint32_t>(source.x);
                m_Rows[first + i] = static_cast<uint32_t>(source.y);
            }
        }
    }
    return true;
}

SamplePlaces CCircleMapEffect::SourcesOf(size_t y) {
    const size_t first = (y - m_nFirstRow) * m_nColumns;
    return {&m_Columns[first], &m_Rows[first]};
}

// Spherize

namespace {

// In 32 bits.
uint32_t Squares(int64_t dx, int64_t dy) { return static_cast<uint32_t>(dx * dx + dy * dy); }

} // namespace

CSpherizeVideoImageEffect::CSpherizeVideoImageEffect()
    : CCircleMapEffect(catalogue::kSpherize, Outside::PlanarWhite, false) {}

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

// Rotate

CRotateVideoImageEffect::CRotateVideoImageEffect()
    : CCircleMapEffect(catalogue::kRotate, Outside::White, true) {}

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
    const Source itself = {Narrow(dx + m_nX), Narrow(dy + m_nY)};
    if (!Inside(dx, dy)) return itself;
    const Turn& turn = m_Turns[static_cast<size_t>(std::abs(dx))];
    if (turn.sine == 0) return itself; // an angle of 0; the divisions below might miss the pixel by one
    const auto radius = static_cast<float>(m_nRadius);
    const float nx = static_cast<float>(dx) / radius, ny = static_cast<float>(dy) / radius;
    return {Truncate((nx * turn.cosine - ny * turn.sine) * radius + static_cast<float>(m_nX)),
            Truncate(static_cast<float>(m_nY) + (ny * turn.cosine + nx * turn.sine) * radius)};
}

} // namespace AVBased
