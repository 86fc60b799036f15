#include "AVEffect/AtomizeVideoImageEffect.h"

#include <algorithm>
#include <cassert>
#include <cstdlib>

#include "aveffect/catalogue/distortions.h"

namespace AVBased {

CAtomizeVideoImageEffect::CAtomizeVideoImageEffect()
    : CBasedVideoImageEffect(catalogue::kAtomize)
    , m_Kernels(Kernels<kernels::RemapKernels>()) {
    StartFrom("atomize_ishorizontal", &m_nIsHorizontal);
    StartFrom("atomize_isvertical", &m_nIsVertical);
    StartFrom("atomize_level", &m_nLevel);
}

void CAtomizeVideoImageEffect::OnSetProperty(const std::string& name, PropertyNode& node) {
    CBasedVideoEffect::OnSetProperty(name, node);
    const auto store = [&](unsigned& member) {
        const auto value = static_cast<unsigned>(node.value.int32);
        if (member != value) m_nTableReady = 0;
        member = value;
    };
    if (name == "atomize_ishorizontal") store(m_nIsHorizontal);
    if (name == "atomize_isvertical") store(m_nIsVertical);
    if (name == "atomize_level") store(m_nLevel);
}

bool CAtomizeVideoImageEffect::Geometry::operator==(const Geometry& other) const {
    return packed == other.packed && std::equal(planes, planes + 3, other.planes, SameShape);
}

void CAtomizeVideoImageEffect::Forget() {
    m_Mapped = {};
    m_nWidth = m_nRows = 0;
}

void CAtomizeVideoImageEffect::Draw(size_t width, size_t rows) {
    m_Distances.resize(width * rows);
    for (uint32_t& distance : m_Distances) distance = static_cast<unsigned>(std::rand()) % m_nLevel;
    m_nWidth = width;
    m_nRows = rows;
}

bool CAtomizeVideoImageEffect::SourceOf(size_t x, size_t y, size_t width, size_t rows, Source& source) const {
    if (x >= m_nWidth || y >= m_nRows) return false;
    const size_t distance = m_Distances[y * m_nWidth + x];
    // The bound is one past the last column, which is no mistake.
    source.x = Horizontal() ? std::min(x + distance, m_nWidth) : x;
    source.y = Vertical() ? std::min(y + distance, m_nRows - 1) : y;
    const bool pastTheRow = source.x == width && width == m_nWidth;
    return (source.x < width || pastTheRow) && source.y < rows;
}

namespace {

// One past a row's end lies the next sample in memory; behind the last row there is none, so the row's last
// one stands for it.
size_t ColumnInMemory(size_t x, size_t y, size_t width, size_t rows) {
    return x >= width && y + 1 == rows ? width - 1 : std::min(x, width);
}

} // namespace

void CAtomizeVideoImageEffect::MapPlane(ScatterMap& map, size_t width, size_t rows, size_t pitch) const {
    map.Begin(width, rows, pitch);
    for (size_t y = 0; y < rows; ++y)
        for (size_t x = 0; x < width; ++x) {
            Source source{};
            if (!SourceOf(x, y, width, rows, source)) source = {x, y};
            map.Set(x, y, ColumnInMemory(source.x, source.y, width, rows), source.y);
        }
}

// Chroma is moved with each luma sample, and so up to four or sixteen times within its row; what counts is
// where it came from in the end. Below its row everything is still as it was.
void CAtomizeVideoImageEffect::MapChroma(ScatterMap& map, const PlanarView& view, const Plane8& plane) const {
    map.Begin(plane.width, plane.rows, plane.pitch);
    if (plane.Empty()) return;
    const size_t width = view.y.width, rows = view.y.rows;
    const unsigned h = view.horizontalShift, v = view.verticalShift;
    std::vector<Source> row(plane.width);
    for (size_t cy = 0; cy < plane.rows; ++cy) {
        for (size_t cx = 0; cx < plane.width; ++cx) row[cx] = {cx, cy};
        for (size_t y = cy << v; y < std::min((cy + 1) << v, rows); ++y)
            for (size_t x = 0; x < width && x >> h < plane.width; ++x) {
                Source source{};
                if (!SourceOf(x, y, width, rows, source)) continue;
                const size_t fromY = std::min(source.y >> v, plane.rows - 1);
                const size_t fromX = ColumnInMemory(source.x >> h, fromY, plane.width, plane.rows);
                row[x >> h] = fromY == cy && fromX < plane.width ? row[fromX] : Source{fromX, fromY};
            }
        for (size_t cx = 0; cx < plane.width; ++cx) map.Set(cx, cy, row[cx].x, row[cx].y);
    }
}

// Whether the maps hold for the geometry; if not, they are about to be made for it.
bool CAtomizeVideoImageEffect::IsMapped(const Geometry& geometry) {
    if (m_Mapped == geometry) return true;
    m_Mapped = {};
    return false;
}

void CAtomizeVideoImageEffect::Scatter(Plane32 plane) {
    const Geometry geometry = {true, {plane.Bytes()}};
    if (!IsMapped(geometry)) {
        MapPlane(m_Pixels, plane.width, plane.rows, plane.pitch);
        m_Mapped = geometry;
    }
    m_Pixels.Apply(m_Kernels, plane.Bytes());
}

void CAtomizeVideoImageEffect::Scatter(const PlanarView& view) {
    const Geometry geometry = {false, {view.y, view.u, view.v}};
    const bool oneChroma = SameShape(view.u, view.v);
    if (!IsMapped(geometry)) {
        MapPlane(m_Luma, view.y.width, view.y.rows, view.y.pitch);
        MapChroma(m_U, view, view.u);
        if (!oneChroma) MapChroma(m_V, view, view.v);
        m_Mapped = geometry;
    }
    m_Luma.Apply(m_Kernels, view.y);
    m_U.Apply(m_Kernels, view.u);
    (oneChroma ? m_U : m_V).Apply(m_Kernels, view.v);
}

void CAtomizeVideoImageEffect::DrawAndScatter(Plane32 plane) {
    Draw(plane.width, plane.rows);
    Scatter(plane);
}

void CAtomizeVideoImageEffect::DrawAndScatter(const PlanarView& view) {
    Draw(view.y.width, view.y.rows);
    Scatter(view);
}

void CAtomizeVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* pFrame) {
    assert(pFrame);
    if (m_nLevel == 0) return;
    const bool first = m_nTableReady != 1;
    // What was drawn for other properties is of no use, should this frame be one that is not served.
    if (first) Forget();
    if (Horizontal() || Vertical()) ScatterFrame(pFrame, first);
    m_nTableReady = 1; // not when memory was short: the next frame draws then
}

void CAtomizeVideoImageEffect::ScatterFrame(IRawVideoFrame* pFrame, bool first) {
    ForPicture(
        pFrame, [&](Plane32 plane) { first ? DrawAndScatter(plane) : Scatter(plane); },
        [&](const PlanarView& view) { first ? DrawAndScatter(view) : Scatter(view); });
}

} // namespace AVBased
