#include "AVEffect/StoredMapEffect.h"

#include <algorithm>
#include <cassert>

#include "AVEffect/support/frame_clone.h"

namespace AVBased {

namespace {

constexpr uint32_t kWhitePixel = 0xFFFFFFFF;
constexpr uint32_t kWhiteLuma = 235, kWhiteChroma = 128;
constexpr uint32_t kOutside = 0xFFFFFFFF; // of every plane

} // namespace

CStoredMapEffect::CStoredMapEffect(const EffectInfo& effect, Outside outside, bool writesRimLater)
    : CBasedVideoImageEffect(effect)
    , m_Outside(outside)
    , m_bWritesRimLater(writesRimLater)
    , m_Kernels(Kernels<kernels::RemapKernels>()) {}

void CStoredMapEffect::BeginMap(const Rectangle& rectangle) {
    m_nMapValid = 0;
    m_Mapped = {};
    m_Rectangle = rectangle;
}

void CStoredMapEffect::MapPlane(PlaneMap& map, size_t width, size_t height, size_t pitch, bool fills) {
    const size_t xEnd = std::min(m_Rectangle.xEnd, width), yEnd = std::min(m_Rectangle.yEnd, height);
    const size_t columns = xEnd - std::min(m_Rectangle.xBegin, xEnd);
    map.Begin(pitch, columns * (yEnd - std::min(m_Rectangle.yBegin, yEnd)));
    for (size_t y = m_Rectangle.yBegin; y < yEnd; ++y)
        map.AddRow(m_Kernels, m_Rectangle.xBegin, y, SourcesOf(y), columns, width, height, fills);
}

// A chroma sample is written with each of its luma samples, so the last one that is written decides. Those
// that none writes come from themselves.
void CStoredMapEffect::FindChroma(size_t chromaRow, const PlanarView& view, const Plane8& copy, bool atOnce) {
    const unsigned h = view.horizontalShift, v = view.verticalShift;
    const size_t xEnd = std::min(m_Rectangle.xEnd, view.y.width),
                 yEnd = std::min(m_Rectangle.yEnd, view.y.rows);
    const size_t first = m_Rectangle.xBegin >> h, count = m_ChromaColumns.size();
    const auto decide = [&](size_t i, size_t y, SamplePlaces luma) {
        const size_t left = std::max((first + i) << h, m_Rectangle.xBegin);
        for (size_t x = std::min((first + i + 1) << h, xEnd); x-- > left;) {
            if (atOnce && !WrittenAtOnce(x, y)) continue;
            const uint32_t sx = luma.columns[x - m_Rectangle.xBegin], sy = luma.rows[x - m_Rectangle.xBegin];
            const bool outside = sx >= view.y.width || sy >= view.y.rows;
            if (outside && m_Outside == Outside::Kept) continue;
            m_ChromaColumns[i] =
                outside ? kOutside : std::min(sx >> h, static_cast<uint32_t>(copy.width - 1));
            m_ChromaRows[i] = std::min(sy >> v, static_cast<uint32_t>(copy.rows - 1));
            return true;
        }
        return false;
    };
    for (size_t i = 0; i < count; ++i) {
        m_ChromaColumns[i] = static_cast<uint32_t>(first + i);
        m_ChromaRows[i] = static_cast<uint32_t>(chromaRow);
    }
    std::fill(m_ChromaFound.begin(), m_ChromaFound.end(), char{0});
    size_t missing = count;
    const size_t top = std::max(chromaRow << v, m_Rectangle.yBegin);
    for (size_t y = std::min((chromaRow + 1) << v, yEnd); y-- > top && missing > 0;) {
        const SamplePlaces luma = SourcesOf(y);
        for (size_t i = 0; i < count; ++i) {
            if (m_ChromaFound[i] || !decide(i, y, luma)) continue;
            m_ChromaFound[i] = 1;
            --missing;
        }
    }
}

void CStoredMapEffect::MapChroma(PlaneMap& map, const PlanarView& view, const Plane8& copy, bool atOnce) {
    const size_t xEnd = std::min(m_Rectangle.xEnd, view.y.width),
                 yEnd = std::min(m_Rectangle.yEnd, view.y.rows);
    const unsigned h = view.horizontalShift, v = view.verticalShift;
    const size_t left = m_Rectangle.xBegin >> h, top = m_Rectangle.yBegin >> v;
    map.Begin(copy.pitch, 0);
    if (m_Rectangle.xBegin >= xEnd || m_Rectangle.yBegin >= yEnd) return;
    const size_t right = std::min(((xEnd - 1) >> h) + 1, copy.width);
    const size_t bottom = std::min(((yEnd - 1) >> v) + 1, copy.rows);
    if (left >= right || top >= bottom) return;
    map.Begin(copy.pitch, (right - left) * (bottom - top));
    m_ChromaColumns.resize(right - left);
    m_ChromaRows.resize(right - left);
    m_ChromaFound.resize(right - left);
    for (size_t cy = top; cy < bottom; ++cy) {
        FindChroma(cy, view, copy, atOnce);
        map.AddRow(m_Kernels, left, cy, {m_ChromaColumns.data(), m_ChromaRows.data()}, right - left,
                   copy.width, copy.rows, true);
    }
}

void CStoredMapEffect::BuildPacked(Plane32 plane, Plane32 copy) {
    if (!BuildMap(plane.width, plane.rows)) return;
    ReplayPacked(plane, copy);
    m_nMapValid = 1;
}

void CStoredMapEffect::ReplayPacked(Plane32 plane, Plane32 copy) {
    assert(plane.data != NULL);
    const Geometry geometry = {true, plane.width, plane.rows, copy.pitch};
    if (m_Mapped != geometry) {
        m_Mapped = {};
        MapPlane(m_Pixels, plane.width, plane.rows, copy.pitch, m_Outside == Outside::White);
        m_Mapped = geometry;
    }
    m_Pixels.Apply(m_Kernels, plane.Bytes(), copy.data, kWhitePixel);
}

void CStoredMapEffect::ApplyPlanar(const PlanarView& view, const PlanarView& copy, bool atOnce) {
    AssertMemory(view);
    const Geometry geometry = {false,        view.y.width, view.y.rows,          copy.y.pitch,
                               view.u.width, view.u.rows,  copy.u.pitch,         view.v.width,
                               view.v.rows,  copy.v.pitch, view.horizontalShift, view.verticalShift};
    const bool oneChroma = SameShape(copy.u, copy.v);
    if (m_Mapped != geometry || atOnce) {
        m_Mapped = {};
        MapPlane(m_Luma, view.y.width, view.y.rows, copy.y.pitch, m_Outside != Outside::Kept);
        MapChroma(m_U, view, copy.u, atOnce);
        if (!oneChroma) MapChroma(m_V, view, copy.v, atOnce);
        if (!atOnce) m_Mapped = geometry;
    }
    m_Luma.Apply(m_Kernels, view.y, copy.y.data, kWhiteLuma);
    m_U.Apply(m_Kernels, view.u, copy.u.data, kWhiteChroma);
    (oneChroma ? m_U : m_V).Apply(m_Kernels, view.v, copy.v.data, kWhiteChroma);
}

void CStoredMapEffect::BuildPlanar(const PlanarView& view, const PlanarView& copy) {
    if (!BuildMap(view.y.width, view.y.rows)) return;
    ApplyPlanar(view, copy, m_bWritesRimLater);
    m_nMapValid = 1;
}

void CStoredMapEffect::ReplayPlanar(const PlanarView& view, const PlanarView& copy) {
    ApplyPlanar(view, copy, false);
}

void CStoredMapEffect::MapFrame(IRawVideoFrame* pFrame, const char* property) {
    const FrameClone copy = CloneFrame(pFrame);
    const bool replays = m_nMapValid == 1;
    const auto refuseEmpty = [&](const auto& plane) {
        if (!replays && plane.Empty())
            BaseTool::Raise(kUnknownException,
                            std::string(property) +
                                " asks for a picture with pixels; the frame is left as it is");
    };
    if (property) ForFormat(pFrame, refuseEmpty, [&](const PlanarView& view) { refuseEmpty(view.y); });
    ForFormat(
        pFrame, copy.get(),
        [&](Plane32 plane, Plane32 from) { replays ? ReplayPacked(plane, from) : BuildPacked(plane, from); },
        [&](const PlanarView& view, const PlanarView& from) {
            replays ? ReplayPlanar(view, from) : BuildPlanar(view, from);
        });
}

} // namespace AVBased
