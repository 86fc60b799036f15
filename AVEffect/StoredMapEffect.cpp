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

Rectangle CStoredMapEffect::Within(size_t width, size_t height) const {
    const size_t xEnd = std::min(m_Rectangle.xEnd, width), yEnd = std::min(m_Rectangle.yEnd, height);
    return {std::min(m_Rectangle.xBegin, xEnd), xEnd, std::min(m_Rectangle.yBegin, yEnd), yEnd};
}

// Of row y, written by the map's effect.
void CStoredMapEffect::AddSources(PlaneMap& map, const Rectangle& part, size_t y) {
    FindSources(y, part.Columns(), map.Row(y));
    map.EndRow(m_Kernels, y);
}

// A chroma sample is written with each of its luma samples, so the last one that is written decides. Those
// that none writes come from themselves.
void CStoredMapEffect::FindChroma(size_t chromaRow, const Rectangle& part, const PlanarView& view,
                                  const Plane8& copy, const SamplePlaces& chroma, bool atOnce) {
    const unsigned h = view.horizontalShift, v = view.verticalShift;
    const size_t xEnd = std::min(m_Rectangle.xEnd, view.y.width),
                 yEnd = std::min(m_Rectangle.yEnd, view.y.rows);
    const size_t first = part.xBegin, count = part.xEnd - part.xBegin;
    const auto decide = [&](size_t i, const Columns& written, SamplePlaces luma) {
        const size_t left = std::max((first + i) << h, written.begin);
        for (size_t x = std::min((first + i + 1) << h, written.end); x-- > left;) {
            const uint32_t sx = luma.columns[x - m_Rectangle.xBegin], sy = luma.rows[x - m_Rectangle.xBegin];
            const bool outside = sx >= view.y.width || sy >= view.y.rows;
            if (outside && m_Outside == Outside::Kept) continue;
            chroma.columns[i] = outside ? kOutside : std::min(sx >> h, static_cast<uint32_t>(copy.width - 1));
            chroma.rows[i] = std::min(sy >> v, static_cast<uint32_t>(copy.rows - 1));
            return true;
        }
        return false;
    };
    std::fill(m_ChromaFound.begin(), m_ChromaFound.end(), char{0});
    size_t missing = count;
    const size_t top = std::max(chromaRow << v, m_Rectangle.yBegin);
    const bool plain = h == 1 && m_Rectangle.xBegin % 2 == 0;
    for (size_t y = std::min((chromaRow + 1) << v, yEnd); y-- > top && missing > 0;) {
        const SamplePlaces luma = m_Luma.Row(y);
        Columns written = atOnce ? WrittenAtOnce(y) : Columns{0, xEnd};
        written = {std::max(written.begin, m_Rectangle.xBegin), std::min(written.end, xEnd)};
        size_t unsure = 0; // the first sample that may be missing
        if (plain && missing == count && written.begin < written.end) {
            // From the first sample on whose odd luma column is written.
            const size_t skipped = (written.begin - m_Rectangle.xBegin) / 2;
            const size_t places = std::min(2 * count, written.end - m_Rectangle.xBegin);
            const kernels::ChromaLimits limits = {
                static_cast<uint32_t>(view.y.width), static_cast<uint32_t>(view.y.rows),
                static_cast<uint32_t>(copy.width - 1), static_cast<uint32_t>(copy.rows - 1), v};
            const size_t found = m_Kernels.findChroma(luma.columns + 2 * skipped, luma.rows + 2 * skipped,
                                                      places - std::min(places, 2 * skipped), limits,
                                                      chroma.columns + skipped, chroma.rows + skipped);
            std::fill_n(m_ChromaFound.begin() + static_cast<ptrdiff_t>(skipped), found, char{1});
            missing -= found;
            if (skipped == 0) unsure = found;
        }
        for (size_t i = unsure; i < count; ++i) {
            if (m_ChromaFound[i] || !decide(i, written, luma)) continue;
            m_ChromaFound[i] = 1;
            --missing;
        }
    }
    for (size_t i = 0; i < count && missing > 0; ++i) {
        if (m_ChromaFound[i]) continue;
        chroma.columns[i] = static_cast<uint32_t>(first + i);
        chroma.rows[i] = static_cast<uint32_t>(chromaRow);
        --missing;
    }
}

Rectangle CStoredMapEffect::ChromaPart(const PlanarView& view, const Plane8& copy) const {
    const unsigned h = view.horizontalShift, v = view.verticalShift;
    const Rectangle part = Within(view.y.width, view.y.rows);
    if (part.Empty()) return {};
    const size_t right = std::min(((part.xEnd - 1) >> h) + 1, copy.width),
                 bottom = std::min(((part.yEnd - 1) >> v) + 1, copy.rows);
    return {std::min(part.xBegin >> h, right), right, std::min(part.yBegin >> v, bottom), bottom};
}

void CStoredMapEffect::BeginChroma(PlaneMap& map, const Rectangle& part, const Plane8& copy) {
    map.Begin(part, copy.width, copy.rows, copy.pitch, HasFills());
    if (!part.Empty() && part.Columns() > m_ChromaFound.size()) m_ChromaFound.resize(part.Columns());
}

void CStoredMapEffect::AddChromaRow(PlaneMap& map, size_t y, const Rectangle& part, const PlanarView& view,
                                    const Plane8& copy, bool atOnce) {
    if (y < part.yBegin || y >= part.yEnd || part.xBegin >= part.xEnd) return;
    FindChroma(y, part, view, copy, map.Row(y), atOnce);
    map.EndRow(m_Kernels, y);
}

// Maps the frame at hand and draws it. Where nothing is filled, that needs no memory once the map has begun,
// and bands are drawn one by one.
void CStoredMapEffect::MapPixels(Plane32 plane, Plane32 copy) {
    const Rectangle part = Within(plane.width, plane.rows);
    m_Pixels.Begin(part, plane.width, plane.rows, copy.pitch, m_Outside == Outside::White);
    if (!HasFills()) m_Pixels.ApplyAtOnce(plane.Bytes(), copy.data);
    for (size_t y = part.yBegin; y < part.yEnd && part.xBegin < part.xEnd; ++y) AddSources(m_Pixels, part, y);
    if (HasFills()) ApplyPixels(plane, copy);
}

void CStoredMapEffect::ApplyPixels(Plane32 plane, Plane32 copy) {
    m_Pixels.Apply(m_Kernels, plane.Bytes(), copy.data, kWhitePixel);
}

// A row of chroma follows the last luma row that it belongs to: its places are at hand then, for bands of
// luma hold whole rows of chroma.
void CStoredMapEffect::MapPlanes(const PlanarView& view, const PlanarView& copy, bool atOnce) {
    const Rectangle luma = Within(view.y.width, view.y.rows);
    const Rectangle part = ChromaPart(view, copy.u), other = ChromaPart(view, copy.v);
    const bool oneChroma = SameShape(copy.u, copy.v);
    BeginChroma(m_U, part, copy.u);
    if (!oneChroma) BeginChroma(m_V, other, copy.v);
    m_Luma.Begin(luma, view.y.width, view.y.rows, copy.y.pitch, HasFills());
    if (!HasFills()) {
        m_Luma.ApplyAtOnce(view.y, copy.y.data);
        m_U.ApplyAtOnce(view.u, copy.u.data);
        (oneChroma ? m_U : m_V).ApplyAtOnce(view.v, copy.v.data);
    }
    for (size_t y = luma.yBegin; y < luma.yEnd && luma.xBegin < luma.xEnd; ++y) {
        AddSources(m_Luma, luma, y);
        const size_t row = y >> view.verticalShift;
        if (y + 1 < luma.yEnd && (y + 1) >> view.verticalShift == row) continue;
        AddChromaRow(m_U, row, part, view, copy.u, atOnce);
        if (!oneChroma) AddChromaRow(m_V, row, other, view, copy.v, atOnce);
    }
    if (HasFills()) ApplyPlanes(view, copy);
}

void CStoredMapEffect::ApplyPlanes(const PlanarView& view, const PlanarView& copy) {
    m_Luma.Apply(m_Kernels, view.y, copy.y.data, kWhiteLuma);
    m_U.Apply(m_Kernels, view.u, copy.u.data, kWhiteChroma);
    (SameShape(copy.u, copy.v) ? m_U : m_V).Apply(m_Kernels, view.v, copy.v.data, kWhiteChroma);
}

void CStoredMapEffect::BuildPacked(Plane32 plane, Plane32 copy) {
    if (!BuildMap(plane.width, plane.rows)) return;
    ReplayPacked(plane, copy);
    m_nMapValid = 1;
}

void CStoredMapEffect::ReplayPacked(Plane32 plane, Plane32 copy) {
    assert(plane.data != NULL);
    const Geometry geometry = {true, plane.width, plane.rows, copy.pitch};
    if (m_Mapped == geometry) return ApplyPixels(plane, copy);
    m_Mapped = {};
    MapPixels(plane, copy);
    m_Mapped = geometry;
}

void CStoredMapEffect::ApplyPlanar(const PlanarView& view, const PlanarView& copy, bool atOnce) {
    AssertMemory(view);
    const Geometry geometry = {false,        view.y.width, view.y.rows,          copy.y.pitch,
                               view.u.width, view.u.rows,  copy.u.pitch,         view.v.width,
                               view.v.rows,  copy.v.pitch, view.horizontalShift, view.verticalShift};
    if (m_Mapped == geometry && !atOnce) return ApplyPlanes(view, copy);
    m_Mapped = {};
    MapPlanes(view, copy, atOnce);
    if (!atOnce) m_Mapped = geometry;
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
