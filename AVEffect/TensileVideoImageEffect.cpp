#include "AVEffect/TensileVideoImageEffect.h"

#include <algorithm>
#include <cassert>
#include <numeric>

#include "AVEffect/support/frame_clone.h"
#include "AVEffect/support/places.h"
#include "aveffect/base_media.h"
#include "aveffect/catalogue/distortions.h"
#include "kernels/pick.h"

namespace AVBased {

CTensileVideoImageEffect::CTensileVideoImageEffect()
    : CBasedVideoImageEffect(catalogue::kTensile) {
    Bind("tensile_vertical", &m_Vertical.enabled);
    Bind("tensile_vertical_y1", &m_Vertical.begin);
    Bind("tensile_vertical_y2", &m_Vertical.end);
    Bind("tensile_vertical_scale", &m_Vertical.scale);
    Bind("tensile_horizontal", &m_Horizontal.enabled);
    Bind("tensile_horizontal_x1", &m_Horizontal.begin);
    Bind("tensile_horizontal_x2", &m_Horizontal.end);
    Bind("tensile_horizontal_scale", &m_Horizontal.scale);
}

unsigned CTensileVideoImageEffect::Band::Stretched() const {
    // A band beyond all pictures is as good as one still larger.
    constexpr double kLongest = 1u << 30;
    return static_cast<unsigned>(std::min((end - begin) * scale, kLongest));
}

// The band grows upwards from its end: what lies above is squeezed, what lies below stays.
void CTensileVideoImageEffect::FindRows(size_t height) {
    const unsigned y1 = m_Vertical.begin, y2 = m_Vertical.end, stretched = m_Vertical.Stretched();
    const auto step = static_cast<unsigned>(256 / m_Vertical.scale);
    const auto last = static_cast<unsigned>(height - 1);
    m_Rows.resize(y2);
    if (stretched >= y2) {
        const unsigned offset = ((stretched - y2) * step) >> 8;
        for (unsigned r = 0; r < y2; ++r) m_Rows[r] = std::min(y1 + offset + ((r * step) >> 8), last);
        return;
    }
    const unsigned top = y2 - stretched, squeeze = (y1 << 8) / top;
    for (unsigned r = 0; r < top; ++r) m_Rows[r] = std::min((r * squeeze) >> 8, last);
    for (unsigned k = 0; k < stretched; ++k) m_Rows[top + k] = std::min(y1 + ((k * step) >> 8), last);
}

// The band grows about its middle: both sides are squeezed.
void CTensileVideoImageEffect::FindColumns(size_t width) {
    const int64_t x1 = m_Horizontal.begin, x2 = m_Horizontal.end, stretched = m_Horizontal.Stretched();
    const int64_t growth = (stretched - (x2 - x1)) >> 1, limit = static_cast<int64_t>(width);
    const int64_t left = x1 - growth, right = x2 + growth;
    const auto step = static_cast<int64_t>(256 / m_Horizontal.scale);
    m_Columns.clear();
    const auto add = [&](int64_t column) {
        if (m_Columns.size() < width)
            m_Columns.push_back(static_cast<uint32_t>(std::clamp<int64_t>(column, 0, limit - 1)));
    };
    const auto addBand = [&](int64_t first, int64_t count) {
        for (int64_t k = 0; k < count; ++k) add(first + ((k * step) >> 8));
    };
    if (left > 0) {
        const int64_t squeeze = (x1 << 8) / left;
        for (int64_t c = 0; c < left; ++c) add((c * squeeze) >> 8);
        addBand(x1, right < limit ? stretched : limit - left);
    } else {
        addBand(x1 + (((growth - x1) * step) >> 8), std::min(right, limit));
    }
    if (right >= limit) return;
    // A band that grew by an odd number has one column too many.
    const int64_t side = limit - right, squeeze = ((limit - x2) << 8) / side;
    m_Columns.resize(static_cast<size_t>(right));
    for (int64_t k = 0; k < side; ++k) add(x2 + ((k * squeeze) >> 8));
}

void CTensileVideoImageEffect::UseAllRows(size_t height) {
    m_Rows.resize(height);
    std::iota(m_Rows.begin(), m_Rows.end(), 0u);
}

namespace {

// The same table for chroma, of which each sample goes with the last luma one it belongs to.
void ForChroma(std::vector<uint32_t>& chroma, const std::vector<uint32_t>& luma, unsigned shift,
               size_t limit) {
    const size_t count = luma.empty() ? 0 : std::min(((luma.size() - 1) >> shift) + 1, limit);
    chroma.resize(count);
    for (size_t i = 0; i < count; ++i) {
        const size_t last = std::min(((i + 1) << shift) - 1, luma.size() - 1);
        chroma[i] = std::min(luma[last] >> shift, static_cast<uint32_t>(limit - 1));
    }
}

// Not both without memory is the assertion; but what is drawn on needs it.
template <class Plane>
void AssertMemory(const Plane& plane, const Plane& copy) {
    if (plane.Empty()) return;
    assert(plane.data != NULL || copy.data != NULL);
    RequireMemory(plane);
}

void AssertMemory(const PlanarView& view, const PlanarView& copy) {
    AssertMemory(view.y, copy.y);
    AssertMemory(view.u, copy.u);
    AssertMemory(view.v, copy.v);
}

} // namespace

// Whole rows, what lies behind their last sample included. Rows that stay are not copied.
void CTensileVideoImageEffect::CopyRows(Plane8 plane, Plane8 copy, unsigned verticalShift) {
    if (plane.Empty()) return;
    ForChroma(m_ChromaRows, m_Rows, verticalShift, plane.rows);
    for (size_t y = 0; y < m_ChromaRows.size(); ++y)
        if (m_ChromaRows[y] != y)
            AVBasedMemCopy(plane.Row(y), copy.Row(m_ChromaRows[y]), std::min(plane.pitch, copy.pitch));
}

void CTensileVideoImageEffect::VerticalTensileRgba32Effect(Plane32 plane, Plane32 copy) {
    if (!m_Vertical.FitsIn(plane.rows)) return;
    FindRows(plane.rows);
    CopyRows(plane.Bytes(), copy.Bytes(), 0);
}

void CTensileVideoImageEffect::VerticalTensileComponentEffect(const PlanarView& view,
                                                              const PlanarView& copy) {
    if (!m_Vertical.FitsIn(view.y.rows)) return;
    FindRows(view.y.rows);
    CopyRows(view.y, copy.y, 0);
    CopyRows(view.u, copy.u, view.verticalShift);
    CopyRows(view.v, copy.v, view.verticalShift);
}

void CTensileVideoImageEffect::PickPlanes(const PlanarView& view, const PlanarView& copy) {
    Kernels<kernels::PickKernels>().pickComponent(
        view.y, copy.y, PlacesOf(m_Columns), PlacesOf(m_Rows),
        m_Scratch.Require(kernels::ColumnScratchBytes(view.y.width)));
    const auto pick = [this](Plane8 plane, Plane8 from, unsigned horizontalShift, unsigned verticalShift) {
        if (plane.Empty()) return;
        ForChroma(m_ChromaColumns, m_Columns, horizontalShift, plane.width);
        ForChroma(m_ChromaRows, m_Rows, verticalShift, plane.rows);
        Kernels<kernels::PickKernels>().pickComponent(
            plane, from, PlacesOf(m_ChromaColumns), PlacesOf(m_ChromaRows),
            m_Scratch.Require(kernels::ColumnScratchBytes(plane.width)));
    };
    pick(view.u, copy.u, view.horizontalShift, view.verticalShift);
    pick(view.v, copy.v, view.horizontalShift, view.verticalShift);
}

void CTensileVideoImageEffect::HorizontalTensileRgba32Effect(Plane32 plane, Plane32 copy) {
    if (!m_Horizontal.FitsIn(plane.width)) return;
    FindColumns(plane.width);
    UseAllRows(plane.rows);
    Kernels<kernels::PickKernels>().pickRgba32(plane, copy, PlacesOf(m_Columns), PlacesOf(m_Rows),
                                               m_Scratch.Require(kernels::ColumnScratchBytes(plane.width)));
}

void CTensileVideoImageEffect::HorizontalTensileComponentEffect(const PlanarView& view,
                                                                const PlanarView& copy) {
    if (!m_Horizontal.FitsIn(view.y.width)) return;
    FindColumns(view.y.width);
    UseAllRows(view.y.rows);
    PickPlanes(view, copy);
}

void CTensileVideoImageEffect::TensileRgba32Effect(Plane32 plane, Plane32 copy) {
    if (!m_Vertical.FitsIn(plane.rows) || !m_Horizontal.FitsIn(plane.width)) return;
    FindRows(plane.rows);
    FindColumns(plane.width);
    Kernels<kernels::PickKernels>().pickRgba32(plane, copy, PlacesOf(m_Columns), PlacesOf(m_Rows),
                                               m_Scratch.Require(kernels::ColumnScratchBytes(plane.width)));
}

void CTensileVideoImageEffect::TensileComponentEffect(const PlanarView& view, const PlanarView& copy) {
    if (!m_Vertical.FitsIn(view.y.rows) || !m_Horizontal.FitsIn(view.y.width)) return;
    FindRows(view.y.rows);
    FindColumns(view.y.width);
    PickPlanes(view, copy);
}

void CTensileVideoImageEffect::Stretch(Plane32 plane, Plane32 copy) {
    AssertMemory(plane, copy);
    if (!m_Horizontal.IsOn()) return VerticalTensileRgba32Effect(plane, copy);
    m_Vertical.IsOn() ? TensileRgba32Effect(plane, copy) : HorizontalTensileRgba32Effect(plane, copy);
}

void CTensileVideoImageEffect::Stretch(const PlanarView& view, const PlanarView& copy) {
    AssertMemory(view, copy);
    if (!m_Horizontal.IsOn()) return VerticalTensileComponentEffect(view, copy);
    m_Vertical.IsOn() ? TensileComponentEffect(view, copy) : HorizontalTensileComponentEffect(view, copy);
}

void CTensileVideoImageEffect::InnerProcFrame(ImagePostion*, int, IRawVideoFrame* pFrame) {
    const FrameClone copy = CloneFrame(pFrame);
    const auto stretch = [this](const auto&... views) { Stretch(views...); };
    if (m_Vertical.IsOn() || m_Horizontal.IsOn()) ForFormat(pFrame, copy.get(), stretch, stretch);
}

} // namespace AVBased
