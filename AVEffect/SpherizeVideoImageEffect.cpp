#include "AVEffect/SpherizeVideoImageEffect.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>

#include "AVEffect/support/elementary.h"
#include "aveffect/catalogue/distortions.h"

namespace AVBased {

namespace {

/// What the change tests take a new scale for.
int32_t LowBits(double scale) { return static_cast<int32_t>(std::bit_cast<uint64_t>(scale)); }

} // namespace

CCircleMapEffect::CCircleMapEffect(const EffectInfo& effect, Outside outside, bool writesRimLater)
    : CStoredMapEffect(effect, outside, writesRimLater) {
    StartFrom(effect.properties[0].name, &m_Set.radius);
    StartFrom(effect.properties[1].name, &m_Set.x);
    StartFrom(effect.properties[2].name, &m_Set.y);
    StartFrom(effect.properties[3].name, &m_Set.scale);
}

bool CCircleMapEffect::BuildMap(size_t width, size_t height) {
    if (m_Set.radius < 0 || m_Set.x < 0 || m_Set.y < 0) return false;
    const auto x = static_cast<size_t>(m_Set.x), y = static_cast<size_t>(m_Set.y);
    const auto r = static_cast<size_t>(m_Set.radius);
    if (x > width || y > height) return false;
    const Rectangle rectangle = {x - std::min(x, r), std::min(x + r, width), y - std::min(y, r),
                                 std::min(y + r, height)};
    if (rectangle.Empty()) return false;
    BeginMap(rectangle);
    m_Map = m_Set;
    m_nFirstColumn = static_cast<int64_t>(rectangle.xBegin);
    const auto farthest = [](int64_t centre, size_t begin, size_t end) {
        return std::max(centre - static_cast<int64_t>(begin), static_cast<int64_t>(end) - 1 - centre);
    };
    Prepare({farthest(m_Map.x, rectangle.xBegin, rectangle.xEnd),
             farthest(m_Map.y, rectangle.yBegin, rectangle.yEnd)});
    return true;
}

kernels::RowAround CCircleMapEffect::RowOf(int64_t dx, int64_t dy, size_t count) const {
    return {m_Map.x, m_Map.y, static_cast<int32_t>(dx), static_cast<int32_t>(dy), count};
}

void CCircleMapEffect::FindSources(size_t y, size_t count, const SamplePlaces& places) {
    FindRow(m_nFirstColumn - m_Map.x, static_cast<int64_t>(y) - m_Map.y, count, places.columns, places.rows);
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
    if (name == "spherize_r") store(m_Set.radius);
    if (name == "spherize_x") store(m_Set.x);
    if (name == "spherize_y") store(m_Set.y);
    if (name == "spherize_scale") {
        // The low bits of the number, not the number: from 0 to 2 the map stays.
        if (m_Set.scale != LowBits(node.value.number)) m_nMapValid = 0;
        m_Set.scale = node.value.number;
    }
}

int32_t CSpherizeVideoImageEffect::FactorOf(uint32_t squares) const {
    const double share = std::sqrt(static_cast<double>(squares)) / m_Map.radius;
    return Truncate(Power(share, m_Map.scale) * kWhole);
}

// Powers are costly, and few: they are cut to 256ths.
void CSpherizeVideoImageEffect::Prepare(const Reach& reach) {
    m_nFactors = static_cast<size_t>(reach.columns) + 1;
    m_Factors.resize(m_nFactors + kernels::kTablePadding);
    m_Steps.clear();
    // Neighbouring distances lie far enough apart for their powers not to change places by rounding, and
    // their squares fit into 32 bits.
    constexpr double kApart = 1e-13;
    constexpr int64_t kMost = 32767;
    if (m_Map.radius <= 0 || std::max({int64_t{m_Map.radius}, reach.columns, reach.rows}) > kMost) return;
    const uint32_t rim = Squares(m_Map.radius, 0);
    if (!(m_Map.scale / rim > kApart) || !std::isfinite(m_Map.scale)) return;
    uint32_t square = 0;
    for (int32_t factor = 1; factor <= kWhole; ++factor) {
        uint32_t end = rim + 1; // the first of which it is known
        const auto narrow = [&](uint32_t at) {
            if (at < square || at >= end) return;
            if (FactorOf(at) >= factor)
                end = at;
            else
                square = at + 1;
        };
        // It lies next to the place where numbers that are not rounded would reach it.
        const double share = Power(static_cast<double>(factor) / kWhole, 2 / m_Map.scale);
        const auto near = static_cast<uint32_t>(std::min(share, 1.0) * rim);
        narrow(near + 1);
        narrow(near - 1);
        while (square < end) narrow(square + (end - square) / 2);
        m_Steps.push_back(square);
    }
}

void CSpherizeVideoImageEffect::FindFactors(int64_t dy) {
    size_t factor = 0;
    for (size_t dx = 0; dx < m_nFactors; ++dx) {
        const uint32_t squares = Squares(static_cast<int64_t>(dx), dy);
        m_Factors[dx] = kWhole;
        if (squares > Squares(m_Map.radius, 0)) continue;
        if (m_Steps.empty()) {
            m_Factors[dx] = FactorOf(squares);
            continue;
        }
        while (factor < m_Steps.size() && squares >= m_Steps[factor]) ++factor;
        m_Factors[dx] = static_cast<int32_t>(factor);
    }
}

void CSpherizeVideoImageEffect::FindRow(int64_t dx, int64_t dy, size_t count, uint32_t* columns,
                                        uint32_t* rows) {
    FindFactors(dy);
    if (!m_Steps.empty()) {
        Kernels<kernels::LensKernels>().scaledRow(RowOf(dx, dy, count), m_Factors.data(), columns, rows);
        return;
    }
    for (size_t i = 0; i < count; ++i, ++dx) {
        const int64_t factor = m_Factors[static_cast<size_t>(std::abs(dx))];
        columns[i] = static_cast<uint32_t>(Narrow(((dx * factor) >> 8) + m_Map.x));
        rows[i] = static_cast<uint32_t>(Narrow(((dy * factor) >> 8) + m_Map.y));
    }
}

// Rotate

CRotateVideoImageEffect::CRotateVideoImageEffect()
    : CCircleMapEffect(catalogue::kRotate, Outside::White, true) {}

void CRotateVideoImageEffect::OnSetProperty(const std::string& name, PropertyNode& node) {
    CBasedVideoEffect::OnSetProperty(name, node);
    // Every new value is held against the radius, and a scale by its low bits.
    const auto test = [this](int value) {
        if (value != m_Set.radius) m_nMapValid = 0;
        return value;
    };
    if (name == "rotate_r") m_Set.radius = test(node.value.int32);
    if (name == "rotate_x") m_Set.x = test(node.value.int32);
    if (name == "rotate_y") m_Set.y = test(node.value.int32);
    if (name == "rotate_scale") {
        test(LowBits(node.value.number));
        m_Set.scale = node.value.number;
    }
}

// Those inside the circle; the root in double precision is off by a column at most.
CStoredMapEffect::Columns CRotateVideoImageEffect::WrittenAtOnce(size_t y) const {
    const int64_t dy = static_cast<int64_t>(y) - m_Map.y, radius = m_Map.radius;
    if (!Inside(0, dy)) return {0, 0};
    auto reach =
        static_cast<int64_t>(std::sqrt(std::max(0.0, static_cast<double>(radius * radius - dy * dy))));
    while (Inside(reach + 1, dy)) ++reach;
    while (!Inside(reach, dy)) --reach;
    return {static_cast<size_t>(std::max<int64_t>(m_Map.x - reach, 0)),
            static_cast<size_t>(m_Map.x + reach + 1)};
}

float CRotateVideoImageEffect::AngleOf(int64_t dx, int64_t dy) const {
    const auto radius = static_cast<float>(m_Map.radius);
    const float nx = static_cast<float>(dx) / radius, ny = static_cast<float>(dy) / radius;
    const double depth = (radius - std::sqrt(static_cast<float>(dx * dx + dy * dy))) * m_Map.scale;
    const double direction = std::sqrt(nx * nx + ny * ny) - 0.7;
    return static_cast<float>(2 * (depth / radius * direction));
}

// A quarter tells of the others, and half of it of the rest. What lies outside comes from itself, as does
// what an angle of 0 turns: computed, it might be off by one.
void CRotateVideoImageEffect::Prepare(const Reach& reach) {
    m_nTurnsAcross = static_cast<size_t>(reach.columns) + 1;
    const size_t rows = static_cast<size_t>(reach.rows) + 1, count = m_nTurnsAcross * rows;
    m_Sines.assign(count + kernels::kTablePadding, 0);
    m_Cosines.resize(count + kernels::kTablePadding);
    m_Angles.resize(m_nTurnsAcross);
    for (size_t dy = 0; dy < rows; ++dy) {
        const size_t row = dy * m_nTurnsAcross, known = dy < m_nTurnsAcross ? dy : 0;
        for (size_t dx = 0; dx < known; ++dx) {
            m_Sines[row + dx] = m_Sines[dx * m_nTurnsAcross + dy];
            m_Cosines[row + dx] = m_Cosines[dx * m_nTurnsAcross + dy];
        }
        size_t end = known;
        for (; end < m_nTurnsAcross && Inside(static_cast<int64_t>(end), static_cast<int64_t>(dy)); ++end)
            m_Angles[end] = AngleOf(static_cast<int64_t>(end), static_cast<int64_t>(dy));
        SinesAndCosines(&m_Angles[known], &m_Sines[row + known], &m_Cosines[row + known], end - known);
    }
}

void CRotateVideoImageEffect::FindRow(int64_t dx, int64_t dy, size_t count, uint32_t* columns,
                                      uint32_t* rows) {
    const size_t turns = static_cast<size_t>(std::abs(dy)) * m_nTurnsAcross;
    Kernels<kernels::LensKernels>().turnedRow(RowOf(dx, dy, count), static_cast<float>(m_Map.radius),
                                              &m_Sines[turns], &m_Cosines[turns], columns, rows);
}

} // namespace AVBased
